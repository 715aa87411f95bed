// Which files of a watched folder are offered, and what is kept of the folder.
#include "app/WatchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "app/Backup.h"
#include "app/Commands.h"
#include "common/ScriptedUserInterface.h"
#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

const std::string kSeason = SCORVANE_SOURCE_DIR "/share/samples/season-1998/";

class WatchFolder : public test::LeagueFixture {
 protected:
  WatchFolder() : session_(engine_, *template_, state_, ui_) {
    SaveBackupOptions(*template_, {{}, 0});
    fs::create_directory(folder_.File("results"));
  }
  void OpenLeague(std::int16_t leagueType = common::kOnline) {
    const std::string path = folder_.File("open.lgx");
    db::CreateLeagueFile(engine_, path, 0, leagueType, *template_, 0, 0);
    ASSERT_TRUE(session_.OpenLeagueFile(path));
  }
  std::string Path(const std::string& name) { return folder_.File("results/" + name); }
  // A result of the season under a name of its own in the watched folder.
  std::string Put(const std::string& name, const std::string& race = "01-daytona.stn") {
    fs::copy_file(kSeason + race, Path(name), fs::copy_options::overwrite_existing);
    return Path(name);
  }
  void Write(const std::string& name, const std::string& text) {
    std::ofstream(Path(name), std::ios::binary) << text;
  }
  Strings Listed(std::int16_t simType = common::kNascarRacing3) {
    Strings names;
    const auto files = ListResultFiles(folder_.File("results"), simType);
    for (const FolderFile& file : files.value()) names.push_back(fs::path(file.path).filename().string());
    return names;
  }
  void Import(const Strings& paths) {
    PrepareImport(session_.League(), *template_, state_);
    StageFiles(session_.League(), state_, ui_, paths, {common::kLapSpeed, true});
    app::Import(session_, ui_, paths.size());
  }

  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
  LeagueSession session_;
};

TEST_F(WatchFolder, OffersWhatTheLeagueDoesNotHave) {
  OpenLeague();
  const std::string daytona = Put("race10.stn");
  const std::string carolina = Put("race2.stn", "02-north-carolina.stn");
  Put("race11.stn");  // Daytona again, under another name
  Write("notes.stn", "Who brings the cake?\r\n");
  Write("cut.stn", std::string(200, '\0'));
  const Strings all = {carolina,          daytona,         Path("race11.stn"),
                       Path("notes.stn"), Path("cut.stn"), Path("gone.stn")};
  EXPECT_EQ(NewResultFiles(session_, all), (Strings{carolina, daytona}));
  EXPECT_EQ(test::Single(session_.League(), "SELECT Count(*) FROM STNRace"), "0");
  EXPECT_TRUE(history::List(session_.League()).empty());
  EXPECT_TRUE(ui_.messages.empty() && ui_.progress.empty());

  Import({daytona});
  EXPECT_EQ(NewResultFiles(session_, all), (Strings{carolina}))
      << "one by its name, the other by its results";
  Undo(session_);
  EXPECT_EQ(NewResultFiles(session_, all).size(), 2U);

  // While another program writes, nothing can be said.
  engine::DBEngine elsewhere;
  const auto other = elsewhere.DefaultWorkspace().OpenDatabase(session_.League().Name());
  const engine::UnitOfWork writes(*other);
  EXPECT_THROW(NewResultFiles(session_, all), engine::EngineError);
}

TEST_F(WatchFolder, ListsTheSimulationsResultFilesByName) {
  for (const char* name : {"race10.stn", "Race2.STN", "page.html", "page.HTM", "notes.txt"}) Write(name, "x");
  fs::create_directory(Path("folder.stn"));
  std::error_code without;  // links, that is
  fs::create_symlink(Path("nowhere"), Path("link.stn"), without);
  EXPECT_EQ(Listed(), (Strings{"Race2.STN", "race10.stn"}));
  EXPECT_EQ(Listed(common::kNascarRacing2003), (Strings{"page.HTM", "page.html"}));
  EXPECT_FALSE(ListResultFiles(folder_.File("nowhere"), 0).has_value());
  EXPECT_FALSE(ListResultFiles(Path("race10.stn"), 0).has_value());
}

TEST_F(WatchFolder, AFileIsReadyWhenItHasStoppedChanging) {
  constexpr std::int64_t kDay = 86'400'000'000'000;
  FolderFile fresh{"new.stn", 10, fs::file_time_type::clock::now().time_since_epoch().count()};
  const FolderFile old{"old.stn", 10, fresh.modified - kDay};
  const std::int64_t since =
      std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() - std::chrono::hours(1));
  FolderLooks looks;
  looks.Take({old, {"empty.stn", 0, fresh.modified}}, since);
  EXPECT_EQ(looks.Ready(), Strings());
  for (const std::uintmax_t size : {20U, 30U}) {  // it grows from look to look
    fresh.size = size;
    looks.Take({old, fresh}, since);
    EXPECT_FALSE(looks.IsSettled());
    EXPECT_EQ(looks.Ready(), Strings());
  }
  looks.Take({old, fresh}, since);
  EXPECT_TRUE(looks.IsSettled());
  EXPECT_EQ(looks.Ready(), Strings{"new.stn"}) << "the old one was there before the folder was chosen";

  looks.PutOff();
  looks.Take({old, fresh}, since);
  EXPECT_EQ(looks.Ready(), Strings());
  fresh.modified += 1;
  for (int look = 0; look < 2; ++look) looks.Take({old, fresh}, since);
  EXPECT_EQ(looks.Ready(), Strings{"new.stn"});
  looks.Take({}, since);
  EXPECT_EQ(looks.Ready(), Strings());

  // An old file that comes later, such as a copy that keeps its time, is new here.
  for (int look = 0; look < 2; ++look) looks.Take({{"copied.stn", 10, old.modified}}, since);
  EXPECT_EQ(looks.Ready(), Strings{"copied.stn"});
}

TEST_F(WatchFolder, ChoicesAreKeptOfEachLeague) {
  const std::string odd = folder_.File("Ligä 100%\t<b>\n\"x\"");
  EXPECT_FALSE(ReadWatchChoice(*template_, "/a.lgx").IsWatching());
  StoreWatchChoice(*template_, "/a.lgx", {" " + odd + " ", true});
  StoreWatchChoice(*template_, odd, {"results", false});
  WatchChoice kept = ReadWatchChoice(*template_, "/a.lgx");
  EXPECT_EQ(kept.folder, odd);
  EXPECT_TRUE(kept.IsWatching());
  EXPECT_GT(kept.since, 1'000'000'000);
  kept = ReadWatchChoice(*template_, odd);
  EXPECT_TRUE(fs::path(kept.folder).is_absolute());
  EXPECT_FALSE(kept.IsWatching());

  // As it was, it keeps its time; a league of an older program's setting, or of none, watches nothing.
  const std::string before = common::GetSettingValue(*template_, common::kWatchedFolders);
  StoreWatchChoice(*template_, "/a.lgx", {odd, true});
  EXPECT_EQ(common::GetSettingValue(*template_, common::kWatchedFolders), before);
  for (int i = 0; i < 250; ++i)
    StoreWatchChoice(*template_, std::to_string(i), {folder_.File("results"), true});
  EXPECT_EQ(ReadWatchChoice(*template_, "/a.lgx").folder, "");
  EXPECT_EQ(ReadWatchChoice(*template_, "249").folder, folder_.File("results"));
  common::StoreSetting(*template_, common::kWatchedFolders, "nonsense\n\t\t\t\n%\t%4\t1\tx");
  EXPECT_EQ(ReadWatchChoice(*template_, "").folder, "");
}

}  // namespace
}  // namespace scorvane::app
