#include "forms/Undoing.h"

#include <fmt/format.h>

#include <QShortcut>
#include <QToolTip>
#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "app/Commands.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "history/History.h"

namespace scorvane::forms {
namespace {

constexpr int kToolTipTime = 5000;  // ms

}  // namespace

std::string DoneText(const std::string& label) {
  static constexpr std::array<std::string_view, 9> kVerbs = {
      "Add", "Edit", "Exclude", "Import", "Include", "Merge", "Recalculate", "Remove", "Rename"};
  const std::string_view verb = std::string_view(label).substr(0, label.find(' '));
  if (std::find(kVerbs.begin(), kVerbs.end(), verb) == kVerbs.end()) return "Changed: " + label;
  return fmt::format("{}{}{}", verb, verb.ends_with('e') ? "d" : "ed", label.substr(verb.size()));
}

QString Shortened(const std::string& text, int characters) {
  const QString whole = Q(text).simplified();
  return whole.size() <= characters ? whole : whole.left(characters - 1).trimmed() + QChar(0x2026);
}

QString ToolTipText(const QString& text) {
  return text.isEmpty() ? text : QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped());
}

std::optional<std::string> TakeStep(FormContext& context, Direction direction) {
  std::optional<std::string> label;
  Guarded(context.ui, [&] {
    const WaitCursor wait;
    label = direction == Direction::Undo ? app::Undo(context.session) : app::Redo(context.session);
  });
  return label;
}

DialogUndo::DialogUndo(FormContext& context, QWidget* dialog, std::function<void()> showAgain)
    : QObject(dialog), context_(context), dialog_(dialog), showAgain_(std::move(showAgain)) {
  const auto changes = history::List(context.session.League());
  if (!changes.empty()) before_ = changes.front().id;
  const auto add = [this](const QKeySequence& keys, Direction direction) {
    connect(new QShortcut(keys, dialog_), &QShortcut::activated, this,
            [this, direction] { Step(direction); });
  };
  add(Qt::CTRL | Qt::Key_Z, Direction::Undo);
  add(Qt::CTRL | Qt::Key_Y, Direction::Redo);
  add(Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Direction::Redo);
}

void DialogUndo::Step(Direction direction) {
  Guarded(context_.ui, [&] {
    const bool undo = direction == Direction::Undo;
    engine::Database& league = context_.session.League();
    const auto next = undo ? history::NextUndo(league) : history::NextRedo(league);
    QString said =
        undo ? tr("Nothing has been changed since this dialog opened.") : tr("Nothing was taken back here.");
    if (next && next->id > before_) {
      const auto label = TakeStep(context_, direction);
      showAgain_();
      if (!label) return;
      said = (undo ? tr("Undone: %1. Ctrl+Y does it again.") : tr("Done again: %1. Ctrl+Z takes it back."))
                 .arg(Q(*label));
    }
    QToolTip::showText(dialog_->mapToGlobal(QPoint(8, dialog_->height() - 40)), ToolTipText(said), dialog_,
                       {}, kToolTipTime);
  });
}

}  // namespace scorvane::forms
