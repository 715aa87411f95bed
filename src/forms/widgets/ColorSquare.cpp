#include "forms/widgets/ColorSquare.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "forms/widgets/Contrast.h"

namespace scorvane::forms {

ColorSquare::ColorSquare(const QString& name, const QString& accessibleName, common::UserInterface& ui,
                         QWidget* parent)
    : QFrame(parent), ui_(ui) {
  setObjectName(name);
  setAccessibleName(accessibleName);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::PointingHandCursor);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ColorSquare::SetColor(std::int32_t color) {
  color_ = color;
  update();
}

QSize ColorSquare::sizeHint() const {
  const int side = fontMetrics().height() + 6;
  return {side * 3 / 2, side};
}

void ColorSquare::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QColor fill(color_ & 0xFF, color_ >> 8 & 0xFF, color_ >> 16 & 0xFF);
  if (!isEnabled()) fill.setAlpha(70);
  const QColor line = palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid);
  painter.setPen(
      ReadableOn(palette().color(QPalette::Window), line, palette().color(QPalette::WindowText), kSeen));
  painter.setBrush(fill);
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
  if (hasFocus()) painter.drawRect(rect().adjusted(1, 1, -2, -2));
}

void ColorSquare::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->pos())) Pick();
}

void ColorSquare::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space) {
    Pick();
  } else {
    QFrame::keyPressEvent(event);
  }
}

void ColorSquare::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange) update();
  QFrame::changeEvent(event);
}

void ColorSquare::Pick() {
  auto color = static_cast<std::uint32_t>(color_);
  if (!ui_.PickColor(color)) return;
  SetColor(static_cast<std::int32_t>(color));
  emit Changed();
}

}  // namespace scorvane::forms
