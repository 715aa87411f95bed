#include "forms/frmOptions.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/ImportFiles.h"
#include "app/SimFolders.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"

namespace scorvane::forms {
namespace {

constexpr int kPathColumn = 1;

// A folder as it is stored: with one separator at its end.
std::string WithSeparator(const std::string& folder) {
  return folder.empty() ? folder : common::JoinPath(folder, "");
}

}  // namespace

frmOptions::frmOptions(FormContext& context, QWidget* parent) : QDialog(parent), context_(context) {
  setObjectName(QStringLiteral("frmOptions"));
  setWindowTitle(tr("Options"));
  auto* tabs = new QTabWidget(this);
  tabs->setAccessibleName(tr("Pages of options"));
  tabs->setObjectName(QStringLiteral("ts"));
  tabs->addTab(BuildPathsTab(), tr("Paths"));
  tabs->addTab(BuildHtmlTab(), tr("HTML"));
  tabs->addTab(BuildBackupsTab(), tr("Backups"));
  tabs->addTab(BuildWatchTab(), tr("Watch"));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("OKButton"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("CancelButton"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmOptions::Confirm);
  connect(buttons, &QDialogButtonBox::rejected, this, &frmOptions::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs, 1);
  layout->addWidget(buttons);

  const app::Options options =
      app::ReadOptions(context.templateDb, context.state,
                       context.session.IsOpen() ? context.session.League().Name() : std::string());
  chkLastFileFlag_->setChecked(options.openPreviousFile);
  chkImportAlerts_->setChecked(options.showImportAlerts);
  chkBGImage_->setChecked(options.useBackgroundImage);
  txtBGImage_->setText(Q(options.backgroundImage));
  for (std::size_t i = 0; i < lblColor_.size(); ++i) lblColor_[i]->SetColor(options.colors[i]);
  txtBackupFolder_->setText(Q(options.backups.folder));
  spnBackupDays_->setValue(options.backups.days);
  chkWatch_->setChecked(options.watch.on);
  txtWatchFolder_->setText(Q(options.watch.folder));
  ShowWatched();
  txtBGImage_->setEnabled(options.useBackgroundImage);
  cmdBGImage_->setEnabled(options.useBackgroundImage);
}

QWidget* frmOptions::BuildPathsTab() {
  auto* page = new QWidget(this);
  page->setObjectName(QStringLiteral("fraOptions_0"));
  fgPaths_ = new SelectionGrid(QStringLiteral("fgPaths"), page);
  fgPaths_->SetArrangeable();
  auto* label = new QLabel(tr("NASCAR Racing Paths"), page);
  label->setObjectName(QStringLiteral("lblPaths"));
  label->setBuddy(fgPaths_);
  fgPaths_->setAccessibleName(label->text());
  fgPaths_->SetColumns({{tr("NASCAR Sim"), 1750, Qt::AlignLeft}, {tr("Path"), 5000, Qt::AlignLeft}});
  fgPaths_->horizontalHeader()->setStretchLastSection(true);
  for (int i = 0; i < app::kSimulations; ++i) {
    const auto index = static_cast<std::size_t>(i);
    fgPaths_->AddRow({{Q(app::Simulations()[index].name), Q(context_.state.simFolders[index])}, i + 1});
  }
  fgPaths_->FitColumn(0);
  fgPaths_->setMinimumWidth(fgPaths_->columnWidth(0) + fgPaths_->columnWidth(1) + 20);
  cmdChange_ = new QPushButton(tr("Select Path"), page);
  cmdChange_->setObjectName(QStringLiteral("cmdChange"));
  cmdChange_->setToolTip(tr("Select a path for the selected NASCAR Racing sim"));
  auto* clear = new QPushButton(tr("Clear Path"), page);
  clear->setObjectName(QStringLiteral("cmdClear"));
  clear->setToolTip(tr("Clear the path for the selected NASCAR Racing sims"));
  chkImportAlerts_ = new QCheckBox(tr("Show alerts when importing result files"), page);
  chkImportAlerts_->setObjectName(QStringLiteral("chkImportAlerts"));
  chkLastFileFlag_ = new QCheckBox(tr("Open previous file on startup"), page);
  chkLastFileFlag_->setObjectName(QStringLiteral("chkLastFileFlag"));
  auto* row = new QHBoxLayout;
  for (QPushButton* button : {cmdChange_, clear}) {
    button->setAutoDefault(false);
    row->addWidget(button);
  }
  row->addStretch();
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(label);
  layout->addWidget(fgPaths_, 1);
  layout->addLayout(row);
  layout->addWidget(chkImportAlerts_);
  layout->addWidget(chkLastFileFlag_);
  connect(fgPaths_, &SelectionGrid::SelectionChanged, this,
          [this] { cmdChange_->setEnabled(fgPaths_->OneRowSelected()); });
  connect(fgPaths_, &SelectionGrid::RowDoubleClicked, cmdChange_, &QPushButton::click);
  connect(fgPaths_, &SelectionGrid::EnterPressed, cmdChange_, &QPushButton::click);
  connect(cmdChange_, &QPushButton::clicked, this, &frmOptions::SelectPath);
  connect(clear, &QPushButton::clicked, this, &frmOptions::ClearPaths);
  fgPaths_->SelectRows(0, 0);
  return page;
}

QWidget* frmOptions::BuildHtmlTab() {
  auto* page = new QWidget(this);
  page->setObjectName(QStringLiteral("fraOptions_1"));
  chkBGImage_ = new QCheckBox(tr("Background &Image"), page);
  chkBGImage_->setObjectName(QStringLiteral("chkBGImage"));
  txtBGImage_ = new EntryBox(QStringLiteral("txtBGImage"), page);
  txtBGImage_->setAccessibleName(tr("Background image"));
  cmdBGImage_ = new QPushButton(tr("Browse"), page);
  cmdBGImage_->setObjectName(QStringLiteral("cmdBGImage"));
  cmdBGImage_->setAutoDefault(false);
  connect(chkBGImage_, &QCheckBox::toggled, txtBGImage_, &QWidget::setEnabled);
  connect(chkBGImage_, &QCheckBox::toggled, cmdBGImage_, &QWidget::setEnabled);
  connect(cmdBGImage_, &QPushButton::clicked, this, &frmOptions::BrowseImage);
  auto* grid = new QGridLayout;
  const QString colors[] = {tr("Background:"), tr("Text:"), tr("Hyperlink:"), tr("Visited Hyperlink:"),
                            tr("ActiveHyperlink:")};
  const QString toolTips[] = {tr("Color of page background"), tr("Color of page text (table)"),
                              tr("Color of hyperlinks"), tr("Color of visited hyperlinks"),
                              tr("Color of the active hyperlink")};
  for (std::size_t i = 0; i < lblColor_.size(); ++i) {
    lblColor_[i] = new ColorSquare(QStringLiteral("lblColor_%1").arg(i), toolTips[i], context_.ui, page);
    lblColor_[i]->setToolTip(toolTips[i]);
    const int line = static_cast<int>(i);
    auto* label = new QLabel(colors[i], page);
    label->setBuddy(lblColor_[i]);
    grid->addWidget(label, line, 0);
    grid->addWidget(lblColor_[i], line, 1);
  }
  grid->setColumnStretch(2, 1);
  auto* note =
      new QLabel(tr("These settings are the defaults for new Scorvane files.  New files will take these "
                    "settings until changed in the HTML Export dialog.  Click the color squares to change "
                    "them."),
                 page);
  note->setWordWrap(true);
  auto* image = new QHBoxLayout;
  image->addWidget(txtBGImage_, 1);
  image->addWidget(cmdBGImage_);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(chkBGImage_);
  layout->addLayout(image);
  layout->addLayout(grid);
  layout->addStretch();
  layout->addWidget(note);
  return page;
}

QWidget* frmOptions::BuildBackupsTab() {
  auto* page = new QWidget(this);
  page->setObjectName(QStringLiteral("fraOptions_2"));
  txtBackupFolder_ = new EntryBox(QStringLiteral("txtBackupFolder"), page);
  txtBackupFolder_->setPlaceholderText(Q(app::BackupFolder({})));
  auto* label = new QLabel(tr("Folder for backups:"), page);
  label->setBuddy(txtBackupFolder_);
  txtBackupFolder_->setAccessibleName(tr("Folder for backups"));
  auto* browse = new QPushButton(tr("Browse"), page);
  browse->setObjectName(QStringLiteral("cmdBackupFolder"));
  browse->setToolTip(tr("Select the folder that backups go to"));
  browse->setAutoDefault(false);
  connect(browse, &QPushButton::clicked, this, &frmOptions::BrowseBackups);
  spnBackupDays_ = new QSpinBox(page);
  spnBackupDays_->setObjectName(QStringLiteral("spnBackupDays"));
  spnBackupDays_->setRange(0, app::kMostBackupDays);
  spnBackupDays_->setSpecialValueText(tr("None"));
  auto* days = new QLabel(tr("Days to keep a backup of:"), page);
  days->setBuddy(spnBackupDays_);
  spnBackupDays_->setAccessibleName(tr("Days to keep a backup of"));
  auto* note =
      new QLabel(tr("A league is backed up by itself before it is first changed on a day.  Of each league, "
                    "the backups of the last days with changes are kept.  Season > Back Up makes one at "
                    "any time, and Season > Restore puts one in the place of the league."),
                 page);
  note->setWordWrap(true);
  auto* folder = new QHBoxLayout;
  folder->addWidget(txtBackupFolder_, 1);
  folder->addWidget(browse);
  auto* number = new QHBoxLayout;
  number->addWidget(days);
  number->addWidget(spnBackupDays_);
  number->addStretch();
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(label);
  layout->addLayout(folder);
  layout->addLayout(number);
  layout->addStretch();
  layout->addWidget(note);
  return page;
}

QWidget* frmOptions::BuildWatchTab() {
  auto* page = new QWidget(this);
  page->setObjectName(QStringLiteral("fraOptions_3"));
  chkWatch_ = new QCheckBox(tr("&Watch for new result files of this league"), page);
  chkWatch_->setObjectName(QStringLiteral("chkWatch"));
  txtWatchFolder_ = new EntryBox(QStringLiteral("txtWatchFolder"), page);
  auto* label = new QLabel(tr("&Folder that they appear in:"), page);
  label->setBuddy(txtWatchFolder_);
  txtWatchFolder_->setAccessibleName(tr("Folder that result files appear in"));
  const auto add = [&](const char* name, const QString& caption, const QString& toolTip) {
    auto* button = new QPushButton(caption, page);
    button->setObjectName(QString::fromLatin1(name));
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    return button;
  };
  auto* browse =
      add("cmdWatchFolder", tr("Browse"), tr("Select the folder that the league's result files appear in"));
  auto* clear = add("cmdWatchClear", tr("Clear"), tr("Watch no folder for this league"));
  connect(browse, &QPushButton::clicked, this, &frmOptions::BrowseWatched);
  connect(clear, &QPushButton::clicked, txtWatchFolder_, &QLineEdit::clear);
  lblWatchState_ = new QLabel(page);
  lblWatchState_->setObjectName(QStringLiteral("lblWatchState"));
  lblWatchState_->setTextFormat(Qt::PlainText);
  lblWatchState_->setWordWrap(true);
  connect(txtWatchFolder_, &QLineEdit::textChanged, lblWatchState_, &QLabel::clear);
  connect(txtWatchFolder_, &QLineEdit::editingFinished, this, &frmOptions::ShowWatched);
  auto* note =
      new QLabel(tr("Each league has its own folder on this computer.  While the league is open, a result "
                    "file that appears there and is not in the league yet is offered above the races.  "
                    "Nothing is imported unasked."),
                 page);
  note->setWordWrap(true);
  auto* folder = new QHBoxLayout;
  folder->addWidget(txtWatchFolder_, 1);
  folder->addWidget(browse);
  folder->addWidget(clear);
  auto* layout = new QVBoxLayout(page);
  layout->addWidget(chkWatch_);
  layout->addWidget(label);
  layout->addLayout(folder);
  layout->addWidget(lblWatchState_);
  layout->addStretch();
  layout->addWidget(note);
  const bool open = context_.session.IsOpen();
  for (QWidget* part :
       {static_cast<QWidget*>(chkWatch_), static_cast<QWidget*>(label),
        static_cast<QWidget*>(txtWatchFolder_), static_cast<QWidget*>(browse), static_cast<QWidget*>(clear)})
    part->setEnabled(open);
  return page;
}

void frmOptions::SelectPath() {
  const int row = fgPaths_->CurrentRow();
  if (row < 0) return;
  const std::string name(app::Simulations()[static_cast<std::size_t>(fgPaths_->RowData(row)) - 1].fullName);
  const std::string folder = context_.ui.PickFolder("Locate the program folder for " + name + "...",
                                                    Utf8(fgPaths_->Cell(row, kPathColumn)));
  if (!folder.empty()) fgPaths_->SetCell(row, kPathColumn, Q(WithSeparator(folder)));
}

void frmOptions::ClearPaths() {
  for (int row = fgPaths_->FirstSelected(); row >= 0 && row <= fgPaths_->LastSelected(); ++row)
    fgPaths_->SetCell(row, kPathColumn, {});
}

void frmOptions::BrowseImage() {
  common::FileRequest request;
  request.title = "Select Background Image";
  request.filter = kImageFilter;
  request.filterIndex = 1;
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (!chosen.empty() && !common::TrimBlanks(chosen.front()).empty()) txtBGImage_->setText(Q(chosen.front()));
}

void frmOptions::BrowseBackups() {
  const std::string typed = Utf8(txtBackupFolder_->text());
  const std::string folder =
      context_.ui.PickFolder("Select the folder for backups...", app::BackupFolder({typed}));
  if (!folder.empty()) txtBackupFolder_->setText(Q(folder));
}

void frmOptions::BrowseWatched() {
  const std::string typed = Utf8(txtWatchFolder_->text());
  const std::string folder =
      context_.ui.PickFolder("Select the folder that the result files appear in...",
                             typed.empty() ? app::ResultFolder(context_.state) : typed);
  if (folder.empty()) return;
  txtWatchFolder_->setText(Q(folder));
  chkWatch_->setChecked(true);
  ShowWatched();
}

void frmOptions::ShowWatched() {
  const QString folder = txtWatchFolder_->text().trimmed();
  QString state;
  if (!context_.session.IsOpen()) {
    state = tr("Open a league first.");
  } else if (!folder.isEmpty() && !QDir(folder).exists()) {
    state = tr("There is no such folder now.  It is watched as soon as it is there.");
  }
  lblWatchState_->setText(state);
}

app::Options frmOptions::Chosen() const {
  app::Options options;
  for (const SelectionGrid::Row& row : fgPaths_->StoredRows())
    options.simFolders[static_cast<std::size_t>(row.data) - 1] = Utf8(row.cells.value(kPathColumn));
  options.useBackgroundImage = chkBGImage_->isChecked();
  options.backgroundImage = Utf8(txtBGImage_->text());
  for (std::size_t i = 0; i < lblColor_.size(); ++i) options.colors[i] = lblColor_[i]->Color();
  options.openPreviousFile = chkLastFileFlag_->isChecked();
  options.showImportAlerts = chkImportAlerts_->isChecked();
  if (context_.session.IsOpen()) options.watchedLeague = context_.session.League().Name();
  options.watch.folder = Utf8(txtWatchFolder_->text());
  options.watch.on = chkWatch_->isChecked();
  options.backups = {Utf8(txtBackupFolder_->text()), spnBackupDays_->value()};
  return options;
}

void frmOptions::Confirm() {
  const app::FolderCheck check = app::CheckSimFolders(Chosen().simFolders);
  if (!check.failing.empty()) {
    context_.ui.ShowMessage(check.message);
    return;
  }
  if (Store()) accept();
}

// An error leaves the dialog open, with what was chosen.
bool frmOptions::Store() {
  return Guarded(context_.ui, [&] {
    const WaitCursor wait;
    app::SaveOptions(context_.templateDb, context_.state, Chosen());
  });
}

void frmOptions::reject() {
  cancelled_ = true;
  QDialog::reject();
}

void frmOptions::closeEvent(QCloseEvent* event) {
  // The close box keeps what was chosen, as OK does, but checks no folder.
  event->setAccepted(Store());
  if (event->isAccepted()) accept();
}

}  // namespace scorvane::forms
