#include "db/MDBBuild.h"

#include <gmock/gmock.h>

#include "db/LeagueFixture.h"

namespace scorvane::test {
namespace {

using engine::FieldType;
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

TEST_F(MDBBuildTest, FieldsAreAsOtherProgramsOfTheLeagueExpectThem) {
  struct Expected {
    const char* table;
    const char* field;
    FieldType type;
    int size;
    int attributes;
    bool required;
  };
  // Where two tables differ on a field of one name, and what is more than its type.
  const std::vector<Expected> expected = {
      {"Driver", "DriverID", FieldType::Long, 4, 17, false},
      {"Driver", "Name", FieldType::Text, 50, 2, true},
      {"Race", "Length", FieldType::Single, 4, 1, false},
      {"Race", "AvgSpeed", FieldType::Text, 10, 2, false},
      {"Race", "Weather", FieldType::Text, 20, 2, false},
      {"Settings", "SettingsID", FieldType::Long, 4, 1, false},
      {"Settings", "SettingValue", FieldType::Memo, 0, 2, false},
      {"Stats", "Status", FieldType::Text, 25, 2, false},
      {"Stats", "AvgSpeed", FieldType::Text, 10, 2, false},
      {"Stats", "Points", FieldType::Long, 4, 1, false},
      {"STNStats", "AvgSpeed", FieldType::Single, 4, 1, false},
      {"STNStats", "Points", FieldType::Long, 4, 1, false},
      {"PointSystem", "Position", FieldType::Integer, 2, 1, true},
      {"PointSystem", "Points", FieldType::Integer, 2, 1, false},
      {"Bonus", "BonusID", FieldType::Long, 4, 17, true},
      {"Bonus", "Name", FieldType::Text, 30, 2, false},
      {"RankCriteria", "Query", FieldType::Memo, 0, 2, false},
      {"RankCriteria", "N4", FieldType::Boolean, 1, 1, false},
  };
  auto league = NewLeague();
  for (const Expected& row : expected) {
    SCOPED_TRACE(std::string(row.table) + "." + row.field);
    const engine::TableDef* table = league->FindTableDef(row.table);
    ASSERT_NE(table, nullptr);
    const engine::Field* field = table->FindField(row.field);
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->Type, row.type);
    EXPECT_EQ(field->Size, row.size);
    EXPECT_EQ(field->Attributes, row.attributes);
    EXPECT_EQ(field->Required, row.required);
    EXPECT_FALSE(field->AllowZeroLength);
  }
  EXPECT_TRUE(league->FindTableDef("STNRace")->FindField("STNRaceID")->IsCounter());
  EXPECT_TRUE(league->FindTableDef("Stats")->FindIndex("PrimaryKey")->Primary);
  EXPECT_FALSE(league->FindTableDef("Driver")->FindIndex("Name")->Unique);
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
