// The folder that a league's result files appear in: where it is, which files are in it, and which of them
// the league does not have yet. The window watches it and offers what is new.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/LeagueSession.h"
#include "engine/Database.h"

namespace scorvane::app {

// Of one league. It is kept in the template: the folder is this computer's, and no change of the league.
struct WatchChoice {
  std::string folder;  // empty: none
  bool on = true;
  std::int64_t since = 0;  // seconds of the system's clock when the folder was chosen

  bool IsWatching() const { return on && !folder.empty(); }
};

// What is kept for the league file with this path; nothing is watched when that is nothing.
WatchChoice ReadWatchChoice(engine::Database& templateDb, const std::string& league);
// Does nothing when folder and switch are as they were; else the choice is of now. A folder that is no whole
// path lies in the application folder. Throws EngineError.
void StoreWatchChoice(engine::Database& templateDb, const std::string& league, WatchChoice choice);

// A file as it stood in its folder; one that is written has another size or time afterwards.
struct FolderFile {
  std::string path;
  std::uintmax_t size = 0;
  std::int64_t modified = 0;  // nanoseconds of the file system's clock

  auto operator<=>(const FolderFile& other) const = default;
};

// Those whose extension is that of the simulation's result files, by name; nothing when the folder is not
// there or cannot be read. May take long on a network; asks nothing but the file system.
std::optional<std::vector<FolderFile>> ListResultFiles(const std::string& folder, std::int16_t simType);

// What is known of a folder from one look to the next: a file is ready when it was the same in two looks.
class FolderLooks {
 public:
  // Takes what a look has found. The first one passes over the files from before `since`, in seconds of the
  // system's clock: the administrator has seen them before.
  void Take(const std::vector<FolderFile>& found, std::int64_t since);
  // Whether there was a look before, and every file is as it was then.
  bool IsSettled() const { return settled_; }
  // Those that are ready and were not put off.
  std::vector<std::string> Ready() const;
  // What is ready now is no more until it changes.
  void PutOff();

 private:
  bool first_ = true;
  bool settled_ = false;
  std::set<FolderFile> files_;
  std::vector<FolderFile> ready_;
  std::set<FolderFile> putOff_;
};

// Those of the files that are results which the league can take and does not have, by the rule of
// FindDuplicates; of two that are the same the first. What cannot be read is none. The league stays as it is,
// and nobody is asked or told anything. Throws EngineError when the league cannot be written to just now.
std::vector<std::string> NewResultFiles(LeagueSession& session, const std::vector<std::string>& paths);

}  // namespace scorvane::app
