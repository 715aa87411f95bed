#include "forms/frmSeasonView.h"

#include <fmt/format.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>
#include <utility>

#include "common/Formats.h"
#include "common/Paths.h"
#include "forms/RaceChoice.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/GridPicture.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "site/SeasonCharts.h"

namespace scorvane::forms {
namespace {

constexpr int kFirstDrivers = 10;
constexpr std::size_t kMostLines = 20;      // whose names find room beside the chart
constexpr std::size_t kMostFinishes = 200;  // of a driver, in bars that can be told apart
constexpr int kBoxCharacters = 24;

QComboBox* Box(const char* name, const QString& reader, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(QString::fromLatin1(name));
  box->setAccessibleName(reader);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(kBoxCharacters);
  return box;
}

// A box in front of what it chooses.
QLayout* ChoiceRow(const QString& caption, QWidget* box, QWidget* parent) {
  auto* label = new QLabel(caption, parent);
  label->setBuddy(box);
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(box);
  row->addStretch();
  return row;
}

template <typename Number>
QString Known(const std::optional<Number>& number) {
  return number ? QString::number(*number) : QStringLiteral("--");
}

QString Average(std::int64_t sum, int count, char decimal) {
  if (count == 0) return QStringLiteral("--");
  return Q(common::LocalizeDecimal(fmt::format("{:.1f}", static_cast<double>(sum) / count), decimal));
}

}  // namespace

frmSeasonView::frmSeasonView(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmSeasonView"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  setWindowFlag(Qt::WindowMinimizeButtonHint);
  setSizeGripEnabled(true);
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(QStringLiteral("ts"));
  tabs_->setAccessibleName(tr("What is shown"));
  tabs_->addTab(BuildPoints(), tr("&Points"));
  tabs_->addTab(BuildMatrix(), tr("&Matrix"));
  tabs_->addTab(BuildDriver(), tr("&Driver"));
  tabs_->addTab(BuildRace(), tr("&Race"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_, 1);
  const auto buttons = AddButtons(layout, this, {{0, tr("Close"), tr("Close this window")}});
  connect(buttons.at(0), &QPushButton::clicked, this, &QDialog::close);
  connect(tabs_, &QTabWidget::currentChanged, this, &frmSeasonView::ShowTab);
  connect(lstDrivers_, &QListWidget::itemChanged, this, &frmSeasonView::ShowPoints);
  connect(cboCells_, &QComboBox::currentIndexChanged, this, &frmSeasonView::ShowMatrix);
  connect(cboDriver_, &QComboBox::currentIndexChanged, this, &frmSeasonView::ShowDriver);
  connect(cboRace_, &QComboBox::currentIndexChanged, this, &frmSeasonView::ShowRace);
  Refresh();
  resize(fontMetrics().averageCharWidth() * 150, fontMetrics().height() * 36);
}

QWidget* frmSeasonView::BuildPoints() {
  auto* page = new QWidget(tabs_);
  lstDrivers_ = new CheckList(QStringLiteral("lstDrivers"), tr("Drivers that are shown"), page);
  const int width = lstDrivers_->fontMetrics().averageCharWidth() * 30;
  lstDrivers_->setFixedWidth(width);
  lblMost_ = new QLabel(page);
  lblMost_->setObjectName(QStringLiteral("lblMost"));
  lblMost_->setWordWrap(true);
  lblMost_->setMaximumWidth(width);
  const auto button = [&](const char* name, const QString& caption, const QString& toolTip, int count) {
    auto* tick = new QPushButton(caption, page);
    tick->setObjectName(QString::fromLatin1(name));
    tick->setToolTip(toolTip);
    tick->setAutoDefault(false);
    connect(tick, &QPushButton::clicked, this, [this, count] { Tick(count); });
    return tick;
  };
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(
      button("cmdFirst", tr("&First 10"), tr("Show the first ten of the standings"), kFirstDrivers));
  buttons->addWidget(button("cmdNone", tr("&None"), tr("Show no driver"), 0));
  auto* drivers = new QVBoxLayout;
  drivers->addWidget(lstDrivers_, 1);
  drivers->addWidget(lblMost_);
  drivers->addLayout(buttons);
  chtPoints_ = new ChartView(QStringLiteral("chtPoints"), tr("Points race by race"), page);
  auto* layout = new QHBoxLayout(page);
  layout->addLayout(drivers);
  layout->addWidget(chtPoints_, 1);
  return page;
}

QWidget* frmSeasonView::BuildMatrix() {
  auto* page = new QWidget(tabs_);
  cboCells_ = Box("cboCells", tr("What the cells show"), page);
  cboCells_->addItems({tr("Finish"), tr("Points")});
  auto* legend = new QLabel(tr("Wins are bold, results that do not count are struck out."), page);
  matrix_ = new MatrixModel(this);
  fgMatrix_ = new QTableView(page);
  fgMatrix_->setObjectName(QStringLiteral("fgMatrix"));
  fgMatrix_->setAccessibleName(tr("Every driver in every race"));
  fgMatrix_->setModel(matrix_);
  fgMatrix_->setTabKeyNavigation(false);
  fgMatrix_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  fgMatrix_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  fgMatrix_->setWordWrap(false);
  const QFontMetrics metrics = fgMatrix_->fontMetrics();
  fgMatrix_->horizontalHeader()->setDefaultSectionSize(metrics.horizontalAdvance(QStringLiteral("00000")) +
                                                       6);
  fgMatrix_->horizontalHeader()->setMinimumSectionSize(metrics.horizontalAdvance(QStringLiteral("000")));
  fgMatrix_->verticalHeader()->setDefaultSectionSize(metrics.height() + 6);
  fgMatrix_->verticalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  fgMatrix_->verticalHeader()->setTextElideMode(Qt::ElideRight);
  fgMatrix_->verticalHeader()->setMaximumWidth(metrics.averageCharWidth() * 34);
  auto* copy = new QAction(tr("Copy as Picture"), fgMatrix_);
  connect(copy, &QAction::triggered, this, [this] {
    const QImage picture = PictureOf(*fgMatrix_);
    if (!picture.isNull()) QApplication::clipboard()->setImage(picture);
  });
  fgMatrix_->addAction(copy);
  fgMatrix_->setContextMenuPolicy(Qt::ActionsContextMenu);
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(ChoiceRow(tr("&Show:"), cboCells_, page));
  layout->addWidget(fgMatrix_, 1);
  layout->addWidget(legend);
  return page;
}

QWidget* frmSeasonView::BuildDriver() {
  auto* page = new QWidget(tabs_);
  cboDriver_ = Box("cboDriver", tr("Driver"), page);
  lblSeason_ = new QLabel(page);
  lblSeason_->setObjectName(QStringLiteral("lblSeason"));
  lblSeason_->setTextFormat(Qt::PlainText);
  lblSeason_->setWordWrap(true);
  chtFinishes_ = new ChartView(QStringLiteral("chtFinishes"), tr("Finishes"), page);
  fgResults_ = new SelectionGrid(QStringLiteral("fgResults"), page);
  fgResults_->SetArrangeable();
  fgResults_->setAccessibleName(tr("The driver's results"));
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(ChoiceRow(tr("Dri&ver:"), cboDriver_, page));
  layout->addWidget(lblSeason_);
  layout->addWidget(chtFinishes_, 2);
  layout->addWidget(fgResults_, 3);
  return page;
}

QWidget* frmSeasonView::BuildRace() {
  auto* page = new QWidget(tabs_);
  cboRace_ = Box("cboRace", tr("Race"), page);
  auto* scroll = new QScrollArea(page);
  scroll->setWidgetResizable(true);
  scroll->setFocusPolicy(Qt::NoFocus);
  chtMovers_ = new ChartView(QStringLiteral("chtMovers"), tr("Places gained and lost"), scroll);
  scroll->setWidget(chtMovers_);
  auto* layout = new QVBoxLayout(page);
  layout->addLayout(ChoiceRow(tr("Ra&ce:"), cboRace_, page));
  layout->addWidget(scroll, 1);
  return page;
}

void frmSeasonView::Read() {
  season_ = {};
  hint_.clear();
  if (!context_.session.IsOpen()) {
    hint_ = tr("No league is open.");
    return;
  }
  try {
    engine::Database& league = context_.session.League();
    engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::TakeBack,
                            engine::UnitOfWork::Begin::Reading);
    season_ = site::ReadModel(league, context_.state);
    unit.Commit();
    if (season_.results.empty()) hint_ = tr("This league has no results yet.");
  } catch (const std::exception& error) {
    // No message: it would come up after every command.
    season_ = {};
    hint_ = Q(error.what());
  }
}

void frmSeasonView::Refresh() {
  const std::string before =
      std::exchange(league_, context_.session.IsOpen() ? context_.session.League().Name() : std::string());
  setWindowTitle(league_.empty() ? tr("Season View")
                                 : tr("Season View - ") + Q(common::GetFileTitle(league_, true)));
  const WaitCursor wait;
  // The old season goes: nothing may look at it any more.
  matrix_->Show(nullptr, MatrixModel::Cells::Finish);
  Read();
  FillChoices(before != league_);
  shown_.fill(false);
  ShowTab();
}

void frmSeasonView::FillChoices(bool anew) {
  const QSignalBlocker quietDrivers(lstDrivers_);
  const QSignalBlocker quietDriver(cboDriver_);
  const QSignalBlocker quietRace(cboRace_);
  const std::vector<std::int32_t> ticked = lstDrivers_->Ticked();
  const bool first = anew || lstDrivers_->count() == 0;
  const int current = lstDrivers_->currentRow();
  const QVariant driver = anew ? QVariant() : cboDriver_->currentData();
  const QVariant race = anew ? QVariant() : cboRace_->currentData();
  lstDrivers_->clear();
  cboDriver_->clear();
  cboRace_->clear();
  for (const std::uint32_t place : season_.standings) {
    const site::SiteDriver& shown = season_.drivers[place];
    const QString text = QStringLiteral("%1 %2").arg(shown.position).arg(Q(shown.name));
    lstDrivers_->Add(text, shown.id);
    const int row = lstDrivers_->count() - 1;
    const bool ticks =
        first ? row < kFirstDrivers : std::find(ticked.begin(), ticked.end(), shown.id) != ticked.end();
    if (ticks) lstDrivers_->item(row)->setCheckState(Qt::Checked);
    cboDriver_->addItem(text, shown.id);
  }
  for (const site::SiteDriver& shown : season_.drivers)
    if (shown.position == 0 && !shown.results.empty()) cboDriver_->addItem(Q(shown.name), shown.id);
  for (std::size_t i = 0; i < season_.races.size(); ++i)
    cboRace_->addItem(RaceText(static_cast<std::int32_t>(i) + 1, RaceName(season_.races[i])),
                      season_.races[i].id);
  lstDrivers_->setCurrentRow(std::min(std::max(current, 0), lstDrivers_->count() - 1));
  cboDriver_->setCurrentIndex(std::max(cboDriver_->findData(driver), cboDriver_->count() > 0 ? 0 : -1));
  // The last one is the one that is talked about.
  const int chosen = cboRace_->findData(race);
  cboRace_->setCurrentIndex(chosen >= 0 ? chosen : cboRace_->count() - 1);
}

void frmSeasonView::Tick(int count) {
  {
    const QSignalBlocker quiet(lstDrivers_);
    for (int row = 0; row < lstDrivers_->count(); ++row)
      lstDrivers_->item(row)->setCheckState(row < count ? Qt::Checked : Qt::Unchecked);
  }
  lstDrivers_->viewport()->update();
  ShowPoints();
}

void frmSeasonView::ShowTab() {
  const int tab = tabs_->currentIndex();
  if (shown_[static_cast<std::size_t>(tab)]) return;
  shown_[static_cast<std::size_t>(tab)] = true;
  switch (tab) {
    case kPoints:
      return ShowPoints();
    case kMatrix:
      return ShowMatrix();
    case kDriver:
      return ShowDriver();
    default:
      return ShowRace();
  }
}

void frmSeasonView::ShowPoints() {
  std::vector<std::uint32_t> drivers;
  std::size_t ticked = 0;
  for (int row = 0; row < lstDrivers_->count(); ++row) {
    if (lstDrivers_->item(row)->checkState() != Qt::Checked) continue;
    if (++ticked <= kMostLines) drivers.push_back(season_.standings[static_cast<std::size_t>(row)]);
  }
  lblMost_->setText(ticked > kMostLines
                        ? tr("Of %1 drivers the first %2 are shown.").arg(ticked).arg(kMostLines)
                        : QString());
  lblMost_->setVisible(ticked > kMostLines);
  charts::LineInput input = site::PointsByRace(season_, drivers);
  input.description =
      Utf8(tr("The points of %n drivers after each race.", nullptr, static_cast<int>(drivers.size())));
  if (!season_.standings.empty()) {
    const site::SiteDriver& leader = season_.drivers[season_.standings.front()];
    input.description += fmt::format(" {} leads with {}.", leader.name, leader.Points());
  }
  chtPoints_->SetChart(charts::LineChart(input),
                       hint_.isEmpty() ? tr("Tick the drivers whose points you want to see.") : hint_);
}

void frmSeasonView::ShowMatrix() {
  matrix_->Show(&season_,
                cboCells_->currentIndex() == 0 ? MatrixModel::Cells::Finish : MatrixModel::Cells::Points);
  if (matrix_->columnCount() > 0)
    fgMatrix_->setColumnWidth(0, fgMatrix_->fontMetrics().horizontalAdvance(QStringLiteral("0000000")) + 12);
}

void frmSeasonView::ShowDriver() {
  const auto found = std::find_if(season_.drivers.begin(), season_.drivers.end(), [this](const auto& driver) {
    return cboDriver_->currentIndex() >= 0 && driver.id == cboDriver_->currentData().toInt();
  });
  if (found == season_.drivers.end()) {
    lblSeason_->clear();
    fgResults_->SetColumns({});
    chtFinishes_->SetChart(charts::PlaceChart({}), hint_);
    return;
  }
  const championship::Totals& totals = found->Counted();
  const QString place = found->position == 0 ? tr("In no table") : tr("Position %1").arg(found->position);
  lblSeason_->setText(
      tr("%1 with %2 points: %3 wins, %4 top five, %5 top ten and %6 poles in %7 starts, %8 laps led.  "
         "Average start %9")
          .arg(place)
          .arg(found->Points())
          .arg(totals.Wins())
          .arg(totals.Top(5))
          .arg(totals.Top(10))
          .arg(totals.poles)
          .arg(totals.starts)
          .arg(totals.lapsLed)
          .arg(Average(totals.startSum, totals.startsKnown, season_.decimal)) +
      tr(", finish %1.").arg(Average(totals.finishSum, totals.finishesKnown, season_.decimal)));
  const auto index = static_cast<std::uint32_t>(found - season_.drivers.begin());
  chtFinishes_->SetChart(charts::PlaceChart(site::FinishesOf(season_, index, kMostFinishes)),
                         hint_.isEmpty() ? tr("No finish of this driver is known.") : hint_);
  FillResults(*found, index);
}

void frmSeasonView::FillResults(const site::SiteDriver& driver, std::uint32_t index) {
  const auto right = Qt::AlignRight;
  const QSignalBlocker quiet(fgResults_);
  fgResults_->SetColumns({{tr("Race"), 2400, Qt::AlignLeft},
                          {tr("Start"), 600, right},
                          {tr("Finish"), 600, right},
                          {tr("Laps"), 600, right},
                          {tr("Led"), 600, right},
                          {tr("Points"), 700, right},
                          {tr("Bonus"), 700, right},
                          {tr("Status"), 1100, Qt::AlignLeft},
                          {tr("Counts"), 800, Qt::AlignLeft},
                          {tr("Position After"), 1100, right},
                          {tr("Points After"), 1100, right},
                          {tr("Behind"), 800, right}});
  std::vector<SelectionGrid::Row> rows;
  rows.reserve(driver.results.size());
  for (const std::uint32_t place : driver.results) {
    const site::SiteResult& result = season_.results[place];
    SelectionGrid::Row row;
    row.cells = {RaceText(static_cast<std::int32_t>(result.race) + 1, RaceName(season_.races[result.race])),
                 Known(result.start),
                 Known(result.finish),
                 Known(result.lapsRun),
                 Known(result.lapsLed),
                 Known(result.points),
                 Known(result.bonus),
                 Q(season_.Status(result)),
                 result.dropped ? tr("dropped") : tr("yes")};
    row.data = result.id;
    const site::SiteMoment* moment = season_.MomentAfter(result.race);
    if (moment != nullptr && moment->position[index] > 0) {
      const std::int64_t points = moment->points[index].value_or(0);
      const std::int64_t behind = moment->leader - points;
      row.cells << QString::number(moment->position[index]) << QString::number(points)
                << (behind == 0 ? QStringLiteral("--") : QString::number(behind));
    }
    rows.push_back(std::move(row));
  }
  fgResults_->SetRows(std::move(rows));
  for (int column = 0; column < fgResults_->ColumnCount(); ++column) fgResults_->FitColumn(column);
  if (fgResults_->RowCount() > 0) fgResults_->SelectRows(0, 0);
}

void frmSeasonView::ShowRace() {
  charts::ShiftInput input;
  if (cboRace_->currentIndex() >= 0)
    input = site::PlacesGained(season_, static_cast<std::size_t>(cboRace_->currentIndex()));
  // Who gained most stands above.
  std::stable_sort(input.rows.begin(), input.rows.end(),
                   [](const auto& a, const auto& b) { return a.from - a.to > b.from - b.to; });
  charts::Chart chart = charts::ShiftChart(input);
  chtMovers_->setMinimumHeight(input.rows.empty() ? 0 : static_cast<int>(chart.height));
  chtMovers_->SetChart(std::move(chart),
                       hint_.isEmpty() ? tr("No start and finish of this race are known.") : hint_);
}

void frmSeasonView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F5)
    Refresh();
  else
    QDialog::keyPressEvent(event);
}

}  // namespace scorvane::forms
