// The season's site through its window.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QImage>

#include "forms/FormFixture.h"
#include "forms/frmPublish.h"
#include "forms/frmRaces.h"
#include "forms/widgets/ColorSquare.h"
#include "site/SiteSettings.h"

namespace scorvane::forms {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

enum { kPublish, kOpen, kClose };

class PublishWindow : public FormFixture {
 protected:
  PublishWindow() {
    engine::Database& league = OpenLeague(common::kNascarRacing3);
    league.Execute("INSERT INTO Driver (Name) VALUES ('<script>Zoë \"Z\" Ng')");
    league.Execute("INSERT INTO Race (Name, Length, Laps) VALUES ('Track', 1, 200)");
    league.Execute(
        "INSERT INTO Stats (RaceID, DriverID, Finish, Start, Points, Bonus) VALUES (1,1,1,1,180,5)");
  }

  static std::string Text(QWidget& form, const char* name) {
    return Utf8(Find<QLineEdit>(form, name).text());
  }
  static std::string Outcome(QWidget& form) { return Utf8(Find<QLabel>(form, "lblOutcome").text()); }
  static void Press(QWidget& form, const char* name) { Find<QPushButton>(form, name).click(); }
  site::SiteSettings Kept() { return site::ReadSiteSettings(session_.League()); }
};

TEST_F(PublishWindow, WritesTheSiteAndTheLeagueRemembersWhatWasChosen) {
  frmRaces window(context_);
  window.FillRaceGrid();
  Show(window);
  const std::string logo = folder_.File("logo.png");
  QImage picture(40, 20, QImage::Format_RGB32);
  picture.fill(Qt::red);
  ASSERT_TRUE(picture.save(Q(logo)));
  const std::string name = std::string("Saison ") + test::kOddName;
  const std::string site = folder_.File(name);
  const std::string index = folder_.File(name + "/index.html");
  OnModal([&](QWidget& dialog) {
    // Beside the league; nothing is there yet.
    EXPECT_EQ(Text(dialog, "txtFolder"), folder_.File("open-site"));
    EXPECT_FALSE(Button(dialog, kOpen).isEnabled());
    ui_.foldersToPick = {site};
    Press(dialog, "cmdFolder");
    Find<QComboBox>(dialog, "cboTheme").setCurrentIndex(1);
    Find<QLineEdit>(dialog, "txtBaseUrl").setText(QStringLiteral(" https://league.example/98 "));
    Find<QCheckBox>(dialog, "chkAccent").click();
    ui_.colorsToPick = {{true, 0x2E10C8}};
    QTest::keyClick(&Find<ColorSquare>(dialog, "lblAccent"), Qt::Key_Space);
    ui_.filesToOpen = {{session_.League().Name()}, {logo}};
    Press(dialog, "cmdLogo");
    ASSERT_EQ(ui_.messages.size(), 1U);  // a league is no picture
    Press(dialog, "cmdLogo");
    EXPECT_TRUE(Find<QPushButton>(dialog, "cmdNoLogo").isEnabled());
    EXPECT_TRUE(DoneChanges().empty());
    Click(dialog, kPublish);
    EXPECT_THAT(Outcome(dialog), HasSubstr("Wrote " + index + ": "));
    ASSERT_FALSE(ui_.progress.empty());
    EXPECT_TRUE(ui_.progress.back()->closed);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    Click(dialog, kOpen);
    EXPECT_THAT(ui_.shellOpened, ElementsAre(index));
    Click(dialog, kPublish);
    EXPECT_THAT(Outcome(dialog), HasSubstr("is up to date"));
    Click(dialog, kClose);
  });
  window.findChild<QAction*>(QStringLiteral("mnuSeason_16"))->trigger();
  std::ifstream logoFile(logo, std::ios::binary);
  EXPECT_EQ(Kept(), (site::SiteSettings{site, "paddock", "https://league.example/98/", "#c8102e",
                                        std::string(std::istreambuf_iterator<char>(logoFile), {})}));
  EXPECT_THAT(DoneChanges(), ElementsAre("Settings of the site"));
  EXPECT_THAT(Utf8(Find<QLabel>(window, "lblStatus").text()), HasSubstr("Ctrl+Z takes it back"));
  std::string page;
  {
    std::ifstream front(platform::SystemPath(index));
    page.assign(std::istreambuf_iterator<char>(front), {});
  }
  EXPECT_THAT(page, HasSubstr("&lt;script&gt;Zoë"));
  EXPECT_THAT(page, testing::Not(HasSubstr("<script>Zoë")));

  // It comes up as it was, and what is taken away is gone.
  frmPublish again(context_);
  EXPECT_EQ(Text(again, "txtFolder"), site);
  EXPECT_EQ(Text(again, "txtBaseUrl"), "https://league.example/98/");
  EXPECT_EQ(Find<ColorSquare>(again, "lblAccent").Color(), 0x2E10C8);
  Find<QCheckBox>(again, "chkAccent").setChecked(false);
  Press(again, "cmdNoLogo");
  auto& chart = Find<QLabel>(again, "lblChart");
  EXPECT_EQ(chart.text(), QStringLiteral("the first ten"));
  OnModal([](QWidget& picker) {
    Find<QListWidget>(picker, "lstDrivers").item(0)->setCheckState(Qt::Checked);
    Click(picker, 0);
  });
  Press(again, "cmdChart");
  EXPECT_EQ(Utf8(chart.text()), "<script>Zoë \"Z\" Ng");
  Press(again, "cmdButton_0");
  EXPECT_EQ(Kept(), (site::SiteSettings{site, "paddock", "https://league.example/98/", "", "", "1"}));
  Press(again, "cmdFirstTen");
  EXPECT_EQ(chart.text(), QStringLiteral("the first ten"));
  EXPECT_FALSE(std::filesystem::exists(platform::SystemPath(site) / "assets/logo.png"));
  ui_.shellOpens = false;
  Press(again, "cmdButton_1");
  EXPECT_THAT(ui_.messages.back().text, HasSubstr("cannot be opened"));
}

TEST_F(PublishWindow, TheSeasonIsSavedAsASpreadsheet) {
  frmRaces window(context_);
  window.FillRaceGrid();
  Show(window);
  const auto save = [&](const std::string& file) {
    ui_.filesToSave = {file};
    ui_.messages.clear();
    window.findChild<QAction*>(QStringLiteral("mnuSeason_17"))->trigger();
  };
  const auto head = [&](const std::string& file) {
    std::ifstream stream(folder_.At(file), std::ios::binary);
    std::string bytes(15, ' ');
    stream.read(bytes.data(), 15);
    return bytes;
  };
  const std::string name = std::string("Saison ") + test::kOddName;
  save(folder_.File(name));
  EXPECT_EQ(ui_.dialogs.back().name, "open.xlsx");
  EXPECT_THAT(head(name + ".xlsx"), testing::StartsWith("PK"));
  EXPECT_EQ(Utf8(Find<QLabel>(window, "lblStatus").text()),
            "Wrote the season as " + folder_.File(name) + ".xlsx.");
  EXPECT_TRUE(ui_.messages.empty());

  // What is there is asked about; a league stays one under any name, and nothing is written half.
  std::ofstream(folder_.File("there.xlsx")) << "others' work";
  ui_.answers = {common::Answer::No};
  save(folder_.File("there.xlsx"));
  EXPECT_EQ(ui_.messages.back().title, "File Exists");
  EXPECT_EQ(head("there.xlsx").substr(0, 12), "others' work");
  std::filesystem::copy_file(folder_.File("open.lgx"), folder_.File("copy.xlsx"));
  ui_.answers = {common::Answer::Yes};
  save(folder_.File("copy.xlsx"));
  EXPECT_THAT(ui_.messages.back().text, HasSubstr("is a league"));
  EXPECT_EQ(head("copy.xlsx"), "SQLite format 3");
  save(folder_.File("nowhere/season.xlsx"));
  EXPECT_THAT(ui_.messages.back().text, HasSubstr("there is no such folder"));
  save({});
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PublishWindow, WhatCannotBeIsSaid) {
  frmPublish dialog(context_);
  Show(dialog);
  const auto refused = [&](const char* says) {
    ui_.messages.clear();
    Click(dialog, kPublish);
    ASSERT_EQ(ui_.messages.size(), 1U) << says;
    EXPECT_THAT(ui_.messages[0].text, HasSubstr(says));
    EXPECT_EQ(Outcome(dialog), "");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_TRUE(dialog.isVisible());
  };
  auto& address = Find<QLineEdit>(dialog, "txtBaseUrl");
  address.setText(QStringLiteral("league.example\"><script>"));
  refused("begins with https://");
  EXPECT_EQ(Kept(), site::SiteSettings());
  address.clear();
  // A folder that is no theme is said at once, and is not offered.
  ui_.foldersToPick = {folder_.File("")};
  ui_.messages.clear();
  const int themes = Find<QComboBox>(dialog, "cboTheme").count();
  Press(dialog, "cmdTheme");
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(Find<QComboBox>(dialog, "cboTheme").count(), themes);

  auto& folder = Find<QLineEdit>(dialog, "txtFolder");
  folder.setText(QStringLiteral("   "));
  EXPECT_FALSE(Button(dialog, kPublish).isEnabled());
  std::ofstream(folder_.File("taken")) << "a file";
  folder.setText(QStringLiteral(" taken "));
  refused("taken");
  // What is typed as a part of a path lies beside the league.
  folder.setText(QStringLiteral(" web/../season "));
  Click(dialog, kPublish);
  EXPECT_EQ(Text(dialog, "txtFolder"), folder_.File("season"));
  EXPECT_TRUE(std::filesystem::exists(folder_.File("season/index.html")));
  EXPECT_TRUE(Button(dialog, kOpen).isEnabled());
  // What others have put there is not written over.
  std::filesystem::remove(folder_.File("season/.scorvane-site.json"));
  refused("");
  EXPECT_TRUE(Button(dialog, kOpen).isEnabled());
}

}  // namespace
}  // namespace scorvane::forms
