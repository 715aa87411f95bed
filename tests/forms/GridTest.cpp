// What the user does to the look of a grid, and that commands mean the rows that are seen.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QScreen>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/WindowMemory.h"
#include "forms/frmDriverList.h"
#include "forms/frmHistory.h"
#include "forms/frmRaces.h"
#include "forms/widgets/Contrast.h"

namespace scorvane::forms {
namespace {

using Strings = std::vector<std::string>;

class Grid : public FormFixture {
 protected:
  static void ClickHeading(SelectionGrid& grid, int column) {
    const QHeaderView* header = grid.horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(column) + 10, header->height() / 2});
  }
  static Strings Shown(const SelectionGrid& grid, int column = 0) {
    Strings cells;
    for (int row = 0; row < grid.RowCount(); ++row) cells.push_back(Utf8(grid.Cell(row, column)));
    return cells;
  }
};

TEST_F(Grid, ASortedViewChangesNothingAndCommandsMeanWhatIsSeen) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  for (const char* race : {"('Dover', 200, 1)", "('atlanta', 9, 1)", "('Ça va', 100, 1)", "(Null, 1, 1)"})
    league.Execute(std::string("INSERT INTO Race (Name, Laps, Length) VALUES ") + race);
  const std::string path = league.Name();
  frmRaces window(context_);
  window.OpenLeagueFile(path);
  Show(window);
  auto& grid = Find<SelectionGrid>(window, "fgRaces");
  const Strings stored = {"Dover", "atlanta", "Ça va", ""};
  ASSERT_EQ(Shown(grid), stored);
  ClickHeading(grid, 1);
  EXPECT_EQ(Shown(grid, 1), (Strings{"1", "9", "100", "200"})) << "numbers by value";
  ClickHeading(grid, 0);
  EXPECT_EQ(Shown(grid), (Strings{"atlanta", "Ça va", "Dover", ""})) << "blanks behind";
  EXPECT_TRUE(grid.horizontalHeader()->isSortIndicatorShown());
  ClickHeading(grid, 0);
  EXPECT_EQ(Shown(grid), (Strings{"Dover", "Ça va", "atlanta", ""}));
  EXPECT_EQ(grid.RowData(grid.CurrentRow()), 1) << "the chosen row goes along";

  // The row that is seen is the one that goes, and what is undone comes back into the same view.
  grid.SelectRows(1, 1);
  ui_.answers = {common::Answer::Yes};
  QTest::keyClick(&grid, Qt::Key_Delete);
  EXPECT_EQ(Shown(grid), (Strings{"Dover", "atlanta", ""}));
  EXPECT_EQ(test::Rows(session_.League(), "SELECT RaceID FROM Race"), (Strings{"1", "2", "4"}));
  QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Shown(grid), (Strings{"Dover", "Ça va", "atlanta", ""}));
  ClickHeading(grid, 0);
  EXPECT_EQ(Shown(grid), stored);
  EXPECT_FALSE(grid.horizontalHeader()->isSortIndicatorShown());

  // A filter without case and accents. What it hides is not removed, and the league is not said to be empty.
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  auto& filter = Find<QLineEdit>(grid, "txtFilter");
  EXPECT_TRUE(filter.hasFocus());
  QTest::keyClicks(&filter, QStringLiteral("CA V"));
  EXPECT_EQ(Shown(grid), Strings{"Ça va"});
  QTest::keyClicks(&filter, QStringLiteral("<script>"));
  EXPECT_EQ(grid.RowCount(), 0);
  QTest::keyClick(&filter, Qt::Key_Return);
  QTest::keyClick(&grid, Qt::Key_Delete);
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_TRUE(ui_.questions.size() == 1);
  EXPECT_FALSE(Find<QLabel>(window, "lblHint").isVisible());
  QTest::keyClick(&filter, Qt::Key_Escape);
  EXPECT_EQ(Shown(grid), stored);
  EXPECT_TRUE(grid.hasFocus());
  EXPECT_FALSE(filter.isVisible());

  QTest::keyClicks(&grid, QStringLiteral("ca"));
  EXPECT_EQ(grid.CurrentRow(), 2);
  QTest::qWait(1100);
  QTest::keyClicks(&grid, QStringLiteral("2"));
  EXPECT_EQ(grid.CurrentRow(), 0) << "where no name begins so, another column";
}

TEST_F(Grid, TheContextMenuOffersTheCommandsOfTheWindow) {
  OpenLeague(common::kNascarRacing3).Execute("INSERT INTO Driver (Name, Exclude) VALUES ('A', False)");
  frmDriverList drivers(context_);
  Show(drivers);
  auto& grid = Find<SelectionGrid>(drivers, "fgDList");
  Strings items;
  QTimer::singleShot(50, qApp, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* item : menu->actions()) items.push_back(Utf8(item->text()));
    menu->setActiveAction(menu->actions().at(5));
    QTest::keyClick(menu, Qt::Key_Return);
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, {10, 10}, grid.viewport()->mapToGlobal(QPoint(10, 10)));
  QApplication::sendEvent(grid.viewport(), &event);
  EXPECT_EQ(items, (Strings{"&Edit", "&Add", "&Remove", "", "&Include", "E&xclude", "", "Copy Rows",
                            "Copy as Picture", "Filter...", "Restore Order"}));
  EXPECT_EQ(test::Single(session_.League(), "SELECT Count(*) FROM Driver WHERE Exclude"), "1");
}

TEST_F(Grid, TheWholeViewIsCopiedAsAPicture) {
  SelectionGrid grid(QStringLiteral("fgTest"));
  grid.SetColumns(
      {{QStringLiteral("Driver"), 3000}, {QStringLiteral("Hidden"), 0}, {QStringLiteral("Points"), 900}});
  std::vector<SelectionGrid::Row> rows;
  for (int i = 0; i < 60; ++i) rows.push_back({{QStringLiteral("████"), {}, QString::number(i)}, i + 1});
  grid.SetRows(rows);
  grid.SetArrangeable();
  grid.resize(120, 150);  // most of it is scrolled out of sight
  Show(grid);
  grid.SelectRows(20, 25);
  grid.CopyPicture();
  const QImage picture = QApplication::clipboard()->image();
  const int line = grid.verticalHeader()->defaultSectionSize();
  const int head = grid.horizontalHeader()->height();
  EXPECT_EQ(picture.width(), grid.columnWidth(0) + grid.columnWidth(2) + 1);
  EXPECT_EQ(picture.height(), head + 60 * line + 1);
  // Every row is painted, and none as selected.
  for (int row = 0; row < 60; ++row) {
    const QImage cell = picture.copy(0, head + row * line, grid.columnWidth(0), line);
    EXPECT_EQ(cell, picture.copy(0, head, grid.columnWidth(0), line)) << row;
  }
  EXPECT_NE(picture.copy(0, head, 60, line), picture.copy(0, 0, 60, line));
  EXPECT_EQ(grid.FirstSelected(), 20);

  // Of what is filtered only what is shown; nothing that no program would take.
  grid.AddRow({{QStringLiteral("only this")}, 99});
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  QTest::keyClicks(&Find<QLineEdit>(grid, "txtFilter"), QStringLiteral("only"));
  grid.CopyPicture();
  EXPECT_EQ(QApplication::clipboard()->image().height(), head + line + 1);
  grid.RestoreOrder();
  rows.assign(5000, {{QStringLiteral("x")}});
  grid.SetRows(rows);
  grid.CopyPicture();
  EXPECT_EQ(QApplication::clipboard()->image().height(), head + line + 1) << "the one from before";
}

TEST_F(Grid, TheHistoryGoesBackToTheChangeThatIsSeen) {
  OpenLeague(common::kNascarRacing3);
  for (const char* name : {"b", "a", "c"}) app::AddGroup(session_, championship::GroupKind::Team, name);
  frmHistory history(context_, [] {});
  Show(history);
  auto& grid = Find<SelectionGrid>(history, "fgHistory");
  ClickHeading(grid, 1);
  grid.SelectRows(1, 1);
  const std::string chosen = Utf8(grid.Cell(1, 1));
  ui_.answers = {common::Answer::No};
  Click(history, 0);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_NE(ui_.messages[0].text.find(chosen), std::string::npos) << ui_.messages[0].text;
}

TEST_F(Grid, WindowsAndColumnsComeUpAsTheyWereLeft) {
  OpenLeague(common::kNascarRacing3);
  const WindowMemory memory(*template_);
  {
    frmDriverList drivers(context_);
    Show(drivers);
    drivers.setGeometry(90, 80, 700, 500);
    auto& grid = Find<SelectionGrid>(drivers, "fgDList");
    const QHeaderView* header = grid.horizontalHeader();
    const QPoint edge(header->sectionViewportPosition(1) - 1, header->height() / 2);
    QTest::mousePress(header->viewport(), Qt::LeftButton, {}, edge);
    QTest::mouseMove(header->viewport(), edge + QPoint(20, 0));
    QTest::mouseMove(header->viewport(), edge + QPoint(60, 0));
    QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, edge + QPoint(60, 0));
    drivers.close();
  }
  frmDriverList drivers(context_);
  const int given = Find<SelectionGrid>(drivers, "fgDList").columnWidth(0);
  Show(drivers);
  EXPECT_EQ(drivers.size(), QSize(700, 500));
  EXPECT_EQ(Find<SelectionGrid>(drivers, "fgDList").columnWidth(0), given + 60);
  drivers.close();

  // What is not to be read, or lies outside the screen, leaves the window where it can be seen.
  common::SaveSettingValue(*template_, common::kWindowPlaces,
                           R"({"frmDriverList":{"place":"AAAA","fgDList":7}})");
  frmDriverList again(context_);
  Show(again);
  EXPECT_TRUE(again.screen()->geometry().intersects(again.geometry()));
}

TEST(Contrast, MutedTextCanBeReadInEveryTheme) {
  for (const auto& [paper, text, weak] : {std::tuple{0xffffff, 0x000000, 0xbebebe},
                                          {0x1e1e20, 0xe1e1e1, 0x555555},
                                          {0x000000, 0xffffff, 0x00ff00},
                                          {0xffffff, 0x000000, 0xffffff}}) {
    QPalette palette;
    palette.setColor(QPalette::Active, QPalette::Base, QColor::fromRgb(QRgb(paper)));
    palette.setColor(QPalette::Active, QPalette::Text, QColor::fromRgb(QRgb(text)));
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor::fromRgb(QRgb(weak)));
    const double contrast = ContrastOf(MutedText(palette), QColor::fromRgb(QRgb(paper)));
    EXPECT_GE(contrast, 4.5);
    EXPECT_LE(contrast, 16) << "it stands back";
  }
}

}  // namespace
}  // namespace scorvane::forms
