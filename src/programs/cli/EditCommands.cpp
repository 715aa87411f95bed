// Commands that edit a league: drivers, points, bonuses, single results.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

#include "app/Commands.h"
#include "championship/PointPresets.h"
#include "championship/RuleFiles.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "drivers/Roster.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/DriverNames.h"
#include "scoring/PointSystemEdit.h"
#include "scoring/RaceResults.h"

namespace scorvane::cli {
namespace {

// How many letters one has to add, drop, change or swap to make one name of the other.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row[b.size()];
}

// " Did you mean ...?" with the names of the league that come near, or that hold what was typed.
std::string NearestNames(engine::Database& league, const std::string& name) {
  constexpr std::size_t kMost = 3;
  const std::string typed = common::LowerCase(common::TrimBlanks(name));
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const drivers::Driver& driver : drivers::ListDrivers(league)) {
    const std::string known = common::LowerCase(driver.name);
    const bool within = !typed.empty() && known.find(typed) != std::string::npos;
    const std::size_t distance = within ? 1 : Distance(typed, known);
    if (distance <= std::max<std::size_t>(2, typed.size() / 3)) near.emplace_back(distance, driver.name);
  }
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  if (near.empty()) return {};
  std::string text;
  for (std::size_t i = 0; i < std::min(near.size(), kMost); ++i)
    text += (i == 0                                  ? " Did you mean "
             : i + 1 == std::min(near.size(), kMost) ? " or "
                                                     : ", ") +
            near[i].second;
  return text + "?";
}

// Points already given do not change with the rules.
void SayOldPoints(Context& context) {
  const std::int32_t races = app::CountRaces(context.League());
  if (races == 0) return;
  context.Say(fmt::format("{} {} the points that {} before; `recalculate` scores {} anew.",
                          Plural(races, "race"), races == 1 ? "keeps" : "keep",
                          races == 1 ? "it had" : "they had", races == 1 ? "it" : "them"));
}

void NeedNames(const DriverOptions& options, std::size_t fewest, std::size_t most, const char* what) {
  if (options.names.size() < fewest || options.names.size() > most)
    throw CommandError(fmt::format("driver {} takes {}.", options.action, what));
}

bool OnOrOff(const std::string& text) {
  if (text == "on") return true;
  if (text == "off") return false;
  throw CommandError(fmt::format("on or off, not '{}'.", text));
}

std::int32_t Count(engine::Database& league, const std::string& query) {
  return league.OpenRecordset(query).At(0).ToLong();
}

void Rename(Context& context, const std::string& from, const std::string& to) {
  engine::Database& league = context.League();
  drivers::Driver driver = NeedDriver(league, from);
  if (common::TrimBlanks(to).empty()) throw CommandError("A driver needs a name.");
  if (drivers::FindNameClash(league, to, driver.id))
    throw CommandError(fmt::format("\"{}\" already exists! `driver merge` makes one driver of two.", to));
  driver.name = to;
  app::UpdateDriver(context.Session(), driver);
  context.Say(fmt::format("{} is {} now.", from, common::TrimBlanks(to)));
}

}  // namespace

drivers::Driver NeedDriver(engine::Database& league, const std::string& name) {
  const auto id = drivers::FindNameClash(league, name, std::nullopt);
  const auto driver = id ? drivers::ReadDriver(league, *id) : std::nullopt;
  if (!driver)
    throw CommandError(fmt::format("The league has no driver '{}'.{}", name, NearestNames(league, name)));
  return *driver;
}

std::int32_t WholeNumber(const std::string& text, const std::string& what) {
  std::int32_t number = 0;
  const std::string_view trimmed = common::TrimBlanks(text);
  const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
  if (error != std::errc() || end != trimmed.data() + trimmed.size())
    throw CommandError(fmt::format("{} is a whole number, not '{}'.", what, text));
  return number;
}

void EditDrivers(const CommonOptions& common, const DriverOptions& options) {
  constexpr std::size_t kAny = 10000;
  Context context(common, options.path);
  engine::Database& league = context.League();
  const std::string& action = options.action;
  const std::vector<std::string>& names = options.names;
  if (action == "add") {
    NeedNames(options, 1, 1, "a NAME");
    if (common::TrimBlanks(names[0]).empty()) throw CommandError("A driver needs a name.");
    if (drivers::FindNameClash(league, names[0], std::nullopt))
      throw CommandError(fmt::format("\"{}\" already exists!", names[0]));
    app::AddDriver(context.Session(), {0, names[0], options.exclude, options.rookie, options.handicap});
    context.Say(fmt::format("Added {}.", common::TrimBlanks(names[0])));
  } else if (action == "rename") {
    NeedNames(options, 2, 2, "a NAME and the new one");
    Rename(context, names[0], names[1]);
  } else if (action == "exclude" || action == "include") {
    NeedNames(options, 1, kAny, "one NAME or more");
    std::vector<std::int32_t> ids;
    for (const std::string& name : names) ids.push_back(NeedDriver(league, name).id);
    app::SetExclude(context.Session(), ids, action == "exclude");
    context.Say(fmt::format("{} {} {}.", Plural(ids.size(), "driver"), ids.size() == 1 ? "is" : "are",
                            action == "exclude" ? "excluded from imports and reports" : "included again"));
  } else if (action == "rookie") {
    NeedNames(options, 2, 2, "a NAME and on or off");
    drivers::Driver driver = NeedDriver(league, names[0]);
    driver.rookie = OnOrOff(names[1]);
    app::UpdateDriver(context.Session(), driver);
    context.Say(fmt::format("{} is {} rookie.", driver.name, driver.rookie ? "a" : "no"));
  } else if (action == "handicap") {
    NeedNames(options, 2, 2, "a NAME and a whole number");
    drivers::Driver driver = NeedDriver(league, names[0]);
    driver.handicap = WholeNumber(names[1], "A handicap");
    app::UpdateDriver(context.Session(), driver);
    context.Say(fmt::format("{} has a handicap of {}.", driver.name, driver.handicap));
  } else if (action == "merge") {
    NeedNames(options, 2, 2, "the NAME that goes and the one that stays");
    const drivers::Driver from = NeedDriver(league, names[0]);
    const drivers::Driver into = NeedDriver(league, names[1]);
    if (from.id == into.id) throw CommandError("A driver cannot be merged with itself.");
    const std::int32_t shared = Count(
        league, fmt::format("SELECT Count(*) AS N FROM Stats AS A INNER JOIN Stats AS B ON A.RaceID=B.RaceID "
                            "WHERE A.DriverID={} AND B.DriverID={}",
                            from.id, into.id));
    app::MergeDrivers(context.Session(), from.id, into.id);
    context.Say(fmt::format("Merged {} into {}.", from.name, into.name));
    if (shared > 0) {
      context.Say(
          fmt::format("Both took part in {}: {} has two results there now. `result remove` takes one away.",
                      Plural(shared, "race"), into.name));
    }
  } else {
    NeedNames(options, 1, kAny, "one NAME or more");
    std::vector<std::int32_t> ids;
    for (const std::string& name : names) ids.push_back(NeedDriver(league, name).id);
    NeedConsent(context, options.yes,
                ids.size() == 1
                    ? "Removing this driver will also remove the points associated with the driver. "
                      "Do you want to continue?"
                    : "Removing these drivers will also remove the points associated with these "
                      "drivers. Do you want to continue?");
    app::RemoveDrivers(context.Session(), ids);
    context.Say(fmt::format("Removed {} with all results. `recalculate` moves the others up.",
                            Plural(ids.size(), "driver")));
  }
}

void RemoveExcluded(const CommonOptions& common, const std::string& path) {
  Context context(common, path);
  constexpr const char* kResults = "SELECT Count(*) AS N FROM Stats";
  const std::int32_t before = Count(context.League(), kResults);
  app::RemoveExcludedResults(context.Session(), context.ui);
  context.Say(
      fmt::format("The results of excluded drivers have been removed from all races ({} of {}),\n"
                  "and the remaining results have been recalculated.",
                  before - Count(context.League(), kResults), before));
}

// ---- points

namespace {

// A preset brings its bonus points along.
void SayBonuses(const Context& context, const scoring::PointSystemEdit& edit) {
  std::string rules;
  for (const scoring::BonusPoints& rule : edit.bonuses)
    if (rule.points != 0) rules += fmt::format("{}{} {}", rules.empty() ? "" : ", ", rule.name, rule.points);
  context.Say(fmt::format("Its bonus rules are on: {}.", rules.empty() ? "none brings points" : rules));
}

}  // namespace

void PointPresets(const CommonOptions& common) {
  OutputTable table;
  table.columns = {{"Preset"}, {"Win", true}, {"Positions", true}, {"Source"}};
  for (const championship::PointPreset& preset : championship::ListPointPresets()) {
    table.rows.push_back({engine::Value(preset.name), engine::Value(preset.points.front()),
                          engine::Value(static_cast<std::int32_t>(preset.points.size())),
                          engine::Value(preset.source)});
  }
  Print(table, common.format, common.decimal);
}

void Points(const CommonOptions& common, const PointOptions& options) {
  Context context(common, options.path);
  engine::Database& league = context.League();
  if (!options.file.empty() || !options.preset.empty() || options.use) {
    scoring::PointSystemEdit edit = scoring::ReadPointSystem(league);
    if (!options.file.empty()) edit.positions = championship::ReadPointFile(options.file);
    if (!options.preset.empty())
      championship::ApplyPreset(championship::NeedPointPreset(options.preset), edit);
    edit.usePositions = options.use.value_or(edit.usePositions);
    app::SavePointSystem(context.Session(), edit);
    context.Say(fmt::format("The league's own point system has {} and is {}.",
                            Plural(edit.positions.size(), "position"), edit.usePositions ? "on" : "off"));
    if (!options.preset.empty()) SayBonuses(context, edit);
    SayOldPoints(context);
    return;
  }
  auto rows = league.OpenRecordset("SELECT Position, Points, PrizeMoney FROM PointSystem ORDER BY Position");
  Print(TableOf(rows), common.format, common.decimal);
}

void Bonus(const CommonOptions& common, const PointOptions& options) {
  Context context(common, options.path);
  engine::Database& league = context.League();
  if (!options.sets.empty() || options.use) {
    scoring::PointSystemEdit edit = scoring::ReadPointSystem(league);
    for (const std::string& set : options.sets) {
      const std::size_t equals = set.find('=');
      if (equals == std::string::npos)
        throw CommandError(fmt::format("--set takes ID=POINTS, not '{}'.", set));
      const std::int32_t id = WholeNumber(set.substr(0, equals), "A rule's id");
      const auto rule = std::find_if(edit.bonuses.begin(), edit.bonuses.end(),
                                     [&](const scoring::BonusPoints& bonus) { return bonus.id == id; });
      if (rule == edit.bonuses.end()) throw CommandError(fmt::format("The league has no bonus rule {}.", id));
      rule->points = WholeNumber(set.substr(equals + 1), "A rule's points");
    }
    edit.useBonus = options.use.value_or(edit.useBonus);
    app::SavePointSystem(context.Session(), edit);
    context.Say(fmt::format("The league's own bonus rules are {}.", edit.useBonus ? "on" : "off"));
    SayOldPoints(context);
    return;
  }
  auto rows = league.OpenRecordset("SELECT BonusID, Name, Points, Query FROM Bonus");
  Print(TableOf(rows), common.format, common.decimal);
}

// ---- races and results

void EditRaces(const CommonOptions& common, const RaceOptions& options) {
  Context context(common, options.path);
  engine::Database& league = context.League();
  for (const std::int32_t id : options.ids) NeedRace(league, id);
  NeedConsent(context, options.yes,
              fmt::format("This will remove {} race{} with all results and cannot be undone. Do you want to "
                          "continue?",
                          options.ids.size(), options.ids.size() == 1 ? "" : "s"));
  app::Remove(context.Session(), options.ids);
  context.Say(fmt::format("Removed {} with all results.", Plural(options.ids.size(), "race")));
}

namespace {

std::int32_t NeedResult(const std::vector<scoring::RaceResult>& results, engine::Database& league,
                        const std::string& name) {
  const std::string driver = NeedDriver(league, name).name;
  for (const scoring::RaceResult& result : results)
    if (result.driver == driver) return result.id;
  throw CommandError(fmt::format("{} has no result in this race.", driver));
}

void TakeFields(const ResultOptions& options, char decimal, scoring::ResultEntry& entry) {
  for (std::size_t i = 0; i < options.fields.size(); ++i) {
    const std::optional<std::string>& typed = options.fields[i];
    if (!typed) continue;
    if (i == scoring::ResultEntry::kAvgSpeed || i == scoring::ResultEntry::kQualifying) {
      double number = 0;
      if (!(engine::ParseNumber(*typed, '.', number) || engine::ParseNumber(*typed, decimal, number)) ||
          number < 0)
        throw CommandError(fmt::format("'{}' is no number that a result can have.", *typed));
    } else if (i != scoring::ResultEntry::kName &&
               WholeNumber(*typed, "A number of a result but a speed") < 0) {
      throw CommandError(fmt::format("'{}' is no number that a result can have.", *typed));
    }
    entry.fields[i] = *typed;
  }
  if (options.reason) entry.reason = *options.reason;
  if (!scoring::IsComplete(entry)) throw CommandError("A result needs a driver, --finish and --start.");
}

// A driver may have several results in a race, but hardly ever is meant to.
void SayResultsOf(Context& context, std::int32_t raceId, const scoring::ResultEntry& entry) {
  engine::Database& league = context.League();
  const drivers::Driver driver = NeedDriver(league, entry.fields[scoring::ResultEntry::kName]);
  const std::int32_t results = Count(
      league,
      fmt::format("SELECT Count(*) AS N FROM Stats WHERE RaceID={} AND DriverID={}", raceId, driver.id));
  if (results > 1) context.Say(fmt::format("{} has {} results in this race now.", driver.name, results));
}

}  // namespace

void EditResults(const CommonOptions& common, const ResultOptions& options) {
  Context context(common, options.path);
  engine::Database& league = context.League();
  const RaceFacts facts = NeedRace(league, options.raceId);
  const scoring::RaceKey race{options.raceId, false};
  const float length = scoring::ReadRaceHeader(league, context.state, race).length;
  const std::vector<scoring::RaceResult> results = scoring::ReadRaceResults(league, race);
  if (options.action != "remove" && options.drivers.size() != 1)
    throw CommandError(fmt::format("result {} takes one driver.", options.action));
  if (options.action == "add") {
    scoring::ResultEntry entry;
    entry.fields[scoring::ResultEntry::kName] = options.drivers[0];
    for (std::size_t i = 0; i < entry.fields.size(); ++i)
      entry.fields[i] = scoring::LeftField(static_cast<int>(i), entry.fields[i]);
    TakeFields(options, common.decimal, entry);
    app::AddResult(context.Session(), race, entry, length);
    context.Say(
        fmt::format("Added {}'s result in {}.", entry.fields[scoring::ResultEntry::kName], facts.name));
    SayResultsOf(context, options.raceId, entry);
  } else if (options.action == "edit") {
    const bool changes = options.reason || std::any_of(options.fields.begin(), options.fields.end(),
                                                       [](const std::optional<std::string>& field) {
                                                         return field.has_value();
                                                       });
    if (!changes)
      throw CommandError("Nothing to change: `scorvane-cli result --help` lists what a result has.");
    const std::int32_t id = NeedResult(results, league, options.drivers[0]);
    scoring::ResultEntry entry = scoring::ReadResultEntry(league, context.state, race, id, length);
    TakeFields(options, common.decimal, entry);
    app::UpdateResult(context.Session(), race, id, entry, length);
    context.Say(
        fmt::format("Changed {}'s result in {}.", entry.fields[scoring::ResultEntry::kName], facts.name));
    SayResultsOf(context, options.raceId, entry);
  } else {
    std::vector<std::int32_t> ids;
    for (const std::string& name : options.drivers) ids.push_back(NeedResult(results, league, name));
    NeedConsent(context, options.yes,
                fmt::format("This will remove {} result{} and cannot be undone. Do you want to continue?",
                            ids.size(), ids.size() == 1 ? "" : "s"));
    app::RemoveResults(context.Session(), race, ids);
    context.Say(fmt::format("Removed {} from {}. `recalculate {} {}` moves the others up.",
                            Plural(ids.size(), "result"), facts.name, options.path, options.raceId));
  }
}

}  // namespace scorvane::cli
