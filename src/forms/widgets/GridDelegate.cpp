#include "forms/widgets/GridDelegate.h"

#include <QKeyEvent>
#include <algorithm>

#include "forms/widgets/EntryBox.h"
#include "forms/widgets/GridModel.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

void GridDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  // Whole rows are selected, so a cell wears a frame only where it is the one that typing goes into.
  if (!index.flags().testFlag(Qt::ItemIsEditable)) option->state.setFlag(QStyle::State_HasFocus, false);
}

QWidget* GridDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& index) const {
  auto* box = new EntryBox(QStringLiteral("txtCell"), EntryBox::Digits(), parent);
  box->setFrame(false);
  box->setAlignment(Qt::AlignCenter);
  box->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
  // What stands there is shown whole.
  const int digits = static_cast<const GridModel*>(index.model())->ColumnAt(index.column()).digits;
  box->setMaxLength(std::max(digits, static_cast<int>(index.data().toString().size())));
  return box;
}

// ---- the grid's part of it

void SelectionGrid::SetEditing(bool on) {
  model_->SetEditing(on);
  setEditTriggers(on ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                           QAbstractItemView::AnyKeyPressed
                     : QAbstractItemView::NoEditTriggers);
  viewport()->update();
}

// F2 and digits go into the current cell or, beside those that take them, into the row's chosen one.
bool SelectionGrid::BeginsEditing(const QKeyEvent& event) {
  if (editTriggers() == QAbstractItemView::NoEditTriggers || CurrentRow() < 0) return false;
  const bool digit = !event.text().isEmpty() && event.text().at(0) >= QLatin1Char('0') &&
                     event.text().at(0) <= QLatin1Char('9') && (event.modifiers() & ~Qt::KeypadModifier) == 0;
  if (!digit && event.key() != Qt::Key_F2) return false;
  if (!currentIndex().flags().testFlag(Qt::ItemIsEditable))
    selectionModel()->setCurrentIndex(model_->index(CurrentRow(), editColumn_),
                                      QItemSelectionModel::NoUpdate);
  return currentIndex().flags().testFlag(Qt::ItemIsEditable);
}

// Enter goes down, Tab to the next cell that can be typed into, and both go on typing there.
void SelectionGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  const QModelIndex cell = currentIndex();
  QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
  setFocus();
  QModelIndex next;
  if (hint == QAbstractItemDelegate::SubmitModelCache) {
    next = model_->index(cell.row() + 1, cell.column());
    if (next.isValid()) SelectRows(next.row(), next.row());
    if (next.isValid()) selectionModel()->setCurrentIndex(next, QItemSelectionModel::NoUpdate);
    return;
  }
  const int step = hint == QAbstractItemDelegate::EditNextItem       ? 1
                   : hint == QAbstractItemDelegate::EditPreviousItem ? -1
                                                                     : 0;
  if (step == 0) return;
  for (int at = cell.row() * ColumnCount() + cell.column() + step; at >= 0 && at < RowCount() * ColumnCount();
       at += step) {
    next = model_->index(at / ColumnCount(), at % ColumnCount());
    if (!next.flags().testFlag(Qt::ItemIsEditable)) continue;
    SelectRows(next.row(), next.row());
    selectionModel()->setCurrentIndex(next, QItemSelectionModel::NoUpdate);
    edit(next);
    return;
  }
}

}  // namespace scorvane::forms
