// Real message boxes, pressed as a user presses them: what the program hears of each button, of Esc and of
// the close box, and what the dialogs behind them do with it.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QMessageBox>
#include <QToolButton>
#include <optional>

#include "forms/FormFixture.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmPointSystem.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/QtUserInterface.h"
#include "scoring/OfflineMerge.h"

namespace scorvane::forms {
namespace {

using common::Answer;
using common::Buttons;

class MessageBoxes : public FormFixture {
 protected:
  // The next box gets this button; NoButton stands for the Esc key, and nothing at all for the close box.
  static void Press(std::optional<QMessageBox::StandardButton> button) {
    OnModal([button](QWidget& dialog) {
      auto& box = dynamic_cast<QMessageBox&>(dialog);
      if (!button) {
        box.close();
      } else if (*button == QMessageBox::NoButton) {
        QTest::keyClick(&box, Qt::Key_Escape);
      } else {
        QTest::mouseClick(box.button(*button), Qt::LeftButton);
      }
    });
  }

  QtUserInterface real_;
  FormContext realContext_{engine_, *template_, state_, real_, session_};
};

TEST_F(MessageBoxes, EveryButtonIsHeardForWhatItSays) {
  const auto none = QMessageBox::NoButton;
  const struct {
    Buttons buttons;
    std::optional<QMessageBox::StandardButton> pressed;
    Answer answer;
  } cases[] = {{Buttons::OkOnly, QMessageBox::Ok, Answer::Ok},
               {Buttons::OkOnly, none, Answer::Ok},
               {Buttons::OkOnly, {}, Answer::Ok},
               {Buttons::YesNo, QMessageBox::Yes, Answer::Yes},
               {Buttons::YesNo, QMessageBox::No, Answer::No},
               {Buttons::YesNo, none, Answer::No},
               {Buttons::YesNo, {}, Answer::No},
               {Buttons::YesNoCancel, QMessageBox::Yes, Answer::Yes},
               {Buttons::YesNoCancel, QMessageBox::No, Answer::No},
               {Buttons::YesNoCancel, QMessageBox::Cancel, Answer::Cancel},
               {Buttons::YesNoCancel, none, Answer::Cancel},
               {Buttons::YesNoCancel, {}, Answer::Cancel}};
  for (const auto& c : cases) {
    Press(c.pressed);
    EXPECT_EQ(real_.Ask({"<b>Text</b>", "Title", common::MessageIcon::Question}, c.buttons), c.answer)
        << static_cast<int>(c.buttons) << " " << c.pressed.value_or(QMessageBox::Close);
  }
}

TEST_F(MessageBoxes, EnterLosesNothing) {
  const auto enter = [](QWidget& box) { QTest::keyClick(&box, Qt::Key_Return); };
  OnModal(enter);
  EXPECT_EQ(real_.Ask({"Remove?"}, Buttons::YesNo), Answer::No);
  OnModal(enter);
  EXPECT_EQ(real_.Ask({"Save?"}, Buttons::YesNoCancel), Answer::Yes);
}

TEST_F(MessageBoxes, SavingAddsTheSuffixOfTheFilter) {
  const QString page = QStringLiteral("HTML File (*.htm *.HTM)");
  const auto with = [](const char* path, const QString& filter) {
    return Utf8(WithSuffix(QString::fromUtf8(path), filter));
  };
  EXPECT_EQ(with("/a.b/race", page), "/a.b/race.htm");
  EXPECT_EQ(with("/race 3.5", page), "/race 3.5.htm");
  EXPECT_EQ(with("/été.HTM", page), "/été.HTM");
  EXPECT_EQ(with("/race.html", page), "/race.html");
  EXPECT_EQ(with("/race", QtFilter("All Files (*.*)|*.*")), "/race");
}

TEST_F(MessageBoxes, UnsavedChangesAreSavedDroppedOrKept) {
  engine::Database& league = OpenLeague(common::kNascarRacing3, common::kOffline);
  const std::string points = "SELECT Points FROM PointSystem WHERE Position=2";
  const auto first = [&] { return scoring::ListRankCriteria(league, state_.simType).front().name; };
  const std::string ranked = first();
  const std::string before = test::Single(league, points) + ranked;
  const auto left = [&](QDialog& dialog, std::optional<QMessageBox::StandardButton> button) {
    Press(button);
    dialog.close();
    return !dialog.isVisible();
  };

  frmPointSystem system(realContext_);
  Show(system);
  Find<QCheckBox>(system, "chkUsePositions").click();
  Find<SelectionGrid>(system, "fgPoints").SelectRows(1, 1);
  Find<QLineEdit>(system, "txtPoints_3").setText(QStringLiteral("7"));
  Find<QPushButton>(system, "cmdFill").click();
  frmOfflineSettings order(realContext_);
  Show(order);
  Find<SelectionGrid>(order, "fgPriorities").SelectRows(1, 1);
  Find<QToolButton>(order, "cmdMove_0").click();

  for (QDialog* dialog : {static_cast<QDialog*>(&system), static_cast<QDialog*>(&order)}) {
    for (const auto& stays : {QMessageBox::Cancel, QMessageBox::NoButton})
      EXPECT_FALSE(left(*dialog, stays)) << stays;
    EXPECT_FALSE(left(*dialog, {}));
    EXPECT_TRUE(left(*dialog, QMessageBox::No));
  }
  EXPECT_EQ(test::Single(league, points) + first(), before) << "what was dropped is not stored";
  for (QDialog* dialog : {static_cast<QDialog*>(&system), static_cast<QDialog*>(&order)}) {
    Show(*dialog);
    EXPECT_TRUE(left(*dialog, QMessageBox::Yes));
  }
  EXPECT_EQ(test::Single(league, points), "7");
  EXPECT_NE(first(), ranked);
}

TEST_F(MessageBoxes, AQuestionWithinAQuestionLeavesThePointerPlain) {
  const auto shape = [] { return QApplication::overrideCursor()->shape(); };
  {
    const WaitCursor wait;
    {
      const PlainCursor dialog;
      Press(QMessageBox::Ok);
      real_.ShowMessage({"Text"});
      EXPECT_EQ(shape(), Qt::ArrowCursor);
    }
    EXPECT_EQ(shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

}  // namespace
}  // namespace scorvane::forms
