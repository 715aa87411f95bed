// Reports: their definitions stand in the template, their queries run on a league.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/Database.h"
#include "engine/Value.h"

namespace scorvane::reports {

inline constexpr int kCentred = 4;  // the alignment code that pages know, too; others are left

struct ReportInfo {
  std::int32_t id = 0;
  std::string name;
};

struct ReportColumn {
  std::int32_t reportFieldId = 0;
  std::string name;    // the heading
  int width = 0;       // twips
  int alignment = 0;   // 0 to 2 left, 3 to 5 centred, 6 to 8 right, 9 general
  std::string format;  // empty for none
  bool hidden = false;
  std::string field;  // the query's column that it shows
};

struct ReportTable {
  std::vector<ReportColumn> columns;
  std::vector<std::vector<engine::Value>> rows;  // in the columns' order, the query's own values
};

// In the order in which they are offered. Throws EngineError.
std::vector<ReportInfo> ListReports(engine::Database& templateDb);

// In their order from left to right. Throws EngineError.
std::vector<ReportColumn> ReadColumns(engine::Database& templateDb, std::int32_t reportId);

// Runs a report on a league; none when it has no columns. Throws EngineError: that of a failing query, 3265 for a
// column that shows nothing of it.
std::optional<ReportTable> RunReport(engine::Database& league, engine::Database& templateDb, std::int32_t reportId);

// A value as its column shows it.
std::string CellText(const ReportColumn& column, const engine::Value& value, char decimal);

}  // namespace scorvane::reports
