// Importing result files: what the import dialog and the command line do with the files that were chosen.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"
#include "import/ResultFile.h"

namespace scorvane::app {

// What the files of the league's simulation are called in a file dialog.
std::string ResultFileFilter(std::int16_t simType);

// The folder that the league's simulation writes its result files into, with a separator at its end; empty
// when it is not known.
std::string ResultFolder(const common::ProcessState& state);

// Whether a name stands before the other where numbers within names count by their value: race2 before
// race10.
bool NaturallyBefore(const std::string& a, const std::string& b);

// The paths with each folder among them in turn replaced by the result files in it, by NaturallyBefore.
std::vector<std::string> ExpandFolders(const std::vector<std::string>& paths, std::int16_t simType);

// Before files are staged: clears what an earlier import left, loads the points to score with and the tracks.
// Throws EngineError.
void PrepareImport(engine::Database& league, engine::Database& templateDb, common::ProcessState& state);

struct StagedFile {
  std::string path;
  std::int32_t raceId = 0;
};

struct StagedFiles {
  std::vector<StagedFile> files;
  std::size_t failed = 0;
  std::vector<std::string> texts;  // of the messages that were shown, about files that failed or were edited
};

// Reads the files into the staging tables. Messages about single files are shown when all are read, the first
// twenty and how many more there are. Throws EngineError; then nothing is staged.
StagedFiles StageFiles(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                       const std::vector<std::string>& paths, const import::ResultFileOptions& options);

// What the dialog says when alerts are off and some files failed.
common::Message FailedFilesWarning(std::size_t failed);

// A staged file that is in the league already, by its name or its rows, or twice among the staged ones.
struct Duplicate {
  StagedFile file;
  std::string reason;       // a sentence without its file: "the league has it already: race 3, Daytona"
  std::int32_t raceId = 0;  // the league's race; 0 for a file that is chosen twice
};
std::vector<Duplicate> FindDuplicates(engine::Database& league, const common::ProcessState& state,
                                      const std::vector<StagedFile>& staged);

// What is asked before such files are imported all the same.
common::Message DuplicatesQuestion(const std::vector<Duplicate>& duplicates);

// Removes staged races with their results. Throws EngineError; then none is removed.
void RemoveStagedRaces(engine::Database& league, const std::vector<std::int32_t>& ids);

struct ImportOutcome {
  bool done = false;         // false: an off-line event with nobody to rank, about which a message was shown
  std::int32_t races = 0;    // added
  std::int32_t drivers = 0;  // ranked in the last of them
  std::int32_t leagueRaces = 0;    // that the league has now
  std::vector<std::string> notes;  // sentences about what the administrator may not have meant
};

// A staged race that takes the place of one of the league's.
struct Replacement {
  std::int32_t stagedRaceId = 0;
  std::int32_t raceId = 0;
};

// As ImportStaged; then the races that are replaced have what came for them under their old ids, with their
// penalties, and the new ones of these are gone again. Off-line all staged races are one event, and so is
// what it replaces.
ImportOutcome ImportReplacing(engine::Database& templateDb, engine::Database& league,
                              common::ProcessState& state, common::UserInterface& ui,
                              const std::vector<Replacement>& replacements);

// Takes the staged races into the league: each as a race or, off-line, all merged into one event. Throws
// EngineError; then the league is as it was.
ImportOutcome ImportStaged(engine::Database& league, common::ProcessState& state, common::UserInterface& ui);

}  // namespace scorvane::app
