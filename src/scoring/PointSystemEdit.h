// A league's own point system and bonus points, as they are edited and stored.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::scoring {

struct PositionPoints {
  std::optional<std::int32_t> points;  // none: an empty cell, stored as 0
  std::optional<std::int32_t> prizeMoney;
  std::int32_t position = 0;  // 0: its place in the table
};

struct BonusPoints {
  std::int32_t id = 0;
  std::string name;
  std::int32_t points = 0;
};

struct PointSystemEdit {
  bool usePositions = false;
  bool useBonus = false;
  std::vector<PositionPoints> positions;  // from position 1
  std::vector<BonusPoints> bonuses;       // by their ids, whatever gaps these have
};

enum class FillColumn { Points, PrizeMoney };

// Throws EngineError.
PointSystemEdit ReadPointSystem(engine::Database& league);

// Stores all of it or, when a statement fails, nothing of it. Throws EngineError.
void SavePointSystem(engine::Database& league, const PointSystemEdit& edit);

// Writes `initial` into position `from`, less `interval` into the next, down to 0, through position
// `through`. Positions that the table does not have are passed over.
void FillPositions(PointSystemEdit& edit, FillColumn column, int from, int through, std::int32_t initial,
                   std::int32_t interval);

}  // namespace scorvane::scoring
