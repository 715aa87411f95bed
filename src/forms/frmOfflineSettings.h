// The off-line league settings: in which order the criteria decide the finish of a merged event.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QToolButton>
#include <array>

#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmOfflineSettings : public QDialog {
 public:
  explicit frmOfflineSettings(FormContext& context, QWidget* parent = nullptr);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void reject() override;

 private:
  void UpdateMoveButtons();
  void Move(int step);
  bool Store();

  FormContext& context_;
  SelectionGrid* grid_;
  std::array<QToolButton*, 2> cmdMove_{};
  QPushButton* save_;
  bool changed_ = false;
};

}  // namespace scorvane::forms
