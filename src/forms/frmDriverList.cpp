#include "forms/frmDriverList.h"

#include <QApplication>
#include <QHeaderView>
#include <QVBoxLayout>
#include <bit>

#include "app/Commands.h"
#include "engine/Collation.h"
#include "engine/Value.h"
#include "forms/Undoing.h"
#include "forms/frmEditDriver.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

enum Button { kEdit, kAdd, kRemove, kInclude, kExclude, kClose, kRemoveResults };

// Numbers by their value and before all text.
bool SortsBefore(const std::string& a, const std::string& b, char decimal) {
  double x = 0;
  double y = 0;
  const bool numberA = engine::ParseNumber(a, decimal, x);
  const bool numberB = engine::ParseNumber(b, decimal, y);
  if (numberA && numberB) return x < y;
  return numberA != numberB ? numberA : engine::CompareTexts(a, b) < 0;
}

QString YesNo(bool flag) {
  return flag ? frmDriverList::tr("Yes") : frmDriverList::tr("No");
}

}  // namespace

frmDriverList::frmDriverList(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmDriverList"));
  setWindowTitle(tr("Driver List"));
  grid_ = new SelectionGrid(QStringLiteral("fgDList"), this);
  grid_->setAccessibleName(tr("Drivers of the league"));
  grid_->SetColumns({{tr("Driver"), 3130, Qt::AlignLeft}, {tr("Excluded?"), 1150, Qt::AlignHCenter}});
  grid_->horizontalHeader()->setSectionsClickable(true);
  grid_->SetFilterable();
  grid_->setMinimumWidth(grid_->columnWidth(0) + grid_->columnWidth(1) + 40);
  grid_->setMinimumHeight(grid_->fontMetrics().height() * 18);

  lblNumDrivers_ = new QLabel(this);
  lblNumDrivers_->setObjectName(QStringLiteral("lblNumDrivers"));
  auto* countRow = new QHBoxLayout;
  auto* count = new QLabel(tr("Count:"), this);
  count->setBuddy(lblNumDrivers_);
  countRow->addWidget(count);
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

  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmDriverList::UpdateButtons);
  connect(grid_, &SelectionGrid::InsertPressed, buttons_[kAdd], &QPushButton::click);
  connect(grid_, &SelectionGrid::DeletePressed, buttons_[kRemove], &QPushButton::click);
  connect(grid_, &SelectionGrid::EnterPressed, this, [this] {
    if (grid_->OneRowSelected()) EditDriver(grid_->CurrentRow());
  });
  connect(grid_, &SelectionGrid::RowDoubleClicked, this, [this](int row) { EditDriver(row); });
  const auto sort = [this](int section) {
    constexpr Qt::KeyboardModifiers kKeys = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier;
    const auto held = static_cast<unsigned>(int(QApplication::keyboardModifiers() & kKeys));
    if (std::popcount(held) != 1) SortByColumn(section);
  };
  connect(grid_->horizontalHeader(), &QHeaderView::sectionClicked, this, sort);
  // The second of two quick clicks.
  connect(grid_->horizontalHeader(), &QHeaderView::sectionDoubleClicked, this, sort);
  connect(buttons_[kEdit], &QPushButton::clicked, this, [this] { EditDriver(grid_->CurrentRow()); });
  connect(buttons_[kAdd], &QPushButton::clicked, this, &frmDriverList::AddDriver);
  connect(buttons_[kRemove], &QPushButton::clicked, this, [this] { RemoveDrivers(); });
  connect(buttons_[kInclude], &QPushButton::clicked, this, [this] { SetExclude(false); });
  connect(buttons_[kExclude], &QPushButton::clicked, this, [this] { SetExclude(true); });
  connect(buttons_[kRemoveResults], &QPushButton::clicked, this, &frmDriverList::RemoveExcludedResults);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  grid_->SetMenu(
      {buttons_[kEdit], buttons_[kAdd], buttons_[kRemove], nullptr, buttons_[kInclude], buttons_[kExclude]});
  LoadDrivers();
  new DialogUndo(context_, this, [this] { ShowAgain(); });
  grid_->setFocus();
}

void frmDriverList::LoadDrivers() {
  const std::vector<drivers::Driver> all = drivers::ListDrivers(context_.session.League());
  std::vector<SelectionGrid::Row> rows;
  for (const drivers::Driver& driver : all)
    rows.push_back({{Q(driver.name), YesNo(driver.excluded)}, driver.id});
  if (rows.empty()) rows.emplace_back();
  grid_->SetRows(std::move(rows));
  grid_->SelectRows(0, 0);
  UpdateButtons();
}

void frmDriverList::UpdateButtons() {
  for (const int index : {kRemove, kInclude, kExclude}) buttons_[index]->setEnabled(HasDrivers());
  buttons_[kEdit]->setEnabled(HasDrivers() && grid_->OneRowSelected());
  lblNumDrivers_->setText(QString::number(HasDrivers() ? grid_->AllRows() : 0));
}

// What the league holds now, in the order and with the selection that were there.
void frmDriverList::ShowAgain() {
  const std::vector<int> selected = grid_->SelectedData();
  const int row = grid_->FirstSelected();
  LoadDrivers();
  if (sortedBy_ >= 0) SortRows();
  grid_->SelectData(selected, row);
}

void frmDriverList::SortByColumn(int column) {
  if (!HasDrivers()) return;
  bool& ascending = ascending_[static_cast<std::size_t>(column)];
  ascending = !ascending;
  sortedBy_ = column;
  SortRows();
  grid_->SelectRows(0, 0);
}

void frmDriverList::SortRows() {
  const bool ascending = ascending_[static_cast<std::size_t>(sortedBy_)];
  grid_->SortRows([&](const SelectionGrid::Row& a, const SelectionGrid::Row& b) {
    const QString first = (ascending ? a : b).cells.value(sortedBy_);
    const QString second = (ascending ? b : a).cells.value(sortedBy_);
    return SortsBefore(Utf8(first), Utf8(second), context_.state.decimalSeparator);
  });
  grid_->horizontalHeader()->setSortIndicatorShown(true);
  grid_->horizontalHeader()->setSortIndicator(sortedBy_,
                                              ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void frmDriverList::SetExclude(bool exclude) {
  Guarded(context_.ui, [&] {
    app::SetExclude(context_.session, grid_->SelectedData(), exclude);
    for (int row = grid_->FirstSelected(); row >= 0 && row <= grid_->LastSelected(); ++row)
      grid_->SetCell(row, 1, YesNo(exclude));
  });
}

void frmDriverList::RemoveDrivers() {
  if (!HasDrivers() || grid_->FirstSelected() < 0) return;
  const bool one = grid_->OneRowSelected();
  const common::Message question{one ? "Removing this driver will also remove the points associated with the "
                                       "driver.\r\nDo you want to continue?"
                                     : "Removing these drivers will also remove the points associated with "
                                       "these drivers.\r\nDo you want to "
                                       "continue?",
                                 "Confirm Driver Removal", common::MessageIcon::Question};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    app::RemoveDrivers(context_.session, grid_->SelectedData());
    RemoveSelectedRows();
  });
}

void frmDriverList::RemoveSelectedRows() {
  const int first = grid_->FirstSelected();
  for (int row = grid_->LastSelected(); row >= first; --row) {
    if (grid_->AllRows() > 1) {
      grid_->RemoveRow(row);
    } else {
      grid_->SetRow(row, {});
    }
  }
  grid_->SelectRows(first, first);
  UpdateButtons();
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
    // Only the merged driver's row, whatever else is selected.
    grid_->SelectRows(row, row);
    RemoveSelectedRows();
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
    // The empty row makes room.
    if (!HasDrivers()) grid_->ClearRows();
    grid_->AddRow({{Q(editor.DriverName()), YesNo(editor.Excluded())}, editor.DriverID()});
    grid_->SelectRows(grid_->RowCount() - 1, grid_->RowCount() - 1);
    UpdateButtons();
  });
}

int frmDriverList::FindDriverRow(std::int32_t id) const {
  for (int row = 0; row < grid_->RowCount(); ++row)
    if (grid_->RowData(row) == id) return row;
  return -1;
}

void frmDriverList::RemoveExcludedResults() {
  Guarded(context_.ui, [&] {
    {
      const WaitCursor wait;
      app::RemoveExcludedResults(context_.session, context_.ui);
    }
    context_.ui.ShowMessage(
        {"The results of excluded drivers have been removed from all races,\r\nand the remaining "
         "results have been recalculated.",
         "Process Completed", common::MessageIcon::Information});
  });
}

}  // namespace scorvane::forms
