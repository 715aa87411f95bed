// The Options dialog, and the splash that is the About box, too.
#include <gtest/gtest.h>

#include <QCheckBox>

#include "app/SimFolders.h"
#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmOptions.h"
#include "forms/frmSplash.h"
#include "forms/widgets/QtUserInterface.h"
#include "forms/widgets/SelectionGrid.h"

namespace scorvane::forms {
namespace {

class OptionsDialog : public FormFixture {
 protected:
  // A folder that holds a simulation's program.
  std::string SimFolder(const std::string& name, const std::string& program) {
    std::filesystem::create_directory(folder_.File(name));
    std::ofstream(folder_.File(name + "/" + program)) << "program";
    return folder_.File(name);
  }
};

TEST_F(OptionsDialog, FoldersAreChosenCheckedAndCleared) {
  state_.simFolders[1] = "/old/place/";
  frmOptions dialog(context_);
  auto& grid = Find<SelectionGrid>(dialog, "fgPaths");
  auto& change = Find<QPushButton>(dialog, "cmdChange");
  grid.SelectRows(0, 1);
  EXPECT_FALSE(change.isEnabled());
  grid.SelectRows(0, 0);
  EXPECT_TRUE(change.isEnabled());
  ui_.foldersToPick = {SimFolder("nr3", "NASCAR Racing 3.exe"), "/nowhere/", ""};
  change.click();
  EXPECT_EQ(ui_.dialogs.back().title, "Locate the program folder for NASCAR Racing 3...");
  EXPECT_EQ(Utf8(grid.Cell(0, 1)), folder_.File("nr3/"));
  grid.SelectRows(3, 3);
  change.click();
  EXPECT_EQ(ui_.dialogs.back().title, "Locate the program folder for NASCAR Racing 2002 Season...");

  // Two folders are wrong: the message is about the last of them, and the dialog stays.
  dialog.show();
  Find<QPushButton>(dialog, "OKButton").click();
  EXPECT_TRUE(dialog.isVisible());
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(ui_.messages[0].title, "Invalid Path");
  EXPECT_EQ(ui_.messages[0].text,
            "/nowhere/\r\n\r\nScorvane cannot verify that this is the folder for NASCAR Racing 2002 "
            "because\r\nthe file "
            "\"NR2002.exe\" is not in this folder.");
  change.click();  // cancelled: it stays as it is
  EXPECT_EQ(Utf8(grid.Cell(3, 1)), "/nowhere/");
  grid.SelectRows(1, 4);
  Find<QPushButton>(dialog, "cmdClear").click();
  Find<QPushButton>(dialog, "OKButton").click();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_FALSE(dialog.Cancelled());
  EXPECT_EQ(state_.simFolders[0], folder_.File("nr3/"));
  EXPECT_EQ(common::GetSettingValue(*template_, common::kFolderNR3), folder_.File("nr3/"));
  EXPECT_EQ(common::GetSettingValue(*template_, common::kFolderLegends), "");
}

TEST_F(OptionsDialog, TheGridPicksByMouseAndKeyAndTheCloseBoxChecksNothing) {
  frmOptions dialog(context_);
  Show(dialog);
  auto& grid = Find<SelectionGrid>(dialog, "fgPaths");
  ui_.foldersToPick = {"/", "/nowhere/"};
  const QPoint legends = grid.visualRect(grid.model()->index(1, 0)).center();
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, legends);
  QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, legends);
  QTest::keyClick(&grid, Qt::Key_Down);
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_EQ(Utf8(grid.Cell(1, 1)), "/");
  EXPECT_EQ(Utf8(grid.Cell(2, 1)), "/nowhere/");

  // A path belongs to its simulation, wherever it is shown.
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  QTest::keyClicks(&Find<QLineEdit>(grid, "txtFilter"), QStringLiteral("nowhere"));
  ASSERT_EQ(grid.RowCount(), 1);
  ui_.foldersToPick = {"/elsewhere/"};
  QTest::keyClick(&grid, Qt::Key_Return);
  EXPECT_EQ(Utf8(grid.StoredRows()[2].cells[1]), "/elsewhere/");
  Find<QLineEdit>(grid, "txtFilter").clear();
  dialog.close();
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_FALSE(dialog.Cancelled());

  frmOptions left(context_);
  Show(left);
  QTest::keyClick(&left, Qt::Key_Escape);
  EXPECT_FALSE(left.isVisible());
  EXPECT_TRUE(left.Cancelled());
}

TEST_F(OptionsDialog, PageDefaultsAndSwitchesAreStored) {
  frmOptions dialog(context_);
  EXPECT_FALSE(Find<QPushButton>(dialog, "cmdBGImage").isEnabled());
  Find<QCheckBox>(dialog, "chkBGImage").click();
  EXPECT_TRUE(Find<QPushButton>(dialog, "cmdBGImage").isEnabled());
  ui_.filesToOpen = {{"/pictures/track.gif"}, {" "}};
  Find<QPushButton>(dialog, "cmdBGImage").click();
  Find<QPushButton>(dialog, "cmdBGImage").click();
  EXPECT_EQ(ui_.dialogs.back().title, "Select Background Image");
  EXPECT_EQ(ui_.dialogs.back().filterIndex, 1);
  ui_.colorsToPick = {{true, 0x0000FF}, {false, 0}};
  auto& square = Find<ColorSquare>(dialog, "lblColor_0");
  QTest::mouseClick(&square, Qt::LeftButton);
  square.setFocus();
  QTest::keyClick(&square, Qt::Key_Space);
  Find<QCheckBox>(dialog, "chkLastFileFlag").setChecked(false);
  Find<QCheckBox>(dialog, "chkImportAlerts").setChecked(false);
  // The close box keeps what was chosen.
  ui_.foldersToPick = {"", "backups here"};
  Find<QPushButton>(dialog, "cmdBackupFolder").click();
  EXPECT_EQ(ui_.dialogs.back().folder, folder_.File("Backups")) << "where they go without a choice";
  Find<QPushButton>(dialog, "cmdBackupFolder").click();
  Find<QSpinBox>(dialog, "spnBackupDays").setValue(30);
  dialog.show();
  dialog.close();
  EXPECT_FALSE(dialog.Cancelled());
  const std::vector<std::pair<int, std::string>> stored = {
      {100, "1"}, {101, "/pictures/track.gif"},       {102, "&H000000FF"}, {11, "0"},
      {18, "0"},  {20, folder_.File("backups here")}, {21, "30"}};
  for (const auto& [id, value] : stored) EXPECT_EQ(common::GetSettingValue(*template_, id), value) << id;

  frmOptions again(context_);
  Find<QPushButton>(again, "CancelButton").click();
  EXPECT_TRUE(again.Cancelled());
}

TEST_F(OptionsDialog, SplashGoesByItselfAndAboutStays) {
  frmSplash splash;
  splash.ShowSplash();
  EXPECT_TRUE(splash.isVisible());
  EXPECT_EQ(Utf8(Find<QLabel>(splash, "lblVersion").text()), "Version 1.00.00");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !splash.isVisible(); }, 4000));

  // What start-up has to say is not hidden behind it.
  frmSplash early;
  early.ShowSplash();
  OnModal([&early](QWidget& box) {
    EXPECT_FALSE(early.isVisible());
    box.close();
  });
  QtUserInterface().ShowMessage({"Please locate"});

  // A click on the version closes it; until then it stays.
  frmSplash about;
  QTimer::singleShot(2300, &about, [&about] {
    EXPECT_TRUE(about.isVisible());
    QTest::mouseClick(&Find<QLabel>(about, "lblVersion"), Qt::LeftButton);
  });
  about.ShowAbout();
  EXPECT_FALSE(about.isVisible());
}

}  // namespace
}  // namespace scorvane::forms
