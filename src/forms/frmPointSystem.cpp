#include "forms/frmPointSystem.h"

#include <fmt/format.h>

#include <QButtonGroup>
#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/Commands.h"
#include "app/RaceList.h"
#include "engine/Value.h"
#include "forms/Undoing.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kPointsColumn = 1;
constexpr int kPrizeColumn = 2;
constexpr int kPointDigits = 3;
constexpr int kPrizeDigits = 9;
constexpr int kBonusCharacters = 6;  // a 16-bit number with its sign
constexpr int kMostPositions = 999;
constexpr double kMost = 999999999;
constexpr int kBonusColumns = 5;
constexpr int kTightSpacing = 4;  // so that the window fits the smallest screens

QString CellText(const std::optional<std::int32_t>& value) {
  return value ? QString::number(*value) : QString();
}

bool IsFilled(const scoring::PositionPoints& position) {
  return position.points || position.prizeMoney;
}

}  // namespace

frmPointSystem::frmPointSystem(FormContext& context, QWidget* parent)
    : QDialog(parent), context_(context), edit_(scoring::ReadPointSystem(context.session.League())) {
  setObjectName(QStringLiteral("frmPointSystem"));
  setWindowTitle(tr("Point System"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(BuildPositions(), 1);
  layout->addWidget(BuildBonuses());
  const auto buttons = AddButtons(layout, this, {{1, tr("Save")}, {0, tr("Cancel")}});
  save_ = buttons.at(1);
  save_->setEnabled(false);
  QPushButton* presets = BuildPresets();
  static_cast<QHBoxLayout*>(layout->itemAt(layout->count() - 1)->layout())->insertWidget(0, presets);
  setTabOrder(presets, save_);
  setTabOrder(save_, buttons.at(0));
  connect(save_, &QPushButton::clicked, this, [this] {
    if (!Save()) return;
    accept();
    OfferRecalculation();
  });
  connect(buttons.at(0), &QPushButton::clicked, this, &frmPointSystem::reject);
  Load();
}

QWidget* frmPointSystem::BuildPositions() {
  auto* frame = new QGroupBox(tr("Positions:"), this);
  frame->setObjectName(QStringLiteral("fraPoints_0"));
  chkUsePositions_ = new QCheckBox(tr("Use custom points for positions"), frame);
  chkUsePositions_->setObjectName(QStringLiteral("chkUsePositions"));
  fgPoints_ = new SelectionGrid(QStringLiteral("fgPoints"), frame);
  fgPoints_->setAccessibleName(tr("Points by position"));
  fgPoints_->SetColumns({{tr("Pos"), 600, Qt::AlignHCenter},
                         {tr("Points"), 950, Qt::AlignHCenter, {}, false, kPointDigits},
                         {tr("Prize Money"), 1450, Qt::AlignHCenter, {}, false, kPrizeDigits}});
  fgPoints_->setToolTip(tr("F2, a digit or a double click changes a cell"));
  fgPoints_->setMinimumWidth(fgPoints_->columnWidth(0) + fgPoints_->columnWidth(1) +
                             fgPoints_->columnWidth(2) + 36);
  fgPoints_->setMinimumHeight(fgPoints_->fontMetrics().height() * 12);

  const QString labels[] = {tr("Total Positions:"), tr("Fill positions"), tr("through"),
                            tr("with an initial value of"), tr("and an interval of")};
  auto* tool = new QGridLayout;
  tool->setVerticalSpacing(kTightSpacing);
  int line = 0;
  for (std::size_t i = 0; i < txtPoints_.size(); ++i) {
    auto* box = new EntryBox(QStringLiteral("txtPoints_%1").arg(i), EntryBox::Digits(), frame);
    box->setMaximumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("000000000000")));
    box->setMaxLength(kPointDigits);
    auto* label = new QLabel(labels[i], frame);
    label->setBuddy(box);
    box->setAccessibleName(label->text());
    tool->addWidget(label, line, 0);
    tool->addWidget(box, line++, 1);
    txtPoints_[i] = box;
    positionControls_.insert(positionControls_.end(), {label, box});
    connect(box, &EntryBox::Left, this, [this, i] { LeaveBox(static_cast<Box>(i)); });
    if (i == kTotal) {
      cmdBringBack_ = new QPushButton(frame);
      cmdBringBack_->setObjectName(QStringLiteral("cmdBringBack"));
      cmdBringBack_->setToolTip(tr("Show the positions again that a smaller total took away"));
      cmdBringBack_->setAutoDefault(false);
      cmdBringBack_->hide();
      connect(cmdBringBack_, &QPushButton::clicked, this, &frmPointSystem::BringBack);
      positionControls_.push_back(cmdBringBack_);
      tool->setRowMinimumHeight(line, kTightSpacing);
      tool->addWidget(cmdBringBack_, line++, 0, 1, 2);
    }
  }
  connect(txtPoints_[kTotal], &QLineEdit::textEdited, this, &frmPointSystem::MarkDirty);
  auto* label = new QLabel(tr("Column to fill:"), frame);
  tool->addWidget(label, line, 0);
  auto* group = new QButtonGroup(frame);
  auto* options = new QVBoxLayout;
  const QString columns[] = {tr("Points"), tr("Prize Money")};
  for (std::size_t i = 0; i < optPoints_.size(); ++i) {
    optPoints_[i] = new QRadioButton(columns[i], frame);
    optPoints_[i]->setObjectName(QStringLiteral("optPoints_%1").arg(i));
    group->addButton(optPoints_[i]);
    options->addWidget(optPoints_[i]);
    connect(optPoints_[i], &QRadioButton::clicked, this, &frmPointSystem::ColumnChosen);
  }
  optPoints_[0]->setChecked(true);
  label->setBuddy(optPoints_[0]);
  tool->addLayout(options, line++, 1);
  auto* fill = new QPushButton(tr("Fill"), frame);
  fill->setObjectName(QStringLiteral("cmdFill"));
  fill->setAutoDefault(false);
  connect(fill, &QPushButton::clicked, this, &frmPointSystem::Fill);
  tool->addWidget(fill, line++, 1);
  tool->setRowStretch(line, 1);
  positionControls_.insert(positionControls_.end(), {label, optPoints_[0], optPoints_[1], fill});

  auto* layout = new QGridLayout(frame);
  layout->addWidget(chkUsePositions_, 0, 0, 1, 2);
  layout->addWidget(fgPoints_, 1, 0);
  layout->addLayout(tool, 1, 1);
  layout->setColumnStretch(0, 1);
  connect(fgPoints_, &SelectionGrid::SelectionChanged, this, &frmPointSystem::SelectionChanged);
  connect(fgPoints_, &SelectionGrid::CellEdited, this, &frmPointSystem::CellEdited);
  connect(chkUsePositions_, &QCheckBox::toggled, this, [this] {
    EnableFrames();
    MarkDirty();
  });
  return frame;
}

QWidget* frmPointSystem::BuildBonuses() {
  auto* frame = new QGroupBox(tr("Bonus Points:"), this);
  frame->setObjectName(QStringLiteral("fraPoints_1"));
  chkUseBonus_ = new QCheckBox(tr("Use custom bonus points"), frame);
  chkUseBonus_->setObjectName(QStringLiteral("chkUseBonus"));
  auto* pairs = new QWidget(frame);
  auto* grid = new QGridLayout(pairs);
  grid->setContentsMargins(0, 0, 0, 0);
  // Down first, as the rules are numbered, then on to the right.
  const int lines = (static_cast<int>(edit_.bonuses.size()) + kBonusColumns - 1) / kBonusColumns;
  int place = 0;
  for (const scoring::BonusPoints& bonus : edit_.bonuses) {
    auto* box = new EntryBox(QStringLiteral("txtBonus_%1").arg(bonus.id - 1), EntryBox::Digits(), pairs);
    box->setMaximumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("000000")));
    box->setMaxLength(kBonusCharacters);
    auto* label = new QLabel(pairs);
    label->setTextFormat(Qt::PlainText);
    // With a box of its own, an ampersand would be a mnemonic.
    label->setText(Q(bonus.name).replace(QLatin1Char('&'), QStringLiteral("&&")) + QLatin1Char(':'));
    label->setBuddy(box);
    label->setObjectName(QStringLiteral("lblBonus_%1").arg(bonus.id - 1));
    box->setAccessibleName(Q(bonus.name) + QLatin1Char(':'));
    const int column = place / std::max(lines, 1) * 2;
    grid->addWidget(label, place % std::max(lines, 1), column, Qt::AlignRight);
    grid->addWidget(box, place % std::max(lines, 1), column + 1);
    ++place;
    connect(box, &QLineEdit::textChanged, this, [this] { MarkDirty(); });
    txtBonus_.push_back(box);
    bonusControls_.insert(bonusControls_.end(), {label, box});
  }
  grid->setColumnStretch(kBonusColumns * 2, 1);
  auto* layout = new QVBoxLayout(frame);
  layout->addWidget(chkUseBonus_);
  layout->addWidget(pairs);
  connect(chkUseBonus_, &QCheckBox::toggled, this, [this] {
    EnableFrames();
    MarkDirty();
  });
  return frame;
}

// The point systems that leagues use, to fill grid and bonuses with.
QPushButton* frmPointSystem::BuildPresets() {
  auto* button = new QPushButton(tr("&Presets"), this);
  button->setObjectName(QStringLiteral("cmdPresets"));
  button->setToolTip(tr("Fill in a point system that is known, with its bonus points"));
  button->setAutoDefault(false);
  auto* menu = new QMenu(button);
  menu->setToolTipsVisible(true);
  for (const championship::PointPreset& preset : championship::ListPointPresets()) {
    QAction* item = menu->addAction(tr("%1 (%2 to win, %3 positions)")
                                        .arg(Q(preset.name))
                                        .arg(preset.points.front())
                                        .arg(preset.points.size()));
    item->setToolTip(ToolTipText(Q(preset.source)));
    connect(item, &QAction::triggered, this, [this, preset] { TakePreset(preset); });
  }
  button->setMenu(menu);
  return button;
}

// Nothing is stored before Save. Prize money stays.
void frmPointSystem::TakePreset(const championship::PointPreset& preset) {
  Guarded(context_.ui, [&] {
    if (Whole(kTotal) != static_cast<int>(edit_.positions.size())) LeaveBox(kTotal);
    scoring::PointSystemEdit filled = edit_;
    championship::ApplyPreset(preset, filled);
    edit_ = std::move(filled);
    lost_.clear();
    ShowLost();
    Load();
    MarkDirty();
  });
}

void frmPointSystem::Load() {
  loading_ = true;
  ShowPositions();
  txtPoints_[kTotal]->setText(QString::number(edit_.positions.size()));
  for (std::size_t i = 0; i < txtBonus_.size(); ++i)
    txtBonus_[i]->setText(QString::number(edit_.bonuses[i].points));
  chkUsePositions_->setChecked(edit_.usePositions);
  chkUseBonus_->setChecked(edit_.useBonus);
  EnableFrames();
  fgPoints_->SelectRows(0, 0);
  ColumnChosen();
  loading_ = false;
}

void frmPointSystem::ShowPositions() {
  const auto rows = static_cast<int>(edit_.positions.size());
  while (fgPoints_->RowCount() > rows) fgPoints_->RemoveRow(fgPoints_->RowCount() - 1);
  for (int row = 0; row < rows; ++row) {
    const scoring::PositionPoints& position = edit_.positions[static_cast<std::size_t>(row)];
    if (row == fgPoints_->RowCount()) fgPoints_->AddRow({});
    fgPoints_->SetCell(row, 0, QString::number(position.position > 0 ? position.position : row + 1));
    fgPoints_->SetCell(row, kPointsColumn, CellText(position.points));
    fgPoints_->SetCell(row, kPrizeColumn, CellText(position.prizeMoney));
  }
}

void frmPointSystem::EnableFrames() {
  for (QWidget* control : positionControls_) control->setEnabled(chkUsePositions_->isChecked());
  fgPoints_->SetEditing(chkUsePositions_->isChecked());
  for (QWidget* control : bonusControls_) control->setEnabled(chkUseBonus_->isChecked());
}

void frmPointSystem::MarkDirty() {
  if (loading_) return;
  dirty_ = true;
  save_->setEnabled(true);
}

void frmPointSystem::SelectionChanged() {
  const int first = fgPoints_->FirstSelected();
  const int last = fgPoints_->LastSelected();
  if (first < 0) return;
  const int column = FillsPrizeMoney() ? kPrizeColumn : kPointsColumn;
  const QString value = fgPoints_->Cell(first, column);
  txtPoints_[kFrom]->setText(QString::number(first + 1));
  txtPoints_[kThrough]->setText(QString::number(last + 1));
  // What is typed is limited; what stands in the table is shown whole.
  const int limit = FillsPrizeMoney() ? kPrizeDigits : kPointDigits;
  txtPoints_[kInitial]->setMaxLength(std::max(limit, static_cast<int>(value.size())));
  txtPoints_[kInitial]->setText(value);
  const int step = last > first ? value.toInt() - fgPoints_->Cell(first + 1, column).toInt() : 0;
  const QString interval = step > 0 ? QString::number(step) : QString();
  txtPoints_[kInterval]->setMaxLength(std::max(limit, static_cast<int>(interval.size())));
  txtPoints_[kInterval]->setText(interval);
}

void frmPointSystem::ColumnChosen() {
  fgPoints_->SetEditColumn(FillsPrizeMoney() ? kPrizeColumn : kPointsColumn);
  SelectionChanged();
}

int frmPointSystem::Whole(Box box) const {
  return static_cast<int>(std::clamp(engine::LeadingNumber(Utf8(txtPoints_[box]->text())), -kMost, kMost));
}

void frmPointSystem::LeaveBox(Box box) {
  int value = Whole(box);
  // A text that is no number at all was pasted by mistake; it does not cost the table its rows.
  const QString text = txtPoints_[box]->text().trimmed();
  if (box == kTotal && !text.isEmpty() && !text.at(0).isDigit())
    value = static_cast<int>(edit_.positions.size());
  if (box == kTotal || box == kFrom || box == kThrough) value = std::clamp(value, 1, kMostPositions);
  txtPoints_[box]->setText(QString::number(value));
  if (box != kTotal) return;
  Resize(static_cast<std::size_t>(value));
}

void frmPointSystem::Resize(std::size_t count) {
  std::vector<scoring::PositionPoints>& positions = edit_.positions;
  if (lost_.size() < positions.size()) lost_.resize(positions.size());
  for (std::size_t i = count; i < positions.size(); ++i)
    if (IsFilled(positions[i])) lost_[i] = positions[i];
  positions.resize(count);
  for (scoring::PositionPoints& position : positions) position.position = 0;
  ShowPositions();
  ShowLost();
}

void frmPointSystem::BringBack() {
  const std::vector<scoring::PositionPoints> lost = std::exchange(lost_, {});
  Resize(std::max(edit_.positions.size(), lost.size()));
  for (std::size_t i = 0; i < lost.size(); ++i)
    if (IsFilled(lost[i]) && !IsFilled(edit_.positions[i])) edit_.positions[i] = lost[i];
  for (scoring::PositionPoints& position : edit_.positions) position.position = 0;
  txtPoints_[kTotal]->setText(QString::number(edit_.positions.size()));
  ShowPositions();
  ShowLost();
  MarkDirty();
}

void frmPointSystem::ShowLost() {
  const auto count = std::count_if(lost_.begin(), lost_.end(), IsFilled);
  // The keyboard is not left on a button that goes.
  if (count == 0 && cmdBringBack_->hasFocus()) txtPoints_[kTotal]->setFocus();
  cmdBringBack_->setText(count == 1 ? tr("Bring Back 1 Position") : tr("Bring Back %1 Positions").arg(count));
  cmdBringBack_->setVisible(count > 0);
}

void frmPointSystem::CellEdited(int row, int column) {
  const QString text = fgPoints_->Cell(row, column);
  std::optional<std::int32_t> value;
  if (!text.isEmpty()) value = static_cast<std::int32_t>(std::min(text.toDouble(), kMost));
  scoring::PositionPoints& position = edit_.positions[static_cast<std::size_t>(row)];
  (column == kPrizeColumn ? position.prizeMoney : position.points) = value;
  fgPoints_->SetCell(row, column, CellText(value));
  SelectionChanged();
  MarkDirty();
}

void frmPointSystem::Fill() {
  scoring::FillPositions(edit_,
                         FillsPrizeMoney() ? scoring::FillColumn::PrizeMoney : scoring::FillColumn::Points,
                         Whole(kFrom), Whole(kThrough), Whole(kInitial), Whole(kInterval));
  ShowPositions();
  MarkDirty();
}

// The bonus boxes as numbers; a text that is none gets its message and the keyboard.
bool frmPointSystem::ReadBonuses(scoring::PointSystemEdit& edited) {
  for (std::size_t i = 0; i < txtBonus_.size(); ++i) {
    const std::string text = Utf8(txtBonus_[i]->text().trimmed());
    double points = 0;
    if (!text.empty() && !engine::ParseNumber(text, context_.state.decimalSeparator, points)) {
      context_.ui.ShowMessage(
          {"\"" + text + "\" is no number of points for \"" + edited.bonuses[i].name + "\".", "Point System",
           common::MessageIcon::Exclamation});
      txtBonus_[i]->setFocus();
      return false;
    }
    edited.bonuses[i].points = static_cast<int>(std::clamp(points, -kMost, kMost));
  }
  return true;
}

scoring::PointSystemEdit frmPointSystem::Edited() const {
  scoring::PointSystemEdit edited = edit_;
  edited.usePositions = chkUsePositions_->isChecked();
  edited.useBonus = chkUseBonus_->isChecked();
  return edited;
}

bool frmPointSystem::Save() {
  // The box may not have been left yet.
  if (Whole(kTotal) != static_cast<int>(edit_.positions.size())) LeaveBox(kTotal);
  scoring::PointSystemEdit edited = Edited();
  if (!ReadBonuses(edited)) return false;
  // An error leaves the dialog open, with what was typed.
  return Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::SavePointSystem(context_.session, edited);
    dirty_ = false;
    lost_.clear();
  });
}

bool frmPointSystem::MayDiscard() {
  if (!dirty_) return true;
  switch (context_.ui.Ask(
      {"Do you want to save the changes you've made?", "Unsaved Changes", common::MessageIcon::Question},
      common::Buttons::YesNoCancel)) {
    case common::Answer::Yes:
      return Save();
    case common::Answer::No:
      return true;
    default:
      return false;
  }
}

// The races that are there have the points of before.
void frmPointSystem::OfferRecalculation() {
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> races;
    for (const app::ListedRace& race : app::ListRaces(context_.session.League())) races.push_back(race.id);
    if (races.empty()) return;
    const common::Message question{
        fmt::format("The league's races keep the points that they have until they are recalculated.\r\n"
                    "Recalculating them loses any point or bonus changes that were made by hand.\r\n"
                    "Do you want to recalculate {} now?",
                    races.size() == 1 ? "the race" : fmt::format("all {} races", races.size())),
        "Point System", common::MessageIcon::Question};
    if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
    const WaitCursor wait;
    app::Recalculate(context_.session, context_.ui, races);
  });
}

void frmPointSystem::reject() {
  const bool wasDirty = dirty_;
  if (!MayDiscard()) return;
  const bool saved = wasDirty && !dirty_;
  QDialog::reject();
  if (saved) OfferRecalculation();
}

void frmPointSystem::closeEvent(QCloseEvent* event) {
  // The close box comes through here, and from here into reject, which asks.
  event->ignore();
  reject();
}

}  // namespace scorvane::forms
