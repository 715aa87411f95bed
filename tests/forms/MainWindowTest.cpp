// The main window, driven through its widgets.
#include <gtest/gtest.h>

#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <fstream>

#include "app/RaceList.h"
#include "app/RecentFiles.h"
#include "common/ScriptedUserInterface.h"
#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"
#include "forms/FormContext.h"
#include "forms/frmRaces.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

class MainWindow : public test::LeagueFixture {
 protected:
  MainWindow() : session_(engine_, *template_, state_, ui_), window_(context_) {}

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

  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
  app::LeagueSession session_;
  FormContext context_{engine_, *template_, state_, ui_, session_};
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

  // Deleted behind the window's back: what the program has open goes on working, and closing it says nothing.
  std::filesystem::remove(good);
  window_.CloseLeagueFile();
  EXPECT_EQ(ui_.messages.size(), 2U);
}

}  // namespace
}  // namespace scorvane::forms
