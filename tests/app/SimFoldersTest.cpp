// Simulations are looked for in a Wine prefix of the test's own.
#include "app/SimFolders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "app/Options.h"
#include "common/ScriptedUserInterface.h"
#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

class SimFolders : public test::LeagueFixture {
 protected:
  SimFolders() {
    ::setenv("WINEPREFIX", folder_.File("prefix").c_str(), 1);
    fs::create_directories(folder_.Path() / "prefix" / "dosdevices");
    AddDrive('c', "prefix/drive_c");
    AddDrive('d', "disk");
  }
  ~SimFolders() override { ::unsetenv("WINEPREFIX"); }

  void AddDrive(char letter, const std::string& target) {
    fs::create_directories(folder_.Path() / target);
    fs::create_symlink(folder_.Path() / target,
                       folder_.Path() / "prefix" / "dosdevices" / (std::string(1, letter) + ":"));
  }
  // Makes a file below the test's folder and yields the folder that it is in, as a setting holds it.
  std::string Install(const std::string& file) {
    const fs::path path = fs::canonical(folder_.Path()) / file;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "program";
    return path.parent_path().string() + "/";
  }
  std::string Setting(int id) { return common::GetSettingValue(*template_, id); }

  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
};

TEST_F(SimFolders, DrivesAreThoseOfThePrefix) {
  fs::create_directory_symlink(folder_.Path() / "none", folder_.Path() / "prefix" / "dosdevices" / "e:");
  AddDrive('a', "floppy");
  AddDrive('z', "root");
  const auto drives = platform::FixedDrives();
  ASSERT_EQ(drives.size(), 3U);
  EXPECT_EQ(drives[0].letter, 'C');
  EXPECT_EQ(drives[0].folder, fs::canonical(folder_.Path() / "prefix" / "drive_c"));
  EXPECT_EQ(drives[1].letter, 'D');
  EXPECT_EQ(drives[2].letter, 'Z');

  ::setenv("WINEPREFIX", folder_.File("no prefix").c_str(), 1);
  EXPECT_TRUE(platform::FixedDrives().empty());
}

TEST_F(SimFolders, MissingSettingsAreUnknownFolders) {
  template_->Execute("DELETE FROM Settings WHERE SettingsID=12");
  common::SaveSettingValue(*template_, 14, "/games/nr2003/");
  state_.simFolders.fill("old");
  ReadSimFolders(*template_, state_);
  EXPECT_EQ(state_.simFolders, (std::array<std::string, 5>{"", "", "", "", "/games/nr2003/"}));
}

TEST_F(SimFolders, TheScanFindsWhatIsInstalled) {
  // Names in whatever case, the first drive that has it, and a folder without the program passed over.
  const std::string nr3 = Install("prefix/drive_c/PAPYRUS/nascar3/NASCAR RACING 3.EXE");
  Install("disk/Papyrus/NASCAR3/NASCAR Racing 3.exe");
  fs::create_directories(folder_.Path() / "prefix/drive_c/PAPYRUS/NASCAR Racing 4");
  const std::string nr4 = Install("disk/Papyrus/NASCAR Racing 4/NASCAR Racing 4.exe");
  fs::create_directories(folder_.Path() / "disk/Papyrus/NASCAR Legends/NASCAR Legends.exe");
  EXPECT_TRUE(ScanDefaultPaths(*template_, state_, ui_));
  EXPECT_EQ(state_.simFolders, (std::array<std::string, 5>{nr3, "", nr4, "", ""}));
  EXPECT_EQ(Setting(0), nr3);
  EXPECT_EQ(Setting(12), nr4);
  EXPECT_EQ(Setting(1), "");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SimFolders, AGoodFolderIsKeptAndABadOneReplaced) {
  const std::string elsewhere = Install("games/nr3/nascar racing 3.exe");
  Install("prefix/drive_c/Papyrus/NASCAR3/NASCAR Racing 3.exe");
  const std::string legends = Install("prefix/drive_c/Papyrus/NASCAR Legends/NASCAR Legends.exe");
  state_.simFolders = {elsewhere, "/gone/", "/gone too/", "", ""};
  EXPECT_TRUE(ScanDefaultPaths(*template_, state_, ui_));
  EXPECT_EQ(state_.simFolders, (std::array<std::string, 5>{elsewhere, legends, "/gone too/", "", ""}));
  EXPECT_EQ(Setting(0), "");  // kept, not stored anew
}

TEST_F(SimFolders, TheNewestSimulationTakesNoPart) {
  const std::string nr2003 = Install("prefix/drive_c/Papyrus/NASCAR Racing 2003 Season/NR2003.exe");
  EXPECT_FALSE(ScanDefaultPaths(*template_, state_, ui_));
  EXPECT_EQ(state_.simFolders[4], "");
  state_.simFolders[4] = nr2003;
  EXPECT_FALSE(ScanDefaultPaths(*template_, state_, ui_));
}

TEST_F(SimFolders, ADiskErrorEndsTheScanWithWhatItHas) {
  const std::string nr3 = Install("prefix/drive_c/Papyrus/NASCAR3/NASCAR Racing 3.exe");
  Install("disk/Papyrus/NASCAR Racing 4/NASCAR Racing 4.exe");
  const fs::path loop = folder_.Path() / "prefix/drive_c/Papyrus/NASCAR Legends";
  fs::create_directory_symlink(loop, loop);
  EXPECT_TRUE(ScanDefaultPaths(*template_, state_, ui_));
  EXPECT_EQ(state_.simFolders, (std::array<std::string, 5>{nr3, "", "", "", ""}));
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(
      ui_.messages[0],
      (common::Message{"An unanticipated error has occurred:\r\nError 40: Too many levels of symbolic links",
                       "Scanning for NASCAR Racing sims", common::MessageIcon::Critical}));
}

TEST_F(SimFolders, ProgramsAreFoundHoweverTheFolderIsSpelled) {
  const std::string folder = Install("Games/NASCAR 4/NASCAR Racing 4.exe");
  std::string backslashes = folder;
  std::replace(backslashes.begin(), backslashes.end(), '/', '\\');
  std::string capitals = folder;
  for (std::size_t i = capitals.find("Games"); i < capitals.size(); ++i)
    capitals[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(capitals[i])));
  for (const std::string& spelled : {folder, backslashes, capitals, folder.substr(0, folder.size() - 1)})
    EXPECT_EQ(FindProgram(spelled, 2), folder + "NASCAR Racing 4.exe") << spelled;
  EXPECT_EQ(FindProgram(folder, 3), "");
  EXPECT_EQ(FindProgram("", 2), "");
  const std::string odd = Install("Games/a\\b/NR2002.exe");
  EXPECT_EQ(FindProgram(odd, 3), odd + "NR2002.exe");

  const fs::path before = fs::current_path();
  fs::current_path(folder);
  EXPECT_NE(FindProgram("", 2), "");
  fs::current_path(before);
}

TEST_F(SimFolders, OnlyTheLastWrongFolderIsReported) {
  const std::string good = Install("games/Legends/NASCAR Legends.exe");
  EXPECT_TRUE(CheckSimFolders({"", good, "   ", "", ""}).failing.empty());
  const FolderCheck check = CheckSimFolders({good, good, "", "/x/2002/", ""});
  EXPECT_EQ(check.failing, (std::vector<int>{0, 3}));
  EXPECT_EQ(check.message,
            (common::Message{
                "/x/2002/\r\n\r\nScorvane cannot verify that this is the folder for NASCAR Racing 2002 "
                "because\r\nthe file \"NR2002.exe\" is not in this folder.",
                "Invalid Path", common::MessageIcon::Exclamation}));
}

TEST_F(SimFolders, OptionsAreStoredAsTextsAndRead) {
  Options options;
  options.useBackgroundImage = true;
  options.backgroundImage = "it's a|b.gif";
  options.colors = {0xFFFFFF, 0x0000FF, 0xFF0000, 0x00FF00, 1};
  options.showImportAlerts = true;
  SaveOptions(*template_, state_, options);
  EXPECT_EQ(Setting(100), "1");
  EXPECT_EQ(Setting(102), "&H00FFFFFF");
  EXPECT_EQ(Setting(104), "&H00FF0000");
  EXPECT_EQ(Setting(106), "&H00000001");
  EXPECT_EQ(Setting(11), "0");
  EXPECT_EQ(Setting(18), "1");
  const Options read = ReadOptions(*template_, state_);
  EXPECT_EQ(read.backgroundImage, options.backgroundImage);
  EXPECT_EQ(read.colors, options.colors);
  EXPECT_TRUE(read.useBackgroundImage && read.showImportAlerts && !read.openPreviousFile);

  template_->Execute("DELETE FROM Settings WHERE SettingsID IN (11,18,100,101)");
  template_->Execute("UPDATE Settings SET SettingValue='blue' WHERE SettingsID=102");
  const Options odd = ReadOptions(*template_, state_);
  EXPECT_FALSE(odd.useBackgroundImage || odd.openPreviousFile);
  EXPECT_TRUE(odd.showImportAlerts) << "imports show them without the setting, too";
  EXPECT_EQ(odd.backgroundImage, "");
  EXPECT_EQ(odd.colors[0], 0xFFFFFF);
}

}  // namespace
}  // namespace scorvane::app
