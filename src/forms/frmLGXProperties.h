// The properties of a league file: of one that is to be made, or of the open one.
#pragma once

#include <QButtonGroup>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <string>

#include "app/NewLeague.h"
#include "forms/FormContext.h"

namespace scorvane::forms {

class frmLGXProperties : public QDialog {
 public:
  explicit frmLGXProperties(FormContext& context, QWidget* parent = nullptr);

  // What the dialog is for, to be said before it is shown: a new league, or the open one, whose properties it
  // then offers.
  void NewDialog(bool isNew);
  bool NewDialog() const { return newDialog_; }
  // The new league's path, also after an attempt to make it that failed; empty before.
  const std::string& FileName() const { return fileName_; }
  // True only when the Cancel button, or the Esc key, ended the dialog.
  bool Cancelled() const { return cancelled_; }
  // The code of the chosen option.
  std::int16_t LapReportingMethod() const;
  // True once a new league has been made.
  bool Created() const { return created_; }
  // The open league; null when there is none.
  engine::Database* CurrentDB() const;

  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void UpdateButtons();
  void TakeOver();
  bool Create();
  // Stores what was chosen for the open league. Throws EngineError.
  void StoreProperties();
  app::LeagueProperties Properties() const;

  FormContext& context_;
  bool newDialog_ = true;
  bool cancelled_ = false;
  bool created_ = false;
  std::string fileName_;
  QLineEdit* txtFileName_;
  QComboBox* cboTitle_;
  QComboBox* cboDroppedRaces_;
  QComboBox* cboLeagueType_;
  QButtonGroup* optLapMethod_;
  QPushButton* accept_;
};

}  // namespace scorvane::forms
