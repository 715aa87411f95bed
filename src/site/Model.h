// A league as its site shows it: what the file holds of races, drivers and results, and what is worked out
// from it. Read once, in one go, and small: the results of 10,000 races fit beside each other. The league is
// not written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "championship/Season.h"
#include "championship/Standings.h"
#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/PageLook.h"
#include "scoring/Penalties.h"

namespace scorvane::site {

// As the file holds it; none is Null.
struct SiteResult {
  std::int32_t id = 0;
  std::uint32_t race = 0;    // its place in the model's races
  std::uint32_t driver = 0;  // its place in the model's drivers
  std::optional<std::int16_t> start;
  std::optional<std::int16_t> finish;
  std::optional<std::int16_t> lapsRun;
  std::optional<std::int16_t> lapsLed;
  std::optional<std::int32_t> points;
  std::optional<std::int32_t> bonus;
  std::optional<std::int32_t> prizeMoney;
  std::optional<float> qualifying;  // mph
  std::uint16_t status = 0;         // its place in the model's texts; 0: none
  bool dropped = false;             // does not count in the championship
  std::string avgSpeed;             // as the file says it

  // Places gained on the way; none when one of the two is not known.
  std::optional<int> Gained() const {
    if (!start || !finish || *start <= 0 || *finish <= 0) return std::nullopt;
    return *start - *finish;
  }
};

struct SiteRace {
  std::int32_t id = 0;
  std::string name;
  std::string slug;  // of its page
  std::string fileName;
  std::optional<float> length;  // miles
  std::optional<std::int32_t> laps;
  std::string raceTime;
  std::string avgSpeed;
  std::string victoryMargin;
  std::optional<std::int32_t> cautions;
  std::optional<std::int32_t> leadChanges;
  std::string weather;
  // Its results, in the order of the finish: from `first` to before `end` of the model's results.
  std::uint32_t first = 0;
  std::uint32_t end = 0;
  std::vector<scoring::Penalty> penalties;
};

struct SiteDriver {
  std::int32_t id = 0;
  std::string name;
  std::string slug;
  bool excluded = false;
  bool rookie = false;
  std::vector<std::uint32_t> results;  // places in the model's results, in the order of the races
  std::size_t position = 0;            // in the championship, from 1; 0: stands in no table
  championship::Standing standing;     // when he has a position
  // Of all results, whether they count or not.
  championship::Totals all;

  // What tables total: what counts, or everything of who stands in no table.
  const championship::Totals& Counted() const { return position > 0 ? standing.totals : all; }
  std::int64_t Points() const { return position > 0 ? standing.points : all.points; }
};

// The championship as it stood after a number of races.
struct SiteMoment {
  std::size_t races = 0;
  std::int64_t leader = 0;                          // the first one's points
  std::vector<std::optional<std::int64_t>> points;  // of each driver of the model
  std::vector<std::uint32_t> position;              // from 1; 0: in no table yet
};

struct SiteModel {
  std::string heading;  // one line
  std::string file;     // the league's file, without folder and extension
  std::int16_t simType = 0;
  std::int32_t leagueType = 0;
  std::int16_t droppedRaces = 0;
  std::int16_t lapReportingMethod = 0;
  char decimal = '.';
  std::vector<SiteRace> races;           // in the order in which they were driven
  std::vector<SiteDriver> drivers;       // by name
  std::vector<SiteResult> results;       // by race, then by finish
  std::vector<std::string> texts;        // statuses
  std::vector<std::uint32_t> standings;  // drivers, from the first place down
  // After every race or, in long seasons, kMostMoments times; the last is now. None without races.
  std::vector<SiteMoment> moments;
  std::optional<championship::PlayoffFormat> playoff;
  reports::PageLook look;

  const std::string& Status(const SiteResult& result) const { return texts[result.status]; }
  bool IsRunning(const SiteResult& result) const;
  // The winner of a race; null without results.
  const SiteResult* Winner(const SiteRace& race) const;
  // Whether results say an average speed of their own.
  bool HasAverageSpeeds() const;
  // The championship after a race; null when none was kept for it.
  const SiteMoment* MomentAfter(std::size_t race) const;
};

// What a race is called: its number where the file has no name.
std::string RaceName(const SiteRace& race);

inline constexpr std::size_t kMostMoments = 60;

// Races must have been marked as dropped before. Throws EngineError, and common::RuleError where the playoff
// in the file is none.
SiteModel ReadModel(engine::Database& league, const common::ProcessState& state);

}  // namespace scorvane::site
