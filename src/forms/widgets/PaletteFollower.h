// Colours that a window works out from the theme's, and works out anew when the theme changes.
#pragma once

#include <QEvent>
#include <QWidget>
#include <functional>
#include <utility>

namespace scorvane::forms {

class PaletteFollower : public QObject {
 public:
  // Lives as long as the window.
  PaletteFollower(QWidget* window, std::function<void()> recolor)
      : QObject(window), recolor_(std::move(recolor)) {
    recolor_();
    window->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::PaletteChange) recolor_();
    return QObject::eventFilter(watched, event);
  }

 private:
  std::function<void()> recolor_;
};

}  // namespace scorvane::forms
