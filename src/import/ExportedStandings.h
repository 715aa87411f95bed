// Exported standings pages into the staging tables: one page becomes one staged race with a scored result for
// each driver.
#pragma once

#include <cstdint>
#include <string>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::import {

// Stages the page at `path` and yields the key of its staged race; 0, with a message when the template's
// setting Show Alerts When Importing is on, for a page that is no exported race final. The point table and
// the track catalogue must be loaded. Throws FileFault or EngineError for a page that cannot be read through
// or stored; a staged race that was stored before that stays.
std::int32_t ReadExportedStandingsFile(engine::Database& templateDb, engine::Database& league,
                                       common::ProcessState& state, common::UserInterface& ui,
                                       const std::string& path);

// The same with the alerts as given.
std::int32_t ReadExportedStandingsFile(engine::Database& league, common::ProcessState& state,
                                       common::UserInterface& ui, const std::string& path, bool showAlerts);

// The template's setting Show Alerts When Importing; on when the template does not have it.
bool ShowsImportAlerts(engine::Database& templateDb);

}  // namespace scorvane::import
