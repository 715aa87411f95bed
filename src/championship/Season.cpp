#include "championship/Season.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "engine/Names.h"

namespace scorvane::championship {
namespace {

std::int32_t WholeOrZero(const engine::Value& value) {
  return value.IsNull() ? 0 : value.ToLong();
}

// What a race's place in the order is told by: late ones stand in front of the race that they were driven
// before.
std::pair<std::int32_t, int> OrderKey(const std::vector<Season::LateRace>& late, std::int32_t raceId) {
  for (std::size_t i = 0; i < late.size(); ++i)
    if (late[i].race == raceId) return {late[i].before, static_cast<int>(i) - static_cast<int>(late.size())};
  return {raceId, 0};
}

// Points that stewards took off, in leagues that have penalties. A driver bears them with his best placed
// result; what came before a disqualification is settled with it.
void ReadPointsOff(engine::Database& league, Season& season,
                   const std::unordered_map<std::int32_t, std::size_t>& races,
                   const std::unordered_map<std::int32_t, std::size_t>& drivers) {
  constexpr std::int32_t kPointsOff = 0;
  constexpr std::int32_t kDisqualification = 2;
  if (league.FindTableDef("Penalty") == nullptr) return;
  for (auto rows =
           league.OpenRecordset("SELECT RaceID, DriverID, Kind, Amount FROM Penalty ORDER BY PenaltyID");
       !rows.AtEnd(); rows.MoveNext()) {
    const auto race = races.find(WholeOrZero(rows.At(0)));
    const auto driver = drivers.find(WholeOrZero(rows.At(1)));
    if (race == races.end() || driver == drivers.end()) continue;
    SeasonResult* bearer = nullptr;
    for (SeasonResult& result : season.drivers[driver->second].results) {
      if (result.race == race->second && (bearer == nullptr || result.finish < bearer->finish))
        bearer = &result;
    }
    if (bearer == nullptr) continue;
    if (WholeOrZero(rows.At(2)) == kPointsOff) bearer->pointsOff += WholeOrZero(rows.At(3));
    if (WholeOrZero(rows.At(2)) == kDisqualification) bearer->pointsOff = 0;
  }
}

}  // namespace

std::optional<std::size_t> Season::Place(std::int32_t raceId) const {
  const auto found = std::find(races.begin(), races.end(), raceId);
  if (found == races.end()) return std::nullopt;
  return static_cast<std::size_t>(found - races.begin());
}

std::size_t Season::RacesBefore(std::int32_t raceId) const {
  const auto key = OrderKey(late, raceId);
  return static_cast<std::size_t>(std::count_if(
      races.begin(), races.end(), [&](std::int32_t race) { return OrderKey(late, race) < key; }));
}

void Season::Truncate(std::size_t count) {
  if (count >= races.size()) return;
  races.resize(count);
  for (SeasonDriver& driver : drivers)
    std::erase_if(driver.results, [&](const SeasonResult& result) { return result.race >= count; });
}

void Season::SortResults() {
  for (SeasonDriver& driver : drivers) SortResultsOf(driver);
}

void Season::SortResultsOf(SeasonDriver& driver) {
  std::sort(driver.results.begin(), driver.results.end(), [](const SeasonResult& a, const SeasonResult& b) {
    return std::tie(b.points, b.bonus, b.lapsLed, a.id) < std::tie(a.points, a.bonus, a.lapsLed, b.id);
  });
}

Season ReadSeason(engine::Database& league, std::vector<Season::LateRace> late) {
  Season season;
  season.late = std::move(late);
  for (auto rows = league.OpenRecordset("SELECT RaceID FROM Race ORDER BY RaceID"); !rows.AtEnd();
       rows.MoveNext())
    season.races.push_back(rows.At(0).ToLong());
  std::stable_sort(season.races.begin(), season.races.end(), [&](std::int32_t a, std::int32_t b) {
    return OrderKey(season.late, a) < OrderKey(season.late, b);
  });
  std::unordered_map<std::int32_t, std::size_t> races;
  for (std::size_t i = 0; i < season.races.size(); ++i) races[season.races[i]] = i;

  std::unordered_map<std::int32_t, std::size_t> drivers;
  for (auto rows = league.OpenRecordset("SELECT DriverID, Name, Exclude FROM Driver ORDER BY Name, DriverID");
       !rows.AtEnd(); rows.MoveNext()) {
    drivers[rows.At(0).ToLong()] = season.drivers.size();
    season.drivers.push_back(
        {rows.At(0).ToLong(), rows.At(1).ToText(), !rows.At(2).IsNull() && rows.At(2).ToBoolean(), {}});
  }
  // Row by row: those of a long season would take far more room than what is kept of them.
  const auto read = [&](const engine::RowView& row) {
    // What belongs to no race or to nobody counts in no table.
    if (row.At(1).IsNull() || row.At(2).IsNull()) return;
    const auto race = races.find(row.At(1).ToLong());
    const auto driver = drivers.find(row.At(2).ToLong());
    if (race == races.end() || driver == drivers.end()) return;
    SeasonResult result;
    result.id = row.At(0).ToLong();
    result.race = race->second;
    result.start = WholeOrZero(row.At(3));
    result.finish = WholeOrZero(row.At(4));
    result.lapsRun = WholeOrZero(row.At(5));
    result.lapsLed = WholeOrZero(row.At(6));
    result.points = WholeOrZero(row.At(7));
    result.bonus = WholeOrZero(row.At(8));
    if (!row.At(9).IsNull()) result.prizeMoney = row.At(9).ToLong();
    const engine::Value& status = row.At(10);
    result.dnf = !status.IsNull() && !engine::SameName(status.Text(), "Running");
    result.disqualified = result.dnf && engine::SameName(status.Text(), "Disqualified");
    season.drivers[driver->second].results.push_back(result);
  };
  league.EachRow(
      "SELECT StatsID, RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, Bonus, PrizeMoney, Status "
      "FROM Stats",
      [](const engine::RowView&) {}, read);
  ReadPointsOff(league, season, races, drivers);
  season.SortResults();
  return season;
}

std::size_t CountingResults(std::size_t races, int dropped) {
  if (dropped <= 0) return std::numeric_limits<std::size_t>::max();
  const auto drop = static_cast<std::size_t>(dropped);
  return races > drop ? races - drop : 1;
}

void Totals::Add(const SeasonResult& result) {
  points += result.points;
  bonus += result.bonus;
  if (result.prizeMoney) prizeMoney = prizeMoney.value_or(0) + *result.prizeMoney;
  lapsRun += result.lapsRun;
  lapsLed += result.lapsLed;
  ++starts;
  if (result.start == 1) ++poles;
  if (result.dnf) ++dnfs;
  if (result.start > 0) {
    startSum += result.start;
    ++startsKnown;
  }
  if (result.finish != 0) {
    finishSum += result.finish;
    ++finishesKnown;
  }
  if (result.finish >= 1 && result.finish <= kPlaces) ++places[static_cast<std::size_t>(result.finish) - 1];
}

int Totals::Top(int count) const {
  int sum = 0;
  for (int i = 0; i < std::min(count, kPlaces); ++i) sum += places[static_cast<std::size_t>(i)];
  return sum;
}

int CountBack(const Totals& a, const Totals& b) {
  if (a.places == b.places) return 0;
  return a.places > b.places ? 1 : -1;
}

Totals TotalOf(const SeasonDriver& driver, std::size_t first, std::size_t end, std::size_t best) {
  Totals totals;
  std::size_t counted = 0;
  for (const SeasonResult& result : driver.results) {
    if (result.race < first || result.race >= end) continue;
    if (counted++ >= best) break;
    totals.Add(result);
  }
  return totals;
}

}  // namespace scorvane::championship
