#include "forms/frmDriverList.h"

#include <QApplication>
#include <QHeaderView>
#include <QVBoxLayout>
#include <bit>

#include "drivers/Roster.h"
#include "forms/frmEditDriver.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

enum Button { kEdit, kAdd, kRemove, kInclude, kExclude, kClose, kRemoveResults };

QString YesNo(bool flag) {
  return flag ? QStringLiteral("Yes") : QStringLiteral("No");
}

}  // namespace

frmDriverList::frmDriverList(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmDriverList"));
  setWindowTitle(tr("Driver List"));
  grid_ = new SelectionGrid(QStringLiteral("fgDList"), this);
  grid_->setAccessibleName(tr("Drivers of the league"));
  grid_->SetColumns({{tr("Driver"), 3130, Qt::AlignLeft}, {tr("Excluded?"), 1150, Qt::AlignHCenter}});
  grid_->horizontalHeader()->setSectionsClickable(true);
  grid_->setMinimumWidth(grid_->columnWidth(0) + grid_->columnWidth(1) + 40);
  grid_->setMinimumHeight(grid_->fontMetrics().height() * 18);

  lblNumDrivers_ = new QLabel(this);
  lblNumDrivers_->setObjectName(QStringLiteral("lblNumDrivers"));
  auto* countRow = new QHBoxLayout;
  countRow->addWidget(new QLabel(tr("Count:"), this));
  countRow->addWidget(lblNumDrivers_);
  countRow->addStretch();

  auto* left = new QVBoxLayout;
  left->addWidget(grid_);
  left->addLayout(countRow);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left, 1);
  buttons_ = AddButtonColumn(layout, this,
                             {{kEdit, tr("&Edit"), tr("Edit this driver")},
                              {kAdd, tr("&Add"), tr("Add a new driver")},
                              {kRemove, tr("&Remove"), tr("Remove this driver")},
                              {kInclude, tr("&Include"), tr("Include this driver")},
                              {kExclude, tr("E&xclude"), tr("Exclude this driver")},
                              {kRemoveResults, tr("Remove Excluded Results"),
                               tr("Remove the results of all excluded drivers and recalculate")},
                              {kClose, tr("Close"), tr("Close this dialog")}},
                             5);

  connect(grid_, &SelectionGrid::SelectionChanged, this,
          [this] { buttons_[kEdit]->setEnabled(count_ > 0 && grid_->OneRowSelected()); });
  connect(grid_, &SelectionGrid::InsertPressed, buttons_[kAdd], &QPushButton::click);
  connect(grid_, &SelectionGrid::DeletePressed, buttons_[kRemove], &QPushButton::click);
  connect(grid_, &SelectionGrid::EnterPressed, this, [this] {
    if (grid_->OneRowSelected()) EditDriver(grid_->CurrentRow());
  });
  connect(grid_, &SelectionGrid::RowDoubleClicked, this, [this](int row) { EditDriver(row); });
  connect(grid_->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int section) {
    constexpr Qt::KeyboardModifiers kKeys = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier;
    const auto held = static_cast<unsigned>(int(QApplication::keyboardModifiers() & kKeys));
    if (std::popcount(held) != 1) SortByColumn(section);
  });
  connect(buttons_[kEdit], &QPushButton::clicked, this, [this] { EditDriver(grid_->CurrentRow()); });
  connect(buttons_[kAdd], &QPushButton::clicked, this, &frmDriverList::AddDriver);
  connect(buttons_[kRemove], &QPushButton::clicked, this, [this] { RemoveDrivers(true); });
  connect(buttons_[kInclude], &QPushButton::clicked, this, [this] { SetExclude(false); });
  connect(buttons_[kExclude], &QPushButton::clicked, this, [this] { SetExclude(true); });
  connect(buttons_[kRemoveResults], &QPushButton::clicked, this, &frmDriverList::RemoveExcludedResults);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  LoadDrivers();
  grid_->setFocus();
}

void frmDriverList::LoadDrivers() {
  const std::vector<drivers::Driver> all = drivers::ListDrivers(context_.session.League());
  for (const drivers::Driver& driver : all)
    grid_->AddRow({Q(driver.name), YesNo(driver.excluded)}, driver.id);
  count_ = static_cast<int>(all.size());
  if (all.empty()) grid_->AddRow({});
  ShowCount();
  EnableDriverButtons(!all.empty());
  grid_->SelectRows(0, 0);
}

void frmDriverList::ShowCount() {
  lblNumDrivers_->setText(QString::number(count_));
}

void frmDriverList::EnableDriverButtons(bool enabled) {
  for (const int index : {kEdit, kRemove, kInclude, kExclude}) buttons_[index]->setEnabled(enabled);
}

std::vector<std::int32_t> frmDriverList::SelectedIds() const {
  std::vector<std::int32_t> ids;
  for (int row = grid_->FirstSelected(); row >= 0 && row <= grid_->LastSelected(); ++row)
    if (grid_->RowData(row) != 0) ids.push_back(grid_->RowData(row));
  return ids;
}

void frmDriverList::SortByColumn(int column) {
  if (count_ == 0) return;
  bool& ascending = ascending_[static_cast<std::size_t>(column)];
  ascending = !ascending;
  grid_->sortItems(column, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
  grid_->SelectRows(0, 0);
}

void frmDriverList::SetExclude(bool exclude) {
  Guarded(context_.ui, [&] {
    drivers::SetExclude(context_.session.League(), SelectedIds(), exclude);
    for (int row = grid_->FirstSelected(); row >= 0 && row <= grid_->LastSelected(); ++row)
      grid_->SetCell(row, 1, YesNo(exclude));
  });
}

void frmDriverList::RemoveDrivers(bool ask) {
  if (count_ == 0) return;
  const bool one = grid_->OneRowSelected();
  const common::Message question{one ? "Removing this driver will also remove the points associated with the "
                                       "driver.\r\nDo you want to continue?"
                                     : "Removing these drivers will also remove the points associated with "
                                       "these drivers.\r\nDo you want to "
                                       "continue?",
                                 "Confirm Driver Removal", common::MessageIcon::Question};
  if (ask && context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    drivers::RemoveDrivers(context_.session.League(), SelectedIds());
    const int first = grid_->FirstSelected();
    for (int row = grid_->LastSelected(); row >= first; --row) {
      if (count_ > 1) {
        grid_->removeRow(row);
      } else {
        for (int c = 0; c < grid_->columnCount(); ++c) grid_->SetCell(row, c, {});
        grid_->SetRowData(row, 0);
        EnableDriverButtons(false);
      }
      --count_;
    }
    ShowCount();
    grid_->SelectRows(first, first);
  });
}

void frmDriverList::EditDriver(int row) {
  if (row < 0 || grid_->RowData(row) == 0) return;
  Guarded(context_.ui, [&] {
    frmEditDriver editor(context_, this);
    editor.DriverID(grid_->RowData(row));
    editor.Mode(frmEditDriver::kEdit);
    editor.exec();
    if (editor.Cancelled()) return;
    if (!editor.Merged()) {
      grid_->SetCell(row, 0, Q(editor.DriverName()));
      grid_->SetCell(row, 1, YesNo(editor.Excluded()));
      return;
    }
    RemoveDrivers(false);
    const int survivor = FindDriverRow(editor.DriverID());
    if (survivor >= 0) grid_->SelectRows(survivor, survivor);
  });
}

void frmDriverList::AddDriver() {
  Guarded(context_.ui, [&] {
    frmEditDriver editor(context_, this);
    editor.Mode(frmEditDriver::kAdd);
    editor.exec();
    if (editor.Cancelled()) return;
    if (count_ == 0) {
      // The empty row makes room, and there is a driver to work on now.
      grid_->ClearRows();
      EnableDriverButtons(true);
    }
    grid_->AddRow({Q(editor.DriverName()), YesNo(editor.Excluded())}, editor.DriverID());
    ++count_;
    ShowCount();
    grid_->SelectRows(grid_->rowCount() - 1, grid_->rowCount() - 1);
  });
}

int frmDriverList::FindDriverRow(std::int32_t id) const {
  for (int row = 0; row < grid_->rowCount(); ++row)
    if (grid_->RowData(row) == id) return row;
  return -1;
}

void frmDriverList::RemoveExcludedResults() {
  Guarded(context_.ui, [&] {
    {
      const WaitCursor wait;
      drivers::RemoveExcludedResults(context_.templateDb, context_.session.League(), context_.state,
                                     context_.ui);
    }
    context_.ui.ShowMessage(
        {"The results of excluded drivers have been removed from all races,\r\nand the remaining "
         "results have been recalculated.",
         "Process Completed", common::MessageIcon::Information});
  });
}

}  // namespace scorvane::forms
