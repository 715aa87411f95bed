// What cannot be stored: every dialog that saves says why in the engine's words and stays open with what was
// typed, nothing of it is stored, and it can be saved once the obstacle is gone.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QRadioButton>
#include <QToolButton>
#include <functional>

#include "common/SettingsStore.h"
#include "forms/FormFixture.h"
#include "forms/frmExport.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmOptions.h"
#include "forms/frmPointSystem.h"
#include "forms/widgets/SelectionGrid.h"
#include "scoring/OfflineMerge.h"

namespace scorvane::forms {
namespace {

class Saving : public FormFixture {
 protected:
  using Rows = std::vector<std::string>;

  // Saves while the field is not there, and once it is. `look` is what the databases hold: the same after the
  // first attempt, another after the second.
  void FailsThenSaves(QDialog& dialog, engine::Database& database, const char* table, const char* field,
                      const std::function<void()>& save, const std::function<Rows()>& look) {
    Show(dialog);
    const Rows before = look();
    database.RenameField(table, field, "Elsewhere");
    ui_.messages.clear();
    save();
    database.RenameField(table, "Elsewhere", field);
    EXPECT_TRUE(dialog.isVisible());
    ASSERT_EQ(ui_.messages.size(), 1U);
    EXPECT_NE(ui_.messages[0].text.find(field), std::string::npos) << ui_.messages[0];
    EXPECT_EQ(ui_.messages[0].icon, common::MessageIcon::Critical);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(look(), before);
    save();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(ui_.messages.size(), 1U);
    EXPECT_NE(look(), before);
  }

  static Rows Settings(engine::Database& database) {
    return test::Rows(database, "SELECT * FROM Settings ORDER BY SettingsID");
  }
};

TEST_F(Saving, PropertiesByTheButtonAndByTheCloseBox) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  const auto look = [&] {
    Rows rows = Settings(league);
    rows.push_back(std::to_string(state_.droppedRaces));
    return rows;
  };
  for (const int dropped : {4, 5}) {
    frmLGXProperties dialog(context_);
    dialog.NewDialog(false);
    Find<QComboBox>(dialog, "cboDroppedRaces").setCurrentIndex(dropped);
    const auto save = [&] { dropped == 4 ? Button(dialog, 0).click() : static_cast<void>(dialog.close()); };
    FailsThenSaves(dialog, league, "Settings", "SettingValue", save, look);
    EXPECT_EQ(state_.droppedRaces, dropped);
  }
}

TEST_F(Saving, OptionsByTheButtonAndByTheCloseBox) {
  const auto look = [&] {
    Rows rows = Settings(*template_);
    rows.push_back(state_.simFolders[1]);
    return rows;
  };
  for (const bool byButton : {true, false}) {
    state_.simFolders[1] = "/old/place/";
    frmOptions dialog(context_);
    Find<SelectionGrid>(dialog, "fgPaths").SetCell(1, 1, {});
    Find<QLineEdit>(dialog, "txtBGImage").setText(byButton ? QStringLiteral("<é'|.gif") : QString());
    const auto save = [&] {
      byButton ? Find<QPushButton>(dialog, "OKButton").click() : static_cast<void>(dialog.close());
    };
    FailsThenSaves(dialog, *template_, "Settings", "SettingValue", save, look);
    EXPECT_EQ(state_.simFolders[1], "");
    EXPECT_EQ(common::GetSettingValue(*template_, 101), byButton ? "<é'|.gif" : "");
  }
}

TEST_F(Saving, ThePointSystemGoesInWholeOrNotAtAll) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  frmPointSystem dialog(context_);
  Find<QCheckBox>(dialog, "chkUsePositions").click();
  Find<QLineEdit>(dialog, "txtBonus_0").setText(QStringLiteral("12"));
  // The old positions are gone by the time that the new ones fail.
  FailsThenSaves(
      dialog, league, "PointSystem", "PrizeMoney", [&] { Button(dialog, 1).click(); },
      [&] {
        Rows rows = Settings(league);
        for (const char* sql :
             {"SELECT Points FROM Bonus WHERE BonusID=1", "SELECT Count(*) FROM PointSystem"})
          rows.push_back(test::Single(league, sql));
        rows.push_back(state_.useCustomPointSystem ? "custom" : "built in");
        return rows;
      });
}

TEST_F(Saving, TheOrderOfTheCriteria) {
  engine::Database& league = OpenLeague(common::kNascarRacing3, common::kOffline);
  frmOfflineSettings dialog(context_);
  Find<SelectionGrid>(dialog, "fgPriorities").SelectRows(1, 1);
  Find<QToolButton>(dialog, "cmdMove_0").click();
  FailsThenSaves(
      dialog, league, "RankCriteria", "Priority", [&] { Button(dialog, 1).click(); },
      [&] { return test::Rows(league, "SELECT * FROM RankCriteria"); });
}

TEST_F(Saving, TheLookOfPages) {
  engine::Database& league = OpenLeague(common::kNascarRacing3);
  frmExport dialog(context_, {});
  Find<QPlainTextEdit>(dialog, "txtHeading").setPlainText(QStringLiteral("Fall League"));
  FailsThenSaves(
      dialog, league, "Settings", "SettingValue", [&] { Button(dialog, 0).click(); },
      [&] { return Settings(league); });
  EXPECT_EQ(dialog.Texts().heading, "Fall League");
  EXPECT_EQ(DoneChanges(), std::vector<std::string>{"Page look"});
}

// What Options offers new leagues is what their pages get.
TEST_F(Saving, ABackgroundImageChosenInOptionsIsOnThePagesOfNewLeagues) {
  frmOptions dialog(context_);
  Find<QCheckBox>(dialog, "chkBGImage").click();
  Find<QLineEdit>(dialog, "txtBGImage").setText(QStringLiteral("track.gif"));
  Find<QPushButton>(dialog, "OKButton").click();
  const reports::PageLook look = reports::ReadPageLook(OpenLeague(common::kNascarRacing3));
  EXPECT_TRUE(look.useBGImage);
  EXPECT_EQ(look.bgImage, "track.gif");
}

}  // namespace
}  // namespace scorvane::forms
