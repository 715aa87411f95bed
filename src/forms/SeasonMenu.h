// The entries of the Season menu: what goes back and forth in what was done to the open league, what keeps
// copies of it, and the windows of the season; and the line at the foot of the main window that says what was
// done last.
#pragma once

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "forms/FormContext.h"
#include "forms/Undoing.h"

namespace scorvane::forms {

class frmSeasonView;

class SeasonMenu : public QObject {
 public:
  // What the main window does for it.
  struct Host {
    std::function<void()> show;  // what the open league holds now
    std::function<void(const std::string& path)> open;
    std::function<void()> close;
  };
  // Adds its entries to the menu and the line to the window, which owns this object.
  SeasonMenu(FormContext& context, QMainWindow* window, QMenu* menu, Host host);

  ~SeasonMenu() override;

  // To be called when another league, or none, is open: nothing has been done to it yet.
  void LeagueChanged();
  // To be called when another program has changed the open league.
  void OthersChanged();
  // To be called after each command of the user: says what it changed, and names what can be taken back now.
  void AfterCommand();

 private:
  void UpdateItems();
  // With what went wrong with the day's backup, on a line of its own because it may be long.
  void Say(const QString& text);
  void Step(Direction direction);
  void ShowHistory();
  void ShowSeason();
  void RefreshSeason();
  // Any other window of the season, and what it changed.
  template <typename Form>
  void ShowForm();
  void SaveSpreadsheet();
  void BackUp();
  void Restore();
  // Asks for the backup and for the league whose place it takes; empty paths when the user thinks better of
  // it.
  struct Replacement {
    std::string from;
    std::string path;
  };
  Replacement AskWhatToRestore();

  FormContext& context_;
  QMainWindow* window_;
  Host host_;
  QAction* undo_;
  QAction* redo_;
  QAction* history_;
  QAction* backUp_;
  QAction* penalties_;
  QAction* teams_;
  QAction* playoff_;
  QAction* whatIf_;
  QAction* season_;
  QAction* publish_;
  QAction* spreadsheet_;
  std::unique_ptr<frmSeasonView> view_;  // made when it is first asked for
  QLabel* lblStatus_;
  std::int64_t nextUndo_ = 0;  // what the entries name; 0: nothing
  std::int64_t nextRedo_ = 0;
  std::int64_t told_ = 0;  // the newest change that has been told of
};

}  // namespace scorvane::forms
