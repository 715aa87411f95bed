#include "reports/Report.h"

#include <fmt/format.h>

#include <utility>

#include "engine/Format.h"

namespace scorvane::reports {
namespace {

int WholeOrZero(const engine::Value& value) {
  return value.IsNull() ? 0 : value.ToLong();
}

}  // namespace

std::vector<ReportColumn> ReadReportColumns(engine::Database& templateDb, std::int32_t reportId) {
  std::vector<ReportColumn> columns;
  auto rows = templateDb.OpenRecordset(
      fmt::format("SELECT Sequence, Name, ColWidth, ColAlignment, ColFormat, Hidden, Field FROM ReportField "
                  "WHERE ReportID={} ORDER BY Sequence",
                  reportId));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    ReportColumn column;
    column.name = rows["Name"].ToText();
    column.width = WholeOrZero(rows["ColWidth"]);
    column.alignment = WholeOrZero(rows["ColAlignment"]);
    column.format = rows["ColFormat"].ToText();
    column.hidden = !rows["Hidden"].IsNull() && rows["Hidden"].ToBoolean();
    column.field = rows["Field"].ToText();
    columns.push_back(std::move(column));
  }
  return columns;
}

std::vector<ReportInfo> ListReports(engine::Database& templateDb) {
  std::vector<ReportInfo> reports;
  for (auto rows = templateDb.OpenRecordset("SELECT * FROM Report ORDER BY Sequence"); !rows.AtEnd();
       rows.MoveNext())
    reports.push_back({rows["ReportID"].ToLong(), rows["Name"].ToText()});
  return reports;
}

std::optional<ReportTable> RunReport(engine::Database& league, engine::Database& templateDb,
                                     std::int32_t reportId) {
  const std::string query =
      templateDb.OpenRecordset(fmt::format("SELECT Query FROM Report WHERE ReportID={}", reportId))["Query"]
          .ToText();
  const auto counted = templateDb.OpenRecordset(
      fmt::format("SELECT COUNT(ReportFieldID) AS NumFields FROM ReportField WHERE ReportID={}", reportId));
  if (counted["NumFields"].ToLong() == 0) return std::nullopt;

  ReportTable table;
  table.columns = ReadReportColumns(templateDb, reportId);
  auto rows = league.OpenRecordset(query);
  std::vector<std::size_t> places;
  places.reserve(table.columns.size());
  for (const ReportColumn& column : table.columns) places.push_back(rows.FieldIndex(column.field));
  table.rows.reserve(rows.RecordCount());
  for (; !rows.AtEnd(); rows.MoveNext()) {
    std::vector<engine::Value>& row = table.rows.emplace_back();
    row.reserve(places.size());
    for (const std::size_t place : places) row.push_back(rows.At(place));
  }
  return table;
}

std::string CellText(const ReportColumn& column, const engine::Value& value, char decimal) {
  return engine::FormatValue(value, column.format, decimal);
}

}  // namespace scorvane::reports
