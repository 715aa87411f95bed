// A text box that takes only the characters it should, and selects its text when it is entered.
#pragma once

#include <QLineEdit>
#include <functional>

namespace scorvane::forms {

class EntryBox : public QLineEdit {
  Q_OBJECT
 public:
  // Whether a typed character may go into a box that holds `text`. What is pasted is not asked about.
  using Filter = std::function<bool(const QString& text, QChar character)>;

  explicit EntryBox(const QString& name, QWidget* parent = nullptr);
  EntryBox(const QString& name, Filter filter, QWidget* parent = nullptr);

  static Filter Digits();

 signals:
  // The keyboard has gone on to another control.
  void Left();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  Filter filter_;
};

}  // namespace scorvane::forms
