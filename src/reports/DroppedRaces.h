// Each driver's worst races do not count: which results those are is decided here and marked in the league file.
#pragma once

#include <string>

#include "engine/Database.h"

namespace scorvane::reports {

struct DroppedMarks {
  int events = 0;  // races of the league
  int best = 1;    // how many results of each driver count
};

// Marks every result that does not count as Dropped, and no other. Throws EngineError.
DroppedMarks MarkDroppedRaces(engine::Database& league, int dropped);

// What the standings are based on, with a colon at its end.
std::string StandingsCaption(const DroppedMarks& marks);

}  // namespace scorvane::reports
