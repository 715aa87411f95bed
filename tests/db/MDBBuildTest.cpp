#include "db/MDBBuild.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "db/LeagueFixture.h"

namespace scorvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using MDBBuildTest = LeagueFixture;

TEST_F(MDBBuildTest, NewFileHoldsExactlyItsTablesRelationsAndSettings) {
  auto league = NewLeague();

  std::vector<std::string> tables;
  for (const auto& table : league->TableDefs()) tables.push_back(table.Name);
  EXPECT_THAT(tables, UnorderedElementsAre("Driver", "Race", "Settings", "Stats", "STNRace", "STNStats",
                                           "PointSystem", "Bonus", "RankCriteria"));

  std::vector<std::string> relations;
  for (const auto& relation : league->Relations()) {
    relations.push_back(relation.Name + " " + relation.Table + "." + relation.FieldName + " " +
                        relation.ForeignTable + "." + relation.ForeignName);
    EXPECT_EQ(relation.Attributes, 4352) << relation.Name;
  }
  EXPECT_THAT(relations, UnorderedElementsAre("DriverStatsX Driver.DriverID Stats.DriverID",
                                              "RaceStatsX Race.RaceID Stats.RaceID",
                                              "STNRaceResults STNRace.STNRaceID STNStats.STNRaceID"));

  EXPECT_THAT(Rows(*league, "SELECT * FROM Settings ORDER BY SettingsID"),
              ElementsAre("2|Page Heading|XYZ Racing League", "3|Report Name|Point Standings",
                          "4|Caption|Results after X races", "5|Sim Title|3", "6|Dropped Races|2",
                          "12|League Type|1", "13|Use Custom Point System|0", "14|Use Custom Bonus System|0",
                          "17|Lap Reporting Method|1"));
  EXPECT_THAT(Rows(*league, "SELECT * FROM Driver"), IsEmpty());
}

// Where tables differ on a field of one name, and what is more than its type.
TEST_F(MDBBuildTest, FieldsHaveTheirTypesSizesAndAttributes) {
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"Driver.DriverID", "4/4/17"},        {"Driver.Name", "10/50/2 required"},
      {"Race.AvgSpeed", "10/10/2"},         {"Race.Weather", "10/20/2"},
      {"Settings.SettingsID", "4/4/1"},     {"Settings.SettingValue", "12/0/2"},
      {"Stats.AvgSpeed", "10/10/2"},        {"Stats.Points", "4/4/1"},
      {"STNStats.AvgSpeed", "6/4/1"},       {"PointSystem.Points", "3/2/1"},
      {"Bonus.BonusID", "4/4/17 required"}, {"RankCriteria.Query", "12/0/2"},
  };
  auto league = NewLeague();
  for (const auto& [path, text] : expected) {
    const std::size_t dot = path.find('.');
    const engine::Field* field = league->FindTableDef(path.substr(0, dot))->FindField(path.substr(dot + 1));
    ASSERT_NE(field, nullptr) << path;
    EXPECT_EQ(fmt::format("{}/{}/{}{}", static_cast<int>(field->Type), field->Size, field->Attributes,
                          field->Required ? " required" : ""),
              text)
        << path;
  }
  EXPECT_TRUE(league->FindTableDef("STNRace")->FindField("STNRaceID")->IsCounter());
  EXPECT_TRUE(league->FindTableDef("STNStats")->FindIndex("DNameIDX")->Required);
}

TEST_F(MDBBuildTest, RowsObeyTheTables) {
  auto league = NewLeague();
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Driver (Name) VALUES ('Same Name')"), 0);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Driver (Name) VALUES ('Same Name')"), 0);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Driver (Name) VALUES (NULL)"), engine::kNullNotAllowed);
  EXPECT_EQ(Single(*league, "SELECT Handicap FROM Driver WHERE DriverID=1"), "0");
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Settings (SettingsID, SettingValue) VALUES (99,'')"),
            engine::kZeroLengthNotAllowed);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Settings (SettingsID, SettingValue) VALUES (5,'x')"),
            engine::kDuplicateKey);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Race (Weather) VALUES ('Clear, 72 F, wind N 10')"),
            engine::kFieldTooSmall);

  league->Execute("INSERT INTO Race (Name) VALUES ('Daytona')");
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Stats (RaceID, DriverID) VALUES (1,99)"),
            engine::kRelatedRecordRequired);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO Stats (RaceID, DriverID) VALUES (99,1)"),
            engine::kRelatedRecordRequired);
  league->Execute("INSERT INTO Stats (RaceID, DriverID) VALUES (1,1)");
  league->Execute("INSERT INTO Stats (RaceID, DriverID) VALUES (1,2)");
  EXPECT_THAT(Rows(*league, "SELECT StatsID, Dropped FROM Stats"), ElementsAre("1|False", "2|False"));

  league->Execute("DELETE * FROM Driver WHERE DriverID=1");
  EXPECT_THAT(Rows(*league, "SELECT DriverID FROM Stats"), ElementsAre("2"));
  league->Execute("DELETE * FROM Race WHERE RaceID=1");
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM Stats"), "0");
}

TEST_F(MDBBuildTest, StagedResultsBelongToAStagedRaceAndADriver) {
  auto league = NewLeague();
  league->Execute("INSERT INTO STNRace (Name) VALUES ('Daytona')");
  EXPECT_NE(ErrorOf(*league, "INSERT INTO STNStats (STNRaceID, Finish) VALUES (1,1)"), 0);
  EXPECT_NE(ErrorOf(*league, "INSERT INTO STNStats (DriverName, Finish) VALUES ('A',1)"), 0);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO STNStats (STNRaceID, DriverName) VALUES (7,'A')"),
            engine::kRelatedRecordRequired);
  EXPECT_EQ(ErrorOf(*league, "INSERT INTO STNStats (STNRaceID, DriverName) VALUES (1,'A')"), 0);
  league->Execute("DELETE * FROM STNRace");
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM STNStats"), "0");
}

TEST_F(MDBBuildTest, ScoringTablesAreCopiedFromTheTemplate) {
  // Rules with gaps between their keys, as a template that somebody has edited may have.
  template_->Execute("DELETE * FROM Bonus WHERE BonusID=2");
  template_->Execute("UPDATE PointSystem SET Kirrelon=NULL WHERE Position=43");
  auto league = NewLeague();

  for (const char* sql :
       {"SELECT * FROM Bonus ORDER BY BonusID", "SELECT * FROM RankCriteria ORDER BY RankCriteriaID"}) {
    EXPECT_EQ(Rows(*league, sql), Rows(*template_, sql)) << sql;
  }
  EXPECT_EQ(Rows(*league, "SELECT Position, Points FROM PointSystem ORDER BY Position"),
            Rows(*template_, "SELECT Position, Kirrelon FROM PointSystem ORDER BY Position"));
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM PointSystem WHERE PrizeMoney IS NULL"), "43");
  league->Execute("INSERT INTO Bonus (Name) VALUES ('Next')");
  EXPECT_EQ(Single(*league, "SELECT BonusID FROM Bonus WHERE Name='Next'"),
            Single(*template_, "SELECT Max(BonusID)+1 FROM Bonus"));
}

TEST_F(MDBBuildTest, AFailingCreationReportsTheErrorAndLeavesWhatItMade) {
  template_->DeleteTableDef("RankCriteria");
  try {
    NewLeague();
    FAIL() << "the league was made without ranking criteria";
  } catch (const engine::EngineError& error) {
    EXPECT_EQ(error.Number(), engine::kUnknownTable);
  }
  auto league = engine_.DefaultWorkspace().OpenDatabase(folder_.File("league.lgx"));
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM Settings"), "9");
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM PointSystem"), "43");
  EXPECT_EQ(Single(*league, "SELECT Count(*) FROM RankCriteria"), "0");
  league.reset();

  EXPECT_THROW(NewLeague(), engine::EngineError) << "the file is there already";
}

TEST_F(MDBBuildTest, MissingDefaultSettingsAreAddedOnce) {
  auto league = NewLeague();
  league->Execute("DELETE * FROM Settings WHERE SettingsID IN (12,13)");
  league->Execute("UPDATE Settings SET SettingValue=NULL WHERE SettingsID=14");
  const std::vector<std::string> expected = {"12|League Type|0", "13|Use Custom Point System|0",
                                             "14|Use Custom Bonus System|Null"};
  for (int opening = 1; opening <= 2; ++opening) {
    db::EnsureDefaultSettings(*league);
    EXPECT_EQ(Rows(*league, "SELECT * FROM Settings WHERE SettingsID BETWEEN 12 AND 14 ORDER BY SettingsID"),
              expected)
        << "opening " << opening;
  }
}

}  // namespace
}  // namespace scorvane::test
