// All penalties of the league, by race; those that are taken back leave the results as if they had never
// been.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <map>

#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmPenalties : public QDialog {
 public:
  explicit frmPenalties(FormContext& context, QWidget* parent = nullptr);

 private:
  void FillGrid();
  void RemovePenalties();
  bool HasPenalties() const { return grid_->HighestData() != 0; }

  FormContext& context_;
  SelectionGrid* grid_;
  std::map<int, QPushButton*> buttons_;
};

}  // namespace scorvane::forms
