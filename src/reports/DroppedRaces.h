// Which of a driver's results count: a league may drop the worst ones of each driver.
#pragma once

#include <string>

#include "engine/Database.h"

namespace scorvane::reports {

struct DroppedMarks {
  int events = 0;  // races of the league
  int best =
      0;  // results of a driver that count, at least 1; never less than `events` when nothing is dropped
};

// Marks in the league which results are dropped: of each driver all but the best, ranked by points, then
// bonus, then laps led. `dropped` is how many races a driver may drop; with 0 or less every result counts.
// Throws EngineError; what was marked before the error stays.
DroppedMarks MarkDroppedRaces(engine::Database& league, int dropped);

// What stands above the standings, with its colon: "Results after 3 events:".
std::string StandingsCaption(const DroppedMarks& marks);

}  // namespace scorvane::reports
