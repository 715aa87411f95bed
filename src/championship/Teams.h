// Teams and makes: one idea, a group of drivers from a race on. The tables that hold them are the league's
// own, made when the first group is; a league without any has neither.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Database.h"

namespace scorvane::championship {

enum class GroupKind : std::int16_t { Team = 0, Make = 1 };
inline constexpr int kMostNameLength = 50;  // characters of a name
inline constexpr int kMostBest = 1000;

// "team" or "make".
std::string_view KindName(GroupKind kind);

struct Group {
  std::int32_t id = 0;
  std::string name;
};

// From a race on a driver belongs to a group, or to none.
struct Membership {
  std::int32_t driverId = 0;
  std::optional<std::int32_t> groupId;
  std::int32_t fromRace = 0;  // the race's key; 0: from the start
};

// Makes the tables where they are missing. Throws EngineError.
void EnsureTeamTables(engine::Database& league);
bool HasTeamTables(const engine::Database& league);

// By name. Nothing in a league without the tables.
std::vector<Group> ListGroups(engine::Database& league, GroupKind kind);
// By name, letter case and blanks around it aside.
std::optional<Group> FindGroup(engine::Database& league, GroupKind kind, const std::string& name);
// By driver, then by race.
std::vector<Membership> ListMemberships(engine::Database& league, GroupKind kind);

// A driver's time in a group.
struct Member {
  std::int32_t groupId = 0;
  std::int32_t driverId = 0;
  std::string driver;
  std::int32_t from = 0;              // the race's key; 0: from the start
  std::optional<std::int32_t> until;  // the race with which something else begins; none: until now
};
// By the driver's name, then by race.
std::vector<Member> ListMembers(engine::Database& league, GroupKind kind);

// The changes below need the tables. They throw common::RuleError with a sentence for the user where what was
// asked cannot be, and EngineError; nothing is changed then.

std::int32_t AddGroup(engine::Database& league, GroupKind kind, const std::string& name);
void RenameGroup(engine::Database& league, GroupKind kind, std::int32_t id, const std::string& name);
// Its drivers are then where they would be without it: what they were in before holds on.
void RemoveGroup(engine::Database& league, std::int32_t id);

// The race from which a change holds when nobody says: the start for who has never been in a group of the
// kind, else the race behind the last one that is there, so that what was scored stays where it is.
std::int32_t NextChange(engine::Database& league, GroupKind kind, std::int32_t driverId);

// Puts drivers into a group from a race on (0: from the start; none: NextChange). What was to begin at that
// very race is replaced, what begins later stays.
void Join(engine::Database& league, GroupKind kind, std::int32_t groupId,
          const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace);
// Takes drivers out of whatever group they are in. One who is in none at that race is a RuleError.
void Leave(engine::Database& league, GroupKind kind, const std::vector<std::int32_t>& driverIds,
           std::optional<std::int32_t> fromRace);

// Before two drivers become one: gives the memberships of one to the other for the races in which that one
// has none. Does nothing in a league without the tables.
void MergeMemberships(engine::Database& league, std::int32_t from, std::int32_t into);

// How many of a group's results count in each race, 0 for all: 2 for teams and 1 for makes until it is set.
int BestResults(engine::Database& league, GroupKind kind);
void SetBestResults(engine::Database& league, GroupKind kind, int best);

}  // namespace scorvane::championship
