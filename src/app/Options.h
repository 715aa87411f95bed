// What the Options dialog keeps in the template: the simulation folders, settings of the program, the page
// look that new league files start with, where backups go, and the folder that is watched for a league.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Backup.h"
#include "app/SimFolders.h"
#include "app/WatchFolder.h"
#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::app {

struct Options {
  std::array<std::string, kSimulations> simFolders;
  bool useBackgroundImage = false;
  std::string backgroundImage;
  // Red in the low byte: background, text, hyperlink, visited hyperlink, active hyperlink.
  std::array<std::int32_t, 5> colors{};
  bool openPreviousFile = false;
  bool showImportAlerts = false;
  BackupOptions backups;
  std::string watchedLeague;  // whose folder is kept with the rest; empty: no league's
  WatchChoice watch;
};

// The state's folders and the template's settings. A setting that is missing or unreadable is off, empty, or
// the program's own colour; without one for the alerts these are shown, as imports show them.
Options ReadOptions(engine::Database& templateDb, const common::ProcessState& state,
                    const std::string& watchedLeague = {});

// Stores all of it or nothing in the template, and then the folders in the state. A backup folder that is no
// whole path lies in the application folder. Throws EngineError.
void SaveOptions(engine::Database& templateDb, common::ProcessState& state, const Options& options);

}  // namespace scorvane::app
