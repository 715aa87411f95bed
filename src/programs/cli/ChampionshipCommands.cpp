// Commands about teams, makes and playoffs.
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "app/Commands.h"
#include "championship/Playoff.h"
#include "championship/RuleFiles.h"
#include "championship/Teams.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/Names.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/DriverNames.h"

namespace scorvane::cli {
namespace {

using championship::Group;
using championship::GroupKind;

Group NeedGroup(engine::Database& league, GroupKind kind, const std::string& name) {
  if (const auto group = championship::FindGroup(league, kind, name)) return *group;
  std::string names;
  for (const Group& group : championship::ListGroups(league, kind))
    names += (names.empty() ? "" : ", ") + group.name;
  throw CommandError(names.empty() ? fmt::format("The league has no {}s.", championship::KindName(kind))
                                   : fmt::format("The league has no {} '{}'. There are: {}.",
                                                 championship::KindName(kind), name, names));
}

// The action's names from `first` on as drivers.
std::vector<std::int32_t> NeedDrivers(engine::Database& league, const std::vector<std::string>& names,
                                      std::size_t first) {
  std::vector<std::int32_t> ids;
  for (std::size_t i = first; i < names.size(); ++i) ids.push_back(NeedDriver(league, names[i]).id);
  return ids;
}

void NeedNames(const GroupOptions& options, std::size_t fewest, std::size_t most, const char* what) {
  if (options.names.size() < fewest || options.names.size() > most)
    throw CommandError(
        fmt::format("{} {} takes {}.", championship::KindName(options.kind), options.action, what));
}

// 0 stands for the start of the season.
void CheckFrom(engine::Database& league, const std::optional<std::int32_t>& from) {
  if (from && *from != 0) NeedRace(league, *from);
}

void ListMembers(Context& context, const CommonOptions& common, GroupKind kind) {
  engine::Database& league = context.League();
  const auto members = championship::ListMembers(league, kind);
  OutputTable table;
  table.columns = {{kind == GroupKind::Team ? "Team" : "Make"}, {"Driver"}, {"From", true}, {"Until", true}};
  for (const Group& group : championship::ListGroups(league, kind)) {
    bool empty = true;
    for (const championship::Member& member : members) {
      if (member.groupId != group.id) continue;
      empty = false;
      table.rows.push_back({engine::Value(group.name), engine::Value(member.driver),
                            member.from == 0 ? engine::Value() : engine::Value(member.from),
                            member.until ? engine::Value(*member.until) : engine::Value()});
    }
    if (empty)
      table.rows.push_back({engine::Value(group.name), engine::Value(), engine::Value(), engine::Value()});
  }
  Print(table, common.format, common.decimal);
}

std::string FromText(const std::optional<std::int32_t>& from) {
  if (!from) return "";
  return *from == 0 ? " from the start" : fmt::format(" from race {} on", *from);
}

}  // namespace

void EditGroups(const CommonOptions& common, const GroupOptions& options) {
  constexpr std::size_t kAny = 10000;
  const std::string& action = options.action;
  const GroupKind kind = options.kind;
  const std::string_view word = championship::KindName(kind);
  if (action == "list" || (action.empty() && !options.best)) {
    Context context(common, options.path, app::LeagueSession::Use::Looking);
    return ListMembers(context, common, kind);
  }
  Context context(common, options.path);
  engine::Database& league = context.League();
  const std::vector<std::string>& names = options.names;
  CheckFrom(league, options.from);
  if (action == "add") {
    NeedNames(options, 1, 1, "a NAME");
    app::AddGroup(context.Session(), kind, names[0]);
    context.Say(fmt::format("Added the {} {}.", word, common::TrimBlanks(names[0])));
  } else if (action == "rename") {
    NeedNames(options, 2, 2, "a NAME and the new one");
    const Group group = NeedGroup(league, kind, names[0]);
    app::RenameGroup(context.Session(), kind, group, names[1]);
    context.Say(fmt::format("{} is {} now.", group.name, common::TrimBlanks(names[1])));
  } else if (action == "remove") {
    NeedNames(options, 1, 1, "a NAME");
    const Group group = NeedGroup(league, kind, names[0]);
    app::RemoveGroup(context.Session(), group);
    context.Say(fmt::format("Removed the {} {}.", word, group.name));
  } else if (action == "join") {
    NeedNames(options, 2, kAny, fmt::format("a {} and one DRIVER or more", word).c_str());
    const Group group = NeedGroup(league, kind, names[0]);
    const auto ids = NeedDrivers(league, names, 1);
    app::JoinGroup(context.Session(), kind, group, ids, options.from);
    context.Say(fmt::format("{} {} to {}{}.", Plural(ids.size(), "driver"),
                            ids.size() == 1 ? "belongs" : "belong", group.name, FromText(options.from)));
  } else if (action == "leave") {
    NeedNames(options, 1, kAny, "one DRIVER or more");
    const auto ids = NeedDrivers(league, names, 0);
    app::LeaveGroup(context.Session(), kind, ids, options.from);
    context.Say(fmt::format("{} {} to no {}{}.", Plural(ids.size(), "driver"),
                            ids.size() == 1 ? "belongs" : "belong", word, FromText(options.from)));
  } else {
    int best = options.best.value_or(0);
    if (action == "best") {
      NeedNames(options, 1, 1, "a number, 0 for all");
      best = WholeNumber(names[0], "How many results count");
    }
    app::SetBestResults(context.Session(), kind, best);
    context.Say(best == 0
                    ? fmt::format("All results of a {} count in each race.", word)
                    : fmt::format("The best {} of a {} count in each race.", Plural(best, "result"), word));
  }
}

// A preset has the name before a file of that name.
championship::PlayoffFormat NeedPlayoff(const std::string& name) {
  const auto presets = championship::ListPlayoffPresets();
  const bool known = std::any_of(presets.begin(), presets.end(),
                                 [&](const auto& preset) { return engine::SameName(preset.name, name); });
  if (known || (name != common::kStandardInput && !common::FileExists(name)))
    return championship::PresetPlayoff(name);
  return championship::ReadPlayoffFile(name);
}

namespace {

void ShowPlayoff(const CommonOptions& common, const std::string& path) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  const auto format = championship::ReadPlayoff(context.League());
  if (!format) throw CommandError("The league has no playoff.");
  fmt::print("{}\n", championship::PlayoffText(*format));
}

void ListPresets(const CommonOptions& common) {
  OutputTable table;
  table.columns = {{"Preset"}, {"Source"}};
  for (const auto& preset : championship::ListPlayoffPresets())
    table.rows.push_back({engine::Value(preset.name), engine::Value(preset.source)});
  Print(table, common.format, common.decimal);
}

}  // namespace

void EditPlayoff(const CommonOptions& common, const PlayoffOptions& options) {
  if (options.action == "show") return ShowPlayoff(common, options.path);
  if (options.action == "preset" && options.name.empty()) return ListPresets(common);
  if (options.action == "set" && options.name.empty()) throw CommandError("playoff set takes a FILE.json.");
  if (options.action == "clear" && !options.name.empty()) throw CommandError("playoff clear takes no name.");
  if (options.after && options.action != "preset") throw CommandError("--after goes with playoff preset.");
  std::optional<championship::PlayoffFormat> format;
  if (options.action == "set") format = championship::ReadPlayoffFile(options.name);
  if (options.action == "preset") format = championship::PresetPlayoff(options.name, options.after);
  Context context(common, options.path);
  if (!format) {
    if (!championship::HasPlayoff(context.League())) throw CommandError("The league has no playoff.");
    app::ClearPlayoff(context.Session());
    context.Say("The league has no playoff now.");
    return;
  }
  app::SetPlayoff(context.Session(), *format);
  context.Say(fmt::format("The playoff {} has {} and begins after {}.", format->name,
                          Plural(format->stages.size(), "stage"),
                          Plural(format->stages.front().after, "race")));
}

}  // namespace scorvane::cli
