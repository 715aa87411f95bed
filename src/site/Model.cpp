#include "site/Model.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "championship/Reports.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/Names.h"
#include "reports/PageExport.h"
#include "site/Names.h"

namespace scorvane::site {
namespace {

using championship::Season;
using championship::Standing;

template <typename Number>
std::optional<Number> Whole(const engine::Value& value) {
  if (value.IsNull()) return std::nullopt;
  return static_cast<Number>(value.ToLong());
}

std::optional<float> Single(const engine::Value& value) {
  if (value.IsNull()) return std::nullopt;
  return value.ToSingle();
}

// The heading may have line ends, which the classic pages show as such.
std::string OneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const bool ends = c == '\r' || c == '\n' || c == '\t';
    if (!ends) {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  return std::string(common::TrimBlanks(line));
}

void ReadRaces(engine::Database& league, const Season& season, SiteModel& model) {
  std::unordered_map<std::int32_t, std::size_t> places;
  for (std::size_t i = 0; i < season.races.size(); ++i) places[season.races[i]] = i;
  model.races.resize(season.races.size());
  league.EachRow(
      "SELECT RaceID, Name, FileName, Length, Laps, RaceTime, AvgSpeed, VictoryMargin, Cautions, "
      "LeadChanges, "
      "Weather FROM Race",
      [](const engine::RowView&) {},
      [&](const engine::RowView& row) {
        SiteRace race;
        race.id = row.At(0).ToLong();
        race.name = row.At(1).ToText();
        race.slug = NumberedSlug(race.id, race.name);
        race.fileName = row.At(2).ToText();
        race.length = Single(row.At(3));
        race.laps = Whole<std::int32_t>(row.At(4));
        race.raceTime = row.At(5).ToText();
        race.avgSpeed = row.At(6).ToText();
        race.victoryMargin = row.At(7).ToText();
        race.cautions = Whole<std::int32_t>(row.At(8));
        race.leadChanges = Whole<std::int32_t>(row.At(9));
        race.weather = row.At(10).ToText();
        if (const auto place = places.find(race.id); place != places.end())
          model.races[place->second] = std::move(race);
      });
  for (scoring::Penalty& penalty : scoring::ListPenalties(league)) {
    if (const auto place = places.find(penalty.raceId); place != places.end())
      model.races[place->second].penalties.push_back(std::move(penalty));
  }
}

void ReadDrivers(engine::Database& league, const Season& season, SiteModel& model) {
  std::unordered_set<std::int32_t> rookies;
  league.EachRow(
      "SELECT DriverID FROM Driver WHERE Rookie=True", [](const engine::RowView&) {},
      [&](const engine::RowView& row) { rookies.insert(row.At(0).ToLong()); });
  model.drivers.reserve(season.drivers.size());
  for (const championship::SeasonDriver& driver : season.drivers) {
    SiteDriver shown;
    shown.id = driver.id;
    shown.name = driver.name;
    shown.slug = NumberedSlug(driver.id, driver.name);
    shown.excluded = driver.excluded;
    shown.rookie = rookies.contains(driver.id);
    for (const championship::SeasonResult& result : driver.results) shown.all.Add(result);
    model.drivers.push_back(std::move(shown));
  }
}

void ReadResults(engine::Database& league, SiteModel& model) {
  std::unordered_map<std::int32_t, std::uint32_t> races;
  for (std::uint32_t i = 0; i < model.races.size(); ++i) races[model.races[i].id] = i;
  std::unordered_map<std::int32_t, std::uint32_t> drivers;
  for (std::uint32_t i = 0; i < model.drivers.size(); ++i) drivers[model.drivers[i].id] = i;
  std::unordered_map<std::string, std::uint16_t> texts;
  model.texts = {""};
  const auto text = [&](const std::string& status) -> std::uint16_t {
    if (status.empty() || model.texts.size() > UINT16_MAX) return 0;
    const auto [place, fresh] = texts.try_emplace(status, static_cast<std::uint16_t>(model.texts.size()));
    if (fresh) model.texts.push_back(status);
    return place->second;
  };
  model.results.reserve(
      static_cast<std::size_t>(league.OpenRecordset("SELECT Count(*) AS Results FROM Stats").At(0).ToLong()));
  league.EachRow(
      "SELECT StatsID, RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, Bonus, PrizeMoney, "
      "Qualifying, "
      "Status, AvgSpeed FROM Stats",
      [](const engine::RowView&) {},
      [&](const engine::RowView& row) {
        // What belongs to no race or to nobody is shown nowhere.
        if (row.At(1).IsNull() || row.At(2).IsNull()) return;
        const auto race = races.find(row.At(1).ToLong());
        const auto driver = drivers.find(row.At(2).ToLong());
        if (race == races.end() || driver == drivers.end()) return;
        SiteResult result;
        result.id = row.At(0).ToLong();
        result.race = race->second;
        result.driver = driver->second;
        result.start = Whole<std::int16_t>(row.At(3));
        result.finish = Whole<std::int16_t>(row.At(4));
        result.lapsRun = Whole<std::int16_t>(row.At(5));
        result.lapsLed = Whole<std::int16_t>(row.At(6));
        result.points = Whole<std::int32_t>(row.At(7));
        result.bonus = Whole<std::int32_t>(row.At(8));
        result.prizeMoney = Whole<std::int32_t>(row.At(9));
        result.qualifying = Single(row.At(10));
        result.status = text(row.At(11).ToText());
        result.avgSpeed = row.At(12).ToText();
        model.results.push_back(std::move(result));
      });
  std::sort(model.results.begin(), model.results.end(), [](const SiteResult& a, const SiteResult& b) {
    return std::tie(a.race, a.finish, a.id) < std::tie(b.race, b.finish, b.id);
  });
  for (std::uint32_t i = 0; i < model.results.size(); ++i) {
    SiteRace& race = model.races[model.results[i].race];
    if (race.end == 0) race.first = i;
    race.end = i + 1;
    model.drivers[model.results[i].driver].results.push_back(i);
  }
}

// Which results do not count: the worst of each driver but, for who is or was in a playoff, only those before
// its first cut.
void MarkDropped(const Season& season, SiteModel& model) {
  if (model.droppedRaces <= 0) return;
  std::unordered_set<std::int32_t> dropped;
  for (std::size_t d = 0; d < season.drivers.size(); ++d) {
    std::size_t end = season.races.size();
    if (model.playoff && model.drivers[d].position > 0 && model.drivers[d].standing.tier != Standing::Out)
      end = static_cast<std::size_t>(model.playoff->stages.front().after);
    const std::size_t best = championship::CountingResults(end, model.droppedRaces);
    std::size_t counted = 0;
    for (const championship::SeasonResult& result : season.drivers[d].results)
      if (result.race < end && counted++ >= best) dropped.insert(result.id);
  }
  for (SiteResult& result : model.results) result.dropped = dropped.contains(result.id);
}

SiteMoment MomentOf(const Season& season, const std::vector<Standing>& table) {
  SiteMoment moment;
  moment.races = season.races.size();
  moment.leader = table.empty() ? 0 : table.front().points;
  moment.points.resize(season.drivers.size());
  moment.position.resize(season.drivers.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    moment.points[table[i].driver] = table[i].points;
    moment.position[table[i].driver] = static_cast<std::uint32_t>(i + 1);
  }
  return moment;
}

// Goes back from the whole season, so that one copy of it is enough.
void ReadMoments(Season& season, SiteModel& model) {
  const championship::PlayoffFormat* playoff = model.playoff ? &*model.playoff : nullptr;
  const std::size_t races = season.races.size();
  const std::size_t moments = std::min(races, kMostMoments);
  for (std::size_t i = moments; i > 0; --i) {
    season.Truncate(races * i / moments);
    model.moments.push_back(
        MomentOf(season, championship::ComputeStandings(season, model.droppedRaces, playoff)));
  }
  std::reverse(model.moments.begin(), model.moments.end());
}

}  // namespace

bool SiteModel::IsRunning(const SiteResult& result) const {
  return result.status == 0 || engine::SameName(Status(result), "Running");
}

const SiteResult* SiteModel::Winner(const SiteRace& race) const {
  for (std::uint32_t i = race.first; i < race.end; ++i)
    if (results[i].finish == 1) return &results[i];
  return nullptr;
}

bool SiteModel::HasAverageSpeeds() const {
  const bool fromPages = simType >= common::kNascarRacing4 && simType <= common::kNascarRacing2003;
  return !fromPages && leagueType != common::kOnline;
}

const SiteMoment* SiteModel::MomentAfter(std::size_t race) const {
  const auto moment = std::lower_bound(
      moments.begin(), moments.end(), race + 1,
      [](const SiteMoment& candidate, std::size_t wanted) { return candidate.races < wanted; });
  return moment != moments.end() && moment->races == race + 1 ? &*moment : nullptr;
}

std::string RaceName(const SiteRace& race) {
  return race.name.empty() ? fmt::format("Race {}", race.id) : race.name;
}

SiteModel ReadModel(engine::Database& league, const common::ProcessState& state) {
  SiteModel model;
  model.file = common::GetFileTitle(league.Name(), true);
  model.heading = OneLine(reports::StoredPageTexts(league).heading);
  if (model.heading.empty()) model.heading = model.file;
  model.simType = state.simType;
  model.leagueType = state.leagueType;
  model.droppedRaces = state.droppedRaces;
  model.lapReportingMethod = state.lapReportingMethod;
  model.decimal = state.decimalSeparator;
  model.look = reports::ReadPageLook(league);
  model.playoff = championship::ReadPlayoff(league);
  Season season = championship::ReadSeasonAfter(league, model.playoff, std::nullopt);
  ReadRaces(league, season, model);
  ReadDrivers(league, season, model);
  ReadResults(league, model);
  const auto table =
      championship::ComputeStandings(season, model.droppedRaces, model.playoff ? &*model.playoff : nullptr);
  for (std::size_t i = 0; i < table.size(); ++i) {
    SiteDriver& driver = model.drivers[table[i].driver];
    driver.position = i + 1;
    driver.standing = table[i];
    model.standings.push_back(static_cast<std::uint32_t>(table[i].driver));
  }
  MarkDropped(season, model);
  ReadMoments(season, model);
  return model;
}

}  // namespace scorvane::site
