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
  ReportTable table;
  const bool shown = StreamReport(
      league, templateDb, reportId,
      [&](const std::vector<ReportColumn>& columns) { table.columns = columns; },
      [&](const std::vector<engine::Value>& row) { table.rows.push_back(row); });
  if (!shown) return std::nullopt;
  return table;
}

bool StreamReport(engine::Database& league, engine::Database& templateDb, std::int32_t reportId,
                  const std::function<void(const std::vector<ReportColumn>&)>& start,
                  const std::function<void(const std::vector<engine::Value>&)>& row) {
  const std::string query =
      templateDb.OpenRecordset(fmt::format("SELECT Query FROM Report WHERE ReportID={}", reportId))["Query"]
          .ToText();
  const std::vector<ReportColumn> columns = ReadReportColumns(templateDb, reportId);
  if (columns.empty()) return false;
  std::vector<std::size_t> places;
  std::vector<engine::Value> values(columns.size());
  league.EachRow(
      query,
      [&](const engine::RowView& view) {
        for (const ReportColumn& column : columns) places.push_back(view.FieldIndex(column.field));
        start(columns);
      },
      [&](const engine::RowView& view) {
        for (std::size_t i = 0; i < places.size(); ++i) values[i] = view.At(places[i]);
        row(values);
      },
      engine::kStreamLimits);
  return true;
}

std::string CellText(const ReportColumn& column, const engine::Value& value, char decimal) {
  return engine::FormatValue(value, column.format, decimal);
}

}  // namespace scorvane::reports
