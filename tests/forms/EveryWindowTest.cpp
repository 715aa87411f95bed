// What holds for every window: it fits a small screen, names its controls to a screen reader, has no letter
// twice, and the keyboard walks it as the eye does.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QDialogButtonBox>
#include <QMenuBar>
#include <QTabBar>
#include <QTabWidget>
#include <functional>
#include <map>
#include <memory>

#include "forms/FormFixture.h"
#include "forms/frmAddRaces.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditColumns.h"
#include "forms/frmEditDriver.h"
#include "forms/frmEditDriver2.h"
#include "forms/frmEditRace.h"
#include "forms/frmExport.h"
#include "forms/frmHistory.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmOptions.h"
#include "forms/frmPenalties.h"
#include "forms/frmPenalty.h"
#include "forms/frmPickDriver.h"
#include "forms/frmPickDrivers.h"
#include "forms/frmPlayoff.h"
#include "forms/frmPointSystem.h"
#include "forms/frmPublish.h"
#include "forms/frmRaces.h"
#include "forms/frmSeasonView.h"
#include "forms/frmStats.h"
#include "forms/frmTeams.h"
#include "forms/frmWhatIf.h"
#include "forms/widgets/Contrast.h"

namespace scorvane::forms {
namespace {

class EveryWindow : public FormFixture {
 protected:
  void SetUp() override {
    OpenLeague(common::kNascarRacing3);
    ImportSeason();
    const std::int32_t team = app::AddGroup(session_, championship::GroupKind::Team, std::string(50, 'W'));
    app::JoinGroup(session_, championship::GroupKind::Team, {team, "W"}, {1, 2}, 5);
  }

  // Shows one window after the other.
  void ForEach(const std::function<void(QWidget&)>& look) {
    auto show = [&](QWidget& window) {
      SCOPED_TRACE(Utf8(window.objectName()));
      Show(window);
      look(window);
    };
    frmRaces races(context_);
    show(races);
    frmLGXProperties properties(context_, nullptr);
    properties.NewDialog(true);
    show(properties);
    frmAddRaces import(context_, nullptr);
    show(import);
    frmStats stats(context_, nullptr);
    show(stats);
    frmOptions options(context_, nullptr);
    show(options);
    frmDriverList drivers(context_, nullptr);
    show(drivers);
    frmEditDriver driver(context_, nullptr);
    driver.DriverID(1);
    driver.Mode(frmEditDriver::kEdit);
    show(driver);
    Find<QTabWidget>(driver, "ts").setCurrentIndex(1);
    show(driver);
    frmPickDriver pick(context_, nullptr);
    show(pick);
    frmPickDrivers pickSeveral(context_, QStringLiteral("Join"), {}, nullptr);
    show(pickSeveral);
    frmTeams teams(context_, nullptr);
    show(teams);
    frmPlayoff playoff(context_, nullptr);
    Find<QComboBox>(playoff, "cboFormat").setCurrentIndex(4);
    show(playoff);
    frmWhatIf whatIf(context_, nullptr);
    show(whatIf);
    Find<QTabWidget>(whatIf, "ts").setCurrentIndex(1);
    show(whatIf);
    frmSeasonView season(context_, nullptr);
    for (int tab = 0; tab < 4; ++tab) {
      Find<QTabWidget>(season, "ts").setCurrentIndex(tab);
      show(season);
    }
    frmPublish publish(context_, nullptr);
    show(publish);
    frmHistory history(context_, {}, nullptr);
    show(history);
    frmPointSystem points(context_, nullptr);
    show(points);
    frmEditRace race(context_, {1, false}, nullptr);
    show(race);
    frmPenalty penalty(context_, 1, 1, QStringLiteral("Dale Earnhardt"), nullptr);
    show(penalty);
    frmPenalties penalties(context_, nullptr);
    show(penalties);
    frmEditDriver2 result(context_, nullptr);
    show(result);
    frmOfflineSettings offline(context_, nullptr);
    show(offline);
    frmEditColumns columns(context_, 1, QStringLiteral("Point Standings"), nullptr);
    show(columns);
    frmExport page(context_, {reports::PageSubject::kReport, 1}, nullptr);
    show(page);
  }

  static bool TakesTab(const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0;
  }
};

TEST_F(EveryWindow, FitsASmallScreen) {
  constexpr int kTitleBar = 30;
  ForEach([](QWidget& window) {
    EXPECT_LE(window.minimumSizeHint().width(), 640);
    EXPECT_LE(window.minimumSizeHint().height(), 480 - kTitleBar);
    EXPECT_LE(window.minimumHeight(), 480 - kTitleBar);
  });
}

TEST_F(EveryWindow, NamesItsControlsToAScreenReader) {
  ForEach([](QWidget& window) {
    for (QWidget* control : window.findChildren<QWidget*>()) {
      if (!TakesTab(*control)) continue;
      const QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(control);
      ASSERT_NE(reader, nullptr);
      EXPECT_FALSE(reader->text(QAccessible::Name).isEmpty())
          << Utf8(control->objectName()) << " " << control->metaObject()->className();
    }
  });
}

TEST_F(EveryWindow, HasNoLetterTwice) {
  ForEach([](QWidget& window) {
    // Its captions are given; Alt goes from one to the other.
    if (window.objectName() == QLatin1String("frmLGXProperties")) return;
    std::map<std::string, std::string> owners;
    auto claim = [&](const QString& caption) {
      const std::string letter = Utf8(QKeySequence::mnemonic(caption).toString());
      if (letter.empty()) return;
      const auto [owner, isFree] = owners.emplace(letter, Utf8(caption));
      EXPECT_TRUE(isFree) << letter << ": " << owner->second << " and " << Utf8(caption);
    };
    for (const auto* button : window.findChildren<QAbstractButton*>())
      if (button->isVisible()) claim(button->text());
    for (const auto* label : window.findChildren<QLabel*>())
      if (label->isVisible() && label->buddy() != nullptr) claim(label->text());
    for (const auto* tabs : window.findChildren<QTabBar*>())
      for (int i = 0; i < tabs->count(); ++i) claim(tabs->tabText(i));
    for (const auto* menu : window.findChildren<QMenuBar*>())
      for (const QAction* action : menu->actions()) claim(action->text());
    for (const auto* menu : window.findChildren<QMenu*>()) {
      owners.clear();
      for (const QAction* action : menu->actions()) claim(action->text());
    }
  });
}

TEST_F(EveryWindow, IsWalkedAsTheEyeWalksIt) {
  ForEach([](QWidget& window) {
    const QWidget* before = nullptr;
    for (const QWidget* at = window.nextInFocusChain(); at != &window; at = at->nextInFocusChain()) {
      if (!TakesTab(*at) || at->focusProxy() != nullptr) continue;
      const QPoint place = at->mapTo(&window, QPoint());
      if (before != nullptr) {
        // Never back up and to the left at once.
        const QPoint last = before->mapTo(&window, QPoint());
        EXPECT_FALSE(place.y() + at->height() <= last.y() && place.x() + at->width() <= last.x())
            << Utf8(before->objectName()) << " before " << Utf8(at->objectName());
      }
      before = at;
    }
  });
}

// What one must read, in the themes that there are: hints, values that are only shown, rows that stand back,
// the selection.
TEST_F(EveryWindow, CanBeReadInEveryTheme) {
  const QPalette before = QApplication::palette();
  const auto theme = [](const QColor& paper, const QColor& text, const QColor& disabled) {
    QPalette colors(text, paper, paper, paper, paper, text, paper);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
      colors.setColor(QPalette::Disabled, role, disabled);
    colors.setColor(QPalette::PlaceholderText, disabled);
    return colors;
  };
  const QPalette themes[] = {theme(Qt::white, Qt::black, QColor(190, 190, 190)),
                             theme(QColor(30, 30, 32), QColor(225, 225, 225), QColor(90, 90, 90)),
                             theme(Qt::black, Qt::yellow, QColor(0, 90, 0))};
  for (const QPalette& colors : themes) {
    QApplication::setPalette(colors);
    frmLGXProperties properties(context_, nullptr);
    properties.NewDialog(false);
    frmOptions options(context_, nullptr);
    Show(properties);
    Find<QTabWidget>(options, "ts").setCurrentIndex(2);
    Show(options);
    QApplication::processEvents();
    constexpr double kReadable = 4.5;
    const QPalette box = Find<QLineEdit>(options, "txtBackupFolder").palette();
    EXPECT_GE(ContrastOf(box.color(QPalette::PlaceholderText), box.color(QPalette::Base)), kReadable);
    EXPECT_GE(ContrastOf(MutedText(colors), colors.color(QPalette::Base)), kReadable);
    for (const char* name : {"txtFileName", "cboLeagueType"}) {
      const QPalette fixed = properties.findChild<QWidget*>(QString::fromLatin1(name))->palette();
      for (const QPalette::ColorRole role : {QPalette::Text, QPalette::ButtonText})
        EXPECT_GE(ContrastOf(fixed.color(QPalette::Disabled, role),
                             fixed.color(QPalette::Disabled, QPalette::Button)),
                  kReadable)
            << name;
    }
  }
  QApplication::setPalette(before);
}

}  // namespace
}  // namespace scorvane::forms
