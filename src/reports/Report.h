// Reports are data: the template says which query each one asks of a league and how its columns are shown.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/Database.h"
#include "engine/Value.h"

namespace scorvane::reports {

inline constexpr int kCentred = 4;  // the alignment code that pages know, too

struct ReportInfo {
  std::int32_t id = 0;
  std::string name;
};

struct ReportColumn {
  std::string name;    // the heading
  int width = 0;       // twips
  int alignment = 0;   // 0 to 2 left, 3 to 5 centred, 6 to 8 right, 9 texts left and numbers right
  std::string format;  // a format expression, empty for plain text
  bool hidden = false;
  std::string field;  // the column of the query whose values it shows
};

struct ReportTable {
  std::vector<ReportColumn> columns;             // in their order, hidden ones too
  std::vector<std::vector<engine::Value>> rows;  // a value a column, as the query yields it
};

// The template's reports in the order in which they are offered. Throws EngineError.
std::vector<ReportInfo> ListReports(engine::Database& templateDb);

// A report's columns in their order. Throws EngineError.
std::vector<ReportColumn> ReadReportColumns(engine::Database& templateDb, std::int32_t reportId);

// The result of a report on a league; nothing when the report has no columns. Throws EngineError: 3021 when
// there is no such report, 3265 when a column's field is none of the query's, and what the query itself
// throws.
std::optional<ReportTable> RunReport(engine::Database& league, engine::Database& templateDb,
                                     std::int32_t reportId);

// The same row by row, for reports that are larger than one would keep: `start` takes the columns, `row` the
// values of each row in their order. False when the report has no columns.
bool StreamReport(engine::Database& league, engine::Database& templateDb, std::int32_t reportId,
                  const std::function<void(const std::vector<ReportColumn>&)>& start,
                  const std::function<void(const std::vector<engine::Value>&)>& row);

// A value as its column shows it.
std::string CellText(const ReportColumn& column, const engine::Value& value, char decimal);

}  // namespace scorvane::reports
