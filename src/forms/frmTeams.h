// The league's teams and makes: which there are, who belongs to them from which race on, and how many of
// their results count.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>
#include <map>
#include <vector>

#include "championship/Teams.h"
#include "forms/FormContext.h"
#include "forms/RaceChoice.h"
#include "forms/widgets/EntryBox.h"
#include "forms/widgets/NumberBox.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmTeams : public QDialog {
 public:
  explicit frmTeams(FormContext& context, QWidget* parent = nullptr);

 protected:
  void done(int result) override;

 private:
  QLayout* BuildGroups();
  QLayout* BuildMembers();
  // What the league holds now of the kind that is chosen; the group with this id is selected.
  void Load(std::int32_t groupId);
  void ShowKind();
  void ShowChosen();
  void UpdateButtons();
  const championship::Group* Chosen() const;
  std::vector<championship::Member> SelectedMembers() const;
  void AddGroup();
  void RenameGroup();
  void RemoveGroup();
  void Join();
  void Leave();
  void StoreBest();

  FormContext& context_;
  championship::GroupKind kind_ = championship::GroupKind::Team;
  std::vector<championship::Group> groups_;    // by the rows of their grid
  std::vector<championship::Member> members_;  // of all groups of the kind
  std::vector<championship::Member> shown_;    // by the rows of their grid
  QTabBar* tabs_;
  SelectionGrid* fgGroups_ = nullptr;
  SelectionGrid* fgMembers_ = nullptr;
  EntryBox* txtName_ = nullptr;
  NumberBox* spnBest_ = nullptr;
  RaceChoice* cboFrom_ = nullptr;
  std::map<int, QPushButton*> buttons_;
};

}  // namespace scorvane::forms
