#include "reports/Export.h"

#include <filesystem>

#include "common/SettingsStore.h"
#include "reports/PageLook.h"
#include "reports/ReportsFixture.h"

namespace scorvane::reports {
namespace {

constexpr const char* kStandings =
    "SELECT Driver.Name AS DriverName, Stats.Points AS Points, Stats.Points-175 AS Ahead, 175-Stats.Points "
    "AS [Interval], "
    "Stats.Qualifying AS Speed FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID "
    "WHERE Stats.RaceID=1 ORDER BY Stats.Finish";
const std::vector<FieldRow> kColumns = {{"Driver", 2200, 0, nullptr, "False", "DriverName"},
                                        {"Points", 750, 4, "0", "Null", "Points"},
                                        {"Speed", 900, 6, "##0.000", "False", "Speed"}};

class ExportTest : public ReportsFixture {
 protected:
  ExportTest() { AddRaces(); }

  void SaveSettings(const std::vector<std::pair<int, const char*>>& settings) {
    engine::UnitOfWork work(*league_);
    for (const auto& [id, value] : settings) ASSERT_TRUE(common::SaveSettingValue(*league_, id, value)) << id;
  }

  // A page of a report with the league's look.
  CExport ReportPage(std::int32_t report) {
    CExport page(state_);
    page.Database(league_.get());
    page.LGDatabase(template_.get());
    page.ReportID(report);
    page.Title("Fall League\r\n2003");
    page.ReportName("Point Standings");
    page.Title2("Results after 2 events");
    page.Footer("<p>A footer</p>");
    page.Look(ReadPageLook(*league_));
    return page;
  }
  CExport StandingsPage() { return ReportPage(AddReport(kStandings, kColumns)); }
  CExport RacePage(std::int32_t race) {
    CExport page = ReportPage(race);
    page.ExportType(1);
    page.ReportName("Daytona");
    page.Title2("2.5 miles - 80 laps");
    return page;
  }

  std::string Written(CExport& page) {
    EXPECT_TRUE(page.HTML(path_));
    return ReadBytes(path_);
  }
  static std::string Golden(const std::string& name) {
    const std::string bytes = ReadBytes(std::string(SCORVANE_SOURCE_DIR "/tests/data/pages/") + name);
    EXPECT_FALSE(bytes.empty()) << name;
    return bytes;
  }

  std::string path_ = folder_.File("page.htm");
};

TEST_F(ExportTest, ALeagueWithoutALook) {
  CExport page = StandingsPage();
  EXPECT_EQ(Written(page), Golden("plain.htm"));
}

TEST_F(ExportTest, HeadingRowColors) {
  CExport page = StandingsPage();
  page.UseTableColors({true, false, true, false, false});  // without row colours nothing alternates
  EXPECT_EQ(Written(page), Golden("header-colors.htm"));
}

TEST_F(ExportTest, RowColorsAndBorders) {
  CExport page = StandingsPage();
  page.UseTableColors({false, true, false, true, false});
  EXPECT_EQ(Written(page), Golden("default-rows.htm"));
}

TEST_F(ExportTest, AllColorsOfTheLeague) {
  SaveSettings({{15, "Verdana"},     {16, "3"},           {100, "True"},       {101, "images/flag.gif"},
                {102, "&H00FFF0E0"}, {103, "&H00000080"}, {104, "&H00008000"}, {105, "&H00800000"},
                {106, "&H000000FF"}, {107, "&H00112233"}, {108, "&H80000005"}, {109, "&H00FF0000"},
                {110, "&H00FFFFFF"}, {111, "&H00800000"}, {112, "&H00000000"}, {113, "&H00CCFFFF"},
                {114, "&H00400000"}, {115, "&H00FFFFCC"}, {116, "&H00E0E0E0"}, {117, "&H00808080"},
                {118, "&H00F0F0F0"}, {119, "&H00000001"}, {200, "1"},          {201, "1"},
                {202, "1"},          {203, "1"},          {204, "1"},          {300, "2"},
                {301, "4"},          {302, "1"}});
  CExport page = StandingsPage();
  EXPECT_EQ(Written(page), Golden("colored.htm"));
}

TEST_F(ExportTest, IntervalsOfNothingAndHiddenColumns) {
  CExport page =
      ReportPage(AddReport(kStandings, {{"Driver", 2200, 0, nullptr, "False", "DriverName"},
                                        {"Points", 750, 4, "0", "True", "Points"},
                                        {"One", 750, 4, "0.000", "False", "Interval"},
                                        {"Two <*ALIGN*>", 750, 4, "+0.00;-0.00", "False", "Interval"},
                                        {"Three", 750, 4, "0;-0;level", "False", "Interval"},
                                        {"Other", 750, 4, "0.0", "False", "interval"}}));
  page.HTMLPageFontSize(3);
  page.UseTableColors({false, false, false, false, true});
  EXPECT_EQ(Written(page), Golden("intervals.htm"));
}

TEST_F(ExportTest, ARaceByQualifyingSpeed) {
  state_.simType = common::kNascarRacing2002;
  state_.leagueType = common::kOffline;
  CExport page = RacePage(1);
  EXPECT_EQ(Written(page), Golden("race.htm"));
  // Nor does an on-line league of the older simulations have average speeds.
  state_.simType = common::kNascarRacing3;
  state_.leagueType = common::kOnline;
  EXPECT_EQ(Written(page), Golden("race.htm"));
}

TEST_F(ExportTest, ARaceWithAverageSpeedByLapTime) {
  state_.leagueType = common::kOffline;
  state_.lapReportingMethod = common::kLapTime;
  state_.decimalSeparator = ',';
  CExport page = RacePage(2);
  page.HTMLPageFontSize(2);
  EXPECT_EQ(Written(page), Golden("race-with-speed.htm"));
}

TEST_F(ExportTest, WithoutATableNoFileIsTouched) {
  const auto refuses = [&](CExport page) {
    std::ofstream(path_, std::ios::trunc) << "before";
    EXPECT_FALSE(page.HTML(path_));
    EXPECT_EQ(ReadBytes(path_), "before");
  };
  const auto changed = [&](auto change) {
    CExport page = StandingsPage();
    change(page);
    return page;
  };
  refuses(changed([](CExport& page) { page.ExportType(2); }));
  refuses(changed([](CExport& page) { page.Database(nullptr); }));
  refuses(changed([](CExport& page) { page.LGDatabase(nullptr); }));
  refuses(changed([](CExport& page) { page.TableColors(std::vector<std::int32_t>(9)); }));
  refuses(changed([](CExport& page) { page.UseTableColors(std::vector<bool>(4)); }));
  refuses(changed([](CExport& page) { page.Layout({1, 2}); }));
  refuses(RacePage(99));
  refuses(ReportPage(9999));
  refuses(ReportPage(AddReport(kStandings, {})));
  refuses(ReportPage(
      AddReport("SELECT Points FROM Stats WHERE Finish>99", {{"P", 1, 1, "", "False", "Points"}})));
  refuses(ReportPage(AddReport(kStandings, {{"P", 1, 1, "", "False", "Punkte"}})));
  refuses(ReportPage(AddReport("SELECT FROM", {{"P", 1, 1, "", "False", "Points"}})));
  league_->Execute("INSERT INTO Race (Name) VALUES ('Nobody came')");
  refuses(RacePage(3));
}

TEST_F(ExportTest, AnOldPageIsReplacedAndAFailedWriteTold) {
  std::ofstream(path_) << std::string(20000, 'x');
  CExport page = StandingsPage();
  EXPECT_EQ(Written(page), Golden("plain.htm"));
  EXPECT_FALSE(page.HTML(folder_.Path().string()));
  EXPECT_FALSE(page.HTML(folder_.File("no such folder/page.htm")));
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_FALSE(page.HTML("/dev/full"));
  }
}

TEST_F(ExportTest, OddSettingsKeepTheDefaultLook) {
  SaveSettings({{16, "99999"},
                {100, "true"},
                {101, "flag.gif"},
                {102, "white"},
                {103, ""},
                {109, "255"},
                {200, "on"},
                {300, "7 px"},
                {301, "-70000"},
                {302, ""}});
  std::string expected = Golden("plain.htm");
  const auto replace = [&](std::string_view from, std::string_view to) {
    ASSERT_NE(expected.find(from), std::string::npos);
    expected.replace(expected.find(from), from.size(), to);
  };
  replace("border=1", "border=7");
  replace("#00FF00", "#FF0000");  // a plain number is a colour, too
  CExport page = StandingsPage();
  EXPECT_EQ(Written(page), expected);
}

TEST(PageFooters, NameTheProgramAndItsMaker) {
  EXPECT_THAT(ProductVersion(), testing::MatchesRegex("[0-9]+\\.[0-9][0-9]\\.[0-9][0-9]"));
  EXPECT_EQ(StandingsFooter(),
            "<p>Points and scoring generated by <STRONG><a href=\"https://scorvane.example/\">Scorvane v" +
                ProductVersion() +
                "</a></STRONG> developed by <STRONG><a href=\"mailto:developers@scorvane.example\">"
                "The Scorvane developers</a></STRONG></p>");
  EXPECT_EQ(PreviewFooter(),
            "<FONT face=\"MS Sans Serif\" size=\"2\">Points and scoring generated by \r\n\t<STRONG>\r\n\t"
            "<a href=\"https://scorvane.example/\">Scorvane v" +
                ProductVersion() +
                "</a>\r\n\t</STRONG> developed by <STRONG><a href=\"mailto:developers@scorvane.example\">"
                "The Scorvane developers</a></STRONG>\r\n</FONT>");
}

}  // namespace
}  // namespace scorvane::reports
