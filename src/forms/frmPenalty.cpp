#include "forms/frmPenalty.h"

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <charconv>
#include <string>

#include "app/Commands.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kNumberLength = 9;  // any such number has room in the league
constexpr int kReasonLength = 255;

std::int32_t NumberIn(const EntryBox& box) {
  const std::string text = Utf8(box.text().trimmed());
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

}  // namespace

frmPenalty::frmPenalty(FormContext& context, std::int32_t raceId, std::int32_t driverId,
                       const QString& driver, QWidget* parent)
    : QDialog(parent), context_(context), raceId_(raceId), driverId_(driverId) {
  setObjectName(QStringLiteral("frmPenalty"));
  setWindowTitle(tr("Penalty"));
  auto* lblDriver = new QLabel(this);
  lblDriver->setObjectName(QStringLiteral("lblDriver"));
  lblDriver->setTextFormat(Qt::PlainText);
  lblDriver->setText(driver);

  const QString captions[] = {tr("&Points off:"), tr("&Move back to place:"),
                              tr("&Disqualify: last, without points, bonus or money")};
  for (std::size_t i = 0; i < optKind_.size(); ++i) {
    optKind_[i] = new QRadioButton(captions[i], this);
    optKind_[i]->setObjectName(QStringLiteral("optKind_%1").arg(i));
    connect(optKind_[i], &QRadioButton::toggled, this, &frmPenalty::UpdateControls);
  }
  const auto number = [this](const char* name, const QString& reader) {
    auto* box = new EntryBox(QString::fromLatin1(name), EntryBox::Digits(), this);
    box->setMaxLength(kNumberLength);
    box->setMaximumWidth(box->fontMetrics().averageCharWidth() * 14);
    box->setAccessibleName(reader);
    connect(box, &QLineEdit::textChanged, this, &frmPenalty::UpdateControls);
    return box;
  };
  txtPoints_ = number("txtPoints", tr("Points off"));
  txtPosition_ = number("txtPosition", tr("Move back to place"));
  auto* grid = new QGridLayout;
  grid->addWidget(optKind_[0], 0, 0);
  grid->addWidget(txtPoints_, 0, 1);
  grid->addWidget(optKind_[1], 1, 0);
  grid->addWidget(txtPosition_, 1, 1);
  grid->addWidget(optKind_[2], 2, 0, 1, 2);
  grid->setColumnStretch(1, 1);

  txtReason_ = new EntryBox(QStringLiteral("txtReason"), this);
  txtReason_->setMaxLength(kReasonLength);
  txtReason_->setMinimumWidth(txtReason_->fontMetrics().averageCharWidth() * 44);
  connect(txtReason_, &QLineEdit::textChanged, this, &frmPenalty::UpdateControls);
  auto* lblReason = new QLabel(tr("R&eason (shown with the result):"), this);
  lblReason->setBuddy(txtReason_);
  txtReason_->setAccessibleName(tr("Reason, shown with the result"));

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblDriver);
  layout->addLayout(grid);
  layout->addWidget(lblReason);
  layout->addWidget(txtReason_);
  layout->addStretch();
  const auto buttons = AddButtons(layout, this, {{0, tr("&Save")}, {1, tr("Cancel")}});
  save_ = buttons.at(0);
  save_->setDefault(true);
  connect(save_, &QPushButton::clicked, this, &frmPenalty::Save);
  connect(buttons.at(1), &QPushButton::clicked, this, &frmPenalty::reject);
  optKind_[0]->setChecked(true);
  txtPoints_->setFocus();
}

scoring::Penalty frmPenalty::Entry() const {
  scoring::Penalty penalty;
  penalty.raceId = raceId_;
  penalty.driverId = driverId_;
  penalty.reason = Utf8(txtReason_->text());
  if (optKind_[0]->isChecked()) {
    penalty.kind = scoring::PenaltyKind::Points;
    penalty.amount = NumberIn(*txtPoints_);
  } else if (optKind_[1]->isChecked()) {
    penalty.kind = scoring::PenaltyKind::Position;
    penalty.amount = NumberIn(*txtPosition_);
  } else {
    penalty.kind = scoring::PenaltyKind::Disqualification;
  }
  return penalty;
}

void frmPenalty::UpdateControls() {
  if (save_ == nullptr) return;
  txtPoints_->setEnabled(optKind_[0]->isChecked());
  txtPosition_->setEnabled(optKind_[1]->isChecked());
  const scoring::Penalty penalty = Entry();
  const bool complete = penalty.kind == scoring::PenaltyKind::Disqualification || penalty.amount > 0;
  save_->setEnabled(complete && !scoring::CleanReason(penalty.reason).empty());
}

// What cannot be given is said, and the dialog stays open with what was typed.
void frmPenalty::Save() {
  given_ = Guarded(context_.ui, [&] { app::AddPenalty(context_.session, Entry()); });
  if (given_) accept();
}

}  // namespace scorvane::forms
