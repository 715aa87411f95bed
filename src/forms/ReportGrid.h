// A report's table in a grid, as every window shows it.
#pragma once

#include "forms/widgets/SelectionGrid.h"
#include "reports/Report.h"

namespace scorvane::forms {

// The place of each row stands beside it, and in a hidden first column.
void ShowReport(SelectionGrid& grid, const reports::ReportTable& table, char decimal);
// Shows the place beside each row: it stays in sight while the columns scroll.
void ShowPlaces(SelectionGrid& grid);

}  // namespace scorvane::forms
