// The results of a race as penalties see them: what lies in Stats, and in PenaltyBase what it is without
// them. For Penalties only; all throw EngineError.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/Database.h"

namespace scorvane::scoring {

// What penalties change of a result.
struct Row {
  std::int32_t id = 0;
  std::int32_t driverId = 0;
  engine::Value finish;
  engine::Value points;
  engine::Value bonus;
  engine::Value prizeMoney;
  engine::Value status;

  bool operator==(const Row&) const = default;
};

// Null counts as 0.
std::int64_t Number(const engine::Value& value);
// A number moved by a difference; without one it stays what it is, Null too. Throws EngineError 6 outside 32
// bits.
engine::Value Moved(const engine::Value& value, std::int64_t difference);

// What Stats holds of a race, by key.
std::vector<Row> ReadResults(engine::Database& league, std::int32_t raceId);
// Stores the rows that differ from what Stats holds.
void WriteResults(engine::Database& league, std::int32_t raceId, const std::vector<Row>& rows);

// What the results of a race with penalties are without them, in the order of the places; what has none
// stands behind. Without penalties empty.
std::vector<Row> ReadBase(engine::Database& league, std::int32_t raceId);
void TakeBase(engine::Database& league, std::int32_t raceId);
void DropBase(engine::Database& league, std::int32_t raceId);
// Puts the base into Stats.
void RestoreBase(engine::Database& league, std::int32_t raceId);
// What an edit changed of the outcome goes to the base: numbers by their difference, place and status as
// typed.
void FoldIntoBase(engine::Database& league, std::int32_t raceId, const std::vector<Row>& before);

}  // namespace scorvane::scoring
