#include "site/Data.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "common/Csv.h"
#include "common/Markup.h"
#include "reports/PageLook.h"
#include "site/Names.h"
#include "site/Records.h"

namespace scorvane::site {
namespace {

using Json = nlohmann::ordered_json;
using engine::Value;

template <typename Number>
Json Maybe(const std::optional<Number>& number) {
  return number ? Json(*number) : Json();
}

// A 32-bit number has seven digits worth telling.
Json Maybe(const std::optional<float>& number) {
  return number ? Json::parse(Value(*number).ToText()) : Json();
}

Json Text(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json ValueJson(const Value& value) {
  switch (value.GetType()) {
    case Value::Type::Null:
      return {};
    case Value::Type::Boolean:
      return value.ToBoolean();
    case Value::Type::Long:
      return value.ToLong();
    case Value::Type::Single:
      return Json::parse(value.ToText(), nullptr, false);
    case Value::Type::Double:
      return value.ToDouble();
    default:
      return value.ToText();
  }
}

std::string Dump(const Json& json) {
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json DriverJson(const SiteModel& model, const SiteDriver& driver) {
  const championship::Totals& totals = driver.Counted();
  const auto average = [](std::int64_t sum, int count) {
    return count == 0 ? Json() : Json(static_cast<double>(sum) / count);
  };
  Json dropped = Json::array();
  for (const std::uint32_t index : driver.results)
    if (model.results[index].dropped) dropped.push_back(model.races[model.results[index].race].id);
  return {{"id", driver.id},
          {"name", driver.name},
          {"page", Pages::DriverPath(driver)},
          {"rookie", driver.rookie},
          {"excluded", driver.excluded},
          {"position", driver.position == 0 ? Json() : Json(driver.position)},
          {"points", driver.Points()},
          {"starts", totals.starts},
          {"wins", totals.Wins()},
          {"top5", totals.Top(5)},
          {"top10", totals.Top(10)},
          {"poles", totals.poles},
          {"laps", totals.lapsRun},
          {"lapsLed", totals.lapsLed},
          {"averageStart", average(totals.startSum, totals.startsKnown)},
          {"averageFinish", average(totals.finishSum, totals.finishesKnown)},
          {"dnfs", totals.dnfs},
          {"bonus", totals.bonus},
          {"prizeMoney", Maybe(totals.prizeMoney)},
          {"stage", driver.position == 0 ? Json() : Text(driver.standing.stage)},
          {"droppedRaces", std::move(dropped)}};
}

Json RaceFacts(const SiteModel& model, std::size_t index) {
  const SiteRace& race = model.races[index];
  const SiteResult* winner = model.Winner(race);
  return {{"id", race.id},
          {"number", index + 1},
          {"name", Text(race.name)},
          {"page", Pages::RacePath(race)},
          {"file", Text(race.fileName)},
          {"lengthMiles", Maybe(race.length)},
          {"laps", Maybe(race.laps)},
          {"raceTime", Text(race.raceTime)},
          {"averageSpeed", Text(race.avgSpeed)},
          {"victoryMargin", Text(race.victoryMargin)},
          {"cautions", Maybe(race.cautions)},
          {"leadChanges", Maybe(race.leadChanges)},
          {"weather", Text(race.weather)},
          {"starters", race.end - race.first},
          {"winner", winner == nullptr ? Json() : Json(model.drivers[winner->driver].id)}};
}

Json ReportJson(const SiteReport& report) {
  // A hidden column is not to be seen.
  Json columns = Json::array();
  for (const reports::ReportColumn& column : report.columns)
    if (!column.hidden) columns.push_back(column.name);
  Json rows = Json::array();
  for (std::size_t r = 0; r < std::min(report.rows.size(), kReportRows); ++r) {
    Json row = Json::array();
    for (std::size_t c = 0; c < report.columns.size(); ++c)
      if (!report.columns[c].hidden) row.push_back(ValueJson(report.rows[r][c]));
    rows.push_back(std::move(row));
  }
  return {{"name", report.name},         {"page", PagePath(Pages::ReportStem(report), 0)},
          {"caption", report.caption},   {"columns", std::move(columns)},
          {"rowCount", report.rowCount}, {"rows", std::move(rows)}};
}

Json PlayoffJson(const SiteModel& model) {
  if (!model.playoff) return {};
  Json stages = Json::array();
  for (const championship::PlayoffStage& stage : model.playoff->stages)
    stages.push_back({{"name", stage.name}, {"after", stage.after}, {"drivers", stage.drivers}});
  return {{"name", model.playoff->name}, {"stages", std::move(stages)}};
}

std::string Quoted(const std::string& text) {
  return text.empty() ? "null" : Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

template <typename Number>
std::string Plain(const std::optional<Number>& number) {
  return number ? std::to_string(*number) : "null";
}

// There are many of them: put together by hand they take a tenth of the time.
std::string ResultLine(const SiteModel& model, const SiteResult& result) {
  const SiteDriver& driver = model.drivers[result.driver];
  return fmt::format(
      R"({{"id": {}, "finish": {}, "start": {}, "driver": {{"id": {}, "name": {}}}, "laps": {}, "lapsLed": {}, )"
      R"("points": {}, "bonus": {}, "averageSpeed": {}, "qualifying": {}, "status": {}, "prizeMoney": {}}})",
      result.id, Plain(result.finish), Plain(result.start), driver.id, Quoted(driver.name),
      Plain(result.lapsRun), Plain(result.lapsLed), Plain(result.points), Plain(result.bonus),
      Quoted(result.avgSpeed), result.qualifying ? Value(*result.qualifying).ToText() : "null",
      Quoted(model.Status(result)), Plain(result.prizeMoney));
}

std::string Time(std::int64_t seconds) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

std::string SafeCell(const std::string& text) {
  // A cell that begins so would be worked out by a spreadsheet.
  const bool formula = !text.empty() && std::string_view("=+@\t").find(text[0]) != std::string_view::npos;
  return common::CsvCell(formula ? "'" + text : text);
}

}  // namespace

std::string SeasonData(const SiteModel& model, const std::vector<SiteReport>& reports) {
  Json json = {{"format", "scorvane-site-season"},
               {"version", kDataVersion},
               {"generator", "Scorvane " + reports::ProductVersion()},
               {"league",
                {{"name", model.heading},
                 {"type", model.leagueType == common::kOnline ? "online" : "offline"},
                 {"simulation", model.simType},
                 {"racesThatMayBeDropped", model.droppedRaces}}}};
  Json races = Json::array();
  for (std::size_t i = 0; i < model.races.size(); ++i) {
    Json race = RaceFacts(model, i);
    race["data"] = Pages::DataPath(model.races[i]);
    races.push_back(std::move(race));
  }
  json["races"] = std::move(races);
  Json drivers = Json::array();
  for (const SiteDriver& driver : model.drivers)
    if (!driver.results.empty()) drivers.push_back(DriverJson(model, driver));
  json["drivers"] = std::move(drivers);
  Json standings = Json::array();
  for (const std::uint32_t driver : model.standings) standings.push_back(model.drivers[driver].id);
  json["standings"] = std::move(standings);
  Json history = Json::array();
  for (const SiteMoment& moment : model.moments) {
    Json points = Json::object();
    for (const std::uint32_t driver : model.standings)
      if (const auto& held = moment.points[driver]) points[std::to_string(model.drivers[driver].id)] = *held;
    history.push_back({{"races", moment.races}, {"points", std::move(points)}});
  }
  json["history"] = std::move(history);
  json["playoff"] = PlayoffJson(model);
  Json listed = Json::array();
  for (const SiteReport& report : reports) listed.push_back(ReportJson(report));
  json["reports"] = std::move(listed);
  Json records = Json::array();
  for (const Record& record : FindRecords(model)) {
    Json entries = Json::array();
    for (const RecordEntry& entry : record.entries)
      entries.push_back({{"driver", model.drivers[entry.driver].id},
                         {"number", entry.number},
                         {"race", entry.race ? Json(model.races[*entry.race].id) : Json()}});
    records.push_back({{"name", record.name}, {"unit", record.unit}, {"entries", std::move(entries)}});
  }
  json["records"] = std::move(records);
  return Dump(json);
}

std::string RaceData(const SiteModel& model, std::size_t index) {
  const SiteRace& race = model.races[index];
  Json penalties = Json::array();
  for (const scoring::Penalty& penalty : race.penalties) {
    if (!penalty.resultId) continue;
    penalties.push_back({{"driver", {{"id", penalty.driverId}, {"name", penalty.driver}}},
                         {"result", *penalty.resultId},
                         {"penalty", scoring::Describe(penalty)},
                         {"reason", Text(penalty.reason)}});
  }
  // The results, a line each, take the place of the empty list.
  std::string results;
  for (std::uint32_t i = race.first; i < race.end; ++i)
    results += (i == race.first ? "\n  " : ",\n  ") + ResultLine(model, model.results[i]);
  std::string text = Dump({{"format", "scorvane-site-race"},
                           {"version", kDataVersion},
                           {"league", model.heading},
                           {"race", RaceFacts(model, index)},
                           {"penalties", std::move(penalties)}});
  text.resize(text.rfind('}') - 1);
  return fmt::format("{},\n \"results\": [{}{}]\n}}\n", text, results, results.empty() ? "" : "\n ");
}

std::string StandingsCsv(const SiteReport& report) {
  std::string csv = "Pos";
  for (const reports::ReportColumn& column : report.columns)
    if (!column.hidden) csv += "," + SafeCell(column.name);
  csv += "\r\n";
  for (std::size_t r = 0; r < report.rows.size(); ++r) {
    csv += std::to_string(r + 1);
    for (std::size_t c = 0; c < report.columns.size(); ++c) {
      if (report.columns[c].hidden) continue;
      const Value& value = report.rows[r][c];
      // Numbers below zero are no formulas.
      csv += "," + (value.IsText() ? SafeCell(value.ToText()) : value.ToText());
    }
    csv += "\r\n";
  }
  return csv;
}

std::string Feed(const SiteModel& model, const SiteSettings& settings, std::int64_t since,
                 const std::function<std::int64_t(std::size_t race)>& changed) {
  // The same whatever the address, so that a reader who has a race does not see it as new after a move.
  const std::string slug = Slug(model.file);
  const std::string name = "tag:scorvane.example,2026:" + (slug.empty() ? "league" : slug);
  std::string entries;
  std::int64_t latest = since;
  const std::size_t count = std::min(kFeedRaces, model.races.size());
  for (std::size_t i = model.races.size(); i > model.races.size() - count; --i) {
    const SiteRace& race = model.races[i - 1];
    const std::int64_t time = changed(i - 1);
    latest = std::max(latest, time);
    std::string podium;
    for (std::uint32_t r = race.first; r < std::min(race.end, race.first + 3); ++r)
      podium += fmt::format("{}{}. {}", podium.empty() ? "" : ", ", r - race.first + 1,
                            model.drivers[model.results[r].driver].name);
    entries += fmt::format(
        "<entry>\n<id>{}:race:{}</id>\n<title>{}</title>\n<updated>{}</updated>\n"
        "<link rel=\"alternate\" type=\"text/html\" href=\"{}\"/>\n<summary>{}</summary>\n</entry>\n",
        name, race.id, common::EscapeLine(race.name.empty() ? fmt::format("Race {}", race.id) : race.name),
        Time(time), common::EscapeLine(settings.baseUrl + Pages::RacePath(race)),
        common::EscapeLine(podium.empty() ? "No results." : podium + "."));
  }
  std::string feed =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<feed xmlns=\"http://www.w3.org/2005/Atom\">\n";
  feed +=
      fmt::format("<id>{}</id>\n<title>{}</title>\n<updated>{}</updated>\n<author><name>{}</name></author>\n",
                  name, common::EscapeLine(model.heading), Time(latest), common::EscapeLine(model.heading));
  feed += fmt::format("<link rel=\"alternate\" type=\"text/html\" href=\"{}\"/>\n",
                      common::EscapeLine(settings.baseUrl.empty() ? "index.html" : settings.baseUrl));
  if (!settings.baseUrl.empty())
    feed += fmt::format("<link rel=\"self\" type=\"application/atom+xml\" href=\"{}feed.xml\"/>\n",
                        common::EscapeLine(settings.baseUrl));
  return feed + "<generator>Scorvane</generator>\n" + entries + "</feed>\n";
}

std::string Sitemap(const SiteSettings& settings, const std::vector<std::string>& paths) {
  std::string map =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
      "<urlset xmlns=\"http://www.sitemaps.org/schemas/sitemap/0.9\">\n";
  for (const std::string& path : paths) {
    if (path.ends_with(".html"))
      map += fmt::format("<url><loc>{}</loc></url>\n",
                         common::EscapeLine(settings.baseUrl + (path == "index.html" ? "" : path)));
  }
  return map + "</urlset>\n";
}

std::string SearchScript(const SiteModel& model, const std::vector<std::uint32_t>& drivers) {
  Json entries = Json::array();
  for (const std::uint32_t d : drivers)
    entries.push_back({model.drivers[d].name, Pages::DriverPath(model.drivers[d]), 0});
  for (std::size_t i = 0; i < model.races.size(); ++i) {
    const SiteRace& race = model.races[i];
    entries.push_back(
        {fmt::format("{}. {}", i + 1, race.name.empty() ? fmt::format("Race {}", race.id) : race.name),
         Pages::RacePath(race), 1});
  }
  std::string json = entries.dump(-1, ' ', true, Json::error_handler_t::replace);
  // Nothing in it can end a script or begin markup, wherever it is put.
  std::string safe;
  for (const char c : json) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return "window.siteSearch=" + safe + ";\n";
}

}  // namespace scorvane::site
