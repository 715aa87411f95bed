#include "forms/ReportGrid.h"

#include <QHeaderView>
#include <QSignalBlocker>
#include <utility>
#include <vector>

#include "engine/Value.h"
#include "forms/widgets/Text.h"
#include "forms/widgets/Twips.h"

namespace scorvane::forms {
namespace {

constexpr int kPositionTwips = 300;
constexpr int kGeneralAlignment = 9;

Qt::Alignment AlignmentOf(int code) {
  if (code >= 3 && code <= 5) return Qt::AlignHCenter;
  return code >= 6 && code <= 8 ? Qt::AlignRight : Qt::AlignLeft;
}

}  // namespace

void ShowPlaces(SelectionGrid& grid) {
  QHeaderView* places = grid.verticalHeader();
  places->setDefaultAlignment(Qt::AlignCenter);
  places->setMinimumWidth(TwipsToPixels(kPositionTwips, &grid));
  places->setHighlightSections(false);
  places->show();
}

void ShowReport(SelectionGrid& grid, const reports::ReportTable& table, char decimal) {
  // The grid's own first column is the position, too; it is not shown a second time.
  const auto isNumber = [decimal](const QString& text) {
    double number = 0;
    return engine::ParseNumber(Utf8(text), decimal, number);
  };
  std::vector<SelectionGrid::Column> columns = {{{}, 0, Qt::AlignHCenter}};
  for (const reports::ReportColumn& column : table.columns) {
    columns.push_back({Q(column.name), column.hidden ? 0 : column.width, AlignmentOf(column.alignment)});
    if (column.alignment == kGeneralAlignment) columns.back().standsRight = isNumber;
  }
  std::vector<SelectionGrid::Row> rows;
  rows.reserve(table.rows.size());
  for (const std::vector<engine::Value>& values : table.rows) {
    QStringList& cells = rows.emplace_back().cells;
    cells << QString::number(rows.size());
    for (std::size_t i = 0; i < values.size(); ++i)
      cells << Q(reports::CellText(table.columns[i], values[i], decimal));
  }

  const QSignalBlocker quiet(&grid);
  grid.setUpdatesEnabled(false);
  grid.SetColumns(std::move(columns));
  grid.SetRows(std::move(rows));
  for (int column = 0; column < grid.ColumnCount(); ++column) grid.FitColumn(column);
  grid.setUpdatesEnabled(true);
  grid.scrollToTop();
  if (grid.RowCount() > 0) grid.SelectRows(0, 0);
}

}  // namespace scorvane::forms
