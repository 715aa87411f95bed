// A league's season in plain structs: what every computed table is made of. Read once and never written, so
// that a question about other rules leaves the file alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::championship {

struct SeasonResult {
  std::int32_t id = 0;
  std::size_t race = 0;     // its place in the order of the season, from 0
  std::int32_t start = 0;   // 0: not known
  std::int32_t finish = 0;  // 0: not known
  std::int32_t lapsRun = 0;
  std::int32_t lapsLed = 0;
  std::int32_t points = 0;  // the bonus included
  std::int32_t bonus = 0;
  std::optional<std::int32_t> prizeMoney;
  bool dnf = false;
  bool disqualified = false;
  std::int32_t pointsOff = 0;  // what a penalty has taken off the points
};

struct SeasonDriver {
  std::int32_t id = 0;
  std::string name;
  bool excluded = false;  // stands in no table
  // The better ones first, as races are dropped: by points, bonus, laps led, key.
  std::vector<SeasonResult> results;
};

struct Season {
  std::vector<std::int32_t> races;    // their keys in the order in which they were driven
  std::vector<SeasonDriver> drivers;  // by name

  // The place of a race in the order; none for a race that the league does not have.
  std::optional<std::size_t> Place(std::int32_t raceId) const;
  // How many races were driven before those from `raceId` on; the race itself need not be there any more.
  std::size_t RacesBefore(std::int32_t raceId) const;
  // Leaves the first `count` races and what was scored in them.
  void Truncate(std::size_t count);
  // Puts every driver's results in their order, after their points have changed.
  void SortResults();
  static void SortResultsOf(SeasonDriver& driver);

  // A race that is in the league behind those that were driven after it.
  struct LateRace {
    std::int32_t race = 0;
    std::int32_t before = 0;
  };
  std::vector<LateRace> late;
};

// Races come in the order of their keys, but for the late ones. Throws EngineError.
Season ReadSeason(engine::Database& league, std::vector<Season::LateRace> late);

// How many of a driver's results count after `races` races when `dropped` may be dropped: at least one, all
// of them when nothing is dropped.
std::size_t CountingResults(std::size_t races, int dropped);

// What a driver has collected in the results that count.
struct Totals {
  static constexpr int kPlaces = 10;

  std::int64_t points = 0;
  std::int64_t bonus = 0;
  std::optional<std::int64_t> prizeMoney;
  std::int64_t lapsRun = 0;
  std::int64_t lapsLed = 0;
  int starts = 0;
  int poles = 0;
  int dnfs = 0;
  std::array<int, kPlaces> places{};  // how often first, second ... tenth
  std::int64_t startSum = 0;
  int startsKnown = 0;
  std::int64_t finishSum = 0;
  int finishesKnown = 0;

  void Add(const SeasonResult& result);
  int Wins() const { return places[0]; }
  int Top(int places) const;
};

// Positive when `a` has more wins, or as many and more seconds, and so on to tenth; 0 when all are the same.
int CountBack(const Totals& a, const Totals& b);

// The driver's results of the races from `first` to before `end`, of which the best `best` count.
Totals TotalOf(const SeasonDriver& driver, std::size_t first, std::size_t end,
               std::size_t best = std::numeric_limits<std::size_t>::max());

}  // namespace scorvane::championship
