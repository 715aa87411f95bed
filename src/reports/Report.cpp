#include "reports/Report.h"

#include <fmt/format.h>

#include "engine/EngineError.h"
#include "engine/Format.h"

namespace scorvane::reports {

std::vector<ReportInfo> ListReports(engine::Database& templateDb) {
  std::vector<ReportInfo> reports;
  for (auto rows = templateDb.OpenRecordset("SELECT * FROM Report ORDER BY Sequence"); !rows.AtEnd(); rows.MoveNext())
    reports.push_back({rows["ReportID"].ToLong(), rows["Name"].ToText()});
  return reports;
}

std::vector<ReportColumn> ReadColumns(engine::Database& templateDb, std::int32_t reportId) {
  std::vector<ReportColumn> columns;
  auto whole = [](const engine::Value& value) { return value.IsNull() ? 0 : value.ToLong(); };
  auto rows = templateDb.OpenRecordset(
      fmt::format("SELECT ReportFieldID, Sequence, Name, ColWidth, ColAlignment, ColFormat, Hidden, Field FROM "
                  "ReportField WHERE ReportID={} ORDER BY Sequence",
                  reportId));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    ReportColumn column;
    column.reportFieldId = rows["ReportFieldID"].ToLong();
    column.name = rows["Name"].ToText();
    column.width = whole(rows["ColWidth"]);
    column.alignment = whole(rows["ColAlignment"]);
    column.format = rows["ColFormat"].ToText();
    column.hidden = !rows["Hidden"].IsNull() && rows["Hidden"].ToBoolean();
    column.field = rows["Field"].ToText();
    columns.push_back(std::move(column));
  }
  return columns;
}

std::optional<ReportTable> RunReport(engine::Database& league, engine::Database& templateDb, std::int32_t reportId) {
  ReportTable table;
  table.columns = ReadColumns(templateDb, reportId);
  if (table.columns.empty()) return std::nullopt;
  const auto report = templateDb.OpenRecordset(fmt::format("SELECT Query FROM Report WHERE ReportID={}", reportId));
  if (report.AtEnd()) throw engine::EngineError(engine::kItemNotFound, fmt::format("report {}", reportId));
  auto rows = league.OpenRecordset(report.At(0).ToText());
  std::vector<std::size_t> fields;
  for (const ReportColumn& column : table.columns) fields.push_back(rows.FieldIndex(column.field));
  table.rows.reserve(rows.RecordCount());
  for (; !rows.AtEnd(); rows.MoveNext()) {
    std::vector<engine::Value> row;
    row.reserve(fields.size());
    for (const std::size_t field : fields) row.push_back(rows.At(field));
    table.rows.push_back(std::move(row));
  }
  return table;
}

std::string CellText(const ReportColumn& column, const engine::Value& value, char decimal) {
  return engine::FormatValue(value, column.format, decimal);
}

}  // namespace scorvane::reports
