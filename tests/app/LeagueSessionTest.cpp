#include "app/LeagueSession.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/SimFolders.h"
#include "common/ScriptedUserInterface.h"
#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"
#include "import/Tracks.h"

namespace scorvane::app {
namespace {

const std::string kSimulation = SCORVANE_SOURCE_DIR "/share/samples/nr2003/";

class NewSimulations : public test::LeagueFixture {
 protected:
  NewSimulations() : session_(engine_, *template_, state_, ui_) {
    for (std::int16_t simType = 0; simType < 6; ++simType)
      db::CreateLeagueFile(engine_, League(simType), simType, 0, *template_, 0, 0);
  }
  std::string League(std::int16_t simType) const { return folder_.File(std::to_string(simType) + ".lgx"); }

  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
  LeagueSession session_;
};

TEST_F(NewSimulations, NeedTheirFolderBeforeTheyOpen) {
  const std::pair<std::int16_t, const char*> simulations[] = {
      {3, "NASCAR Racing 4"}, {4, "NASCAR Racing 2002 Season"}, {5, "NASCAR Racing 2003 Season"}};
  for (const auto& [simType, name] : simulations) {
    ui_.messages.clear();
    EXPECT_FALSE(session_.OpenLeagueFile(League(simType)));
    EXPECT_FALSE(session_.IsOpen());
    EXPECT_EQ(ui_.messages,
              (std::vector<common::Message>{{std::string("Scorvane needs to know the path of\r\n") + name +
                                                 " before this file can be\r\nopened.",
                                             "Missing Path", common::MessageIcon::Exclamation}}));
    EXPECT_EQ(state_.tracks, nullptr);
  }
  ui_.messages.clear();
  for (const std::int16_t simType : {common::kNascarRacing3, common::kNascarLegends, common::kNascarRacing2})
    EXPECT_TRUE(session_.OpenLeagueFile(League(simType)));
  EXPECT_TRUE(session_.OpenLeagueFile(League(5), LeagueSession::Use::WithoutImport));
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(state_.tracks, nullptr) << "none of these needs the tracks";
}

TEST_F(NewSimulations, AskForTheirFolder) {
  int asked = 0;
  session_.SetSimFolderPrompt([&] { ++asked; });
  EXPECT_FALSE(session_.OpenLeagueFile(League(5)));
  state_.simFolders[3] = kSimulation;  // of another simulation
  session_.SetSimFolderPrompt([&] {
    ++asked;
    EXPECT_EQ(session_.League().Name(), League(5));
    state_.simFolders[4] = kSimulation;
  });
  EXPECT_TRUE(session_.OpenLeagueFile(League(5)));
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(ui_.messages.size(), 2U);
  EXPECT_EQ(common::GetSettingValue(session_.League(), 102), "&H00FFFFFF")
      << "the opening went on to its end";
  ASSERT_NE(state_.tracks, nullptr);
  EXPECT_EQ(state_.tracks->Item("Oak Ridge Speedway").Length, 1.25F);

  const auto catalogue = state_.tracks;
  EXPECT_TRUE(session_.OpenLeagueFile(League(4)));
  EXPECT_EQ(state_.tracks, catalogue) << "built once a run";
  EXPECT_EQ(asked, 2);
}

// A league that was made a moment ago takes the weather of the newer simulations once it is opened.
TEST_F(NewSimulations, OpeningBringsTheFileUpToDate) {
  ASSERT_TRUE(session_.OpenLeagueFile(League(5), LeagueSession::Use::WithoutImport));
  EXPECT_EQ(session_.League().FindTableDef("Race")->FindField("Weather")->Size, 50);
  EXPECT_EQ(session_.League().FindTableDef("STNRace")->FindField("Weather")->Size, 50);
}

TEST_F(NewSimulations, FoldersComeFromTheTemplate) {
  const std::pair<int, std::size_t> settings[] = {{0, 0}, {1, 1}, {12, 2}, {13, 3}, {14, 4}};
  state_.simFolders.fill("left over");
  ReadSimFolders(*template_, state_);
  for (const auto& [id, index] : settings) {
    EXPECT_EQ(state_.simFolders[index], "");
    common::SaveSettingValue(*template_, id, "folder " + std::to_string(id));
  }
  ReadSimFolders(*template_, state_);
  for (const auto& [id, index] : settings)
    EXPECT_EQ(state_.simFolders[index], "folder " + std::to_string(id));
  template_->Execute("DELETE * FROM Settings WHERE SettingsID=14");
  ReadSimFolders(*template_, state_);
  EXPECT_TRUE(LacksSimFolder(state_, common::kNascarRacing2003));
  EXPECT_FALSE(LacksSimFolder(state_, common::kNascarRacing2002));
  EXPECT_FALSE(LacksSimFolder(state_, common::kNascarRacing2));
}

// What lies under the name that compaction uses stays as long as it may be all that is left of a league;
// either way closing gives the space back.
TEST_F(NewSimulations, ClosingCompactsAndTakesNoLeagueThatIsThere) {
  namespace fs = std::filesystem;
  const std::string left = folder_.File("TmpPoints.mdb");
  fs::copy_file(League(0), left);
  const auto closeSmaller = [&](const std::string& path) {
    EXPECT_TRUE(session_.OpenLeagueFile(path));
    session_.League().Execute("DELETE * FROM Bonus");
    session_.League().Execute("DELETE * FROM RankCriteria");
    const auto size = fs::file_size(path);
    session_.CloseLeagueFile();
    EXPECT_LT(fs::file_size(path), size) << path;
  };
  closeSmaller(left);
  closeSmaller(League(1));
  EXPECT_TRUE(fs::exists(left)) << "no league of the folder is like it";
  // A copy of what is there is in nobody's way, and neither is half of one.
  fs::copy_file(League(0), left, fs::copy_options::overwrite_existing);
  closeSmaller(League(2));
  EXPECT_FALSE(fs::exists(left));
  std::ofstream(left) << "half of it";
  std::ofstream(left + "-journal") << "and what belongs to it";
  closeSmaller(League(0));
  EXPECT_FALSE(fs::exists(left) || fs::exists(left + "-journal"));
  // The copy of a league goes before that one is changed.
  fs::copy_file(League(0), left);
  ASSERT_TRUE(session_.OpenLeagueFile(League(0)));
  session_.League().Execute("UPDATE Settings SET SettingValue='7' WHERE SettingName='Dropped Races'");
  session_.CloseLeagueFile();
  EXPECT_FALSE(fs::exists(left));
  for (const auto& entry : fs::directory_iterator(fs::path(left).parent_path()))
    EXPECT_EQ(entry.path().string().find(".scorvane-"), std::string::npos) << entry.path();
}

// The folder of the tests has the reader beside them, as the program has.
TEST_F(NewSimulations, AnOldLeagueIsConvertedAfterAskingAndKept) {
  namespace fs = std::filesystem;
  const std::string path = folder_.File("club.lgx");
  const std::string kept = folder_.File("club (original).lgx");
  fs::copy_file(SCORVANE_SOURCE_DIR "/tests/data/legacy/league-2000.lgx", path);
  const auto size = fs::file_size(path);
  ASSERT_TRUE(session_.OpenLeagueFile(League(0)));
  ui_.answers = {common::Answer::No, common::Answer::Yes};
  EXPECT_FALSE(session_.OpenLeagueFile(path));
  EXPECT_EQ(session_.League().Name(), League(0)) << "the league that was open stays open";
  EXPECT_EQ(fs::file_size(path), size);
  EXPECT_FALSE(fs::exists(kept));

  ASSERT_TRUE(session_.OpenLeagueFile(path));
  EXPECT_EQ(fs::file_size(kept), size);
  ASSERT_EQ(ui_.messages.size(), 4U);
  EXPECT_EQ(ui_.messages[1].title, "Old League File");
  EXPECT_EQ(ui_.messages[2].text,
            "The league has been converted. The original is kept as\r\n\"" + kept + "\".");
  EXPECT_EQ(ui_.messages[3].text,
            "The league's bonus rules now go by Scorvane's own rules of the same number.\r\n"
            "\"Win\" is now paid for what \"Led a Lap\" asks for.\r\n"
            "\"Led a lap\" is now paid for what \"Most Led\" asks for.\r\n"
            "Please look at the point system before races are imported or recalculated.");
  EXPECT_FALSE(session_.League().OpenRecordset("SELECT * FROM Stats").AtEnd());
  ASSERT_TRUE(session_.OpenLeagueFile(League(0)));
  ASSERT_TRUE(session_.OpenLeagueFile(path));
  EXPECT_EQ(ui_.messages.size(), 4U) << "once is enough";
}

}  // namespace
}  // namespace scorvane::app
