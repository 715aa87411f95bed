// The standings view on the sample season.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QScreen>
#include <sstream>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmStats.h"
#include "forms/widgets/Twips.h"

namespace scorvane::forms {
namespace {

using Strings = std::vector<std::string>;

class StandingsView : public FormFixture {
 protected:
  static SelectionGrid& Grid(QWidget& view) { return Find<SelectionGrid>(view, "fgCalcs"); }
  static std::string Caption(QWidget& view) { return Utf8(Find<QLabel>(view, "Label2").text()); }
  static Strings Row(const SelectionGrid& grid, int row) {
    Strings cells;
    for (int column = 0; column < grid.ColumnCount(); ++column) cells.push_back(Utf8(grid.Cell(row, column)));
    return cells;
  }
  static int Column(const SelectionGrid& grid, const char* heading) {
    for (int column = 0; column < grid.ColumnCount(); ++column)
      if (grid.Header(column) == QLatin1String(heading)) return column;
    return -1;
  }
  // Adds a report of one row with these SQL fields: name, width, alignment, format, hidden, field.
  void AddReport(const std::string& query, const Strings& fields) {
    template_->Execute("INSERT INTO Report (Name,Sequence,Query) VALUES ('Test',-1,'" + query + "')");
    const std::string id = test::Single(*template_, "SELECT Max(ReportID) FROM Report");
    int sequence = 0;
    for (const std::string& field : fields) {
      template_->Execute(
          "INSERT INTO ReportField (ReportID,Sequence,Name,ColWidth,ColAlignment,ColFormat,Hidden,Field) "
          "VALUES (" +
          id + "," + std::to_string(++sequence) + "," + field + ")");
    }
  }
};

TEST_F(StandingsView, ShowsTheSeasonAsItWasPublished) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  frmStats view(context_);
  Show(view);
  EXPECT_EQ(view.windowTitle(), QStringLiteral("Points and Stats"));
  EXPECT_EQ(Caption(view), "Results after 33 events:");
  EXPECT_EQ(view.size(), view.screen()->size() * 3 / 4);
  EXPECT_EQ(Find<QComboBox>(view, "cboStat").currentText(), QStringLiteral("Point Standings"));

  const SelectionGrid& grid = Grid(view);
  std::ifstream published(SCORVANE_SOURCE_DIR "/share/samples/season-1998/standings.csv");
  std::string line;
  std::getline(published, line);
  std::erase(line, '\r');
  ASSERT_EQ(line, "rank,driver,starts,wins,top5,top10,laps,laps_led,avg_start,avg_finish,points");
  const char* const columns[] = {"Starts", "Wins", "Top 5", "Top 10", "Laps", "Laps Led"};
  int row = 0;
  for (; std::getline(published, line); ++row) {
    ASSERT_LT(row, grid.RowCount());
    std::erase(line, '\r');
    Strings fields;
    std::stringstream stream(line);
    // A name with a comma stands in quotation marks.
    for (std::string field; std::getline(stream, field, ',');) {
      if (fields.size() == 2 && fields[1].front() == '"' && fields[1].back() != '"') {
        fields[1] += "," + field;
      } else {
        fields.push_back(field);
      }
    }
    std::erase(fields[1], '"');
    ASSERT_EQ(fields.size(), 11U) << line;
    EXPECT_EQ(Utf8(grid.Cell(row, 0)), std::to_string(row + 1));
    EXPECT_EQ(grid.model()->headerData(row, Qt::Vertical).toInt(), row + 1)
        << "the column that stays in sight";
    EXPECT_EQ(Utf8(grid.Cell(row, Column(grid, "Points"))), fields[10]) << line;
    // Of the two on equal points the report puts the one first whom the published table has second.
    const int shift = fields[1] == "Todd Bodine" ? -1 : fields[1] == "Steve Park" ? 1 : 0;
    const int place = row + shift;
    EXPECT_EQ(Utf8(grid.Cell(place, Column(grid, "Driver"))), fields[1]);
    for (std::size_t i = 0; i < std::size(columns); ++i)
      EXPECT_EQ(Utf8(grid.Cell(place, Column(grid, columns[i]))), fields[i + 2])
          << columns[i] << ": " << line;
  }
  EXPECT_EQ(row, grid.RowCount());
  EXPECT_EQ(Utf8(grid.Cell(0, Column(grid, "Interval"))), "--");
  EXPECT_TRUE(grid.isColumnHidden(Column(grid, "Prize Money")));
  EXPECT_EQ(grid.FirstSelected(), 0);
  EXPECT_EQ(grid.LastSelected(), 0);
}

TEST_F(StandingsView, MarksTheDroppedRacesAnewEveryTime) {
  engine::Database& league = OpenLeague(common::kNascarRacing3, common::kOnline, 3);
  ImportSeason();
  {
    frmStats view(context_);
    EXPECT_EQ(Caption(view), "Results based on each driver's best 30 finishes of 33 events:");
    EXPECT_EQ(Utf8(Grid(view).Cell(0, Column(Grid(view), "Starts"))), "30");
    EXPECT_EQ(test::Single(league,
                           "SELECT Max(N) FROM (SELECT Count(*) AS N FROM Stats WHERE Dropped=True "
                           "GROUP BY DriverID) AS T"),
              "3");
  }
  state_.droppedRaces = 0;
  const frmStats view(context_);
  EXPECT_EQ(test::Single(league, "SELECT Count(*) FROM Stats WHERE Dropped=True"), "0");
}

TEST_F(StandingsView, TheKeyboardSwitchesTheReport) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  frmStats view(context_);
  Show(view);
  auto& chooser = Find<QComboBox>(view, "cboStat");
  EXPECT_TRUE(chooser.hasFocus());
  const Strings names = test::Rows(*template_, "SELECT Name FROM Report ORDER BY Sequence");
  ASSERT_EQ(chooser.count(), static_cast<int>(names.size()));
  for (int i = 0; i < chooser.count(); ++i) {
    EXPECT_EQ(Utf8(chooser.currentText()), names[static_cast<std::size_t>(i)]);
    const std::string id = chooser.currentData().toString().toStdString();
    Strings headings;
    for (int column = 1; column < Grid(view).ColumnCount(); ++column)
      headings.push_back(Utf8(Grid(view).Header(column)));
    EXPECT_EQ(headings, test::Rows(*template_, "SELECT Name FROM ReportField WHERE ReportID=" + id +
                                                   " ORDER BY Sequence"));
    QTest::keyClick(&chooser, Qt::Key_Down);
  }
  EXPECT_TRUE(ui_.messages.empty());
  const int wins = chooser.findText(QStringLiteral("Wins"));
  chooser.setCurrentIndex(wins);
  EXPECT_EQ(Row(Grid(view), 0), (Strings{"1", "Jeff Gordon", "13", "33", "39.4", "26", "28"}));
}

TEST_F(StandingsView, ColumnsLookAsTheReportSays) {
  OpenLeague(common::kNascarRacing3);
  AddReport(
      "SELECT 0 AS A, Null AS B, 1234.5 AS C, ''x'' AS D, True AS E, 7 AS F FROM Settings WHERE "
      "SettingsID=5",
      {"'A heading that is wide',60,4,'##0.000;;--',Null,'A'", "'B',3000,0,Null,False,'B'",
       "'C',900,8,'0.00',False,'C'", "'D',900,9,Null,False,'D'", "'E',900,2,'Yes/No',True,'E'",
       "'F',900,9,Null,False,'F'"});
  state_.decimalSeparator = ',';
  frmStats view(context_);
  Show(view);
  const SelectionGrid& grid = Grid(view);
  EXPECT_EQ(Row(grid, 0), (Strings{"1", "--", "", "1234,50", "x", "Yes", "7"}));
  EXPECT_GT(grid.columnWidth(1),
            grid.fontMetrics().horizontalAdvance(QStringLiteral("A heading that is wide")));
  EXPECT_EQ(grid.columnWidth(2), TwipsToPixels(3000, &grid));
  EXPECT_TRUE(grid.isColumnHidden(5));
  const Qt::Alignment expected[] = {Qt::AlignHCenter, Qt::AlignLeft, Qt::AlignRight,
                                    Qt::AlignLeft,    Qt::AlignLeft, Qt::AlignRight};
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(grid.model()->index(0, i + 1).data(Qt::TextAlignmentRole).value<Qt::Alignment>() &
                  Qt::AlignHorizontal_Mask,
              expected[i])
        << i;
  EXPECT_EQ(grid.horizontalHeader()->sectionResizeMode(2), QHeaderView::Interactive);
}

TEST_F(StandingsView, OnlyRowsAreSelectedAndNoCellWearsAFrame) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  frmStats view(context_);
  Show(view);
  SelectionGrid& grid = Grid(view);
  QTest::mouseClick(grid.findChild<QAbstractButton*>(), Qt::LeftButton);
  EXPECT_TRUE(grid.OneRowSelected()) << "the corner";
  QTest::mouseClick(grid.horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
  EXPECT_TRUE(grid.OneRowSelected()) << "a heading";
  QTest::keyClick(&grid, Qt::Key_Down);
  QTest::keyClick(&grid, Qt::Key_Right);
  const QImage with = grid.viewport()->grab().toImage();
  Find<QComboBox>(view, "cboStat").setFocus();
  EXPECT_EQ(grid.viewport()->grab().toImage(), with);
}

TEST_F(StandingsView, KeepsWorkingWhenAReportDoesNot) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  AddReport("SELECT Nothing FROM Nowhere", {"'A',900,0,Null,False,'A'"});
  frmStats view(context_);
  Show(view);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_NE(ui_.messages[0].text.find("Nowhere"), std::string::npos) << ui_.messages[0];
  EXPECT_EQ(ui_.messages[0].icon, common::MessageIcon::Critical);
  EXPECT_EQ(Grid(view).RowCount(), 0);
  QTest::keyClick(&Find<QComboBox>(view, "cboStat"), Qt::Key_Down);
  EXPECT_EQ(Utf8(Grid(view).Cell(0, 1)), "Jeff Gordon");

  // A report without columns shows nothing new.
  template_->Execute("DELETE FROM ReportField WHERE Name='A'");
  QTest::keyClick(&Find<QComboBox>(view, "cboStat"), Qt::Key_Up);
  EXPECT_EQ(Utf8(Grid(view).Cell(0, 1)), "Jeff Gordon");
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(StandingsView, ATemplateWithoutReportsAndALeagueWithoutRaces) {
  OpenLeague(common::kNascarRacing3);
  {
    frmStats view(context_);
    EXPECT_EQ(Caption(view), "Results after 0 events:");
    EXPECT_EQ(Grid(view).RowCount(), 0);
    EXPECT_GT(Grid(view).ColumnCount(), 10);
    EXPECT_EQ(Grid(view).FirstSelected(), -1);
  }
  template_->Execute("DELETE FROM Report");
  frmStats view(context_);
  Show(view);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_FALSE(Button(view, 0).isEnabled());
  EXPECT_FALSE(Button(view, 1).isEnabled());
  QTest::keyClick(&view, Qt::Key_Escape);
  EXPECT_FALSE(view.isVisible());
}

TEST_F(StandingsView, TheButtonsEditAndExportTheShownReport) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  ImportSeason();
  frmStats view(context_);
  Show(view);
  EXPECT_EQ(Button(view, 0).toolTip(), QStringLiteral("Export this report into an HTML file."));

  // Hides the first column.
  QTimer::singleShot(0, &view, [] {
    QWidget* editor = QApplication::activeModalWidget();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("Columns for \"Point Standings\""));
    Find<QListWidget>(*editor, "lstColumns").item(0)->setCheckState(Qt::Unchecked);
    Click(*editor, 0);
  });
  Click(view, 1);
  EXPECT_TRUE(Grid(view).isColumnHidden(1));
  EXPECT_EQ(Utf8(Grid(view).Cell(0, 1)), "Jeff Gordon");

  const std::string path = folder_.File("page.htm");
  std::ofstream(path) << "old";
  ui_.filesToSave = {path, folder_.File("page")};
  ui_.answers = {common::Answer::No, common::Answer::Yes};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(std::filesystem::file_size(path), 3U);
    QTimer::singleShot(0, &view, [] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Export to HTML"));
      Click(*dialog, 0);
    });
    Click(view, 0);
  }
  EXPECT_EQ(ui_.messages[0].text, "The file \"" + path + "\" already exists!  Overwrite it?");
  EXPECT_EQ(ui_.messages[0].title, "File Exists");
  EXPECT_EQ(ui_.dialogs[0].name, "Point Standings.htm");
  EXPECT_EQ(ui_.dialogs[0].filter, "HTML File (*.htm)|*.htm");
  EXPECT_EQ(common::GetSettingValue(league, common::kCaption), "Results after 33 events");
  std::ifstream file(path);
  const std::string page((std::istreambuf_iterator<char>(file)), {});
  EXPECT_NE(page.find("Results after 33 events"), std::string::npos);
  EXPECT_EQ(page.find("Jeff Gordon"), std::string::npos) << "a column that is hidden";
  EXPECT_NE(page.find("5328"), std::string::npos);

  // A spreadsheet by its name; one that cannot be written is said.
  ui_.filesToSave = {folder_.File("standings.CSV"), folder_.File("none/standings.xlsx")};
  for (int i = 0; i < 2; ++i) {
    OnModal([](QWidget& dialog) { Click(dialog, 0); });
    Click(view, 0);
    EXPECT_EQ(ui_.messages.size(), 2U + static_cast<std::size_t>(i));
  }
  std::ifstream sheet(folder_.File("standings.CSV"));
  std::string line;
  std::getline(sheet, line);
  EXPECT_EQ(line.substr(0, 11), "Pos,Points,");
  std::getline(sheet, line);
  EXPECT_EQ(line.substr(0, 7), "1,5328,");
}

}  // namespace
}  // namespace scorvane::forms
