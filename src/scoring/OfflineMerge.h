// The event of an off-line league: its members' files become one race, ranked by the league's criteria.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::scoring {

// Makes one race of everything that is staged: drivers who come in several results are taken for computer
// drivers and left out, the others start by qualifying speed and finish by the ranking criteria. Members who
// tie on all criteria come in no particular order; without a criterion their own finishing positions decide.
// False, after a message and with nothing changed, when no driver is left. The point table must be loaded.
// Throws EngineError; what was done before it stays.
bool MergeOfflineEvent(engine::Database& league, common::ProcessState& state, common::UserInterface& ui);

struct RankCriterion {
  std::int32_t id = 0;
  std::string name;
};

// The criteria that a league of the sim type uses, the first to decide first. Throws EngineError.
std::vector<RankCriterion> ListRankCriteria(engine::Database& league, std::int16_t simType);

// Stores the criteria's order, the first to decide first. Criteria that the league does not use come behind
// all others. Throws EngineError.
void StoreRankCriteria(engine::Database& league, std::int16_t simType, const std::vector<std::int32_t>& ids);

}  // namespace scorvane::scoring
