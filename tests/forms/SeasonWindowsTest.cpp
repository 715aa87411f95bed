// Teams, makes, playoffs and what-if through the windows.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>

#include "app/Commands.h"
#include "forms/FormFixture.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditDriver.h"
#include "forms/frmExport.h"
#include "forms/frmPlayoff.h"
#include "forms/frmPointSystem.h"
#include "forms/frmRaces.h"
#include "forms/frmStats.h"
#include "forms/frmTeams.h"
#include "forms/frmWhatIf.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {
namespace {

using championship::GroupKind;
using testing::ElementsAre;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

class SeasonWindows : public FormFixture {
 protected:
  // Three races of four drivers: Driver 1 wins the first, Driver 2 the others.
  SeasonWindows() {
    engine::Database& league = OpenLeague(common::kNascarRacing3);
    for (int id = 1; id <= 4; ++id)
      league.Execute(fmt::format("INSERT INTO Driver (Name) VALUES ('Driver {}')", id));
    for (int race = 1; race <= 3; ++race) {
      league.Execute(fmt::format("INSERT INTO Race (Name, Length, Laps) VALUES ('Track {}', 1, 200)", race));
      for (int id = 1; id <= 4; ++id) {
        const int finish = race > 1 && id <= 2 ? 3 - id : id;
        league.Execute(
            fmt::format("INSERT INTO Stats (RaceID, DriverID, Finish, Start, Points, Bonus, LapsRun, "
                        "LapsLed, Status) VALUES ({},{},{},{},{},0,200,0,'Running')",
                        race, id, finish, finish, 200 - 10 * finish));
      }
    }
  }

  static Strings Column(QWidget& form, const char* name, int column) {
    const auto& grid = Find<SelectionGrid>(form, name);
    Strings cells;
    for (int row = 0; row < grid.RowCount(); ++row) cells.push_back(Utf8(grid.Cell(row, column)));
    return cells;
  }
  static void Type(QWidget& form, const char* box, const char* text) {
    auto& field = Find<QLineEdit>(form, box);
    field.setFocus();
    field.selectAll();
    field.insert(Q(text));
  }
  static void Choose(QWidget& form, const char* box, const char* text) {
    auto& field = Find<QComboBox>(form, box);
    const int index = field.findText(Q(text));
    ASSERT_GE(index, 0) << text;
    field.setCurrentIndex(index);
  }
  static void Press(QWidget& form, const char* button) {
    QTest::mouseClick(&Find<QPushButton>(form, button), Qt::LeftButton);
  }
  // No desktop does it here.
  static void Activate(QWidget& dialog) {
    dialog.activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.isActiveWindow(); }));
  }
  // Ticks drivers, by their rows, in the dialog that comes up.
  static void OnDrivers(std::vector<int> rows) {
    OnModal([rows](QWidget& dialog) {
      auto& list = Find<QListWidget>(dialog, "lstDrivers");
      EXPECT_FALSE(Button(dialog, 0).isEnabled());
      for (const int row : rows) {
        list.setCurrentRow(row);
        QTest::keyClick(&list, Qt::Key_Space);
      }
      Click(dialog, 0);
    });
  }
};

TEST_F(SeasonWindows, TeamsAreMadeJoinedLeftAndTakenBack) {
  enum { kAdd, kRename, kRemove, kJoin, kLeave, kClose };
  frmRaces window(context_);
  window.FillRaceGrid();
  Show(window);
  OnModal([&](QWidget& dialog) {
    for (const int button : {kAdd, kRename, kRemove, kJoin, kLeave})
      EXPECT_FALSE(Button(dialog, button).isEnabled()) << button;
    Type(dialog, "txtName", "  <b>Zoë</b> & \"Sons\"  ");
    QTest::keyClick(&Find<QLineEdit>(dialog, "txtName"), Qt::Key_Return);
    Activate(dialog);
    // The box has nothing to take back: the key is the dialog's.
    QTest::keyClick(&Find<QLineEdit>(dialog, "txtName"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(Column(dialog, "fgGroups", 0), ElementsAre(""));
    QTest::keyClick(&Find<QLineEdit>(dialog, "txtName"), Qt::Key_Y, Qt::ControlModifier);
    Type(dialog, "txtName", "Blue");
    Click(dialog, kAdd);
    EXPECT_THAT(Column(dialog, "fgGroups", 0), ElementsAre("<b>Zoë</b> & \"Sons\"", "Blue"));
    // There is one of that name; it is said, and what was typed stays.
    Type(dialog, "txtName", "blue");
    Click(dialog, kAdd);
    ASSERT_EQ(ui_.messages.size(), 1U);
    EXPECT_EQ(ui_.messages[0].text, "\"Blue\" already exists!");
    EXPECT_EQ(Find<QLineEdit>(dialog, "txtName").text(), QStringLiteral("blue"));
    Click(dialog, kRename);
    EXPECT_THAT(Column(dialog, "fgGroups", 0), ElementsAre("<b>Zoë</b> & \"Sons\"", "blue"));

    OnDrivers({0, 1});
    Click(dialog, kJoin);
    EXPECT_THAT(Column(dialog, "fgMembers", 0), ElementsAre("Driver 1", "Driver 2"));
    EXPECT_THAT(Column(dialog, "fgMembers", 1), ElementsAre("the start", "the start"));
    auto& groups = Find<SelectionGrid>(dialog, "fgGroups");
    // Behind a filter the row that is seen is the one that is meant.
    QTest::keyClick(&groups, Qt::Key_F, Qt::ControlModifier);
    auto& filter = Find<QLineEdit>(groups, "txtFilter");
    filter.setText(QStringLiteral("BLUE"));
    EXPECT_EQ(groups.RowCount(), 1);
    EXPECT_EQ(Utf8(Find<QLineEdit>(dialog, "txtName").text()), "blue");
    filter.setText(QStringLiteral("nobody"));
    EXPECT_FALSE(Button(dialog, kRemove).isEnabled());
    QTest::keyClick(&filter, Qt::Key_Escape);
    // From the second race on one of them drives for the other team.
    groups.SelectRows(0, 0);
    Choose(dialog, "cboFrom", "2 Track 2");
    OnDrivers({1});
    Click(dialog, kJoin);
    EXPECT_THAT(Column(dialog, "fgMembers", 1), ElementsAre("2 Track 2"));
    EXPECT_THAT(Column(dialog, "fgGroups", 1), ElementsAre("1", "1"));
    groups.SelectRows(1, 1);
    EXPECT_THAT(Column(dialog, "fgMembers", 2), ElementsAre("", "2 Track 2"));
    // Who has gone does not leave again: it would be the other team that he leaves.
    Find<SelectionGrid>(dialog, "fgMembers").SelectRows(1, 1);
    EXPECT_FALSE(Button(dialog, kLeave).isEnabled());
    Find<SelectionGrid>(dialog, "fgMembers").SelectRows(0, 0);
    Click(dialog, kLeave);
    EXPECT_THAT(Column(dialog, "fgMembers", 2), ElementsAre("2 Track 2", "2 Track 2"));
    Activate(dialog);
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(Column(dialog, "fgMembers", 2), ElementsAre("", "2 Track 2"));

    // A number that is not left yet counts when the tab changes, for the kind that it was typed for.
    auto& best = Find<QSpinBox>(dialog, "spnBest");
    EXPECT_EQ(best.value(), 2);
    best.setValue(0);
    Find<QTabBar>(dialog, "ts").setCurrentIndex(1);
    EXPECT_EQ(best.value(), 1);
    EXPECT_THAT(Column(dialog, "fgGroups", 0), ElementsAre(""));
    best.setValue(3);
    Click(dialog, kClose);
  });
  window.findChild<QAction*>(QStringLiteral("mnuSeason_11"))->trigger();
  EXPECT_EQ(championship::BestResults(session_.League(), GroupKind::Team), 0);
  EXPECT_EQ(championship::BestResults(session_.League(), GroupKind::Make), 3);
  EXPECT_THAT(DoneChanges(),
              ElementsAre("Results that count for a make", "Results that count for a team",
                          "Driver 2 to <b>Zoë</b> & \"Sons\"", "2 drivers to blue", "Rename Blue to blue",
                          "Add the team Blue", "Add the team <b>Zoë</b> & \"Sons\""));
  EXPECT_THAT(Utf8(Find<QLabel>(window, "lblStatus").text()), HasSubstr("the last of 7 changes"));
}

TEST_F(SeasonWindows, ADriversTeamAndMakeAreAPartOfHisChange) {
  frmEditDriver editor(context_);
  editor.DriverID(1);
  editor.Mode(frmEditDriver::kEdit);
  Show(editor);
  EXPECT_EQ(editor.focusWidget()->objectName(), QStringLiteral("txtName"));
  Find<QComboBox>(editor, "cboGroup_0").setCurrentText(QStringLiteral(" Red & Co "));
  Choose(editor, "cboFrom_0", "2 Track 2");
  Find<QComboBox>(editor, "cboGroup_1").setCurrentText(QStringLiteral("Ford"));
  Type(editor, "txtName", "Driver One");
  Click(editor, 0);
  EXPECT_FALSE(editor.Cancelled());
  EXPECT_THAT(DoneChanges(), ElementsAre("Rename Driver 1 to Driver One"));
  const auto members = championship::ListMembers(session_.League(), GroupKind::Team);
  ASSERT_EQ(members.size(), 1U);
  EXPECT_EQ(members[0].from, 2);
  EXPECT_EQ(championship::ListMembers(session_.League(), GroupKind::Make)[0].from, 0);

  frmEditDriver again(context_);
  again.DriverID(1);
  again.Mode(frmEditDriver::kEdit);
  Show(again);
  EXPECT_EQ(Find<QComboBox>(again, "cboGroup_0").currentText(), QStringLiteral("Red & Co"));
  // Nothing was said about them: they stay.
  Click(again, 0);
  EXPECT_EQ(championship::ListMembers(session_.League(), GroupKind::Team).size(), 1U);
  Show(again);
  Find<QComboBox>(again, "cboGroup_0").setCurrentText(QString());
  Click(again, 0);
  EXPECT_EQ(championship::ListMembers(session_.League(), GroupKind::Team)[0].until, 4);
  while (app::Undo(session_)) {
  }
  EXPECT_TRUE(championship::ListGroups(session_.League(), GroupKind::Team).empty());
}

TEST_F(SeasonWindows, APlayoffIsChosenSavedLoadedAndCleared) {
  enum { kLoad, kSaveAs, kSave };
  const auto open = [&](auto work) {
    frmPlayoff dialog(context_);
    Show(dialog);
    work(dialog);
  };
  open([&](QWidget& dialog) {
    EXPECT_FALSE(Button(dialog, kSave).isEnabled());
    EXPECT_FALSE(Button(dialog, kSaveAs).isEnabled());
    Choose(dialog, "cboFormat", "2014");
    EXPECT_THAT(Column(dialog, "fgStages", 1), ElementsAre("26", "29", "32", "35"));
    // As it would be if it began now: all four are in, who won more in front.
    EXPECT_THAT(Column(dialog, "fgOutlook", 1), ElementsAre("Driver 2", "Driver 1", "Driver 3", "Driver 4"));
    EXPECT_THAT(Column(dialog, "fgOutlook", 4), ElementsAre("2006", "2003", "2000", "2000"));
    Find<QSpinBox>(dialog, "spnAfter").setValue(2);
    EXPECT_THAT(Column(dialog, "fgStages", 1), ElementsAre("2", "5", "8", "11"));
    EXPECT_EQ(Find<QLabel>(dialog, "lblRace").text(), QStringLiteral("Track 2"));
    ui_.filesToSave = {folder_.File("Ours")};
    Click(dialog, kSaveAs);
    Click(dialog, kSave);
  });
  EXPECT_EQ(championship::PlayoffText(*championship::ReadPlayoff(session_.League())),
            championship::PlayoffText(championship::PresetPlayoff("2014", 2)));
  open([&](QWidget& dialog) {
    EXPECT_EQ(Find<QComboBox>(dialog, "cboFormat").currentText(), QStringLiteral("2014"));
    EXPECT_EQ(Find<QSpinBox>(dialog, "spnAfter").value(), 2);
    EXPECT_FALSE(Button(dialog, kSave).isEnabled());
    Choose(dialog, "cboFormat", "None");
    Click(dialog, kSave);
  });
  EXPECT_FALSE(championship::HasPlayoff(session_.League()));
  open([&](QWidget& dialog) {
    // A league file, which is none; then the one that was saved.
    ui_.filesToOpen = {{session_.League().Name()}, {folder_.File("Ours.json")}};
    Click(dialog, kLoad);
    EXPECT_EQ(ui_.messages.size(), 1U);
    EXPECT_EQ(Find<QComboBox>(dialog, "cboFormat").currentText(), QStringLiteral("None"));
    Click(dialog, kLoad);
    EXPECT_EQ(Find<QSpinBox>(dialog, "spnAfter").value(), 2);
    // Never over what is no text.
    ui_.filesToSave = {session_.League().Name()};
    ui_.answers = {common::Answer::Yes};
    Click(dialog, kSaveAs);
    EXPECT_THAT(ui_.messages.back().text, HasSubstr("cannot be written"));
    Click(dialog, kSave);
  });
  EXPECT_THAT(DoneChanges(), ElementsAre("Playoff 2014", "No playoff", "Playoff 2014"));
  // One that nobody can read is said, and can be replaced.
  session_.League().Execute("UPDATE Playoff SET Format='{}'");
  open([&](QWidget& dialog) {
    EXPECT_THAT(ui_.messages.back().text, HasSubstr("cannot be read"));
    Click(dialog, kSave);
  });
  EXPECT_FALSE(championship::HasPlayoff(session_.League()));
}

TEST_F(SeasonWindows, WhatIfAsksAndWritesNothing) {
  const std::string file = session_.League().Name();
  const auto bytes = [&] {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const std::string before = bytes();
  frmWhatIf dialog(context_);
  Show(dialog);
  EXPECT_THAT(Column(dialog, "fgTable", 1), ElementsAre("Driver 2", "Driver 1", "Driver 3", "Driver 4"));
  EXPECT_THAT(Column(dialog, "fgTable", 6), ElementsAre("--", "--", "--", "--"));
  Choose(dialog, "cboAfter", "1 Track 1");
  EXPECT_THAT(Column(dialog, "fgTable", 1), ElementsAre("Driver 1", "Driver 2", "Driver 3", "Driver 4"));
  Find<QComboBox>(dialog, "cboAfter").setCurrentIndex(0);
  Find<QListWidget>(dialog, "lstWithout").item(1)->setCheckState(Qt::Checked);
  EXPECT_THAT(Column(dialog, "fgTable", 1), ElementsAre("Driver 1", "Driver 3", "Driver 4"));
  const std::string points = folder_.File("points.csv");
  std::ofstream(points) << "1,10\n2,5\n";
  ui_.filesToOpen = {{folder_.File("none.csv")}, {points}};
  Press(dialog, "cmdPoints");
  ASSERT_EQ(ui_.messages.size(), 1U);
  Press(dialog, "cmdPoints");
  Find<QCheckBox>(dialog, "chkNoBonus").setChecked(true);
  EXPECT_THAT(Column(dialog, "fgTable", 2), ElementsAre("30", "15", "0"));
  Choose(dialog, "cboPoints", "2007");
  Find<QSpinBox>(dialog, "spnDropped").setValue(2);
  EXPECT_THAT(Column(dialog, "fgTable", 2), ElementsAre("185", "170", "165"));
  // What cannot be answered is no message at each step: the grid says why.
  session_.League().Execute("DELETE * FROM Bonus WHERE BonusID=1");
  Find<QCheckBox>(dialog, "chkNoBonus").setChecked(false);
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_TRUE(
      Find<SelectionGrid>(dialog, "fgTable").findChild<QLabel*>(QStringLiteral("lblHint"))->isVisible());
  EXPECT_NE(bytes(), before);  // by the statement above, and by nothing else
  const std::string then = bytes();

  Find<QTabWidget>(dialog, "ts").setCurrentIndex(1);
  EXPECT_THAT(Column(dialog, "fgTitle", 5), ElementsAre("can win", "can win", "can win", "can win"));
  Find<QSpinBox>(dialog, "spnRemaining").setValue(0);
  EXPECT_THAT(Column(dialog, "fgTitle", 5), ElementsAre("champion", "out", "out", "out"));
  EXPECT_EQ(bytes(), then);
}

TEST_F(SeasonWindows, APresetFillsThePointSystemAndStoresNothingBeforeSave) {
  session_.League().Execute("UPDATE PointSystem SET PrizeMoney=7 WHERE Position=1");
  frmPointSystem dialog(context_);
  Show(dialog);
  QMenu* menu = Find<QPushButton>(dialog, "cmdPresets").menu();
  const auto items = menu->actions();
  const auto f1 = std::find_if(items.begin(), items.end(), [](QAction* item) {
    return item->text().startsWith(QLatin1String("f1-2003"));
  });
  ASSERT_NE(f1, items.end());
  EXPECT_FALSE((*f1)->toolTip().isEmpty() || (*f1)->toolTip() == (*f1)->text()) << "where it is from";
  (*f1)->trigger();
  EXPECT_THAT(Column(dialog, "fgPoints", 1), ElementsAre("10", "8", "6", "5", "4", "3", "2", "1"));
  EXPECT_EQ(Column(dialog, "fgPoints", 2)[0], "7");
  EXPECT_TRUE(Find<QCheckBox>(dialog, "chkUsePositions").isChecked());
  EXPECT_TRUE(Find<QCheckBox>(dialog, "chkUseBonus").isChecked());
  EXPECT_EQ(Find<QLineEdit>(dialog, "txtPoints_0").text(), QStringLiteral("8"));
  EXPECT_TRUE(Button(dialog, 1).isEnabled());
  EXPECT_TRUE(DoneChanges().empty());
  ui_.answers = {common::Answer::No};  // no recalculation
  Click(dialog, 1);
  EXPECT_THAT(DoneChanges(), ElementsAre("Point system"));
}

TEST_F(SeasonWindows, TheReportsOfTheChampionshipAreShownAndExported) {
  const std::int32_t team = app::AddGroup(session_, GroupKind::Team, "A <b> & Co");
  app::JoinGroup(session_, GroupKind::Team, {team, ""}, {1, 2}, std::nullopt);
  frmStats view(context_);
  Show(view);
  Choose(view, "cboStat", "Team Standings");
  EXPECT_EQ(Utf8(Find<QLabel>(view, "Label2").text()),
            "The best 2 results of each team in each of 3 events:");
  EXPECT_THAT(Column(view, "fgCalcs", 1), ElementsAre("A <b> & Co"));
  EXPECT_THAT(Column(view, "fgCalcs", 2), ElementsAre("1110"));
  EXPECT_FALSE(Button(view, 1).isEnabled());
  // The rows that are selected, as they are shown: without hidden columns, with their places.
  QTest::keyClick(&Find<SelectionGrid>(view, "fgCalcs"), Qt::Key_C, Qt::ControlModifier);
  const QMimeData* copied = QApplication::clipboard()->mimeData();
  EXPECT_EQ(Utf8(copied->text()),
            "\tTeam\tPoints\tInterval\tWins\tTop 5\tTop 10\tStarts\tDrivers\n"
            "1\tA <b> & Co\t1110\t--\t3\t6\t6\t6\t2\n");
  EXPECT_THAT(Utf8(copied->html()), HasSubstr("<td>A &lt;b&gt; &amp; Co</td><td>1110</td>"));
  const std::string page = folder_.File("teams.htm");
  ui_.filesToSave = {page};
  OnModal([](QWidget& dialog) {
    Press(dialog, "cmdPreview");
    Click(dialog, 0);
  });
  Click(view, 0);
  EXPECT_EQ(ui_.shellOpened.size(), 1U);
  std::ifstream in(page);
  const std::string text(std::istreambuf_iterator<char>(in), {});
  EXPECT_THAT(text, HasSubstr("A &lt;b&gt; &amp; Co"));
  Choose(view, "cboStat", "Point Standings");
  EXPECT_EQ(Utf8(Find<QLabel>(view, "Label2").text()), "Results after 3 events:");
  EXPECT_TRUE(Button(view, 1).isEnabled());
}

}  // namespace
}  // namespace scorvane::forms
