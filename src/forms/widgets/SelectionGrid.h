// The grid of every fg* control: whole rows are selected as one block, which has a current row and another
// end. The user may sort and filter what is looked at; rows are counted as they are shown, so a row's key is
// asked of the row (RowData), never worked out from its number.
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QTableView>
#include <functional>
#include <map>
#include <utility>
#include <vector>

class QLineEdit;

namespace scorvane::forms {

class GridModel;

class SelectionGrid : public QTableView {
  Q_OBJECT
 public:
  struct Column {
    QString header;
    int twips = 0;  // its width; 0 hides it
    Qt::Alignment alignment = Qt::AlignLeft;
    // Cells whose text it is true of stand right all the same.
    std::function<bool(const QString&)> standsRight = {};
    bool showsNotes = false;  // a sign stands in front of the cells of rows that have a note
    int digits = 0;           // that may be typed into its cells while the grid is edited; 0: none
  };
  struct Row {
    QStringList cells;  // those that are missing are empty
    int data = 0;
    bool muted = false;  // in the colour of what is disabled
    QString note = {};   // plain text: the tooltip of the row, and what a screen reader says beside it
  };

  explicit SelectionGrid(const QString& name, QWidget* parent = nullptr);

  // The grid is without rows after it.
  void SetColumns(std::vector<Column> columns);
  void SetRows(std::vector<Row> rows);
  // Shows a text in the middle, below the first row, until it is set to an empty one: what to do where there
  // is nothing yet. It is no row, and clicks go through it.
  void SetHint(const QString& text);
  // Widens a column until its heading and what stands below it have room, within reason. It never narrows it.
  void FitColumn(int column);
  // Lets the user sort by a click on a heading (a third one restores the order) and filter with Ctrl+F. For
  // grids whose rows are known by their data, or by nothing.
  void SetArrangeable();
  // The same for a grid that has its own way to sort: it is only filtered.
  void SetFilterable() { filters_ = true; }
  // Lets the user type into the cells of columns that take digits: with F2, a digit or a double click.
  // Another cell's row takes them in its cell of `column`.
  void SetEditing(bool on);
  void SetEditColumn(int column) { editColumn_ = column; }
  // As the rows were handed over, all of them.
  void RestoreOrder();
  // What the context menu offers above Copy: actions and buttons; null for a line between them.
  void SetMenu(std::vector<QObject*> commands) { commands_ = std::move(commands); }
  // Widths by heading, which the user gave their columns; they stay when the grid is filled anew.
  void SetWidths(const std::map<QString, int>& widths);
  const std::map<QString, int>& Widths() const { return widths_; }
  void AddRow(Row row);
  void RemoveRow(int row);
  void ClearRows() { SetRows({}); }
  // Rows that are alike keep their order.
  void SortRows(const std::function<bool(const Row&, const Row&)>& before);
  int RowCount() const;
  // With those that the filter hides.
  int AllRows() const;
  // All of them as they were handed over, those that were added at their end.
  const std::vector<Row>& StoredRows() const;
  // The highest of all rows' data; 0 where none has any.
  int HighestData() const;
  int ColumnCount() const;
  QString Header(int column) const;

  // Of a row that is not there, 0 and empty text.
  int RowData(int row) const;
  QString Cell(int row, int column) const;
  void SetRow(int row, Row content);
  void SetRowData(int row, int rowData);
  void SetCell(int row, int column, const QString& text);

  // The row that the keyboard moves and, of a block, the end it does not move; -1 without a selection.
  int CurrentRow() const;
  int SelectionEnd() const;
  int FirstSelected() const;
  int LastSelected() const;
  bool OneRowSelected() const { return FirstSelected() >= 0 && FirstSelected() == LastSelected(); }
  void SelectRows(int first, int last);
  // What the selected rows are, and the selection of the rows that are the same after the grid was filled
  // anew; where none of them is left, of the row at `otherwise`.
  std::vector<int> SelectedData() const;
  // Brings the row with this data into sight, out of a filter if need be.
  void ShowData(int rowData);
  void SelectData(const std::vector<int>& wanted, int otherwise);

  // Puts the selected rows with their headings, as they are shown, into the clipboard: as lines of cells
  // between tabs, and as an HTML table. So do Ctrl+Shift+C and, where a window has no other use for it,
  // Ctrl+C.
  void CopySelected() const;
  // Puts all rows as they are shown into the clipboard as a picture.
  void CopyPicture() const;

 signals:
  void SelectionChanged();
  void InsertPressed();
  void DeletePressed();
  void EnterPressed();
  // A double click on a data row.
  void RowDoubleClicked(int row);
  // The user has typed another text into a cell.
  void CellEdited(int row, int column);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void updateGeometries() override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

 private:
  void BuildFilter();
  void AskFilter();
  void LeaveFilter();
  void SortBy(int column);
  void Arrange(int column, Qt::SortOrder order, const QString& filter);
  void ShowArrangement();
  // Goes to the row that begins with what was typed, in the column that it is sorted by or in the first
  // column that has one.
  bool IsTyping(const QKeyEvent& event) const;
  void GoTo(const QString& typed);
  int FindTyped(const QString& folded, int from) const;
  bool BeginsEditing(const QKeyEvent& event);

  GridModel* model_;
  QLabel* lblHint_;
  QLineEdit* txtFilter_ = nullptr;
  bool sorts_ = false;
  bool filters_ = false;
  int editColumn_ = 0;
  std::vector<QObject*> commands_;
  std::map<QString, int> widths_;
  QString typed_;
  QElapsedTimer sinceTyped_;
};

}  // namespace scorvane::forms
