#include "reports/Columns.h"

#include <fmt/format.h>

#include <algorithm>

namespace scorvane::reports {

std::vector<ColumnChoice> ReadColumnChoices(engine::Database& templateDb, std::int32_t reportId) {
  std::vector<ColumnChoice> columns;
  auto rows = templateDb.OpenRecordset(fmt::format(
      "SELECT ReportFieldID, Name, Sequence, Hidden FROM ReportField WHERE ReportID = {} ORDER BY Sequence",
      reportId));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    const engine::Value& hidden = rows["Hidden"];
    columns.push_back(
        {rows["ReportFieldID"].ToLong(), rows["Name"].ToText(), hidden.IsNull() || !hidden.ToBoolean()});
  }
  return columns;
}

bool CanSave(const std::vector<ColumnChoice>& columns) {
  return std::any_of(columns.begin(), columns.end(), [](const ColumnChoice& column) { return column.shown; });
}

void SaveColumnChoices(engine::Database& templateDb, const std::vector<ColumnChoice>& columns) {
  engine::UnitOfWork unit(templateDb);
  int place = 0;
  for (const ColumnChoice& column : columns) {
    templateDb.Execute(fmt::format("UPDATE ReportField SET Hidden={}, Sequence={} WHERE ReportFieldID={}",
                                   column.shown ? "False" : "True", ++place, column.reportFieldId));
  }
  unit.Commit();
}

}  // namespace scorvane::reports
