// Commands that make, fill and change a league.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "db/MDBBuild.h"
#include "import/StandingsFile.h"
#include "platform/Platform.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "scoring/OnlineImport.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace scorvane::cli {
namespace {

constexpr const char* kLeagueExtension = "lgx";

std::string WithExtension(const std::string& path) {
  std::string extension = common::GetExtension(common::GetFileTitle(path));
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
  return extension == kLeagueExtension ? path : path + "." + kLeagueExtension;
}

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

}  // namespace

void Create(const CommonOptions& common, const CreateOptions& options) {
  Context context(common);
  const std::string path = WithExtension(options.path);
  const bool exists = common::FileExists(path);
  if (exists && !options.replace)
    throw CommandError(fmt::format("\"{}\" already exists! --replace replaces it.", path));
  auto make = [&](const std::string& target) {
    db::CreateLeagueFile(context.engine, target, options.simType, options.leagueType, context.Template(),
                         options.droppedRaces, options.lapReportingMethod);
  };
  if (!exists) {
    make(path);
  } else {
    // The old league goes only when the new one is complete.
    if (std::filesystem::is_directory(path)) throw CommandError(fmt::format("\"{}\" is a folder.", path));
    const auto lock = platform::FileLock::TryLock(path);
    if (!lock) throw engine::EngineError(engine::kFileInUse, path);
    const std::string fresh = path + ".new";
    std::error_code error;
    std::filesystem::remove(fresh, error);
    try {
      make(fresh);
      platform::ReplaceFile(fresh, path);
    } catch (...) {
      std::filesystem::remove(fresh, error);
      throw;
    }
  }
  fmt::print("Created {} ({}, {}).\n", path, common::SimTypeName(options.simType),
             options.leagueType == common::kOnline ? "on-line" : "off-line");
}

void Import(const CommonOptions& common, const ImportOptions& options) {
  Context context(common, options.path);
  engine::Database& league = context.League();
  if (context.state.simType > common::kNascarRacing2) {
    throw CommandError(fmt::format("This release cannot import the exported pages of {} yet.",
                                   common::SimTypeName(context.state.simType)));
  }
  if (context.state.leagueType != common::kOnline)
    throw CommandError("This release cannot merge the files of an off-line event yet.");

  // One transaction for the command: a power cut leaves all of it or nothing.
  engine::UnitOfWork unit(league);
  league.Execute("DELETE * FROM STNRace");
  scoring::LoadPointSystem(context.Template(), league, context.state);
  const int qualifying = options.qualifying.value_or(context.state.lapReportingMethod);
  std::size_t failed = 0;
  {
    const auto progress = context.ui.StartProgress("Reading files", static_cast<int>(options.files.size()));
    int done = 0;
    for (const std::string& file : options.files) {
      progress->SetInfo("Reading: \"" + file + "\"");
      if (import::ReadStandingsFile(league, context.state, context.ui, file, qualifying) < 1) ++failed;
      progress->SetValue(++done);
    }
  }
  if (failed > 0) {
    league.Execute("DELETE * FROM STNRace");
    unit.Commit();
    throw CommandError(fmt::format("{} of {} file{} could not be read; nothing was imported.", failed,
                                   options.files.size(), options.files.size() == 1 ? "" : "s"));
  }
  const auto racesBefore = league.OpenRecordset("SELECT Count(RaceID) AS Races FROM Race").At(0).ToLong();
  scoring::ImportStagedRaces(league, context.state, context.ui);
  const auto racesAfter = league.OpenRecordset("SELECT Count(RaceID) AS Races FROM Race").At(0).ToLong();
  unit.Commit();
  const std::int32_t added = racesAfter - racesBefore;
  fmt::print("Imported {} race{}; the league has {}.\n", added, added == 1 ? "" : "s", racesAfter);
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
  engine::UnitOfWork unit(league);
  {
    const auto progress = context.ui.StartProgress("Recalculating", static_cast<int>(ids.size()));
    int done = 0;
    for (const std::int32_t id : ids) {
      scoring::RecalculateRace(context.Template(), league, context.state, id, false);
      progress->SetValue(++done);
    }
  }
  unit.Commit();
  fmt::print("Recalculated {} race{}.\n", ids.size(), ids.size() == 1 ? "" : "s");
}

void Settings(const CommonOptions& common, const std::string& path, std::optional<int> id,
              const std::optional<std::string>& value) {
  Context context(common, path);
  engine::Database& league = context.League();
  if (id && value) {
    CheckSetting(*id, *value);
    if (*id == common::kLeagueTypeSetting) throw CommandError("The type of a league cannot be changed.");
    if (!common::SaveSettingValue(league, *id, *value))
      throw CommandError(fmt::format("Setting {} could not be stored.", *id));
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
