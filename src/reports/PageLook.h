// How a league's pages look: the colours, widths and font of its settings, and the footers.
#pragma once

#include <cstdint>
#include <string>

#include "engine/Database.h"
#include "reports/Export.h"

namespace scorvane::reports {

// The look that the league's settings describe. A setting that is missing, or a colour that is none, leaves
// the default.
PageLook ReadPageLook(engine::Database& league);

// Stores a look in the league's settings. Throws EngineError; the settings before the failing one are stored.
void SavePageLook(engine::Database& league, const PageLook& look);

// The program's version as it shows it: "1.02.05".
std::string ProductVersion();

// The footer of exported pages, and that of a preview.
std::string StandingsFooter();
std::string PreviewFooter();

}  // namespace scorvane::reports
