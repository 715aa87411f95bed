#include "forms/frmTeams.h"

#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <string>
#include <utility>

#include "app/Commands.h"
#include "app/RaceList.h"
#include "common/Formats.h"
#include "forms/Undoing.h"
#include "forms/frmPickDrivers.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

using championship::Group;
using championship::GroupKind;
using championship::Member;

enum Button { kAdd, kRename, kRemove, kJoin, kLeave, kClose };

// Whether a driver leaves this group, and no other, when he leaves from that race on.
bool CanLeave(const Member& member, std::optional<std::int32_t> from) {
  if (!from) return !member.until;
  return *from >= member.from && (!member.until || *from < *member.until);
}

}  // namespace

frmTeams::frmTeams(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context), tabs_(new QTabBar(this)) {
  setObjectName(QStringLiteral("frmTeams"));
  setWindowTitle(tr("Teams and Makes"));
  tabs_->setObjectName(QStringLiteral("ts"));
  tabs_->setAccessibleName(tr("Teams or makes"));
  tabs_->addTab(tr("&Teams"));
  tabs_->addTab(tr("&Makes"));
  auto* halves = new QHBoxLayout;
  halves->addLayout(BuildGroups(), 2);
  halves->addLayout(BuildMembers(), 3);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addLayout(halves, 1);
  buttons_[kClose] = AddButtons(layout, this, {{kClose, tr("Close"), tr("Close this dialog")}}).at(kClose);
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  connect(tabs_, &QTabBar::currentChanged, this, [this] {
    // Of the other kind; a click on a tab does not leave the box.
    spnBest_->interpretText();
    StoreBest();
    ShowKind();
  });
  new DialogUndo(context_, this, [this] {
    const Group* chosen = Chosen();
    Load(chosen == nullptr ? 0 : chosen->id);
  });
  fgGroups_->SetMenu({buttons_[kRename], buttons_[kRemove]});
  fgMembers_->SetMenu({buttons_[kJoin], buttons_[kLeave]});
  ShowKind();
  resize(fontMetrics().averageCharWidth() * 125, fontMetrics().height() * 26);
  fgGroups_->setFocus();
}

QLayout* frmTeams::BuildGroups() {
  auto* column = new QVBoxLayout;
  fgGroups_ = new SelectionGrid(QStringLiteral("fgGroups"), this);
  fgGroups_->SetArrangeable();
  column->addWidget(fgGroups_, 1);
  auto* name = new QHBoxLayout;
  auto* label = new QLabel(tr("&Name:"), this);
  txtName_ = new EntryBox(QStringLiteral("txtName"), this);
  txtName_->setMaxLength(championship::kMostNameLength);
  txtName_->setAccessibleName(tr("Name"));
  label->setBuddy(txtName_);
  name->addWidget(label);
  name->addWidget(txtName_, 1);
  column->addLayout(name);
  buttons_.merge(AddButtons(column, this,
                            {{kAdd, tr("&Add"), tr("Add a new one with this name")},
                             {kRename, tr("R&ename"), tr("Give the selected one this name")},
                             {kRemove, tr("&Remove"), tr("Remove the selected one, and not its drivers")}}));
  auto* best = new QHBoxLayout;
  auto* lblBest = new QLabel(tr("Results that &count in each race:"), this);
  spnBest_ = new NumberBox(QStringLiteral("spnBest"), tr("Results that count in each race, 0 for all"), this);
  spnBest_->setRange(0, championship::kMostBest);
  spnBest_->setSpecialValueText(tr("all"));
  lblBest->setBuddy(spnBest_);
  best->addWidget(lblBest);
  best->addWidget(spnBest_);
  best->addStretch();
  column->addLayout(best);
  connect(fgGroups_, &SelectionGrid::SelectionChanged, this, &frmTeams::ShowChosen);
  connect(fgGroups_, &SelectionGrid::DeletePressed, this, &frmTeams::RemoveGroup);
  connect(fgGroups_, &SelectionGrid::InsertPressed, this, [this] {
    txtName_->setFocus();
    txtName_->selectAll();
  });
  connect(txtName_, &QLineEdit::textChanged, this, &frmTeams::UpdateButtons);
  connect(txtName_, &QLineEdit::returnPressed, buttons_[kAdd], &QPushButton::click);
  connect(buttons_[kAdd], &QPushButton::clicked, this, &frmTeams::AddGroup);
  connect(buttons_[kRename], &QPushButton::clicked, this, &frmTeams::RenameGroup);
  connect(buttons_[kRemove], &QPushButton::clicked, this, &frmTeams::RemoveGroup);
  connect(spnBest_, &QSpinBox::editingFinished, this, &frmTeams::StoreBest);
  return column;
}

QLayout* frmTeams::BuildMembers() {
  auto* column = new QVBoxLayout;
  fgMembers_ = new SelectionGrid(QStringLiteral("fgMembers"), this);
  fgMembers_->SetArrangeable();
  fgMembers_->setAccessibleName(tr("Drivers of the selected one"));
  fgMembers_->SetColumns({{tr("Driver"), 2000, Qt::AlignLeft},
                          {tr("From"), 1400, Qt::AlignLeft},
                          {tr("Until Before"), 1400, Qt::AlignLeft}});
  fgMembers_->horizontalHeader()->setStretchLastSection(true);
  column->addWidget(fgMembers_, 1);
  auto* from = new QHBoxLayout;
  auto* label = new QLabel(tr("&From:"), this);
  cboFrom_ = new RaceChoice(QStringLiteral("cboFrom"), tr("From which race on"), this);
  label->setBuddy(cboFrom_);
  from->addWidget(label);
  from->addWidget(cboFrom_, 1);
  column->addLayout(from);
  buttons_.merge(AddButtons(column, this,
                            {{kJoin, tr("&Join..."), tr("Choose drivers who belong to it from that race on")},
                             {kLeave, tr("&Leave"), tr("The selected drivers leave it with that race")}}));
  connect(fgMembers_, &SelectionGrid::SelectionChanged, this, &frmTeams::UpdateButtons);
  connect(fgMembers_, &SelectionGrid::InsertPressed, buttons_[kJoin], &QPushButton::click);
  connect(fgMembers_, &SelectionGrid::DeletePressed, buttons_[kLeave], &QPushButton::click);
  connect(cboFrom_, &QComboBox::currentIndexChanged, this, &frmTeams::UpdateButtons);
  connect(buttons_[kJoin], &QPushButton::clicked, this, &frmTeams::Join);
  connect(buttons_[kLeave], &QPushButton::clicked, this, &frmTeams::Leave);
  return column;
}

void frmTeams::ShowKind() {
  kind_ = tabs_->currentIndex() == 1 ? GroupKind::Make : GroupKind::Team;
  const bool teams = kind_ == GroupKind::Team;
  fgGroups_->setAccessibleName(teams ? tr("Teams of the league") : tr("Makes of the league"));
  fgGroups_->SetColumns(
      {{teams ? tr("Team") : tr("Make"), 2400, Qt::AlignLeft}, {tr("Drivers Now"), 1100, Qt::AlignHCenter}});
  fgGroups_->FitColumn(1);
  fgGroups_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
  Load(0);
}

void frmTeams::Load(std::int32_t groupId) {
  Guarded(context_.ui, [&] {
    engine::Database& league = context_.session.League();
    groups_ = championship::ListGroups(league, kind_);
    members_ = championship::ListMembers(league, kind_);
    cboFrom_->Fill(league, {{tr("the next race; who is new, the start"), std::nullopt},
                            {tr("the start of the season"), 0}});
    const QSignalBlocker quiet(spnBest_);
    spnBest_->setValue(championship::BestResults(league, kind_));
  });
  {
    const QSignalBlocker quiet(fgGroups_);
    std::vector<SelectionGrid::Row> rows;
    for (const Group& group : groups_) {
      const auto now = std::count_if(members_.begin(), members_.end(), [&](const Member& member) {
        return member.groupId == group.id && !member.until;
      });
      rows.push_back({{Q(group.name), QString::number(now)}, group.id});
    }
    if (rows.empty()) rows.emplace_back();
    fgGroups_->SetRows(std::move(rows));
    fgGroups_->SelectRows(0, 0);
    if (groupId != 0) {
      fgGroups_->ShowData(groupId);
      fgGroups_->SelectData({groupId}, 0);
    }
  }
  const bool teams = kind_ == GroupKind::Team;
  fgGroups_->SetHint(!groups_.empty() ? QString()
                     : teams          ? tr("No team yet.\n\nType a name below and press \"Add\".")
                                      : tr("No make yet.\n\nType a name below and press \"Add\"."));
  ShowChosen();
}

const Group* frmTeams::Chosen() const {
  if (!fgGroups_->OneRowSelected()) return nullptr;
  const auto found = std::find_if(groups_.begin(), groups_.end(), [this](const Group& group) {
    return group.id == fgGroups_->RowData(fgGroups_->CurrentRow());
  });
  return found == groups_.end() ? nullptr : &*found;
}

void frmTeams::ShowChosen() {
  const Group* chosen = Chosen();
  shown_.clear();
  if (chosen != nullptr)
    std::copy_if(members_.begin(), members_.end(), std::back_inserter(shown_),
                 [&](const Member& member) { return member.groupId == chosen->id; });
  txtName_->setText(chosen == nullptr ? QString() : Q(chosen->name));
  std::map<std::int32_t, std::string> races;
  Guarded(context_.ui, [&] {
    for (const app::ListedRace& race : app::ListRaces(context_.session.League())) races[race.id] = race.name;
  });
  const auto raceText = [&](std::int32_t id) {
    const bool toCome = races.empty() || id > races.rbegin()->first;
    const auto found = races.find(id);
    const QString text = RaceText(id, found == races.end() ? std::string() : found->second);
    return toCome ? tr("%1, to come").arg(text) : text;
  };
  std::vector<SelectionGrid::Row> rows;
  for (const Member& member : shown_)
    rows.push_back({{Q(member.driver), member.from == 0 ? tr("the start") : raceText(member.from),
                     member.until ? raceText(*member.until) : QString()},
                    static_cast<int>(rows.size()) + 1,
                    member.until.has_value()});
  if (rows.empty()) rows.emplace_back();
  const QSignalBlocker quiet(fgMembers_);
  fgMembers_->SetRows(std::move(rows));
  for (const int column : {0, 1}) fgMembers_->FitColumn(column);
  fgMembers_->SelectRows(0, 0);
  fgMembers_->SetHint(chosen == nullptr || !shown_.empty()
                          ? QString()
                          : tr("No driver yet.\n\n\"Join...\" lets you choose who belongs to it."));
  UpdateButtons();
}

std::vector<Member> frmTeams::SelectedMembers() const {
  std::vector<Member> selected;
  for (int row = fgMembers_->FirstSelected(); row >= 0 && row <= fgMembers_->LastSelected(); ++row)
    // The row of an empty group has no number.
    if (const int place = fgMembers_->RowData(row); place > 0)
      selected.push_back(shown_[static_cast<std::size_t>(place) - 1]);
  return selected;
}

void frmTeams::UpdateButtons() {
  if (!buttons_.contains(kLeave)) return;
  const Group* chosen = Chosen();
  const std::string typed(common::TrimBlanks(Utf8(txtName_->text())));
  const std::vector<Member> selected = SelectedMembers();
  const bool canLeave =
      !selected.empty() && std::all_of(selected.begin(), selected.end(), [this](const Member& member) {
        return CanLeave(member, cboFrom_->Chosen());
      });
  const bool isNew =
      std::none_of(groups_.begin(), groups_.end(), [&](const Group& group) { return group.name == typed; });
  const std::pair<int, bool> states[] = {{kAdd, !typed.empty() && isNew},
                                         {kRename, chosen != nullptr && !typed.empty() && isNew},
                                         {kRemove, chosen != nullptr},
                                         {kJoin, chosen != nullptr},
                                         {kLeave, canLeave}};
  for (const auto& [button, enabled] : states) {
    // A button that is switched off under the keyboard would leave it nowhere.
    if (!enabled && buttons_[button]->hasFocus()) (button == kLeave ? fgMembers_ : fgGroups_)->setFocus();
    buttons_[button]->setEnabled(enabled);
  }
}

// What cannot be is said, and what was typed stays.
void frmTeams::AddGroup() {
  std::int32_t id = 0;
  const bool done = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    id = app::AddGroup(context_.session, kind_, Utf8(txtName_->text()));
  });
  if (!done) return;
  Load(id);
  txtName_->selectAll();
}

void frmTeams::RenameGroup() {
  const Group* chosen = Chosen();
  if (chosen == nullptr) return;
  const Group group = *chosen;
  const bool done = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::RenameGroup(context_.session, kind_, group, Utf8(txtName_->text()));
  });
  if (done) Load(group.id);
}

void frmTeams::RemoveGroup() {
  const Group* chosen = Chosen();
  if (chosen == nullptr) return;
  const Group group = *chosen;
  const int row = fgGroups_->CurrentRow();
  Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::RemoveGroup(context_.session, group);
  });
  Load(0);
  fgGroups_->SelectRows(row, row);
}

void frmTeams::Join() {
  const Group* chosen = Chosen();
  if (chosen == nullptr) return;
  const Group group = *chosen;
  Guarded(context_.ui, [&] {
    std::map<std::int32_t, QString> others;
    for (const Member& member : members_) {
      const auto other = std::find_if(groups_.begin(), groups_.end(),
                                      [&](const Group& one) { return one.id == member.groupId; });
      if (!member.until && other != groups_.end()) others[member.driverId] = Q(other->name);
    }
    frmPickDrivers picker(context_, tr("Join %1").arg(Q(group.name)), others, this);
    if (picker.exec() != QDialog::Accepted || picker.Ticked().empty()) return;
    const WaitCursor wait;
    app::JoinGroup(context_.session, kind_, group, picker.Ticked(), cboFrom_->Chosen());
  });
  Load(group.id);
}

void frmTeams::Leave() {
  const Group* chosen = Chosen();
  const std::vector<Member> selected = SelectedMembers();
  if (chosen == nullptr || selected.empty() || !buttons_[kLeave]->isEnabled()) return;
  const std::int32_t id = chosen->id;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> drivers;
    for (const Member& member : selected) drivers.push_back(member.driverId);
    const WaitCursor wait;
    app::LeaveGroup(context_.session, kind_, drivers, cboFrom_->Chosen());
  });
  Load(id);
}

void frmTeams::StoreBest() {
  Guarded(context_.ui, [&] {
    if (spnBest_->value() == championship::BestResults(context_.session.League(), kind_)) return;
    const WaitCursor wait;
    app::SetBestResults(context_.session, kind_, spnBest_->value());
  });
}

// The box of the results that count may not have been left yet.
void frmTeams::done(int result) {
  spnBest_->interpretText();
  StoreBest();
  QDialog::done(result);
}

}  // namespace scorvane::forms
