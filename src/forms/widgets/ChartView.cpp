#include "forms/widgets/ChartView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "forms/Undoing.h"
#include "forms/widgets/Contrast.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr double kReach = 14;  // of the pointer, in the chart's units
constexpr double kLineWidth = 2.2;
constexpr int kTextSize = 12;       // in the chart's units
constexpr double kLegendFrom = 24;  // the piece of line in front of a series' name
constexpr double kLegendTo = 4;
constexpr double kLegendUp = 4;
constexpr double kRing = 5;

using Colors = std::array<QRgb, charts::kLineStyles>;
// Each readable on its ground, as 4.5 to 1.
constexpr Colors kOnLight = {0xFF0B57A4, 0xFFB34700, 0xFF00664C, 0xFF8F2D73, 0xFF7A5C00,
                             0xFF146A8A, 0xFF9C1C1C, 0xFF4D4D4D, 0xFF5A3EA8, 0xFF2B6B12};
constexpr Colors kOnDark = {0xFF6DB3FF, 0xFFFF9F59, 0xFF4FD0AB, 0xFFEC8FD0, 0xFFE3C04B,
                            0xFF66C7E8, 0xFFFF8F8F, 0xFFC4C4C4, 0xFFB7A2FF, 0xFF97D572};

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

// Readable on whatever the theme draws upon.
QColor OnPaper(const QPalette& palette, const QColor& color) {
  return ReadableOn(palette.color(QPalette::Base), color, palette.color(QPalette::Text));
}

QPen SeriesPen(const QPalette& palette, std::size_t series) {
  QPen pen(SeriesColor(palette, series), kLineWidth);
  pen.setJoinStyle(Qt::RoundJoin);
  pen.setCapStyle(Qt::FlatCap);
  QList<qreal> dashes;
  for (const QString& length : Q(charts::DashPattern(series)).split(QLatin1Char(' '), Qt::SkipEmptyParts))
    dashes << length.toDouble() / kLineWidth;  // Qt counts in widths of the pen
  if (!dashes.isEmpty()) pen.setDashPattern(dashes);
  return pen;
}

}  // namespace

QColor SeriesColor(const QPalette& palette, std::size_t series) {
  return OnPaper(palette, QColor((IsDark(palette) ? kOnDark : kOnLight)[series % charts::kLineStyles]));
}

ChartView::ChartView(const QString& name, const QString& reader, QWidget* parent) : QWidget(parent) {
  setObjectName(name);
  setAccessibleName(reader);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ChartView::SetChart(charts::Chart chart, const QString& hint) {
  told_ = nullptr;
  chart_ = std::move(chart);
  hint_ = chart_.marks.empty() && chart_.bars.empty() ? hint : QString();
  setAccessibleDescription(hint_.isEmpty() ? Q(chart_.description) : hint_);
  updateGeometry();
  update();
}

QString ChartView::Told() const {
  return told_ == nullptr ? QString() : Q(charts::Describe(chart_, *told_));
}

QSize ChartView::sizeHint() const {
  return QSizeF(chart_.width, chart_.height).toSize();
}

QSize ChartView::minimumSizeHint() const {
  return {240, 120};
}

double ChartView::Scale() const {
  if (chart_.width <= 0 || chart_.height <= 0) return 1;
  return std::min(width() / chart_.width, height() / chart_.height);
}

QPointF ChartView::Origin() const {
  return {std::max(0.0, (width() - chart_.width * Scale()) / 2),
          std::max(0.0, (height() - chart_.height * Scale()) / 2)};
}

charts::Point ChartView::Where(const charts::Value& value) const {
  for (const charts::Mark& mark : chart_.marks)
    if (&mark.value == &value) return mark.at;
  for (const charts::Bar& bar : chart_.bars)
    if (&bar.value == &value) return {bar.at.x + bar.width / 2, bar.at.y + bar.height / 2};
  return {};
}

QPoint ChartView::PlaceOf(const charts::Value& value) const {
  const charts::Point at = Where(value);
  return (Origin() + QPointF(at.x, at.y) * Scale()).toPoint();
}

void ChartView::Tell(const charts::Value* value, const QPoint& at) {
  if (value == told_) return;
  told_ = value;
  setAccessibleDescription(value == nullptr ? Q(chart_.description) : Told());
  if (value == nullptr)
    QToolTip::hideText();
  else
    QToolTip::showText(mapToGlobal(at), ToolTipText(Told()), this);
  update();
}

const charts::Value* ChartView::Next(int key) const {
  std::vector<const charts::Value*> values;
  for (const charts::Mark& mark : chart_.marks) values.push_back(&mark.value);
  for (const charts::Bar& bar : chart_.bars) values.push_back(&bar.value);
  if (values.empty()) return nullptr;
  if (told_ == nullptr) return values.front();
  const bool bars = chart_.marks.empty();
  const bool across = key == Qt::Key_Left || key == Qt::Key_Right || bars;
  const bool forth = key == Qt::Key_Right || key == Qt::Key_Down;
  const charts::Point from = Where(*told_);
  const charts::Value* next = told_;
  double least = std::numeric_limits<double>::infinity();
  for (const charts::Value* value : values) {
    // Along a line from race to race, at a race from line to line.
    if (across ? value->series != told_->series : value->entry != told_->entry) continue;
    const double way = across ? static_cast<double>(value->entry) - static_cast<double>(told_->entry)
                              : Where(*value).y - from.y;
    const double distance = forth ? way : -way;
    if (distance <= 0 || distance >= least) continue;
    least = distance;
    next = value;
  }
  return next;
}

bool ChartView::event(QEvent* event) {
  // The tool tip is shown while the pointer moves; Qt's own would hide it.
  if (event->type() == QEvent::ToolTip) return true;
  return QWidget::event(event);
}

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  const QPointF at = (event->position() - Origin()) / Scale();
  Tell(charts::ValueAt(chart_, {at.x(), at.y()}, kReach), event->position().toPoint());
}

void ChartView::leaveEvent(QEvent* event) {
  Tell(nullptr, {});
  QWidget::leaveEvent(event);
}

void ChartView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
      if (const charts::Value* next = Next(event->key())) Tell(next, PlaceOf(*next));
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

// ---- painting

void ChartView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  if (hasFocus()) {
    // The style's own frame is too faint on some themes.
    painter.setPen(QPen(OnPaper(palette(), palette().color(QPalette::Highlight)), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
  }
  if (!hint_.isEmpty()) {
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, hint_);
    return;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(Origin());
  painter.scale(Scale(), Scale());
  const QColor text = palette().color(QPalette::Text);
  for (const charts::Rule& rule : chart_.rules) {
    QColor line = text;
    line.setAlphaF(rule.axis ? 0.6F : 0.18F);
    painter.setPen(QPen(line, 1));
    painter.drawLine(QPointF(rule.from.x, rule.from.y), QPointF(rule.to.x, rule.to.y));
  }
  PaintBars(painter);
  PaintLines(painter);
  PaintLabels(painter);
  if (told_ == nullptr) return;
  const charts::Point at = Where(*told_);
  painter.setPen(QPen(text, 1.5));
  painter.setBrush(chart_.marks.empty() ? Qt::NoBrush : palette().base());
  painter.drawEllipse(QPointF(at.x, at.y), kRing, kRing);
}

void ChartView::PaintBars(QPainter& painter) const {
  const bool dark = IsDark(palette());
  const QColor plain = OnPaper(palette(), QColor::fromRgb(dark ? 0xFF6E9BCB : 0xFF5B7FA6));
  const QColor stressed = OnPaper(palette(), QColor::fromRgb(dark ? 0xFFE6AB3C : 0xFFB27708));
  for (const charts::Bar& bar : chart_.bars) {
    const QRectF shape(bar.at.x, bar.at.y, bar.width, bar.height);
    painter.fillRect(shape, bar.stressed ? stressed : plain);
    if (!bar.stressed) continue;
    painter.setPen(QPen(palette().color(QPalette::Text), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(shape);
  }
}

void ChartView::PaintLines(QPainter& painter) const {
  painter.setBrush(Qt::NoBrush);
  for (const charts::Curve& curve : chart_.curves) {
    QPolygonF line;
    for (const charts::Point& point : curve.points) line << QPointF(point.x, point.y);
    const QPen pen = SeriesPen(palette(), curve.series);
    painter.setPen(pen);
    painter.drawPolyline(line);
    if (line.size() > 1) continue;
    // A line of one point is a dot.
    painter.setBrush(pen.color());
    painter.drawEllipse(line.constFirst(), kLineWidth, kLineWidth);
    painter.setBrush(Qt::NoBrush);
  }
}

void ChartView::PaintLabels(QPainter& painter) const {
  QFont small = font();
  small.setPixelSize(kTextSize);
  painter.setFont(small);
  const QFontMetricsF metrics(small);
  for (const charts::Label& label : chart_.labels) {
    if (label.series) {
      painter.setPen(SeriesPen(palette(), *label.series));
      painter.drawLine(QPointF(label.at.x - kLegendFrom, label.at.y - kLegendUp),
                       QPointF(label.at.x - kLegendTo, label.at.y - kLegendUp));
    }
    painter.setPen(palette().color(QPalette::Text));
    const QString text = Q(label.text);
    double left = label.at.x;
    if (label.anchor != charts::Anchor::Start) {
      const double width = metrics.horizontalAdvance(text);
      left -= label.anchor == charts::Anchor::Middle ? width / 2 : width;
    }
    painter.drawText(QPointF(left, label.at.y), text);
  }
}

}  // namespace scorvane::forms
