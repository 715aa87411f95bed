#include "forms/frmEditDriver.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/Commands.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kNameLength = 50;
constexpr int kHandicapLength = 5;

}  // namespace

frmEditDriver::frmEditDriver(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmEditDriver"));
  txtName_ = new EntryBox(
      QStringLiteral("txtName"), [](const QString&, QChar c) { return c != QLatin1Char('|'); }, this);
  txtName_->setMaxLength(kNameLength);
  txtName_->setMinimumWidth(txtName_->fontMetrics().averageCharWidth() * 32);
  txtHandicap_ = new EntryBox(
      QStringLiteral("txtHandicap"),
      [](const QString&, QChar c) {
        return c == QLatin1Char('-') || (c >= QLatin1Char('0') && c <= QLatin1Char('9'));
      },
      this);
  txtHandicap_->setMaxLength(kHandicapLength);
  chkRookie_ = new QCheckBox(tr("Rookie"), this);
  chkRookie_->setObjectName(QStringLiteral("chkRookie"));
  chkExcluded_ = new QCheckBox(tr("Excluded"), this);
  chkExcluded_->setObjectName(QStringLiteral("chkExcluded"));
  auto* form = new QFormLayout;
  form->addRow(tr("Name:"), txtName_);
  form->addRow(tr("Handicap:"), txtHandicap_);
  form->addRow(QString(), chkRookie_);
  form->addRow(QString(), chkExcluded_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addStretch();
  const auto buttons = AddButtons(layout, this, {{0, tr("&Save")}, {1, tr("Cancel")}});
  save_ = buttons.at(0);
  save_->setDefault(true);
  connect(save_, &QPushButton::clicked, this, &frmEditDriver::Save);
  connect(buttons.at(1), &QPushButton::clicked, this, &frmEditDriver::reject);
  connect(txtName_, &QLineEdit::textChanged, this,
          [this](const QString& text) { save_->setEnabled(!text.trimmed().isEmpty()); });
  connect(txtHandicap_, &EntryBox::Left, this, [this] {
    if (txtHandicap_->text().trimmed().isEmpty()) txtHandicap_->setText(QStringLiteral("0"));
  });
  save_->setEnabled(false);
}

void frmEditDriver::Mode(EditMode mode) {
  mode_ = mode;
  if (mode == kAdd) {
    setWindowTitle(tr("Add Driver"));
    txtName_->clear();
    txtHandicap_->clear();
    return;
  }
  setWindowTitle(tr("Edit Driver"));
  const auto driver = drivers::ReadDriver(context_.session.League(), driverId_);
  if (!driver) {
    context_.ui.ShowMessage({"Couldn't find driver in database!", "Error", common::MessageIcon::Exclamation});
    return;
  }
  txtName_->setText(Q(driver->name));
  txtHandicap_->setText(QString::number(driver->handicap));
  chkRookie_->setChecked(driver->rookie);
  chkExcluded_->setChecked(driver->excluded);
}

std::string frmEditDriver::DriverName() const {
  return Utf8(txtName_->text());
}

void frmEditDriver::DriverName(const std::string& name) {
  txtName_->setText(Q(name));
}

drivers::Driver frmEditDriver::Typed() const {
  return {driverId_, DriverName(), chkExcluded_->isChecked(), chkRookie_->isChecked(),
          drivers::HandicapFromText(Utf8(txtHandicap_->text()))};
}

bool frmEditDriver::SaveNewDriver() {
  engine::Database& league = context_.session.League();
  if (drivers::FindNameClash(league, DriverName(), std::nullopt)) {
    context_.ui.ShowMessage(
        {"\"" + DriverName() + "\" already exists!", "Cannot Add Driver", common::MessageIcon::Exclamation});
    return false;
  }
  driverId_ = app::AddDriver(context_.session, Typed());
  return true;
}

bool frmEditDriver::SaveDriver() {
  engine::Database& league = context_.session.League();
  merged_ = false;
  const auto other = drivers::FindNameClash(league, DriverName(), driverId_);
  if (!other) {
    app::UpdateDriver(context_.session, Typed());
    return true;
  }
  const common::Message question{
      "\"" + DriverName() +
          "\" already exists!\r\nDo you want to merge the points of both drivers into a "
          "single driver?",
      "Driver Exists", common::MessageIcon::Question};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return false;
  app::MergeDrivers(context_.session, driverId_, *other);
  driverId_ = *other;
  merged_ = true;
  return true;
}

void frmEditDriver::Save() {
  bool saved = false;
  // An error leaves the dialog open, with what was typed.
  Guarded(context_.ui, [&] { saved = mode_ == kAdd ? SaveNewDriver() : SaveDriver(); });
  if (!saved) return;
  cancelled_ = false;
  accept();
}

void frmEditDriver::reject() {
  cancelled_ = true;
  QDialog::reject();
}

void frmEditDriver::closeEvent(QCloseEvent* event) {
  cancelled_ = true;
  QDialog::closeEvent(event);
}

}  // namespace scorvane::forms
