#include "forms/frmEditRace.h"

#include <fmt/format.h>

#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "app/Commands.h"
#include "common/Formats.h"
#include "engine/Format.h"
#include "forms/Undoing.h"
#include "forms/frmEditDriver2.h"
#include "forms/frmPenalty.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/PaletteFollower.h"
#include "forms/widgets/Text.h"
#include "scoring/Penalties.h"
#include "scoring/RaceScoring.h"

namespace scorvane::forms {
namespace {

enum Button { kClose, kEdit, kRemove, kAdd, kRecalc };
enum Column {
  kFinish,
  kStart,
  kDriver,
  kLaps,
  kLed,
  kPoints,
  kBonus,
  kAvgSpeed,
  kQualify,
  kReason,
  kColumns
};

}  // namespace

frmEditRace::frmEditRace(FormContext& context, scoring::RaceKey race, QWidget* parent)
    : QDialog(parent),
      context_(context),
      race_(race),
      header_(scoring::ReadRaceHeader(context.session.League(), context.state, race)),
      averageSpeed_(scoring::ShowsAverageSpeed(context.state)) {
  setObjectName(QStringLiteral("frmEditRace"));
  setWindowTitle(tr("Race Results - ") + Q(header_.fileName));
  auto* layout = new QVBoxLayout(this);
  auto* head = new QGridLayout;
  ShowHeader(head);
  layout->addLayout(head);
  grid_ = new SelectionGrid(QStringLiteral("fgDrivers"), this);
  grid_->setAccessibleName(tr("Results of the race"));
  grid_->SetColumns(
      {{tr("Finish"), 750, Qt::AlignHCenter},
       {tr("Start"), 700, Qt::AlignHCenter},
       {tr("Driver"), 2400, Qt::AlignLeft, {}, true},
       {tr("Laps"), 650, Qt::AlignHCenter},
       {tr("Led"), 600, Qt::AlignHCenter},
       {tr("Points"), 800, Qt::AlignHCenter},
       {tr("Bonus"), 800, Qt::AlignHCenter},
       {averageSpeed_ ? tr("Avg Speed") : QString(), averageSpeed_ ? 1200 : 0, Qt::AlignHCenter},
       {tr("Qualify"), 1000, Qt::AlignHCenter},
       {tr("Reason Out"), 1400, Qt::AlignLeft}});
  grid_->SetArrangeable();
  int width = 40;
  for (int c = 0; c < kColumns; ++c) width += grid_->isColumnHidden(c) ? 0 : grid_->columnWidth(c);
  resize(width, grid_->fontMetrics().height() * 36);
  layout->addWidget(grid_, 1);
  lblOrder_ = new QLabel(
      tr("Not in the order of finish: a click on \"Finish\" sorts, Recalc puts the places in order."), this);
  lblOrder_->setObjectName(QStringLiteral("lblOrder"));
  lblOrder_->setWordWrap(true);
  lblOrder_->hide();
  layout->addWidget(lblOrder_);
  buttons_ = AddButtons(layout, this,
                        {{kEdit, tr("&Edit"), tr("Edit this driver's results")},
                         {kRemove, tr("&Remove"), tr("Remove this driver's results")},
                         {kAdd, tr("&Add"), tr("Add a new driver's results")},
                         {kRecalc, tr("Re&calc"), tr("Recalculate points and bonuses")},
                         {kClose, tr("Close"), tr("Close this dialog")}});
  if (!race_.staged) {
    cmdPenalty_ = new QPushButton(tr("&Penalty..."), this);
    cmdPenalty_->setObjectName(QStringLiteral("cmdPenalty"));
    cmdPenalty_->setToolTip(tr("Give this result a penalty"));
    cmdPenalty_->setAutoDefault(false);
    // Apart from the others, at the other end of their row.
    static_cast<QBoxLayout*>(layout->itemAt(layout->count() - 1)->layout())->insertWidget(0, cmdPenalty_);
    setTabOrder(grid_, cmdPenalty_);
    connect(cmdPenalty_, &QPushButton::clicked, this, &frmEditRace::GivePenalty);
  }
  connect(buttons_[kClose], &QPushButton::clicked, this, &QDialog::accept);
  connect(buttons_[kEdit], &QPushButton::clicked, this, [this] { EditResult(grid_->CurrentRow()); });
  connect(buttons_[kRemove], &QPushButton::clicked, this, &frmEditRace::RemoveResults);
  connect(buttons_[kAdd], &QPushButton::clicked, this, &frmEditRace::AddResult);
  connect(buttons_[kRecalc], &QPushButton::clicked, this, &frmEditRace::Recalculate);
  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmEditRace::SelectionChanged);
  connect(grid_, &SelectionGrid::InsertPressed, this, &frmEditRace::AddResult);
  connect(grid_, &SelectionGrid::DeletePressed, this, &frmEditRace::RemoveResults);
  connect(grid_, &SelectionGrid::EnterPressed, this, [this] {
    if (grid_->OneRowSelected()) EditResult(grid_->CurrentRow());
  });
  connect(grid_, &SelectionGrid::RowDoubleClicked, this, &frmEditRace::EditResult);
  grid_->SetMenu(
      {buttons_[kEdit], buttons_[kAdd], buttons_[kRemove], nullptr, buttons_[kRecalc], cmdPenalty_});
  FillGrid();
  // What is staged is no part of the league yet, and in no history.
  if (!race_.staged) new DialogUndo(context_, this, [this] { ShowAgain(); });
  grid_->setFocus();
}

void frmEditRace::ShowHeader(QGridLayout* layout) {
  const char decimal = context_.state.decimalSeparator;
  const bool times = context_.state.lapReportingMethod == common::kLapTime;
  const std::string length = engine::FormatValue(engine::Value(header_.length), "0.000", decimal);
  const std::string miles = engine::Value(static_cast<float>(header_.laps) * header_.length).ToText(decimal);
  const std::pair<QString, std::string> lines[] = {
      {tr("Track:"), header_.name},
      {tr("Track Length:"), length + " miles"},
      {tr("Laps:"), fmt::format("{} ({} miles)", header_.laps, miles)},
      {tr("Weather:"), header_.weather},
      {tr("Qualifying shown as:"), times ? "Time" : "Speed"},
      {tr("Race Time:"), header_.raceTime},
      {tr("Average Speed:"), header_.avgSpeed},
      {tr("Margin of Victory:"), header_.victoryMargin},
      {tr("Cautions:"), header_.cautions},
      {tr("Lead Changes:"), header_.leadChanges}};
  constexpr int kLines = 5;
  int place = 0;
  for (const auto& [caption, text] : lines) {
    auto* value = new QLabel(this);
    value->setTextFormat(Qt::PlainText);
    value->setText(Q(text));
    if (text.empty()) value->setAccessibleName(tr("none"));
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (place == kLines - 1) {
      // Which of the two it is decides how the column is read, so it stands out.
      new PaletteFollower(this, [this, value, times] {
        const QColor paper = palette().color(QPalette::ToolTipBase);
        const QColor ink(paper.lightness() < 128 ? Qt::white : Qt::black);
        QPalette colors = value->palette();
        colors.setColor(QPalette::Window, times ? ink : paper);
        colors.setColor(QPalette::WindowText, times ? paper : ink);
        value->setPalette(colors);
      });
      value->setAutoFillBackground(true);
      value->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    }
    auto* label = new QLabel(caption, this);
    label->setBuddy(value);  // so that a screen reader says them together
    const int column = place / kLines * 2;
    layout->addWidget(label, place % kLines, column);
    layout->addWidget(value, place % kLines, column + 1);
    ++place;
  }
  layout->setColumnStretch(1, 3);
  layout->setColumnStretch(3, 2);
  layout->setHorizontalSpacing(12);
}

QString frmEditRace::Speed(const engine::Value& speed) const {
  // A stored average speed is a text; what is no number is shown as it is.
  double number = 0;
  if (speed.IsText() && !engine::ParseNumber(speed.Text(), context_.state.decimalSeparator, number))
    return Q(speed.Text());
  const engine::Value value = speed.IsText() ? engine::Value(static_cast<float>(number)) : speed;
  return Q(common::FormatQualifying(value, header_.length, context_.state.lapReportingMethod,
                                    context_.state.decimalSeparator));
}

SelectionGrid::Row frmEditRace::RowOf(const scoring::RaceResult& result) const {
  auto text = [&](const engine::Value& value) { return Q(value.ToText(context_.state.decimalSeparator)); };
  const bool oldSimulation = context_.state.simType <= common::kNascarRacing2;
  return {{text(result.finish), text(result.start), Q(result.driver), text(result.lapsRun),
           text(result.lapsLed), text(result.points), text(result.bonus),
           oldSimulation ? Speed(result.avgSpeed) : QString(), Speed(result.qualifying), Q(result.status)},
          result.id,
          result.excluded,
          penalties_.contains(result.id) ? Q(penalties_.at(result.id)) : QString()};
}

void frmEditRace::FillGrid() {
  const std::vector<scoring::RaceResult> results = scoring::ReadRaceResults(context_.session.League(), race_);
  if (!race_.staged) penalties_ = scoring::PenaltyTexts(context_.session.League(), race_.id);
  {
    const QSignalBlocker quiet(grid_);
    grid_->setUpdatesEnabled(false);
    grid_->ClearRows();
    std::vector<SelectionGrid::Row> rows;
    for (const scoring::RaceResult& result : results) rows.push_back(RowOf(result));
    if (rows.empty()) rows.emplace_back();
    grid_->SetRows(std::move(rows));
    grid_->setUpdatesEnabled(true);
  }
  grid_->SelectRows(0, 0);
  SelectionChanged();
  ShowOrder();
}

// What the league holds now, with the selection that was there.
void frmEditRace::ShowAgain() {
  const std::vector<int> selected = grid_->SelectedData();
  const int row = grid_->FirstSelected();
  FillGrid();
  grid_->SelectData(selected, row);
}

void frmEditRace::SelectionChanged() {
  buttons_[kRemove]->setEnabled(HasResults());
  buttons_[kEdit]->setEnabled(HasResults() && grid_->OneRowSelected());
  if (cmdPenalty_ != nullptr) cmdPenalty_->setEnabled(HasResults() && grid_->OneRowSelected());
}

void frmEditRace::ShowOrder() {
  const std::vector<SelectionGrid::Row>& rows = grid_->StoredRows();
  const auto finish = [](const SelectionGrid::Row& row) { return row.cells.value(kFinish).toInt(); };
  const bool inOrder = std::is_sorted(
      rows.begin(), rows.end(),
      [&](const SelectionGrid::Row& a, const SelectionGrid::Row& b) { return finish(a) < finish(b); });
  lblOrder_->setVisible(!inOrder);
}

void frmEditRace::ShowOutcome() {
  ShowOrder();
  if (race_.staged || !scoring::HasPenalties(context_.session.League(), race_.id)) return;
  ShowAgain();
}

void frmEditRace::GivePenalty() {
  const std::int32_t id = grid_->RowData(grid_->CurrentRow());
  if (id == 0) return;
  Guarded(context_.ui, [&] {
    const auto driver = scoring::DriverOfResult(context_.session.League(), id);
    frmPenalty dialog(context_, race_.id, driver, grid_->Cell(grid_->CurrentRow(), kDriver), this);
    dialog.exec();
    if (!dialog.Given()) return;
    FillGrid();
    for (int row = 0; row < grid_->RowCount(); ++row)
      if (grid_->RowData(row) == id) grid_->SelectRows(row, row);
  });
}

// Nobody drives twice in a race, unless the administrator says so.
bool frmEditRace::AgreesToAdd(const std::string& driver) {
  if (!scoring::HasResult(context_.session.League(), race_, driver)) return true;
  const common::Message question{
      "\"" + driver + "\" has a result in this race already.\r\nDo you want to add another one?",
      "Driver Exists", common::MessageIcon::Question};
  return context_.ui.Ask(question, common::Buttons::YesNo) == common::Answer::Yes;
}

void frmEditRace::AddResult() {
  frmEditDriver2 dialog(context_, this);
  dialog.setWindowTitle(tr("Add Driver Race Result"));
  scoring::ResultEntry entry;
  if (!averageSpeed_) entry.fields[scoring::ResultEntry::kAvgSpeed] = "0";
  dialog.Entry(entry);
  std::int32_t added = 0;
  dialog.OnSave([&](const scoring::ResultEntry& typed) {
    bool agreed = false;
    return Guarded(context_.ui,
                   [&] {
                     agreed = AgreesToAdd(typed.fields[scoring::ResultEntry::kName]);
                     if (agreed) added = app::AddResult(context_.session, race_, typed, header_.length);
                   }) &&
           agreed;
  });
  dialog.exec();
  if (dialog.Cancelled()) return;
  edited_ = true;
  Guarded(context_.ui, [&] {
    // The new result stands at the end until the race is opened again or recalculated.
    SelectionGrid::Row row = RowOf(scoring::ReadRaceResult(context_.session.League(), race_, added));
    if (HasResults()) grid_->AddRow({});
    grid_->SetRow(grid_->RowCount() - 1, std::move(row));
  });
  grid_->SelectRows(grid_->RowCount() - 1, grid_->RowCount() - 1);
  grid_->scrollToBottom();
  SelectionChanged();
  Guarded(context_.ui, [&] { ShowOutcome(); });
}

void frmEditRace::EditResult(int row) {
  const std::int32_t id = row < 0 ? 0 : grid_->RowData(row);
  if (id == 0) return;
  Guarded(context_.ui, [&] {
    engine::Database& league = context_.session.League();
    frmEditDriver2 dialog(context_, this);
    dialog.setWindowTitle(tr("Edit Driver Race Result"));
    dialog.Entry(scoring::ReadResultEntry(league, context_.state, race_, id, header_.length));
    dialog.OnSave([&](const scoring::ResultEntry& typed) {
      return Guarded(context_.ui,
                     [&] { app::UpdateResult(context_.session, race_, id, typed, header_.length); });
    });
    dialog.exec();
    if (dialog.Cancelled()) return;
    edited_ = true;
    grid_->SetRow(row, RowOf(scoring::ReadRaceResult(league, race_, id)));
    ShowOutcome();
  });
}

void frmEditRace::RemoveResults() {
  const int first = grid_->FirstSelected();
  if (!HasResults() || first < 0) return;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    for (int row = grid_->LastSelected(); row >= first; --row) ids.push_back(grid_->RowData(row));
    app::RemoveResults(context_.session, race_, ids);
    edited_ = true;
    for (int row = grid_->LastSelected(); row >= first; --row) {
      if (grid_->AllRows() > 1) {
        grid_->RemoveRow(row);
        continue;
      }
      grid_->SetRow(row, {});
    }
  });
  grid_->SelectRows(first, first);
  SelectionChanged();
  Guarded(context_.ui, [&] { ShowOutcome(); });
}

void frmEditRace::Recalculate() {
  const common::Message warning{
      "Recalculating this race will calculate points according to the currently selected\r\n"
      "point and bonus system.  Any point or bonus changes you've make to this race\r\n"
      "will be lost.  Also, any gaps in finishing position will be eliminated.\r\n"
      "Do you want to continue?",
      "Warning", common::MessageIcon::Exclamation};
  if (context_.ui.Ask(warning, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    {
      const WaitCursor wait;
      if (race_.staged) {
        scoring::RecalculateRace(context_.templateDb, context_.session.League(), context_.state, race_.id,
                                 true);
      } else {
        app::Recalculate(context_.session, context_.ui, {race_.id});
      }
      edited_ = true;
    }
    FillGrid();
  });
}

}  // namespace scorvane::forms
