// Where the simulations are installed.
#pragma once

#include <cstddef>
#include <optional>

#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::app {

// The folder index of a sim type; nothing for NASCAR Racing 2, which has no folder.
std::optional<std::size_t> SimFolderIndex(std::int16_t simType);

// True when the sim type needs its folder before a league of it can be used, and the state does not know it.
bool LacksSimFolder(const common::ProcessState& state, std::int16_t simType);

// Reads the five folders that the template knows into the state; one that it does not know is empty.
void ReadSimFolders(engine::Database& templateDb, common::ProcessState& state);

}  // namespace scorvane::app
