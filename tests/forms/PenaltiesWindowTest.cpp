// Penalties given, shown and taken back through the windows.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <QRadioButton>

#include "app/Commands.h"
#include "forms/FormFixture.h"
#include "forms/frmEditRace.h"
#include "forms/frmPenalties.h"
#include "forms/frmRaces.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {
namespace {

class PenaltyWindows : public FormFixture {
 protected:
  PenaltyWindows() {
    engine::Database& league = OpenLeague(common::kNascarRacing3);
    league.Execute("INSERT INTO Race (Name, Length, Laps) VALUES ('Dover', 1, 200)");
    for (int place = 1; place <= 4; ++place) {
      league.Execute(fmt::format("INSERT INTO Driver (Name) VALUES ('Driver {}')", place));
      league.Execute(
          fmt::format("INSERT INTO Stats (RaceID, DriverID, Finish, Start, Points, Bonus, LapsLed, Status) "
                      "VALUES (1, {0}, {0}, {0}, {1}, 0, 0, 'Running')",
                      place, 180 - 5 * place));
    }
  }

  static void Type(QWidget& form, const char* box, const QString& text) {
    auto& field = Find<QLineEdit>(form, box);
    field.setFocus();
    field.selectAll();
    // Keys are of plain letters only.
    if (std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 128; }))
      QTest::keyClicks(&field, text);
    else
      field.setText(text);
  }
  static std::vector<std::string> Column(const SelectionGrid& grid, int column) {
    std::vector<std::string> cells;
    for (int row = 0; row < grid.RowCount(); ++row) cells.push_back(Utf8(grid.Cell(row, column)));
    return cells;
  }
  static QVariant CellData(const SelectionGrid& grid, int row, int column, int role) {
    return grid.model()->index(row, column).data(role);
  }
};

TEST_F(PenaltyWindows, AResultIsPenalisedInTheRaceEditor) {
  constexpr int kDriver = 2;
  constexpr int kPoints = 5;
  using Cells = std::vector<std::string>;
  frmEditRace editor(context_, {1, false});
  Show(editor);
  auto& grid = Find<SelectionGrid>(editor, "fgDrivers");
  auto& penalty = Find<QPushButton>(editor, "cmdPenalty");
  grid.SelectRows(0, 1);
  EXPECT_FALSE(penalty.isEnabled());
  grid.SelectRows(0, 0);

  OnModal([&](QWidget& dialog) {
    EXPECT_EQ(Utf8(Find<QLabel>(dialog, "lblDriver").text()), "Driver 1");
    EXPECT_FALSE(Button(dialog, 0).isEnabled());
    Find<QRadioButton>(dialog, "optKind_1").setChecked(true);
    Type(dialog, "txtPosition", QStringLiteral("-9.x"));  // digits only
    Type(dialog, "txtReason", QStringLiteral("   "));
    EXPECT_FALSE(Button(dialog, 0).isEnabled());
    Type(dialog, "txtReason", QStringLiteral("<b>Rough</b> & Zoë's"));
    // No such place: the sentence comes, and what was typed stays.
    Click(dialog, 0);
    ASSERT_EQ(ui_.messages.size(), 1U);
    EXPECT_EQ(ui_.messages[0].text, "This race has no place 9: its last one is 4.");
    Type(dialog, "txtPosition", QStringLiteral("3"));
    Click(dialog, 0);
  });
  QTest::mouseClick(&penalty, Qt::LeftButton);
  EXPECT_EQ(Column(grid, kDriver), (Cells{"Driver 2", "Driver 3", "Driver 1", "Driver 4"}));
  EXPECT_EQ(Column(grid, kPoints), (Cells{"175", "170", "165", "160"}));
  EXPECT_EQ(grid.CurrentRow(), 2);
  EXPECT_FALSE(CellData(grid, 2, kDriver, Qt::DecorationRole).isNull());
  EXPECT_TRUE(CellData(grid, 2, kPoints, Qt::DecorationRole).isNull());
  EXPECT_TRUE(CellData(grid, 1, kDriver, Qt::DecorationRole).isNull());
  EXPECT_EQ(Utf8(CellData(grid, 2, kDriver, Qt::AccessibleDescriptionRole).toString()),
            "<b>Rough</b> & Zoë's (moved to 3rd)");

  // Removing a result shows what that makes of the others.
  grid.SelectRows(0, 0);
  QTest::keyClick(&grid, Qt::Key_Delete);
  EXPECT_EQ(Column(grid, 0), (Cells{"1", "3", "4"}));
  EXPECT_EQ(Column(grid, kDriver), (Cells{"Driver 3", "Driver 1", "Driver 4"}));
  EXPECT_EQ(*app::Undo(session_), "Remove Driver 2's result, Dover");
  EXPECT_EQ(*app::Undo(session_), "Penalty for Driver 1, Dover");

  // Nothing of a race that is being imported is penalised yet.
  session_.League().Execute("INSERT INTO STNRace (Name, Length, Laps) VALUES ('Dover', 1, 200)");
  const frmEditRace staged(context_, {1, true});
  EXPECT_EQ(staged.findChild<QPushButton*>(QStringLiteral("cmdPenalty")), nullptr);
}

TEST_F(PenaltyWindows, ThoseOfTheLeagueAreTakenBackTogether) {
  frmRaces window(context_);
  window.FillRaceGrid();
  Show(window);
  auto* item = window.findChild<QAction*>(QStringLiteral("mnuSeason_10"));
  ASSERT_NE(item, nullptr);
  OnModal([](QWidget& dialog) {
    EXPECT_FALSE(Button(dialog, 0).isEnabled());
    EXPECT_TRUE(Find<QLabel>(dialog, "lblHint").isVisible());
    Click(dialog, 1);
  });
  item->trigger();

  const auto before =
      test::Rows(session_.League(), "SELECT Finish, Points, Status FROM Stats ORDER BY StatsID");
  for (const int driver : {1, 2}) {
    scoring::Penalty penalty;
    penalty.raceId = 1;
    penalty.driverId = driver;
    penalty.kind = scoring::PenaltyKind::Disqualification;
    penalty.reason = "Illegal car";
    app::AddPenalty(session_, penalty);
  }
  OnModal([](QWidget& dialog) {
    auto& grid = Find<SelectionGrid>(dialog, "fgPenalties");
    EXPECT_EQ(Column(grid, 1), (std::vector<std::string>{"Driver 1", "Driver 2"}));
    EXPECT_EQ(Column(grid, 2), (std::vector<std::string>{"disqualified", "disqualified"}));
    grid.SelectRows(0, 1);
    QTest::keyClick(&grid, Qt::Key_Delete);
    EXPECT_FALSE(Button(dialog, 0).isEnabled());
    Click(dialog, 1);
  });
  item->trigger();
  EXPECT_EQ(test::Rows(session_.League(), "SELECT Finish, Points, Status FROM Stats ORDER BY StatsID"),
            before);
  EXPECT_EQ(*app::Undo(session_), "Remove 2 penalties");
}

}  // namespace
}  // namespace scorvane::forms
