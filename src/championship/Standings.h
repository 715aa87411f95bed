// The championship as it stands, or stood after any race: dropped races and playoffs included. Always worked
// out from the results, so that whatever changes in them changes the seeding and all that follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "championship/Season.h"

namespace scorvane::championship {

struct Standing {
  enum Tier : std::uint8_t { In, Eliminated, Out };

  std::size_t driver = 0;   // its place in the season's drivers
  std::int64_t points = 0;  // behind the resets of a playoff
  Totals totals;            // of the results that count
  Tier tier = Out;          // without a playoff, and before it begins, everybody is Out
  std::string stage;        // in a playoff that has begun: the stage that he is in, or how he went out
};

// From the first place down: those who are in the playoff, those who were and went out, the others; each by
// points, then by count-back to tenth place, then by name. Excluded drivers and those without a result are
// left out.
//
// Races are dropped as they were at the first cut for those who are in the playoff; behind it every race
// counts for them. Who is level with the last who goes on, in points and all places to tenth, goes on as
// well.
std::vector<Standing> ComputeStandings(const Season& season, int dropped, const PlayoffFormat* playoff);

}  // namespace scorvane::championship
