#include "forms/widgets/SelectionGrid.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QSet>
#include <QToolTip>
#include <algorithm>
#include <utility>

#include "forms/widgets/GridDelegate.h"
#include "forms/widgets/GridModel.h"
#include "forms/widgets/GridPicture.h"
#include "forms/widgets/Twips.h"

namespace scorvane::forms {
namespace {

constexpr int kWidestCharacters = 40;  // of a cell; what is longer is elided until the user widens its column
constexpr int kFittingMargin = 14;
constexpr qsizetype kMeasuredTexts = 50;
constexpr int kHintMargin = 24;
constexpr int kFilterCharacters = 24;

}  // namespace

SelectionGrid::SelectionGrid(const QString& name, QWidget* parent)
    : QTableView(parent),
      model_(new GridModel(this)),
      lblHint_(new QLabel(this)),
      txtFilter_(new QLineEdit(this)) {
  setModel(model_);
  setItemDelegate(new GridDelegate(this));
  setObjectName(name);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setCornerButtonEnabled(false);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  setIconSize({fontMetrics().height(), fontMetrics().height()});
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setSectionsClickable(false);
  lblHint_->setObjectName(QStringLiteral("lblHint"));
  lblHint_->setTextFormat(Qt::PlainText);
  lblHint_->setAlignment(Qt::AlignCenter);
  lblHint_->setWordWrap(true);
  lblHint_->setForegroundRole(QPalette::Text);
  lblHint_->setAttribute(Qt::WA_TransparentForMouseEvents);
  lblHint_->hide();
  BuildFilter();
  // What the user drags, not what the program sets.
  connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column, int, int width) {
    const QHeaderView* header = horizontalHeader();
    const bool stretched =
        header->sectionResizeMode(column) != QHeaderView::Interactive ||
        (header->stretchLastSection() && header->visualIndex(column) == header->count() - 1);
    if (!stretched && QApplication::mouseButtons().testFlag(Qt::LeftButton)) widths_[Header(column)] = width;
  });
  connect(model_, &GridModel::Edited, this, &SelectionGrid::CellEdited);
  connect(this, &QTableView::doubleClicked, this,
          [this](const QModelIndex& cell) { emit RowDoubleClicked(cell.row()); });
}

void SelectionGrid::SetColumns(std::vector<Column> columns) {
  model_->SetColumns(std::move(columns));
  for (int i = 0; i < ColumnCount(); ++i) {
    const int twips = model_->ColumnAt(i).twips;
    setColumnHidden(i, twips == 0);
    if (twips > 0) setColumnWidth(i, TwipsToPixels(twips, this));
  }
  SetWidths(widths_);
  ShowArrangement();
}

void SelectionGrid::SetWidths(const std::map<QString, int>& widths) {
  widths_ = widths;
  for (int column = 0; column < ColumnCount(); ++column) {
    const auto width = widths_.find(Header(column));
    if (width != widths_.end() && !isColumnHidden(column)) setColumnWidth(column, width->second);
  }
}

void SelectionGrid::SetRows(std::vector<Row> rows) {
  model_->SetRows(std::move(rows));
}

void SelectionGrid::SetHint(const QString& text) {
  if (text == lblHint_->text()) return;
  lblHint_->setText(text);
  lblHint_->setVisible(!text.isEmpty());
  // The keyboard is in the grid, not in the label.
  setAccessibleDescription(text);
}

void SelectionGrid::updateGeometries() {
  QTableView::updateGeometries();
  // Beside the viewport, not in it: what is in it scrolls.
  if (lblHint_ != nullptr)
    lblHint_->setGeometry(viewport()->geometry().adjusted(kHintMargin, verticalHeader()->defaultSectionSize(),
                                                          -kHintMargin, 0));
  if (txtFilter_ == nullptr) return;
  const QRect room = viewport()->geometry();
  const QSize size(std::min(room.width(), fontMetrics().averageCharWidth() * kFilterCharacters),
                   txtFilter_->sizeHint().height());
  txtFilter_->setGeometry(QRect(room.bottomRight() - QPoint(size.width() - 1, size.height() - 1), size));
}

void SelectionGrid::FitColumn(int column) {
  if (isColumnHidden(column) || widths_.contains(Header(column))) return;
  const QFontMetrics metrics = fontMetrics();
  // Only the longest texts are measured: hundreds of them are nearly as wide as the widest.
  QSet<QString> different;
  for (int row = 0; row < RowCount(); ++row) different.insert(Cell(row, column));
  QStringList longest = different.values();
  const auto measured = std::min<qsizetype>(longest.size(), kMeasuredTexts);
  std::partial_sort(longest.begin(), longest.begin() + measured, longest.end(),
                    [](const QString& x, const QString& y) { return x.size() > y.size(); });
  int content = 0;
  for (const QString& text : longest.first(measured))
    content = std::max(content, metrics.horizontalAdvance(text));
  const int needed = std::max(horizontalHeader()->fontMetrics().horizontalAdvance(Header(column)),
                              std::min(content, metrics.averageCharWidth() * kWidestCharacters));
  setColumnWidth(column, std::max(columnWidth(column), needed + kFittingMargin));
}

void SelectionGrid::AddRow(Row row) {
  model_->AddRow(std::move(row));
}

void SelectionGrid::RemoveRow(int row) {
  model_->RemoveRow(row);
}

void SelectionGrid::SortRows(const std::function<bool(const Row&, const Row&)>& before) {
  model_->SortRows(before);
}

int SelectionGrid::RowCount() const {
  return model_->rowCount();
}

int SelectionGrid::ColumnCount() const {
  return model_->columnCount();
}

QString SelectionGrid::Header(int column) const {
  return model_->ColumnAt(column).header;
}

int SelectionGrid::RowData(int row) const {
  return model_->Has(row) ? model_->RowAt(row).data : 0;
}

QString SelectionGrid::Cell(int row, int column) const {
  return model_->Has(row) ? model_->RowAt(row).cells.value(column) : QString();
}

void SelectionGrid::SetRow(int row, Row content) {
  model_->ChangeRow(row, [&](Row& changed) { changed = std::move(content); });
}

void SelectionGrid::SetRowData(int row, int rowData) {
  model_->ChangeRow(row, [&](Row& changed) { changed.data = rowData; });
}

void SelectionGrid::SetCell(int row, int column, const QString& text) {
  model_->ChangeRow(row, [&](Row& changed) {
    while (changed.cells.size() <= column) changed.cells.emplace_back();
    changed.cells[column] = text;
  });
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
  return FirstSelected() < 0 ? -1 : std::clamp(currentIndex().row(), FirstSelected(), LastSelected());
}

int SelectionGrid::SelectionEnd() const {
  const int current = CurrentRow();
  return current == FirstSelected() ? LastSelected() : FirstSelected();
}

void SelectionGrid::SelectRows(int first, int last) {
  if (RowCount() == 0) return;
  first = std::clamp(first, 0, RowCount() - 1);
  last = std::clamp(last, 0, RowCount() - 1);
  const int column = ColumnCount() > 1 && isColumnHidden(0) ? 1 : 0;
  selectionModel()->setCurrentIndex(model_->index(first, column), QItemSelectionModel::NoUpdate);
  const QItemSelection block(model_->index(std::min(first, last), 0),
                             model_->index(std::max(first, last), ColumnCount() - 1));
  selectionModel()->select(block, QItemSelectionModel::ClearAndSelect);
}

std::vector<int> SelectionGrid::SelectedData() const {
  std::vector<int> found;
  for (int row = FirstSelected(); row >= 0 && row <= LastSelected(); ++row) found.push_back(RowData(row));
  return found;
}

const std::vector<SelectionGrid::Row>& SelectionGrid::StoredRows() const {
  return model_->Stored();
}

int SelectionGrid::AllRows() const {
  return static_cast<int>(model_->Stored().size());
}

int SelectionGrid::HighestData() const {
  int highest = 0;
  for (const Row& row : model_->Stored()) highest = std::max(highest, row.data);
  return highest;
}

void SelectionGrid::ShowData(int rowData) {
  const auto row = [&] {
    for (int at = 0; at < RowCount(); ++at)
      if (RowData(at) == rowData) return at;
    return -1;
  };
  if (row() < 0) RestoreOrder();
  if (row() >= 0) scrollTo(model_->index(row(), currentIndex().column()));
}

void SelectionGrid::SelectData(const std::vector<int>& wanted, int otherwise) {
  int first = -1;
  int last = -1;
  for (int row = 0; row < RowCount(); ++row) {
    if (std::find(wanted.begin(), wanted.end(), RowData(row)) == wanted.end()) continue;
    if (first < 0) first = row;
    // Rows that have come apart are no block any more: the first of them stays.
    if (last < 0 || last == row - 1) last = row;
  }
  if (first < 0) first = last = otherwise;
  SelectRows(first, last);
  scrollTo(currentIndex());
}

void SelectionGrid::CopySelected() const {
  if (FirstSelected() < 0) return;
  QString lines;
  QString table = QStringLiteral("<table>\n");
  const bool places = !verticalHeader()->isHidden();
  // A heading, or a row's cells.
  const auto add = [&](const QString& place, const QString& tag, const auto& text) {
    QStringList cells;
    if (places) cells << place;
    for (int column = 0; column < ColumnCount(); ++column)
      if (!isColumnHidden(column)) cells << text(column).simplified();
    lines += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    table += QStringLiteral("<tr>");
    for (const QString& cell : std::as_const(cells))
      table += QStringLiteral("<%1>%2</%1>").arg(tag, cell.toHtmlEscaped());
    table += QStringLiteral("</tr>\n");
  };
  add(QString(), QStringLiteral("th"), [this](int column) { return Header(column); });
  for (int row = FirstSelected(); row <= LastSelected(); ++row)
    add(QString::number(model_->StoredRow(row) + 1), QStringLiteral("td"),
        [this, row](int column) { return Cell(row, column); });
  auto* copied = new QMimeData;
  copied->setText(lines);
  copied->setHtml(table + QStringLiteral("</table>\n"));
  QApplication::clipboard()->setMimeData(copied);
}

void SelectionGrid::CopyPicture() const {
  const QImage picture = PictureOf(*this);
  if (!picture.isNull()) QApplication::clipboard()->setImage(picture);
}

// What does not fit its cell is shown in full when the mouse rests on it. Worked out then, not for every
// cell.
bool SelectionGrid::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(event);
    const QModelIndex cell = indexAt(help->pos());
    const QString text = Cell(cell.row(), cell.column());
    constexpr int kCellMargin = 8;
    const bool cut =
        cell.isValid() && fontMetrics().horizontalAdvance(text) > columnWidth(cell.column()) - kCellMargin;
    const QString note = cell.isValid() ? model_->RowAt(cell.row()).note : QString();
    // A note may hold what looks like markup.
    QToolTip::showText(help->globalPos(),
                       !note.isEmpty() ? QStringLiteral("<qt>%1</qt>").arg(note.toHtmlEscaped())
                       : cut           ? text
                                       : QString(),
                       this);
    return true;
  }
  return QTableView::viewportEvent(event);
}

// A click beside the rows changes nothing: there is always a row to work on.
QItemSelectionModel::SelectionFlags SelectionGrid::selectionCommand(const QModelIndex& index,
                                                                    const QEvent* event) const {
  return index.isValid() ? QTableView::selectionCommand(index, event) : QItemSelectionModel::NoUpdate;
}

void SelectionGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  emit SelectionChanged();
}

void SelectionGrid::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_A:
      if (event->modifiers() != Qt::ControlModifier) break;
      SelectRows(0, RowCount() - 1);
      emit SelectionChanged();
      return;
    case Qt::Key_C:
      if (!event->modifiers().testFlag(Qt::ControlModifier)) break;
      CopySelected();
      return;
    case Qt::Key_F:
      if (event->modifiers() != Qt::ControlModifier || !filters_) break;
      AskFilter();
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
  if (BeginsEditing(*event)) {
    QTableView::keyPressEvent(event);
    return;
  }
  if (IsTyping(*event)) {
    GoTo(event->text());
    return;
  }
  QTableView::keyPressEvent(event);
}

}  // namespace scorvane::forms
