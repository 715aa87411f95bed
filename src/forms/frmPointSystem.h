// The point system editor: points and prize money by position, and the points of the bonus rules.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <array>
#include <vector>

#include "championship/PointPresets.h"
#include "forms/FormContext.h"
#include "forms/widgets/EntryBox.h"
#include "forms/widgets/SelectionGrid.h"
#include "scoring/PointSystemEdit.h"

namespace scorvane::forms {

class frmPointSystem : public QDialog {
 public:
  explicit frmPointSystem(FormContext& context, QWidget* parent = nullptr);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void reject() override;

 private:
  enum Box { kTotal, kFrom, kThrough, kInitial, kInterval, kBoxes };

  QWidget* BuildPositions();
  QWidget* BuildBonuses();
  QPushButton* BuildPresets();
  void TakePreset(const championship::PointPreset& preset);
  void Load();
  void ShowPositions();
  void SelectionChanged();
  void ColumnChosen();
  void LeaveBox(Box box);
  void Fill();
  void CellEdited(int row, int column);
  // Positions beyond `count` go; what stood in them can be brought back until the table is saved.
  void Resize(std::size_t count);
  void BringBack();
  void ShowLost();
  void MarkDirty();
  void EnableFrames();
  // What the boxes and the grid hold; a box left empty counts as 0.
  scoring::PointSystemEdit Edited() const;
  bool ReadBonuses(scoring::PointSystemEdit& edited);
  bool Save();
  void OfferRecalculation();
  // True when the dialog may close: nothing has changed, or the user has said what to do with the changes.
  bool MayDiscard();
  int Whole(Box box) const;
  bool FillsPrizeMoney() const { return optPoints_[1]->isChecked(); }

  FormContext& context_;
  scoring::PointSystemEdit edit_;
  std::vector<scoring::PositionPoints> lost_;  // by their places; those that were not lost are empty
  bool loading_ = true;
  bool dirty_ = false;
  QCheckBox* chkUsePositions_ = nullptr;
  QCheckBox* chkUseBonus_ = nullptr;
  SelectionGrid* fgPoints_ = nullptr;
  std::array<EntryBox*, kBoxes> txtPoints_{};
  std::array<QRadioButton*, 2> optPoints_{};
  std::vector<EntryBox*> txtBonus_;
  std::vector<QWidget*> positionControls_;  // what "Use custom points for positions" switches
  std::vector<QWidget*> bonusControls_;
  QPushButton* cmdBringBack_ = nullptr;
  QPushButton* save_ = nullptr;
};

}  // namespace scorvane::forms
