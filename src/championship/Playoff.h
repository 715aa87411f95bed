// The format of a playoff: after a number of races the best drivers start anew, over one stage or several,
// and the others go on below them. It is kept in the league as JSON, in a table that is made when the first
// one is; what follows from it is worked out whenever standings are asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "championship/Season.h"
#include "engine/Database.h"

namespace scorvane::championship {

inline constexpr std::size_t kMostPlayoffBytes = 65536;  // of a format's text
inline constexpr std::size_t kMostStages = 20;
inline constexpr int kMostStageDrivers = 1000;
inline constexpr int kMostRacesBefore = 10000;  // a stage

struct PlayoffStage {
  std::string name;
  int after = 0;          // races that are driven before it
  int drivers = 0;        // how many go on
  bool byWins = false;    // winners since the stage before (or the season's begin) come first, by their wins
  int winnersWithin = 0;  // of these only who is that high up in points; 0: all
  bool leaderIsWinner = false;         // the leader in points comes even before the winners
  int within = 0;                      // besides them, who is so few points behind the leader; 0: nobody
  int wildCards = 0;                   // and so many with the most wins ...
  int wildCardsWithin = 0;             // ... among those that high up in points; 0: among all
  std::optional<std::int32_t> points;  // what the first starts with; none: everybody keeps what he has
  int step = 0;                        // how many fewer the next one starts with
  int winBonus = 0;                    // for each win of the season so far, but not for wild cards
  bool bonusCounts = true;             // bonus points of its races count for those who are in it
};

struct PlayoffFormat {
  std::string name;
  std::vector<PlayoffStage> stages;  // by `after`
  std::vector<Season::LateRace> late;
};

// Reads a format. Whatever is wrong with the text, its size included, is a common::RuleError that says what
// and where.
PlayoffFormat ParsePlayoff(std::string_view json);
// The same as text: parsed again it is the same format.
std::string PlayoffText(const PlayoffFormat& format);

// Moves the first stage to behind so many races, and the others along with it. RuleError when they are none,
// or too many.
void BeginAfter(PlayoffFormat& format, int races);
// The most races that there can be.
int LatestBegin(const PlayoffFormat& format);

// The formats that come with the program.
struct PlayoffPreset {
  std::string name;
  std::string source;
};
std::vector<PlayoffPreset> ListPlayoffPresets();
// The first stage may begin elsewhere, the others move along with it. RuleError when there is no such preset.
PlayoffFormat PresetPlayoff(const std::string& name, std::optional<int> after = std::nullopt);

// None in a league without a playoff. RuleError when what the file holds is none. Throws EngineError.
std::optional<PlayoffFormat> ReadPlayoff(engine::Database& league);
bool HasPlayoff(engine::Database& league);
void EnsurePlayoffTable(engine::Database& league);
// Needs the table.
void StorePlayoff(engine::Database& league, const PlayoffFormat& format);
void ClearPlayoff(engine::Database& league);

}  // namespace scorvane::championship
