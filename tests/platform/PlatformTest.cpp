#include "platform/Platform.h"
#include "platform/SystemPath.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr const char* kUserData = "APPDATA";
constexpr const char* kOurs = "Scorvane";
constexpr const char* kInstalled = "";
void Set(const char* name, const std::string& value) {
  ::_putenv_s(name, value.c_str());
}
#else
constexpr const char* kUserData = "XDG_DATA_HOME";
constexpr const char* kOurs = "scorvane";
constexpr const char* kInstalled = "../share/scorvane";
void Set(const char* name, const std::string& value) {
  value.empty() ? ::unsetenv(name) : ::setenv(name, value.c_str(), 1);
}
#endif

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

#ifndef _WIN32  // where only administrators may make links
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
#endif

// A compaction replaces the file whose lock it holds.
TEST_F(Platform, ReplacesAFileThatItHasLocked) {
  const fs::path to = Write("Größe Ω", "old");
  const std::string name = PathText(to);
  const auto lock = FileLock::TryLock(name);
  ASSERT_TRUE(lock);
  ReplaceFile(Write("from", "new").string(), name);
  EXPECT_EQ(Read(to), "new");
}

TEST_F(Platform, ALockedFileCanBeReadAndAFolderIsLockedToo) {
  const fs::path file = Write("league", "content");
  const auto shared = FileLock::TryLock(file.string(), FileLock::Mode::Shared);
  const auto another = FileLock::TryLock(file.string(), FileLock::Mode::Shared);
  EXPECT_TRUE(shared && another);
  EXPECT_FALSE(FileLock::TryLock(file.string()));
  EXPECT_EQ(Read(file), "content");
  auto folder = FileLock::TryLock(folder_.string());
  ASSERT_TRUE(folder);
  EXPECT_FALSE(FileLock::TryLock(folder_.string()));
  folder.reset();
  EXPECT_TRUE(FileLock::TryLock(folder_.string()));
}

#ifdef __SANITIZE_ADDRESS__
constexpr int kRoom = 1 << 26;  // the sanitizer lays claim to terabytes of addresses
#else
constexpr int kRoom = 1024;
#endif

// Runs the test's own program as its child; without a reader's arguments it prints its tests and ends.
TEST_F(Platform, AChildIsHeardAndStopped) {
  const std::string program = PathText(SystemPath(ProgramFolder()) / "scorvane_platform_tests");
  int lines = 0;
  const auto count = [&lines](std::string_view line) { return line.find("Platform") == 0 || ++lines > 0; };
  EXPECT_EQ(RunChild(program, {"--gtest_list_tests"}, {60, kRoom}, count), ChildEnd::Done);
  EXPECT_GT(lines, 4);
  EXPECT_EQ(RunChild(program, {"--gtest_list_tests"}, {60, kRoom}, [](std::string_view) { return false; }),
            ChildEnd::Failed);
  EXPECT_EQ(RunChild(program, {"--gtest_filter=none", "--gtest_repeat=-1"}, {1, kRoom},
                     [](std::string_view) { return true; }),
            ChildEnd::TimedOut);
  EXPECT_EQ(RunChild(program + " none", {}, {}, count), ChildEnd::NotStarted);
}

TEST_F(Platform, AFailedReplacementLeavesTheFileAlone) {
  const fs::path to = Write("to", "old");
  EXPECT_THROW(ReplaceFile((folder_ / "none").string(), to.string()), std::system_error);
  EXPECT_THROW(ReplaceFile(Write("from", "new").string(), (folder_ / "none" / "to").string()),
               std::system_error);
  EXPECT_EQ(Read(to), "old");
}

TEST_F(Platform, FindsTheApplicationFolder) {
  Set("SCORVANE_HOME", "/some/where/");
  EXPECT_EQ(ApplicationFolder(), "/some/where");
  Set("SCORVANE_HOME", "");

  const fs::path program = ProgramFolder();
  ASSERT_FALSE(fs::exists(program / "Kirrelon.dat"));
  const fs::path installed = (program / kInstalled).lexically_normal();
  ASSERT_FALSE(fs::exists(installed / "template" / "Kirrelon.dat"));
  Set(kUserData, folder_.string());
  const fs::path data = folder_ / kOurs;
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
  fs::permissions(installed / "template" / "Kirrelon.dat", fs::perms::owner_all);
  fs::remove(installed / "template" / "Kirrelon.dat");
  if (madeShare) fs::remove_all(installed / "template");
  Set(kUserData, "");
}

}  // namespace
}  // namespace scorvane::platform
