// The tables of teams and makes: in each race a group's best results count, by the points that its drivers
// got.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "championship/Season.h"
#include "championship/Teams.h"

namespace scorvane::championship {

struct GroupStanding {
  std::string name;
  std::int64_t points = 0;  // of the results that count
  Totals totals;            // of all results of its drivers while they belong to it
  int drivers = 0;          // who have started for it
};

// From the first place down; level ones by count-back, then by name. Groups that nobody has started for are
// left out, and so are drivers who are excluded. A dropped race is a driver's: for his team it counts. `best`
// results of a group count in each race, 0 for all.
std::vector<GroupStanding> ComputeGroupStandings(const Season& season, const std::vector<Group>& groups,
                                                 const std::vector<Membership>& memberships, int best);

}  // namespace scorvane::championship
