#include "forms/widgets/EntryBox.h"

#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTimer>
#include <algorithm>

#include "forms/widgets/Contrast.h"

namespace scorvane::forms {

EntryBox::EntryBox(const QString& name, QWidget* parent) : EntryBox(name, Filter(), parent) {}

EntryBox::EntryBox(const QString& name, Filter filter, QWidget* parent)
    : QLineEdit(parent), filter_(std::move(filter)) {
  setObjectName(name);
}

EntryBox::Filter EntryBox::Digits() {
  return [](const QString&, QChar character) {
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
  };
}

// Where nothing was typed that could be taken back, the keys are the dialog's.
bool EntryBox::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if ((key->matches(QKeySequence::Undo) && !isUndoAvailable()) ||
        (key->matches(QKeySequence::Redo) && !isRedoAvailable())) {
      event->ignore();
      return false;
    }
  }
  if (event->type() == QEvent::Polish || event->type() == QEvent::PaletteChange) ShowHintReadably(*this);
  return QLineEdit::event(event);
}

void EntryBox::keyPressEvent(QKeyEvent* event) {
  const QString typed = event->text();
  const bool printable = !typed.isEmpty() && typed.at(0).isPrint() &&
                         (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == 0;
  // A selected text is replaced, so it does not count as being there.
  QString rest = text();
  if (hasSelectedText()) rest.remove(selectionStart(), selectionLength());
  if (printable && filter_ && !filter_(rest, typed.at(0))) {
    event->accept();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

void EntryBox::inputMethodEvent(QInputMethodEvent* event) {
  const QString committed = event->commitString();
  const bool refused = filter_ && std::any_of(committed.begin(), committed.end(),
                                              [&](QChar character) { return !filter_(text(), character); });
  if (!refused) QLineEdit::inputMethodEvent(event);
}

void EntryBox::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  // After the mouse press that brought the focus has set the cursor.
  if (event->reason() == Qt::MouseFocusReason) {
    QTimer::singleShot(0, this, &QLineEdit::selectAll);
  } else {
    selectAll();
  }
}

void EntryBox::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // A menu or another window in front is not leaving: the keyboard comes back.
  if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) emit Left();
}

}  // namespace scorvane::forms
