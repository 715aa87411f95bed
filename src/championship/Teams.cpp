#include "championship/Teams.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "common/Formats.h"
#include "common/RuleError.h"
#include "common/SqlText.h"
#include "db/Tables.h"
#include "engine/Collation.h"

namespace scorvane::championship {
namespace {

constexpr const char* kGroupTable = "Team";
constexpr const char* kMemberTable = "TeamMember";
constexpr const char* kScoringTable = "TeamScoring";

int Number(GroupKind kind) {
  return static_cast<int>(kind);
}

std::size_t Characters(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(
      utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

// The name as it is stored.
std::string NewName(engine::Database& league, GroupKind kind, const std::string& typed,
                    std::optional<std::int32_t> id) {
  const std::string name(common::TrimBlanks(typed));
  if (name.empty()) throw common::RuleError(fmt::format("A {} needs a name.", KindName(kind)));
  if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }))
    throw common::RuleError(fmt::format("The name of a {} is one line of text.", KindName(kind)));
  if (Characters(name) > static_cast<std::size_t>(kMostNameLength))
    throw common::RuleError(
        fmt::format("The name of a {} has at most {} characters.", KindName(kind), kMostNameLength));
  const auto other = FindGroup(league, kind, name);
  if (other && other->id != id) throw common::RuleError(fmt::format("\"{}\" already exists!", other->name));
  return name;
}

std::string GroupLiteral(std::optional<std::int32_t> groupId) {
  return groupId ? std::to_string(*groupId) : "Null";
}

// The memberships of one driver, by race.
std::map<std::int32_t, std::optional<std::int32_t>> Spells(engine::Database& league, GroupKind kind,
                                                           std::int32_t driverId) {
  std::map<std::int32_t, std::optional<std::int32_t>> spells;
  for (const Membership& membership : ListMemberships(league, kind))
    if (membership.driverId == driverId) spells[membership.fromRace] = membership.groupId;
  return spells;
}

std::optional<std::int32_t> GroupAt(const std::map<std::int32_t, std::optional<std::int32_t>>& spells,
                                    std::int32_t race) {
  const auto next = spells.upper_bound(race);
  return next == spells.begin() ? std::nullopt : std::prev(next)->second;
}

void Store(engine::Database& league, GroupKind kind, const Membership& membership) {
  league.Execute(fmt::format("DELETE * FROM TeamMember WHERE DriverID={} AND Kind={} AND FromRace={}",
                             membership.driverId, Number(kind), membership.fromRace));
  league.Execute(fmt::format("INSERT INTO TeamMember (DriverID, TeamID, Kind, FromRace) VALUES ({},{},{},{})",
                             membership.driverId, GroupLiteral(membership.groupId), Number(kind),
                             membership.fromRace));
}

}  // namespace

std::string_view KindName(GroupKind kind) {
  return kind == GroupKind::Team ? "team" : "make";
}

bool HasTeamTables(const engine::Database& league) {
  return league.FindTableDef(kMemberTable) != nullptr;
}

void EnsureTeamTables(engine::Database& league) {
  if (HasTeamTables(league)) return;
  using engine::FieldType;
  engine::UnitOfWork unit(league);
  constexpr int kCounter = engine::kAutoIncrField | engine::kFixedField;
  league.AppendTableDef(
      {kGroupTable,
       {db::Column("TeamID", FieldType::Long, 4, kCounter), db::Column("Kind", FieldType::Integer),
        db::Column("Name", FieldType::Text, kMostNameLength, engine::kVariableField, true)},
       {db::PrimaryKey("TeamID")}});
  league.AppendTableDef({kMemberTable,
                         {db::Column("TeamMemberID", FieldType::Long, 4, kCounter),
                          db::Column("DriverID", FieldType::Long, 4, engine::kFixedField, true),
                          db::Column("TeamID", FieldType::Long), db::Column("Kind", FieldType::Integer),
                          db::Column("FromRace", FieldType::Long)},
                         {db::PrimaryKey("TeamMemberID"),
                          {"DriverMember", {"DriverID"}, false, false, false},
                          {"TeamMemberTeam", {"TeamID"}, false, false, false}}});
  league.AppendTableDef({kScoringTable,
                         {db::Column("Kind", FieldType::Long), db::Column("Best", FieldType::Long)},
                         {db::PrimaryKey("Kind")}});
  league.AppendRelation(db::CascadingRelation("DriverTeamMember", "Driver", kMemberTable, "DriverID"));
  league.AppendRelation(db::CascadingRelation("TeamTeamMember", kGroupTable, kMemberTable, "TeamID"));
  unit.Commit();
}

std::vector<Group> ListGroups(engine::Database& league, GroupKind kind) {
  std::vector<Group> groups;
  if (!HasTeamTables(league)) return groups;
  for (auto rows = league.OpenRecordset(
           fmt::format("SELECT TeamID, Name FROM Team WHERE Kind={} ORDER BY Name, TeamID", Number(kind)));
       !rows.AtEnd(); rows.MoveNext())
    groups.push_back({rows.At(0).ToLong(), rows.At(1).ToText()});
  return groups;
}

std::optional<Group> FindGroup(engine::Database& league, GroupKind kind, const std::string& name) {
  const std::string_view trimmed = common::TrimBlanks(name);
  if (trimmed.empty() || !HasTeamTables(league)) return std::nullopt;
  const auto rows = league.OpenRecordset(fmt::format(
      "SELECT TeamID, Name FROM Team WHERE Kind={} AND Name={}", Number(kind), common::QuoteSQL(trimmed)));
  if (rows.AtEnd()) return std::nullopt;
  return Group{rows.At(0).ToLong(), rows.At(1).ToText()};
}

std::vector<Membership> ListMemberships(engine::Database& league, GroupKind kind) {
  std::vector<Membership> memberships;
  if (!HasTeamTables(league)) return memberships;
  for (auto rows = league.OpenRecordset(fmt::format("SELECT DriverID, TeamID, FromRace FROM TeamMember WHERE "
                                                    "Kind={} ORDER BY DriverID, FromRace, TeamMemberID",
                                                    Number(kind)));
       !rows.AtEnd(); rows.MoveNext()) {
    Membership membership{rows.At(0).ToLong(), std::nullopt, rows.At(2).IsNull() ? 0 : rows.At(2).ToLong()};
    if (!rows.At(1).IsNull()) membership.groupId = rows.At(1).ToLong();
    memberships.push_back(membership);
  }
  return memberships;
}

std::vector<Member> ListMembers(engine::Database& league, GroupKind kind) {
  std::vector<Member> members;
  const std::vector<Membership> memberships = ListMemberships(league, kind);
  if (memberships.empty()) return members;
  std::map<std::int32_t, std::string> names;
  for (auto rows = league.OpenRecordset("SELECT DriverID, Name FROM Driver"); !rows.AtEnd(); rows.MoveNext())
    names[rows.At(0).ToLong()] = rows.At(1).ToText();
  for (std::size_t i = 0; i < memberships.size(); ++i) {
    const Membership& membership = memberships[i];
    if (!membership.groupId) continue;
    Member member{
        *membership.groupId, membership.driverId, names[membership.driverId], membership.fromRace, {}};
    const bool last = i + 1 == memberships.size() || memberships[i + 1].driverId != membership.driverId;
    if (!last) member.until = memberships[i + 1].fromRace;
    members.push_back(std::move(member));
  }
  std::sort(members.begin(), members.end(), [](const Member& a, const Member& b) {
    if (const int order = engine::CompareTexts(a.driver, b.driver); order != 0) return order < 0;
    return std::tie(a.driverId, a.from) < std::tie(b.driverId, b.from);
  });
  return members;
}

std::int32_t AddGroup(engine::Database& league, GroupKind kind, const std::string& name) {
  const std::string stored = NewName(league, kind, name, std::nullopt);
  engine::UnitOfWork unit(league);
  league.Execute(
      fmt::format("INSERT INTO Team (Kind, Name) VALUES ({},{})", Number(kind), common::QuoteSQL(stored)));
  const std::int32_t id = common::GetMaxID(league, kGroupTable, "TeamID");
  unit.Commit();
  return id;
}

void RenameGroup(engine::Database& league, GroupKind kind, std::int32_t id, const std::string& name) {
  league.Execute(fmt::format("UPDATE Team SET Name={} WHERE TeamID={}",
                             common::QuoteSQL(NewName(league, kind, name, id)), id));
}

void RemoveGroup(engine::Database& league, std::int32_t id) {
  league.Execute(fmt::format("DELETE * FROM Team WHERE TeamID={}", id));
}

std::int32_t NextChange(engine::Database& league, GroupKind kind, std::int32_t driverId) {
  const std::int32_t last = common::GetMaxID(league, "Race", "RaceID");
  return last == 0 || Spells(league, kind, driverId).empty() ? 0 : last + 1;
}

void Join(engine::Database& league, GroupKind kind, std::int32_t groupId,
          const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t driverId : driverIds)
    Store(league, kind, {driverId, groupId, fromRace ? *fromRace : NextChange(league, kind, driverId)});
  unit.Commit();
}

void Leave(engine::Database& league, GroupKind kind, const std::vector<std::int32_t>& driverIds,
           std::optional<std::int32_t> fromRace) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t driverId : driverIds) {
    const std::int32_t from = fromRace ? *fromRace : NextChange(league, kind, driverId);
    if (!GroupAt(Spells(league, kind, driverId), from)) {
      const auto name =
          league.OpenRecordset(fmt::format("SELECT Name FROM Driver WHERE DriverID={}", driverId));
      throw common::RuleError(fmt::format("{} is in no {} then.",
                                          name.AtEnd() ? "The driver" : name.At(0).ToText(), KindName(kind)));
    }
    Store(league, kind, {driverId, std::nullopt, from});
  }
  unit.Commit();
}

void MergeMemberships(engine::Database& league, std::int32_t from, std::int32_t into) {
  if (!HasTeamTables(league)) return;
  engine::UnitOfWork unit(league);
  for (const GroupKind kind : {GroupKind::Team, GroupKind::Make}) {
    const auto goes = Spells(league, kind, from);
    const auto stays = Spells(league, kind, into);
    if (goes.empty()) continue;
    std::set<std::int32_t> races;
    for (const auto* spells : {&goes, &stays})
      for (const auto& [race, group] : *spells) races.insert(race);
    std::optional<std::int32_t> before;
    for (const std::int32_t race : races) {
      const auto own = GroupAt(stays, race);
      const auto group = own ? own : GroupAt(goes, race);
      if (group != before || stays.contains(race)) Store(league, kind, {into, group, race});
      before = group;
    }
  }
  unit.Commit();
}

int BestResults(engine::Database& league, GroupKind kind) {
  if (HasTeamTables(league)) {
    const auto rows =
        league.OpenRecordset(fmt::format("SELECT Best FROM TeamScoring WHERE Kind={}", Number(kind)));
    if (!rows.AtEnd() && !rows.At(0).IsNull()) return std::clamp(rows.At(0).ToLong(), 0, kMostBest);
  }
  return kind == GroupKind::Team ? 2 : 1;
}

void SetBestResults(engine::Database& league, GroupKind kind, int best) {
  if (best < 0 || best > kMostBest)
    throw common::RuleError(fmt::format("How many results of a {} count is a number from 0 (all) to {}.",
                                        KindName(kind), kMostBest));
  engine::UnitOfWork unit(league);
  if (league.Execute(fmt::format("UPDATE TeamScoring SET Best={} WHERE Kind={}", best, Number(kind))) == 0)
    league.Execute(fmt::format("INSERT INTO TeamScoring (Kind, Best) VALUES ({},{})", Number(kind), best));
  unit.Commit();
}

}  // namespace scorvane::championship
