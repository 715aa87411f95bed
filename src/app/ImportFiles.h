// Result files on their way into the staging tables: which files a league takes, where they lie, what becomes
// of each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"
#include "import/ResultFile.h"

namespace scorvane::app {

// The file dialog's filter for the league's simulation.
std::string ResultFileFilter(std::int16_t simType);

// Where the league's simulation leaves its result files, with a separator at its end; empty when the
// simulation's folder is not known.
std::string ResultFolder(const common::ProcessState& state);

// Empties the staging tables and loads the point table. Throws EngineError.
void PrepareImport(engine::Database& league, engine::Database& templateDb, common::ProcessState& state);

struct StagedFile {
  std::string path;
  std::int32_t raceId = 0;  // the key of the staged race
};

struct StagedFiles {
  std::vector<StagedFile> files;  // those that were read
  std::size_t failed = 0;
};

// Stages the files one by one, several of them behind a progress dialog.
StagedFiles StageFiles(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                       const std::vector<std::string>& paths, const import::ResultFileOptions& options);

// What is said of files that failed when the alerts about each one are off.
common::Message FailedFilesWarning(std::size_t failed);

// Removes staged races with their results. Throws EngineError; the races before the failing one are removed.
void RemoveStagedRaces(engine::Database& league, const std::vector<std::int32_t>& ids);

// Makes races of what is staged: of an on-line league one each, of an off-line league one in all. False,
// after a message, when an off-line event has nobody to rank. Throws EngineError; what was done before it is
// taken back, so that the same staged races can be imported again.
bool ImportStaged(engine::Database& league, common::ProcessState& state, common::UserInterface& ui);

}  // namespace scorvane::app
