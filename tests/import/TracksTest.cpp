#include "import/Tracks.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace scorvane::import {
namespace {

using Strings = std::vector<std::string>;

Strings Contents(const CTracks& tracks) {
  Strings all;
  for (const CTrackInfo& track : tracks)
    all.push_back(track.TrackName + "|" + engine::Value(track.Length).ToText());
  return all;
}

TEST(Tracks, AreFoundByKeyAndPlace) {
  CTracks tracks;
  tracks.Add("Daytona", 2.5F, "DAYTONA");
  tracks.Add("Unkeyed", 1, "");
  tracks.Add("Autódromo", 3, "AUTÓDROMO");
  EXPECT_EQ(tracks.Item("daytona").Length, 2.5F);
  EXPECT_EQ(tracks.Item("autódromo").TrackName, "Autódromo");
  EXPECT_EQ(tracks.Item(2).TrackName, "Unkeyed");
  EXPECT_THROW(tracks.Add("Other", 1, "dayTONA"), CollectionError);
  EXPECT_THROW(tracks.Item("Unkeyed"), CollectionError);
  EXPECT_THROW(tracks.Item(""), CollectionError);
  for (const int place : {0, 4, -1}) EXPECT_THROW(tracks.Item(place), CollectionError);
  EXPECT_EQ(tracks.Count(), 3);
  tracks.Remove(2);
  tracks.Remove("Daytona");
  EXPECT_EQ(Contents(tracks), Strings{"Autódromo|3"});
  EXPECT_EQ(tracks.Item("AUTÓDROMO").Length, 3);
  EXPECT_THROW(tracks.Remove("Daytona"), CollectionError);
}

TEST(Tracks, IniFilesAsTheyAre) {
  const struct {
    const char* content;
    const char* track;
  } cases[] = {
      {"[track]\ntrack_name=A\ntrack_length=1.5m\n", "A|1.5"},
      {"; remark\r\n[ track ]\r\n  track_length = 0.526m ; miles\r\ntrack_name = A B\xAE\x99\t; short\r\n",
       "A B|0.526"},
      {"[track]\ntrack_name = SPEEDWAY \xAE\ntrack_length=2", "SPEEDWAY|2"},
      {"[track]\ntrack_name = A;B = C\ntrack_length = .75 miles", "A;B = C|0.75"},
      {"track_name=No\n[other]\ntrack_name=No\n[track]\ntrack_name=Yes\n[more]\ntrack_length=9\n", "Yes|0"},
      {"[Track]\ntrack_name=No\ntrack_length=1\n[track ]\ntrack_length=2\ntrack_name=Yes\n", "Yes|2"},
      {"[track]\ntrack_name=First\nTRACK_NAME=No\ntrack_name=Last\ntrack_length=1\ntrack_name=Late\n",
       "Last|1"},
      {"[track]\ntrack_name=A\ntrack_length=long\n", "A|0"},
      {"[track\ntrack_name=No\n", "|0"},
      {"[track]\ntrack_name=\xC5land\ntrack_length=1\n", "Åland|1"},
  };
  for (const auto& c : cases) {
    CTracks tracks;
    AddTrackFromIni(tracks, c.content);
    EXPECT_EQ(Contents(tracks), Strings{c.track}) << c.content;
  }
}

class Catalogue : public testing::Test {
 protected:
  void Write(const std::string& path, const std::string& name, const std::string& length) {
    const std::filesystem::path file = folder_.Path() / path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        << "[track]\r\ntrack_name=" << name << "\r\ntrack_length=" << length << "m\r\n";
  }
  Strings Built(std::int16_t simType) {
    state_.tracks.reset();
    state_.simType = simType;
    BuildTrackCatalogue(state_);
    return Contents(*state_.tracks);
  }

  test::TempFolder folder_;
  common::ProcessState state_;
};

TEST_F(Catalogue, HoldsTheTracksOfTheLeaguesSimulation) {
  Write("nr4/tracks/a/track.ini", "FOUR", "4");
  Write("2002/Tracks/a/TRACK.INI", "TWO", "2");
  Write("2003/TRACKS/b/Track.Ini", "SAME", "1");
  Write("2003/TRACKS/c/track.ini", "Same", "9");
  Write("2003/TRACKS/c/sub/track.ini", "Deeper", "9");
  Write("2003/TRACKS/track.ini", "Not in a folder", "9");
  std::filesystem::create_directories(folder_.File("2003/TRACKS/empty"));
  std::filesystem::create_directories(folder_.File("2003/TRACKS/odd/track.ini"));
  state_.simFolders[2] = folder_.File("nr4");
  state_.simFolders[3] = folder_.File("2002/");
  state_.simFolders[4] = folder_.File("2003\\");
  EXPECT_EQ(Built(common::kNascarRacing4), Strings{"FOUR|4"});
  EXPECT_EQ(Built(common::kNascarRacing2002), Strings{"TWO|2"});
  EXPECT_EQ(Built(common::kNascarRacing2003), Strings{"SAME|1"})
      << "of two tracks with one name the first counts";
  EXPECT_EQ(Built(common::kNascarRacing3), Strings{"FOUR|4"});

  state_.simType = common::kNascarRacing2003;
  BuildTrackCatalogue(state_);
  EXPECT_EQ(Contents(*state_.tracks), Strings{"SAME|1"}) << "another league's simulation has other tracks";
  state_.simFolders[4] = folder_.File("2002");
  BuildTrackCatalogue(state_);
  EXPECT_EQ(Contents(*state_.tracks), Strings{"TWO|2"}) << "a folder that is named anew counts at once";
}

TEST_F(Catalogue, IsEmptyWithoutTracks) {
  EXPECT_EQ(Built(common::kNascarRacing4), Strings{});
  state_.simFolders[2] = folder_.File("nowhere/");
  EXPECT_EQ(Built(common::kNascarRacing4), Strings{});
  std::filesystem::create_directories(folder_.File("nowhere/tracks"));
  EXPECT_EQ(Built(common::kNascarRacing4), Strings{});
}

TEST_F(Catalogue, PassesOverWhatCannotBeRead) {
  Write("sim/tracks/a/track.ini", "Locked", "1");
  Write("sim/tracks/b/track.ini", "Open", "2");
  std::filesystem::resize_file(folder_.File("sim/tracks/a/track.ini"),
                               64U << 20U);  // no ini file is that large
  state_.simFolders[2] = folder_.File("sim");
  EXPECT_EQ(Built(common::kNascarRacing4), Strings{"Open|2"});
}

}  // namespace
}  // namespace scorvane::import
