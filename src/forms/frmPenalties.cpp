#include "forms/frmPenalties.h"

#include <QHeaderView>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "app/Commands.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "scoring/Penalties.h"

namespace scorvane::forms {
namespace {

enum Button { kRemove, kClose };

}  // namespace

frmPenalties::frmPenalties(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmPenalties"));
  setWindowTitle(tr("Penalties"));
  auto* layout = new QVBoxLayout(this);
  grid_ = new SelectionGrid(QStringLiteral("fgPenalties"), this);
  grid_->setAccessibleName(tr("Penalties of the league"));
  grid_->SetColumns({{tr("Race"), 2400, Qt::AlignLeft},
                     {tr("Driver"), 2000, Qt::AlignLeft},
                     {tr("Penalty"), 1500, Qt::AlignLeft},
                     {tr("Reason"), 3000, Qt::AlignLeft},
                     {tr("Given"), 1600, Qt::AlignLeft}});
  grid_->horizontalHeader()->setStretchLastSection(true);
  grid_->SetArrangeable();
  layout->addWidget(grid_, 1);
  buttons_ = AddButtons(layout, this,
                        {{kRemove, tr("&Remove"), tr("Take the selected penalties back")},
                         {kClose, tr("Close"), tr("Close this dialog")}});
  connect(buttons_[kRemove], &QPushButton::clicked, this, &frmPenalties::RemovePenalties);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  connect(grid_, &SelectionGrid::DeletePressed, this, &frmPenalties::RemovePenalties);
  grid_->SetMenu({buttons_[kRemove]});
  FillGrid();
  int width = 40;
  for (int c = 0; c < grid_->ColumnCount(); ++c) width += grid_->columnWidth(c);
  // Long names are read by moving the view.
  width = std::min(width, fontMetrics().averageCharWidth() * 160);
  resize(width, grid_->fontMetrics().height() * 24);
  grid_->setFocus();
}

void frmPenalties::FillGrid() {
  std::vector<SelectionGrid::Row> rows;
  for (const scoring::Penalty& penalty : scoring::ListPenalties(context_.session.League())) {
    rows.push_back({{Q(penalty.race), Q(penalty.driver), Q(scoring::Describe(penalty)), Q(penalty.reason),
                     Q(penalty.given)},
                    penalty.id,
                    // Waits until the driver has a result in the race again.
                    !penalty.resultId});
  }
  if (rows.empty()) rows.emplace_back();
  grid_->SetRows(std::move(rows));
  for (int column = 0; column < grid_->ColumnCount(); ++column) grid_->FitColumn(column);
  grid_->SelectRows(0, 0);
  grid_->SetHint(HasPenalties() ? QString()
                                : tr("No penalty has been given.\n\nIn the results of a race (Race > Edit), "
                                     "\"Penalty...\" gives one to the selected result."));
  buttons_[kRemove]->setEnabled(HasPenalties());
}

void frmPenalties::RemovePenalties() {
  const int first = grid_->FirstSelected();
  if (!HasPenalties() || first < 0) return;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    for (int row = first; row <= grid_->LastSelected(); ++row) ids.push_back(grid_->RowData(row));
    const WaitCursor wait;
    app::RemovePenalties(context_.session, ids);
  });
  Guarded(context_.ui, [&] { FillGrid(); });
  grid_->SelectRows(first, first);
}

}  // namespace scorvane::forms
