// The playoff of the league: one of the formats that are known, or one from a file, with what it means.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <map>
#include <optional>
#include <vector>

#include "championship/Playoff.h"
#include "forms/FormContext.h"
#include "forms/widgets/NumberBox.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmPlayoff : public QDialog {
 public:
  explicit frmPlayoff(FormContext& context, QWidget* parent = nullptr);

 private:
  // What the box offers; without a format: no playoff.
  struct Entry {
    QString text;
    std::optional<championship::PlayoffFormat> format;
    QString source;
  };

  void BuildControls();
  void BuildGrids();
  void Load();
  void AddEntry(const Entry& entry);
  // The chosen format as it is to be stored.
  std::optional<championship::PlayoffFormat> Chosen() const;
  void ShowEntry();
  void ShowFormat();
  void ShowOutlook(const std::optional<championship::PlayoffFormat>& format);
  void LoadFile();
  void SaveFile();
  void Save();

  FormContext& context_;
  std::vector<Entry> entries_;  // by the lines of the box
  std::optional<championship::PlayoffFormat> stored_;
  bool unreadable_ = false;  // what the league holds is no format
  QComboBox* cboFormat_ = nullptr;
  NumberBox* spnAfter_ = nullptr;
  QLabel* lblRace_ = nullptr;
  QLabel* lblSource_ = nullptr;
  QLabel* lblOutlook_ = nullptr;
  SelectionGrid* fgStages_ = nullptr;
  SelectionGrid* fgOutlook_ = nullptr;
  std::map<int, QPushButton*> buttons_;
};

}  // namespace scorvane::forms
