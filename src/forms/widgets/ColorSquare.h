// A square of a colour that a click, or the space bar, changes through the colour dialog.
#pragma once

#include <QFrame>
#include <cstdint>

#include "common/UserInterface.h"

namespace scorvane::forms {

class ColorSquare : public QFrame {
  Q_OBJECT
 public:
  // `accessibleName` is what a screen reader says of it.
  ColorSquare(const QString& name, const QString& accessibleName, common::UserInterface& ui,
              QWidget* parent = nullptr);

  // Red in the low byte.
  std::int32_t Color() const { return color_; }
  void SetColor(std::int32_t color);

  QSize sizeHint() const override;

 signals:
  void Changed();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void Pick();

  common::UserInterface& ui_;
  std::int32_t color_ = 0;
};

}  // namespace scorvane::forms
