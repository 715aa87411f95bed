#include "forms/frmEditDriver2.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "forms/frmPickDriver.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

using scoring::ResultEntry;

constexpr int kNameLength = 50;
constexpr int kReasonLength = 25;

}  // namespace

frmEditDriver2::frmEditDriver2(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmEditDriver2"));
  setWindowTitle(tr("Edit Driver Result"));
  const QString labels[] = {tr("Finish:"),     tr("Start:"),   tr("Name:"),  tr("Laps Run:"),
                            tr("Laps Led:"),   tr("Points:"),  tr("Bonus:"), tr("Avg Speed:"),
                            tr("Qualifying:"), tr("Winnings:")};
  auto* form = new QFormLayout;
  for (std::size_t i = 0; i < txtInfo_.size(); ++i) {
    const auto field = static_cast<int>(i);
    auto* box = new EntryBox(
        QStringLiteral("txtInfo_%1").arg(i),
        [field](const QString& text, QChar c) {
          return scoring::AcceptsCharacter(field, Utf8(text), static_cast<char32_t>(c.unicode()));
        },
        this);
    auto* label = new QLabel(labels[i], this);
    label->setObjectName(QStringLiteral("lblInfo_%1").arg(i));
    label->setBuddy(box);
    box->setAccessibleName(label->text());
    txtInfo_[i] = box;
    connect(box, &EntryBox::Left, this,
            [box, field] { box->setText(Q(scoring::LeftField(field, Utf8(box->text())))); });
    connect(box, &QLineEdit::textChanged, this, [this] {
      if (save_ != nullptr) save_->setEnabled(scoring::IsComplete(Entry()));
    });
    if (field == ResultEntry::kName) {
      box->setMaxLength(kNameLength);
      box->setMinimumWidth(box->fontMetrics().averageCharWidth() * 30);
      auto* pick = new QPushButton(tr("Drivers..."), this);
      pick->setObjectName(QStringLiteral("cmdPickDriver"));
      pick->setAutoDefault(false);
      connect(pick, &QPushButton::clicked, this, &frmEditDriver2::PickDriver);
      auto* row = new QHBoxLayout;
      row->addWidget(box, 1);
      row->addWidget(pick);
      form->addRow(label, row);
    } else {
      form->addRow(label, box);
    }
    if (field == ResultEntry::kAvgSpeed && !scoring::ShowsAverageSpeed(context.state)) {
      label->hide();
      box->hide();
      box->setText(QStringLiteral("0"));
    }
  }
  cboReasonOut_ = new QComboBox(this);
  cboReasonOut_->setObjectName(QStringLiteral("cboReasonOut"));
  cboReasonOut_->setEditable(true);
  // What is typed or stored is kept as it is spelled.
  cboReasonOut_->setCompleter(nullptr);
  cboReasonOut_->setInsertPolicy(QComboBox::NoInsert);
  cboReasonOut_->lineEdit()->setMaxLength(kReasonLength);
  cboReasonOut_->setAccessibleName(tr("Reason Out:"));
  cboReasonOut_->lineEdit()->setAccessibleName(cboReasonOut_->accessibleName());
  for (const std::string_view reason : scoring::ReasonsOut(context.state.simType))
    cboReasonOut_->addItem(Q(reason));
  form->addRow(tr("Reason Out:"), cboReasonOut_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addStretch();
  const auto buttons = AddButtons(layout, this, {{1, tr("Save")}, {0, tr("Cancel")}});
  save_ = buttons.at(1);
  save_->setDefault(true);
  save_->setEnabled(false);
  connect(save_, &QPushButton::clicked, this, &frmEditDriver2::Save);
  connect(buttons.at(0), &QPushButton::clicked, this, &QDialog::reject);
}

void frmEditDriver2::Entry(const ResultEntry& entry) {
  before_ = entry;
  for (std::size_t i = 0; i < txtInfo_.size(); ++i) txtInfo_[i]->setText(Q(entry.fields[i]));
  cboReasonOut_->setCurrentText(Q(entry.reason));
}

ResultEntry frmEditDriver2::Entry() const {
  ResultEntry entry;
  for (std::size_t i = 0; i < txtInfo_.size(); ++i) entry.fields[i] = Utf8(txtInfo_[i]->text());
  entry.reason = cboReasonOut_ == nullptr ? std::string() : Utf8(cboReasonOut_->currentText());
  return entry;
}

void frmEditDriver2::PickDriver() {
  Guarded(context_.ui, [&] {
    frmPickDriver picker(context_, this);
    picker.Choose(txtInfo_[ResultEntry::kName]->text());
    picker.exec();
    if (!picker.Cancelled()) txtInfo_[ResultEntry::kName]->setText(Q(picker.DriverName()).trimmed());
  });
}

void frmEditDriver2::Save() {
  for (std::size_t i = 0; i < txtInfo_.size(); ++i)
    txtInfo_[i]->setText(Q(scoring::LeftField(static_cast<int>(i), Utf8(txtInfo_[i]->text()))));
  if (const auto fault = scoring::FindFault(Entry(), before_, context_.state.decimalSeparator)) {
    context_.ui.ShowMessage({fault->sentence, common::kApplicationTitle, common::MessageIcon::Exclamation});
    txtInfo_[fault->field]->setFocus();
    txtInfo_[fault->field]->selectAll();
    return;
  }
  if (onSave_ && !onSave_(Entry())) return;
  cancelled_ = false;
  accept();
}

}  // namespace scorvane::forms
