// The driver picker: one of the league's drivers is chosen by name.
#pragma once

#include <QDialog>
#include <QListWidget>
#include <string>

#include "forms/FormContext.h"

namespace scorvane::forms {

class frmPickDriver : public QDialog {
 public:
  explicit frmPickDriver(FormContext& context, QWidget* parent = nullptr);

  // Begins at the driver of this name, letter case and blanks around it aside, where there is one.
  void Choose(const QString& name);
  bool Cancelled() const { return cancelled_; }
  // The chosen name, when it was not cancelled.
  std::string DriverName() const;

 private:
  void Select();

  QListWidget* lstDrivers_;
  bool cancelled_ = true;
};

}  // namespace scorvane::forms
