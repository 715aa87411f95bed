#include "championship/Reports.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "championship/Season.h"
#include "championship/Standings.h"
#include "championship/TeamStandings.h"
#include "championship/Teams.h"
#include "common/Markup.h"
#include "common/RuleError.h"
#include "engine/Names.h"

namespace scorvane::championship {
namespace {

using engine::Value;
using reports::ReportColumn;
using reports::ReportTable;

constexpr const char* kPlayoffField = "Playoff";
constexpr const char* kGroupField = "Group";

// A sum as the store yields it: a whole number that may need more than 32 bits.
Value Sum(std::int64_t number) {
  if (number >= INT32_MIN && number <= INT32_MAX) return {static_cast<std::int32_t>(number)};
  return {static_cast<double>(number)};
}

Value Average(std::int64_t sum, int count) {
  return count == 0 ? Value() : Value(static_cast<double>(sum) / count);
}

std::optional<GroupKind> KindOf(std::int32_t reportId) {
  if (reportId == kTeamStandings) return GroupKind::Team;
  if (reportId == kMakeStandings) return GroupKind::Make;
  return std::nullopt;
}

ReportColumn CountColumn(const char* heading, int width, const char* field, const char* format = "0") {
  return {heading, width, reports::kCentred, format, false, field};
}

ReportTable GroupTable(engine::Database& league, const Season& season, GroupKind kind) {
  ReportTable table;
  table.columns = {{kind == GroupKind::Team ? "Team" : "Make", 2200, 0, "", false, kGroupField},
                   CountColumn("Points", 750, "Points"),
                   CountColumn("Interval", 800, "Interval", "0;;--"),
                   CountColumn("Wins", 600, "Wins"),
                   CountColumn("Top 5", 650, "Top5"),
                   CountColumn("Top 10", 700, "Top10"),
                   CountColumn("Starts", 700, "Starts"),
                   CountColumn("Drivers", 750, "Drivers")};
  const auto standings = ComputeGroupStandings(season, ListGroups(league, kind),
                                               ListMemberships(league, kind), BestResults(league, kind));
  for (const GroupStanding& standing : standings) {
    table.rows.push_back({Value(standing.name), Sum(standing.points),
                          Sum(standings.front().points - standing.points), Value(standing.totals.Wins()),
                          Value(standing.totals.Top(5)), Value(standing.totals.Top(10)),
                          Value(standing.totals.starts), Value(standing.drivers)});
  }
  return table;
}

// What a row of the point standings is made of.
struct PointRow {
  const Season& season;
  const Standing& standing;
  std::int64_t leader = 0;  // the first one's points
};

// By the names that the template's query has for them.
struct PointField {
  const char* name;
  Value (*value)(const PointRow& row);
};
constexpr PointField kPointFields[] = {
    {"DriverName", [](const PointRow& row) { return Value(row.season.drivers[row.standing.driver].name); }},
    {"Points", [](const PointRow& row) { return Sum(row.standing.points); }},
    {"Interval", [](const PointRow& row) { return Sum(row.leader - row.standing.points); }},
    {"Starts", [](const PointRow& row) { return Value(row.standing.totals.starts); }},
    {"Wins", [](const PointRow& row) { return Value(row.standing.totals.Wins()); }},
    {"Top5", [](const PointRow& row) { return Value(row.standing.totals.Top(5)); }},
    {"Top10", [](const PointRow& row) { return Value(row.standing.totals.Top(10)); }},
    {"Poles", [](const PointRow& row) { return Value(row.standing.totals.poles); }},
    {"Laps", [](const PointRow& row) { return Sum(row.standing.totals.lapsRun); }},
    {"LapsLed", [](const PointRow& row) { return Sum(row.standing.totals.lapsLed); }},
    {"AvgStart",
     [](const PointRow& row) {
       return Average(row.standing.totals.startSum, row.standing.totals.startsKnown);
     }},
    {"AvgFinish",
     [](const PointRow& row) {
       return Average(row.standing.totals.finishSum, row.standing.totals.finishesKnown);
     }},
    {"DNFs", [](const PointRow& row) { return Value(row.standing.totals.dnfs); }},
    {"Bonus", [](const PointRow& row) { return Sum(row.standing.totals.bonus); }},
    {"PrizeMoney",
     [](const PointRow& row) {
       const auto& money = row.standing.totals.prizeMoney;
       return money ? Sum(*money) : Value();
     }},
    {kPlayoffField, [](const PointRow& row) { return Value(row.standing.stage); }},
};

const PointField* FindPointField(std::string_view name) {
  const auto* const found =
      std::find_if(std::begin(kPointFields), std::end(kPointFields),
                   [&](const PointField& field) { return engine::SameName(field.name, name); });
  return found == std::end(kPointFields) ? nullptr : found;
}

ReportTable PointTable(engine::Database& templateDb, const Season& season, std::int32_t reportId, int dropped,
                       const PlayoffFormat* playoff) {
  const std::vector<Standing> standings = ComputeStandings(season, dropped, playoff);
  ReportTable table;
  table.columns = reports::ReadReportColumns(templateDb, reportId);
  // A column that somebody has added to the template asks for what only its query knows.
  std::erase_if(table.columns,
                [](const ReportColumn& column) { return FindPointField(column.field) == nullptr; });
  if (playoff != nullptr) table.columns.push_back({"Playoff", 1700, 0, "", false, kPlayoffField});
  for (const Standing& standing : standings) {
    std::vector<Value>& row = table.rows.emplace_back();
    for (const ReportColumn& column : table.columns)
      row.push_back(FindPointField(column.field)->value({season, standing, standings.front().points}));
  }
  return table;
}

bool IsPointStandings(engine::Database& templateDb, std::int32_t reportId) {
  const auto rows =
      templateDb.OpenRecordset(fmt::format("SELECT Name FROM Report WHERE ReportID={}", reportId));
  return !rows.AtEnd() && engine::SameName(rows.At(0).Text(), kPointStandings);
}

}  // namespace

std::vector<reports::ReportInfo> ListReports(engine::Database& league, engine::Database& templateDb) {
  std::vector<reports::ReportInfo> reports = reports::ListReports(templateDb);
  if (!ListGroups(league, GroupKind::Team).empty()) reports.push_back({kTeamStandings, "Team Standings"});
  if (!ListGroups(league, GroupKind::Make).empty())
    reports.push_back({kMakeStandings, "Manufacturer Standings"});
  return reports;
}

bool IsComputed(engine::Database& league, engine::Database& templateDb, std::int32_t reportId) {
  return KindOf(reportId) || (HasPlayoff(league) && IsPointStandings(templateDb, reportId));
}

std::optional<ReportTable> RunReport(engine::Database& league, engine::Database& templateDb,
                                     const common::ProcessState& state, std::int32_t reportId) {
  if (!IsComputed(league, templateDb, reportId)) return reports::RunReport(league, templateDb, reportId);
  const auto kind = KindOf(reportId);
  const auto playoff = ReadPlayoff(league);
  const Season season = ReadSeasonAfter(league, playoff, std::nullopt);
  if (kind) return GroupTable(league, season, *kind);
  ReportTable table =
      PointTable(templateDb, season, reportId, state.droppedRaces, playoff ? &*playoff : nullptr);
  if (table.columns.empty()) return std::nullopt;
  return table;
}

std::optional<ReportTable> RunReportAfter(engine::Database& league, engine::Database& templateDb,
                                          const common::ProcessState& state, std::int32_t reportId,
                                          std::int32_t raceId, reports::DroppedMarks& marks) {
  const auto kind = KindOf(reportId);
  if (!kind && !IsPointStandings(templateDb, reportId))
    throw common::RuleError(
        "Only standings of points, teams and makes are shown as they stood after a race.");
  const auto playoff = ReadPlayoff(league);
  const Season season = ReadSeasonAfter(league, playoff, raceId);
  marks.events = static_cast<int>(season.races.size());
  marks.best = std::max(1, marks.events - state.droppedRaces);
  if (kind) return GroupTable(league, season, *kind);
  return PointTable(templateDb, season, reportId, state.droppedRaces, playoff ? &*playoff : nullptr);
}

ReportTable RunPlayoffOutlook(engine::Database& league, const common::ProcessState& state,
                              const PlayoffFormat& playoff) {
  const Season season = ReadSeasonAfter(league, playoff, std::nullopt);
  const auto races = static_cast<int>(season.races.size());
  PlayoffFormat asOfNow = playoff;
  if (const bool ahead = races < playoff.stages.front().after; ahead) {
    asOfNow.stages.resize(1);
    asOfNow.stages.front().after = races;
  }
  ReportTable table;
  table.columns = {{"Driver", 2200, 0, "", false, "DriverName"},
                   CountColumn("Points", 750, "Points"),
                   CountColumn("Wins", 600, "Wins"),
                   CountColumn("In Playoff", 950, "PlayoffPoints"),
                   {"Playoff", 1700, 0, "", false, kPlayoffField}};
  if (races == 0) return table;
  for (const Standing& standing : ComputeStandings(season, state.droppedRaces, &asOfNow)) {
    const bool in = standing.tier != Standing::Out;
    table.rows.push_back({Value(season.drivers[standing.driver].name), Sum(standing.totals.points),
                          Value(standing.totals.Wins()), in ? Sum(standing.points) : Value(),
                          Value(standing.stage)});
  }
  return table;
}

Season ReadSeasonAfter(engine::Database& league, const std::optional<PlayoffFormat>& playoff,
                       std::optional<std::int32_t> raceId) {
  Season season = ReadSeason(league, playoff ? playoff->late : std::vector<Season::LateRace>());
  if (!raceId) return season;
  const auto place = season.Place(*raceId);
  if (!place) throw common::RuleError(fmt::format("The league has no race {}.", *raceId));
  season.Truncate(*place + 1);
  return season;
}

std::string ReportCaption(engine::Database& league, std::int32_t reportId,
                          const reports::DroppedMarks& marks) {
  const auto kind = KindOf(reportId);
  if (!kind) return reports::StandingsCaption(marks);
  const int best = BestResults(league, *kind);
  const std::string counted = best == 0   ? "All results"
                              : best == 1 ? "The best result"
                                          : fmt::format("The best {} results", best);
  return fmt::format("{} of each {} in each of {} events:", counted, KindName(*kind), marks.events);
}

ReportTable ForPage(ReportTable table) {
  for (std::size_t c = 0; c < table.columns.size(); ++c) {
    if (table.columns[c].field != kGroupField && table.columns[c].field != kPlayoffField) continue;
    for (auto& row : table.rows) row[c] = Value(common::EscapeMarkup(row[c].Text()));
  }
  return table;
}

}  // namespace scorvane::championship
