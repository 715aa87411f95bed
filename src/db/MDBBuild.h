// Making a league file: its tables, what they start with, and the settings that older files lack.
#pragma once

#include <cstdint>
#include <string>

#include "engine/Database.h"

namespace scorvane::db {

// Makes the league file `path`, which must not exist yet, with the tables below and the template's point
// system, bonus rules and ranking criteria in it, and closes it again. Throws EngineError; what was made up
// to the error stays on the disk.
void CreateLeagueFile(engine::DBEngine& engine, const std::string& path, std::int16_t simType,
                      std::int16_t leagueType, engine::Database& templateDb, std::int16_t droppedRaces,
                      std::int16_t lapReportingMethod);

// Adds the settings League Type, Use Custom Point System and Use Custom Bonus System, each as 0, where the
// league has no such row. Throws EngineError.
void EnsureDefaultSettings(engine::Database& league);

// Adds the staging tables STNRace and STNStats and the league's own PointSystem, Bonus and RankCriteria,
// filled from the template. Throws EngineError; what was done up to the error stays.
void CreateStagingAndTemplateTables(engine::Database& league, engine::Database& templateDb);

}  // namespace scorvane::db
