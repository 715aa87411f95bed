// The tables of a league file, as they are made. The template holds four of them too.
#pragma once

#include <string>

#include "engine/Schema.h"

namespace scorvane::db {

engine::TableDef DriverTable();
engine::TableDef RaceTable();
engine::TableDef SettingsTable();
engine::TableDef StatsTable();
engine::TableDef StagedRaceTable();    // STNRace
engine::TableDef StagedResultTable();  // STNStats
engine::TableDef PointSystemTable();
engine::TableDef BonusTable();
engine::TableDef RankCriteriaTable();
// Made with a league's first penalty, and not before.
engine::TableDef PenaltyTable();
engine::TableDef PenaltyBaseTable();  // what results of races with penalties are without them

// A field with the engine's own choice for whatever is left out. `size` counts the characters of a Text.
engine::Field Column(std::string name, engine::FieldType type, int size = 0, int attributes = 0,
                     bool required = false);
engine::Index PrimaryKey(std::string field);

// A relation over the one field that both tables call by the same name: changing or deleting a row of `table`
// does the same to the rows of `foreignTable` that belong to it.
engine::Relation CascadingRelation(std::string name, std::string table, std::string foreignTable,
                                   const std::string& field);

}  // namespace scorvane::db
