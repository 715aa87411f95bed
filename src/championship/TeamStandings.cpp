#include "championship/TeamStandings.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

namespace scorvane::championship {
namespace {

// The group of a driver in every race of the season.
class Memberships {
 public:
  Memberships(const Season& season, const std::vector<Group>& groups,
              const std::vector<Membership>& memberships)
      : races_(season.races.size()) {
    std::unordered_map<std::int32_t, std::size_t> places;
    for (std::size_t i = 0; i < groups.size(); ++i) places[groups[i].id] = i;
    for (const Membership& membership : memberships) {
      auto& spells = spells_[membership.driverId];
      const auto place = membership.groupId ? places.find(*membership.groupId) : places.end();
      Spell spell{season.RacesBefore(membership.fromRace), std::nullopt};
      if (place != places.end()) spell.group = place->second;
      spells.push_back(spell);
    }
  }

  // In the order of races; empty for who has never been in a group.
  std::vector<std::optional<std::size_t>> GroupsOf(std::int32_t driverId) const {
    const auto found = spells_.find(driverId);
    if (found == spells_.end()) return {};
    std::vector<std::optional<std::size_t>> groups(races_);
    for (const Spell& spell : found->second)
      std::fill(groups.begin() + static_cast<std::ptrdiff_t>(spell.first), groups.end(), spell.group);
    return groups;
  }

 private:
  struct Spell {
    std::size_t first;
    std::optional<std::size_t> group;
  };
  std::size_t races_;
  std::unordered_map<std::int32_t, std::vector<Spell>> spells_;
};

std::int64_t BestOf(std::vector<std::int32_t>& points, int best) {
  std::sort(points.begin(), points.end(), std::greater<>());
  const std::size_t count =
      best <= 0 ? points.size() : std::min(points.size(), static_cast<std::size_t>(best));
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += points[i];
  return sum;
}

}  // namespace

std::vector<GroupStanding> ComputeGroupStandings(const Season& season, const std::vector<Group>& groups,
                                                 const std::vector<Membership>& memberships, int best) {
  const Memberships who(season, groups, memberships);
  std::vector<GroupStanding> standings(groups.size());
  // By group and race.
  std::vector<std::vector<std::vector<std::int32_t>>> points(
      groups.size(), std::vector<std::vector<std::int32_t>>(season.races.size()));
  for (const SeasonDriver& driver : season.drivers) {
    if (driver.excluded) continue;
    const auto groupOf = who.GroupsOf(driver.id);
    if (groupOf.empty()) continue;
    std::vector<bool> counted(groups.size());
    for (const SeasonResult& result : driver.results) {
      const auto group = groupOf[result.race];
      if (!group) continue;
      points[*group][result.race].push_back(result.points);
      standings[*group].totals.Add(result);
      if (!counted[*group]) ++standings[*group].drivers;
      counted[*group] = true;
    }
  }
  for (std::size_t i = 0; i < groups.size(); ++i) {
    standings[i].name = groups[i].name;
    for (std::vector<std::int32_t>& race : points[i]) standings[i].points += BestOf(race, best);
  }
  std::erase_if(standings, [](const GroupStanding& standing) { return standing.totals.starts == 0; });
  // The groups come by name.
  std::stable_sort(standings.begin(), standings.end(), [](const GroupStanding& a, const GroupStanding& b) {
    return a.points != b.points ? a.points > b.points : CountBack(a.totals, b.totals) > 0;
  });
  return standings;
}

}  // namespace scorvane::championship
