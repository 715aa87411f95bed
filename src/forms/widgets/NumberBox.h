// A box for a whole number that tells a screen reader what it is for, also while one types in it. What is
// typed counts when it is complete: with Enter, or when the keyboard goes on.
#pragma once

#include <QLineEdit>
#include <QSpinBox>

namespace scorvane::forms {

class NumberBox : public QSpinBox {
 public:
  NumberBox(const QString& name, const QString& reader, QWidget* parent) : QSpinBox(parent) {
    setObjectName(name);
    setAccessibleName(reader);
    lineEdit()->setAccessibleName(reader);
    setKeyboardTracking(false);
  }
};

}  // namespace scorvane::forms
