// The rows of a grid as they were handed over, and beside them which are shown and in what order. What a cell
// looks like is worked out when it is painted.
#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <vector>

#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

// How the rows are looked at; what they are stays as it is.
struct Arrangement {
  int column = -1;  // the one that they are sorted by; -1: as they were handed over
  Qt::SortOrder order = Qt::AscendingOrder;
  QString filter;  // part of a shown cell, in any letter case and with any accents; empty for all rows
};

class GridModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  using QAbstractTableModel::QAbstractTableModel;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  // Whether columns that take digits can be typed into.
  void SetEditing(bool on) { editing_ = on; }

  // Without rows, and arranged as they are handed over.
  void SetColumns(std::vector<SelectionGrid::Column> columns);
  void SetRows(std::vector<SelectionGrid::Row> rows);
  // Stands at the end, and is shown, until the rows are arranged again.
  void AddRow(SelectionGrid::Row row);
  void RemoveRow(int row);
  // Sorts what is stored.
  void SortRows(const std::function<bool(const SelectionGrid::Row&, const SelectionGrid::Row&)>& before);

  const Arrangement& Arranged() const { return arrangement_; }
  void Arrange(Arrangement arrangement);

  // Rows here are counted as they are shown; these go to and from their places as they were handed over,
  // which are -1 for a row that is not shown.
  int StoredRow(int row) const { return Has(row) ? order_[static_cast<std::size_t>(row)] : -1; }
  int ShownRow(int stored) const;
  const std::vector<SelectionGrid::Row>& Stored() const { return rows_; }

  bool Has(int row) const { return row >= 0 && row < rowCount(); }
  const SelectionGrid::Row& RowAt(int row) const { return rows_[static_cast<std::size_t>(StoredRow(row))]; }
  const SelectionGrid::Column& ColumnAt(int column) const {
    return columns_[static_cast<std::size_t>(column)];
  }

  // Changes a row and has it painted anew.
  template <typename Change>
  void ChangeRow(int row, const Change& change) {
    if (!Has(row)) return;
    change(rows_[static_cast<std::size_t>(StoredRow(row))]);
    emit dataChanged(index(row, 0), index(row, columnCount() - 1));
  }

 signals:
  void Edited(int row, int column);

 private:
  std::vector<int> Order() const;
  bool IsShown(const SelectionGrid::Row& row, const QString& folded) const;
  void RemoveShown();
  void ShowAll();

  std::vector<SelectionGrid::Column> columns_;
  std::vector<SelectionGrid::Row> rows_;
  std::vector<int> order_;  // of the shown rows, their places in rows_
  Arrangement arrangement_;
  bool editing_ = false;
};

// A text without its letters' case and accents, to look for another in it.
QString Folded(const QString& text);

}  // namespace scorvane::forms
