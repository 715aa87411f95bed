// Drivers, points and results, edited as a user edits them: by keys and clicks, boxes on top of boxes.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QHeaderView>
#include <QRadioButton>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditColumns.h"
#include "forms/frmEditDriver.h"
#include "forms/frmEditDriver2.h"
#include "forms/frmEditRace.h"
#include "forms/frmExport.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmPointSystem.h"
#include "forms/widgets/SelectionGrid.h"
#include "scoring/RaceScoring.h"

namespace scorvane::forms {
namespace {

class Editing : public FormFixture {
 protected:
  static void Type(QWidget& form, const char* box, const char* text) {
    auto& field = Find<QLineEdit>(form, box);
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QString::fromUtf8(text));
  }
  static std::string TextOf(QWidget& form, const char* box) {
    return Utf8(Find<QLineEdit>(form, box).text());
  }
  std::string Ask(const char* sql) { return test::Single(session_.League(), sql); }
};

TEST_F(Editing, DriversAreAddedChangedMergedAndRemoved) {
  OpenLeague(0);
  for (const char* name : {"Ann", "Bob", "Carl"}) {
    session_.League().Execute(std::string("INSERT INTO Driver (Name) VALUES ('") + name + "')");
  }
  session_.League().Execute("INSERT INTO Race (Name) VALUES ('x')");
  session_.League().Execute("INSERT INTO Stats (RaceID, DriverID, Points) VALUES (1, 1, 10)");
  session_.League().Execute("INSERT INTO Stats (RaceID, DriverID, Points) VALUES (1, 2, 5)");
  frmDriverList list(context_);
  auto& grid = Find<SelectionGrid>(list, "fgDList");
  EXPECT_EQ(Utf8(Find<QLabel>(list, "lblNumDrivers").text()), "3");

  OnModal([](QWidget& editor) {
    EXPECT_FALSE(Button(editor, 0).isEnabled());
    Type(editor, "txtName", "Pat O'Test|");
    Type(editor, "txtHandicap", "x-3y");
    EXPECT_EQ(TextOf(editor, "txtName"), "Pat O'Test");
    EXPECT_EQ(TextOf(editor, "txtHandicap"), "-3");
    Click(editor, 0);
  });
  QTest::keyClick(&grid, Qt::Key_Insert);
  EXPECT_EQ(Utf8(grid.Cell(grid.CurrentRow(), 0)), "Pat O'Test");
  EXPECT_EQ(Ask("SELECT Handicap FROM Driver WHERE Name='Pat O''Test'"), "-3");

  // A name that another driver has: refused for a new driver, a merge for an old one.
  OnModal([](QWidget& editor) {
    Type(editor, "txtName", "ANN");
    Click(editor, 0);
    Click(editor, 1);
  });
  Click(list, 1);
  EXPECT_EQ(ui_.messages.back().title, "Cannot Add Driver");
  ui_.answers = {common::Answer::No, common::Answer::Yes};
  grid.SelectRows(1, 1);
  OnModal([this](QWidget& editor) {
    Type(editor, "txtName", "ann");
    Click(editor, 0);  // answered with No: it stays
    EXPECT_TRUE(editor.isVisible());
    EXPECT_EQ(
        ui_.messages.back().text,
        "\"ann\" already exists!\r\nDo you want to merge the points of both drivers into a single driver?");
    Click(editor, 0);
  });
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_EQ(Ask("SELECT Sum(Points) FROM Stats WHERE DriverID=1"), "15");
  EXPECT_EQ(Ask("SELECT Count(*) FROM Driver WHERE Name='Bob'"), "0");
  EXPECT_EQ(Utf8(grid.Cell(grid.CurrentRow(), 0)), "Ann");

  QTest::keyClick(&grid, Qt::Key_A, Qt::ControlModifier);
  EXPECT_FALSE(Button(list, 0).isEnabled());
  Click(list, 4);
  EXPECT_EQ(Ask("SELECT Count(*) FROM Driver WHERE Exclude=True"), "3");
  Click(list, 6);
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "0");
  EXPECT_EQ(ui_.messages.back().title, "Process Completed");
  ui_.answers = {common::Answer::Yes};
  QTest::keyClick(&grid, Qt::Key_Delete);
  EXPECT_EQ(
      ui_.messages.back().text,
      "Removing these drivers will also remove the points associated with these drivers.\r\nDo you want to "
      "continue?");
  EXPECT_EQ(Utf8(Find<QLabel>(list, "lblNumDrivers").text()), "0");
  EXPECT_EQ(grid.RowCount(), 1);
  for (const int index : {0, 2, 3, 4}) EXPECT_FALSE(Button(list, index).isEnabled()) << index;
  EXPECT_EQ(DoneChanges(),
            (std::vector<std::string>{"Remove 3 drivers", "Remove excluded results", "Exclude 3 drivers",
                                      "Merge Bob into Ann", "Add Pat O'Test"}));
}

TEST_F(Editing, PointSystemIsFilledAndSaved) {
  OpenLeague(0);
  frmPointSystem editor(context_);
  auto& grid = Find<SelectionGrid>(editor, "fgPoints");
  EXPECT_EQ(TextOf(editor, "txtPoints_0"), "43");
  EXPECT_FALSE(Button(editor, 1).isEnabled());
  EXPECT_FALSE(Find<QLineEdit>(editor, "txtPoints_1").isEnabled());
  editor.show();
  editor.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&editor));
  Find<QCheckBox>(editor, "chkUsePositions").click();
  EXPECT_TRUE(Button(editor, 1).isEnabled());

  grid.SelectRows(0, 4);
  EXPECT_EQ(TextOf(editor, "txtPoints_4"), "5");  // 175, 170
  Type(editor, "txtPoints_3", "a1b0");
  Type(editor, "txtPoints_4", "3");
  Find<QPushButton>(editor, "cmdFill").click();
  std::string filled;
  for (int row = 0; row < 5; ++row) filled += Utf8(grid.Cell(row, 1)) + " ";
  EXPECT_EQ(filled, "10 7 4 1 0 ");
  Find<QRadioButton>(editor, "optPoints_1").click();
  grid.SelectRows(0, 0);
  Type(editor, "txtPoints_3", "250000");
  Find<QPushButton>(editor, "cmdFill").click();
  Type(editor, "txtPoints_0", "6");
  Find<QLineEdit>(editor, "txtPoints_1").setFocus();
  QApplication::processEvents();
  EXPECT_EQ(grid.RowCount(), 6);
  Find<QCheckBox>(editor, "chkUseBonus").click();
  Type(editor, "txtBonus_2", "12");

  // The close box asks; Cancel keeps the dialog, Yes saves.
  ui_.answers = {common::Answer::Cancel, common::Answer::Yes};
  editor.close();
  EXPECT_TRUE(editor.isVisible());
  EXPECT_EQ(ui_.messages.back().title, "Unsaved Changes");
  editor.close();
  EXPECT_FALSE(editor.isVisible());
  EXPECT_EQ(test::Rows(session_.League(), "SELECT * FROM PointSystem WHERE Position<3"),
            (std::vector<std::string>{"1|10|250000", "2|7|0"}));
  EXPECT_EQ(Ask("SELECT Count(*) FROM PointSystem"), "6");
  EXPECT_EQ(Ask("SELECT Points FROM Bonus WHERE BonusID=3"), "12");
  EXPECT_TRUE(state_.useCustomPointSystem);
  EXPECT_EQ(DoneChanges(), std::vector<std::string>{"Point system"});
}

TEST_F(Editing, ASavedPointSystemIsOfferedToTheRacesThatAreThere) {
  engine::Database& league = OpenLeague(0);
  for (const char* sql : {"INSERT INTO Race (Name, Length, Laps) VALUES ('Daytona','2.5',200)",
                          "INSERT INTO Driver (Name) VALUES ('Ann')",
                          "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points) "
                          "VALUES (1,1,2,1,200,0,1)"})
    league.Execute(sql);
  const auto save = [&](const char* points, const std::function<void(frmPointSystem&)>& end) {
    frmPointSystem editor(context_);
    Show(editor);
    auto& use = Find<QCheckBox>(editor, "chkUsePositions");
    if (!use.isChecked()) use.click();
    Find<SelectionGrid>(editor, "fgPoints").SelectRows(0, 0);
    Type(editor, "txtPoints_3", points);
    Find<QPushButton>(editor, "cmdFill").click();
    end(editor);
    EXPECT_FALSE(editor.isVisible());
  };
  ui_.answers = {common::Answer::No};
  save("50", [](frmPointSystem& editor) { Button(editor, 1).click(); });
  EXPECT_NE(ui_.messages.back().text.find("Do you want to recalculate the race now?"), std::string::npos);
  EXPECT_EQ(Ask("SELECT Points FROM Stats"), "1");
  ui_.answers = {common::Answer::No};
  save("55", [](frmPointSystem& editor) { editor.close(); });
  EXPECT_EQ(ui_.messages.back().title, "Unsaved Changes") << "nothing was saved, nothing is offered";

  league.Execute("INSERT INTO Race (Name, Length, Laps) VALUES ('Bristol','0.533',500)");
  ui_.answers = {common::Answer::Yes, common::Answer::Yes};
  save("60", [](frmPointSystem& editor) { editor.close(); });
  EXPECT_NE(ui_.messages.back().text.find("all 2 races"), std::string::npos);
  ASSERT_EQ(ui_.progress.size(), 1U);
  EXPECT_EQ(ui_.progress[0]->value, 2);
  EXPECT_EQ(Ask("SELECT Points FROM Stats"), "65") << "with the bonus of a winner";
  EXPECT_EQ(DoneChanges(), (std::vector<std::string>{"Recalculate 2 races", "Point system", "Point system"}));
}

// Hands that select otherwise than the program expects.
TEST_F(Editing, OnlyWhatIsMeantIsRemoved) {
  engine::Database& league = OpenLeague(0);
  league.Execute("INSERT INTO Race (Name) VALUES ('One')");
  for (const char* name : {"Ann", "Bob", "Carl", "Dan"}) {
    league.Execute(std::string("INSERT INTO Driver (Name) VALUES ('") + name + "')");
    league.Execute("INSERT INTO Stats (RaceID, DriverID, Points) SELECT 1, Max(DriverID), 5 FROM Driver");
  }
  frmDriverList list(context_);
  Show(list);
  auto& grid = Find<SelectionGrid>(list, "fgDList");
  const auto place = [&grid](int row) { return grid.visualRect(grid.model()->index(row, 0)).center(); };
  // A merge that begins with a block selected removes the merged driver alone.
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, place(1));
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ShiftModifier, place(3));
  ui_.answers = {common::Answer::Yes};
  OnModal([](QWidget& editor) {
    Type(editor, "txtName", "Ann");
    Click(editor, 0);
  });
  QTest::mouseDClick(grid.viewport(), Qt::LeftButton, Qt::ShiftModifier, place(3));
  EXPECT_EQ(test::Rows(league, "SELECT Name FROM Driver"), (std::vector<std::string>{"Ann", "Bob", "Carl"}));
  EXPECT_EQ(Ask("SELECT Count(*) FROM Stats"), "4");

  // A click below the rows leaves the selection; two quick clicks on a heading are two.
  grid.SelectRows(1, 1);
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, {5, grid.viewport()->height() - 3});
  EXPECT_EQ(grid.FirstSelected(), 1);
  QWidget* heading = grid.horizontalHeader()->viewport();
  QTest::mouseClick(heading, Qt::LeftButton, {}, {10, 5});
  EXPECT_EQ(Utf8(grid.Cell(0, 0)), "Ann");
  QTest::mouseDClick(heading, Qt::LeftButton, {}, {10, 5});
  EXPECT_EQ(Utf8(grid.Cell(0, 0)), "Carl");

  // A reason is kept as it is typed, though the list knows a longer one.
  frmEditDriver2 result(context_);
  Show(result);
  auto& reason = Find<QComboBox>(result, "cboReasonOut");
  reason.setFocus();
  reason.lineEdit()->clear();
  QTest::keyClicks(&reason, QStringLiteral("engin"));
  QTest::keyClick(&reason, Qt::Key_Tab);
  EXPECT_EQ(reason.currentText(), QStringLiteral("engin"));
}

// Large values, gaps and slips of the hand cost nothing.
TEST_F(Editing, PointSystemKeepsWhatItShows) {
  engine::Database& league = OpenLeague(0);
  league.Execute("UPDATE PointSystem SET Points=1750 WHERE Position=1");
  league.Execute("UPDATE Bonus SET Points=12345 WHERE BonusID=1");
  frmPointSystem editor(context_);
  Show(editor);
  auto& grid = Find<SelectionGrid>(editor, "fgPoints");
  Find<QCheckBox>(editor, "chkUsePositions").click();
  Find<QCheckBox>(editor, "chkUseBonus").click();
  EXPECT_EQ(TextOf(editor, "txtPoints_3"), "1750");
  Find<QPushButton>(editor, "cmdFill").click();

  // Another window in front while a number is half typed.
  auto& total = Find<QLineEdit>(editor, "txtPoints_0");
  total.setFocus();
  Type(editor, "txtPoints_0", "4");
  {
    QWidget other;
    Show(other);
    EXPECT_EQ(grid.RowCount(), 43);
  }
  editor.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&editor));
  total.setText(QStringLiteral("pasted"));
  Find<QLineEdit>(editor, "txtPoints_1").setFocus();
  EXPECT_EQ(total.text(), QStringLiteral("43"));

  auto& bonus = Find<QLineEdit>(editor, "txtBonus_2");
  bonus.setText(QStringLiteral("ten"));
  Button(editor, 1).click();
  EXPECT_TRUE(editor.isVisible());
  EXPECT_EQ(ui_.messages.back().text,
            "\"ten\" is no number of points for \"" + Ask("SELECT Name FROM Bonus WHERE BonusID=3") + "\".");
  bonus.setText(QStringLiteral("10"));
  Button(editor, 1).click();
  EXPECT_FALSE(editor.isVisible());
  EXPECT_EQ(test::Rows(league, "SELECT Position, Points FROM PointSystem WHERE Position<4"),
            (std::vector<std::string>{"1|1750", "2|170", "3|165"}));
  EXPECT_EQ(test::Rows(league, "SELECT Points FROM Bonus WHERE BonusID IN (1,3) ORDER BY BonusID"),
            (std::vector<std::string>{"12345", "10"}));

  league.Execute("DELETE * FROM PointSystem WHERE Position=2");
  frmPointSystem again(context_);
  Show(again);
  Find<QCheckBox>(again, "chkUseBonus").click();
  Button(again, 1).click();
  EXPECT_EQ(test::Rows(league, "SELECT Position, Points FROM PointSystem WHERE Position<4"),
            (std::vector<std::string>{"1|1750", "3|165"}));
}

TEST_F(Editing, PointCellsAreTypedIntoAndLostPositionsComeBack) {
  engine::Database& league = OpenLeague(0);
  frmPointSystem editor(context_);
  Show(editor);
  auto& grid = Find<SelectionGrid>(editor, "fgPoints");
  const auto cell = [&] { return grid.findChild<QLineEdit*>(QStringLiteral("txtCell")); };
  const auto type = [&](const char* keys, Qt::Key end) {
    ASSERT_NE(cell(), nullptr);
    QTest::keyClicks(cell(), QString::fromLatin1(keys));
    QTest::keyClick(cell(), end);
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  };
  grid.setFocus();
  QTest::keyClick(&grid, Qt::Key_F2);
  EXPECT_EQ(cell(), nullptr) << "custom points are off";
  Find<QCheckBox>(editor, "chkUsePositions").click();
  grid.setFocus();

  // A digit begins anew, Enter goes down, F2 keeps what is there; Tab goes to the prize money.
  QTest::keyClick(&grid, Qt::Key_2);
  type("0x0", Qt::Key_Return);
  EXPECT_EQ(Utf8(grid.Cell(0, 1)), "200");
  EXPECT_EQ(grid.CurrentRow(), 1);
  QTest::keyClick(&grid, Qt::Key_F2);
  EXPECT_EQ(cell()->text(), QStringLiteral("170"));
  type("190", Qt::Key_Tab);
  EXPECT_EQ(Utf8(grid.Cell(1, 1)), "190");
  type("50000", Qt::Key_Tab);
  EXPECT_EQ(Utf8(grid.Cell(1, 2)), "50000");
  EXPECT_EQ(grid.CurrentRow(), 2);
  type("9", Qt::Key_Escape);
  EXPECT_EQ(Utf8(grid.Cell(2, 1)), "165");
  EXPECT_TRUE(editor.isVisible());
  const QPoint prize = grid.visualRect(grid.model()->index(3, 2)).center();
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, prize);
  QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, prize);
  ASSERT_NE(cell(), nullptr);
  cell()->setText(QStringLiteral("1e3"));  // pasted
  type("", Qt::Key_Return);
  EXPECT_EQ(Utf8(grid.Cell(3, 2)), "") << "as it was";

  // A total of 4 that was meant to be 40: what it took away comes back, and with it what was typed since.
  auto& back = Find<QPushButton>(editor, "cmdBringBack");
  const auto total = [&](const char* positions) {
    Type(editor, "txtPoints_0", positions);
    QTest::keyClick(&Find<QLineEdit>(editor, "txtPoints_0"), Qt::Key_Tab);
  };
  EXPECT_FALSE(back.isVisible());
  total("4");
  EXPECT_EQ(grid.RowCount(), 4);
  EXPECT_EQ(back.text(), QStringLiteral("Bring Back 39 Positions"));
  total("6");
  EXPECT_EQ(grid.Cell(5, 1), QString()) << "more positions are empty";
  grid.SelectRows(5, 5);
  grid.setFocus();
  QTest::keyClick(&grid, Qt::Key_7);
  type("7", Qt::Key_Return);
  back.click();
  EXPECT_EQ(grid.RowCount(), 43);
  EXPECT_EQ(TextOf(editor, "txtPoints_0"), "43");
  EXPECT_FALSE(back.isVisible());
  Button(editor, 1).click();
  EXPECT_EQ(test::Rows(league,
                       "SELECT Position, Points, PrizeMoney FROM PointSystem WHERE Position IN (1,2,5,6,43)"),
            (std::vector<std::string>{"1|200|0", "2|190|50000", "5|155|0", "6|77|0", "43|34|0"}));
}

TEST_F(Editing, ResultsAreAddedEditedAndRemoved) {
  engine::Database& league = OpenLeague(0, 0, 0, common::kLapTime);
  league.Execute("INSERT INTO Race (Name, FileName, Length, Laps) VALUES ('Daytona','d.stn','2.5',200)");
  for (int i = 1; i <= 5; ++i) {
    league.Execute("INSERT INTO Driver (Name) VALUES ('Driver " + std::to_string(i) + "')");
    league.Execute(
        "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, Bonus) VALUES (1, " +
        std::to_string(i) + "," + std::to_string(i) + "," + std::to_string(i) + ",200,0,0,0)");
  }
  frmEditRace editor(context_, {1, false});
  auto& grid = Find<SelectionGrid>(editor, "fgDrivers");
  EXPECT_EQ(Utf8(editor.windowTitle()), "Race Results - d.stn");
  grid.SelectRows(2, 2);
  QTest::keyClick(&grid, Qt::Key_Delete);
  EXPECT_EQ(test::Rows(league, "SELECT Finish FROM Stats ORDER BY Finish"),
            (std::vector<std::string>{"1", "2", "4", "5"}));

  OnModal([this](QWidget& dialog) {
    Type(dialog, "txtInfo_0", "3");
    Type(dialog, "txtInfo_1", "9");
    EXPECT_FALSE(Button(dialog, 1).isEnabled());
    // Who has a result already gets another one only when that is meant; the list begins at his name.
    Type(dialog, "txtInfo_2", "driver 2 ");
    ui_.answers = {common::Answer::No};
    Click(dialog, 1);
    EXPECT_EQ(ui_.messages.back().title, "Driver Exists");
    OnModal([](QWidget& picker) {
      EXPECT_EQ(Find<QListWidget>(picker, "lstDrivers").currentItem()->text(), QStringLiteral("Driver 2"));
      Click(picker, 0);
    });
    QTest::mouseClick(&Find<QPushButton>(dialog, "cmdPickDriver"), Qt::LeftButton);
    Type(dialog, "txtInfo_2", "J.R. New");  // one full stop is all that a typed name takes
    Type(dialog, "txtInfo_5", "12.5");
    Type(dialog, "txtInfo_8", "30.0.0");
    EXPECT_EQ(TextOf(dialog, "txtInfo_2"), "J.R New");
    EXPECT_EQ(TextOf(dialog, "txtInfo_5"), "125");
    EXPECT_EQ(TextOf(dialog, "txtInfo_8"), "30.00");
    Find<QComboBox>(dialog, "cboReasonOut").setCurrentText(QStringLiteral("won't run"));
    // What is pasted may be anything: the message names the field, and the keyboard is there.
    for (const auto& [text, message] :
         {std::pair{"ten", "Laps Led: \"ten\" is no number."},
          {"1.5", "Laps Led: \"1.5\" is no whole number."},
          {"40000", "Laps Led: 40000 is too large; it can be 32767 at most."}}) {
      Find<QLineEdit>(dialog, "txtInfo_4").setText(QString::fromLatin1(text));
      Click(dialog, 1);
      EXPECT_EQ(ui_.messages.back().text, message);
      EXPECT_EQ(dialog.focusWidget()->objectName(), QStringLiteral("txtInfo_4"));
    }
    Find<QLineEdit>(dialog, "txtInfo_4").setText(QStringLiteral("0"));
    Click(dialog, 1);
  });
  QTest::keyClick(&grid, Qt::Key_Insert);
  EXPECT_EQ(Ask("SELECT Qualifying FROM Stats WHERE Finish=3"), "300");  // 2.5 miles in 30 seconds
  EXPECT_EQ(Ask("SELECT Status FROM Stats WHERE Finish=3"), "won't run");
  EXPECT_EQ(Utf8(grid.Cell(grid.RowCount() - 1, 8)), "30.000");
  const auto& order = Find<QLabel>(editor, "lblOrder");
  EXPECT_FALSE(order.isHidden()) << "the new one stands at the end";

  OnModal([](QWidget& dialog) {
    EXPECT_EQ(TextOf(dialog, "txtInfo_8"), "30.000");
    Type(dialog, "txtInfo_2", "Driver 1");
    Type(dialog, "txtInfo_4", "7");
    Click(dialog, 1);
  });
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_EQ(Ask("SELECT DriverID FROM Stats WHERE Finish=3"), "1");
  EXPECT_EQ(Ask("SELECT Qualifying FROM Stats WHERE Finish=3"), "300");

  ui_.answers = {common::Answer::No, common::Answer::Yes};
  Click(editor, 4);
  EXPECT_EQ(Ask("SELECT Max(Points) FROM Stats WHERE Finish<3"), "0");
  Click(editor, 4);
  EXPECT_EQ(ui_.messages.back().title, "Warning");
  EXPECT_EQ(test::Rows(league, "SELECT Finish, Points FROM Stats ORDER BY Finish"),
            (std::vector<std::string>{"1|175", "2|170", "3|175", "4|160", "5|155"}));
  EXPECT_TRUE(order.isHidden());

  QTest::keyClick(&grid, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(&grid, Qt::Key_Delete);
  EXPECT_EQ(grid.RowCount(), 1);
  EXPECT_FALSE(Button(editor, 1).isEnabled());
  EXPECT_FALSE(Button(editor, 2).isEnabled());
  QTest::keyClick(&grid, Qt::Key_Return);  // nothing to edit
  EXPECT_EQ(DoneChanges(),
            (std::vector<std::string>{"Remove 5 results, Daytona", "Recalculate Daytona",
                                      "Edit J.R New's result, Daytona", "Add J.R New's result, Daytona",
                                      "Remove Driver 3's result, Daytona"}));
}

TEST_F(Editing, CriteriaAreOrdered) {
  OpenLeague(0, common::kOffline);
  frmOfflineSettings dialog(context_);
  auto& grid = Find<SelectionGrid>(dialog, "fgPriorities");
  const QString first = grid.Cell(0, 1);
  const QString third = grid.Cell(2, 1);
  EXPECT_FALSE(Find<QWidget>(dialog, "cmdMove_0").isEnabled());
  grid.SelectRows(0, 1);
  auto& down = Find<QAbstractButton>(dialog, "cmdMove_1");
  QTest::mouseClick(&down, Qt::LeftButton);
  EXPECT_EQ(grid.Cell(0, 1), third);
  EXPECT_EQ(grid.Cell(1, 1), first);
  EXPECT_EQ(grid.FirstSelected(), 1);
  EXPECT_EQ(grid.LastSelected(), 2);
  ui_.answers = {common::Answer::Cancel};
  dialog.show();
  dialog.close();
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(ui_.messages.back().title, "Unsaved Information");
  Click(dialog, 1);
  EXPECT_EQ(Ask("SELECT Name FROM RankCriteria WHERE Priority=1"), Utf8(third));
  EXPECT_EQ(DoneChanges(), std::vector<std::string>{"Off-line criteria"});
}

TEST_F(Editing, ColumnsAreChosenAndMoved) {
  OpenLeague(0);
  frmEditColumns editor(context_, 1, QStringLiteral("Point Standings"));
  auto& list = Find<QListWidget>(editor, "lstColumns");
  Click(editor, 3);
  EXPECT_FALSE(Button(editor, 0).isEnabled());
  list.item(1)->setCheckState(Qt::Checked);
  EXPECT_TRUE(Button(editor, 0).isEnabled());
  list.setCurrentRow(1);
  QTest::keyClick(&list, Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(list.currentRow(), 1);
  QTest::keyClick(&list, Qt::Key_Up, Qt::ControlModifier);
  EXPECT_EQ(list.currentRow(), 0);
  EXPECT_FALSE(Button(editor, 4).isEnabled());
  Click(editor, 0);
  EXPECT_FALSE(editor.Cancelled());
  EXPECT_EQ(test::Rows(*template_, "SELECT Name FROM ReportField WHERE ReportID=1 AND Hidden=False"),
            std::vector<std::string>{"Points"});
  EXPECT_EQ(test::Single(*template_, "SELECT Sequence FROM ReportField WHERE ReportID=1 AND Name='Points'"),
            "1");
}

TEST_F(Editing, ExportDialogKeepsThePagesLook) {
  engine::Database& league = OpenLeague(0);
  {
    frmExport dialog(context_, {});
    EXPECT_EQ(TextOf(dialog, "txtLayout_1"), "3");
    EXPECT_GE(Find<QComboBox>(dialog, "cboFontList").findText(QString::fromLatin1(reports::kDefaultPageFont)),
              0);
    auto& alternate = Find<QCheckBox>(dialog, "chkRowColors_2");
    EXPECT_FALSE(alternate.isEnabled());
    Find<QCheckBox>(dialog, "chkRowColors_1").click();
    alternate.click();
    Find<QCheckBox>(dialog, "chkRowColors_1").click();
    EXPECT_FALSE(alternate.isChecked());
    Find<QCheckBox>(dialog, "chkRowColors_1").click();
    ui_.colorsToPick = {{true, 0x0000FF}, {false, 0x123456}};
    auto& square = Find<ColorSquare>(dialog, "lblColor_11");
    QTest::mouseClick(&square, Qt::LeftButton);
    QTest::mouseClick(&square, Qt::LeftButton);
    EXPECT_EQ(square.Color(), 0x0000FF);
    Type(dialog, "txtLayout_0", "2x50");
    Find<QCheckBox>(dialog, "chkBGImage").click();
    Find<QLineEdit>(dialog, "txtBGImage").setText(QStringLiteral("back.gif"));
    Find<QPlainTextEdit>(dialog, "txtHeading").setPlainText(QStringLiteral("Fall League\n2003"));
    Find<QComboBox>(dialog, "cboFontSize").setCurrentIndex(2);
    Click(dialog, 0);
    EXPECT_FALSE(dialog.Cancelled());
  }
  const std::vector<std::pair<int, std::string>> stored = {
      {2, "Fall League\r\n2003"}, {16, "2"},  {100, "True"}, {101, "back.gif"},
      {113, "&H000000FF"},        {201, "1"}, {202, "0"},    {300, "100"}};
  for (const auto& [id, value] : stored) EXPECT_EQ(common::GetSettingValue(league, id), value) << id;
  frmExport again(context_, {});
  EXPECT_EQ(again.Texts().heading, "Fall League\r\n2003");
  EXPECT_EQ(again.Look(), reports::ReadPageLook(league));

  // There is nothing to show yet: the preview says so and leaves no file.
  QTest::mouseClick(&Find<QPushButton>(again, "cmdPreview"), Qt::LeftButton);
  EXPECT_EQ(ui_.messages.back().text, "Error creating HTML file...");
  EXPECT_FALSE(std::filesystem::exists(folder_.File("Preview.htm")));
  ImportSeason();
  ui_.shellOpens = false;
  frmExport page(context_, {reports::PageSubject::kRace, 1});
  QTest::mouseClick(&Find<QPushButton>(page, "cmdPreview"), Qt::LeftButton);
  EXPECT_EQ(ui_.messages.back().text, "Error viewing preview...");
  EXPECT_TRUE(std::filesystem::exists(folder_.File("Preview.htm")));
}

}  // namespace
}  // namespace scorvane::forms
