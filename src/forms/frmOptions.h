// The options: simulation folders, start-up and import, and the page defaults of new leagues.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QPushButton>
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

  bool Cancelled() const { return cancelled_; }
  // Stores what was chosen in the template and in the process state. Throws EngineError.
  void StoreOptions();

 protected:
  void reject() override;
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* BuildPathsTab();
  QWidget* BuildHtmlTab();
  void SelectPath();
  void ClearPaths();
  void BrowseImage();
  void Confirm();

  FormContext& context_;
  SelectionGrid* fgPaths_ = nullptr;
  QPushButton* cmdChange_ = nullptr;
  QCheckBox* chkImportAlerts_ = nullptr;
  QCheckBox* chkLastFileFlag_ = nullptr;
  QCheckBox* chkBGImage_ = nullptr;
  EntryBox* txtBGImage_ = nullptr;
  QPushButton* cmdBGImage_ = nullptr;
  std::array<ColorSquare*, 5> lblColor_{};
  bool cancelled_ = false;
};

}  // namespace scorvane::forms
