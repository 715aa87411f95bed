// The properties of a league file, new or open.
#include <gtest/gtest.h>

#include <QRadioButton>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmLGXProperties.h"
#include "import/Tracks.h"
#include "platform/Platform.h"

namespace scorvane::forms {
namespace {

using common::Message;
using common::MessageIcon;
using Strings = std::vector<std::string>;

class Properties : public FormFixture {
 protected:
  static void Type(frmLGXProperties& dialog, const std::string& text) {
    auto& box = Find<QLineEdit>(dialog, "txtFileName");
    box.setFocus();
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    QTest::keyClicks(&box, Q(text));
  }
  static void Choose(QWidget& dialog, const char* combo, int index) {
    auto& box = Find<QComboBox>(dialog, combo);
    QTest::keyClick(&box, Qt::Key_Home);
    for (int i = 0; i < index; ++i) QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_EQ(box.currentIndex(), index);
  }
  // The settings that the dialog decides on: simulation, dropped races, league type, lap reporting method.
  Strings Settings(const std::string& path) {
    const auto league = engine_.DefaultWorkspace().OpenDatabase(path);
    return test::Rows(
        *league, "SELECT SettingValue FROM Settings WHERE SettingsID IN (5,6,12,17) ORDER BY SettingsID");
  }
  static Message Error(const std::string& reason) {
    return {"Error creating new LGX file: " + reason, "Error", MessageIcon::Exclamation};
  }
};

TEST_F(Properties, CreateMakesALeagueOfWhatWasChosen) {
  state_.simFolders[3] = "/sims/nr2002";
  frmLGXProperties dialog(context_);
  Show(dialog);
  EXPECT_EQ(Find<QComboBox>(dialog, "cboTitle").currentText(), QStringLiteral("NASCAR Racing 2002 Season"));
  EXPECT_EQ(Find<QComboBox>(dialog, "cboDroppedRaces").count(), 11);
  EXPECT_EQ(Button(dialog, 0).text(), QStringLiteral("Create"));
  EXPECT_EQ(dialog.CurrentDB(), nullptr);
  EXPECT_FALSE(Button(dialog, 0).isEnabled());
  Type(dialog, "   ");
  EXPECT_FALSE(Button(dialog, 0).isEnabled());
  Type(dialog, "My League");
  EXPECT_TRUE(Button(dialog, 0).isEnabled());

  Choose(dialog, "cboTitle", 1);
  Choose(dialog, "cboDroppedRaces", 10);
  Choose(dialog, "cboLeagueType", 1);
  QTest::keyClick(&Find<QRadioButton>(dialog, "optLapMethod_1"), Qt::Key_Space);
  Click(dialog, 0);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_FALSE(dialog.Cancelled());
  // Without a folder it lies in the application's.
  EXPECT_EQ(dialog.FileName(), folder_.File("My League.lgx"));
  EXPECT_EQ(Settings(dialog.FileName()), (Strings{"1", "10", "1", "1"}));
}

TEST_F(Properties, PathsAreCompletedNotChanged) {
  const struct {
    const char* typed;
    const char* path;
  } cases[] = {{"a", "/home/a.lgx"}, {"a.LGX", "/home/a.LGX"}, {"a.lgx.old", "/home/a.lgx.old.lgx"},
               {"/x/a", "/x/a.lgx"}, {"/x.y/a", "/x.y/a.lgx"}, {"C:\\leagues\\a.Lgx", "C:\\leagues\\a.Lgx"}};
  for (const auto& [typed, path] : cases) EXPECT_EQ(app::CompleteLeaguePath(typed, "/home/"), path);
}

TEST_F(Properties, AFileIsReplacedOnlyWhenTheUserSaysSo) {
  const std::string path = folder_.File("there.lgx");
  std::ofstream(path) << "old";
  state_.simFolders[0] = "/sims/nr3";
  frmLGXProperties dialog(context_);
  Show(dialog);
  Type(dialog, path);
  ui_.answers = {common::Answer::No, common::Answer::Yes, common::Answer::Yes, common::Answer::Yes};
  Click(dialog, 0);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.FileName(), "");
  EXPECT_EQ(std::filesystem::file_size(path), 3U);
  EXPECT_EQ(ui_.messages,
            std::vector<Message>(1, {"\"" + path + "\" already exists!  Do you want to replace it?",
                                     "File Exists", MessageIcon::None}));
  EXPECT_EQ(ui_.questions, std::vector<common::Buttons>{common::Buttons::YesNo});

  // Open in another program.
  {
    const auto other = platform::FileLock::TryLock(path);
    Click(dialog, 0);
  }
  ASSERT_EQ(ui_.messages.size(), 3U);
  EXPECT_EQ(ui_.messages[2], Error("Existing file is already open by another program!"));
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.FileName(), path) << "of the attempt";

  // What goes wrong on the way costs the old file nothing.
  context_.templateDb.RenameField("RankCriteria", "Query", "Other");
  Click(dialog, 0);
  context_.templateDb.RenameField("RankCriteria", "Other", "Query");
  ASSERT_EQ(ui_.messages.size(), 5U);
  EXPECT_EQ(ui_.messages[4].text.rfind("Error creating new LGX file: ", 0), 0U) << ui_.messages[4];
  EXPECT_EQ(std::filesystem::file_size(path), 3U);

  Click(dialog, 0);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(Settings(path), (Strings{"0", "0", "0", "0"}));
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()))
    EXPECT_EQ(entry.path().string().find(".scorvane-"), std::string::npos) << entry.path();
}

TEST_F(Properties, TheOpenLeagueIsClosedBeforeItIsReplaced) {
  OpenLeague(common::kNascarRacing3).Execute("INSERT INTO Race (Name) VALUES ('old')");
  const std::string path = session_.League().Name();
  frmLGXProperties dialog(context_);
  Show(dialog);
  EXPECT_EQ(dialog.CurrentDB(), &session_.League());
  Choose(dialog, "cboTitle", 2);
  Type(dialog, path);
  ui_.answers = {common::Answer::Yes};
  Click(dialog, 0);
  EXPECT_FALSE(session_.IsOpen());
  EXPECT_EQ(dialog.FileName(), path);
  EXPECT_TRUE(session_.OpenLeagueFile(path));
  EXPECT_EQ(state_.simType, common::kNascarRacing2);
  EXPECT_EQ(test::Single(session_.League(), "SELECT Count(*) FROM Race"), "0");

  // Another file that is open elsewhere is no reason to close this one.
  const std::string other = folder_.File("other.lgx");
  std::ofstream(other) << "old";
  const auto lock = platform::FileLock::TryLock(other);
  Show(dialog);
  Type(dialog, other);
  ui_.answers = {common::Answer::Yes};
  Click(dialog, 0);
  EXPECT_TRUE(session_.IsOpen());
  EXPECT_EQ(ui_.messages.back(), Error(engine::EngineError(engine::kFileInUse, other).Description()));
}

TEST_F(Properties, ErrorsLeaveTheDialogOpen) {
  frmLGXProperties dialog(context_);
  Show(dialog);
  EXPECT_EQ(Find<QComboBox>(dialog, "cboTitle").currentIndex(), -1) << "no simulation's folder is known";
  Type(dialog, folder_.File("a"));
  Click(dialog, 0);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(ui_.messages[0], Error("Please choose the racing simulation."));
  Choose(dialog, "cboTitle", 0);

  const std::string path = folder_.File("no such folder/a.lgx");
  Type(dialog, path);
  Click(dialog, 0);
  ASSERT_EQ(ui_.messages.size(), 2U);
  EXPECT_EQ(ui_.messages[1], Error(engine::EngineError(engine::kInvalidPath, path).Description()));
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.FileName(), path);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  Click(dialog, 1);
  EXPECT_TRUE(dialog.Cancelled());
  EXPECT_EQ(dialog.FileName(), "");
}

TEST_F(Properties, EscapeCancelsTheCloseBoxDoesNot) {
  OpenLeague(common::kNascarRacing3);
  for (const bool isNew : {true, false}) {
    frmLGXProperties dialog(context_);
    dialog.NewDialog(isNew);
    Show(dialog);
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(dialog.Cancelled());
    Show(dialog);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(dialog.Cancelled());
  }
}

TEST_F(Properties, OfTheOpenLeagueAreShownAndStored) {
  OpenLeague(common::kNascarLegends, common::kOffline, 4, common::kLapTime);
  frmLGXProperties dialog(context_);
  dialog.NewDialog(false);
  Show(dialog);
  const auto& file = Find<QLineEdit>(dialog, "txtFileName");
  EXPECT_EQ(Utf8(file.text()), session_.League().Name());
  EXPECT_FALSE(file.isEnabled());
  EXPECT_FALSE(Find<QComboBox>(dialog, "cboLeagueType").isEnabled());
  EXPECT_EQ(Find<QComboBox>(dialog, "cboLeagueType").currentText(), QStringLiteral("Off-line"));
  EXPECT_EQ(Find<QComboBox>(dialog, "cboTitle").currentText(), QStringLiteral("NASCAR Legends"));
  EXPECT_EQ(Find<QComboBox>(dialog, "cboDroppedRaces").currentIndex(), 4);
  EXPECT_EQ(dialog.LapReportingMethod(), common::kLapTime);
  EXPECT_EQ(Button(dialog, 0).text(), QStringLiteral("OK"));
  EXPECT_TRUE(Button(dialog, 0).isDefault());

  Choose(dialog, "cboDroppedRaces", 2);
  Choose(dialog, "cboTitle", 2);
  QTest::keyClick(&Find<QRadioButton>(dialog, "optLapMethod_0"), Qt::Key_Space);
  QTest::keyClick(&dialog, Qt::Key_Return);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_FALSE(dialog.Cancelled());
  EXPECT_EQ(state_.simType, common::kNascarRacing2);
  EXPECT_EQ(state_.droppedRaces, 2);
  EXPECT_EQ(state_.lapReportingMethod, common::kLapSpeed);
  EXPECT_EQ(DoneChanges(), Strings{"Properties"});
  const std::string path = session_.League().Name();
  session_.CloseLeagueFile();
  EXPECT_EQ(Settings(path), (Strings{"2", "2", "1", "0"}));
}

TEST_F(Properties, ANewerSimulationNeedsItsFolder) {
  OpenLeague(common::kNascarRacing3);
  frmLGXProperties dialog(context_);
  dialog.NewDialog(false);
  Show(dialog);
  const char* const names[] = {"NASCAR Racing 4", "NASCAR Racing 2002", "NASCAR Racing 2003"};
  for (int i = 0; i < 3; ++i) {
    Choose(dialog, "cboTitle", common::kNascarRacing4 + i);
    Click(dialog, 0);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(ui_.messages.back(), (Message{std::string("Scorvane needs to know the path of\r\n") + names[i] +
                                                " before this file can be\r\nswitched to that simulation.",
                                            "Missing Path", MessageIcon::Exclamation}));
  }
  EXPECT_EQ(state_.tracks, nullptr);

  // With it, the catalogue of its tracks is there before the league is switched.
  state_.simFolders[2] = SCORVANE_SOURCE_DIR "/tests/data/exported-pages";
  Choose(dialog, "cboTitle", common::kNascarRacing4);
  Click(dialog, 0);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(ui_.messages.size(), 3U);
  ASSERT_NE(state_.tracks, nullptr);
  EXPECT_EQ(state_.tracks->Count(), 6);
  EXPECT_EQ(state_.simType, common::kNascarRacing4);
}

}  // namespace
}  // namespace scorvane::forms
