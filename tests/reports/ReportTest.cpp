#include "reports/Report.h"

#include "reports/ReportsFixture.h"

namespace scorvane::reports {
namespace {

using engine::Value;
using testing::ElementsAre;
using testing::HasSubstr;

class ReportTest : public ReportsFixture {
 protected:
  // The error of running a report, as "number description".
  std::string ErrorOf(std::int32_t report) {
    try {
      RunReport(*league_, *template_, report);
    } catch (const engine::EngineError& error) {
      return fmt::format("{} {}", error.Number(), error.Description());
    }
    return {};
  }
};

TEST_F(ReportTest, AreListedInTheirSequence) {
  template_->Execute("DELETE FROM Report");
  const std::int32_t last = AddReport("SELECT 1 AS A", {}, 3);
  const std::int32_t first = AddReport("SELECT 1 AS A", {}, 1);
  const std::vector<ReportInfo> reports = ListReports(*template_);
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[0].id, first);
  EXPECT_EQ(reports[1].id, last);
  EXPECT_EQ(reports[1].name, "Test");
}

TEST_F(ReportTest, ColumnsStandInTheirSequenceOverTheQuerysValues) {
  AddRaces();
  const std::int32_t id = AddReport(
      "SELECT Points, Qualifying AS Speed, RaceID=1 AS First, Status FROM Stats WHERE Finish=2 ORDER BY "
      "RaceID",
      {{"Why", 500, 0, nullptr, "Null", "STATUS"},
       {"Speed", 1100, 6, "##0.000;;--", "True", "Speed"},
       {"First?", 700, 4, "Yes/No", "False", "First"}});
  const ReportTable report = RunReport(*league_, *template_, id).value_or(ReportTable{});
  ASSERT_EQ(report.columns.size(), 3U);
  EXPECT_EQ(report.columns[0].name, "Why");
  EXPECT_EQ(report.columns[0].width, 500);
  EXPECT_EQ(report.columns[0].format, "");
  EXPECT_FALSE(report.columns[0].hidden);
  EXPECT_EQ(report.columns[1].alignment, 6);
  EXPECT_TRUE(report.columns[1].hidden);
  EXPECT_EQ(report.columns[2].field, "First");

  EXPECT_THAT(report.rows, ElementsAre(ElementsAre(Value(), Value(), Value(true)),
                                       ElementsAre(Value("Running"), Value(0.0F), Value(false))));
  EXPECT_EQ(CellText(report.columns[0], report.rows[1][0], '.'), "Running");
  EXPECT_EQ(CellText(report.columns[1], report.rows[1][1], '.'), "--");
  EXPECT_EQ(CellText(report.columns[2], report.rows[1][2], '.'), "No");
  EXPECT_EQ(CellText(report.columns[1], Value(1.5F), ','), "1,500");
}

TEST_F(ReportTest, WithoutRowsOrColumns) {
  const std::int32_t empty = AddReport("SELECT Points FROM Stats", {{"P", 1, 1, nullptr, "False", "Points"}});
  const ReportTable report = RunReport(*league_, *template_, empty).value_or(ReportTable{});
  EXPECT_EQ(report.columns.size(), 1U);
  EXPECT_TRUE(report.rows.empty());
  EXPECT_FALSE(RunReport(*league_, *template_, AddReport("SELECT Points FROM Stats", {})));
}

TEST_F(ReportTest, FaultsGoToTheCaller) {
  AddRaces();
  const std::vector<FieldRow> field = {{"P", 1, 1, nullptr, "False", "Punkte"}};
  EXPECT_THAT(ErrorOf(AddReport("SELECT Points FROM Stats", field)),
              testing::AllOf(HasSubstr("3265"), HasSubstr("Punkte")));
  EXPECT_THAT(ErrorOf(AddReport("SELECT Punkte FROM", field)), HasSubstr("3075"));
  EXPECT_THAT(ErrorOf(9999), HasSubstr("3021"));
  // A report only reads.
  EXPECT_THAT(ErrorOf(AddReport("DELETE FROM Stats", field)), HasSubstr("3219"));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Stats"), "6");
}

}  // namespace
}  // namespace scorvane::reports
