// Where the simulations are installed: how their folders are found, checked and kept in the template.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::app {

// A simulation that has a folder; its place in the table is its folder index.
struct Simulation {
  std::string_view name;         // as lists show it
  std::string_view fullName;     // as questions name it
  int setting;                   // of the template
  std::string_view programFile;  // proves the folder
  std::string_view location;     // searched on each drive; empty for one that is not searched
};

inline constexpr int kSimulations = 5;
const std::array<Simulation, kSimulations>& Simulations();

// True when the sim type needs its folder before a league of it can be used, and the state does not know it.
bool LacksSimFolder(const common::ProcessState& state, std::int16_t simType);

// The folders of the process state, empty for those that the template does not know.
void ReadSimFolders(engine::Database& templateDb, common::ProcessState& state);

// Looks for the simulations whose folder is not known, or not right any more, in their default locations on
// every fixed drive, and keeps what it finds. True when one of the searched simulations is available. An
// error of the disk ends the search with a message.
bool ScanDefaultPaths(engine::Database& templateDb, common::ProcessState& state, common::UserInterface& ui);

// Stores the folder of an index in the template. A failure is passed over.
void SaveNASCARPaths(engine::Database& templateDb, const common::ProcessState& state, int index);

// The path of a simulation's program below its folder, empty when it is not there. Letter case does not
// count, and "\" separates folders as well as the platform's separator does. Throws std::system_error when
// the disk cannot be asked.
std::string FindProgram(std::string_view folder, int index);

struct FolderCheck {
  std::vector<int> failing;  // indexes, ascending
  common::Message message;   // about the last of them
};

// Which of these folders, blank ones aside, do not hold their simulation.
FolderCheck CheckSimFolders(const std::array<std::string, kSimulations>& folders);

}  // namespace scorvane::app
