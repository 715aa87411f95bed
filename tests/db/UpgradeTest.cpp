#include "db/Upgrade.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "db/LeagueFixture.h"
#include "db/Tables.h"

namespace scorvane::test {
namespace {

using engine::FieldType;
using testing::ElementsAre;

class Upgrade : public LeagueFixture {
 protected:
  Upgrade() : league_(NewLeague()) { db::UpgradeLeagueFile(*league_, *template_); }

  static const engine::Field* FieldOf(const engine::Database& database, const std::string& path) {
    const auto dot = path.find('.');
    const engine::TableDef* table = database.FindTableDef(path.substr(0, dot));
    return table == nullptr ? nullptr : table->FindField(path.substr(dot + 1));
  }

  // A field as an upgrade appends it: type, size and nothing that restricts it.
  static void ExpectField(const engine::Database& database, const std::string& path, FieldType type,
                          int size) {
    const engine::Field* field = FieldOf(database, path);
    ASSERT_NE(field, nullptr) << path;
    EXPECT_EQ(field->Type, type) << path;
    EXPECT_EQ(field->Size, size) << path;
    EXPECT_FALSE(field->Required) << path;
    EXPECT_FALSE(field->AllowZeroLength) << path;
  }

  // The file's content once nothing has it open.
  std::string Bytes() {
    const std::string path = league_->Name();
    league_.reset();
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    league_ = engine_.DefaultWorkspace().OpenDatabase(path);
    return bytes;
  }

  std::unique_ptr<engine::Database> league_;
};

TEST_F(Upgrade, AppendsFieldsThatEarlierReleasesLacked) {
  league_->Execute("INSERT INTO Driver (Name) VALUES ('A')");
  league_->Execute("INSERT INTO Race (Name) VALUES ('Track')");
  league_->Execute("INSERT INTO Stats (RaceID, DriverID, Points) VALUES (1, 1, 175)");
  const struct {
    const char* path;
    FieldType type;
    int size;
  } fields[] = {{"Stats.Dropped", FieldType::Boolean, 1},    {"Driver.Exclude", FieldType::Boolean, 1},
                {"Race.RaceTime", FieldType::Text, 15},      {"Race.AvgSpeed", FieldType::Text, 10},
                {"Race.VictoryMargin", FieldType::Text, 10}, {"Race.Cautions", FieldType::Integer, 2},
                {"Race.LeadChanges", FieldType::Integer, 2}, {"Race.Weather", FieldType::Text, 50},
                {"Stats.AvgSpeed", FieldType::Text, 10}};
  for (const auto& field : fields) {
    const std::string path = field.path;
    league_->DeleteField(path.substr(0, path.find('.')), path.substr(path.find('.') + 1));
  }
  db::UpgradeLeagueFile(*league_, *template_);
  for (const auto& field : fields) ExpectField(*league_, field.path, field.type, field.size);
  // The rows that were there have nothing in the new fields; new rows start with False.
  league_->Execute("INSERT INTO Driver (Name) VALUES ('B')");
  EXPECT_THAT(Rows(*league_, "SELECT Name, Exclude FROM Driver ORDER BY DriverID"),
              ElementsAre("A|False", "B|False"));
  EXPECT_THAT(Rows(*league_, "SELECT Points, Dropped, AvgSpeed FROM Stats"), ElementsAre("175|False|Null"));
}

TEST_F(Upgrade, GivesAFileWithoutStagingTablesWhatANewFileHas) {
  const auto criteria = Rows(*league_, "SELECT * FROM RankCriteria");
  league_->DeleteRelation("STNRaceResults");
  for (const char* table : {"STNStats", "STNRace", "PointSystem", "Bonus", "RankCriteria"})
    league_->DeleteTableDef(table);
  db::UpgradeLeagueFile(*league_, *template_);
  EXPECT_EQ(Rows(*league_, "SELECT * FROM RankCriteria"), criteria);
  EXPECT_EQ(Single(*league_, "SELECT Count(*) FROM PointSystem"), "43");
  EXPECT_EQ(Rows(*league_, "SELECT * FROM Bonus"), Rows(*template_, "SELECT * FROM Bonus"));
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Track')");
  league_->Execute("INSERT INTO STNStats (STNRaceID, DriverName) VALUES (1, 'A')");
  league_->Execute("DELETE * FROM STNRace");
  EXPECT_EQ(Single(*league_, "SELECT Count(*) FROM STNStats"), "0");
}

class UpgradeCarNumbers : public Upgrade, public testing::WithParamInterface<bool> {};

// Car numbers go from drivers and staged results, or, where staging never knew them, from the drivers alone.
TEST_P(UpgradeCarNumbers, MakeWayForRookieAndHandicap) {
  for (const char* field : {"Rookie", "Handicap"}) league_->DeleteField("Driver", field);
  league_->AppendField("Driver", db::Column("CarNumber", FieldType::Integer));
  league_->Execute("INSERT INTO Driver (Name, CarNumber) VALUES ('A', 24)");
  if (GetParam()) {
    league_->AppendField("STNStats", db::Column("DriverNum", FieldType::Integer));
    league_->AppendIndex("STNStats", {"DNumIDX", {"DriverNum"}, false, false, false});
  }
  db::UpgradeLeagueFile(*league_, *template_);
  EXPECT_EQ(FieldOf(*league_, "Driver.CarNumber"), nullptr);
  EXPECT_EQ(FieldOf(*league_, "STNStats.DriverNum"), nullptr);
  EXPECT_EQ(league_->FindTableDef("STNStats")->FindIndex("DNumIDX"), nullptr);
  ExpectField(*league_, "Driver.Rookie", FieldType::Boolean, 1);
  ExpectField(*league_, "Driver.Handicap", FieldType::Long, 4);
  league_->Execute("INSERT INTO Driver (Name) VALUES ('B')");
  EXPECT_THAT(Rows(*league_, "SELECT Name, Handicap FROM Driver ORDER BY DriverID"),
              ElementsAre("A|0", "B|0"));
}

INSTANTIATE_TEST_SUITE_P(Staging, UpgradeCarNumbers, testing::Bool());

TEST_F(Upgrade, AppendsHiddenToTheTemplateWhenItMayBeWritten) {
  template_->DeleteField("ReportField", "Hidden");
  const std::string path = template_->Name();
  template_.reset();
  engine::OpenOptions readOnly;
  readOnly.readOnly = true;
  template_ = engine_.DefaultWorkspace().OpenDatabase(path, readOnly);
  league_->DeleteField("Stats", "AvgSpeed");
  db::UpgradeLeagueFile(*league_, *template_);
  EXPECT_EQ(FieldOf(*template_, "ReportField.Hidden"), nullptr);
  EXPECT_NE(FieldOf(*league_, "Stats.AvgSpeed"), nullptr) << "the rest is done all the same";

  template_.reset();
  template_ = engine_.DefaultWorkspace().OpenDatabase(path);
  db::UpgradeLeagueFile(*league_, *template_);
  ExpectField(*template_, "ReportField.Hidden", FieldType::Boolean, 1);
}

TEST_F(Upgrade, WidensTheWeatherAndKeepsIt) {
  auto fresh = NewLeague("fresh.lgx");
  ExpectField(*fresh, "Race.Weather", FieldType::Text, 20);
  fresh->Execute("INSERT INTO Race (Name, Weather) VALUES ('Track', 'Clear, 72°F')");
  fresh->Execute("INSERT INTO Race (Name) VALUES ('Other')");
  db::UpgradeLeagueFile(*fresh, *template_);
  for (const char* table : {"Race", "STNRace"}) {
    ExpectField(*fresh, std::string(table) + ".Weather", FieldType::Text, 50);
    fresh->Execute(fmt::format("INSERT INTO {} (Weather) VALUES ('{}')", table, std::string(50, 'w')));
    EXPECT_EQ(
        ErrorOf(*fresh, fmt::format("INSERT INTO {} (Weather) VALUES ('{}')", table, std::string(51, 'w'))),
        engine::kFieldTooSmall);
  }
  EXPECT_EQ(FieldOf(*fresh, "Race.Weather2"), nullptr);
  EXPECT_THAT(Rows(*fresh, "SELECT Name, Weather FROM Race ORDER BY RaceID"),
              ElementsAre("Track|Clear, 72°F", "Other|Null", "Null|" + std::string(50, 'w')));
}

TEST_F(Upgrade, MarksTheCriteriaOfTheNewSimulations) {
  league_->DeleteField("RankCriteria", "N4");
  league_->Execute("INSERT INTO RankCriteria (Name, Priority, Query) VALUES ('Own', 99, 'Start')");
  league_->Execute("UPDATE RankCriteria SET Priority=50 WHERE RankCriteriaID=1");
  db::UpgradeLeagueFile(*league_, *template_);
  EXPECT_EQ(Rows(*league_, "SELECT RankCriteriaID, N4 FROM RankCriteria WHERE Name<>'Own'"),
            Rows(*template_, "SELECT RankCriteriaID, N4 FROM RankCriteria"));
  EXPECT_EQ(Single(*league_, "SELECT N4 FROM RankCriteria WHERE Name='Own'"), "Null");
  EXPECT_EQ(Single(*league_, "SELECT Priority FROM RankCriteria WHERE RankCriteriaID=1"), "50");
}

TEST_F(Upgrade, AFileThatIsUpToDateIsNotTouched) {
  const std::string before = Bytes();
  db::UpgradeLeagueFile(*league_, *template_);
  EXPECT_TRUE(Bytes() == before);
}

// A file that lacks a whole table gets what can be given to the others.
TEST_F(Upgrade, SkipsWhatCannotBeDone) {
  league_->DeleteTableDef("RankCriteria");
  league_->DeleteField("Stats", "Dropped");
  EXPECT_NO_THROW(db::UpgradeLeagueFile(*league_, *template_));
  EXPECT_NE(FieldOf(*league_, "Stats.Dropped"), nullptr);
}

}  // namespace
}  // namespace scorvane::test
