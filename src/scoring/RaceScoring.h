// Turning the rows of one race into scored results. A staged race lies in STNRace and STNStats, a stored one
// in Race and Stats.
#pragma once

#include <cstdint>

#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::scoring {

// Adds the bonus points of the league's rules, or of the two built-in ones (a lap led, the most laps led), to
// every result of a race. It only adds: the results are freshly scored. Throws EngineError, the bonuses
// before it standing.
void ApplyBonusPoints(engine::Database& league, const common::ProcessState& state, std::int32_t raceId,
                      bool staged);

// Numbers the starting order anew by qualifying and the finishing order without gaps, and scores every
// result. Points, bonuses and prize money edited by hand are lost; penalties are applied as the last step.
// Loads the point table. Throws EngineError.
void RecalculateRace(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                     std::int32_t raceId, bool staged);

}  // namespace scorvane::scoring
