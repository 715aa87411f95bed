// What the Options dialog keeps in the template beside the simulation folders: settings of the program, and
// the page look that new league files start with.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "engine/Database.h"

namespace scorvane::app {

struct Options {
  bool useBackgroundImage = false;
  std::string backgroundImage;
  // Red in the low byte: background, text, hyperlink, visited hyperlink, active hyperlink.
  std::array<std::int32_t, 5> colors{};
  bool openPreviousFile = false;
  bool showImportAlerts = false;
};

// A setting that is missing or unreadable is off, empty, or the program's own colour.
Options ReadOptions(engine::Database& templateDb);

// Failures are passed over.
void SaveOptions(engine::Database& templateDb, const Options& options);

}  // namespace scorvane::app
