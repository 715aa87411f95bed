// The grid of every fg* control: whole rows are selected as one block, which has a current row and another
// end.
#pragma once

#include <QTableWidget>
#include <vector>

namespace scorvane::forms {

class SelectionGrid : public QTableWidget {
  Q_OBJECT
 public:
  struct Column {
    QString header;
    int twips = 0;
    Qt::Alignment alignment = Qt::AlignLeft;
  };

  explicit SelectionGrid(const QString& name, QWidget* parent = nullptr);

  void SetColumns(const std::vector<Column>& columns);
  // Adds a row with its cells and its row data.
  void AddRow(const QStringList& cells, int rowData = 0);
  void ClearRows();
  int RowData(int row) const;
  void SetRowData(int row, int rowData);
  QString Cell(int row, int column) const;
  void SetCell(int row, int column, const QString& text);

  // The row that the keyboard moves and, of a block, the end it does not move; -1 without a selection.
  int CurrentRow() const;
  int SelectionEnd() const;
  int FirstSelected() const;
  int LastSelected() const;
  bool OneRowSelected() const { return FirstSelected() >= 0 && FirstSelected() == LastSelected(); }
  void SelectRows(int first, int last);

 signals:
  void SelectionChanged();
  void InsertPressed();
  void DeletePressed();
  void EnterPressed();
  // A double click on a data row.
  void RowDoubleClicked(int row);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool viewportEvent(QEvent* event) override;
};

}  // namespace scorvane::forms
