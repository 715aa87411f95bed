// Picks any number of the league's drivers.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <cstdint>
#include <map>
#include <vector>

#include "forms/FormContext.h"
#include "forms/widgets/CheckList.h"

namespace scorvane::forms {

class frmPickDrivers : public QDialog {
 public:
  // The notes, by the drivers' keys, stand behind their names in brackets. Throws EngineError.
  frmPickDrivers(FormContext& context, const QString& title, const std::map<std::int32_t, QString>& notes,
                 QWidget* parent = nullptr);

  std::vector<std::int32_t> Ticked() const { return lstDrivers_->Ticked(); }

 private:
  CheckList* lstDrivers_;
};

}  // namespace scorvane::forms
