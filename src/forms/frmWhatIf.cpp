#include "forms/frmWhatIf.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <string>

#include "championship/RuleFiles.h"
#include "championship/Title.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "drivers/Roster.h"
#include "forms/ReportGrid.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kTitleTab = 1;
constexpr int kPlayoffNone = 1;  // the line of the box; the formats stand below it
constexpr int kFirstPlayoff = 2;
constexpr int kBoxCharacters = 16;

QComboBox* Box(const char* name, const QString& reader, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(QString::fromLatin1(name));
  box->setAccessibleName(reader);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(kBoxCharacters);
  return box;
}

QPushButton* FileButton(const char* name, const QString& toolTip, QWidget* parent) {
  auto* button = new QPushButton(frmWhatIf::tr("File..."), parent);
  button->setObjectName(QString::fromLatin1(name));
  button->setToolTip(toolTip);
  button->setAccessibleName(toolTip);
  button->setAutoDefault(false);
  return button;
}

// A question about rules that cannot be answered is no fault of the program: the grid says why.
template <typename Run>
void ShowAnswer(FormContext& context, SelectionGrid& grid, Run run) {
  grid.SetHint({});
  std::string refused;
  const bool shown = Guarded(context.ui, [&] {
    const WaitCursor wait;
    try {
      ShowReport(grid, run(), context.state.decimalSeparator);
      grid.horizontalHeader()->setStretchLastSection(true);
    } catch (const common::RuleError& error) {
      refused = error.what();
    }
  });
  if (shown && refused.empty()) return;
  grid.SetColumns({});
  grid.SetHint(Q(refused));
}

}  // namespace

frmWhatIf::frmWhatIf(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context), pointPresets_(championship::ListPointPresets()) {
  setObjectName(QStringLiteral("frmWhatIf"));
  setWindowTitle(tr("What If"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  auto* halves = new QHBoxLayout;
  halves->addWidget(BuildRules(), 3);
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(QStringLiteral("ts"));
  tabs_->setAccessibleName(tr("What is shown"));
  fgTable_ = new SelectionGrid(QStringLiteral("fgTable"), tabs_);
  fgTable_->setAccessibleName(tr("Standings under these rules beside the present ones"));
  ShowPlaces(*fgTable_);
  fgTable_->SetArrangeable();
  tabs_->addTab(fgTable_, tr("&Standings"));
  tabs_->addTab(BuildTitle(), tr("&Title"));
  halves->addWidget(tabs_, 5);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(halves, 1);
  const auto buttons = AddButtons(layout, this, {{0, tr("Close"), tr("Close this dialog")}});
  connect(buttons.at(0), &QPushButton::clicked, this, &QDialog::accept);

  connect(cboPoints_, &QComboBox::currentIndexChanged, this, &frmWhatIf::Show);
  connect(cboPlayoff_, &QComboBox::currentIndexChanged, this, &frmWhatIf::Show);
  connect(cboAfter_, &QComboBox::currentIndexChanged, this, &frmWhatIf::Show);
  connect(spnDropped_, &QSpinBox::valueChanged, this, &frmWhatIf::Show);
  connect(chkNoBonus_, &QCheckBox::toggled, this, &frmWhatIf::Show);
  connect(lstWithout_, &QListWidget::itemChanged, this, &frmWhatIf::Show);
  connect(spnRemaining_, &QSpinBox::valueChanged, this, &frmWhatIf::Show);
  connect(tabs_, &QTabWidget::currentChanged, this, &frmWhatIf::Show);
  Show();
  resize(fontMetrics().averageCharWidth() * 150, fontMetrics().height() * 32);
  cboPoints_->setFocus();
}

QWidget* frmWhatIf::BuildRules() {
  engine::Database& league = context_.session.League();
  auto* rules = new QWidget(this);
  auto* form = new QFormLayout(rules);
  form->setContentsMargins(0, 0, 0, 0);
  form->setRowWrapPolicy(QFormLayout::DontWrapRows);
  const auto withFile = [](QComboBox* box, QPushButton* button) {
    auto* row = new QHBoxLayout;
    row->addWidget(box, 1);
    row->addWidget(button);
    return row;
  };
  const auto add = [form, rules](const QString& caption, QWidget* field, QLayout* row = nullptr) {
    auto* label = new QLabel(caption, rules);
    label->setBuddy(field);
    if (row != nullptr)
      form->addRow(label, row);
    else
      form->addRow(label, field);
  };
  cboPoints_ = Box("cboPoints", tr("Points"), rules);
  cboPoints_->addItem(tr("the league's"));
  for (const championship::PointPreset& preset : pointPresets_) {
    cboPoints_->addItem(Q(preset.name));
    cboPoints_->setItemData(cboPoints_->count() - 1, Q(preset.source), Qt::AccessibleDescriptionRole);
  }
  auto* points = FileButton("cmdPoints", tr("Take points from a file: Position,Points"), rules);
  connect(points, &QPushButton::clicked, this, &frmWhatIf::LoadPoints);
  add(tr("&Points:"), cboPoints_, withFile(cboPoints_, points));
  spnDropped_ = new NumberBox(QStringLiteral("spnDropped"), tr("Dropped races"), rules);
  spnDropped_->setRange(0, championship::kMostDropped);
  spnDropped_->setValue(context_.state.droppedRaces);
  add(tr("&Dropped races:"), spnDropped_);
  chkNoBonus_ = new QCheckBox(tr("&No bonus points"), rules);
  chkNoBonus_->setObjectName(QStringLiteral("chkNoBonus"));
  form->addRow(QString(), chkNoBonus_);
  cboPlayoff_ = Box("cboPlayoff", tr("Playoff"), rules);
  cboPlayoff_->addItems({tr("the league's"), tr("none")});
  for (const championship::PlayoffPreset& preset : championship::ListPlayoffPresets()) {
    playoffs_.push_back(championship::PresetPlayoff(preset.name));
    cboPlayoff_->addItem(Q(preset.name));
    cboPlayoff_->setItemData(cboPlayoff_->count() - 1, Q(preset.source), Qt::AccessibleDescriptionRole);
  }
  auto* playoff = FileButton("cmdPlayoff", tr("Take a playoff from a JSON file"), rules);
  connect(playoff, &QPushButton::clicked, this, &frmWhatIf::LoadPlayoff);
  add(tr("Play&off:"), cboPlayoff_, withFile(cboPlayoff_, playoff));
  cboAfter_ = new RaceChoice(QStringLiteral("cboAfter"), tr("After which race"), rules);
  cboAfter_->Fill(league, {{tr("all races"), std::nullopt}});
  add(tr("&After:"), cboAfter_);
  lstWithout_ = new CheckList(QStringLiteral("lstWithout"), tr("Without these drivers"), rules);
  for (const drivers::Driver& driver : drivers::ListDrivers(league))
    lstWithout_->Add(Q(driver.name), driver.id);
  lstWithout_->setMinimumHeight(lstWithout_->fontMetrics().height() * 6);
  add(tr("&Without:"), lstWithout_);
  rules->setMaximumWidth(fontMetrics().averageCharWidth() * 56);
  return rules;
}

QWidget* frmWhatIf::BuildTitle() {
  auto* page = new QWidget(tabs_);
  spnRemaining_ = new NumberBox(QStringLiteral("spnRemaining"), tr("Races remaining"), page);
  spnRemaining_->setRange(0, championship::kMostRemaining);
  spnRemaining_->setValue(1);
  auto* label = new QLabel(tr("&Races remaining:"), page);
  label->setBuddy(spnRemaining_);
  lblTitle_ = new QLabel(page);
  lblTitle_->setObjectName(QStringLiteral("lblTitle"));
  lblTitle_->setTextFormat(Qt::PlainText);
  lblTitle_->setWordWrap(true);
  fgTitle_ = new SelectionGrid(QStringLiteral("fgTitle"), page);
  fgTitle_->setAccessibleName(tr("Who can still win the title"));
  ShowPlaces(*fgTitle_);
  fgTitle_->SetArrangeable();
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(spnRemaining_);
  row->addStretch();
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(row);
  layout->addWidget(lblTitle_);
  layout->addWidget(fgTitle_, 1);
  return page;
}

championship::WhatIf frmWhatIf::Rules() const {
  championship::WhatIf rules;
  // The league's own, the presets, the files.
  if (auto points = static_cast<std::size_t>(cboPoints_->currentIndex()); points > 0) {
    --points;
    if (points < pointPresets_.size())
      rules.preset = pointPresets_[points];
    else
      rules.points = pointFiles_[points - pointPresets_.size()];
  }
  if (spnDropped_->value() != context_.state.droppedRaces) rules.dropped = spnDropped_->value();
  rules.noBonus = chkNoBonus_->isChecked();
  rules.noPlayoff = cboPlayoff_->currentIndex() == kPlayoffNone;
  if (cboPlayoff_->currentIndex() >= kFirstPlayoff)
    rules.playoff = playoffs_[static_cast<std::size_t>(cboPlayoff_->currentIndex() - kFirstPlayoff)];
  rules.without = lstWithout_->Ticked();
  return rules;
}

void frmWhatIf::Show() {
  const bool title = tabs_->currentIndex() == kTitleTab;
  // The title is worked out under the league's own rules.
  for (QWidget* rule :
       std::initializer_list<QWidget*>{cboPoints_, spnDropped_, chkNoBonus_, cboPlayoff_, lstWithout_,
                                       findChild<QWidget*>(QStringLiteral("cmdPoints")),
                                       findChild<QWidget*>(QStringLiteral("cmdPlayoff"))})
    rule->setEnabled(!title);
  if (title)
    ShowTitle();
  else
    ShowTable();
}

void frmWhatIf::ShowTable() {
  ShowAnswer(context_, *fgTable_, [&] {
    return championship::RunWhatIf(context_.session.League(), context_.templateDb, context_.state, Rules(),
                                   cboAfter_->Chosen());
  });
}

void frmWhatIf::ShowTitle() {
  lblTitle_->clear();
  ShowAnswer(context_, *fgTitle_, [&] {
    championship::RaceMost most;
    auto table = championship::RunTitle(context_.session.League(), context_.templateDb, context_.state,
                                        spnRemaining_->value(), cboAfter_->Chosen(), most);
    lblTitle_->setText(
        tr("Under the league's own rules a race brings at most %1 points. Needs: what the first "
           "must add to be champion whatever happens, and what the others must gain on him.")
            .arg(most.points));
    return table;
  });
}

void frmWhatIf::LoadPoints() {
  common::FileRequest request;
  request.filter = kPointFilter;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (chosen.empty()) return;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> points;
    for (const scoring::PositionPoints& position : championship::ReadPointFile(chosen.front()))
      points.push_back(position.points.value_or(0));
    pointFiles_.push_back(std::move(points));
    cboPoints_->addItem(Q(common::GetFileTitle(chosen.front())));
    cboPoints_->setCurrentIndex(cboPoints_->count() - 1);
  });
}

void frmWhatIf::LoadPlayoff() {
  common::FileRequest request;
  request.filter = kPlayoffFilter;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (chosen.empty()) return;
  Guarded(context_.ui, [&] {
    playoffs_.push_back(championship::ReadPlayoffFile(chosen.front()));
    cboPlayoff_->addItem(Q(common::GetFileTitle(chosen.front())));
    cboPlayoff_->setCurrentIndex(cboPlayoff_->count() - 1);
  });
}

}  // namespace scorvane::forms
