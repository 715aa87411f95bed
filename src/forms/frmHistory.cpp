#include "forms/frmHistory.h"

#include <fmt/format.h>

#include <QHeaderView>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/Commands.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "history/History.h"

namespace scorvane::forms {
namespace {

enum Button { kGoBack, kForget, kClose };
constexpr int kLabelCharacters = 120;  // of a change in a question

}  // namespace

frmHistory::frmHistory(FormContext& context, std::function<void()> changed, QWidget* parent)
    : QDialog(parent), context_(context), changed_(std::move(changed)) {
  setObjectName(QStringLiteral("frmHistory"));
  setWindowTitle(tr("History"));
  grid_ = new SelectionGrid(QStringLiteral("fgHistory"), this);
  grid_->setAccessibleName(tr("Changes of the league, newest first"));
  grid_->SetColumns({{tr("Time"), 1750, Qt::AlignLeft},
                     {tr("Change"), 5200, Qt::AlignLeft},
                     {tr("Touched"), 2800, Qt::AlignLeft},
                     {tr("State"), 900, Qt::AlignLeft}});
  grid_->horizontalHeader()->setStretchLastSection(true);
  grid_->SetArrangeable();
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(grid_, 1);
  buttons_ =
      AddButtons(layout, this,
                 {{kGoBack, tr("&Go Back to Before This..."), tr("Take back this change and all after it")},
                  {kForget, tr("&Forget History..."),
                   tr("Leave no trace of the changes in the league file, for one that is sent to somebody")},
                  {kClose, tr("Close"), tr("Close this dialog")}});
  connect(buttons_[kGoBack], &QPushButton::clicked, this, &frmHistory::GoBack);
  connect(buttons_[kForget], &QPushButton::clicked, this, &frmHistory::Forget);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmHistory::UpdateButtons);
  connect(grid_, &SelectionGrid::EnterPressed, buttons_[kGoBack], &QPushButton::click);
  connect(grid_, &SelectionGrid::RowDoubleClicked, buttons_[kGoBack], &QPushButton::click);
  const auto add = [this](const QKeySequence& keys, Direction direction) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, [this, direction] { Step(direction); });
  };
  add(Qt::CTRL | Qt::Key_Z, Direction::Undo);
  add(Qt::CTRL | Qt::Key_Y, Direction::Redo);
  add(Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Direction::Redo);
  grid_->SetMenu({buttons_[kGoBack]});
  Load();
  int width = 60;
  for (int column = 0; column < grid_->ColumnCount(); ++column) width += grid_->columnWidth(column);
  resize(std::min(width, screen()->availableGeometry().width() * 9 / 10), grid_->fontMetrics().height() * 26);
  // What can be taken back next.
  const auto next = std::find_if(changes_.begin(), changes_.end(),
                                 [](const engine::LoggedChange& change) { return !change.undone; });
  const int row = next == changes_.end() ? 0 : static_cast<int>(next - changes_.begin());
  grid_->SelectRows(row, row);
  grid_->setFocus();
}

void frmHistory::Load() {
  changes_ = history::List(context_.session.League());
  const std::vector<int> selected = grid_->SelectedData();
  const int row = grid_->FirstSelected();
  std::vector<SelectionGrid::Row> rows;
  rows.reserve(changes_.size());
  for (const engine::LoggedChange& change : changes_)
    rows.push_back({{Q(history::TimeText(change)), Q(change.label), Q(history::Summary(change)),
                     change.undone ? tr("Undone") : QString()},
                    static_cast<int>(change.id),
                    change.undone});
  grid_->SetRows(std::move(rows));
  for (const int column : {0, 1, 2}) grid_->FitColumn(column);
  grid_->SetHint(changes_.empty() ? tr("Nothing that was done to this league is kept here.") : QString());
  grid_->SelectData(selected, row);
  UpdateButtons();
}

const engine::LoggedChange* frmHistory::Chosen() const {
  if (!grid_->OneRowSelected()) return nullptr;
  const int id = grid_->RowData(grid_->CurrentRow());
  const auto change = std::find_if(changes_.begin(), changes_.end(),
                                   [id](const engine::LoggedChange& one) { return one.id == id; });
  return change == changes_.end() || change->undone ? nullptr : &*change;
}

void frmHistory::UpdateButtons() {
  // A button that is switched off under the keyboard would leave it nowhere.
  if ((Chosen() == nullptr && buttons_[kGoBack]->hasFocus()) ||
      (changes_.empty() && buttons_[kForget]->hasFocus()))
    grid_->setFocus();
  buttons_[kGoBack]->setEnabled(Chosen() != nullptr);
  buttons_[kForget]->setEnabled(!changes_.empty());
}

void frmHistory::Step(Direction direction) {
  TakeStep(context_, direction);
  Guarded(context_.ui, [&] { Load(); });
  changed_();
}

void frmHistory::GoBack() {
  const engine::LoggedChange* change = Chosen();
  if (change == nullptr) return;
  const std::int64_t id = change->id;
  const auto count = std::count_if(changes_.begin(), changes_.end(), [id](const engine::LoggedChange& other) {
    return !other.undone && other.id >= id;
  });
  const std::string what = fmt::format("\"{}\" of {}", Utf8(Shortened(change->label, kLabelCharacters)),
                                       history::TimeText(*change));
  const common::Message question{
      (count == 1 ? fmt::format("This takes back {}.", what)
                  : fmt::format("This takes back the last {} changes, to before {}.", count, what)) +
          "\r\nDo you want to continue?",
      "History", common::MessageIcon::Question};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::UndoThrough(context_.session, id);
  });
  Guarded(context_.ui, [&] { Load(); });
  changed_();
}

void frmHistory::Forget() {
  const common::Message question{
      "This forgets every change of this league, so that none of them can be undone any more.\r\n"
      "The league itself stays as it is.  Do you want to continue?",
      "Forget History", common::MessageIcon::Exclamation};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    {
      const WaitCursor wait;
      history::Clear(context_.session.League());
    }
    Load();
  });
}

}  // namespace scorvane::forms
