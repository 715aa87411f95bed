#include "common/Paths.h"

#include <fstream>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace scorvane::common {
namespace {

TEST(Paths, TakesPathsApart) {
  const struct {
    const char* path;
    const char* folder;
    const char* name;
    const char* title;
    const char* extension;
  } cases[] = {
      {"C:\\a\\b.c.lgx", "C:\\a\\", "b.c.lgx", "b.c", "lgx"},
      {"/home/u/league.lgx", "/home/u/", "league.lgx", "league", "lgx"},
      {"/wine/c:\\mixed/x.stn", "/wine/c:\\mixed/", "x.stn", "x", "stn"},
      {"plain", "", "plain", "plain", ""},
      {"C:\\a\\", "C:\\a\\", "", "", ""},
      {"", "", "", "", ""},
      {".hidden", "", ".hidden", "", "hidden"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetFolder(c.path), c.folder) << c.path;
    EXPECT_EQ(GetFileTitle(c.path), c.name) << c.path;
    EXPECT_EQ(GetFileTitle(c.path, true), c.title) << c.path;
    EXPECT_EQ(GetExtension(c.path), c.extension) << c.path;
  }
}

TEST(Paths, JoinsWithOneSeparator) {
  EXPECT_EQ(JoinPath("/a", "b"), PathText(SystemPath("/a") / "b"));
  EXPECT_EQ(JoinPath("/a/", "b"), "/a/b");
  EXPECT_EQ(JoinPath("C:\\a\\", "b"), "C:\\a\\b");
  EXPECT_EQ(JoinPath("", "b"), "b");
}

TEST(Paths, AFolderIsNoFile) {
  EXPECT_TRUE(FileExists(SCORVANE_SOURCE_DIR "/CMakeLists.txt"));
  EXPECT_FALSE(FileExists(SCORVANE_SOURCE_DIR));
  EXPECT_FALSE(FileExists(SCORVANE_SOURCE_DIR "/none"));
  EXPECT_FALSE(FileExists(""));
}

TEST(Paths, FindsNamesInAnyLetterCase) {
  const test::TempFolder folder;
  for (const char* name : {"Track.INI", "TRACK.ini", "Zürich"}) std::ofstream(folder.File(name)) << "x";
  EXPECT_EQ(FindIgnoringCase(folder.Path().string(), "TRACK.ini"), folder.File("TRACK.ini"))
      << "the same name first";
  EXPECT_EQ(FindIgnoringCase(folder.Path().string() + "\\", "track.ini"), folder.File("TRACK.ini"));
  EXPECT_EQ(FindIgnoringCase(folder.Path().string() + "/", "ZÜRICH"), folder.File("Zürich"));
  EXPECT_EQ(FindIgnoringCase(folder.Path().string(), "other"), "");
  EXPECT_EQ(FindIgnoringCase(folder.File("nowhere"), "track.ini"), "");
}

}  // namespace
}  // namespace scorvane::common
