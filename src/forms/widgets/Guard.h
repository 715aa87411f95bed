// The one place that turns an error that ends a command into its message box. The program keeps running.
#pragma once

#include <QApplication>
#include <QCursor>
#include <exception>
#include <optional>

#include "common/UserInterface.h"

namespace scorvane::forms {

// The hourglass, for as long as it lives.
class WaitCursor {
 public:
  WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
  ~WaitCursor() { QApplication::restoreOverrideCursor(); }
};

// The plain pointer, while somebody is asked something in the middle of a wait. What was shown before comes
// back, so a question within a question leaves the pointer plain.
class PlainCursor {
 public:
  PlainCursor() {
    if (const QCursor* shown = QApplication::overrideCursor()) {
      before_ = *shown;
      QApplication::changeOverrideCursor(Qt::ArrowCursor);
    }
  }
  PlainCursor(const PlainCursor&) = delete;
  PlainCursor& operator=(const PlainCursor&) = delete;
  ~PlainCursor() {
    if (before_) QApplication::changeOverrideCursor(*before_);
  }

 private:
  std::optional<QCursor> before_;
};

// Runs a command; false, after the message, when it throws.
template <typename Command>
bool Guarded(common::UserInterface& ui, Command command) {
  try {
    command();
    return true;
  } catch (const std::exception& e) {
    ui.ShowMessage({e.what(), common::kApplicationTitle, common::MessageIcon::Critical});
    return false;
  }
}

}  // namespace scorvane::forms
