// A penalty for one result: what is taken off, and why.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QRadioButton>
#include <array>

#include "forms/FormContext.h"
#include "forms/widgets/EntryBox.h"
#include "scoring/Penalties.h"

namespace scorvane::forms {

class frmPenalty : public QDialog {
 public:
  // For the driver's result in a race of the league.
  frmPenalty(FormContext& context, std::int32_t raceId, std::int32_t driverId, const QString& driver,
             QWidget* parent = nullptr);

  // True once the penalty has been given.
  bool Given() const { return given_; }

 private:
  scoring::Penalty Entry() const;
  void UpdateControls();
  void Save();

  FormContext& context_;
  const std::int32_t raceId_;
  const std::int32_t driverId_;
  std::array<QRadioButton*, 3> optKind_{};  // by kind
  EntryBox* txtPoints_;
  EntryBox* txtPosition_;
  EntryBox* txtReason_;
  QPushButton* save_ = nullptr;
  bool given_ = false;
};

}  // namespace scorvane::forms
