// What a race is worth under a league's rules or others, as plain numbers: so that races can be scored
// outside the file, and the most that a race can bring is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "championship/PointPresets.h"
#include "championship/Season.h"
#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::championship {

// What a bonus rule asks for.
enum class Condition : std::uint8_t {
  LedALap,
  MostLed,
  MostLedOrNobody,  // the built-in rule: where nobody led, everybody has led the most
  Win,
  Pole,
  Top5,
  Top10,
  LeadLap,
  MostGained,
  PoleWin,
  Starting,
  Other,  // a condition of the league's own, which is known to its SQL only
};

struct BonusRule {
  std::string name;
  Condition condition = Condition::Other;
  std::int32_t points = 0;
};

struct RaceRules {
  // By finishing position, from 1 on; none behind the last. Several where a league scores its races by
  // several tables: `tableOf` says which, by the place of the race in the season.
  std::vector<std::vector<std::int32_t>> tables;
  std::vector<std::size_t> tableOf;  // empty: the first
  std::vector<BonusRule> bonuses;    // those that bring points
};

// The rules by which the league scores now. Throws EngineError.
RaceRules ReadRaceRules(engine::Database& league, engine::Database& templateDb,
                        const common::ProcessState& state, const Season& season);
// The same with the points, and the bonuses, of a preset. RuleError when the league lacks a bonus rule.
RaceRules RulesOf(engine::Database& league, const PointPreset& preset);

// Scores every race, or those that `which` marks, as recalculating does: places without gaps, points,
// bonuses. Prize money stays. A disqualified driver gets neither. RuleError for a bonus rule whose condition
// is of the league's own.
void ScoreRaces(Season& season, const RaceRules& rules, const std::vector<bool>& which);

// The most that a race can bring one driver.
struct RaceMost {
  std::int32_t points = 0;  // the bonus included
  std::int32_t bonus = 0;
};
RaceMost MostOfARace(const RaceRules& rules);

}  // namespace scorvane::championship
