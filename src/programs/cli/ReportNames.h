// Reports by the names that the user gives, and as they are printed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "reports/Report.h"

namespace scorvane::cli {

// The named one of the reports, letter case aside, or the first when no name is given. Throws CommandError
// with the names that there are.
reports::ReportInfo NeedReport(const std::vector<reports::ReportInfo>& all, const std::string& name);

// With its name and caption above a table, and beside the rows of JSON.
void PrintReport(const CommonOptions& common, engine::Database& league, const std::string& name,
                 const std::string& caption, const reports::ReportTable& report);

// The tables that `standings` shows of what might be.
void ShowWhatIf(const CommonOptions& common, Context& context, const StandingsOptions& options);
void ShowTitle(const CommonOptions& common, Context& context, int remaining,
               std::optional<std::int32_t> afterRace);

}  // namespace scorvane::cli
