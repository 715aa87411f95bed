// The race results editor, for a race of the league or one that is being imported.
#pragma once

#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <map>
#include <vector>

#include <QPushButton>

#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"
#include "scoring/RaceResults.h"

namespace scorvane::forms {

class frmEditRace : public QDialog {
 public:
  frmEditRace(FormContext& context, scoring::RaceKey race, QWidget* parent = nullptr);

  // Whether anything was edited since the dialog opened.
  bool Edited() const { return edited_; }

 private:
  void ShowHeader(QGridLayout* layout);
  void FillGrid();
  void ShowAgain();
  SelectionGrid::Row RowOf(const scoring::RaceResult& result) const;
  void SelectionChanged();
  bool AgreesToAdd(const std::string& driver);
  void AddResult();
  void EditResult(int row);
  void RemoveResults();
  void Recalculate();
  void GivePenalty();
  // Where the race has penalties an edit of one result may change others.
  void ShowOutcome();
  // Says whether the rows, as they were handed over, are not in the order of finish any more.
  void ShowOrder();
  bool HasResults() const { return grid_->HighestData() != 0; }
  QString Speed(const engine::Value& speed) const;

  FormContext& context_;
  scoring::RaceKey race_;
  scoring::RaceHeader header_;
  bool averageSpeed_;
  bool edited_ = false;
  QLabel* lblOrder_ = nullptr;
  SelectionGrid* grid_;
  std::map<int, QPushButton*> buttons_;
  QPushButton* cmdPenalty_ = nullptr;              // none in a race that is being imported
  std::map<std::int32_t, std::string> penalties_;  // by result
};

}  // namespace scorvane::forms
