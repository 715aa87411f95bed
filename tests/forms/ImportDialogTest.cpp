// The Import dialog, from chosen files to races of the league.
#include <gtest/gtest.h>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmAddRaces.h"
#include "forms/widgets/SelectionGrid.h"
#include "scoring/PointSystem.h"

namespace scorvane::forms {
namespace {

using common::Message;
using common::MessageIcon;
using Strings = std::vector<std::string>;

enum { kAdd, kRemove, kEdit, kImport, kCancel };

const std::string kSamples = SCORVANE_SOURCE_DIR "/tests/data/standings/";
const std::string kSeason = SCORVANE_SOURCE_DIR "/share/samples/season-1998/";

// Looks at the dialog when a progress dialog, or a message, comes up.
class WatchingInterface : public common::ScriptedUserInterface {
 public:
  QWidget* watched = nullptr;
  std::vector<bool> visibleAtProgress;
  std::vector<bool> visibleAtMessage;
  std::unique_ptr<common::Progress> StartProgress(const std::string& caption, int maximum) override {
    visibleAtProgress.push_back(watched->isVisible());
    return ScriptedUserInterface::StartProgress(caption, maximum);
  }
  void ShowMessage(const Message& message) override {
    visibleAtMessage.push_back(watched->isVisible());
    ScriptedUserInterface::ShowMessage(message);
  }
};

class ImportDialog : public FormFixture {
 protected:
  ImportDialog() { state_.simFolders[0] = folder_.File("NASCAR3"); }

  FormContext Watched(WatchingInterface& ui) { return {engine_, *template_, state_, ui, session_}; }
  static QListWidget& List(QWidget& dialog) { return Find<QListWidget>(dialog, "lstRaces"); }
  static Strings Items(QWidget& dialog) {
    Strings items;
    for (int row = 0; row < List(dialog).count(); ++row)
      items.push_back(Utf8(List(dialog).item(row)->text()));
    return items;
  }
  // Which buttons are enabled, "A" for Add to "C" for Cancel.
  static std::string Enabled(QWidget& dialog) {
    std::string enabled;
    for (int i = kAdd; i <= kCancel; ++i)
      if (Button(dialog, i).isEnabled()) enabled += "AREIC"[i];
    return enabled;
  }
  std::string Count(const char* table) {
    return test::Single(session_.League(), std::string("SELECT Count(*) FROM ") + table);
  }
};

TEST_F(ImportDialog, OpensEmptyOnEmptyStagingTables) {
  engine::Database& league = OpenLeague(common::kNascarRacing3, common::kOnline, 0, common::kLapTime);
  league.Execute("INSERT INTO STNRace (Name) VALUES ('left over')");
  league.Execute("INSERT INTO STNStats (STNRaceID, DriverName) VALUES (1, 'A')");
  frmAddRaces dialog(context_);
  Show(dialog);
  EXPECT_EQ(Count("STNRace") + Count("STNStats"), "00");
  EXPECT_EQ(state_.pointTable.Positions(), 43);
  EXPECT_EQ(Enabled(dialog), "AC");
  EXPECT_EQ(Find<QComboBox>(dialog, "cboLRM").currentText(), QStringLiteral("Time"));
  EXPECT_TRUE(Find<QComboBox>(dialog, "cboLRM").isVisible());
  EXPECT_FALSE(Find<QLabel>(dialog, "lblNote").isVisible());
  EXPECT_EQ(Find<QLabel>(dialog, "lblAlerts").text(), QString());
}

TEST_F(ImportDialog, FollowsTheKindOfLeague) {
  common::SaveSettingValue(*template_, common::kShowImportAlerts, "0");
  state_.simFolders[4] = folder_.File("NR2003");
  OpenLeague(common::kNascarRacing2003, common::kOffline);
  frmAddRaces dialog(context_);
  Show(dialog);
  EXPECT_FALSE(Find<QComboBox>(dialog, "cboLRM").isVisible());
  EXPECT_FALSE(Find<QLabel>(dialog, "lblLRM").isVisible());
  EXPECT_TRUE(Find<QLabel>(dialog, "lblNote").isVisible());
  EXPECT_EQ(Find<QLabel>(dialog, "lblAlerts").text(), QStringLiteral("Alerts are OFF"));

  const struct {
    std::int16_t simType;
    const char* folder;
    const char* filter;
  } kinds[] = {{0, "NASCAR3/exports/", "Standings File (*.stn)|*.stn"},
               {1, "", "Standings File (*.stn)|*.stn"},
               {2, "NASCAR3/exports/", "Standings File (*.stn)|*.stn"},
               {3, "NR4/exports/", "Exported Standings (*.html)|*.html"},
               {4, "NR2002/Exports_Imports/", "Exported Standings (*.html)|*.html"},
               {5, "NR2003/exports_imports/", "Exported Standings (*.html)|*.html"}};
  state_.simFolders[2] = folder_.File("NR4/");
  state_.simFolders[3] = folder_.File("NR2002\\");
  std::filesystem::create_directories(folder_.File("NR2002/Exports_Imports"));
  for (const auto& kind : kinds) {
    state_.simType = kind.simType;
    ui_.filesToOpen = {{}};
    PressMnemonic(dialog, Qt::Key_A);
    ASSERT_FALSE(ui_.dialogs.empty());
    const common::FileRequest& request = ui_.dialogs.back();
    EXPECT_EQ(request.folder, *kind.folder == '\0' ? "" : folder_.File(kind.folder)) << kind.simType;
    EXPECT_EQ(request.filter, kind.filter);
    EXPECT_TRUE(request.several);
  }
  EXPECT_EQ(Enabled(dialog), "AC");
}

TEST_F(ImportDialog, SeveralFilesAreReadWhileTheDialogIsHidden) {
  WatchingInterface ui;
  FormContext context = Watched(ui);
  OpenLeague(common::kNascarRacing3);
  common::SaveSettingValue(*template_, common::kShowImportAlerts, "0");
  const std::string exports = folder_.File("NASCAR3/exports/");
  std::filesystem::create_directories(exports);
  std::filesystem::copy(kSeason + "06-bristol.stn", exports + "06-bristol.stn");
  frmAddRaces dialog(context);
  ui.watched = &dialog;
  ui.filesToOpen = {{exports + "06-bristol.stn", kSamples + "practice.stn", kSeason + "06-bristol.stn"}};

  // While it runs as a dialog: it is over when the user says so, not when it hides.
  bool running = true;
  QTimer::singleShot(0, &dialog, [&] { Click(dialog, kAdd); });
  QTimer::singleShot(50, &dialog, [&] {
    EXPECT_TRUE(running);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.isModal());
    Click(dialog, kCancel);
  });
  EXPECT_EQ(dialog.exec(), QDialog::Rejected);
  running = false;

  EXPECT_EQ(ui.visibleAtProgress, std::vector<bool>{false});
  ASSERT_EQ(ui.progress.size(), 1U);
  EXPECT_EQ(ui.progress[0]->caption, "Reading STN Files");
  EXPECT_EQ(ui.progress[0]->maximum, 3);
  EXPECT_EQ(ui.progress[0]->value, 3);
  EXPECT_TRUE(ui.progress[0]->closed);
  EXPECT_EQ(ui.progress[0]->lines, (Strings{"Reading: \"06-bristol.stn\"", "Reading: \"practice.stn\"",
                                            "Reading: \"06-bristol.stn\""}));
  // The file's own message, then the sum, both before the dialog is back.
  ASSERT_EQ(ui.messages.size(), 2U) << testing::PrintToString(ui.messages);
  EXPECT_EQ(ui.messages[1],
            (Message{"There were 1 file(s) that failed to import.  To see error messages for individual\r\n"
                     "files, enable \"Show Alerts when importing result files\"on the \"Options\" dialog.",
                     "Warning", MessageIcon::Information}));
  EXPECT_EQ(ui.visibleAtMessage, (std::vector<bool>{false, false}));
  EXPECT_EQ(Items(dialog), (Strings{"06-bristol.stn", "06-bristol.stn\t" + kSeason}));
  EXPECT_EQ(List(dialog).currentRow(), 0);
  EXPECT_EQ(Enabled(dialog), "AREIC");

  EXPECT_EQ(Count("Race"), "0");
  EXPECT_EQ(Count("STNRace"), "2") << "until the dialog is opened again";
}

TEST_F(ImportDialog, OneFileIsReadInFrontOfTheDialog) {
  WatchingInterface ui;
  FormContext context = Watched(ui);
  OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context);
  Show(dialog);
  ui.watched = &dialog;
  // Its qualifying column holds times: as what it is read is the user's choice.
  ui.filesToOpen = {{kSamples + "nr3.stn"}, {kSamples + "nr3.stn"}};
  Click(dialog, kAdd);
  EXPECT_EQ(Enabled(dialog), "AC");
  ASSERT_EQ(ui.messages.size(), 1U) << "with the alerts on there is no sum";
  EXPECT_EQ(ui.messages[0].title, "Error Reading '" + kSamples + "nr3.stn'");
  EXPECT_EQ(ui.visibleAtMessage, std::vector<bool>{true});
  QTest::keyClick(&Find<QComboBox>(dialog, "cboLRM"), Qt::Key_Down);
  Click(dialog, kAdd);
  EXPECT_EQ(ui.messages.size(), 1U);
  EXPECT_TRUE(ui.progress.empty());
  EXPECT_EQ(Enabled(dialog), "AREIC");
}

TEST_F(ImportDialog, TheSelectionDecidesAndRemoveTakesOnlyIt) {
  OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context_);
  Show(dialog);
  std::vector<std::string> files = SeasonFiles();
  files.resize(5);
  ui_.filesToOpen = {files};
  Click(dialog, kAdd);
  QListWidget& list = List(dialog);
  ASSERT_EQ(list.count(), 5);
  EXPECT_EQ(Enabled(dialog), "AREIC");
  list.setFocus();
  QTest::keyClick(&list, Qt::Key_Down);
  QTest::keyClick(&list, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(Enabled(dialog), "ARIC");
  QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier,
                    list.visualItemRect(list.item(4)).center());
  QTest::mouseClick(&Button(dialog, kRemove), Qt::LeftButton);
  EXPECT_EQ(list.count(), 2);
  EXPECT_EQ(test::Rows(session_.League(), "SELECT STNRaceID FROM STNRace"), (Strings{"1", "4"}));
  EXPECT_EQ(test::Rows(session_.League(), "SELECT DISTINCT STNRaceID FROM STNStats"), (Strings{"1", "4"}));
  EXPECT_EQ(Enabled(dialog), "AIC");

  // The last ones: Import stays, and brings nothing in.
  QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
  PressMnemonic(dialog, Qt::Key_R);
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(Enabled(dialog), "AIC");
  QTest::keyClick(&list, Qt::Key_Return);
  Click(dialog, kImport);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(Count("Race"), "0");
}

TEST_F(ImportDialog, ImportBringsTheListIntoTheLeague) {
  WatchingInterface ui;
  FormContext context = Watched(ui);
  OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context);
  Show(dialog);
  ui.watched = &dialog;
  ui.filesToOpen = {{kSeason + "06-bristol.stn"}, {kSeason + "06-bristol.stn"}};
  Click(dialog, kAdd);
  Click(dialog, kAdd);
  // A file that is there twice is asked about first.
  ui.answers = {common::Answer::No, common::Answer::Yes};
  PressMnemonic(dialog, Qt::Key_I);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(Count("Race"), "0");
  ASSERT_EQ(ui.messages.size(), 1U);
  EXPECT_EQ(ui.messages[0].text,
            "06-bristol.stn: it is among the chosen files twice.\r\n\r\nDo you want to import all the same?");
  PressMnemonic(dialog, Qt::Key_I);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(ui.visibleAtProgress, std::vector<bool>{false});
  EXPECT_EQ(ui.progress.back()->caption, "Importing Results");
  EXPECT_EQ(test::Rows(session_.League(), "SELECT FileName FROM Race"),
            (Strings{"06-bristol.stn", "06-bristol.stn"}));
  EXPECT_EQ(Count("Stats"), Count("STNStats"));
  EXPECT_EQ(DoneChanges(), Strings{"Import 2 files"});
}

TEST_F(ImportDialog, FilesAreDroppedRemovedByKeysAndEditsAreNotLostByEsc) {
  OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context_);
  Show(dialog);
  const std::string folder = std::string(test::kOddName) + " empty";
  const std::string name = std::string("6") + test::kOddName + ".stn";
  std::filesystem::create_directories(folder_.At(folder));
  ASSERT_TRUE(Drop(dialog, {folder_.File(folder)}));
  ASSERT_EQ(ui_.messages.size(), 1U);
  std::filesystem::copy(kSeason + "06-bristol.stn", folder_.At(folder + "/" + name));
  EXPECT_FALSE(Drop(dialog, {folder_.File("a.txt")}));
  ASSERT_TRUE(Drop(dialog, {folder_.File(folder), kSeason + "08-martinsville.stn"}));
  EXPECT_EQ(Items(dialog).size(), 2U);
  EXPECT_TRUE(Items(dialog)[0].starts_with(name)) << Items(dialog)[0];
  EXPECT_EQ(Enabled(dialog), "AREIC");

  const auto editFirst = [&] {
    List(dialog).setCurrentRow(0);
    OnModal([](QWidget& editor) {
      QTest::keyClick(&Find<SelectionGrid>(editor, "fgDrivers"), Qt::Key_Delete);
      editor.close();
    });
    QTest::keyClick(&List(dialog), Qt::Key_Return);
  };
  editFirst();
  ui_.answers = {common::Answer::No};
  QTest::keyClick(&List(dialog), Qt::Key_Escape);
  EXPECT_TRUE(dialog.isVisible());
  // What was edited is gone from the list: nothing is asked.
  QTest::keyClick(&List(dialog), Qt::Key_Delete);
  EXPECT_EQ(Items(dialog).size(), 1U);
  ui_.filesToOpen = {{}};
  QTest::keyClick(&List(dialog), Qt::Key_Insert);
  QTest::keyClick(&List(dialog), Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(Count("Race"), "0");
}

TEST_F(ImportDialog, AnOfflineLeagueGetsOneEvent) {
  OpenLeague(common::kNascarRacing3, common::kOffline);
  frmAddRaces dialog(context_);
  Show(dialog);
  ui_.filesToOpen = {{kSamples + "offline-1.stn", kSamples + "offline-2.stn", kSamples + "offline-3.stn"}};
  Click(dialog, kAdd);
  EXPECT_EQ(List(dialog).count(), 3);
  Click(dialog, kImport);
  EXPECT_EQ(ui_.messages, std::vector<Message>{});
  EXPECT_EQ(Count("Race"), "1");
}

TEST_F(ImportDialog, PagesOfANewerSimulationAreRead) {
  state_.simFolders[4] = SCORVANE_SOURCE_DIR "/tests/data/exported-pages";
  OpenLeague(common::kNascarRacing2003);
  frmAddRaces dialog(context_);
  Show(dialog);
  const std::string pages = SCORVANE_SOURCE_DIR "/tests/data/exported-pages/";
  // The simulation has no folder of exported pages there: the dialog begins where it likes.
  ui_.opensIn = pages;
  ui_.filesToOpen = {{pages + "2025daytona500.html", pages + "2025texas500.html"}};
  Click(dialog, kAdd);
  EXPECT_EQ(Items(dialog), (Strings{"2025daytona500.html", "2025texas500.html"}));
  EXPECT_EQ(ui_.progress[0]->caption, "Reading Standings Files");
  Click(dialog, kImport);
  EXPECT_EQ(Count("Race"), "2");
}

TEST_F(ImportDialog, AnImportThatFailsKeepsItsListAndLeavesNothingBehind) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context_);
  ui_.filesToOpen = {{kSeason + "06-bristol.stn", kSeason + "08-martinsville.stn"}};
  league.Execute("INSERT INTO Race (Name, FileName) VALUES ('in the way', '08-martinsville.stn')");
  league.AppendIndex("Race", {"Once", {"FileName"}, false, true});
  ui_.answers = {common::Answer::Yes, common::Answer::Yes};  // the name is in the league already
  QTimer::singleShot(0, &dialog, [&] {
    Click(dialog, kAdd);
    dialog.move(30, 40);
    Click(dialog, kImport);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(dialog.pos(), QPoint(30, 40));
    EXPECT_EQ(Items(dialog).size(), 2U);
    ASSERT_EQ(ui_.messages.size(), 2U);
    EXPECT_EQ(ui_.messages[1].icon, MessageIcon::Critical);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(Count("Race") + " " + Count("Stats") + " " + Count("Driver"), "1 0 0");
    league.DeleteIndex("Race", "Once");
    Click(dialog, kImport);
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(dialog.exec(), QDialog::Accepted);
  EXPECT_EQ(Count("Race"), "3");
}

TEST_F(ImportDialog, NobodyToRankKeepsTheList) {
  OpenLeague(common::kNascarRacing3, common::kOffline);
  frmAddRaces dialog(context_);
  Show(dialog);
  ui_.filesToOpen = {{kSamples + "offline-1.stn", kSamples + "offline-1.stn"}};
  ui_.answers = {common::Answer::Yes};
  Click(dialog, kAdd);
  Click(dialog, kImport);
  EXPECT_TRUE(dialog.isVisible());
  ASSERT_EQ(ui_.messages.size(), 2U);
  EXPECT_EQ(ui_.messages[1].title, "Warning");
  EXPECT_EQ(Count("Race"), "0");
}

TEST_F(ImportDialog, EveryControlHasANameAndTheKeyboardWalksThemInOrder) {
  OpenLeague(common::kNascarRacing3);
  frmAddRaces dialog(context_);
  Show(dialog);
  ui_.filesToOpen = {{kSeason + "06-bristol.stn"}};
  Click(dialog, kAdd);
  EXPECT_FALSE(List(dialog).accessibleName().isEmpty());
  EXPECT_FALSE(Find<QComboBox>(dialog, "cboLRM").accessibleName().isEmpty());
  List(dialog).setFocus();
  Strings order;
  for (int i = 0; i < 7; ++i) {
    order.push_back(Utf8(QApplication::focusWidget()->objectName()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  EXPECT_EQ(order, (Strings{"lstRaces", "cboLRM", "cmdButton_0", "cmdButton_1", "cmdButton_2", "cmdButton_3",
                            "cmdButton_4"}));
  EXPECT_EQ(QApplication::focusWidget(), &List(dialog));
}

}  // namespace
}  // namespace scorvane::forms
