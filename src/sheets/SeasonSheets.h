// A league as sheets of a spreadsheet: one of its reports, a race, or the whole season.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"
#include "reports/Report.h"
#include "sheets/Sheet.h"

namespace scorvane::sheets {

inline constexpr std::size_t kMostRaces = 2000;  // of a season in one file

// The places in front, hidden columns left out.
Sheet ReportSheet(const std::string& name, const reports::ReportTable& report);

// Writes a report to a .csv or .xlsx file. Throws what WriteXlsx does, and EngineError.
void WriteReport(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                 const reports::ReportInfo& report, const std::string& path);

// Writes the results of a race to such a file.
void WriteRace(engine::Database& league, const common::ProcessState& state, std::int32_t raceId,
               const std::string& path);

// Writes standings, matrix and a sheet for each race to an .xlsx file. Throws what WriteXlsx does, RuleError
// also for a season of more than kMostRaces races; EngineError.
void WriteSeason(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                 common::UserInterface& ui, const std::string& path);

}  // namespace scorvane::sheets
