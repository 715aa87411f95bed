// The one place that turns an error that ends a command into its message box. The program keeps running.
#pragma once

#include <QApplication>
#include <exception>

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

// The plain pointer, while somebody is asked something in the middle of a wait.
class PlainCursor {
 public:
  PlainCursor() : waiting_(QApplication::overrideCursor() != nullptr) {
    if (waiting_) QApplication::changeOverrideCursor(Qt::ArrowCursor);
  }
  PlainCursor(const PlainCursor&) = delete;
  PlainCursor& operator=(const PlainCursor&) = delete;
  ~PlainCursor() {
    if (waiting_) QApplication::changeOverrideCursor(Qt::WaitCursor);
  }

 private:
  bool waiting_;
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
