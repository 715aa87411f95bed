// What the user does to the look of a grid: sort, filter, go to a row by typing, and its context menu.
#include <QAbstractButton>
#include <QAction>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <algorithm>

#include "forms/widgets/Contrast.h"
#include "forms/widgets/GridModel.h"
#include "forms/widgets/GridPicture.h"
#include "forms/widgets/Icons.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {
namespace {

constexpr int kTypingPause = 1000;  // ms after which typing begins anew

}  // namespace

void SelectionGrid::SetArrangeable() {
  sorts_ = true;
  filters_ = true;
  horizontalHeader()->setSectionsClickable(true);
  connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &SelectionGrid::SortBy);
  // The second of two quick clicks.
  connect(horizontalHeader(), &QHeaderView::sectionDoubleClicked, this, &SelectionGrid::SortBy);
}

void SelectionGrid::SortBy(int column) {
  const Arrangement& now = model_->Arranged();
  if (now.column != column) {
    Arrange(column, Qt::AscendingOrder, now.filter);
  } else if (now.order == Qt::AscendingOrder) {
    Arrange(column, Qt::DescendingOrder, now.filter);
  } else {
    Arrange(-1, Qt::AscendingOrder, now.filter);
  }
}

void SelectionGrid::RestoreOrder() {
  Arrange(-1, Qt::AscendingOrder, {});
}

// The row that the keyboard is at stays chosen while it is shown, and in sight.
void SelectionGrid::Arrange(int column, Qt::SortOrder order, const QString& filter) {
  const int current = model_->StoredRow(CurrentRow());
  {
    const QSignalBlocker quiet(this);
    model_->Arrange({column, order, filter});
    const int row = std::max(0, model_->ShownRow(current));
    SelectRows(row, row);
  }
  scrollTo(currentIndex());
  ShowArrangement();
  emit SelectionChanged();
}

void SelectionGrid::ShowArrangement() {
  const Arrangement& now = model_->Arranged();
  if (sorts_) {
    horizontalHeader()->setSortIndicatorShown(now.column >= 0);
    horizontalHeader()->setSortIndicator(now.column, now.order);
  }
  if (txtFilter_->text() == now.filter) return;
  const QSignalBlocker quiet(txtFilter_);
  txtFilter_->setText(now.filter);
  if (now.filter.isEmpty() && !txtFilter_->hasFocus()) txtFilter_->hide();
}

// ---- the filter, in a box at the foot of the grid that is there while it is wanted

void SelectionGrid::BuildFilter() {
  txtFilter_->setObjectName(QStringLiteral("txtFilter"));
  txtFilter_->setPlaceholderText(tr("Filter"));
  txtFilter_->setAccessibleName(tr("Show only rows with"));
  txtFilter_->setToolTip(tr("Only rows with this text are shown. Esc shows all of them again."));
  txtFilter_->setClearButtonEnabled(true);
  txtFilter_->installEventFilter(this);
  txtFilter_->hide();
  connect(txtFilter_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const Arrangement& now = model_->Arranged();
    Arrange(now.column, now.order, text.trimmed().isEmpty() ? QString() : text);
  });
}

void SelectionGrid::AskFilter() {
  updateGeometries();
  ShowHintReadably(*txtFilter_);
  txtFilter_->show();
  txtFilter_->raise();
  txtFilter_->setFocus(Qt::ShortcutFocusReason);
  txtFilter_->selectAll();
}

void SelectionGrid::LeaveFilter() {
  txtFilter_->clear();
  setFocus();
  txtFilter_->hide();
}

bool SelectionGrid::eventFilter(QObject* watched, QEvent* event) {
  if (watched != txtFilter_) return QTableView::eventFilter(watched, event);
  if (event->type() == QEvent::PaletteChange) ShowHintReadably(*txtFilter_);
  if (event->type() == QEvent::FocusOut && txtFilter_->text().isEmpty()) txtFilter_->hide();
  if (event->type() != QEvent::KeyPress) return false;
  // None of these is the grid's, or the window's, while one types here.
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Escape:
      LeaveFilter();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Up:
    case Qt::Key_Down:
      setFocus();
      return true;
    case Qt::Key_Insert:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      return true;
    default:
      return false;
  }
}

// ---- typing

int SelectionGrid::FindTyped(const QString& folded, int from) const {
  std::vector<int> columns;
  if (model_->Arranged().column >= 0) columns.push_back(model_->Arranged().column);
  for (int column = 0; column < ColumnCount(); ++column)
    if (!isColumnHidden(column)) columns.push_back(column);
  for (const int column : columns)
    for (int i = 0; i < RowCount(); ++i)
      if (const int row = (from + i) % RowCount(); Folded(Cell(row, column)).startsWith(folded)) return row;
  return -1;
}

// A blank belongs to a name that is being typed, and selects nothing by itself.
bool SelectionGrid::IsTyping(const QKeyEvent& event) const {
  const bool begun = !typed_.isEmpty() && !sinceTyped_.hasExpired(kTypingPause);
  return !event.text().isEmpty() && event.text().at(0).isPrint() &&
         (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0 &&
         (begun || event.key() != Qt::Key_Space);
}

void SelectionGrid::GoTo(const QString& typed) {
  if (typed_.isEmpty() || sinceTyped_.hasExpired(kTypingPause)) typed_.clear();
  sinceTyped_.restart();
  const bool again = !typed_.isEmpty() && typed_ == typed;
  if (!again) typed_ += typed;
  // The same letter again goes on to the next row; what grows longer stays where it is while it fits.
  const bool next = again || typed_.size() == 1;
  const int row =
      RowCount() == 0 ? -1 : FindTyped(Folded(typed_), std::max(0, CurrentRow() + (next ? 1 : 0)));
  if (row < 0) return;
  SelectRows(row, row);
  scrollTo(currentIndex());
}

// ---- the context menu

void SelectionGrid::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  menu.setObjectName(QStringLiteral("mnuGrid"));
  for (QObject* command : commands_) {
    if (command == nullptr) {
      menu.addSeparator();
    } else if (auto* action = qobject_cast<QAction*>(command)) {
      menu.addAction(action);
    } else if (auto* button = qobject_cast<QAbstractButton*>(command);
               button != nullptr && !button->isHidden()) {
      QAction* item = menu.addAction(button->text(), button, &QAbstractButton::click);
      item->setEnabled(button->isEnabled());
    }
  }
  menu.addSeparator();
  QAction* copy =
      menu.addAction(CommandIcon("edit-copy"), tr("Copy Rows"), this, &SelectionGrid::CopySelected);
  copy->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
  copy->setEnabled(FirstSelected() >= 0);
  QAction* picture = menu.addAction(tr("Copy as Picture"), this, &SelectionGrid::CopyPicture);
  picture->setEnabled(FitsPicture(*this));
  if (filters_) {
    QAction* filter =
        menu.addAction(CommandIcon("edit-find"), tr("Filter..."), this, &SelectionGrid::AskFilter);
    filter->setShortcut(Qt::CTRL | Qt::Key_F);
    QAction* restore = menu.addAction(tr("Restore Order"), this, &SelectionGrid::RestoreOrder);
    restore->setEnabled(model_->Arranged().column >= 0 || !model_->Arranged().filter.isEmpty());
  }
  QPoint place = event->globalPos();
  // By the keyboard it comes up at its row.
  if (event->reason() == QContextMenuEvent::Keyboard && CurrentRow() >= 0)
    place = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  menu.exec(place);
}

}  // namespace scorvane::forms
