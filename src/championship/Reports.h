// The league's reports, those of the template and those that are worked out: one list and one way to run
// them, for the window, the command line and the pages.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "championship/Season.h"
#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/DroppedRaces.h"
#include "reports/Report.h"

namespace scorvane::championship {

// Reports that no template has, by ids that none of it can have.
inline constexpr std::int32_t kTeamStandings = -1;
inline constexpr std::int32_t kMakeStandings = -2;
inline constexpr const char* kPointStandings = "Point Standings";

// The template's in their order; behind them those of the league, where it has what they show.
std::vector<reports::ReportInfo> ListReports(engine::Database& league, engine::Database& templateDb);

// Whether a report is worked out in memory: one that no template has, or Point Standings with a playoff.
bool IsComputed(engine::Database& league, engine::Database& templateDb, std::int32_t reportId);

// Runs a report of either kind. In a league with a playoff, Point Standings come in the order and with the
// points of the playoff, and say in a column at the end who is in and who is out. Dropped races must be
// marked (reports::MarkDroppedRaces). Throws what reports::RunReport does, and common::RuleError where the
// playoff in the file is none.
std::optional<reports::ReportTable> RunReport(engine::Database& league, engine::Database& templateDb,
                                              const common::ProcessState& state, std::int32_t reportId);

// The same as it stood after a race, whatever is marked as dropped. RuleError when there is no such race, and
// for reports that are no standings. `marks` takes what the caption is made of.
std::optional<reports::ReportTable> RunReportAfter(engine::Database& league, engine::Database& templateDb,
                                                   const common::ProcessState& state, std::int32_t reportId,
                                                   std::int32_t raceId, reports::DroppedMarks& marks);

// Who is in a playoff, or would be if it began now: of each driver his points and wins, the points that the
// playoff gives him, and the stage. Throws EngineError.
reports::ReportTable RunPlayoffOutlook(engine::Database& league, const common::ProcessState& state,
                                       const PlayoffFormat& playoff);

// The season in the playoff's order of races, as it was after a race where one is given. RuleError when the
// league has no such race; throws EngineError.
Season ReadSeasonAfter(engine::Database& league, const std::optional<PlayoffFormat>& playoff,
                       std::optional<std::int32_t> raceId);

// What stands above a report, with its colon.
std::string ReportCaption(engine::Database& league, std::int32_t reportId,
                          const reports::DroppedMarks& marks);

// The table for a page, into which texts go as markup: what is the program's own is escaped.
reports::ReportTable ForPage(reports::ReportTable table);

}  // namespace scorvane::championship
