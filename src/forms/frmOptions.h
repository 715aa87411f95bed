// The options: simulation folders, start-up and import, the page defaults of new leagues, backups, and the
// folder that is watched for the open league. OK and the close box store them in the template.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <array>

#include "app/Options.h"
#include "forms/FormContext.h"
#include "forms/widgets/ColorSquare.h"
#include "forms/widgets/EntryBox.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmOptions : public QDialog {
 public:
  explicit frmOptions(FormContext& context, QWidget* parent = nullptr);

  // True once Cancel, or the Esc key, has ended the dialog: nothing was stored.
  bool Cancelled() const { return cancelled_; }

 protected:
  void reject() override;
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* BuildPathsTab();
  QWidget* BuildHtmlTab();
  QWidget* BuildBackupsTab();
  QWidget* BuildWatchTab();
  void SelectPath();
  void ClearPaths();
  void BrowseImage();
  void BrowseBackups();
  void BrowseWatched();
  // Whether there is such a folder now; one that is not may come.
  void ShowWatched();
  app::Options Chosen() const;
  void Confirm();
  bool Store();

  FormContext& context_;
  SelectionGrid* fgPaths_ = nullptr;
  QPushButton* cmdChange_ = nullptr;
  QCheckBox* chkImportAlerts_ = nullptr;
  QCheckBox* chkLastFileFlag_ = nullptr;
  QCheckBox* chkBGImage_ = nullptr;
  EntryBox* txtBGImage_ = nullptr;
  QPushButton* cmdBGImage_ = nullptr;
  std::array<ColorSquare*, 5> lblColor_{};
  EntryBox* txtBackupFolder_ = nullptr;
  QSpinBox* spnBackupDays_ = nullptr;
  QCheckBox* chkWatch_ = nullptr;
  EntryBox* txtWatchFolder_ = nullptr;
  QLabel* lblWatchState_ = nullptr;
  bool cancelled_ = false;
};

}  // namespace scorvane::forms
