#include "forms/widgets/Icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QTextStream>
#include <algorithm>
#include <iterator>
#include <string_view>

#include "forms/widgets/Contrast.h"

namespace scorvane::forms {
namespace {

constexpr double kSide = 16;  // of the drawings below
constexpr double kPen = 1.3;
constexpr double kHalo = 3.2;

// Lines on a field of 16 by 16: "M x y" goes to a point, "L x y" draws a line to it, "C" a curve by two
// handles, "O x y r" a circle, "R x y w h" a rectangle, "Z" closes the line.
struct Drawing {
  std::string_view name;
  const char* lines;
};
constexpr Drawing kDrawings[] = {
    {"accessories-calculator",
     "R 3 1.5 10 13 R 5 3.5 6 2.5 M 5.5 9 L 5.6 9 M 8 9 L 8.1 9 M 10.5 9 L 10.6 9 "
     "M 5.5 12 L 5.6 12 M 8 12 L 8.1 12 M 10.5 12 L 10.6 12"},
    {"application-exit", "M 9 2 L 3 2 L 3 14 L 9 14 M 6.5 8 L 14 8 M 11 5 L 14 8 L 11 11"},
    {"applications-internet",
     "O 8 8 6 M 2 8 L 14 8 M 8 2 C 4.5 5.5 4.5 10.5 8 14 M 8 2 C 11.5 5.5 11.5 10.5 8 14"},
    {"dialog-question", "O 8 8 6.2 M 6 6.3 C 6.2 3.8 10.2 4 9.9 6.5 C 9.7 8 8 7.8 8 9.6 M 8 11.6 L 8 11.8"},
    {"dialog-warning", "M 8 2 L 14.5 13.5 L 1.5 13.5 Z M 8 6.2 L 8 9.6 M 8 11.5 L 8 11.7"},
    {"document-edit", "M 2.5 13.5 L 3.5 10 L 11 2.5 L 13.5 5 L 6 12.5 Z M 9.3 4.2 L 11.8 6.7"},
    {"document-import",
     "M 5.5 5 L 2.5 5 L 2.5 14 L 13.5 14 L 13.5 5 L 10.5 5 M 8 1.5 L 8 10 M 5 7.2 L 8 10.2 L 11 7.2"},
    {"document-new",
     "M 3.5 1.5 L 9.5 1.5 L 12.5 4.5 L 12.5 14.5 L 3.5 14.5 Z M 9.5 1.5 L 9.5 4.5 L 12.5 4.5"},
    {"document-open",
     "M 1.5 13 L 1.5 3 L 6 3 L 7.5 4.8 L 12.5 4.8 L 12.5 7 M 1.5 13 L 4 7 L 14.8 7 L 12.5 13 Z"},
    {"document-open-recent", "O 8 8 6.2 M 8 4 L 8 8 L 11 9.8"},
    {"document-properties",
     "R 2.5 2 11 12 M 5 5.5 L 6 5.5 M 8 5.5 L 11.5 5.5 M 5 8 L 6 8 M 8 8 L 11.5 8 "
     "M 5 10.5 L 6 10.5 M 8 10.5 L 11.5 10.5"},
    {"document-revert", "M 3 6.5 L 10 6.5 C 15 6.5 15 13.5 10 13.5 L 6 13.5 M 6 3 L 2.5 6.5 L 6 10"},
    {"document-save-as", "M 2 2 L 11.5 2 L 14 4.5 L 14 14 L 2 14 Z R 4.5 8.5 7 5.5 R 5 2 5.5 3.5"},
    {"edit-copy", "R 2 2 8 9 M 10 5 L 14 5 L 14 14 L 6 14 L 6 11"},
    {"edit-delete",
     "M 3 4 L 4 14.5 L 12 14.5 L 13 4 M 1.8 4 L 14.2 4 M 6 4 L 6 1.8 L 10 1.8 L 10 4 M 6.5 6.5 L 6.5 12 "
     "M 9.5 6.5 L 9.5 12"},
    {"edit-find", "O 6.8 6.8 4.6 M 10.2 10.2 L 14.3 14.3"},
    {"edit-redo", "M 13.5 5.5 L 6 5.5 C 1.5 5.5 1.5 12.5 6 12.5 L 9.5 12.5 M 10.2 2.2 L 13.5 5.5 L 10.2 8.8"},
    {"edit-undo", "M 2.5 5.5 L 10 5.5 C 14.5 5.5 14.5 12.5 10 12.5 L 6.5 12.5 M 5.8 2.2 L 2.5 5.5 L 5.8 8.8"},
    {"games-highscores",
     "M 4.5 2 L 11.5 2 L 11.5 6 C 11.5 10.5 4.5 10.5 4.5 6 Z M 4.5 3.5 C 1 3.5 1.5 7.5 5 7.5 "
     "M 11.5 3.5 C 15 3.5 14.5 7.5 11 7.5 M 8 9.5 L 8 13 M 5 14 L 11 14"},
    {"help-about", "O 8 8 6.2 M 8 7.3 L 8 11.5 M 8 4.6 L 8 4.8"},
    {"help-contents",
     "M 8 4 C 6 2 3 2.5 1.5 3 L 1.5 13 C 3 12.5 6 12 8 14 C 10 12 13 12.5 14.5 13 L 14.5 3 "
     "C 13 2.5 10 2 8 4 Z M 8 4 L 8 14"},
    {"network-offline",
     "R 1.5 2.5 13 8.5 M 5 14 L 11 14 M 8 11 L 8 14 M 5.8 4.8 L 10.2 8.8 M 10.2 4.8 L 5.8 8.8"},
    {"office-chart-line", "M 2 1.5 L 2 14 L 14.5 14 M 4 11 L 7 7 L 9.5 9 L 13.5 3"},
    {"preferences-system",
     "M 2 4 L 8.5 4 M 12.5 4 L 14 4 O 10.5 4 1.8 M 2 11.5 L 3.5 11.5 M 7.5 11.5 L 14 11.5 O 5.5 11.5 1.8"},
    {"system-users",
     "O 5.5 5 2.6 M 1 14 C 1 8.5 10 8.5 10 14 Z M 9.8 2.6 C 13 2.2 13 7.5 10 7.4 M 11.5 9.6 C 14 10 15 12 15 "
     "14 "
     "L 12.2 14"},
    {"text-html", "M 5 4 L 1.2 8 L 5 12 M 11 4 L 14.8 8 L 11 12 M 9.3 2.5 L 6.7 13.5"},
    {"view-list-ordered", "R 1.5 8 4.2 6 R 5.7 4 4.6 10 R 10.3 10 4.2 4 M 8 6.6 L 8 10"},
    {"x-office-address-book",
     "R 3 1.5 11 13 O 8.5 6 1.9 M 5.5 12 C 5.5 8.4 11.5 8.4 11.5 12 M 1.5 4.5 L 3 4.5 M 1.5 8 L 3 8 "
     "M 1.5 11.5 L 3 11.5"},
    {"x-office-spreadsheet",
     "R 1.5 2.5 13 11 M 1.5 6 L 14.5 6 M 1.5 9.8 L 14.5 9.8 M 5.8 2.5 L 5.8 13.5 M 10.2 2.5 L 10.2 13.5"},
};

QPainterPath PathOf(const char* lines) {
  QString text = QString::fromLatin1(lines);
  QTextStream in(&text);
  const auto number = [&in] {
    double value = 0;
    in >> value;
    return value;
  };
  const auto point = [&number] {
    const double x = number();
    return QPointF(x, number());
  };
  QPainterPath path;
  for (QString step; in >> step, !step.isEmpty();) {
    if (step == QLatin1String("M")) {
      path.moveTo(point());
    } else if (step == QLatin1String("L")) {
      path.lineTo(point());
    } else if (step == QLatin1String("C")) {
      const QPointF first = point();
      const QPointF second = point();
      path.cubicTo(first, second, point());
    } else if (step == QLatin1String("O")) {
      const QPointF center = point();
      const double radius = number();
      path.addEllipse(center, radius, radius);
    } else if (step == QLatin1String("R")) {
      const QPointF corner = point();
      const double width = number();
      path.addRect({corner, QSizeF(width, number())});
    } else {
      path.closeSubpath();
    }
  }
  return path;
}

class CommandIconEngine : public QIconEngine {
 public:
  explicit CommandIconEngine(const char* name) : name_(name) {}

  QIconEngine* clone() const override { return new CommandIconEngine(name_); }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const QIcon theme = Theme();
    if (theme.isNull())
      Draw(*painter, rect, mode);
    else
      theme.paint(painter, rect, Qt::AlignCenter, mode, state);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    const QIcon theme = Theme();
    if (!theme.isNull()) return theme.pixmap(size, 1.0, mode, state);
    QPixmap drawn(size);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    Draw(painter, drawn.rect(), mode);
    return drawn;
  }

  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override {
    const QIcon theme = Theme();
    if (theme.isNull()) return pixmap(size, mode, state);
    return theme.pixmap((QSizeF(size) / scale).toSize(), scale, mode, state);
  }

 private:
  QIcon Theme() const {
    const QString name = QString::fromLatin1(name_);
    return QIcon::hasThemeIcon(name) ? QIcon::fromTheme(name) : QIcon();
  }

  void Draw(QPainter& painter, const QRect& rect, QIcon::Mode mode) const {
    const auto* drawing = std::find_if(std::begin(kDrawings), std::end(kDrawings),
                                       [this](const Drawing& one) { return one.name == name_; });
    if (drawing == std::end(kDrawings)) return;
    const QPalette palette = QGuiApplication::palette();
    const QPainterPath path = PathOf(drawing->lines);
    const double side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect).center() - QPointF(side, side) / 2);
    painter.scale(side / kSide, side / kSide);
    const auto stroke = [&](const QColor& color, double width) {
      painter.strokePath(path, QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    };
    const QColor color =
        palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active, QPalette::ButtonText);
    // The chosen item of a menu may lie on the colour of the selection, or not: a style's own matter.
    const QColor chosen = palette.color(QPalette::Active, QPalette::Highlight);
    if (mode != QIcon::Disabled && mode != QIcon::Normal && ContrastOf(color, chosen) < kSeen)
      stroke(palette.color(QPalette::Active, QPalette::Button), kHalo);
    stroke(color, kPen);
    painter.restore();
  }

  const char* name_;
};

}  // namespace

QIcon CommandIcon(const char* name) {
  return QIcon(new CommandIconEngine(name));
}

}  // namespace scorvane::forms
