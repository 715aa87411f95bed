#include "forms/frmRaces.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>

#include "app/LeagueSession.h"
#include "app/RaceList.h"
#include "app/SimFolders.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "forms/SavePage.h"
#include "forms/frmAddRaces.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditRace.h"
#include "forms/frmExport.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmOptions.h"
#include "forms/frmPointSystem.h"
#include "forms/frmSplash.h"
#include "forms/frmStats.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {
namespace {

constexpr int kPropertiesItem = 8;
constexpr std::size_t kFirstRecentItem = 12;
constexpr int kRecentSeparator = 16;

}  // namespace

frmRaces::frmRaces(FormContext& context) : context_(context) {
  setObjectName(QStringLiteral("frmRaces"));
  setWindowTitle(Q(common::kApplicationTitle));
  // Half the screen and in its middle: without a place, some desktops put it into a corner beside the splash.
  const QRect desktop = screen()->availableGeometry();
  resize(desktop.size() / 2);
  move(desktop.center() - QRect({}, size()).center());

  auto* center = new QWidget(this);
  auto* layout = new QVBoxLayout(center);
  grid_ = new SelectionGrid(QStringLiteral("fgRaces"), center);
  grid_->setAccessibleName(tr("Races of the league"));
  grid_->SetColumns({{tr("Race"), 3000, Qt::AlignLeft},
                     {tr("Laps"), 700, Qt::AlignHCenter},
                     {tr("Miles"), 800, Qt::AlignHCenter},
                     {tr("Standings File"), 2500, Qt::AlignLeft}});
  grid_->horizontalHeader()->setStretchLastSection(true);
  layout->addWidget(grid_);
  auto* row = new QHBoxLayout;
  static constexpr const char* kCaptions[] = {"Calculate", "Edit", "Remove", "Import", "HTML..."};
  static constexpr void (frmRaces::* kCommands[])() = {&frmRaces::Calculate, &frmRaces::EditRace,
                                                       &frmRaces::RemoveRaces, &frmRaces::Import,
                                                       &frmRaces::ExportRace};
  for (int i = 0; i < kButtons; ++i) {
    auto* button = new QPushButton(QString::fromLatin1(kCaptions[i]), center);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(i));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, kCommands[i]);
    row->addWidget(button);
    buttons_[static_cast<std::size_t>(i)] = button;
  }
  buttons_[kHtmlButton]->setToolTip(tr("Export results of selected race to HTML"));
  row->addStretch();
  layout->addLayout(row);
  setCentralWidget(center);

  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmRaces::SelectionChanged);
  connect(grid_, &SelectionGrid::InsertPressed, this, [this] {
    if (context_.session.IsOpen()) Import();
  });
  connect(grid_, &SelectionGrid::DeletePressed, this, [this] {
    if (context_.session.IsOpen()) RemoveRaces();
  });
  connect(grid_, &SelectionGrid::EnterPressed, this, [this] {
    if (grid_->OneRowSelected() && HasRaces()) EditRace();
  });
  connect(grid_, &SelectionGrid::RowDoubleClicked, this, [this](int clicked) {
    if (grid_->RowData(clicked) >= 1) EditRace();
  });
  BuildMenus();
  ShowNoRaces();
  grid_->setFocus();
}

QAction* frmRaces::AddItem(QMenu* menu, const char* name, int index, const QString& caption,
                           const QKeySequence& shortcut, void (frmRaces::*command)()) {
  QAction* action = menu->addAction(caption);
  action->setObjectName(QStringLiteral("%1_%2").arg(QString::fromLatin1(name)).arg(index));
  action->setShortcut(shortcut);
  connect(action, &QAction::triggered, this, command);
  return action;
}

void frmRaces::BuildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  auto fileItem = [&](std::size_t index, const QString& caption, const QKeySequence& shortcut,
                      void (frmRaces::*command)()) {
    fileItems_[index] = AddItem(file, "mnuFile", static_cast<int>(index), caption, shortcut, command);
  };
  fileItem(0, tr("&New"), Qt::CTRL | Qt::Key_N, &frmRaces::NewLeagueFile);
  fileItem(1, tr("&Open..."), Qt::CTRL | Qt::Key_O, &frmRaces::OpenLeagueFileDialog);
  fileItems_[7] = file->addSeparator();
  fileItem(kPropertiesItem, tr("&Properties"), Qt::CTRL | Qt::Key_P, &frmRaces::ShowProperties);
  fileItems_[9] = file->addSeparator();
  fileItem(10, tr("Op&tions"), {}, &frmRaces::ShowOptions);
  fileItems_[11] = file->addSeparator();
  for (int slot = 0; slot < app::RecentFiles::kSlots; ++slot) {
    QAction* action = file->addAction(tr("Recent File %1").arg(slot + 1));
    action->setObjectName(
        QStringLiteral("mnuFile_%1").arg(kFirstRecentItem + static_cast<std::size_t>(slot)));
    connect(action, &QAction::triggered, this, [this, slot] { OpenLeagueFile(std::string(recent_[slot])); });
    fileItems_[kFirstRecentItem + static_cast<std::size_t>(slot)] = action;
  }
  fileItems_[kRecentSeparator] = file->addSeparator();
  QAction* exit = file->addAction(tr("&Exit"));
  exit->setObjectName(QStringLiteral("mnuFile_17"));
  connect(exit, &QAction::triggered, this, &QWidget::close);
  fileItems_[17] = exit;

  QMenu* race = menuBar()->addMenu(tr("&Race"));
  auto raceItem = [&](std::size_t index, const QString& caption, const QKeySequence& shortcut,
                      void (frmRaces::*command)()) {
    raceItems_[index] = AddItem(race, "mnuRace", static_cast<int>(index), caption, shortcut, command);
  };
  raceItem(kImportItem, tr("&Import..."), Qt::CTRL | Qt::Key_I, &frmRaces::Import);
  raceItem(kRemoveItem, tr("&Remove"), Qt::CTRL | Qt::Key_R, &frmRaces::RemoveRaces);
  raceItem(kEditItem, tr("&Edit..."), Qt::CTRL | Qt::Key_E, &frmRaces::EditRace);
  race->addSeparator();
  raceItem(kCalculateItem, tr("&Calculate..."), Qt::CTRL | Qt::Key_C, &frmRaces::Calculate);
  race->addSeparator();
  raceItem(kHtmlItem, tr("&HTML"), Qt::CTRL | Qt::Key_H, &frmRaces::ExportRace);

  QMenu* tools = menuBar()->addMenu(tr("&Tools"));
  auto toolItem = [&](std::size_t index, const QString& caption, void (frmRaces::*command)()) {
    toolItems_[index] = AddItem(tools, "mnuTools", static_cast<int>(index), caption, {}, command);
  };
  toolItem(kDriverListItem, tr("&Driver List"), &frmRaces::DriverList);
  toolItem(kPointSystemItem, tr("&Point System"), &frmRaces::PointSystem);
  tools->addSeparator();
  toolItem(kOfflineSettingsItem, tr("Offline Settings"), &frmRaces::OfflineSettings);

  QMenu* help = menuBar()->addMenu(tr("&Help"));
  AddItem(help, "mnuHelp", 0, tr("View &ReadMe.htm"), {}, &frmRaces::ViewReadMe);
  AddItem(help, "mnuHelp", 1, tr("&About"), {}, &frmRaces::About);
  ShowRecentFiles();
}

void frmRaces::ShowRecentFiles() {
  for (int slot = 0; slot < app::RecentFiles::kSlots; ++slot) {
    QAction* action = fileItems_[kFirstRecentItem + static_cast<std::size_t>(slot)];
    // An ampersand in a path is no mnemonic.
    action->setText(QStringLiteral("&%1 %2").arg(slot + 1).arg(
        Q(recent_[slot]).replace(QLatin1Char('&'), QStringLiteral("&&"))));
    action->setVisible(!recent_[slot].empty());
  }
  fileItems_[kRecentSeparator]->setVisible(!recent_.IsEmpty());
}

void frmRaces::StartUp(const std::string& argument) {
  Guarded(context_.ui, [&] {
    app::ReadSimFolders(context_.templateDb, context_.state);
    if (!app::ScanDefaultPaths(context_.templateDb, context_.state, context_.ui)) {
      context_.ui.ShowMessage({"Please locate where a supported version of NASCAR Racing is installed.",
                               "Notice", common::MessageIcon::Information});
      ShowOptions();
    }
    recent_.Load(context_.templateDb);
    ShowRecentFiles();
  });
  if (argument.empty()) {
    const bool reopen =
        engine::LeadingNumber(common::GetSettingValue(context_.templateDb, common::kOpenPreviousFile)) == 1;
    const std::string previous = common::GetSettingValue(context_.templateDb, common::kRecentFile1);
    if (reopen && previous != common::kMissingSetting && !common::TrimBlanks(previous).empty())
      OpenLeagueFile(previous);
    return;
  }
  const std::string beside = common::JoinPath(platform::ApplicationFolder(), argument);
  if (common::FileExists(argument)) {
    OpenLeagueFile(argument);
  } else if (common::FileExists(beside)) {
    OpenLeagueFile(beside);
  } else {
    context_.ui.ShowMessage(
        {"\"" + argument + "\" does not exist!", "File Not Found", common::MessageIcon::Exclamation});
  }
}

// ---- the league file

void frmRaces::OpenLeagueFile(const std::string& path) {
  const bool done = Guarded(context_.ui, [&] {
    bool opened = false;
    {
      const WaitCursor wait;
      opened = context_.session.OpenLeagueFile(path);
    }
    if (!context_.session.IsOpen()) ShowNoRaces();
    if (!opened) return;
    setWindowTitle(Q(common::GetFileTitle(path, true)) + QStringLiteral(" - ") +
                   Q(common::kApplicationTitle));
    FillRaceGrid();
    recent_.Add(context_.session.League().Name());
    ShowRecentFiles();
  });
  // A file that could not be opened, or not be read to its end, is not half open.
  if (!done) CloseLeagueFile();
}

void frmRaces::CloseLeagueFile() {
  context_.session.CloseLeagueFile();
  ShowNoRaces();
}

void frmRaces::ShowNoRaces() {
  setWindowTitle(Q(common::kApplicationTitle));
  grid_->SetRows({SelectionGrid::Row{}});
  for (QPushButton* button : buttons_) button->setEnabled(false);
  for (QAction* item : raceItems_)
    if (item != nullptr) item->setEnabled(false);
  for (QAction* item : toolItems_)
    if (item != nullptr) item->setEnabled(false);
  fileItems_[kPropertiesItem]->setEnabled(false);
  grid_->SelectRows(0, 0);
}

void frmRaces::FillRaceGrid() {
  const std::vector<app::ListedRace> races = app::ListRaces(context_.session.League());
  {
    const QSignalBlocker quiet(grid_);
    grid_->setUpdatesEnabled(false);
    std::vector<SelectionGrid::Row> rows;
    rows.reserve(races.size() + 1);
    for (const app::ListedRace& race : races)
      rows.push_back({{Q(race.name), Q(race.laps), Q(race.miles), Q(race.fileName)}, race.id});
    if (rows.empty()) rows.emplace_back();
    grid_->SetRows(std::move(rows));
    grid_->FitColumn(0);
    grid_->setUpdatesEnabled(true);
  }
  buttons_[kImportButton]->setEnabled(true);
  raceItems_[kImportItem]->setEnabled(true);
  fileItems_[kPropertiesItem]->setEnabled(true);
  toolItems_[kDriverListItem]->setEnabled(true);
  toolItems_[kPointSystemItem]->setEnabled(true);
  toolItems_[kOfflineSettingsItem]->setEnabled(context_.state.leagueType == common::kOffline);
  EnableRaceCommands(!races.empty());
  grid_->SelectRows(0, 0);
  SelectionChanged();
}

void frmRaces::EnableRaceCommands(bool enabled) {
  buttons_[kRemoveButton]->setEnabled(enabled);
  raceItems_[kRemoveItem]->setEnabled(enabled);
  buttons_[kCalculateButton]->setEnabled(enabled);
  raceItems_[kCalculateItem]->setEnabled(enabled);
  SelectionChanged();
}

void frmRaces::SelectionChanged() {
  const bool one = context_.session.IsOpen() && HasRaces() && grid_->OneRowSelected();
  buttons_[kEditButton]->setEnabled(one);
  raceItems_[kEditItem]->setEnabled(one);
  buttons_[kHtmlButton]->setEnabled(one);
  raceItems_[kHtmlItem]->setEnabled(one);
}

void frmRaces::closeEvent(QCloseEvent* event) {
  CloseLeagueFile();
  recent_.Save(context_.templateDb);
  context_.state.tracks.reset();
  event->accept();
}

// ---- commands

void frmRaces::NewLeagueFile() {
  Guarded(context_.ui, [&] {
    frmLGXProperties dialog(context_, this);
    dialog.NewDialog(true);
    dialog.setWindowTitle(tr("New Scorvane File"));
    dialog.exec();
    if (!context_.session.IsOpen()) ShowNoRaces();
    if (dialog.Created()) OpenLeagueFile(dialog.FileName());
  });
}

void frmRaces::OpenLeagueFileDialog() {
  common::FileRequest request;
  request.filter = "Scorvane File (*.lgx)|*.lgx";
  request.folder = platform::ApplicationFolder();
  const std::vector<std::string> chosen = context_.ui.OpenFiles(request);
  if (!chosen.empty()) OpenLeagueFile(chosen.front());
}

void frmRaces::ShowProperties() {
  Guarded(context_.ui, [&] {
    frmLGXProperties dialog(context_, this);
    dialog.NewDialog(false);
    dialog.setWindowTitle(tr("Properties - ") +
                          Q(common::GetFileTitle(context_.session.League().Name(), true)));
    dialog.exec();
  });
}

void frmRaces::Import() {
  Guarded(context_.ui, [&] {
    frmAddRaces dialog(context_, this);
    dialog.exec();
  });
  if (context_.session.IsOpen()) Guarded(context_.ui, [&] { FillRaceGrid(); });
}

void frmRaces::RemoveRaces() {
  const common::Message question{
      "This will remove the results of this race and cannot be undone.\r\nDo you want to continue?",
      "Confirmation", common::MessageIcon::None};
  if (context_.ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return;
  Guarded(context_.ui, [&] {
    std::vector<std::int32_t> ids;
    for (int row = grid_->LastSelected(); row >= grid_->FirstSelected() && HasRaces(); --row)
      ids.push_back(grid_->RowData(row));
    app::RemoveRaces(context_.session.League(), ids);
  });
  const int row = grid_->FirstSelected();
  Guarded(context_.ui, [&] { FillRaceGrid(); });
  grid_->SelectRows(row, row);
}

void frmRaces::Calculate() {
  Guarded(context_.ui, [&] {
    frmStats dialog(context_, this);
    dialog.exec();
  });
}

void frmRaces::ShowOptions() {
  Guarded(context_.ui, [&] {
    const PlainCursor plain;
    frmOptions dialog(context_, this);
    dialog.exec();
  });
}

void frmRaces::ViewReadMe() {
  std::string path = common::JoinPath(platform::ApplicationFolder(), "ReadMe.htm");
  if (!common::FileExists(path)) path = common::JoinPath(platform::InstalledFolder(), "ReadMe.htm");
  if (!common::FileExists(path) || !context_.ui.ShellOpen(path)) {
    context_.ui.ShowMessage({"The ReadMe.htm file is missing.", "Error", common::MessageIcon::Exclamation});
  }
}

void frmRaces::About() {
  frmSplash about(this);
  about.ShowAbout();
}

void frmRaces::EditRace() {
  Guarded(context_.ui, [&] {
    frmEditRace dialog(context_, {grid_->RowData(grid_->CurrentRow()), false}, this);
    dialog.exec();
  });
}

void frmRaces::ExportRace() {
  Guarded(context_.ui, [&] {
    engine::Database& league = context_.session.League();
    const reports::PageSubject subject{reports::PageSubject::kRace, grid_->RowData(grid_->CurrentRow())};
    const reports::PageTexts texts =
        reports::RacePageTexts(league, subject.id, context_.state.decimalSeparator);
    frmExport dialog(context_, subject, this);
    dialog.setWindowTitle(tr("Export Race Results to HTML"));
    dialog.Heading(texts.heading);
    dialog.ReportName(texts.reportName);
    dialog.Caption(texts.caption);
    dialog.exec();
    if (dialog.Cancelled()) return;
    common::FileRequest request;
    request.filter = "HTML File (*.htm)|*.htm";
    request.name = "Race Result.htm";
    SavePage(context_, subject, dialog.Texts(), request);
  });
}

void frmRaces::DriverList() {
  Guarded(context_.ui, [&] { frmDriverList(context_, this).exec(); });
}

void frmRaces::PointSystem() {
  Guarded(context_.ui, [&] {
    frmPointSystem(context_, this).exec();
    app::ReadLeagueSettings(context_.session.League(), context_.state);
  });
}

void frmRaces::OfflineSettings() {
  Guarded(context_.ui, [&] { frmOfflineSettings(context_, this).exec(); });
}

}  // namespace scorvane::forms
