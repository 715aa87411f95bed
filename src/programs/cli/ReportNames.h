// Reports by the names that the user gives.
#pragma once

#include <string>
#include <vector>

#include "reports/Report.h"

namespace scorvane::cli {

// The named one of the reports, letter case aside, or the first when no name is given. Throws CommandError
// with the names that there are.
reports::ReportInfo NeedReport(const std::vector<reports::ReportInfo>& all, const std::string& name);

}  // namespace scorvane::cli
