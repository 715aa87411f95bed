// Point systems to choose from: the tables that leagues use, with the bonus points that belong to them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scoring/PointSystemEdit.h"

namespace scorvane::championship {

struct PointPreset {
  std::string name;
  std::string source;
  std::vector<std::int32_t> points;              // from position 1 on; none behind the last
  std::map<std::int32_t, std::int32_t> bonuses;  // points by the rule's id; every other rule brings none
};

std::vector<PointPreset> ListPointPresets();
// By its name; common::RuleError with the names that there are when it is none of them.
PointPreset NeedPointPreset(const std::string& name);

// Puts a preset into a point system that is being edited, and turns its points and bonuses on. Prize money
// stays. RuleError when the league lacks a bonus rule that the preset needs.
void ApplyPreset(const PointPreset& preset, scoring::PointSystemEdit& edit);

}  // namespace scorvane::championship
