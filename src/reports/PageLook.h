// How a league's pages look: its colours, font and table layout, and the line at their foot.
#pragma once

#include <string>

#include "engine/Database.h"
#include "reports/Export.h"

namespace scorvane::reports {

// Gives the writer the look that the league's settings hold. A league that never saved a look gets plain pages: the
// template's page colours, a black and white table with a thin border.
void ApplyPageLook(engine::Database& league, CExport& page);

// The foot of standings and race pages.
std::string StandingsFooter();

// Major number, minor number in two digits, revision in two digits: 1.02.05.
std::string ProductVersion();

}  // namespace scorvane::reports
