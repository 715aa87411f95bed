// The folder of a league's result files: chosen in the options, watched by the main window.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmAddRaces.h"
#include "forms/frmOptions.h"
#include "forms/frmRaces.h"

namespace scorvane::forms {
namespace {

namespace fs = std::filesystem;

constexpr int kPatience = 8000;  // milliseconds

class Watch : public FormFixture {
 protected:
  Watch() {
    state_.simFolders[0] = folder_.File("NASCAR3");
    fs::create_directory(state_.simFolders[0]);
    std::ofstream(state_.simFolders[0] + "/NASCAR Racing 3.exe") << "program";
    fs::create_directory(Folder());
    db::CreateLeagueFile(engine_, League(), 0, common::kOnline, *template_, 0, 0);
  }
  std::string League() const { return folder_.File("watched.lgx"); }
  std::string Folder() const { return folder_.File("results"); }
  void Put(const std::string& name, std::size_t race) {
    const fs::path file = folder_.At("results/" + name);
    fs::remove(file);
    fs::copy_file(SeasonFiles()[race], file);
  }
  void OpenWatched() {
    app::StoreWatchChoice(*template_, League(), {Folder(), true});
    window_.OpenLeagueFile(League());
    Show(window_);
  }
  std::string Offered() {
    const auto& bar = Find<QFrame>(window_, "fraWatch");
    return bar.isVisible() ? Utf8(Find<QLabel>(window_, "lblWatch").text()) : std::string();
  }
  ::testing::AssertionResult Offers(const std::string& text) {
    if (QTest::qWaitFor([&] { return Offered() == text; }, kPatience)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "offered is: " << Offered();
  }
  void Press(const char* name) { QTest::mouseClick(&Find<QPushButton>(window_, name), Qt::LeftButton); }
  std::string Races() { return test::Single(session_.League(), "SELECT Count(*) FROM Race"); }
  SelectionGrid& Grid() { return Find<SelectionGrid>(window_, "fgRaces"); }

  frmRaces window_{context_};
};

TEST_F(Watch, NewFilesAreOfferedTogetherAndImportedAsOneChange) {
  OpenWatched();
  EXPECT_EQ(Offered(), "");
  const std::string odd = std::string("race 1") + test::kOddName + ".stn";
  Put(odd, 0);
  Put("race2.stn", 1);
  Put("notes.txt", 2);
  ASSERT_TRUE(Offers("2 new result files: " + odd + ", race2.stn"));
  EXPECT_EQ(Races(), "0") << "nothing comes in unasked";

  Press("cmdWatchImport");
  EXPECT_EQ(Races(), "2");
  EXPECT_EQ(Offered(), "");
  EXPECT_EQ(Grid().RowCount(), 2);
  EXPECT_EQ(DoneChanges(), std::vector<std::string>{"Import 2 files"});
  EXPECT_EQ(Utf8(Find<QLabel>(window_, "lblStatus").text()), "Imported 2 files. Ctrl+Z takes it back.");
  EXPECT_TRUE(ui_.messages.empty());

  // What is taken back is offered again; the next file has its name already.
  Find<QAction>(window_, "mnuSeason_0").trigger();
  EXPECT_TRUE(Offers("2 new result files: " + odd + ", race2.stn"));
  Find<QAction>(window_, "mnuSeason_1").trigger();
  EXPECT_TRUE(Offers(""));
  Put("race2.stn", 3);
  QTest::qWait(2500);
  EXPECT_EQ(Offered(), "") << "the league has a race from a file of this name";
}

TEST_F(Watch, NotNowLastsUntilAFileChangesOrTheLeagueIsOpenedAgain) {
  OpenWatched();
  Put("race.stn", 0);
  ASSERT_TRUE(Offers("New result file: race.stn"));
  Press("cmdNotNow");
  EXPECT_EQ(Offered(), "");
  Put("later.stn", 1);
  EXPECT_TRUE(Offers("New result file: later.stn"));
  Put("race.stn", 2);
  EXPECT_TRUE(Offers("2 new result files: later.stn, race.stn"));
  Press("cmdNotNow");
  window_.OpenLeagueFile(League());
  EXPECT_TRUE(Offers("2 new result files: later.stn, race.stn"));
  window_.CloseLeagueFile();
  EXPECT_EQ(Offered(), "");
}

TEST_F(Watch, WhatIsStillWrittenIsWaitedForAndTheFolderMayComeAndGo) {
  OpenWatched();
  std::ifstream whole(SeasonFiles()[0], std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(whole), {}};
  {
    std::ofstream file(Folder() + "/race.stn", std::ios::binary);
    for (std::size_t at = 0; at < text.size(); at += text.size() / 12) {
      file << text.substr(at, text.size() / 12) << std::flush;
      QTest::qWait(250);
      EXPECT_EQ(Offered(), "");
    }
  }
  ASSERT_TRUE(Offers("New result file: race.stn"));

  fs::remove_all(Folder());
  ASSERT_TRUE(Offers(""));
  fs::create_directory(Folder());
  Put("again.stn", 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Offered() == "New result file: again.stn"; }, 2 * kPatience));

  // It stays where it is while a dialog works on the staged races; then it is compared again.
  OnModal([&](QWidget& dialog) {
    ui_.filesToOpen = {{SeasonFiles()[4]}};
    Click(dialog, 0);
    Put("third.stn", 2);
    QTest::qWait(3500);
    EXPECT_EQ(Find<QListWidget>(dialog, "lstRaces").count(), 1);
    Click(dialog, 3);
  });
  Find<QAction>(window_, "mnuRace_0").trigger();
  EXPECT_EQ(Races(), "1");
  EXPECT_TRUE(Offers("2 new result files: again.stn, third.stn"));
}

TEST_F(Watch, AFileThatFailsBringsTheDialogWithTheOthers) {
  OpenWatched();
  Put("a.stn", 0);
  Put("b.stn", 1);
  ASSERT_TRUE(Offers("2 new result files: a.stn, b.stn"));
  std::ofstream(Folder() + "/b.stn") << "no results";
  OnModal([](QWidget& dialog) {
    EXPECT_EQ(Find<QListWidget>(dialog, "lstRaces").count(), 1);
    Click(dialog, 4);
  });
  Press("cmdWatchImport");
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(Races(), "0");
}

TEST_F(Watch, TheFolderIsChosenInTheOptions) {
  {
    frmOptions closed(context_);
    EXPECT_FALSE(Find<QLineEdit>(closed, "txtWatchFolder").isEnabled());
    EXPECT_EQ(Find<QLabel>(closed, "lblWatchState").text(), QStringLiteral("Open a league first."));
    Find<QPushButton>(closed, "OKButton").click();
  }
  window_.OpenLeagueFile(League());
  Show(window_);
  Put("old.stn", 0);
  fs::last_write_time(Folder() + "/old.stn", fs::file_time_type::clock::now() - std::chrono::hours(24));
  const auto choose = [&](const std::function<void(QWidget&)>& work) {
    OnModal([&](QWidget& dialog) {
      work(dialog);
      Find<QPushButton>(dialog, "OKButton").click();
    });
    window_.ShowOptions();
  };
  choose([&](QWidget& dialog) {
    ui_.foldersToPick = {Folder()};
    auto& text = Find<QLineEdit>(dialog, "txtWatchFolder");
    text.setText(Q(folder_.File("nowhere")));
    emit text.editingFinished();
    EXPECT_TRUE(Find<QLabel>(dialog, "lblWatchState").text().startsWith(QLatin1String("There is no such")));
    text.clear();
    Find<QPushButton>(dialog, "cmdWatchFolder").click();
    EXPECT_EQ(ui_.dialogs.back().folder, folder_.File("NASCAR3/exports/"));
    EXPECT_EQ(Find<QLabel>(dialog, "lblWatchState").text(), QString());
  });
  EXPECT_EQ(app::ReadWatchChoice(*template_, League()).folder, Folder());
  EXPECT_TRUE(Offers("New result file: old.stn")) << "all of a folder that was just chosen";
  window_.OpenLeagueFile(League());
  QTest::qWait(2500);
  EXPECT_EQ(Offered(), "") << "of the next time only what is newer";

  Put("new.stn", 1);
  EXPECT_TRUE(Offers("New result file: new.stn"));
  choose([](QWidget& dialog) { Find<QCheckBox>(dialog, "chkWatch").setChecked(false); });
  EXPECT_EQ(Offered(), "");
  choose([](QWidget& dialog) {
    EXPECT_FALSE(Find<QLineEdit>(dialog, "txtWatchFolder").text().isEmpty());
    Find<QPushButton>(dialog, "cmdWatchClear").click();
  });
  EXPECT_EQ(app::ReadWatchChoice(*template_, League()).folder, "");
}

}  // namespace
}  // namespace scorvane::forms
