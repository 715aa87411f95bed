// What was done is taken back and done again: from the main window, in the editors, in the history window,
// and from backups.
#include <gtest/gtest.h>

#include <QAction>
#include <QHeaderView>
#include <QMenuBar>
#include <QToolTip>

#include "app/Commands.h"
#include "engine/EngineError.h"
#include "forms/FormFixture.h"
#include "forms/Undoing.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditRace.h"
#include "forms/frmHistory.h"
#include "forms/frmRaces.h"

namespace scorvane::forms {
namespace {

using Strings = std::vector<std::string>;

class History : public FormFixture {
 protected:
  History() : window_(context_) {}

  // A league of two races and three drivers in the main window.
  std::string OpenSmallLeague(const std::string& name = "small.lgx") {
    const std::string path = folder_.File(name);
    db::CreateLeagueFile(engine_, path, 0, 0, *template_, 0, 0);
    {
      const auto league = engine_.DefaultWorkspace().OpenDatabase(path);
      for (const char* race : {"Daytona", "Bristol"})
        league->Execute(std::string("INSERT INTO Race (Name, Length, Laps) VALUES ('") + race +
                        "','2.5',200)");
      for (const char* driver : {"Ann", "Bob", "Carl"})
        league->Execute(std::string("INSERT INTO Driver (Name) VALUES ('") + driver + "')");
      for (int driver = 1; driver <= 3; ++driver)
        league->Execute("INSERT INTO Stats (RaceID, DriverID, Finish, Points) VALUES (1," +
                        std::to_string(driver) + "," + std::to_string(driver) + ",10)");
    }
    window_.OpenLeagueFile(path);
    Show(window_);
    return path;
  }
  QAction& Item(int index) {
    auto* item = window_.findChild<QAction*>(QStringLiteral("mnuSeason_%1").arg(index));
    if (item == nullptr) throw std::runtime_error("no such item");
    return *item;
  }
  // The entries that go back and forth; in brackets when they cannot be chosen.
  Strings Steps() {
    Strings steps;
    for (const int index : {0, 1}) {
      const std::string text = Utf8(Item(index).text());
      steps.push_back(Item(index).isEnabled() ? text : "(" + text + ")");
    }
    return steps;
  }
  std::string Status() { return Utf8(Find<QLabel>(window_, "lblStatus").text()); }
  std::string Ask(const char* sql) { return test::Single(session_.League(), sql); }
  SelectionGrid& Races() { return Find<SelectionGrid>(window_, "fgRaces"); }
  void Press(QWidget& at, Qt::Key key, Qt::KeyboardModifiers held = Qt::ControlModifier) {
    QTest::keyClick(&at, key, held);
  }
  static std::string Row(const SelectionGrid& grid, int row) {
    std::string text;
    for (int column = 1; column < grid.ColumnCount(); ++column) text += Utf8(grid.Cell(row, column)) + "|";
    return text;
  }

  frmRaces window_;
};

TEST_F(History, TheSeasonMenuNamesWhatItTakesBackAndDoesAgain) {
  EXPECT_EQ(Steps(), (Strings{"(&Undo)", "(&Redo)"}));
  EXPECT_FALSE(Item(2).isEnabled());
  EXPECT_FALSE(Item(4).isEnabled());
  OpenSmallLeague();
  EXPECT_EQ(Steps(), (Strings{"(&Undo)", "(&Redo)"}));
  EXPECT_EQ(Status(), "");

  Races().SelectRows(1, 1);
  ui_.answers = {common::Answer::Yes, common::Answer::Yes};
  Press(Races(), Qt::Key_Delete, {});
  EXPECT_EQ(Status(), "Removed Bristol. Ctrl+Z takes it back.");
  EXPECT_EQ(Steps(), (Strings{"&Undo Remove Bristol", "(&Redo)"}));
  Races().SelectRows(0, 0);
  Press(Races(), Qt::Key_Delete, {});
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "0");

  Press(Races(), Qt::Key_Z);
  EXPECT_EQ(Status(), "Undone: Remove Daytona. Ctrl+Y does it again.");
  EXPECT_EQ(Steps(), (Strings{"&Undo Remove Bristol", "&Redo Remove Daytona"}));
  EXPECT_EQ(Races().RowCount(), 1);
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "3");
  EXPECT_TRUE(Find<QPushButton>(window_, "cmdButton_0").isEnabled());
  Press(Races(), Qt::Key_Z);
  EXPECT_EQ(Races().RowCount(), 2);
  EXPECT_EQ(Utf8(Races().Cell(Races().CurrentRow(), 0)), "Daytona") << "the race that was chosen";
  Press(Races(), Qt::Key_Z);  // there is no more
  Press(Races(), Qt::Key_Y);
  Press(Races(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(Status(), "Done again: Remove Daytona. Ctrl+Z takes it back.");
  EXPECT_EQ(Steps(), (Strings{"&Undo Remove Daytona", "(&Redo)"}));
  EXPECT_EQ(Ask("SELECT Count(*) FROM Race"), "0");

  // It is there when the league is opened again; with the next one the line is empty.
  const std::string path = session_.League().Name();
  window_.CloseLeagueFile();
  EXPECT_EQ(Steps(), (Strings{"(&Undo)", "(&Redo)"}));
  EXPECT_EQ(Status(), "");
  window_.OpenLeagueFile(path);
  EXPECT_EQ(Steps(), (Strings{"&Undo Remove Daytona", "(&Redo)"}));
}

TEST_F(History, WhatADialogDidIsToldWhenItCloses) {
  OpenSmallLeague();
  session_.League().Execute(
      "UPDATE Driver SET Name='A & <b>Ann</b> of a very long name, so long it is' WHERE DriverID=1");
  OnModal([](QWidget& list) {
    auto& grid = Find<SelectionGrid>(list, "fgDList");
    grid.SelectRows(0, 0);
    Click(list, 4);
    grid.SelectRows(1, 2);
    Click(list, 4);
    Click(list, 3);
    Click(list, 5);
  });
  window_.findChild<QAction*>(QStringLiteral("mnuTools_0"))->trigger();
  EXPECT_EQ(Status(), "Included 2 drivers, the last of 3 changes. Ctrl+Z takes it back.");
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  Press(Races(), Qt::Key_Z);
  Press(Races(), Qt::Key_Z);
  EXPECT_EQ(Steps()[0], "&Undo Exclude A && <b>Ann</b> of a very long name, so long it is");
  // Nothing changed, nothing told.
  Press(Races(), Qt::Key_Z);
  const std::string before = Status();
  OnModal([](QWidget& list) { Click(list, 5); });
  window_.findChild<QAction*>(QStringLiteral("mnuTools_0"))->trigger();
  EXPECT_EQ(Status(), before);
  EXPECT_EQ(DoneText("Point system"), "Changed: Point system");
  EXPECT_EQ(DoneText("Merge A into B"), "Merged A into B");
}

TEST_F(History, WhatSomethingElseHasChangedIsNotTakenBackOver) {
  const std::string path = OpenSmallLeague();
  app::SetExclude(session_, {1}, true);
  window_.OpenLeagueFile(path);
  const auto other = engine_.DefaultWorkspace().OpenDatabase(path);
  other->Execute("UPDATE Driver SET Handicap=7 WHERE DriverID=1");
  Item(0).trigger();
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(ui_.messages[0].text, engine::EngineError(engine::kDataChanged).Description());
  EXPECT_EQ(Ask("SELECT Exclude & Handicap FROM Driver WHERE DriverID=1"), "-17");
  EXPECT_EQ(Steps()[0], "&Undo Exclude Ann");

  // Nor is another change taken back than the one that the menu names.
  app::SetExclude(session_, {2}, true);
  Item(0).trigger();
  EXPECT_EQ(Ask("SELECT Exclude FROM Driver WHERE DriverID=2"), "True");
  EXPECT_EQ(Steps()[0], "&Undo Exclude Bob");
  EXPECT_EQ(Status(), "Another program has changed this league; what it holds now is shown.");
  Item(0).trigger();
  EXPECT_EQ(Ask("SELECT Exclude FROM Driver WHERE DriverID=2"), "False");
}

TEST_F(History, TheEditorsTakeBackWhatWasDoneInThem) {
  OpenSmallLeague();
  app::SetExclude(session_, {3}, true);
  frmEditRace editor(context_, {1, false});
  Show(editor);
  auto& results = Find<SelectionGrid>(editor, "fgDrivers");
  results.SelectRows(2, 2);
  Press(results, Qt::Key_Delete, {});
  results.SelectRows(1, 1);
  Press(results, Qt::Key_Delete, {});
  EXPECT_EQ(results.RowCount(), 1);
  Press(results, Qt::Key_Z);
  EXPECT_EQ(Utf8(QToolTip::text()), "<p>Undone: Remove Bob's result, Daytona. Ctrl+Y does it again.</p>");
  Press(results, Qt::Key_Z);
  EXPECT_EQ(results.RowCount(), 3);
  EXPECT_EQ(Utf8(results.Cell(results.CurrentRow(), 2)), "Ann") << "what was chosen";
  Press(results, Qt::Key_Z);  // an earlier change is not the editor's
  EXPECT_EQ(Ask("SELECT Exclude FROM Driver WHERE DriverID=3"), "True");
  Press(results, Qt::Key_Y);
  EXPECT_EQ(results.RowCount(), 2);
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "2");
  editor.close();

  frmDriverList list(context_);
  Show(list);
  auto& drivers = Find<SelectionGrid>(list, "fgDList");
  Press(drivers, Qt::Key_Y);  // nor is that
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "2");
  QTest::mouseClick(drivers.horizontalHeader()->viewport(), Qt::LeftButton, {}, {10, 5});
  QTest::mouseClick(drivers.horizontalHeader()->viewport(), Qt::LeftButton, {}, {10, 5});
  drivers.SelectRows(1, 2);
  EXPECT_EQ(Utf8(drivers.Cell(0, 0)), "Carl");
  ui_.answers = {common::Answer::Yes};
  Press(drivers, Qt::Key_Delete, {});
  Press(drivers, Qt::Key_Z);
  EXPECT_EQ(drivers.RowCount(), 3);
  EXPECT_EQ(Utf8(drivers.Cell(0, 0)), "Carl") << "sorted as before";
  EXPECT_EQ(Utf8(drivers.Cell(drivers.CurrentRow(), 0)), "Carl");
  EXPECT_EQ(Utf8(Find<QLabel>(list, "lblNumDrivers").text()), "3");
}

TEST_F(History, TheWindowListsTheChangesAndGoesBack) {
  const std::string path = OpenSmallLeague();
  app::SetExclude(session_, {1}, true);
  app::Remove(session_, {1});
  app::SetExclude(session_, {2, 3}, true);
  app::Undo(session_);
  int shown = 0;
  frmHistory history(context_, [&shown] { ++shown; });
  Show(history);
  auto& grid = Find<SelectionGrid>(history, "fgHistory");
  ASSERT_EQ(grid.RowCount(), 3);
  EXPECT_EQ(Row(grid, 0), "Exclude 2 drivers|2 drivers|Undone|");
  EXPECT_EQ(Row(grid, 1), "Remove Daytona|1 race, 3 results||");
  EXPECT_EQ(Row(grid, 2), "Exclude Ann|1 driver||");
  EXPECT_EQ(grid.Cell(0, 0).size(), 16);
  EXPECT_EQ(grid.CurrentRow(), 1) << "what can be taken back next";
  grid.SelectRows(0, 0);
  EXPECT_FALSE(Button(history, 0).isEnabled()) << "it is undone already";
  grid.SelectRows(1, 2);
  EXPECT_FALSE(Button(history, 0).isEnabled());
  grid.SelectRows(2, 2);

  ui_.answers = {common::Answer::No, common::Answer::Yes};
  Press(grid, Qt::Key_Return, {});
  EXPECT_TRUE(ui_.messages.back().text.starts_with(
      "This takes back the last 2 changes, to before \"Exclude Ann\" of "));
  EXPECT_EQ(shown, 0);
  Click(history, 0);
  EXPECT_EQ(shown, 1);
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "3");
  EXPECT_EQ(Ask("SELECT Count(*) FROM Driver WHERE Exclude=True"), "0");
  EXPECT_EQ(Row(grid, 2), "Exclude Ann|1 driver|Undone|");
  Press(grid, Qt::Key_Y);
  EXPECT_EQ(Row(grid, 2), "Exclude Ann|1 driver||");
  EXPECT_EQ(grid.CurrentRow(), 2);

  ui_.answers = {common::Answer::No, common::Answer::Yes};
  Click(history, 1);
  EXPECT_EQ(grid.RowCount(), 3);
  Click(history, 1);
  EXPECT_EQ(grid.RowCount(), 0);
  EXPECT_FALSE(Button(history, 0).isEnabled());
  EXPECT_FALSE(Button(history, 1).isEnabled());
  EXPECT_EQ(Ask("SELECT Count(*) FROM Driver WHERE Exclude=True"), "1") << "what was done stays";
  Press(grid, Qt::Key_Z);
  Press(grid, Qt::Key_Return, {});
  Press(history, Qt::Key_Escape, {});
  EXPECT_FALSE(history.isVisible());

  // From the menu: the grid behind it follows.
  ui_.answers = {common::Answer::Yes};
  app::Remove(session_, {2});
  window_.OpenLeagueFile(path);
  EXPECT_EQ(Races().RowCount(), 1);
  OnModal([this](QWidget& dialog) {
    Click(dialog, 0);
    EXPECT_EQ(Races().RowCount(), 2);
    Click(dialog, 2);
  });
  Item(2).trigger();
  EXPECT_EQ(Steps(), (Strings{"(&Undo)", "&Redo Remove Bristol"}));
}

TEST_F(History, ABackupIsWrittenAndPutBack) {
  const std::string path = OpenSmallLeague("o'né.lgx");
  const std::string folder = folder_.File("Backups");
  ui_.filesToSave = {""};
  Item(4).trigger();
  EXPECT_FALSE(std::filesystem::exists(folder)) << "nothing was chosen";
  EXPECT_EQ(ui_.dialogs.back().folder, folder_.File("Backups/"));
  EXPECT_TRUE(ui_.dialogs.back().name.starts_with("o'né 20"));
  ui_.filesToSave = {path, folder_.File("copy"), folder_.File("copy"), folder_.File("copy"),
                     folder_.File("open.lgx/no/folder.lgx")};
  ui_.answers = {common::Answer::No, common::Answer::Yes};
  std::ofstream(folder_.File("open.lgx")) << "a file";
  for (int i = 0; i < 5; ++i) Item(4).trigger();
  ASSERT_EQ(ui_.messages.size(), 4U);
  EXPECT_EQ(ui_.messages[0].text, "A backup does not go in the place of its own league.");
  EXPECT_EQ(ui_.messages[1].title, "File Exists");
  EXPECT_EQ(ui_.messages[3].icon, common::MessageIcon::Critical);
  EXPECT_EQ(Status(), "Wrote the backup " + folder_.File("copy.lgx") + ".");

  app::Remove(session_, {1, 2});
  std::ofstream(folder_.File("text.lgx")) << "no league";
  ui_.messages.clear();
  ui_.filesToOpen = {
      {}, {path}, {folder_.File("text.lgx")}, {folder_.File("copy.lgx")}, {folder_.File("copy.lgx")}};
  ui_.answers = {common::Answer::Yes, common::Answer::No, common::Answer::Yes};
  Item(5).trigger();
  Item(5).trigger();
  EXPECT_EQ(ui_.messages.back().text, "That is the league itself, and no backup of it.");
  Item(5).trigger();
  EXPECT_NE(ui_.messages.back().text.find("Unrecognized database format"), std::string::npos);
  EXPECT_EQ(session_.League().Name(), path) << "open as it was";
  Item(5).trigger();
  EXPECT_EQ(Ask("SELECT Count(*) FROM Race"), "0");
  Item(5).trigger();
  EXPECT_EQ(Races().RowCount(), 2);
  EXPECT_EQ(Utf8(window_.windowTitle()), "o'né - Scorvane");
  const std::string& said = ui_.messages.back().text;
  const std::string kept = said.substr(said.find('"') + 1, said.rfind('"') - said.find('"') - 1);
  EXPECT_TRUE(kept.starts_with(folder)) << kept;
  EXPECT_EQ(test::Single(*engine_.DefaultWorkspace().OpenDatabase(kept), "SELECT Count(*) FROM Race"), "0");

  // A league that does not open any more gets its place back, too.
  window_.CloseLeagueFile();
  std::ofstream(platform::SystemPath(path)) << "damaged";
  ui_.filesToOpen = {{folder_.File("copy.lgx")}};
  ui_.filesToSave = {path};
  ui_.answers = {common::Answer::Yes};
  Item(5).trigger();
  EXPECT_EQ(Races().RowCount(), 2);
}

TEST_F(History, TheDaysFirstChangeKeepsABackupOrSaysWhyNot) {
  OpenSmallLeague();
  app::SaveBackupOptions(*template_, {folder_.File("kept"), 2});
  Races().SelectRows(0, 0);
  ui_.answers = {common::Answer::Yes, common::Answer::Yes};
  Press(Races(), Qt::Key_Delete, {});
  ASSERT_TRUE(std::filesystem::exists(folder_.File("kept")));
  std::vector<std::filesystem::path> copies;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.File("kept")))
    copies.push_back(entry.path());
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(
      test::Single(*engine_.DefaultWorkspace().OpenDatabase(copies[0].string()), "SELECT Count(*) FROM Race"),
      "2");
  EXPECT_EQ(Status(), "Removed Daytona. Ctrl+Z takes it back.");

  OpenSmallLeague("other.lgx");
  std::ofstream(folder_.File("file")) << "no folder";
  app::SaveBackupOptions(*template_, {folder_.File("file"), 2});
  Press(Races(), Qt::Key_Delete, {});
  EXPECT_TRUE(Status().starts_with(
      "Removed Daytona. Ctrl+Z takes it back.\nToday's backup of the league could not be made: "))
      << Status();
}

}  // namespace
}  // namespace scorvane::forms
