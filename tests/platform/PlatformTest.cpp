#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

class Platform : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::path(testing::TempDir()) / testing::UnitTest::GetInstance()->current_test_info()->name();
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  fs::path Write(const char* name, const char* content) const {
    std::ofstream(folder_ / name) << content;
    return folder_ / name;
  }
  static std::string Read(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  fs::path folder_;
};

TEST_F(Platform, ALockKeepsOthersOutUntilItGoes) {
  const std::string path = Write("league", "").string();
  auto lock = FileLock::TryLock(path);
  ASSERT_TRUE(lock);
  EXPECT_FALSE(FileLock::TryLock(path));
  lock.reset();
  EXPECT_TRUE(FileLock::TryLock(path));
  EXPECT_FALSE(FileLock::TryLock(path + "none"));
}

TEST_F(Platform, ReplacesAFileAndKeepsItsPermissions) {
  const fs::path to = Write("to", "old");
  fs::permissions(to, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  const auto permissions = fs::status(to).permissions();
  const fs::path from = Write("from", "new");
  fs::permissions(from, fs::perms::owner_all);
  ReplaceFile(from.string(), to.string());
  EXPECT_EQ(Read(to), "new");
  EXPECT_EQ(fs::status(to).permissions(), permissions);
  EXPECT_FALSE(fs::exists(from));
}

TEST_F(Platform, ReplacesWhatALinkPointsAt) {
  fs::create_directory(folder_ / "real");
  const fs::path real = Write("real/league", "old");
  fs::create_symlink("real/league", folder_ / "inner");
  fs::create_symlink(folder_ / "inner", folder_ / "outer");
  ReplaceFile(Write("from", "new").string(), (folder_ / "outer").string());
  EXPECT_EQ(Read(real), "new");
  EXPECT_TRUE(fs::is_symlink(folder_ / "outer"));
  EXPECT_TRUE(fs::is_symlink(folder_ / "inner"));
}

TEST_F(Platform, AFailedReplacementLeavesTheFileAlone) {
  const fs::path to = Write("to", "old");
  EXPECT_THROW(ReplaceFile((folder_ / "none").string(), to.string()), std::system_error);
  EXPECT_THROW(ReplaceFile(Write("from", "new").string(), (folder_ / "none" / "to").string()),
               std::system_error);
  EXPECT_EQ(Read(to), "old");
}

TEST_F(Platform, FindsTheApplicationFolder) {
  ::setenv("SCORVANE_HOME", "/some/where/", 1);
  EXPECT_EQ(ApplicationFolder(), "/some/where");
  ::unsetenv("SCORVANE_HOME");

  const fs::path program = ProgramFolder();
  ASSERT_FALSE(fs::exists(program / "Kirrelon.dat"));
  const fs::path installed = program.parent_path() / "share" / "scorvane";
  ASSERT_FALSE(fs::exists(installed / "template" / "Kirrelon.dat"));
  ::setenv("XDG_DATA_HOME", folder_.c_str(), 1);
  const fs::path data = folder_ / "scorvane";
  EXPECT_EQ(ApplicationFolder(), data);
  EXPECT_TRUE(fs::is_directory(data));
  EXPECT_FALSE(fs::exists(data / "Kirrelon.dat"));

  const bool madeShare = fs::create_directories(installed / "template");
  std::ofstream(installed / "template" / "Kirrelon.dat") << "installed";
  fs::permissions(installed / "template" / "Kirrelon.dat", fs::perms::owner_read);
  EXPECT_EQ(ApplicationFolder(), data);
  EXPECT_EQ(Read(data / "Kirrelon.dat"), "installed");
  EXPECT_NE(fs::status(data / "Kirrelon.dat").permissions() & fs::perms::owner_write, fs::perms::none);

  std::ofstream(data / "Kirrelon.dat") << "edited";
  EXPECT_EQ(ApplicationFolder(), data);
  EXPECT_EQ(Read(data / "Kirrelon.dat"), "edited");
  fs::remove(installed / "template" / "Kirrelon.dat");
  if (madeShare) fs::remove_all(installed);
  ::unsetenv("XDG_DATA_HOME");
}

}  // namespace
}  // namespace scorvane::platform
