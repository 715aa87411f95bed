// Commands that make, fill and change a league.
#include <fmt/format.h>

#include <algorithm>

#include "app/Commands.h"
#include "common/Formats.h"
#include "common/HeldMessages.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "import/ExportedStandings.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "scoring/OfflineMerge.h"

namespace scorvane::cli {
namespace {

// Bounds of the settings that the program reads as numbers; what lies outside them would not open as it was
// meant.
void CheckSetting(int id, const std::string& value) {
  struct Bounds {
    int id;
    int highest;
  };
  static constexpr Bounds kBounds[] = {
      {common::kSimTitle, 5},
      {common::kDroppedRaces, 10},
      {common::kLeagueTypeSetting, 1},
      {common::kUseCustomPointSystem, 1},
      {common::kUseCustomBonusSystem, 1},
      {common::kLapReportingMethodSetting, 1},
  };
  for (const Bounds& bounds : kBounds) {
    if (bounds.id != id) continue;
    double number = 0;
    if (!engine::ParseNumber(value, '.', number) || number < 0 || number > bounds.highest ||
        number != engine::RoundHalfEven(number))
      throw CommandError(
          fmt::format("Setting {} takes a whole number from 0 to {}, not '{}'.", id, bounds.highest, value));
  }
}

bool MentionsLapTimes(const std::vector<std::string>& texts) {
  return std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
    return text.find("the qualifying speed is not a number") != std::string::npos &&
           text.find(':', text.find('"')) != std::string::npos;
  });
}

// Shows what was held back, and ends the command: what it did is taken back.
[[noreturn]] void Refuse(common::HeldMessages& held, const std::string& reason) {
  held.Release();
  throw CommandError(reason);
}

// Which races the files that the league has already take the place of. Refuses what leaves that open.
std::vector<app::Replacement> Replacements(const std::vector<app::Duplicate>& duplicates,
                                           const common::ProcessState& state, common::HeldMessages& held) {
  std::vector<app::Replacement> replacements;
  for (const app::Duplicate& duplicate : duplicates) {
    if (duplicate.raceId == 0) {
      held.ShowMessage({fmt::format("{}: {}.", duplicate.file.path, duplicate.reason)});
      Refuse(held, "Nothing was imported.");
    }
    const auto same = std::find_if(
        replacements.begin(), replacements.end(),
        [&](const app::Replacement& replacement) { return replacement.raceId == duplicate.raceId; });
    const bool event = state.leagueType == common::kOffline;
    if (same == replacements.end() && (!event || replacements.empty())) {
      replacements.push_back({duplicate.file.raceId, duplicate.raceId});
    } else if (same == replacements.end()) {
      Refuse(held, fmt::format("The files belong to races {} and {}; nothing was imported.",
                               replacements.front().raceId, duplicate.raceId));
    } else if (!event) {
      Refuse(held, fmt::format("Two of the files would take the place of race {}; nothing was imported.",
                               duplicate.raceId));
    }
  }
  return replacements;
}

}  // namespace

void Create(const CommonOptions& common, const CreateOptions& options) {
  Context context(common);
  if (common::TrimBlanks(common::GetFileTitle(options.path)).empty())
    throw CommandError(fmt::format("'{}' names no file.", options.path));
  const std::string path = app::WithLeagueExtension(options.path);
  if (common::FileExists(path) && !options.replace)
    throw CommandError(fmt::format("\"{}\" already exists! --replace replaces it.", path));
  app::CreateLeague(context.engine, context.Template(), path,
                    {options.simType, options.leagueType, options.droppedRaces, options.lapReportingMethod});
  if (!options.heading.empty()) {
    const auto league = context.engine.DefaultWorkspace().OpenDatabase(path);
    common::StoreSetting(*league, common::kPageHeading, options.heading);
  }
  context.Say(fmt::format("Created {} ({}, {}).", path, common::SimTypeName(options.simType),
                          options.leagueType == common::kOnline ? "on-line" : "off-line"));
  if (options.heading.empty()) {
    context.Say(
        fmt::format("Its pages are headed \"{}\" until `look {} --set heading=NAME` gives them a name.",
                    "XYZ Racing League", path));
  }
}

void Import(const CommonOptions& common, const ImportOptions& options) {
  Context context(common, options.path, options.simFolder);
  engine::Database& league = context.League();

  const std::vector<std::string> paths = app::ExpandFolders(options.files, context.state.simType);
  if (paths.empty())
    throw CommandError("There are no result files of the league's simulation in this folder.");

  // The staging is a part of the change, so that a power cut or an error leaves all of the command or
  // nothing.
  context.Session().KeepBackup();
  history::Change change(league, "Import");
  app::PrepareImport(league, context.Template(), context.state);
  import::ResultFileOptions reading;
  reading.qualifying = options.qualifying.value_or(context.state.lapReportingMethod);
  reading.showAlerts = !options.noAlerts && import::ShowsImportAlerts(context.Template());
  common::HeldMessages held(context.ui);
  const app::StagedFiles staged = app::StageFiles(league, context.state, held, paths, reading);
  if (staged.failed > 0) {
    if (!options.qualifying && reading.qualifying == common::kLapSpeed && MentionsLapTimes(staged.texts))
      held.ShowMessage({"--qualifying time reads qualifying lap times."});
    Refuse(held, fmt::format("{} of {} file{} could not be read; nothing was imported.", staged.failed,
                             paths.size(), paths.size() == 1 ? "" : "s"));
  }
  std::vector<app::Replacement> replacements;
  if (!options.again) {
    const std::vector<app::Duplicate> duplicates = app::FindDuplicates(league, context.state, staged.files);
    if (options.replace) {
      replacements = Replacements(duplicates, context.state, held);
    } else {
      for (const app::Duplicate& duplicate : duplicates)
        held.ShowMessage({fmt::format("{}: {}.", duplicate.file.path, duplicate.reason)});
      if (!duplicates.empty()) {
        Refuse(
            held,
            "Nothing was imported. --replace puts such files in the place of what is there, --again imports "
            "them all the same.");
      }
    }
  }
  const app::ImportOutcome outcome =
      replacements.empty()
          ? app::ImportStaged(league, context.state, held)
          : app::ImportReplacing(context.Template(), league, context.state, held, replacements);
  if (!outcome.done) Refuse(held, "There is nobody to rank; nothing was imported.");
  const bool event = context.state.leagueType == common::kOffline;
  change.SetLabel(replacements.empty()
                      ? app::ImportLabel(context.state, paths.size())
                      : app::ReplaceLabel(paths.size(), event ? paths.size() : replacements.size()));
  change.Commit();
  held.Release();
  for (const app::Replacement& replacement : replacements) {
    context.Say(fmt::format("Race {}, {}, has the new results now.", replacement.raceId,
                            NeedRace(league, replacement.raceId).name));
  }
  if (!replacements.empty() && outcome.races == 0) {
    context.Say(fmt::format("The league has {} as before.", Plural(outcome.leagueRaces, "race")));
  } else if (event) {
    context.Say(fmt::format("Merged {} into a race of {}; the league has {}.", Plural(paths.size(), "file"),
                            Plural(outcome.drivers, "driver"), outcome.leagueRaces));
  } else {
    context.Say(
        fmt::format("Imported {}; the league has {}.", Plural(outcome.races, "race"), outcome.leagueRaces));
  }
  for (const std::string& note : outcome.notes) context.Say(note);
}

void Criteria(const CommonOptions& common, const std::string& path, const std::vector<std::int32_t>& order) {
  Context context(common, path);
  engine::Database& league = context.League();
  const std::int16_t simType = context.state.simType;
  std::vector<scoring::RankCriterion> criteria = scoring::ListRankCriteria(league, simType);
  if (!order.empty()) {
    auto next = criteria.begin();
    for (const std::int32_t id : order) {
      const auto same = [id](const scoring::RankCriterion& criterion) { return criterion.id == id; };
      const auto found = std::find_if(next, criteria.end(), same);
      if (found == criteria.end()) {
        throw CommandError(std::any_of(criteria.begin(), next, same)
                               ? fmt::format("The criterion {} is named twice.", id)
                               : fmt::format("The league uses no criterion {}.", id));
      }
      std::rotate(next, found, found + 1);
      ++next;
    }
    std::vector<std::int32_t> ids;
    ids.reserve(criteria.size());
    for (const scoring::RankCriterion& criterion : criteria) ids.push_back(criterion.id);
    app::StoreRankCriteria(context.Session(), ids);
  }
  OutputTable table;
  table.columns = {{"Rank", true}, {"ID", true}, {"Name", false}};
  for (const scoring::RankCriterion& criterion : criteria) {
    const auto rank = static_cast<std::int32_t>(table.rows.size()) + 1;
    table.rows.push_back({engine::Value(rank), engine::Value(criterion.id), engine::Value(criterion.name)});
  }
  Print(table, common.format, common.decimal);
}

void Recalculate(const CommonOptions& common, const std::string& path,
                 const std::vector<std::int32_t>& raceIds) {
  Context context(common, path);
  engine::Database& league = context.League();
  std::vector<std::int32_t> ids = raceIds;
  for (const std::int32_t id : ids) NeedRace(league, id);
  if (ids.empty()) {
    for (auto rows = league.OpenRecordset("SELECT RaceID FROM Race"); !rows.AtEnd(); rows.MoveNext())
      ids.push_back(rows.At(0).ToLong());
  }
  app::Recalculate(context.Session(), context.ui, ids);
  context.Say(fmt::format("Recalculated {}.", Plural(ids.size(), "race")));
}

void Settings(const CommonOptions& common, const std::string& path, std::optional<int> id,
              const std::optional<std::string>& value) {
  Context context(common, path);
  engine::Database& league = context.League();
  if (id && value) {
    if (!common::IsLeagueSetting(*id)) throw CommandError(fmt::format("There is no league setting {}.", *id));
    CheckSetting(*id, *value);
    if (*id == common::kLeagueTypeSetting) throw CommandError("The type of a league cannot be changed.");
    app::StoreSetting(context.Session(), *id, *value);
    context.Say(fmt::format("Setting {} is {} now.", *id, common::GetSettingValue(league, *id)));
    return;
  }
  if (id) {
    const std::string stored = common::GetSettingValue(league, *id);
    if (stored == common::kMissingSetting)
      throw CommandError(fmt::format("The league has no setting {}.", *id));
  }
  auto rows = league.OpenRecordset(
      id ? fmt::format("SELECT SettingsID, SettingName, SettingValue FROM Settings WHERE SettingsID={}", *id)
         : std::string("SELECT SettingsID, SettingName, SettingValue FROM Settings ORDER BY SettingsID"));
  Print(TableOf(rows), common.format, common.decimal);
}

}  // namespace scorvane::cli
