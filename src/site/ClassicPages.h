// A league's classic pages, all of them in a folder: every report that has rows, every race, and an index.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"
#include "reports/DroppedRaces.h"
#include "reports/Report.h"

namespace scorvane::site {

struct ClassicPages {
  int reports = 0;
  int races = 0;
  int older = 0;  // pages of races in the folder that were written before and now are not linked
};

// Shows its progress. Throws common::RuleError where the folder or a page cannot be written, and EngineError;
// each page is then the old or the new one, whole.
ClassicPages WriteClassicPages(engine::Database& league, engine::Database& templateDb,
                               const common::ProcessState& state, common::UserInterface& ui,
                               const std::string& folder);

// What a page of a report shows; nothing without columns or rows.
std::optional<reports::ReportTable> PageTable(engine::Database& league, engine::Database& templateDb,
                                              const common::ProcessState& state, std::int32_t reportId);
// What stands above it.
std::string PageCaption(engine::Database& league, std::int32_t reportId, const reports::DroppedMarks& marks);

}  // namespace scorvane::site
