#include "db/MDBBuild.h"

#include <array>
#include <memory>
#include <utility>

#include <fmt/format.h>

#include "common/SettingsStore.h"

namespace scorvane::db {
namespace {

using engine::Field;
using engine::FieldType;
using engine::Index;
using engine::Relation;
using engine::TableDef;

constexpr int kFixedCounter = engine::kAutoIncrField | engine::kFixedField;
constexpr int kFixed = engine::kFixedField;
constexpr int kVariable = engine::kVariableField;
constexpr int kCascade = engine::kUpdateCascade | engine::kDeleteCascade;

// A field with the engine's own choice for whatever is left out.
Field Column(std::string name, FieldType type, int size = 0, int attributes = 0, bool required = false) {
  Field field;
  field.Name = std::move(name);
  field.Type = type;
  field.Size = size;
  field.Attributes = attributes;
  field.Required = required;
  return field;
}

Field ColumnWithDefault(std::string name, FieldType type, std::string literal) {
  Field field = Column(std::move(name), type);
  field.DefaultValue = std::move(literal);
  return field;
}

Index PrimaryKey(std::string field) {
  return {"PrimaryKey", {std::move(field)}, true, true, true};
}

Index PlainIndex(std::string name, std::string field, bool required = false) {
  return {std::move(name), {std::move(field)}, false, false, required};
}

TableDef DriverTable() {
  return {"Driver",
          {
              Column("DriverID", FieldType::Long, 4, kFixedCounter),
              Column("Name", FieldType::Text, 50, kVariable, true),
              Column("Exclude", FieldType::Boolean),
              Column("Rookie", FieldType::Boolean),
              ColumnWithDefault("Handicap", FieldType::Long, "0"),
          },
          {PlainIndex("Name", "Name"), PrimaryKey("DriverID")}};
}

TableDef RaceTable() {
  return {"Race",
          {
              Column("RaceID", FieldType::Long, 4, kFixedCounter),
              Column("Name", FieldType::Text, 50, kVariable),
              Column("FileName", FieldType::Text, 50, kVariable),
              Column("Length", FieldType::Single, 4, kFixed),
              Column("Laps", FieldType::Integer, 2, kFixed),
              Column("RaceTime", FieldType::Text, 15),
              Column("AvgSpeed", FieldType::Text, 10),
              Column("VictoryMargin", FieldType::Text, 10),
              Column("Cautions", FieldType::Integer),
              Column("LeadChanges", FieldType::Integer),
              Column("Weather", FieldType::Text, 20),
          },
          {PrimaryKey("RaceID")}};
}

TableDef SettingsTable() {
  return {"Settings",
          {
              Column("SettingsID", FieldType::Long, 4, kFixed),
              Column("SettingName", FieldType::Text, 50, kVariable),
              Column("SettingValue", FieldType::Memo, 0, kVariable),
          },
          {PrimaryKey("SettingsID")}};
}

TableDef StatsTable() {
  return {"Stats",
          {
              Column("StatsID", FieldType::Long, 4, kFixedCounter),
              Column("RaceID", FieldType::Long, 4, kFixed),
              Column("DriverID", FieldType::Long, 4, kFixed),
              Column("Start", FieldType::Integer, 2, kFixed),
              Column("Finish", FieldType::Integer, 2, kFixed),
              Column("LapsRun", FieldType::Integer, 2, kFixed),
              Column("LapsLed", FieldType::Integer, 2, kFixed),
              Column("Status", FieldType::Text, 25, kVariable),
              Column("Points", FieldType::Long, 4, kFixed),
              Column("Bonus", FieldType::Long, 4, kFixed),
              Column("PrizeMoney", FieldType::Long, 4, kFixed),
              Column("Qualifying", FieldType::Single, 4, kFixed),
              Column("Dropped", FieldType::Boolean),
              Column("AvgSpeed", FieldType::Text, 10),
          },
          {PlainIndex("DriverStats", "DriverID"), PrimaryKey("StatsID"), PlainIndex("RaceStats", "RaceID")}};
}

TableDef StagedRaceTable() {
  return {"STNRace",
          {
              Column("STNRaceID", FieldType::Long, 0, engine::kAutoIncrField, true),
              Column("Name", FieldType::Text, 50),
              Column("FileName", FieldType::Text, 50),
              Column("Length", FieldType::Single),
              Column("Laps", FieldType::Integer),
              Column("RaceTime", FieldType::Text, 15),
              Column("AvgSpeed", FieldType::Text, 10),
              Column("VictoryMargin", FieldType::Text, 10),
              Column("Cautions", FieldType::Integer),
              Column("LeadChanges", FieldType::Integer),
              Column("Weather", FieldType::Text, 20),
          },
          {PrimaryKey("STNRaceID")}};
}

TableDef StagedResultTable() {
  return {"STNStats",
          {
              Column("STNStatsID", FieldType::Long, 0, engine::kAutoIncrField, true),
              Column("STNRaceID", FieldType::Long),
              Column("Finish", FieldType::Integer),
              Column("Start", FieldType::Integer),
              Column("DriverName", FieldType::Text, 50),
              Column("LapsRun", FieldType::Integer),
              Column("LapsLed", FieldType::Integer),
              Column("Points", FieldType::Long),
              Column("Bonus", FieldType::Long),
              Column("Qualifying", FieldType::Single),
              Column("ReasonOut", FieldType::Text, 25),
              Column("PrizeMoney", FieldType::Long),
              Column("Exclude", FieldType::Boolean),
              Column("AvgSpeed", FieldType::Single),
          },
          {PrimaryKey("STNStatsID"), PlainIndex("STNRaceIDKey", "STNRaceID", true),
           PlainIndex("DNameIDX", "DriverName", true)}};
}

TableDef PointSystemTable() {
  return {"PointSystem",
          {
              Column("Position", FieldType::Integer, 0, kFixed, true),
              Column("Points", FieldType::Integer, 0, kFixed),
              Column("PrizeMoney", FieldType::Long, 0, kFixed),
          },
          {PrimaryKey("Position")}};
}

TableDef BonusTable() {
  return {"Bonus",
          {
              Column("BonusID", FieldType::Long, 0, kFixedCounter, true),
              Column("Name", FieldType::Text, 30),
              Column("Points", FieldType::Integer),
              Column("Query", FieldType::Memo),
          },
          {PrimaryKey("BonusID")}};
}

TableDef RankCriteriaTable() {
  return {"RankCriteria",
          {
              Column("RankCriteriaID", FieldType::Long, 0, kFixedCounter, true),
              Column("Name", FieldType::Text, 30),
              Column("Priority", FieldType::Integer),
              Column("Query", FieldType::Memo),
              Column("N4", FieldType::Boolean),
          },
          {PrimaryKey("RankCriteriaID")}};
}

// A relation over the one field that both tables call by the same name.
Relation CascadingRelation(std::string name, std::string table, std::string foreignTable,
                           const std::string& field) {
  return {std::move(name), std::move(table), std::move(foreignTable), kCascade, field, field};
}

// `rest` is what follows the id in the list of values: the name and the value, each as a literal.
void InsertSetting(engine::Database& league, int id, std::string_view rest) {
  league.Execute(
      fmt::format("INSERT INTO Settings (SettingsID, SettingName, SettingValue) VALUES ({}{}", id, rest));
}

}  // namespace

void CreateLeagueFile(engine::DBEngine& engine, const std::string& path, std::int16_t simType,
                      std::int16_t leagueType, engine::Database& templateDb, std::int16_t droppedRaces,
                      std::int16_t lapReportingMethod) {
  const std::unique_ptr<engine::Database> league = engine.DefaultWorkspace().CreateDatabase(path);
  engine::UnitOfWork unit(*league);

  league->AppendTableDef(DriverTable());
  league->AppendTableDef(RaceTable());
  league->AppendTableDef(SettingsTable());
  league->AppendTableDef(StatsTable());
  league->AppendRelation(CascadingRelation("DriverStatsX", "Driver", "Stats", "DriverID"));
  league->AppendRelation(CascadingRelation("RaceStatsX", "Race", "Stats", "RaceID"));

  InsertSetting(*league, common::kPageHeading, ",'Page Heading','XYZ Racing League')");
  InsertSetting(*league, common::kReportName, ",'Report Name','Point Standings')");
  InsertSetting(*league, common::kCaption, ",'Caption','Results after X races')");
  InsertSetting(*league, common::kSimTitle, fmt::format(",'Sim Title',{})", simType));
  InsertSetting(*league, common::kDroppedRaces, fmt::format(",'Dropped Races','{}')", droppedRaces));
  InsertSetting(*league, common::kLeagueTypeSetting, fmt::format(",'League Type','{}')", leagueType));
  InsertSetting(*league, common::kUseCustomPointSystem, ",'Use Custom Point System','0')");
  InsertSetting(*league, common::kUseCustomBonusSystem, ",'Use Custom Bonus System','0')");
  InsertSetting(*league, common::kLapReportingMethodSetting,
                fmt::format(",'Lap Reporting Method','{}')", lapReportingMethod));

  CreateStagingAndTemplateTables(*league, templateDb);
  unit.Commit();
}

void EnsureDefaultSettings(engine::Database& league) {
  constexpr std::array<std::pair<int, std::string_view>, 3> kDefaults{{
      {common::kLeagueTypeSetting, ",'League Type',0)"},
      {common::kUseCustomPointSystem, ",'Use Custom Point System',0)"},
      {common::kUseCustomBonusSystem, ",'Use Custom Bonus System',0)"},
  }};
  for (const auto& [id, rest] : kDefaults) {
    if (common::GetSettingValue(league, id) == common::kMissingSetting) InsertSetting(league, id, rest);
  }
}

void CreateStagingAndTemplateTables(engine::Database& league, engine::Database& templateDb) {
  engine::UnitOfWork unit(league);

  league.AppendTableDef(StagedRaceTable());
  league.AppendTableDef(StagedResultTable());
  league.AppendTableDef(PointSystemTable());
  league.AppendTableDef(BonusTable());
  league.AppendTableDef(RankCriteriaTable());
  league.AppendRelation(CascadingRelation("STNRaceResults", "STNRace", "STNStats", "STNRaceID"));

  // The path stands between the apostrophes as it is.
  const std::string& path = league.Name();
  templateDb.Execute("INSERT INTO Bonus IN '" + path + "' SELECT * FROM Bonus");
  templateDb.Execute("INSERT INTO PointSystem IN '" + path +
                     "' SELECT Position, Kirrelon As Points FROM PointSystem");
  templateDb.Execute("INSERT INTO RankCriteria IN '" + path + "' SELECT * FROM RankCriteria");
  unit.Commit();
}

}  // namespace scorvane::db
