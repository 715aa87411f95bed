// Commands that show what a league or the template holds.
#include <fmt/format.h>

#include "championship/Reports.h"
#include "engine/Names.h"
#include "history/History.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/ReportNames.h"
#include "reports/DroppedRaces.h"
#include "reports/Report.h"
#include "scoring/Penalties.h"

namespace scorvane::cli {
namespace {

void PrintQuery(const CommonOptions& common, engine::Database& database, const std::string& query,
                const engine::QueryLimits& limits = {}) {
  auto rows = database.OpenRecordset(query, engine::RecordsetType::Snapshot, limits);
  Print(TableOf(rows), common.format, common.decimal);
}

OutputTable StandingsTable(const reports::ReportTable& report, char decimal) {
  OutputTable table;
  std::vector<std::size_t> shown;
  table.columns.push_back({"Pos", true});
  for (std::size_t c = 0; c < report.columns.size(); ++c) {
    if (report.columns[c].hidden) continue;
    shown.push_back(c);
    table.columns.push_back({report.columns[c].name, report.columns[c].alignment != 0});
  }
  std::int32_t position = 0;
  for (const auto& row : report.rows) {
    std::vector<engine::Value> values = {engine::Value(++position)};
    std::vector<std::string> texts = {std::to_string(position)};
    for (const std::size_t c : shown) {
      values.push_back(row[c]);
      texts.push_back(reports::CellText(report.columns[c], row[c], decimal));
    }
    table.rows.push_back(std::move(values));
    table.texts.push_back(std::move(texts));
  }
  return table;
}

}  // namespace

reports::ReportInfo NeedReport(const std::vector<reports::ReportInfo>& all, const std::string& name) {
  if (all.empty()) throw CommandError("The template has no reports.");
  if (name.empty()) return all.front();
  std::string names;
  for (const reports::ReportInfo& report : all) {
    if (engine::SameName(report.name, name)) return report;
    names += (names.empty() ? "" : ", ") + report.name;
  }
  throw CommandError(fmt::format("There is no report '{}'. The reports are: {}.", name, names));
}

void Races(const CommonOptions& common, const std::string& path) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  PrintQuery(common, context.League(), "SELECT * FROM Race ORDER BY RaceID");
}

void Results(const CommonOptions& common, const std::string& path, std::int32_t raceId) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  engine::Database& league = context.League();
  NeedRace(league, raceId);
  auto rows = league.OpenRecordset(
      fmt::format("SELECT Stats.Finish, Stats.Start, Driver.Name AS Driver, Stats.LapsRun, Stats.LapsLed, "
                  "Stats.Points, Stats.Bonus, Stats.AvgSpeed, Stats.Qualifying, Stats.Status, "
                  "Stats.PrizeMoney, Stats.Dropped, Stats.StatsID "
                  "FROM Stats INNER JOIN Driver ON Driver.DriverID=Stats.DriverID "
                  "WHERE Stats.RaceID={} ORDER BY Stats.Finish",
                  raceId));
  OutputTable table = TableOf(rows);
  // The key only tells whose the penalties are.
  const auto penalties = scoring::PenaltyTexts(league, raceId);
  table.columns.pop_back();
  if (!penalties.empty()) table.columns.push_back({"Penalty"});
  for (auto& row : table.rows) {
    const auto penalty = penalties.find(row.back().ToLong());
    row.pop_back();
    if (!penalties.empty())
      row.push_back(penalty == penalties.end() ? engine::Value() : engine::Value(penalty->second));
  }
  Print(table, common.format, common.decimal);
}

void Drivers(const CommonOptions& common, const std::string& path) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  PrintQuery(common, context.League(), "SELECT * FROM Driver ORDER BY Name");
}

void Reports(const CommonOptions& common, const std::string& path) {
  if (path.empty()) {
    Context context(common);
    return PrintQuery(common, context.Template(), "SELECT ReportID, Name FROM Report ORDER BY Sequence");
  }
  Context context(common, path, app::LeagueSession::Use::Looking);
  OutputTable table;
  table.columns = {{"ReportID", true}, {"Name"}};
  for (const reports::ReportInfo& info : championship::ListReports(context.League(), context.Template())) {
    // What is no report of the template has no number there.
    table.rows.push_back({info.id > 0 ? engine::Value(info.id) : engine::Value(), engine::Value(info.name)});
  }
  Print(table, common.format, common.decimal);
}

void PrintReport(const CommonOptions& common, engine::Database& league, const std::string& name,
                 const std::string& caption, const reports::ReportTable& report) {
  const OutputTable table = StandingsTable(report, common.decimal);
  switch (common.format) {
    case OutputFormat::Table:
      fmt::print("{}\n{}\n\n", name, caption);
      Print(table, common.format, common.decimal);
      break;
    case OutputFormat::Csv:
      Print(table, common.format, common.decimal);
      break;
    case OutputFormat::Json: {
      std::string columns;
      for (std::size_t c = 1; c < table.columns.size(); ++c)
        columns += (c > 1 ? ", " : "") + JsonText(table.columns[c].name);
      const OutputTable penalties = PenaltyTable(league);
      const std::string listed =
          penalties.rows.empty() ? std::string() : ",\n\"penalties\": " + JsonRows(penalties, 1);
      fmt::print("{{\n\"report\": {},\n\"caption\": {},\n\"columns\": [{}],\n\"rows\": {}{}\n}}\n",
                 JsonText(name), JsonText(caption), columns, JsonRows(table, 1), listed);
      break;
    }
  }
}

void Standings(const CommonOptions& common, const StandingsOptions& options) {
  Context context(common, options.path, app::LeagueSession::Use::Looking);
  if (!options.whatIf.empty()) return ShowWhatIf(common, context, options);
  if (options.remaining) return ShowTitle(common, context, *options.remaining, options.afterRace);
  const reports::ReportInfo info =
      NeedReport(championship::ListReports(context.League(), context.Template()), options.report);
  reports::DroppedMarks marks;
  std::optional<reports::ReportTable> report;
  if (options.afterRace) {
    report = championship::RunReportAfter(context.League(), context.Template(), context.state, info.id,
                                          *options.afterRace, marks);
  } else {
    marks = reports::MarkDroppedRaces(context.League(), context.state.droppedRaces);
    report = championship::RunReport(context.League(), context.Template(), context.state, info.id);
  }
  if (!report) throw CommandError(fmt::format("The report '{}' has no columns.", info.name));
  PrintReport(common, context.League(), info.name,
              championship::ReportCaption(context.League(), info.id, marks), *report);
}

void Sql(const CommonOptions& common, const std::string& path, const std::string& statement) {
  engine::DBEngine engine;
  engine.DefaultWorkspace().SetDecimalSeparator(common.decimal);
  const bool select = engine::Database::IsSelect(statement);
  engine::OpenOptions options;
  options.readOnly = select;
  const auto database = engine.DefaultWorkspace().OpenDatabase(path, options);
  if (select) {
    PrintQuery(common, *database, statement, engine::kFileTextLimits);
    return;
  }
  // The template has no history.
  std::optional<history::Change> change;
  if (database->FindTableDef("Race") != nullptr) change.emplace(*database, "SQL: " + statement);
  const std::int64_t changed = database->Execute(statement);
  if (change) change->Commit();
  if (common.format == OutputFormat::Json) {
    fmt::print("{{\"changed\": {}}}\n", changed);
  } else {
    fmt::print("{} row{} changed.\n", changed, changed == 1 ? "" : "s");
  }
}

}  // namespace scorvane::cli
