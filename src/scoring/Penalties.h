// What stewards take off a result: points, places, or all of it. Stats holds the outcome. What the results of
// a race with penalties are without them lies in PenaltyBase, and the outcome is always worked out anew from
// there, so that a penalty taken back leaves nothing behind. Both tables are made with a league's first
// penalty. All throw EngineError; then nothing is changed.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::scoring {

enum class PenaltyKind : std::int32_t { Points = 0, Position = 1, Disqualification = 2 };

struct Penalty {
  std::int32_t id = 0;
  std::int32_t raceId = 0;
  std::int32_t driverId = 0;
  PenaltyKind kind = PenaltyKind::Points;
  std::int32_t amount = 0;  // the points taken off, or the place moved to
  std::string reason;
  std::string given;  // "2026-11-23 20:15", local time
  std::string race;
  std::string driver;
  // The result that bears it, the driver's best placed one. None: it waits until the driver has one again.
  std::optional<std::int32_t> resultId;
};

// Why a penalty cannot be given or taken back, as a sentence for the user.
class PenaltyError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A reason as it is kept: without blanks and line ends around it.
std::string CleanReason(std::string_view typed);
// "10 points off", "moved to 12th", "disqualified".
std::string Describe(const Penalty& penalty);
// "12th".
std::string Ordinal(std::int32_t number);

// By race, then in the order in which they were given.
std::vector<Penalty> ListPenalties(engine::Database& league,
                                   std::optional<std::int32_t> raceId = std::nullopt);
// The driver of a stored result. Throws EngineError 3021 when there is no such result.
std::int32_t DriverOfResult(engine::Database& league, std::int32_t resultId);
// "Rough driving (moved to 12th); Late entry (10 points off)", by result.
std::map<std::int32_t, std::string> PenaltyTexts(engine::Database& league, std::int32_t raceId);

// Throws PenaltyError when `penalty` cannot be given: no such race, result, place or amount, no reason, or
// one that would change nothing because the result stands there already.
void CheckPenalty(engine::Database& league, const Penalty& penalty);

// Makes the tables where they are not there yet. What else is to be one change of the history comes after it.
void MakePenaltyTables(engine::Database& league);

// Gives a penalty (its id, date and names are not looked at) and yields its key; its reason is kept without
// the blanks around it. Throws PenaltyError as CheckPenalty does.
std::int32_t AddPenalty(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                        const Penalty& penalty);
// Throws PenaltyError when there is none of this key.
void RemovePenalty(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                   std::int32_t penaltyId);
// The penalty of this key. Throws PenaltyError when there is none.
Penalty ReadPenalty(engine::Database& league, std::int32_t penaltyId);

// ---- for what changes the results of a race

bool HasPenalties(engine::Database& league, std::int32_t raceId);
// Races in which one of the drivers has a result or a penalty, and somebody a penalty.
std::vector<std::int32_t> PenalisedRacesOf(engine::Database& league,
                                           const std::vector<std::int32_t>& driverIds);

// Runs an edit of a race's results. In a race with penalties what it changed goes to what the results are
// without them, and the penalties count anew.
void EditWithPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                       std::int32_t raceId, const std::function<void()>& edit);
// Runs what scores a race anew or replaces its results, which sees them as they are without penalties and
// leaves them so; the penalties count anew afterwards.
void RescoreWithPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                          std::int32_t raceId, const std::function<void()>& rescore);
// Works the outcome out anew after penalties, or results that bear them, have gone or changed their driver.
void ApplyPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                    std::int32_t raceId);

}  // namespace scorvane::scoring
