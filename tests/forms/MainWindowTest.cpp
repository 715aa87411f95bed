// The main window, driven through its widgets.
#include <gtest/gtest.h>

#include <QAction>
#include <QMenuBar>

#include "app/RaceList.h"
#include "app/RecentFiles.h"
#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmRaces.h"

namespace scorvane::forms {
namespace {

class MainWindow : public FormFixture {
 protected:
  MainWindow() : window_(context_) {}

  std::string League(const std::string& name, int races, std::int16_t leagueType = 0) {
    const std::string path = folder_.File(name);
    db::CreateLeagueFile(engine_, path, 0, leagueType, *template_, 0, 0);
    const auto league = engine_.DefaultWorkspace().OpenDatabase(path);
    for (int i = 1; i <= races; ++i) {
      const std::string number = std::to_string(i);
      league->Execute("INSERT INTO Race (Name, FileName, Length, Laps) VALUES ('Track " + number + "','" +
                      number + ".stn','2.5'," + std::to_string(100 + i) + ")");
    }
    return path;
  }

  bool Enabled(const char* name) {
    const QString objectName = QString::fromLatin1(name);
    if (auto* button = window_.findChild<QPushButton*>(objectName)) return button->isEnabled();
    auto* action = window_.findChild<QAction*>(objectName);
    EXPECT_NE(action, nullptr) << name;
    return action != nullptr && action->isEnabled();
  }
  QAction* Item(const char* name) { return window_.findChild<QAction*>(QString::fromLatin1(name)); }
  SelectionGrid* Grid() { return window_.findChild<SelectionGrid*>(QStringLiteral("fgRaces")); }
  std::string Title() { return Utf8(window_.windowTitle()); }

  // What the grid says where there is no race yet; empty when it says nothing.
  std::string Hint() {
    const auto& label = Find<QLabel>(window_, "lblHint");
    EXPECT_EQ(Grid()->accessibleDescription(), label.text());
    return label.isHidden() ? std::string() : Utf8(label.text());
  }
  frmRaces window_;
};

TEST_F(MainWindow, CommandsFollowTheState) {
  const char* const all[] = {"cmdButton_0", "cmdButton_1", "cmdButton_2", "cmdButton_3", "cmdButton_4",
                             "mnuRace_0",   "mnuRace_1",   "mnuRace_2",   "mnuRace_4",   "mnuRace_6",
                             "mnuTools_0",  "mnuTools_1",  "mnuTools_3",  "mnuFile_8"};
  for (const char* name : all) EXPECT_FALSE(Enabled(name)) << name;
  EXPECT_EQ(Grid()->RowCount(), 1);

  window_.OpenLeagueFile(League("empty.lgx", 0));
  EXPECT_EQ(Title(), "empty - Scorvane");
  EXPECT_EQ(Grid()->RowCount(), 1);
  for (const char* name : {"cmdButton_3", "mnuRace_0", "mnuFile_8"}) EXPECT_TRUE(Enabled(name)) << name;
  for (const char* name : {"cmdButton_0", "cmdButton_2", "mnuRace_1", "mnuRace_4"})
    EXPECT_FALSE(Enabled(name)) << name;

  window_.OpenLeagueFile(League("three.lgx", 3));
  EXPECT_EQ(Grid()->RowCount(), 3);
  EXPECT_EQ(Utf8(Grid()->Cell(0, 2)), "252");  // 2.5 miles, 101 laps: 252.5 goes to the even neighbour
  session_.League().Execute("UPDATE Race SET Length='2.66', Laps=125");
  EXPECT_EQ(app::ListRaces(session_.League())[0].miles, "332")
      << "332.5, though 2.66 is stored as a little more";
  for (const char* name : {"cmdButton_0", "cmdButton_2", "mnuRace_1", "mnuRace_4"})
    EXPECT_TRUE(Enabled(name)) << name;

  window_.CloseLeagueFile();
  for (const char* name : all) EXPECT_FALSE(Enabled(name)) << name;
  EXPECT_EQ(Title(), "Scorvane");
}

TEST_F(MainWindow, RemovesTheSelectedRaces) {
  window_.OpenLeagueFile(League("three.lgx", 3));
  window_.show();
  Grid()->SelectRows(1, 1);
  ui_.answers = {common::Answer::No, common::Answer::Yes, common::Answer::Yes};
  QTest::keyClick(Grid(), Qt::Key_Delete);
  EXPECT_EQ(Grid()->RowCount(), 3);
  QTest::keyClick(Grid(), Qt::Key_Delete);
  EXPECT_EQ(Grid()->RowCount(), 2);
  EXPECT_EQ(Utf8(Grid()->Cell(1, 0)), "Track 3");
  ASSERT_EQ(ui_.messages.size(), 2U);
  EXPECT_EQ(ui_.messages[0].text,
            "This will remove the results of this race and cannot be undone.\r\nDo you want to continue?");
  EXPECT_EQ(ui_.messages[0].title, "Confirmation");

  // All of them at once: the grid keeps an empty row, and a further Delete removes nothing.
  QTest::keyClick(Grid(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(Grid()->FirstSelected(), 0);
  EXPECT_EQ(Grid()->LastSelected(), 1);
  QTest::mouseClick(window_.findChild<QPushButton*>(QStringLiteral("cmdButton_2")), Qt::LeftButton);
  EXPECT_EQ(Grid()->RowCount(), 1);
  EXPECT_EQ(Grid()->RowData(0), 0);
  EXPECT_FALSE(Enabled("cmdButton_2"));
  EXPECT_TRUE(Enabled("cmdButton_3"));
  ui_.answers = {common::Answer::Yes};
  QTest::keyClick(Grid(), Qt::Key_Delete);
  QTest::keyClick(Grid(), Qt::Key_Return);
  EXPECT_EQ(test::Single(session_.League(), "SELECT Count(*) FROM Race"), "0");
}

TEST_F(MainWindow, RecentFilesAreKept) {
  std::vector<std::string> paths;
  for (int i = 0; i < 5; ++i) paths.push_back(League("league " + std::to_string(i) + ".lgx", 1));
  EXPECT_FALSE(Item("mnuFile_12")->isVisible());
  for (const std::string& path : paths) window_.OpenLeagueFile(path);
  EXPECT_EQ(Utf8(Item("mnuFile_12")->text()), "&1 " + paths[4]);
  EXPECT_EQ(Utf8(Item("mnuFile_15")->text()), "&4 " + paths[1]);
  Item("mnuFile_14")->trigger();
  EXPECT_EQ(Title(), "league 2 - Scorvane");
  EXPECT_EQ(Utf8(Item("mnuFile_12")->text()), "&1 " + paths[2]);
  EXPECT_EQ(Utf8(Item("mnuFile_13")->text()), "&2 " + paths[4]);
  window_.close();
  EXPECT_EQ(common::GetSettingValue(*template_, 7), paths[2]);
  EXPECT_EQ(common::GetSettingValue(*template_, 10), paths[1]);

  std::filesystem::remove(paths[4]);
  app::RecentFiles next;
  next.Load(*template_);
  EXPECT_EQ(next[0], paths[2]);
  EXPECT_EQ(next[1], paths[3]);
  EXPECT_EQ(next[3], "");
}

TEST_F(MainWindow, BadFilesLeaveAMessageAndAWorkingWindow) {
  const std::string good = League("good.lgx", 2);
  window_.OpenLeagueFile(good);
  window_.OpenLeagueFile(folder_.File("gone.lgx"));
  EXPECT_EQ(Title(), "good - Scorvane");
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(ui_.messages[0].text, "\"" + folder_.File("gone.lgx") + "\" does not exist!");
  EXPECT_EQ(ui_.messages[0].title, "Open File Error");

  const std::string text = folder_.File("text.lgx");
  {
    std::ofstream(text) << "not a league at all, but long enough to look at: " << std::string(200, '.');
  }
  window_.OpenLeagueFile(text);
  ASSERT_EQ(ui_.messages.size(), 2U);
  EXPECT_NE(ui_.messages[1].text.find("Unrecognized database format"), std::string::npos);
  EXPECT_EQ(Title(), "Scorvane");
  EXPECT_FALSE(Enabled("cmdButton_3"));
  window_.OpenLeagueFile(good);
  EXPECT_EQ(Grid()->RowCount(), 2);

  // Deleted behind the window's back, where the system lets it: what the program has open goes on working,
  // and closing it says nothing.
  std::error_code held;
  std::filesystem::remove(good, held);
  window_.CloseLeagueFile();
  EXPECT_EQ(ui_.messages.size(), 2U);
}

TEST_F(MainWindow, AnEmptyWindowSaysHowToGoOn) {
  Show(window_);
  EXPECT_NE(Hint().find("Ctrl+N"), std::string::npos);
  window_.OpenLeagueFile(League("empty.lgx", 0));
  EXPECT_NE(Hint().find("Ctrl+I"), std::string::npos);
  EXPECT_EQ(Grid()->RowCount(), 1) << "it is no row";
  // It lies in the middle, and what is clicked there is the grid.
  const auto& label = Find<QLabel>(window_, "lblHint");
  EXPECT_TRUE(Grid()->rect().contains(label.geometry()));
  EXPECT_GT(label.y(), Grid()->viewport()->y() + Grid()->rowHeight(0) - 1);
  EXPECT_EQ(Grid()->childAt(label.geometry().center()), Grid()->viewport());
  window_.OpenLeagueFile(League("three.lgx", 3));
  EXPECT_EQ(Hint(), "");
  ui_.answers = {common::Answer::Yes};
  QTest::keyClick(Grid(), Qt::Key_A, Qt::ControlModifier);
  Click(window_, 2);
  EXPECT_NE(Hint().find("Ctrl+I"), std::string::npos);
}

TEST_F(MainWindow, ALeagueFileIsDroppedToOpenIt) {
  const std::string one = League("o'né.LGX", 1);
  Drop(window_, {folder_.File("text.txt")});
  Drop(window_, {one, one});
  EXPECT_FALSE(session_.IsOpen());
  Drop(window_, {one});
  EXPECT_EQ(Title(), "o'né - Scorvane");
  Drop(window_, {folder_.File("gone.lgx")});
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_TRUE(session_.IsOpen());
}

TEST_F(MainWindow, ResultFilesAreDroppedToImportThem) {
  const std::string season = SCORVANE_SOURCE_DIR "/share/samples/season-1998";
  EXPECT_FALSE(Drop(window_, {season})) << "no league is open";
  window_.OpenLeagueFile(League("dropped.lgx", 3));
  EXPECT_FALSE(Drop(window_, {folder_.File("text.txt")}));
  QTimer::singleShot(300, &window_, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(Find<QListWidget>(*dialog, "lstRaces").count(), 33);
    Click(*dialog, 3);
  });
  window_.show();
  Drop(window_, {season});
  EXPECT_EQ(Grid()->RowCount(), 36);
  EXPECT_TRUE(Grid()->viewport()->rect().intersects(Grid()->visualRect(Grid()->model()->index(35, 0))));
  EXPECT_EQ(Utf8(Find<QLabel>(window_, "lblStatus").text()), "Imported 33 files. Ctrl+Z takes it back.");
}

TEST_F(MainWindow, TheMenusStandAsTheyAreAndNoneIsEmpty) {
  Show(window_);
  std::string shown;
  for (const QAction* menu : window_.menuBar()->actions())
    if (menu->isVisible()) shown += Utf8(menu->text()) + " ";
  EXPECT_EQ(shown, "&File &Race &Tools &Season &Help ");
}

TEST_F(MainWindow, ALeagueThatWasNotMadeIsNotOpened) {
  Show(window_);
  OnModal([this](QWidget& dialog) {
    Find<QLineEdit>(dialog, "txtFileName").setText(Q(folder_.File("a")));
    Click(dialog, 0);
    Find<QComboBox>(dialog, "cboTitle").setCurrentIndex(0);
    Find<QLineEdit>(dialog, "txtFileName").setText(Q(folder_.File("no such folder/a")));
    Click(dialog, 0);
    dialog.close();
  });
  Item("mnuFile_0")->trigger();
  EXPECT_EQ(ui_.messages.size(), 2U) << testing::PrintToString(ui_.messages);
}

TEST_F(MainWindow, WhatAnotherProgramHasChangedIsShownWhenTheWindowComesBack) {
  const std::string path = League("shared.lgx", 3);
  window_.OpenLeagueFile(path);
  Show(window_);
  Grid()->SelectRows(2, 2);
  const auto other = engine_.DefaultWorkspace().OpenDatabase(path);
  other->Execute("DELETE FROM Race WHERE RaceID=1");
  other->Execute("UPDATE Race SET Name='<b>Näme</b>' WHERE RaceID=2");
  common::StoreSetting(*other, common::kDroppedRaces, "7");
  const auto comeBack = [this] {
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(&window_, &activated);
  };
  comeBack();
  EXPECT_EQ(Grid()->RowCount(), 2);
  EXPECT_EQ(Utf8(Grid()->Cell(0, 0)), "<b>Näme</b>");
  EXPECT_EQ(Grid()->RowData(Grid()->CurrentRow()), 3) << "the race that was chosen";
  EXPECT_EQ(state_.droppedRaces, 7);

  // Only once, and not for what this program writes itself.
  Grid()->SetCell(0, 0, QStringLiteral("as it was"));
  session_.League().Execute("UPDATE Race SET Laps=1");
  comeBack();
  EXPECT_EQ(Utf8(Grid()->Cell(0, 0)), "as it was");
}

}  // namespace
}  // namespace scorvane::forms
