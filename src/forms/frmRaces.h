// The main window: the races of the open league file, the buttons below them, the menus above.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <functional>
#include <vector>

#include "app/RecentFiles.h"
#include "forms/FormContext.h"
#include "forms/SeasonMenu.h"
#include "forms/WatchBar.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {

class frmAddRaces;

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
  bool event(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  // What must be there before a command can be chosen.
  enum class Needs { Nothing, League, OfflineLeague, Races, OneRace };
  struct Command {
    QAction* item;
    Needs needs;
  };
  using Handler = void (frmRaces::*)();

  void BuildGrid(QWidget* parent);
  void BuildFileMenu();
  QLayout* BuildRaceMenu(QWidget* parent);
  void BuildToolsMenu();
  void BuildSeasonMenu();
  void BuildHelpMenu();
  QAction* AddItem(QMenu* menu, const char* name, int index, const char* icon, const QString& caption,
                   const QKeySequence& shortcut, Handler handler, Needs needs = Needs::Nothing);
  // Every command of the user comes through here, from a menu, a button or a key.
  void Run(Handler command);
  void ShowRecentFiles();
  void ShowNoRaces();
  // The one place that decides what can be chosen, and what an empty grid says.
  void UpdateCommands();
  bool IsMet(Needs needs) const;
  QString Hint() const;
  bool HasRaces() const { return grid_->HighestData() != 0; }
  // What the open league holds now; the chosen race stays chosen while it is there.
  void ShowLeagueAgain();
  void ShowOthersChanges();

  void NewLeagueFile();
  void OpenLeagueFileDialog();
  void ShowProperties();
  void Import();
  void ImportOffered(const std::vector<std::string>& paths);
  // Shows what it brought.
  void ImportBy(const std::function<void(frmAddRaces& dialog)>& import);
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
  std::vector<std::string> dropped_;  // to be imported
  WatchBar* watch_ = nullptr;
  SelectionGrid* grid_ = nullptr;
  QMenu* mnuSeason_ = nullptr;
  SeasonMenu* season_ = nullptr;
  std::vector<Command> commands_;
  std::vector<QAction*> recentItems_;  // by slot
  QAction* recentSeparator_ = nullptr;
};

}  // namespace scorvane::forms
