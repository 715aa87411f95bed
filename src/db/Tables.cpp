#include "db/Tables.h"

#include <utility>

namespace scorvane::db {

using engine::Field;
using engine::FieldType;
using engine::Index;
using engine::TableDef;

namespace {

constexpr int kFixedCounter = engine::kAutoIncrField | engine::kFixedField;
constexpr int kFixed = engine::kFixedField;
constexpr int kVariable = engine::kVariableField;
constexpr int kCascade = engine::kUpdateCascade | engine::kDeleteCascade;

Field ColumnWithDefault(std::string name, FieldType type, std::string literal) {
  Field field = Column(std::move(name), type);
  field.DefaultValue = std::move(literal);
  return field;
}

Index PlainIndex(std::string name, std::string field, bool required = false) {
  return {std::move(name), {std::move(field)}, false, false, required};
}

}  // namespace

Field Column(std::string name, FieldType type, int size, int attributes, bool required) {
  Field field;
  field.Name = std::move(name);
  field.Type = type;
  field.Size = size;
  field.Attributes = attributes;
  field.Required = required;
  return field;
}

Index PrimaryKey(std::string field) {
  return {"PrimaryKey", {std::move(field)}, true, true, true};
}

engine::Relation CascadingRelation(std::string name, std::string table, std::string foreignTable,
                                   const std::string& field) {
  return {std::move(name), std::move(table), std::move(foreignTable), kCascade, field, field};
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

TableDef PenaltyTable() {
  return {"Penalty",
          {
              Column("PenaltyID", FieldType::Long, 0, kFixedCounter, true),
              Column("RaceID", FieldType::Long, 0, kFixed, true),
              Column("DriverID", FieldType::Long, 0, kFixed, true),
              Column("Kind", FieldType::Integer, 0, kFixed, true),
              Column("Amount", FieldType::Long, 0, kFixed),
              Column("Reason", FieldType::Text, 255, kVariable),
              Column("Given", FieldType::Text, 20, kVariable),
          },
          {PrimaryKey("PenaltyID"), PlainIndex("RacePenalty", "RaceID"),
           PlainIndex("DriverPenalty", "DriverID")}};
}

TableDef PenaltyBaseTable() {
  return {"PenaltyBase",
          {
              Column("StatsID", FieldType::Long, 0, kFixed, true),
              Column("Finish", FieldType::Integer, 0, kFixed),
              Column("Points", FieldType::Long, 0, kFixed),
              Column("Bonus", FieldType::Long, 0, kFixed),
              Column("PrizeMoney", FieldType::Long, 0, kFixed),
              Column("Status", FieldType::Text, 25, kVariable),
          },
          {PrimaryKey("StatsID")}};
}

}  // namespace scorvane::db
