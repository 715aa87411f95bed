#include "forms/frmPickDrivers.h"

#include <QLabel>
#include <QVBoxLayout>

#include "drivers/Roster.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {

frmPickDrivers::frmPickDrivers(FormContext& context, const QString& title,
                               const std::map<std::int32_t, QString>& notes, QWidget* parent)
    : QDialog(parent),
      lstDrivers_(new CheckList(QStringLiteral("lstDrivers"), tr("Drivers of the league"), this)) {
  setObjectName(QStringLiteral("frmPickDrivers"));
  setWindowTitle(title);
  auto* label = new QLabel(tr("&Drivers:"), this);
  label->setBuddy(lstDrivers_);
  lstDrivers_->setMinimumHeight(lstDrivers_->fontMetrics().height() * 16);
  lstDrivers_->setMinimumWidth(lstDrivers_->fontMetrics().averageCharWidth() * 44);
  for (const drivers::Driver& driver : drivers::ListDrivers(context.session.League())) {
    const auto note = notes.find(driver.id);
    lstDrivers_->Add(
        note == notes.end() ? Q(driver.name) : QStringLiteral("%1 (%2)").arg(Q(driver.name), note->second),
        driver.id);
  }
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(lstDrivers_);
  const auto buttons = AddButtons(layout, this, {{0, tr("&Select")}, {1, tr("Cancel")}});
  buttons.at(0)->setDefault(true);
  buttons.at(0)->setEnabled(false);
  connect(lstDrivers_, &QListWidget::itemChanged, this,
          [this, select = buttons.at(0)] { select->setEnabled(!Ticked().empty()); });
  connect(buttons.at(0), &QPushButton::clicked, this, &QDialog::accept);
  connect(buttons.at(1), &QPushButton::clicked, this, &QDialog::reject);
  lstDrivers_->setCurrentRow(0);
  lstDrivers_->setFocus();
}

}  // namespace scorvane::forms
