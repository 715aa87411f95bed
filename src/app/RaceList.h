// The races of a league as the main window lists them, and their removal.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::app {

struct ListedRace {
  std::int32_t id = 0;
  std::string name;  // the track's
  std::string laps;
  std::string miles;  // of the whole race, rounded half to even; empty when length or laps are not known
  std::string fileName;
};

// In key order. Throws EngineError.
std::vector<ListedRace> ListRaces(engine::Database& league);

// Removes races with their results. Throws EngineError; the races before the failing one are removed.
void RemoveRaces(engine::Database& league, const std::vector<std::int32_t>& ids);

}  // namespace scorvane::app
