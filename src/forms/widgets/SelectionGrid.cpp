#include "forms/widgets/SelectionGrid.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>
#include <algorithm>

#include "forms/widgets/Twips.h"

namespace scorvane::forms {

SelectionGrid::SelectionGrid(const QString& name, QWidget* parent) : QTableWidget(parent) {
  setObjectName(name);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setSectionsClickable(false);
  connect(this, &QTableWidget::itemSelectionChanged, this, &SelectionGrid::SelectionChanged);
  connect(this, &QTableWidget::cellDoubleClicked, this, [this](int row) { emit RowDoubleClicked(row); });
}

void SelectionGrid::SetColumns(const std::vector<Column>& columns) {
  clear();
  setRowCount(0);
  setColumnCount(static_cast<int>(columns.size()));
  for (int i = 0; i < columnCount(); ++i) {
    const Column& column = columns[static_cast<std::size_t>(i)];
    auto* header = new QTableWidgetItem(column.header);
    header->setTextAlignment(column.alignment | Qt::AlignVCenter);
    header->setData(Qt::UserRole, static_cast<int>(column.alignment));
    setHorizontalHeaderItem(i, header);
    setColumnHidden(i, column.twips == 0);
    if (column.twips > 0) setColumnWidth(i, TwipsToPixels(column.twips, this));
  }
}

void SelectionGrid::AddRow(const QStringList& cells, int rowData) {
  const int row = rowCount();
  insertRow(row);
  for (int column = 0; column < columnCount(); ++column) SetCell(row, column, cells.value(column));
  SetRowData(row, rowData);
}

void SelectionGrid::ClearRows() {
  setRowCount(0);
}

int SelectionGrid::RowData(int row) const {
  const QTableWidgetItem* cell = row < 0 ? nullptr : item(row, 0);
  return cell == nullptr ? 0 : cell->data(Qt::UserRole).toInt();
}

void SelectionGrid::SetRowData(int row, int rowData) {
  if (item(row, 0) == nullptr) SetCell(row, 0, {});
  item(row, 0)->setData(Qt::UserRole, rowData);
}

QString SelectionGrid::Cell(int row, int column) const {
  const QTableWidgetItem* cell = item(row, column);
  return cell == nullptr ? QString() : cell->text();
}

void SelectionGrid::SetCell(int row, int column, const QString& text) {
  QTableWidgetItem* cell = item(row, column);
  const bool isNew = cell == nullptr;
  if (isNew) {
    cell = new QTableWidgetItem;
    const int alignment = horizontalHeaderItem(column)->data(Qt::UserRole).toInt();
    cell->setTextAlignment(Qt::Alignment(alignment) | Qt::AlignVCenter);
  }
  cell->setText(text);
  // A cell that is complete is announced to the view once.
  if (isNew) setItem(row, column, cell);
}

int SelectionGrid::FirstSelected() const {
  int first = -1;
  for (const QItemSelectionRange& range : selectionModel()->selection())
    first = first < 0 ? range.top() : std::min(first, range.top());
  return first;
}

int SelectionGrid::LastSelected() const {
  int last = -1;
  for (const QItemSelectionRange& range : selectionModel()->selection())
    last = std::max(last, range.bottom());
  return last;
}

int SelectionGrid::CurrentRow() const {
  return FirstSelected() < 0 ? -1 : std::clamp(currentRow(), FirstSelected(), LastSelected());
}

int SelectionGrid::SelectionEnd() const {
  const int current = CurrentRow();
  return current == FirstSelected() ? LastSelected() : FirstSelected();
}

void SelectionGrid::SelectRows(int first, int last) {
  if (rowCount() == 0) return;
  first = std::clamp(first, 0, rowCount() - 1);
  last = std::clamp(last, 0, rowCount() - 1);
  const int column = columnCount() > 1 && isColumnHidden(0) ? 1 : 0;
  selectionModel()->setCurrentIndex(model()->index(first, column), QItemSelectionModel::NoUpdate);
  const QItemSelection block(model()->index(std::min(first, last), 0),
                             model()->index(std::max(first, last), columnCount() - 1));
  selectionModel()->select(block, QItemSelectionModel::ClearAndSelect);
}

// What does not fit its cell is shown in full when the mouse rests on it. Worked out then, not for every
// cell.
bool SelectionGrid::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    const QTableWidgetItem* cell = itemAt(help->pos());
    constexpr int kCellMargin = 8;
    const bool cut = cell != nullptr && fontMetrics().horizontalAdvance(cell->text()) >
                                            columnWidth(cell->column()) - kCellMargin;
    QToolTip::showText(help->globalPos(), cut ? cell->text() : QString(), this);
    return true;
  }
  return QTableWidget::viewportEvent(event);
}

void SelectionGrid::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_A:
      if (event->modifiers() != Qt::ControlModifier) break;
      SelectRows(0, rowCount() - 1);
      emit SelectionChanged();
      return;
    case Qt::Key_Insert:
      emit InsertPressed();
      return;
    case Qt::Key_Delete:
      emit DeletePressed();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      emit EnterPressed();
      return;
    default:
      break;
  }
  // Letters are the menus' and buttons', not a search in the grid.
  if (!event->text().isEmpty() && event->text().at(0).isPrint() && event->modifiers() == Qt::NoModifier &&
      event->key() != Qt::Key_Space) {
    event->ignore();
    return;
  }
  QTableWidget::keyPressEvent(event);
}

}  // namespace scorvane::forms
