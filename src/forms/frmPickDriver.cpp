#include "forms/frmPickDriver.h"

#include <QVBoxLayout>

#include "drivers/Roster.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {

frmPickDriver::frmPickDriver(FormContext& context, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmPickDriver"));
  setWindowTitle(tr("Select a Driver"));
  auto* layout = new QVBoxLayout(this);
  lstDrivers_ = new QListWidget(this);
  lstDrivers_->setObjectName(QStringLiteral("lstDrivers"));
  lstDrivers_->setAccessibleName(tr("Drivers of the league"));
  lstDrivers_->setMinimumHeight(lstDrivers_->fontMetrics().height() * 16);
  layout->addWidget(lstDrivers_);
  for (const drivers::Driver& driver : drivers::ListDrivers(context.session.League()))
    lstDrivers_->addItem(Q(driver.name));
  if (lstDrivers_->count() == 0) {
    lstDrivers_->addItem(QStringLiteral("[none]"));
    lstDrivers_->setEnabled(false);
  }
  const auto buttons = AddButtons(layout, this, {{1, tr("Select")}, {0, tr("Cancel")}});
  QPushButton* select = buttons.at(1);
  select->setEnabled(false);
  select->setDefault(true);
  connect(lstDrivers_, &QListWidget::itemSelectionChanged, select,
          [this, select] { select->setEnabled(!lstDrivers_->selectedItems().isEmpty()); });
  connect(lstDrivers_, &QListWidget::itemDoubleClicked, this, &frmPickDriver::Select);
  connect(select, &QPushButton::clicked, this, &frmPickDriver::Select);
  connect(buttons.at(0), &QPushButton::clicked, this, &QDialog::reject);
}

void frmPickDriver::Choose(const QString& name) {
  const QString wanted = name.trimmed();
  if (wanted.isEmpty() || !lstDrivers_->isEnabled()) return;
  for (int row = 0; row < lstDrivers_->count(); ++row) {
    if (lstDrivers_->item(row)->text().trimmed().compare(wanted, Qt::CaseInsensitive) != 0) continue;
    lstDrivers_->setCurrentRow(row);
    lstDrivers_->scrollToItem(lstDrivers_->item(row), QAbstractItemView::PositionAtCenter);
    return;
  }
}

std::string frmPickDriver::DriverName() const {
  const QListWidgetItem* item = lstDrivers_->currentItem();
  return item == nullptr ? std::string() : Utf8(item->text());
}

void frmPickDriver::Select() {
  if (lstDrivers_->selectedItems().isEmpty()) return;
  cancelled_ = false;
  accept();
}

}  // namespace scorvane::forms
