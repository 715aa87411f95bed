#include "forms/frmStats.h"

#include <QGridLayout>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "championship/Reports.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "forms/ReportGrid.h"
#include "forms/SavePage.h"
#include "forms/frmEditColumns.h"
#include "forms/frmExport.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "forms/widgets/Twips.h"

namespace scorvane::forms {
namespace {

constexpr int kHtmlButton = 0;
constexpr int kColumnsButton = 1;
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
  caption_->setBuddy(fgCalcs_);
  ShowPlaces(*fgCalcs_);
  fgCalcs_->SetArrangeable();
  fgCalcs_->SetMenu({buttons_[kHtmlButton], buttons_[kColumnsButton]});
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
    marks_ = reports::MarkDroppedRaces(context_.session.League(), context_.state.droppedRaces);
    caption_->setText(Q(reports::StandingsCaption(*marks_)));
  });
  Guarded(context_.ui, [&] {
    const QSignalBlocker quiet(cboStat_);
    for (const reports::ReportInfo& report :
         championship::ListReports(context_.session.League(), context_.templateDb))
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
    engine::Database& league = context_.session.League();
    if (marks_) caption_->setText(Q(championship::ReportCaption(league, ReportID(), *marks_)));
    const auto table = championship::RunReport(league, context_.templateDb, context_.state, ReportID());
    if (table) ShowReport(*fgCalcs_, *table, context_.state.decimalSeparator);
  });
  // What is worked out for teams and makes has no columns in the template.
  buttons_[kColumnsButton]->setEnabled(ReportID() > 0);
  if (!shown) fgCalcs_->SetColumns({});
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
    reports::PageSubject subject{reports::PageSubject::kReport, ReportID()};
    std::optional<reports::ReportTable> table;
    if (championship::IsComputed(league, context_.templateDb, subject.id)) {
      table = championship::RunReport(league, context_.templateDb, context_.state, subject.id);
      if (table) table = championship::ForPage(std::move(*table));
      if (table) subject.table = &*table;
    }
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
