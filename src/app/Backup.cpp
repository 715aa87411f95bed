#include "app/Backup.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <memory>
#include <system_error>

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "db/LeftCopy.h"
#include "engine/EngineError.h"
#include "engine/Value.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

std::tm LocalTime() {
  return fmt::localtime(std::time(nullptr));
}

void CheckWhole(engine::DBEngine& engine, const std::string& path) {
  engine::OpenOptions options;
  options.readOnly = true;
  const auto copy = engine.DefaultWorkspace().OpenDatabase(path, options);
  for (const char* table : {"Driver", "Race", "Stats", "Settings"})
    if (copy->FindTableDef(table) == nullptr) throw engine::EngineError(engine::kUnrecognizedFormat, path);
  if (!copy->CheckIntegrity().empty()) throw engine::EngineError(engine::kDatabaseDamaged, path);
}

void MakeFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(common::SystemPath(folder), error);
  if (error) throw std::system_error(error, folder);
}

// What the automatic backups of a league begin with: leagues of one name are told apart by where they lie.
std::string DailyStem(const std::string& path) {
  std::uint32_t hash = 2166136261U;
  for (const char c : common::LowerCase(path)) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return fmt::format("{} daily {:08x} ", common::GetFileTitle(path, true), hash);
}

bool HasNothingToLose(engine::Database& league) {
  for (const char* table : {"Race", "Driver"})
    if (!league.OpenRecordset(fmt::format("SELECT TOP 1 * FROM {}", table)).AtEnd()) return false;
  return true;
}

}  // namespace

BackupOptions ReadBackupOptions(engine::Database& templateDb) {
  BackupOptions options;
  const std::string folder = common::GetSettingValue(templateDb, common::kBackupFolder);
  if (folder != common::kMissingSetting) options.folder = folder;
  const std::string days = common::GetSettingValue(templateDb, common::kBackupDays);
  if (days != common::kMissingSetting && !days.empty())
    options.days = static_cast<int>(std::clamp(engine::LeadingNumber(days), 0.0, double{kMostBackupDays}));
  return options;
}

void SaveBackupOptions(engine::Database& templateDb, const BackupOptions& options) {
  engine::UnitOfWork unit(templateDb);
  common::StoreSetting(templateDb, common::kBackupFolder, options.folder);
  common::StoreSetting(templateDb, common::kBackupDays, std::to_string(options.days));
  unit.Commit();
}

std::string BackupFolder(const BackupOptions& options) {
  if (!common::TrimBlanks(options.folder).empty()) return options.folder;
  return common::JoinPath(platform::ApplicationFolder(), "Backups");
}

std::string BackupPath(const BackupOptions& options, const std::string& path) {
  const std::string stem =
      fmt::format("{} {:%Y-%m-%d %H-%M-%S}", common::GetFileTitle(path, true), LocalTime());
  std::string candidate = common::JoinPath(BackupFolder(options), stem + ".lgx");
  for (int number = 2; common::FileExists(candidate); ++number)
    candidate = common::JoinPath(BackupFolder(options), fmt::format("{} ({}).lgx", stem, number));
  return candidate;
}

void BackUp(engine::DBEngine& engine, engine::Database& league, const std::string& to) {
  if (const std::string folder = common::GetFolder(to); !folder.empty()) MakeFolder(folder);
  platform::RemoveTemporariesBeside(to);
  const std::string copy = platform::TemporaryBeside(to);
  try {
    league.CopyTo(copy);
    CheckWhole(engine, copy);
    platform::ReplaceFile(copy, to);
  } catch (...) {
    db::RemoveWithJournal(copy);
    throw;
  }
}

std::string BackUpOnceADay(engine::DBEngine& engine, engine::Database& league, const BackupOptions& options) {
  if (options.days <= 0) return {};
  try {
    if (HasNothingToLose(league)) return {};
    const std::string folder = BackupFolder(options);
    const std::string stem = DailyStem(league.Name());
    const std::string today = common::JoinPath(folder, fmt::format("{}{:%Y-%m-%d}.lgx", stem, LocalTime()));
    if (common::FileExists(today)) return {};
    BackUp(engine, league, today);
    std::vector<std::string> kept;
    for (const auto& entry : fs::directory_iterator(common::SystemPath(folder))) {
      std::string name = common::PathText(entry.path().filename());
      if (name.starts_with(stem) && name.ends_with(".lgx")) kept.push_back(std::move(name));
    }
    std::sort(kept.begin(), kept.end());
    while (kept.size() > static_cast<std::size_t>(options.days)) {
      fs::remove(common::SystemPath(common::JoinPath(folder, kept.front())));
      kept.erase(kept.begin());
    }
    return {};
  } catch (const std::exception& error) {
    return fmt::format("Today's backup of the league could not be made: {}", error.what());
  }
}

std::string Restore(engine::DBEngine& engine, const std::string& path, const std::string& from,
                    const BackupOptions& options) {
  CheckWhole(engine, from);
  std::string kept;
  if (common::FileExists(path)) {
    try {
      engine::OpenOptions readOnly;
      readOnly.readOnly = true;
      const auto league = engine.DefaultWorkspace().OpenDatabase(path, readOnly);
      const std::string backup = BackupPath(options, path);
      BackUp(engine, *league, backup);
      kept = backup;
    } catch (const engine::EngineError& error) {
      // What cannot be opened any more may be the reason for all this: its bytes are kept as they are.
      if (error.Number() != engine::kUnrecognizedFormat && error.Number() != engine::kDatabaseDamaged) throw;
      kept = BackupPath(options, path);
      fs::copy_file(common::SystemPath(path), common::SystemPath(kept));
    }
  }
  std::unique_ptr<platform::FileLock> lock;
  if (common::FileExists(path)) {
    lock = platform::FileLock::TryLock(path);
    if (!lock) throw engine::EngineError(engine::kFileInUse, path, platform::LockHolder(path));
  }
  platform::RemoveTemporariesBeside(path);
  const std::string fresh = platform::TemporaryBeside(path);
  try {
    engine.CompactDatabase(from, fresh);
    db::ReplaceDatabase(engine, fresh, path);
  } catch (...) {
    db::RemoveWithJournal(fresh);
    throw;
  }
  return kept;
}

}  // namespace scorvane::app
