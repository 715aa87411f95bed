// What the windows say and do when changes of the open league are taken back and done again.
#pragma once

#include <QObject>
#include <QString>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "forms/FormContext.h"

namespace scorvane::forms {

enum class Direction { Undo, Redo };

// A change's label as what was done: "Import 3 files" as "Imported 3 files".
std::string DoneText(const std::string& label);
// At most this many characters, so that what stands behind it stays in sight.
QString Shortened(const std::string& text, int characters);
// A text as it stands, for tool tips, which else take what looks like markup for markup.
QString ToolTipText(const QString& text);

// Takes the last change of the open league back, or does the one again that was taken back last, and yields
// its label. Nothing, and nothing is changed, when there is none or, after a message, when it failed.
std::optional<std::string> TakeStep(FormContext& context, Direction direction);

// Gives a dialog the keys Ctrl+Z and Ctrl+Y for the changes that were made since it opened; earlier ones are
// left alone. What was done is said in a tool tip at the dialog's foot.
class DialogUndo : public QObject {
 public:
  // `showAgain` shows what the league holds after each step. The dialog owns this object.
  DialogUndo(FormContext& context, QWidget* dialog, std::function<void()> showAgain);

 private:
  void Step(Direction direction);

  FormContext& context_;
  QWidget* dialog_;
  std::function<void()> showAgain_;
  std::int64_t before_ = 0;  // the newest change that is none of the dialog's
};

}  // namespace scorvane::forms
