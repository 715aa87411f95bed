#include "sheets/SeasonSheets.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>

#include "championship/Reports.h"
#include "common/RuleError.h"
#include "reports/DroppedRaces.h"
#include "scoring/Penalties.h"
#include "site/Model.h"

namespace scorvane::sheets {
namespace {

using engine::Value;

// What is not known stays an empty cell.
template <typename Number>
Cell Known(const std::optional<Number>& number) {
  if (!number) return {};
  if constexpr (std::is_floating_point_v<Number>) {
    return {Value(*number)};
  } else {
    return {Value(static_cast<std::int32_t>(*number))};
  }
}

Cell Number(std::int64_t number) {
  return {Value(static_cast<std::int32_t>(number))};
}

Cell::Mark MarkOf(const site::SiteResult& result) {
  if (result.dropped) return Cell::Mark::Dropped;
  return result.finish == std::int16_t{1} ? Cell::Mark::Win : Cell::Mark::None;
}

std::string RaceLabel(const site::SiteModel& model, std::size_t race) {
  return fmt::format("{} {}", race + 1, model.races[race].name);
}

Sheet RaceSheet(const site::SiteModel& model, std::size_t race,
                const std::map<std::int32_t, std::string>& penalties) {
  Sheet sheet;
  sheet.name = RaceLabel(model, race);
  sheet.columns = {{"Finish", "0", true},      {"Start", "0", true},          {"Driver", {}, false},
                   {"Laps", "0", true},        {"Laps Led", "0", true},       {"Points", "0", true},
                   {"Bonus", "0", true},       {"Qualifying", "0.000", true}, {"Status", {}, false},
                   {"Prize Money", "0", true}, {"Dropped", {}, false}};
  if (!penalties.empty()) sheet.columns.push_back({"Penalty", {}, false});
  sheet.frozen = 3;
  for (std::size_t i = model.races[race].first; i < model.races[race].end; ++i) {
    const site::SiteResult& result = model.results[i];
    sheet.rows.push_back({Known(result.finish),
                          Known(result.start),
                          {Value(model.drivers[result.driver].name)},
                          Known(result.lapsRun),
                          Known(result.lapsLed),
                          Known(result.points),
                          Known(result.bonus),
                          Known(result.qualifying),
                          {Value(model.Status(result))},
                          Known(result.prizeMoney),
                          {Value(result.dropped ? "yes" : "")}});
    if (const auto penalty = penalties.find(result.id); !penalties.empty())
      sheet.rows.back().push_back({penalty == penalties.end() ? Value() : Value(penalty->second)});
    sheet.rows.back()[2].mark = MarkOf(result) == Cell::Mark::Win ? Cell::Mark::Win : Cell::Mark::None;
    sheet.rows.back()[5].mark = MarkOf(result);
  }
  return sheet;
}

// Drivers in the order of the standings, and of each race where they finished and what it brought.
Sheet Matrix(const site::SiteModel& model, std::string name, bool points) {
  Sheet sheet;
  sheet.name = std::move(name);
  sheet.frozen = 3;
  sheet.columns = {{"Pos", "0", true}, {"Driver", {}, false}, {"Points", "0", true}};
  for (std::size_t race = 0; race < model.races.size(); ++race)
    sheet.columns.push_back({RaceLabel(model, race), "0", true});
  for (const std::uint32_t place : model.standings) {
    const site::SiteDriver& driver = model.drivers[place];
    std::vector<Cell> row(sheet.columns.size());
    row[0] = Number(static_cast<std::int64_t>(driver.position));
    row[1] = {Value(driver.name)};
    row[2] = Number(driver.Points());
    for (const std::uint32_t i : driver.results) {
      const site::SiteResult& result = model.results[i];
      Cell& cell = row[3 + result.race];
      cell = points ? Known(result.points) : Known(result.finish);
      cell.mark = MarkOf(result);
    }
    sheet.rows.push_back(std::move(row));
  }
  return sheet;
}

void WriteSheet(const Sheet& sheet, const std::string& path) {
  if (KindOf(path) == FileKind::Xlsx) return WriteXlsx(path, {sheet});
  if (KindOf(path) == FileKind::Csv) return WriteCsv(path, sheet);
  throw common::RuleError(fmt::format("'{}' names no spreadsheet: it ends in .xlsx or .csv.", path));
}

}  // namespace

Sheet ReportSheet(const std::string& name, const reports::ReportTable& report) {
  Sheet sheet;
  sheet.name = name;
  sheet.columns.push_back({"Pos", "0", true});
  std::vector<std::size_t> shown;
  for (std::size_t c = 0; c < report.columns.size(); ++c) {
    if (report.columns[c].hidden) continue;
    shown.push_back(c);
    sheet.columns.push_back(
        {report.columns[c].name, report.columns[c].format, report.columns[c].alignment != 0});
  }
  sheet.frozen = std::min<std::size_t>(2, sheet.columns.size());
  for (std::size_t r = 0; r < report.rows.size(); ++r) {
    std::vector<Cell> row = {Number(static_cast<std::int64_t>(r) + 1)};
    for (const std::size_t c : shown) row.push_back({report.rows[r][c]});
    sheet.rows.push_back(std::move(row));
  }
  return sheet;
}

void WriteReport(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                 const reports::ReportInfo& report, const std::string& path) {
  reports::MarkDroppedRaces(league, state.droppedRaces);
  const auto table = championship::RunReport(league, templateDb, state, report.id);
  if (!table) throw common::RuleError(fmt::format("The report '{}' has no columns.", report.name));
  WriteSheet(ReportSheet(report.name, *table), path);
}

void WriteRace(engine::Database& league, const common::ProcessState& state, std::int32_t raceId,
               const std::string& path) {
  reports::MarkDroppedRaces(league, state.droppedRaces);
  const site::SiteModel model = site::ReadModel(league, state);
  const auto found = std::find_if(model.races.begin(), model.races.end(),
                                  [raceId](const site::SiteRace& race) { return race.id == raceId; });
  if (found == model.races.end()) throw common::RuleError(fmt::format("There is no race {}.", raceId));
  WriteSheet(RaceSheet(model, static_cast<std::size_t>(found - model.races.begin()),
                       scoring::PenaltyTexts(league, raceId)),
             path);
}

void WriteSeason(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                 common::UserInterface& ui, const std::string& path) {
  if (KindOf(path) != FileKind::Xlsx)
    throw common::RuleError(fmt::format("A season takes several sheets: '{}' should end in .xlsx.", path));
  reports::MarkDroppedRaces(league, state.droppedRaces);
  const site::SiteModel model = site::ReadModel(league, state);
  if (model.races.size() > kMostRaces)
    throw common::RuleError(fmt::format("A spreadsheet takes {} races at most; the league has {}.",
                                        kMostRaces, model.races.size()));
  std::vector<Sheet> sheets;
  for (const reports::ReportInfo& info : championship::ListReports(league, templateDb)) {
    // Those that list every result of the season say nothing that the races' sheets do not.
    if (info.id > 0 && info.name != championship::kPointStandings) continue;
    if (const auto table = championship::RunReport(league, templateDb, state, info.id))
      sheets.push_back(ReportSheet(info.name, *table));
  }
  sheets.push_back(Matrix(model, "Finishes", false));
  sheets.push_back(Matrix(model, "Points", true));
  for (std::size_t race = 0; race < model.races.size(); ++race)
    sheets.push_back(RaceSheet(model, race, scoring::PenaltyTexts(league, model.races[race].id)));
  const auto progress = ui.StartProgress("Writing the spreadsheet", static_cast<int>(sheets.size()));
  int done = 0;
  WriteXlsx(path, sheets, [&] { progress->SetValue(++done); });
}

}  // namespace scorvane::sheets
