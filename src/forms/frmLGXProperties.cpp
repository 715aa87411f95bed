#include "forms/frmLGXProperties.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>
#include <algorithm>

#include "app/Commands.h"
#include "common/Formats.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Contrast.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/PaletteFollower.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {
namespace {

constexpr int kMostDroppedRaces = 10;
constexpr int kFileNameCharacters = 44;

QComboBox* AddCombo(QFormLayout* form, const char* name, const QString& label, QWidget* parent) {
  auto* combo = new QComboBox(parent);
  combo->setObjectName(QString::fromLatin1(name));
  form->addRow(label, combo);
  return combo;
}

// The rows of a form read by a screen reader: each control by its label.
void NameControls(QFormLayout* form) {
  for (int row = 0; row < form->rowCount(); ++row) {
    auto* label = qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget());
    QWidget* control = form->itemAt(row, QFormLayout::FieldRole)->widget();
    if (label != nullptr && control != nullptr)
      control->setAccessibleName(label->text().remove(QLatin1Char('&')).remove(QLatin1Char(':')));
  }
}

// As the window around it, for a control whose value is only shown.
void ShowFixed(QWidget* control) {
  QPalette colors = QApplication::palette();
  colors.setBrush(QPalette::Base, colors.brush(QPalette::Button));
  const QColor text = MutedText(colors, QPalette::Button);
  for (const QPalette::ColorRole role : {QPalette::Text, QPalette::ButtonText, QPalette::WindowText})
    colors.setColor(QPalette::Disabled, role, text);
  control->setPalette(colors);
}

}  // namespace

frmLGXProperties::frmLGXProperties(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmLGXProperties"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  txtFileName_ = new QLineEdit(this);
  txtFileName_->setObjectName(QStringLiteral("txtFileName"));
  txtFileName_->setMinimumWidth(txtFileName_->fontMetrics().averageCharWidth() * kFileNameCharacters);
  form->addRow(tr("&File Name:"), txtFileName_);
  cboTitle_ = AddCombo(form, "cboTitle", tr("Racing &Simulation:"), this);
  for (int code = common::kNascarRacing3; code <= common::kNascarRacing2003; ++code)
    cboTitle_->addItem(Q(common::SimTypeName(code)), code);
  cboDroppedRaces_ = AddCombo(form, "cboDroppedRaces", tr("Worst races to &drop:"), this);
  for (int count = 0; count <= kMostDroppedRaces; ++count)
    cboDroppedRaces_->addItem(QString::number(count), count);
  cboLeagueType_ = AddCombo(form, "cboLeagueType", tr("&League Type:"), this);
  cboLeagueType_->addItem(tr("On-line"), common::kOnline);
  cboLeagueType_->addItem(tr("Off-line"), common::kOffline);

  auto* methods = new QHBoxLayout;
  optLapMethod_ = new QButtonGroup(this);
  for (const QString& caption : {tr("&Speed"), tr("&Time")}) {
    auto* option = new QRadioButton(caption, this);
    const int code = static_cast<int>(optLapMethod_->buttons().size());
    option->setObjectName(QStringLiteral("optLapMethod_%1").arg(code));
    optLapMethod_->addButton(option, code);
    methods->addWidget(option);
  }
  methods->addStretch();
  auto* methodLabel = new QLabel(tr("&Lap Reporting Method:"), this);
  methodLabel->setBuddy(optLapMethod_->button(common::kLapSpeed));
  form->addRow(methodLabel, methods);
  NameControls(form);
  layout->addLayout(form);
  layout->addStretch();

  const auto buttons = AddButtons(layout, this, {{0, tr("Create")}, {1, tr("Cancel")}});
  accept_ = buttons.at(0);
  accept_->setDefault(true);
  connect(accept_, &QPushButton::clicked, this, &frmLGXProperties::TakeOver);
  connect(buttons.at(1), &QPushButton::clicked, this, &frmLGXProperties::reject);
  connect(txtFileName_, &QLineEdit::textChanged, this, &frmLGXProperties::UpdateButtons);
  NewDialog(true);
}

void frmLGXProperties::NewDialog(bool isNew) {
  newDialog_ = isNew;
  const common::ProcessState& state = context_.state;
  const int simType = isNew ? common::DefaultSimType(state) : state.simType;
  cboTitle_->setCurrentIndex(cboTitle_->findData(simType));
  // More than the list offers may have been set otherwise; it is kept.
  if (!isNew && state.droppedRaces > kMostDroppedRaces)
    cboDroppedRaces_->addItem(QString::number(state.droppedRaces), int{state.droppedRaces});
  cboDroppedRaces_->setCurrentIndex(isNew ? 0 : cboDroppedRaces_->findData(int{state.droppedRaces}));
  cboLeagueType_->setCurrentIndex(isNew ? 0 : cboLeagueType_->findData(state.leagueType));
  optLapMethod_->button(isNew ? int{common::kLapSpeed} : state.lapReportingMethod)->setChecked(true);
  accept_->setText(isNew ? tr("Create") : tr("OK"));
  if (!isNew) {
    txtFileName_->setText(Q(context_.session.League().Name()));
    txtFileName_->setToolTip(txtFileName_->text());
    for (QWidget* fixed : {static_cast<QWidget*>(txtFileName_), static_cast<QWidget*>(cboLeagueType_)}) {
      fixed->setEnabled(false);
      new PaletteFollower(this, [fixed] { ShowFixed(fixed); });
    }
    cboTitle_->setFocus();
  }
  UpdateButtons();
}

void frmLGXProperties::UpdateButtons() {
  accept_->setEnabled(!newDialog_ || !common::TrimBlanks(Utf8(txtFileName_->text())).empty());
}

std::int16_t frmLGXProperties::LapReportingMethod() const {
  return static_cast<std::int16_t>(std::max(0, optLapMethod_->checkedId()));
}

engine::Database* frmLGXProperties::CurrentDB() const {
  return context_.session.IsOpen() ? &context_.session.League() : nullptr;
}

app::LeagueProperties frmLGXProperties::Properties() const {
  return {static_cast<std::int16_t>(cboTitle_->currentData().toInt()),
          static_cast<std::int16_t>(cboLeagueType_->currentData().toInt()),
          static_cast<std::int16_t>(cboDroppedRaces_->currentData().toInt()), LapReportingMethod()};
}

void frmLGXProperties::TakeOver() {
  bool done = false;
  Guarded(context_.ui, [&] {
    if (newDialog_) {
      done = Create();
    } else {
      const WaitCursor wait;
      if (!app::CanSwitchSimulation(context_.state, context_.ui, Properties().simType)) return;
      StoreProperties();
      done = true;
    }
  });
  if (!done) return;
  cancelled_ = false;
  accept();
}

bool frmLGXProperties::Create() {
  const WaitCursor wait;
  const std::string path = app::CompleteLeaguePath(Utf8(txtFileName_->text()), platform::ApplicationFolder());
  if (cboTitle_->currentIndex() < 0) {
    app::ShowCreationError(context_.ui, "Please choose the racing simulation.");
    cboTitle_->setFocus();
    return false;
  }
  const app::Creation created =
      app::CreateLeagueAsking(context_.engine, context_.session, context_.ui, path, Properties());
  if (created != app::Creation::Declined) fileName_ = path;
  created_ = created == app::Creation::Done;
  return created_;
}

void frmLGXProperties::StoreProperties() {
  app::StoreProperties(context_.session, Properties());
}

void frmLGXProperties::reject() {
  cancelled_ = true;
  if (newDialog_) fileName_.clear();
  QDialog::reject();
}

// The close box is no answer: what was said before it stands. What was chosen for the open league is stored.
void frmLGXProperties::closeEvent(QCloseEvent* event) {
  if (!newDialog_ && isVisible() && !Guarded(context_.ui, [&] { StoreProperties(); })) {
    event->ignore();
    return;
  }
  if (isVisible()) done(Rejected);
  event->accept();
}

}  // namespace scorvane::forms
