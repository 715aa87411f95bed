#include "forms/frmOfflineSettings.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>

#include "app/Commands.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "scoring/OfflineMerge.h"

namespace scorvane::forms {

frmOfflineSettings::frmOfflineSettings(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmOfflineSettings"));
  setWindowTitle(tr("Offline League Settings"));
  auto* note =
      new QLabel(tr("When merging STNs for offline leagues, the finishing position of drivers will be "
                    "determined by the following order of criteria."),
                 this);
  note->setWordWrap(true);
  grid_ = new SelectionGrid(QStringLiteral("fgPriorities"), this);
  grid_->setAccessibleName(tr("Criteria in their order"));
  // The headings are hidden; a screen reader says them, and a copy has them.
  grid_->SetColumns({{tr("Rank"), 450, Qt::AlignHCenter}, {tr("Criterion"), 2900, Qt::AlignLeft}});
  grid_->horizontalHeader()->hide();
  grid_->horizontalHeader()->setStretchLastSection(true);
  grid_->setMinimumHeight(grid_->fontMetrics().height() * 14);
  const QString toolTips[] = {tr("Make item(s) a higher priority"), tr("Make item(s) a lower priority")};
  auto* moves = new QVBoxLayout;
  moves->addStretch();
  for (std::size_t i = 0; i < cmdMove_.size(); ++i) {
    cmdMove_[i] = new QToolButton(this);
    cmdMove_[i]->setObjectName(QStringLiteral("cmdMove_%1").arg(i));
    cmdMove_[i]->setArrowType(i == 0 ? Qt::UpArrow : Qt::DownArrow);
    cmdMove_[i]->setToolTip(toolTips[i]);
    cmdMove_[i]->setAccessibleName(toolTips[i]);
    cmdMove_[i]->setFocusPolicy(Qt::StrongFocus);
    connect(cmdMove_[i], &QToolButton::clicked, this, [this, i] { Move(i == 0 ? -1 : 1); });
    moves->addWidget(cmdMove_[i]);
  }
  moves->addStretch();
  auto* middle = new QHBoxLayout;
  middle->addWidget(grid_, 1);
  middle->addLayout(moves);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(note);
  layout->addLayout(middle, 1);
  const auto buttons = AddButtons(layout, this, {{1, tr("Save")}, {0, tr("Cancel")}});
  save_ = buttons.at(1);
  save_->setEnabled(false);
  connect(save_, &QPushButton::clicked, this, [this] {
    if (Store()) accept();
  });
  connect(buttons.at(0), &QPushButton::clicked, this, &frmOfflineSettings::reject);
  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmOfflineSettings::UpdateMoveButtons);

  int rank = 0;
  for (const scoring::RankCriterion& criterion :
       scoring::ListRankCriteria(context.session.League(), context.state.simType))
    grid_->AddRow({{QString::number(++rank), Q(criterion.name)}, criterion.id});
  grid_->SelectRows(0, 0);
  UpdateMoveButtons();
  grid_->setFocus();
}

void frmOfflineSettings::UpdateMoveButtons() {
  const int first = grid_->FirstSelected();
  cmdMove_[0]->setEnabled(first > 0);
  cmdMove_[1]->setEnabled(first >= 0 && first < grid_->RowCount() - 1);
}

// The row beside the block goes to its other side.
void frmOfflineSettings::Move(int step) {
  const int first = grid_->FirstSelected();
  const int last = grid_->LastSelected();
  const int from = step < 0 ? first - 1 : last + 1;
  if (first < 0 || from < 0 || from >= grid_->RowCount()) return;
  const QString name = grid_->Cell(from, 1);
  const int id = grid_->RowData(from);
  const int to = step < 0 ? last : first;
  for (int row = from; row != to; row -= step) {
    grid_->SetCell(row, 1, grid_->Cell(row - step, 1));
    grid_->SetRowData(row, grid_->RowData(row - step));
  }
  grid_->SetCell(to, 1, name);
  grid_->SetRowData(to, id);
  grid_->SelectRows(first + step, last + step);
  changed_ = true;
  save_->setEnabled(true);
}

bool frmOfflineSettings::Store() {
  return Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    for (int row = 0; row < grid_->RowCount(); ++row) ids.push_back(grid_->RowData(row));
    app::StoreRankCriteria(context_.session, ids);
    changed_ = false;
  });
}

void frmOfflineSettings::reject() {
  if (changed_) {
    const common::Answer answer = context_.ui.Ask(
        {"Do you want to save the changes you've made?", "Unsaved Information", common::MessageIcon::None},
        common::Buttons::YesNoCancel);
    if (answer == common::Answer::Cancel) return;
    if (answer == common::Answer::Yes && !Store()) return;
  }
  QDialog::reject();
}

void frmOfflineSettings::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

}  // namespace scorvane::forms
