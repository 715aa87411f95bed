#include "forms/frmEditDriver.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>
#include <map>

#include "forms/Undoing.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kNameLength = 50;
constexpr int kHandicapLength = 5;
constexpr std::array kKinds = {championship::GroupKind::Team, championship::GroupKind::Make};

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
  auto* tabs = new QTabWidget(this);
  tabs->setObjectName(QStringLiteral("ts"));
  tabs->setAccessibleName(tr("Parts of the driver"));
  auto* page = new QWidget(tabs);
  auto* form = new QFormLayout(page);
  form->addRow(tr("Name:"), txtName_);
  form->addRow(tr("Handicap:"), txtHandicap_);
  form->addRow(QString(), chkRookie_);
  form->addRow(QString(), chkExcluded_);
  auto* layout = new QVBoxLayout(this);
  tabs->addTab(page, tr("&Driver"));
  tabs->addTab(BuildGroups(tabs), tr("&Team and Make"));
  layout->addWidget(tabs);
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
  setTabOrder(tabs, txtName_);
  setTabOrder(txtName_, txtHandicap_);
  setTabOrder(txtHandicap_, chkRookie_);
  setTabOrder(chkRookie_, chkExcluded_);
  txtName_->setFocus();
}

// The team and the make, each with the race from which on it holds.
QWidget* frmEditDriver::BuildGroups(QWidget* parent) {
  auto* page = new QWidget(parent);
  auto* grid = new QGridLayout(page);
  const QString captions[] = {tr("T&eam:"), tr("&Make:")};
  const QString fromCaptions[] = {tr("&from:"), tr("f&rom:")};
  const QString readers[] = {tr("Team"), tr("Make")};
  const QString fromReaders[] = {tr("Race from which on he belongs to the team"),
                                 tr("Race from which on he drives the make")};
  int row = 0;
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    GroupFields& fields = groups_[i];
    fields.group = new QComboBox(page);
    fields.group->setObjectName(QStringLiteral("cboGroup_%1").arg(i));
    fields.group->setEditable(true);
    // What is typed is kept as it is spelled; one that is new is added.
    fields.group->setCompleter(nullptr);
    fields.group->setInsertPolicy(QComboBox::NoInsert);
    fields.group->lineEdit()->setMaxLength(championship::kMostNameLength);
    fields.group->setAccessibleName(readers[i]);
    fields.group->lineEdit()->setAccessibleName(readers[i]);
    fields.group->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    fields.group->setMinimumContentsLength(26);
    fields.from = new RaceChoice(QStringLiteral("cboFrom_%1").arg(i), fromReaders[i], page);
    fields.soFar = new QLabel(page);
    fields.soFar->setObjectName(QStringLiteral("lblSoFar_%1").arg(i));
    fields.soFar->setTextFormat(Qt::PlainText);
    fields.soFar->setWordWrap(true);
    // A long name without a blank widens no window.
    fields.soFar->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::MinimumExpanding);
    auto* label = new QLabel(captions[i], page);
    label->setBuddy(fields.group);
    auto* from = new QLabel(fromCaptions[i], page);
    from->setBuddy(fields.from);
    grid->addWidget(label, row, 0);
    grid->addWidget(fields.group, row, 1);
    ++row;
    grid->addWidget(from, row, 0, Qt::AlignRight);
    grid->addWidget(fields.from, row++, 1);
    grid->addWidget(fields.soFar, row++, 1);
  }
  grid->setColumnStretch(1, 1);
  grid->setRowStretch(row, 1);
  return page;
}

void frmEditDriver::LoadGroups() {
  engine::Database& league = context_.session.League();
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    GroupFields& fields = groups_[i];
    fields.group->clear();
    fields.group->addItem(QString());
    std::map<std::int32_t, QString> names;
    for (const championship::Group& group : championship::ListGroups(league, kKinds[i])) {
      names[group.id] = Q(group.name);
      fields.group->addItem(Q(group.name));
    }
    fields.before.clear();
    QStringList soFar;
    for (const championship::Member& member : championship::ListMembers(league, kKinds[i])) {
      if (mode_ == kAdd || member.driverId != driverId_) continue;
      const QString name = names[member.groupId];
      if (!member.until) fields.before = name;
      soFar << (member.from == 0 ? name : tr("%1 from race %2").arg(name).arg(member.from));
      if (member.until) soFar.back() = tr("%1 until before race %2").arg(soFar.back()).arg(*member.until);
    }
    fields.group->setCurrentText(fields.before);
    fields.soFar->setText(soFar.isEmpty() ? QString()
                                          : tr("So far: %1").arg(soFar.join(QStringLiteral("; "))));
    fields.soFar->setToolTip(ToolTipText(fields.soFar->text()));
    fields.never = soFar.isEmpty();
    RaceChoice::Others others = {{tr("the start of the season"), 0}};
    if (!fields.never) others.insert(others.begin(), {tr("the next race"), std::nullopt});
    fields.from->Fill(league, others);
  }
}

// What differs from what is there.
std::vector<app::GroupChoice> frmEditDriver::Choices() const {
  std::vector<app::GroupChoice> choices;
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    const GroupFields& fields = groups_[i];
    const QString typed = fields.group->currentText().trimmed();
    const bool same = typed == fields.before && (fields.never || !fields.from->Chosen());
    if (same || (typed.isEmpty() && fields.never)) continue;
    choices.push_back({kKinds[i], Utf8(typed), fields.from->Chosen()});
  }
  return choices;
}

void frmEditDriver::Mode(EditMode mode) {
  mode_ = mode;
  LoadGroups();
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
  driverId_ = app::AddDriver(context_.session, Typed(), Choices());
  return true;
}

bool frmEditDriver::SaveDriver() {
  engine::Database& league = context_.session.League();
  merged_ = false;
  const auto other = drivers::FindNameClash(league, DriverName(), driverId_);
  if (!other) {
    app::UpdateDriver(context_.session, Typed(), Choices());
    return true;
  }
  const common::Message question{
      "\"" + DriverName() +
          "\" already exists!\r\nDo you want to merge the points of both drivers into a "
          "single driver?",
      "Driver Exists", common::MessageIcon::Question};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return false;
  app::MergeDrivers(context_.session, driverId_, *other, Choices());
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
