// The main window: the races of the open league file, the buttons below them, the menus above.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QPushButton>
#include <array>
#include <vector>

#include "app/RecentFiles.h"
#include "forms/FormContext.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmRaces : public QMainWindow {
 public:
  explicit frmRaces(FormContext& context);

  // What start-up does once the window is there: simulations, recent files, the file to open. `argument` is
  // the file that the command line names, empty for none.
  void StartUp(const std::string& argument);

  void OpenLeagueFile(const std::string& path);
  void CloseLeagueFile();
  void FillRaceGrid();
  void ShowOptions();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  enum Button { kCalculateButton, kEditButton, kRemoveButton, kImportButton, kHtmlButton, kButtons };
  enum RaceItem { kImportItem = 0, kRemoveItem = 1, kEditItem = 2, kCalculateItem = 4, kHtmlItem = 6 };
  enum ToolItem { kDriverListItem = 0, kPointSystemItem = 1, kOfflineSettingsItem = 3 };

  void BuildMenus();
  QAction* AddItem(QMenu* menu, const char* name, int index, const QString& caption,
                   const QKeySequence& shortcut, void (frmRaces::*command)());
  void ShowRecentFiles();
  void ShowNoRaces();
  // The commands that need races; Edit and HTML then follow the selection.
  void EnableRaceCommands(bool enabled);
  void SelectionChanged();
  bool HasRaces() const { return grid_->RowData(0) != 0; }

  void NewLeagueFile();
  void OpenLeagueFileDialog();
  void ShowProperties();
  void Import();
  void RemoveRaces();
  void EditRace();
  void Calculate();
  void ExportRace();
  void DriverList();
  void PointSystem();
  void OfflineSettings();
  void ViewReadMe();
  void About();

  FormContext& context_;
  app::RecentFiles recent_;
  SelectionGrid* grid_ = nullptr;
  std::array<QPushButton*, kButtons> buttons_{};
  std::array<QAction*, 18> fileItems_{};
  std::array<QAction*, 7> raceItems_{};
  std::array<QAction*, 4> toolItems_{};
};

}  // namespace scorvane::forms
