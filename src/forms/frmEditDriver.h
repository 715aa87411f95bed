// The driver editor: adds a driver or changes one, with his team and make, and offers to merge two of one
// name.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Commands.h"
#include "drivers/Roster.h"
#include "forms/FormContext.h"
#include "forms/RaceChoice.h"
#include "forms/widgets/EntryBox.h"

namespace scorvane::forms {

class frmEditDriver : public QDialog {
 public:
  enum EditMode { kAdd = 0, kEdit = 1 };

  explicit frmEditDriver(FormContext& context, QWidget* parent = nullptr);

  // Set before Mode kEdit; afterwards the new driver's key or, after a merge, the surviving driver's.
  void DriverID(std::int32_t id) { driverId_ = id; }
  std::int32_t DriverID() const { return driverId_; }
  // Prepares the dialog; for kEdit with the driver's data.
  void Mode(EditMode mode);

  bool Cancelled() const { return cancelled_; }
  bool Merged() const { return merged_; }
  std::string DriverName() const;
  void DriverName(const std::string& name);
  bool Excluded() const { return chkExcluded_->isChecked(); }
  void Excluded(bool excluded) { chkExcluded_->setChecked(excluded); }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void reject() override;

 private:
  struct GroupFields {
    QComboBox* group = nullptr;
    RaceChoice* from = nullptr;
    QLabel* soFar = nullptr;
    QString before;     // where he is now
    bool never = true;  // he has been in none
  };

  QWidget* BuildGroups(QWidget* parent);
  void LoadGroups();
  std::vector<app::GroupChoice> Choices() const;
  drivers::Driver Typed() const;
  bool SaveNewDriver();
  bool SaveDriver();
  void Save();

  FormContext& context_;
  EntryBox* txtName_;
  EntryBox* txtHandicap_;
  QCheckBox* chkRookie_;
  QCheckBox* chkExcluded_;
  std::array<GroupFields, 2> groups_;  // the team, the make
  QPushButton* save_;
  EditMode mode_ = kAdd;
  std::int32_t driverId_ = 0;
  bool cancelled_ = true;
  bool merged_ = false;
};

}  // namespace scorvane::forms
