// Result files of any simulation.
#pragma once

#include <cstdint>
#include <string>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::import {

struct ResultFileOptions {
  int qualifying = 0;  // of standings files: 0 speeds, anything else lap times
  bool showAlerts =
      true;  // of exported pages: say which is no race final, and which seems to have been edited
};

// Stages the file at `path` with the reader that the league's simulation needs; yields the key of its staged
// race, 0 when the file failed. A fault of the file is shown in a message.
std::int32_t ReadResultFile(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                            const std::string& path, const ResultFileOptions& options);

}  // namespace scorvane::import
