#include "forms/frmPlayoff.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPainter>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>
#include <string>
#include <utility>

#include "app/Commands.h"
#include "app/RaceList.h"
#include "championship/Reports.h"
#include "championship/RuleFiles.h"
#include "common/Paths.h"
#include "forms/RaceChoice.h"
#include "forms/ReportGrid.h"
#include "forms/Undoing.h"
#include "forms/widgets/ButtonRow.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

using championship::PlayoffFormat;
using championship::PlayoffStage;

enum Button { kLoad, kSaveAs, kSave, kCancel };

// Who goes on, in words.
QString WhoText(const PlayoffStage& stage) {
  const auto within = [](int places) {
    return places > 0 ? frmPlayoff::tr(" (of the first %1)").arg(places) : QString();
  };
  QStringList parts;
  if (stage.leaderIsWinner) parts << frmPlayoff::tr("the leader");
  if (stage.byWins) parts << frmPlayoff::tr("winners") + within(stage.winnersWithin);
  parts << (parts.isEmpty() ? frmPlayoff::tr("by points") : frmPlayoff::tr("then by points"));
  if (stage.within > 0) parts << frmPlayoff::tr("within %1 points of the leader").arg(stage.within);
  if (stage.wildCards > 0)
    parts << frmPlayoff::tr("%1 more by wins").arg(stage.wildCards) + within(stage.wildCardsWithin);
  return parts.join(QStringLiteral(", "));
}

QString StartText(const PlayoffStage& stage) {
  QStringList parts;
  if (stage.points) {
    parts << QString::number(*stage.points);
    if (stage.step > 0) parts << frmPlayoff::tr("less %1 a place").arg(stage.step);
    if (stage.winBonus > 0) parts << frmPlayoff::tr("%1 more a win").arg(stage.winBonus);
  } else {
    parts << frmPlayoff::tr("what he has");
  }
  if (!stage.bonusCounts) parts << frmPlayoff::tr("no bonus points");
  return parts.join(QStringLiteral(", "));
}

// Whether a format is this preset, begun elsewhere.
bool IsPreset(const PlayoffFormat& format, PlayoffFormat preset) {
  const int after = format.stages.front().after;
  if (after > championship::LatestBegin(preset)) return false;
  championship::BeginAfter(preset, after);
  preset.late = format.late;
  return championship::PlayoffText(preset) == championship::PlayoffText(format);
}

// A text that has what room there is, and says when it is cut off.
class CutLabel : public QLabel {
 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.drawText(contentsRect(), static_cast<int>(Qt::AlignLeading | Qt::AlignVCenter),
                     fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
  }
};

}  // namespace

frmPlayoff::frmPlayoff(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmPlayoff"));
  setWindowTitle(tr("Playoff"));
  setLayout(new QVBoxLayout);
  BuildControls();
  BuildGrids();
  auto* box = static_cast<QVBoxLayout*>(layout());
  buttons_ = AddButtons(box, this,
                        {{kLoad, tr("&Load..."), tr("Take a format from a JSON file")},
                         {kSaveAs, tr("Save &As..."), tr("Write this format into a JSON file")},
                         {kSave, tr("&Save"), tr("Make this the league's playoff")},
                         {kCancel, tr("Cancel")}});
  // What concerns files stands at the left.
  auto* row = static_cast<QHBoxLayout*>(box->itemAt(box->count() - 1)->layout());
  row->insertItem(2, row->takeAt(0));
  buttons_[kSave]->setDefault(true);
  connect(buttons_[kLoad], &QPushButton::clicked, this, &frmPlayoff::LoadFile);
  connect(buttons_[kSaveAs], &QPushButton::clicked, this, &frmPlayoff::SaveFile);
  connect(buttons_[kSave], &QPushButton::clicked, this, &frmPlayoff::Save);
  connect(buttons_[kCancel], &QPushButton::clicked, this, &QDialog::reject);
  connect(cboFormat_, &QComboBox::currentIndexChanged, this, &frmPlayoff::ShowEntry);
  connect(spnAfter_, &QSpinBox::valueChanged, this, &frmPlayoff::ShowFormat);
  Load();
  resize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 32);
  cboFormat_->setFocus();
}

void frmPlayoff::BuildControls() {
  cboFormat_ = new QComboBox(this);
  cboFormat_->setObjectName(QStringLiteral("cboFormat"));
  cboFormat_->setAccessibleName(tr("Playoff"));
  cboFormat_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cboFormat_->setMinimumContentsLength(24);
  auto* lblFormat = new QLabel(tr("&Playoff:"), this);
  lblFormat->setBuddy(cboFormat_);
  spnAfter_ = new NumberBox(QStringLiteral("spnAfter"), tr("Races before it begins"), this);
  auto* lblAfter = new QLabel(tr("&Begins after race:"), this);
  lblAfter->setBuddy(spnAfter_);
  lblRace_ = new CutLabel(this);
  lblRace_->setObjectName(QStringLiteral("lblRace"));
  lblRace_->setTextFormat(Qt::PlainText);
  lblRace_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* row = new QHBoxLayout;
  row->addWidget(lblFormat);
  row->addWidget(cboFormat_, 2);
  row->addSpacing(fontMetrics().height());
  row->addWidget(lblAfter);
  row->addWidget(spnAfter_);
  row->addWidget(lblRace_, 1);
  static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

void frmPlayoff::BuildGrids() {
  auto* box = static_cast<QVBoxLayout*>(layout());
  fgStages_ = new SelectionGrid(QStringLiteral("fgStages"), this);
  fgStages_->setAccessibleName(tr("Stages of the playoff"));
  fgStages_->SetColumns({{tr("Stage"), 1500, Qt::AlignLeft},
                         {tr("After Race"), 900, Qt::AlignHCenter},
                         {tr("Drivers"), 700, Qt::AlignHCenter},
                         {tr("Who Goes On"), 5200, Qt::AlignLeft},
                         {tr("Starts With"), 2000, Qt::AlignLeft}});
  fgStages_->horizontalHeader()->setStretchLastSection(true);
  fgStages_->setMinimumHeight(fgStages_->fontMetrics().height() * 8);
  box->addWidget(fgStages_, 2);
  lblSource_ = new QLabel(this);
  lblSource_->setObjectName(QStringLiteral("lblSource"));
  lblSource_->setTextFormat(Qt::PlainText);
  lblSource_->setWordWrap(true);
  // It grows and goes; the window does not have to.
  lblSource_->setMinimumHeight(lblSource_->fontMetrics().height());
  box->addWidget(lblSource_);
  lblOutlook_ = new QLabel(this);
  lblOutlook_->setObjectName(QStringLiteral("lblOutlook"));
  box->addWidget(lblOutlook_);
  fgOutlook_ = new SelectionGrid(QStringLiteral("fgOutlook"), this);
  fgOutlook_->setAccessibleName(tr("Who is in the playoff"));
  ShowPlaces(*fgOutlook_);
  fgOutlook_->SetArrangeable();
  lblOutlook_->setBuddy(fgOutlook_);
  box->addWidget(fgOutlook_, 3);
}

void frmPlayoff::AddEntry(const Entry& entry) {
  const QSignalBlocker quiet(cboFormat_);
  cboFormat_->addItem(entry.text);
  entries_.push_back(entry);
}

void frmPlayoff::Load() {
  unreadable_ =
      !Guarded(context_.ui, [&] { stored_ = championship::ReadPlayoff(context_.session.League()); });
  AddEntry({tr("None"), {}, {}});
  int chosen = 0;
  for (const championship::PlayoffPreset& preset : championship::ListPlayoffPresets()) {
    Entry entry{Q(preset.name), championship::PresetPlayoff(preset.name), Q(preset.source)};
    if (stored_ && IsPreset(*stored_, *entry.format)) {
      entry.format = stored_;
      chosen = static_cast<int>(entries_.size());
    } else if (stored_) {
      entry.format->late = stored_->late;  // that is how it was, whatever the format
    }
    AddEntry(entry);
  }
  if (stored_ && chosen == 0) {
    chosen = static_cast<int>(entries_.size());
    AddEntry({tr("%1 (of this league)").arg(Q(stored_->name)), stored_, {}});
  }
  {
    const QSignalBlocker quiet(cboFormat_);
    cboFormat_->setCurrentIndex(chosen);
  }
  ShowEntry();
}

std::optional<PlayoffFormat> frmPlayoff::Chosen() const {
  std::optional<PlayoffFormat> format = entries_[static_cast<std::size_t>(cboFormat_->currentIndex())].format;
  if (format) championship::BeginAfter(*format, spnAfter_->value());
  return format;
}

void frmPlayoff::ShowEntry() {
  const Entry& entry = entries_[static_cast<std::size_t>(cboFormat_->currentIndex())];
  {
    const QSignalBlocker quiet(spnAfter_);
    spnAfter_->setRange(1, entry.format ? championship::LatestBegin(*entry.format) : 1);
    spnAfter_->setValue(entry.format ? entry.format->stages.front().after : 1);
    spnAfter_->setEnabled(entry.format.has_value());
  }
  lblSource_->setText(entry.source);
  ShowFormat();
}

void frmPlayoff::ShowFormat() {
  const std::optional<PlayoffFormat> format = Chosen();
  std::vector<SelectionGrid::Row> rows;
  if (format) {
    for (const PlayoffStage& stage : format->stages)
      rows.push_back({{Q(stage.name), QString::number(stage.after), QString::number(stage.drivers),
                       WhoText(stage), StartText(stage)}});
  }
  if (rows.empty()) rows.emplace_back();
  fgStages_->SetRows(std::move(rows));
  for (int column = 0; column < fgStages_->ColumnCount(); ++column) fgStages_->FitColumn(column);
  fgStages_->SelectRows(0, 0);
  fgStages_->SetHint(format ? QString()
                            : tr("The league has no playoff: whoever has the most points is champion."));
  lblRace_->clear();
  Guarded(context_.ui, [&] {
    const auto races = app::ListRaces(context_.session.League());
    if (!format) return;
    const auto place = static_cast<std::size_t>(spnAfter_->value());
    // Races that came late stand elsewhere in the season than in the list.
    if (place > races.size()) lblRace_->setText(tr("to come"));
    if (place <= races.size() && format->late.empty()) lblRace_->setText(Q(races[place - 1].name));
    lblRace_->setToolTip(ToolTipText(lblRace_->text()));
    lblOutlook_->setText(races.size() < place ? tr("&Who would be in if it began now:") : tr("&Who is in:"));
  });
  ShowOutlook(format);
  const auto text = [](const std::optional<PlayoffFormat>& one) {
    return one ? championship::PlayoffText(*one) : std::string();
  };
  buttons_[kSave]->setEnabled(unreadable_ || text(format) != text(stored_));
  buttons_[kSaveAs]->setEnabled(format.has_value());
}

void frmPlayoff::ShowOutlook(const std::optional<PlayoffFormat>& format) {
  lblOutlook_->setVisible(format.has_value());
  fgOutlook_->setVisible(format.has_value());
  if (!format) return;
  Guarded(context_.ui, [&] {
    const WaitCursor wait;
    const auto table = championship::RunPlayoffOutlook(context_.session.League(), context_.state, *format);
    ShowReport(*fgOutlook_, table, context_.state.decimalSeparator);
    fgOutlook_->horizontalHeader()->setStretchLastSection(true);
    fgOutlook_->SetHint(table.rows.empty() ? tr("No race has been driven yet.") : QString());
  });
}

void frmPlayoff::LoadFile() {
  common::FileRequest request;
  request.filter = kPlayoffFilter;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (chosen.empty()) return;
  Guarded(context_.ui, [&] {
    const PlayoffFormat format = championship::ReadPlayoffFile(chosen.front());
    AddEntry({tr("%1 (%2)").arg(Q(format.name), Q(common::GetFileTitle(chosen.front()))), format, {}});
    cboFormat_->setCurrentIndex(cboFormat_->count() - 1);
  });
}

void frmPlayoff::SaveFile() {
  const std::optional<PlayoffFormat> format = Chosen();
  if (!format) return;
  common::FileRequest request;
  request.filter = kPlayoffFilter;
  request.name = format->name + ".json";
  std::replace_if(
      request.name.begin(), request.name.end(), [](char c) { return c == '/' || c == '\\'; }, '-');
  std::string path = context_.ui.SaveFile(request);
  if (path.empty()) return;
  if (common::GetExtension(common::GetFileTitle(path)).empty()) path += ".json";
  const common::Message question{"The file \"" + path + "\" already exists!  Overwrite it?", "File Exists",
                                 common::MessageIcon::None};
  if (common::FileExists(path) && context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes)
    return;
  Guarded(context_.ui, [&] { championship::WritePlayoffFile(path, *format); });
}

// An error leaves the dialog open, with what was chosen.
void frmPlayoff::Save() {
  spnAfter_->interpretText();
  const bool saved = Guarded(context_.ui, [&] {
    const WaitCursor wait;
    if (const std::optional<PlayoffFormat> format = Chosen())
      app::SetPlayoff(context_.session, *format);
    else
      app::ClearPlayoff(context_.session);
  });
  if (saved) accept();
}

}  // namespace scorvane::forms
