// The import of an on-line league: each staged race becomes a race of the league.
#pragma once

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::scoring {

// Stores every staged race with its results, scored as they are staged, and adds the drivers that are new. A
// result without a driver's name is left out. Throws EngineError; the races and results before it stay.
void ImportStagedRaces(engine::Database& league, common::ProcessState& state, common::UserInterface& ui);

}  // namespace scorvane::scoring
