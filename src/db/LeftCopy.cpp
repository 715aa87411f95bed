#include "db/LeftCopy.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/EngineError.h"
#include "platform/Platform.h"

namespace scorvane::db {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<engine::Database> OpenToRead(engine::DBEngine& engine, const std::string& path) {
  engine::OpenOptions options;
  options.readOnly = true;
  try {
    auto database = engine.DefaultWorkspace().OpenDatabase(path, options);
    if (database->CheckIntegrity().empty()) return database;
  } catch (const engine::EngineError&) {  // NOLINT(bugprone-empty-catch): then it is no whole league
  }
  return nullptr;
}

// Marks that the standings set anew each time they are looked at.
bool IsMark(const std::string& table, const std::string& field) {
  return table == "Stats" && field == "Dropped";
}

bool SameRows(engine::Database& a, engine::Database& b, const std::string& table) {
  auto left = a.OpenRecordset("SELECT * FROM [" + table + "]");
  auto right = b.OpenRecordset("SELECT * FROM [" + table + "]");
  if (left.FieldCount() != right.FieldCount()) return false;
  for (; !left.AtEnd() && !right.AtEnd(); left.MoveNext(), right.MoveNext()) {
    for (std::size_t i = 0; i < left.FieldCount(); ++i)
      if (!(left.At(i) == right.At(i)) && !IsMark(table, left.FieldName(i))) return false;
  }
  return left.AtEnd() && right.AtEnd();
}

bool SameLeague(engine::DBEngine& engine, engine::Database& copy, const std::string& path) {
  const auto league = OpenToRead(engine, path);
  if (!league) return false;
  try {
    const auto& tables = copy.TableDefs();
    return std::all_of(tables.begin(), tables.end(), [&](const engine::TableDef& table) {
      return league->FindTableDef(table.Name) != nullptr && SameRows(copy, *league, table.Name);
    });
  } catch (const engine::EngineError&) {
    return false;
  }
}

std::vector<std::string> LeaguesOf(const std::string& folder) {
  std::vector<std::string> paths;
  std::error_code error;
  for (fs::directory_iterator entry(common::SystemPath(folder.empty() ? "." : folder), error), end;
       !error && entry != end; entry.increment(error)) {
    std::string path = common::PathText(entry->path());
    if (common::LowerCase(common::GetExtension(path)) == "lgx") paths.push_back(std::move(path));
  }
  return paths;
}

}  // namespace

void RemoveWithJournal(const std::string& path) {
  std::error_code error;
  fs::remove(common::SystemPath(path), error);
  fs::remove(common::SystemPath(path + "-journal"), error);
}

void ReplaceDatabase(engine::DBEngine& engine, const std::string& fresh, const std::string& path) {
  const fs::path journal = common::SystemPath(path + "-journal");
  std::error_code error;
  if (fs::exists(journal, error)) {
    try {
      // The old file is then whole until the new one has its name.
      engine.TakeBackUnfinished(path);
    } catch (const engine::EngineError&) {  // NOLINT(bugprone-empty-catch): what is no database has nothing
                                            // to lose
    }
    fs::remove(journal, error);
  }
  platform::ReplaceFile(fresh, path);
}

std::string LeftCopyBeside(const std::string& path) {
  std::string left = common::GetFolder(path) + kCompactName;
  return left != path && common::FileExists(left) ? left : std::string();
}

void ClearLeftCopyBeside(engine::DBEngine& engine, const std::string& path) {
  const std::string left = LeftCopyBeside(path);
  if (left.empty()) return;
  // Who compacts a league in this folder just now holds it.
  const auto folderLock = platform::FileLock::TryLock(common::GetFolder(path));
  if (folderLock) RemoveLeftCopy(engine, left);
}

bool RemoveLeftCopy(engine::DBEngine& engine, const std::string& copy) {
  std::error_code error;
  const fs::path path = common::SystemPath(copy);
  if (!fs::exists(fs::symlink_status(path, error))) {
    // A journal alone would be rolled into the next copy.
    fs::remove(common::SystemPath(copy + "-journal"), error);
    return true;
  }
  if (!fs::is_regular_file(fs::symlink_status(path, error))) return false;
  {
    const auto lock = platform::FileLock::TryLock(copy);
    if (!lock) return false;
  }
  auto left = OpenToRead(engine, copy);
  const auto same = [&](const std::string& league) { return SameLeague(engine, *left, league); };
  const std::vector<std::string> leagues = LeaguesOf(common::GetFolder(copy));
  if (left && std::none_of(leagues.begin(), leagues.end(), same)) return false;
  left.reset();  // a file that is open stays, on some systems
  RemoveWithJournal(copy);
  return !fs::exists(fs::symlink_status(path, error));
}

}  // namespace scorvane::db
