// Copies of leagues that are kept for the day on which something went wrong.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::app {

// Where backups go and for how many days with changes the program keeps one by itself; settings of the
// template.
inline constexpr int kMostBackupDays = 365;
struct BackupOptions {
  std::string folder;  // empty: "Backups" in the application folder
  int days = 10;       // 0: none
};
BackupOptions ReadBackupOptions(engine::Database& templateDb);
// Throws EngineError.
void SaveBackupOptions(engine::Database& templateDb, const BackupOptions& options);
// The folder that the options mean.
std::string BackupFolder(const BackupOptions& options);

// Where a backup of the league at `path` goes when nobody says where: league and time in its name.
std::string BackupPath(const BackupOptions& options, const std::string& path);

// Writes a whole copy of an open league, checks it, and only then gives it its name; an older file of that
// name is replaced. The folder is made when it is not there. Throws EngineError or std::system_error; then
// nothing is left.
void BackUp(engine::DBEngine& engine, engine::Database& league, const std::string& to);

// Before a league is changed: keeps a backup when it is the first change of this day, and removes those of
// the oldest days. Leagues of one name in different folders have theirs apart. Says what went wrong; empty
// when nothing did, or nothing was to do.
std::string BackUpOnceADay(engine::DBEngine& engine, engine::Database& league, const BackupOptions& options);

// Puts the backup at `from` in the place of the league at `path`, which nobody may have open. It is checked
// first, and what is there is backed up; yields the path of that backup, empty when there was no league.
// Throws EngineError, 3049 when the backup is not whole, or std::system_error; then the league is as it was.
std::string Restore(engine::DBEngine& engine, const std::string& path, const std::string& from,
                    const BackupOptions& options);

}  // namespace scorvane::app
