#include "common/SettingsStore.h"

#include "common/SqlText.h"
#include "db/LeagueFixture.h"

namespace scorvane::common {
namespace {

class SettingsStore : public test::LeagueFixture {
 protected:
  SettingsStore() : league_(NewLeague()) {}
  std::unique_ptr<engine::Database> league_;
};

TEST_F(SettingsStore, ReadsTrimmedValuesWithTheirNames) {
  league_->Execute(
      "INSERT INTO Settings (SettingsID, SettingName, SettingValue) VALUES (900, 'Name', '  a value ')");
  league_->Execute("INSERT INTO Settings (SettingsID) VALUES (901)");
  std::string name = "before";
  EXPECT_EQ(GetSettingValue(*league_, 900, &name), "a value");
  EXPECT_EQ(name, "Name");
  EXPECT_EQ(GetSettingValue(*league_, 999, &name), kMissingSetting);
  EXPECT_EQ(name, "Name");
  EXPECT_EQ(GetSettingValue(*league_, 901, &name), "");
  EXPECT_EQ(name, "");
  league_->DeleteTableDef("Settings");
  EXPECT_EQ(GetSettingValue(*league_, 900), kMissingSetting);
  EXPECT_FALSE(SaveSettingValue(*league_, 900, "x"));
  EXPECT_THROW(StoreSetting(*league_, 900, "x"), engine::EngineError);
}

TEST_F(SettingsStore, StoresValuesAndAddsMissingRows) {
  const struct {
    int id;
    const char* value;
    const char* row;
  } cases[] = {{900, "O'Brien | Sons", "Null|O'Brien | Sons"},
               {901, "", "Null|Null"},
               {kPageHeading, "Our League", "Page Heading|Our League"},
               {kPageHeading, "  ", "Page Heading|Null"}};
  for (const auto& c : cases) {
    EXPECT_TRUE(SaveSettingValue(*league_, c.id, c.value));
    EXPECT_EQ(test::Rows(*league_, "SELECT SettingName, SettingValue FROM Settings WHERE SettingsID=" +
                                       std::to_string(c.id)),
              std::vector<std::string>{c.row});
  }
}

TEST_F(SettingsStore, SmallQuestionsToADatabase) {
  EXPECT_EQ(GetMaxID(*league_, "Driver", "DriverID"), 0);
  league_->Execute("INSERT INTO Driver (Name) VALUES ('A')");
  EXPECT_EQ(GetMaxID(*league_, "Driver", "DriverID"), 1);
  EXPECT_THROW(GetMaxID(*league_, "Nothing", "NothingID"), engine::EngineError);
  EXPECT_TRUE(TableExists(*league_, "stats"));
  EXPECT_FALSE(TableExists(*league_, "Report"));
  EXPECT_TRUE(FieldExists(*league_, "Stats", "dropped"));
  EXPECT_FALSE(FieldExists(*league_, "Stats", "Hidden"));
  EXPECT_FALSE(FieldExists(*league_, "Report", "Hidden"));

  EXPECT_TRUE(SetBonusPoints(*league_, 1, 42));
  EXPECT_EQ(test::Single(*league_, "SELECT Points FROM Bonus WHERE BonusID=1"), "42");
  EXPECT_FALSE(SetBonusPoints(*league_, 1, 40000)) << "points are 16 bits";
}

}  // namespace
}  // namespace scorvane::common
