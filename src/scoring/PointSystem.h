// What a finishing position is worth: the point table of the run and the rule that reads it.
#pragma once

#include <cstdint>
#include <optional>

#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::scoring {

// Fills the point table: from the league's own point system when the league uses one (columns: points, prize
// money), else from the template's, 43 positions of four columns. Throws EngineError.
void LoadPointSystem(engine::Database& templateDb, engine::Database& league, common::ProcessState& state);

struct Score {
  engine::Value points;
  engine::Value prizeMoney;  // Null without a custom point system
};

// The worth of a finishing position, counted from 1: 0 points and no money behind the table's last position.
// An empty cell counts as 0 points.
Score ScoreByPosition(const common::ProcessState& state, int position, int column);

// The number of the template's alternative point table (1, 2 or 3) that a race's points come from, told by
// how far neighbours are mostly apart; nothing when it is none of them. Throws EngineError.
std::optional<int> PointStep(engine::Database& league, std::int32_t raceId, bool staged);

}  // namespace scorvane::scoring
