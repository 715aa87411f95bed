#include "forms/widgets/GridModel.h"

#include <QApplication>
#include <QPalette>
#include <QStringList>
#include <QStyle>
#include <algorithm>
#include <string>
#include <utility>

#include "engine/Collation.h"
#include "engine/Value.h"
#include "forms/widgets/Contrast.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {
namespace {

// What a cell is sorted by: numbers and lap times by their value and before all text, blanks behind all.
struct SortKey {
  enum Kind { kNumber, kText, kBlank };
  Kind kind = kBlank;
  double number = 0;
  std::string text;
};

// "31.5", "$1,200", "1:02.415" in seconds.
bool ReadNumber(const QString& text, char decimal, double& number) {
  number = 0;
  for (const QString& part : text.split(QLatin1Char(':'))) {
    double value = 0;
    if (!engine::ParseNumber(Utf8(part), decimal, value)) return false;
    number = number * 60 + value;
  }
  return true;
}

SortKey KeyOf(const QString& cell, char decimal) {
  const QString text = cell.trimmed();
  SortKey key;
  if (text.isEmpty()) return key;
  key.kind = ReadNumber(text, decimal, key.number) ? SortKey::kNumber : SortKey::kText;
  if (key.kind == SortKey::kText) key.text = Utf8(text);
  return key;
}

// -1, 0 or 1.
int Compare(const SortKey& a, const SortKey& b) {
  if (a.kind != b.kind) return a.kind < b.kind ? -1 : 1;
  if (a.kind == SortKey::kText) return engine::CompareTexts(a.text, b.text);
  return a.number < b.number ? -1 : static_cast<int>(b.number < a.number);
}

}  // namespace

QString Folded(const QString& text) {
  QString folded;
  for (const QChar letter : text.normalized(QString::NormalizationForm_KD))
    if (letter.category() != QChar::Mark_NonSpacing) folded += letter;
  return folded.toCaseFolded();
}

int GridModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int GridModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  // The place of a row is the one that it was handed over with, wherever it is shown.
  if (orientation == Qt::Vertical && role == Qt::DisplayRole) return StoredRow(section) + 1;
  if (orientation == Qt::Vertical || section < 0 || section >= columnCount())
    return QAbstractTableModel::headerData(section, orientation, role);
  const SelectionGrid::Column& column = ColumnAt(section);
  if (role == Qt::DisplayRole) return column.header;
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
  return {};
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
  if (!Has(index.row()) || index.column() >= columnCount()) return {};
  const SelectionGrid::Row& row = RowAt(index.row());
  const SelectionGrid::Column& column = ColumnAt(index.column());
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return row.cells.value(index.column());
    case Qt::TextAlignmentRole: {
      const bool right = column.standsRight && column.standsRight(row.cells.value(index.column()));
      return QVariant::fromValue((right ? Qt::AlignRight : column.alignment) | Qt::AlignVCenter);
    }
    case Qt::ForegroundRole:
      if (row.muted) return MutedText(QApplication::palette());
      return {};
    case Qt::DecorationRole:
      if (column.showsNotes && !row.note.isEmpty())
        return QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
      return {};
    case Qt::AccessibleDescriptionRole:
      return row.note;
    default:
      return {};
  }
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
  const bool typed = editing_ && Has(index.row()) && ColumnAt(index.column()).digits > 0;
  return typed ? flags | Qt::ItemIsEditable : flags;
}

bool GridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !flags(index).testFlag(Qt::ItemIsEditable)) return false;
  const QString text = value.toString().trimmed();
  // What is pasted has passed no filter.
  if (std::any_of(text.begin(), text.end(),
                  [](QChar c) { return c < QLatin1Char('0') || c > QLatin1Char('9'); }))
    return false;
  if (text == RowAt(index.row()).cells.value(index.column())) return true;
  ChangeRow(index.row(), [&](SelectionGrid::Row& row) {
    while (row.cells.size() <= index.column()) row.cells.emplace_back();
    row.cells[index.column()] = text;
  });
  emit Edited(index.row(), index.column());
  return true;
}

void GridModel::SetColumns(std::vector<SelectionGrid::Column> columns) {
  beginResetModel();
  rows_.clear();
  order_.clear();
  arrangement_ = {};
  columns_ = std::move(columns);
  endResetModel();
}

// Removed and inserted, not reset: a reset would cost the columns their widths.
void GridModel::RemoveShown() {
  if (order_.empty()) return;
  beginRemoveRows({}, 0, rowCount() - 1);
  order_.clear();
  endRemoveRows();
}

void GridModel::ShowAll() {
  std::vector<int> order = Order();
  if (order.empty()) return;
  beginInsertRows({}, 0, static_cast<int>(order.size()) - 1);
  order_ = std::move(order);
  endInsertRows();
}

void GridModel::SetRows(std::vector<SelectionGrid::Row> rows) {
  RemoveShown();
  rows_ = std::move(rows);
  ShowAll();
}

void GridModel::Arrange(Arrangement arrangement) {
  RemoveShown();
  arrangement_ = std::move(arrangement);
  ShowAll();
}

void GridModel::AddRow(SelectionGrid::Row row) {
  beginInsertRows({}, rowCount(), rowCount());
  order_.push_back(static_cast<int>(rows_.size()));
  rows_.push_back(std::move(row));
  endInsertRows();
}

void GridModel::RemoveRow(int row) {
  if (!Has(row)) return;
  const int stored = StoredRow(row);
  beginRemoveRows({}, row, row);
  rows_.erase(rows_.begin() + stored);
  order_.erase(order_.begin() + row);
  for (int& place : order_)
    if (place > stored) --place;
  endRemoveRows();
}

void GridModel::SortRows(
    const std::function<bool(const SelectionGrid::Row&, const SelectionGrid::Row&)>& before) {
  std::stable_sort(rows_.begin(), rows_.end(), before);
  order_ = Order();
  if (!order_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int GridModel::ShownRow(int stored) const {
  const auto found = std::find(order_.begin(), order_.end(), stored);
  return found == order_.end() ? -1 : static_cast<int>(found - order_.begin());
}

bool GridModel::IsShown(const SelectionGrid::Row& row, const QString& folded) const {
  for (int column = 0; column < columnCount(); ++column)
    if (ColumnAt(column).twips > 0 && Folded(row.cells.value(column)).contains(folded)) return true;
  return false;
}

std::vector<int> GridModel::Order() const {
  std::vector<int> order;
  const QString folded = Folded(arrangement_.filter);
  for (std::size_t i = 0; i < rows_.size(); ++i)
    if (folded.isEmpty() || IsShown(rows_[i], folded)) order.push_back(static_cast<int>(i));
  if (arrangement_.column < 0) return order;
  std::vector<SortKey> keys;
  keys.reserve(rows_.size());
  const char decimal = platform::LocaleDecimalSeparator();
  for (const SelectionGrid::Row& row : rows_)
    keys.push_back(KeyOf(row.cells.value(arrangement_.column), decimal));
  const bool descending = arrangement_.order == Qt::DescendingOrder;
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    const SortKey& x = keys[static_cast<std::size_t>(a)];
    const SortKey& y = keys[static_cast<std::size_t>(b)];
    if (x.kind == SortKey::kBlank || y.kind == SortKey::kBlank) return x.kind < y.kind;
    return descending ? Compare(y, x) < 0 : Compare(x, y) < 0;
  });
  return order;
}

}  // namespace scorvane::forms
