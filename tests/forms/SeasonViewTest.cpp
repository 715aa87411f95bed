// The season view: what it shows is what the league holds, after every command, and can be reached by the
// pointer and by the keyboard.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMenu>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QToolTip>

#include "forms/FormFixture.h"
#include "forms/frmRaces.h"
#include "forms/frmSeasonView.h"
#include "forms/widgets/ChartView.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {
namespace {

using testing::ElementsAre;

class SeasonView : public FormFixture {
 protected:
  // Three races of three drivers, of which the worst is dropped. The second one wins the last two.
  SeasonView() {
    engine::Database& league = OpenLeague(common::kNascarRacing3, common::kOnline, 1);
    for (const char* name : {"<b>Zoë", "Bob & Co", "Carol"})
      league.Execute(fmt::format("INSERT INTO Driver (Name) VALUES ('{}')", name));
    for (int race = 1; race <= 3; ++race) {
      league.Execute(fmt::format("INSERT INTO Race (Name, Length, Laps) VALUES ('Track {}', 1, 200)", race));
      for (int id = 1; id <= 3; ++id) {
        const int finish = race > 1 && id <= 2 ? 3 - id : id;
        league.Execute(
            fmt::format("INSERT INTO Stats (RaceID, DriverID, Finish, Start, Points, Bonus, LapsRun, "
                        "LapsLed, Status) VALUES ({},{},{},{},{},0,200,0,'Running')",
                        race, id, finish, 4 - finish, 200 - 10 * finish));
      }
    }
  }

  static std::vector<std::string> Drivers(QWidget& view) {
    auto& list = Find<QListWidget>(view, "lstDrivers");
    std::vector<std::string> texts;
    for (int row = 0; row < list.count(); ++row)
      texts.push_back((list.item(row)->checkState() == Qt::Checked ? "x " : "- ") +
                      Utf8(list.item(row)->text()));
    return texts;
  }
  static ChartView& Chart(QWidget& view, const char* name) {
    auto* chart = dynamic_cast<ChartView*>(&Find<QWidget>(view, name));
    if (chart == nullptr) throw std::runtime_error(name);
    return *chart;
  }
  static void GoTo(QWidget& view, int tab) { Find<QTabWidget>(view, "ts").setCurrentIndex(tab); }
  // The rows of the matrix, as a screen reader hears them.
  static std::vector<std::string> Matrix(QWidget& view) {
    const QAbstractItemModel* model = Find<QTableView>(view, "fgMatrix").model();
    std::vector<std::string> rows;
    for (int row = 0; row < model->rowCount(); ++row) {
      std::string text = Utf8(model->headerData(row, Qt::Vertical).toString());
      for (int column = 0; column < model->columnCount(); ++column) {
        const QModelIndex cell = model->index(row, column);
        const QVariant said = model->data(cell, Qt::AccessibleTextRole);
        text += "|" + Utf8((said.isValid() ? said : model->data(cell)).toString());
        const auto font = model->data(cell, Qt::FontRole).value<QFont>();
        EXPECT_EQ(font.strikeOut(), text.ends_with("dropped"));
        EXPECT_EQ(font.bold(), said.toString().contains(QLatin1String("won")));
      }
      rows.push_back(text);
    }
    return rows;
  }
};

TEST_F(SeasonView, ShowsTheSeason) {
  frmSeasonView view(context_);
  Show(view);
  EXPECT_THAT(Drivers(view), ElementsAre("x 1 Bob & Co", "x 2 <b>Zoë", "x 3 Carol"));
  // Best two of three.
  ChartView& points = Chart(view, "chtPoints");
  ASSERT_EQ(points.Shown().marks.size(), 9U);
  EXPECT_EQ(charts::Describe(points.Shown(), points.Shown().marks[5].value), "3. Track 3, <b>Zoë: 370");
  // The pointer finds a value; what looks like markup is shown as it is.
  const charts::Value& last = points.Shown().marks[2].value;
  QTest::mouseMove(&points, points.PlaceOf(last) + QPoint(2, 1));
  EXPECT_EQ(Utf8(points.Told()), "3. Track 3, Bob & Co: 380");
  EXPECT_EQ(points.accessibleDescription(), points.Told());
  EXPECT_TRUE(QToolTip::text().contains(QLatin1String("Bob &amp; Co"))) << Utf8(QToolTip::text());
  QTest::mouseMove(&points, QPoint(1, 1));
  EXPECT_EQ(Utf8(points.Told()), "");
  // So do the arrows, to the end and not beyond it.
  points.setFocus();
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Down})
    QTest::keyClick(&points, key);
  EXPECT_EQ(Utf8(points.Told()), "3. Track 3, <b>Zoë: 370");
  QTest::keyClick(&points, Qt::Key_Left);
  EXPECT_EQ(Utf8(points.Told()), "2. Track 2, <b>Zoë: 190");
  Find<QListWidget>(view, "lstDrivers").item(0)->setCheckState(Qt::Unchecked);
  EXPECT_EQ(points.Shown().marks.size(), 6U);
  EXPECT_EQ(Utf8(points.Told()), "");
  Find<QPushButton>(view, "cmdNone").click();
  EXPECT_TRUE(points.Shown().marks.empty());
  QTest::keyClick(&points, Qt::Key_Right);
  Find<QPushButton>(view, "cmdFirst").click();
  EXPECT_EQ(points.Shown().marks.size(), 9U);

  GoTo(view, 1);
  EXPECT_THAT(Matrix(view), ElementsAre("1 Bob & Co|380|2, dropped|1, won|1, won",
                                        "2 <b>Zoë|370|1, won|2|2, dropped", "3 Carol|340|3|3|3, dropped"));
  Find<QComboBox>(view, "cboCells").setCurrentIndex(1);
  EXPECT_EQ(Matrix(view)[1], "2 <b>Zoë|370|190, won|180|180, dropped");

  GoTo(view, 2);
  Find<QComboBox>(view, "cboDriver").setCurrentIndex(1);
  EXPECT_THAT(Utf8(Find<QLabel>(view, "lblSeason").text()),
              testing::StartsWith("Position 2 with 370 points: 1 wins, 2 top five"));
  const auto& results = Find<SelectionGrid>(view, "fgResults");
  ASSERT_EQ(results.RowCount(), 3);
  std::string row;
  for (int column = 0; column < results.ColumnCount(); ++column) row += Utf8(results.Cell(2, column)) + "|";
  EXPECT_EQ(row, "3 Track 3|2|2|200|0|180|0|Running|dropped|2|370|10|");
  EXPECT_EQ(Chart(view, "chtFinishes").Shown().bars.size(), 3U);

  GoTo(view, 3);
  EXPECT_EQ(Find<QComboBox>(view, "cboRace").currentText(), QStringLiteral("3 Track 3"));
  const charts::Chart& movers = Chart(view, "chtMovers").Shown();
  EXPECT_EQ(movers.numbers.rows[0], (std::vector<std::string>{"Bob & Co", "3", "1", "+2"}));
  EXPECT_EQ(movers.numbers.rows[2][3], "-2");
}

TEST_F(SeasonView, FollowsEveryCommand) {
  frmRaces window(context_);
  window.OpenLeagueFile(folder_.File("open.lgx"));
  Show(window);
  const auto open = [&] { window.findChild<QAction*>(QStringLiteral("mnuSeason_15"))->trigger(); };
  EXPECT_EQ(window.findChild<QAction*>(QStringLiteral("mnuSeason_15"))->shortcut(), QKeySequence(Qt::Key_F5));
  open();
  const QWidgetList all = QApplication::topLevelWidgets();
  const auto found = std::find_if(all.begin(), all.end(), [](const QWidget* widget) {
    return widget->objectName() == QLatin1String("frmSeasonView");
  });
  ASSERT_NE(found, all.end());
  QWidget* view = *found;
  EXPECT_EQ(view->parentWidget(), nullptr);  // it may stand behind the main window
  EXPECT_FALSE(view->isModal());
  Find<QListWidget>(*view, "lstDrivers").item(1)->setCheckState(Qt::Unchecked);
  GoTo(*view, 2);
  Find<QComboBox>(*view, "cboDriver").setCurrentIndex(2);

  QSignalSpy matrixAnew(Find<QTableView>(*view, "fgMatrix").model(), &QAbstractItemModel::modelReset);
  // The last race goes and comes back; what was chosen stays chosen, at its new place.
  Find<SelectionGrid>(window, "fgRaces").SelectRows(2, 2);
  ui_.answers = {common::Answer::Yes};
  window.findChild<QAction*>(QStringLiteral("mnuRace_1"))->trigger();
  EXPECT_EQ(Find<SelectionGrid>(*view, "fgResults").RowCount(), 2);
  EXPECT_EQ(Find<QComboBox>(*view, "cboDriver").currentText(), QStringLiteral("3 Carol"));
  EXPECT_EQ(Find<QComboBox>(*view, "cboRace").count(), 2);
  EXPECT_FALSE(matrixAnew.isEmpty());
  EXPECT_THAT(Drivers(*view),
              testing::UnorderedElementsAre(testing::EndsWith("Bob & Co"), "- 1 <b>Zoë", "x 3 Carol"));
  window.findChild<QAction*>(QStringLiteral("mnuSeason_0"))->trigger();
  EXPECT_EQ(Find<SelectionGrid>(*view, "fgResults").RowCount(), 3);

  // What cannot be read is said in it, and is no message.
  session_.League().RenameField("Stats", "LapsLed", "Elsewhere");
  QTest::keyClick(view, Qt::Key_F5);
  EXPECT_TRUE(ui_.messages.size() == 1U);  // the question above
  GoTo(*view, 0);
  EXPECT_TRUE(Chart(*view, "chtPoints").accessibleDescription().contains(QLatin1String("LapsLed")));
  session_.League().RenameField("Stats", "Elsewhere", "LapsLed");
  QTest::keyClick(view, Qt::Key_F5);
  EXPECT_EQ(Drivers(*view).size(), 3U);

  // Closed it is not filled; without a league it is empty.
  QTest::keyClick(view, Qt::Key_Escape);
  EXPECT_FALSE(view->isVisible());
  open();
  EXPECT_TRUE(view->isVisible());
  window.CloseLeagueFile();
  EXPECT_TRUE(Drivers(*view).empty());
  for (int tab = 0; tab < 4; ++tab) GoTo(*view, tab);
  EXPECT_TRUE(Matrix(*view).empty());
  EXPECT_EQ(Chart(*view, "chtMovers").accessibleDescription(), QStringLiteral("No league is open."));
  EXPECT_EQ(Utf8(Find<QLabel>(*view, "lblSeason").text()), "");
}

}  // namespace
}  // namespace scorvane::forms
