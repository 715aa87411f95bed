// That the windows look right in the desktop's theme, whichever it is and when it changes.
#include <gtest/gtest.h>

#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QTabWidget>

#include "forms/FormFixture.h"
#include "forms/frmEditRace.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmRaces.h"
#include "forms/frmSeasonView.h"
#include "forms/widgets/ChartView.h"
#include "forms/widgets/ColorSquare.h"
#include "forms/widgets/Contrast.h"
#include "forms/widgets/Icons.h"

namespace scorvane::forms {
namespace {

QPalette Theme(const QColor& paper, const QColor& text, const QColor& chosen, const QColor& onChosen) {
  QPalette colors(text, paper, text, text, text, text, paper);
  colors.setColor(QPalette::Window, paper);
  colors.setColor(QPalette::AlternateBase, paper);
  colors.setColor(QPalette::Highlight, chosen);
  colors.setColor(QPalette::HighlightedText, onChosen);
  colors.setColor(QPalette::ToolTipBase, paper);
  return colors;
}

class Looks : public FormFixture {
 protected:
  Looks() : before_(QApplication::palette()) {}
  ~Looks() override { QApplication::setPalette(before_); }

  static void Switch(const QPalette& colors) {
    QApplication::setPalette(colors);
    QApplication::processEvents();
  }
  static QImage Picture(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
  }
  // The best contrast that a pixel has with the paper.
  static double Seen(const QImage& picture, const QColor& paper) {
    double best = 0;
    for (int y = 0; y < picture.height(); ++y)
      for (int x = 0; x < picture.width(); ++x)
        best = std::max(best, ContrastOf(picture.pixelColor(x, y), paper));
    return best;
  }

  const QPalette light_ = Theme(Qt::white, Qt::black, QColor(0, 84, 166), Qt::white);
  const QPalette dark_ = Theme(QColor(30, 30, 32), QColor(225, 225, 225), QColor(42, 100, 170), Qt::white);
  const QPalette high_ = Theme(Qt::black, Qt::yellow, Qt::cyan, Qt::black);
  const QPalette before_;
};

TEST_F(Looks, EachCommandHasAnIconOfTheThemeOrOneOfOurs) {
  OpenLeague(common::kNascarRacing3);
  frmRaces window(context_);
  Show(window);
  const int side = 16;
  for (const QPalette& colors : {light_, dark_, high_}) {
    Switch(colors);
    for (const QAction* menu : window.findChild<QMenuBar*>()->actions())
      for (const QAction* item : menu->menu()->actions()) {
        if (item->isSeparator() || !item->isVisible()) continue;
        QImage picture(side, side, QImage::Format_RGB32);
        const QColor paper = colors.color(QPalette::Button);
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Active, QIcon::Selected}) {
          picture.fill(paper);
          QPainter painter(&picture);
          painter.drawPixmap(0, 0, item->icon().pixmap(QSize(side, side), mode));
          painter.end();
          EXPECT_GE(Seen(picture, paper), kSeen) << Utf8(item->text()) << " " << mode;
        }
      }
  }
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(Button(window, i).icon().isNull());

  // A theme that comes later and has one of them.
  const QString themes = Q(folder_.File("icons"));
  std::filesystem::create_directories(folder_.File("icons/desk/16x16"));
  std::ofstream(folder_.File("icons/desk/index.theme"))
      << "[Icon Theme]\nName=Desk\nDirectories=16x16\n[16x16]\nSize=16\nType=Fixed\n";
  QImage red(side, side, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(themes + QStringLiteral("/desk/16x16/edit-delete.png")));
  const QStringList paths = QIcon::themeSearchPaths();
  const QString name = QIcon::themeName();
  QIcon::setThemeSearchPaths({themes});
  QIcon::setThemeName(QStringLiteral("desk"));
  const auto middle = [&](int index) {
    return Button(window, index).icon().pixmap(side, side).toImage().pixelColor(8, 8);
  };
  EXPECT_EQ(middle(2), QColor(Qt::red));
  EXPECT_NE(middle(3), QColor(Qt::red));
  QIcon::setThemeSearchPaths(paths);
  QIcon::setThemeName(name);
  EXPECT_NE(middle(2), QColor(Qt::red));
}

TEST_F(Looks, AnOpenWindowTakesTheColoursOfAnotherTheme) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  Switch(light_);
  frmRaces races(context_);
  races.FillRaceGrid();
  frmLGXProperties properties(context_, nullptr);
  properties.NewDialog(false);
  frmEditRace race(context_, {1, false}, nullptr);
  frmSeasonView season(context_, nullptr);
  Find<QTabWidget>(season, "ts").setCurrentIndex(0);
  QWidget* const windows[] = {&races, &properties, &race, &season};
  for (QWidget* window : windows) Show(*window);
  for (const QPalette& colors : {dark_, high_, light_}) {
    Switch(colors);
    const QPalette fixed = Find<QLineEdit>(properties, "txtFileName").palette();
    EXPECT_EQ(fixed.color(QPalette::Disabled, QPalette::Base), colors.color(QPalette::Button));
    EXPECT_GE(ContrastOf(fixed.color(QPalette::Disabled, QPalette::Text), colors.color(QPalette::Button)),
              kReadable);
    for (QWidget* window : windows) {
      const QImage now = Picture(*window);
      int paper = 0;
      int white = 0;
      for (int y = 0; y < now.height(); ++y)
        for (int x = 0; x < now.width(); ++x) {
          const QColor pixel = now.pixelColor(x, y);
          paper += pixel == colors.color(QPalette::Base) ? 1 : 0;
          white += pixel == QColor(Qt::white) ? 1 : 0;
        }
      const int all = now.width() * now.height();
      EXPECT_GT(paper, all / 2) << Utf8(window->objectName());
      if (colors != light_) {
        EXPECT_LT(white, all / 50) << Utf8(window->objectName());
      }
    }
  }
}

TEST_F(Looks, ChartsAndFramesCanBeSeenInHighContrastAndOnOddPaper) {
  OpenLeague(common::kNascarRacing3);
  ImportSeason();
  const QPalette odd = Theme(QColor(150, 140, 110), Qt::black, QColor(150, 150, 110), Qt::black);
  frmSeasonView season(context_, nullptr);
  Find<QTabWidget>(season, "ts").setCurrentIndex(0);
  Show(season);
  auto& chart = Find<ChartView>(season, "chtPoints");
  for (const QPalette& colors : {light_, dark_, high_, odd}) {
    Switch(colors);
    chart.clearFocus();
    const QImage plain = Picture(chart);
    chart.setFocus();
    const QImage focused = Picture(chart);
    const QColor paper = colors.color(QPalette::Base);
    EXPECT_GE(ContrastOf(focused.pixelColor(1, focused.height() / 2), paper), kReadable);
    EXPECT_EQ(plain.pixelColor(1, plain.height() / 2), paper);
    for (std::size_t series = 0; series < 10; ++series)
      EXPECT_GE(ContrastOf(SeriesColor(colors, series), paper), kReadable) << series;
    ColorSquare square(QStringLiteral("lblTest"), QStringLiteral("Colour"), ui_);
    EXPECT_GE(ContrastOf(Picture(square).pixelColor(0, 0), colors.color(QPalette::Window)), kSeen);
  }
}

}  // namespace
}  // namespace scorvane::forms
