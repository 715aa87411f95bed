// The driver result dialog: one result of a race is typed or corrected.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QPushButton>
#include <array>
#include <functional>

#include "forms/FormContext.h"
#include "forms/widgets/EntryBox.h"
#include "scoring/RaceResults.h"

namespace scorvane::forms {

class frmEditDriver2 : public QDialog {
 public:
  explicit frmEditDriver2(FormContext& context, QWidget* parent = nullptr);

  void Entry(const scoring::ResultEntry& entry);
  scoring::ResultEntry Entry() const;
  bool Cancelled() const { return cancelled_; }

  // Called by Save; the dialog stays open when it returns false.
  void OnSave(std::function<bool(const scoring::ResultEntry&)> save) { onSave_ = std::move(save); }

 private:
  void PickDriver();
  void Save();

  FormContext& context_;
  scoring::ResultEntry before_;  // as it was handed over
  std::array<EntryBox*, scoring::ResultEntry::kFields> txtInfo_{};
  QComboBox* cboReasonOut_ = nullptr;
  QPushButton* save_ = nullptr;
  bool cancelled_ = true;
  std::function<bool(const scoring::ResultEntry&)> onSave_;
};

}  // namespace scorvane::forms
