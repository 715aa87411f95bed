// Which columns of a report are shown, and in which order. The choice stands in the template and holds for
// every league.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::reports {

struct ColumnChoice {
  std::int32_t reportFieldId = 0;
  std::string name;
  bool shown = true;
};

// From left to right. Throws EngineError.
std::vector<ColumnChoice> ReadColumnChoices(engine::Database& templateDb, std::int32_t reportId);

// At least one column is shown.
bool CanSave(const std::vector<ColumnChoice>& columns);

// Stores the choice in the order given. Throws EngineError; what was stored before it stays.
void SaveColumnChoices(engine::Database& templateDb, const std::vector<ColumnChoice>& columns);

}  // namespace scorvane::reports
