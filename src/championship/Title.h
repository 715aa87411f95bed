// The arithmetic of the title: who has it, who can still win it, and what that takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "championship/RaceRules.h"
#include "championship/Season.h"
#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/Report.h"

namespace scorvane::championship {

inline constexpr int kMostRemaining = 1000;

struct TitleChance {
  enum State : std::uint8_t { Champion, CanWin, Out };

  std::size_t driver = 0;   // its place in the season's drivers
  std::int64_t points = 0;  // as the table stands
  std::int64_t most = 0;    // what he ends with when he wins everything that is to come
  State state = Out;
  // Of the first, the points that he must add to be champion whatever the others do; of who can still win,
  // what he must gain on the first. None where a cut of a playoff lies ahead: points start anew there.
  std::optional<std::int64_t> needs;
};

// In the order of the standings. Who can win does so when he takes the most of each race and nobody else
// starts; as long as a cut lies ahead, whoever is in the last stage then can win, too, and nobody is
// champion.
std::vector<TitleChance> ComputeTitle(Season season, int dropped, const PlayoffFormat* playoff, int remaining,
                                      const RaceMost& most);

// The same as a table for a league. `most` takes what a race can bring. Throws common::RuleError, also when
// there is no such race, and EngineError.
reports::ReportTable RunTitle(engine::Database& league, engine::Database& templateDb,
                              const common::ProcessState& state, int remaining,
                              std::optional<std::int32_t> afterRace, RaceMost& most);

}  // namespace scorvane::championship
