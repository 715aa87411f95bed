// The table under other rules beside the present one. Scored in memory; the league's file is not written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "championship/PointPresets.h"
#include "championship/Season.h"
#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/Report.h"

namespace scorvane::championship {

inline constexpr int kMostDropped = 1000;

// What is to be otherwise; what is not given stays as it is.
struct WhatIf {
  // Points by finishing position, with the league's bonuses or, of a preset, with its own. Every race is
  // scored anew, and points edited by hand do not count.
  std::optional<std::vector<std::int32_t>> points;
  std::optional<PointPreset> preset;
  std::optional<int> dropped;
  bool noBonus = false;
  // As if they had never been there: in their races the others move up and are scored anew.
  std::vector<std::int32_t> without;
  std::optional<PlayoffFormat> playoff;
  bool noPlayoff = false;
};

// The season as it would be. Throws common::RuleError and EngineError.
Season ApplyWhatIf(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                   Season season, const WhatIf& whatIf);

// Of each driver the points and place then and now, and the differences; with `afterRace` as it stood after
// that race. Throws common::RuleError, also when there is no such race, and EngineError.
reports::ReportTable RunWhatIf(engine::Database& league, engine::Database& templateDb,
                               const common::ProcessState& state, const WhatIf& whatIf,
                               std::optional<std::int32_t> afterRace);

}  // namespace scorvane::championship
