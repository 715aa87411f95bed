// The driver list: every driver of the league with the exclusion flag.
#pragma once

#include <QDialog>
#include <QLabel>
#include <array>
#include <map>
#include <vector>

#include <QPushButton>

#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmDriverList : public QDialog {
 public:
  explicit frmDriverList(FormContext& context, QWidget* parent = nullptr);

 private:
  void LoadDrivers();
  void ShowAgain();
  void SortByColumn(int column);
  void SortRows();
  void SetExclude(bool exclude);
  void RemoveDrivers();
  void RemoveSelectedRows();
  void EditDriver(int row);
  void AddDriver();
  int FindDriverRow(std::int32_t id) const;
  void RemoveExcludedResults();
  void UpdateButtons();
  // An empty list shows one empty row.
  bool HasDrivers() const { return grid_->HighestData() != 0; }

  FormContext& context_;
  SelectionGrid* grid_;
  QLabel* lblNumDrivers_;
  std::map<int, QPushButton*> buttons_;
  std::array<bool, 2> ascending_ = {false, true};  // how each column was sorted last
  int sortedBy_ = -1;                              // a column; -1: as the league lists them
};

}  // namespace scorvane::forms
