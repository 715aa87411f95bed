// Reports by the names that the user gives.
#pragma once

#include <string>

#include "engine/Database.h"
#include "reports/Report.h"

namespace scorvane::cli {

// The named report, letter case aside, or the first when no name is given. Throws CommandError with the names
// that there are.
reports::ReportInfo NeedReport(engine::Database& templateDb, const std::string& name);

}  // namespace scorvane::cli
