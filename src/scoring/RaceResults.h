// The results of one race, stored or staged, as the race editor shows and changes them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/ProcessState.h"
#include "engine/Database.h"
#include "engine/Value.h"

namespace scorvane::scoring {

// A race of the league, or one that is being imported.
struct RaceKey {
  std::int32_t id = 0;
  bool staged = false;
};

struct RaceHeader {
  std::string name;
  std::string fileName;
  float length = 0;  // miles
  int laps = 0;
  std::string raceTime;
  std::string avgSpeed;
  std::string victoryMargin;
  std::string cautions;
  std::string leadChanges;  // "---" when not known
  std::string weather;
};

struct RaceResult {
  std::int32_t id = 0;
  engine::Value start;
  engine::Value finish;
  std::string driver;
  engine::Value lapsRun;
  engine::Value lapsLed;
  engine::Value points;
  engine::Value bonus;
  engine::Value avgSpeed;
  engine::Value qualifying;  // mph
  std::string status;
  bool excluded = false;
};

// What is typed for a result: texts as they stand in their boxes.
struct ResultEntry {
  enum Field {
    kFinish,
    kStart,
    kName,
    kLapsRun,
    kLapsLed,
    kPoints,
    kBonus,
    kAvgSpeed,
    kQualifying,
    kWinnings
  };
  static constexpr int kFields = 10;
  std::array<std::string, kFields> fields;
  std::string reason = "Running";
};

// Average speeds belong to merged events: an off-line league of the simulations with standings files.
bool ShowsAverageSpeed(const common::ProcessState& state);

// Throws EngineError 3021 when there is no such race.
RaceHeader ReadRaceHeader(engine::Database& league, const common::ProcessState& state, RaceKey race);

// In finishing order. Throws EngineError.
std::vector<RaceResult> ReadRaceResults(engine::Database& league, RaceKey race);
// Whether a driver of this name, letter case and blanks around it aside, has a result in the race.
bool HasResult(engine::Database& league, RaceKey race, const std::string& driver);
// One of them. Throws EngineError 3021 when there is no such result.
RaceResult ReadRaceResult(engine::Database& league, RaceKey race, std::int32_t resultId);

// A result as it is edited; a qualifying speed is turned into the lap time (seconds) of `length` miles when
// the league reports times. Throws EngineError 3021 when there is no such result.
ResultEntry ReadResultEntry(engine::Database& league, const common::ProcessState& state, RaceKey race,
                            std::int32_t resultId, float length);

// Stores a new result and yields its key; a driver of a stored race who is new is added. Qualifying is taken
// as ReadResultEntry gives it; blanks around a name do not count. Throws EngineError; then nothing is stored.
std::int32_t AddResult(engine::Database& league, const common::ProcessState& state, RaceKey race,
                       const ResultEntry& entry, float length);
// Stores what differs from the stored result, and nothing else. Throws EngineError; then nothing is changed.
void UpdateResult(engine::Database& league, const common::ProcessState& state, RaceKey race,
                  std::int32_t resultId, const ResultEntry& entry, float length);
// The other results keep their positions: gaps stay until the race is recalculated.
void RemoveResults(engine::Database& league, RaceKey race, const std::vector<std::int32_t>& resultIds);

// The rules of the entry boxes: whether a typed character may go into a field that holds `text`, and what a
// field becomes when it is left.
bool AcceptsCharacter(int field, const std::string& text, char32_t character);
std::string LeftField(int field, const std::string& text);
// The first field that is another than before and holds no number that can be stored, with a sentence that
// names it; nothing when all can be.
struct EntryFault {
  ResultEntry::Field field = ResultEntry::kFinish;
  std::string sentence;
};
std::optional<EntryFault> FindFault(const ResultEntry& entry, const ResultEntry& before, char decimal);
// Finish, start and name are there.
bool IsComplete(const ResultEntry& entry);

// Why cars of a simulation drop out.
const std::vector<std::string_view>& ReasonsOut(int simType);

}  // namespace scorvane::scoring
