// The standings under other rules beside the present ones, and who can still win the title. It only asks:
// nothing of it is stored.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <vector>

#include "championship/WhatIf.h"
#include "forms/FormContext.h"
#include "forms/RaceChoice.h"
#include "forms/widgets/CheckList.h"
#include "forms/widgets/NumberBox.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmWhatIf : public QDialog {
 public:
  explicit frmWhatIf(FormContext& context, QWidget* parent = nullptr);

 private:
  QWidget* BuildRules();
  QWidget* BuildTitle();
  championship::WhatIf Rules() const;
  // What the tab that is in front shows; the other one when it comes to the front.
  void Show();
  void ShowTable();
  void ShowTitle();
  void LoadPoints();
  void LoadPlayoff();

  FormContext& context_;
  // What the boxes offer from a line on.
  std::vector<championship::PointPreset> pointPresets_;
  std::vector<std::vector<std::int32_t>> pointFiles_;
  std::vector<championship::PlayoffFormat> playoffs_;
  QComboBox* cboPoints_ = nullptr;
  NumberBox* spnDropped_ = nullptr;
  QCheckBox* chkNoBonus_ = nullptr;
  QComboBox* cboPlayoff_ = nullptr;
  RaceChoice* cboAfter_ = nullptr;
  CheckList* lstWithout_ = nullptr;
  QTabWidget* tabs_ = nullptr;
  SelectionGrid* fgTable_ = nullptr;
  NumberBox* spnRemaining_ = nullptr;
  QLabel* lblTitle_ = nullptr;
  SelectionGrid* fgTitle_ = nullptr;
};

}  // namespace scorvane::forms
