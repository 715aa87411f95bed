#include "forms/frmStats.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <string>
#include <vector>

#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "forms/SavePage.h"
#include "forms/frmEditColumns.h"
#include "forms/frmExport.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "forms/widgets/Twips.h"
#include "reports/DroppedRaces.h"

namespace scorvane::forms {
namespace {

constexpr int kHtmlButton = 0;
constexpr int kColumnsButton = 1;
constexpr int kPositionTwips = 300;
constexpr int kGeneralAlignment = 9;

Qt::Alignment AlignmentOf(int code) {
  if (code >= 3 && code <= 5) return Qt::AlignHCenter;
  return code >= 6 && code <= 8 ? Qt::AlignRight : Qt::AlignLeft;
}

}  // namespace

frmStats::frmStats(FormContext& context, QWidget* parent)
    : QDialog(parent),
      context_(context),
      cboStat_(new QComboBox(this)),
      caption_(new QLabel(tr("Results:"), this)),
      fgCalcs_(new SelectionGrid(QStringLiteral("fgCalcs"), this)) {
  setObjectName(QStringLiteral("frmStats"));
  setWindowTitle(tr("Points and Stats"));
  setWindowFlag(Qt::WindowMaximizeButtonHint);
  auto* layout = new QGridLayout(this);
  auto* label = new QLabel(tr("Statistic to view:"), this);
  label->setBuddy(cboStat_);
  cboStat_->setObjectName(QStringLiteral("cboStat"));
  cboStat_->setAccessibleName(tr("Statistic to view"));
  // A long name widens its list, not the window.
  cboStat_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cboStat_->setMinimumContentsLength(12);
  layout->addWidget(label, 0, 0);
  layout->addWidget(cboStat_, 1, 0);

  auto* column = new QVBoxLayout;
  column->setSpacing(TwipsToPixels(60, this));
  const QString captions[] = {tr("HTML..."), tr("Columns...")};
  for (int i = 0; i < 2; ++i) {
    auto* button = new QPushButton(captions[i], this);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(i));
    button->setAutoDefault(false);
    column->addWidget(button);
    buttons_[static_cast<std::size_t>(i)] = button;
  }
  column->addStretch();
  buttons_[kHtmlButton]->setToolTip(tr("Export this report into an HTML file."));
  layout->addLayout(column, 1, 1, 3, 1);

  caption_->setObjectName(QStringLiteral("Label2"));
  caption_->setTextFormat(Qt::PlainText);
  caption_->setWordWrap(true);
  layout->addWidget(caption_, 2, 0);
  fgCalcs_->setAccessibleName(tr("Report"));
  // The position stands beside the rows: it stays in sight while the columns scroll.
  QHeaderView* positions = fgCalcs_->verticalHeader();
  positions->setDefaultAlignment(Qt::AlignCenter);
  positions->setMinimumWidth(TwipsToPixels(kPositionTwips, this));
  positions->setHighlightSections(false);
  positions->show();
  layout->addWidget(fgCalcs_, 3, 0);
  layout->setRowStretch(3, 1);
  layout->setColumnStretch(0, 1);

  setTabOrder(cboStat_, buttons_[kHtmlButton]);
  setTabOrder(buttons_[kColumnsButton], fgCalcs_);
  const QScreen* shownOn = parent != nullptr ? parent->screen() : screen();
  resize(shownOn->size() * 3 / 4);

  connect(cboStat_, &QComboBox::currentIndexChanged, this, &frmStats::RunReport);
  connect(buttons_[kHtmlButton], &QPushButton::clicked, this, &frmStats::ExportStandingsHtml);
  connect(buttons_[kColumnsButton], &QPushButton::clicked, this, &frmStats::EditReportColumns);
  Load();
  cboStat_->setFocus();
}

void frmStats::Load() {
  Guarded(context_.ui, [&] {
    const WaitCursor wait;
    caption_->setText(Q(reports::StandingsCaption(
        reports::MarkDroppedRaces(context_.session.League(), context_.state.droppedRaces))));
  });
  Guarded(context_.ui, [&] {
    const QSignalBlocker quiet(cboStat_);
    for (const reports::ReportInfo& report : reports::ListReports(context_.templateDb))
      cboStat_->addItem(Q(report.name), report.id);
    if (cboStat_->count() == 0) throw engine::EngineError(engine::kNoCurrentRecord);
  });
  for (QPushButton* button : buttons_) button->setEnabled(cboStat_->count() > 0);
  RunReport();
}

std::int32_t frmStats::ReportID() const {
  return cboStat_->currentData().toInt();
}

void frmStats::RunReport() {
  if (cboStat_->currentIndex() < 0) return;
  // A report that fails leaves no other report's rows under its name.
  const bool shown = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    const auto table = reports::RunReport(context_.session.League(), context_.templateDb, ReportID());
    if (table) ShowReport(*table);
  });
  if (!shown) fgCalcs_->SetColumns({});
}

void frmStats::ShowReport(const reports::ReportTable& table) {
  const char decimal = context_.state.decimalSeparator;
  // The grid's own first column is the position, too; it is not shown a second time.
  const auto isNumber = [decimal](const QString& text) {
    double number = 0;
    return engine::ParseNumber(Utf8(text), decimal, number);
  };
  std::vector<SelectionGrid::Column> columns = {{{}, 0, Qt::AlignHCenter}};
  for (const reports::ReportColumn& column : table.columns) {
    columns.push_back({Q(column.name), column.hidden ? 0 : column.width, AlignmentOf(column.alignment)});
    if (column.alignment == kGeneralAlignment) columns.back().standsRight = isNumber;
  }
  std::vector<SelectionGrid::Row> rows;
  rows.reserve(table.rows.size());
  for (const std::vector<engine::Value>& values : table.rows) {
    QStringList& cells = rows.emplace_back().cells;
    cells << QString::number(rows.size());
    for (std::size_t i = 0; i < values.size(); ++i)
      cells << Q(reports::CellText(table.columns[i], values[i], decimal));
  }

  const QSignalBlocker quiet(fgCalcs_);
  fgCalcs_->setUpdatesEnabled(false);
  fgCalcs_->SetColumns(std::move(columns));
  fgCalcs_->SetRows(std::move(rows));
  for (int column = 0; column < fgCalcs_->ColumnCount(); ++column) fgCalcs_->FitColumn(column);
  fgCalcs_->setUpdatesEnabled(true);
  fgCalcs_->scrollToTop();
  if (fgCalcs_->RowCount() > 0) fgCalcs_->SelectRows(0, 0);
}

void frmStats::EditReportColumns() {
  Guarded(context_.ui, [&] {
    frmEditColumns editor(context_, ReportID(), cboStat_->currentText(), this);
    editor.exec();
    if (!editor.Cancelled()) RunReport();
  });
}

void frmStats::ExportStandingsHtml() {
  Guarded(context_.ui, [&] {
    engine::Database& league = context_.session.League();
    common::SaveSettingValue(league, common::kCaption, Utf8(caption_->text().chopped(1)));
    const reports::PageSubject subject{reports::PageSubject::kReport, ReportID()};
    const std::string reportName = Utf8(cboStat_->currentText());
    frmExport dialog(context_, subject, this);
    dialog.setWindowTitle(tr("Export to HTML"));
    dialog.ReportName(reportName);
    dialog.exec();
    if (dialog.Cancelled()) return;
    common::FileRequest request;
    request.filter = "HTML File (*.htm)|*.htm";
    request.name = reportName + ".htm";
    SavePage(context_, subject, dialog.Texts(), request);
  });
}

}  // namespace scorvane::forms
