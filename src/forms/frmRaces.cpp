#include "forms/frmRaces.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "app/LeagueSession.h"
#include "app/RaceList.h"
#include "app/SimFolders.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "forms/Drops.h"
#include "forms/widgets/Guard.h"
#include "forms/widgets/Icons.h"
#include "forms/widgets/Text.h"
#include "platform/Platform.h"

namespace scorvane::forms {
frmRaces::frmRaces(FormContext& context) : context_(context) {
  setObjectName(QStringLiteral("frmRaces"));
  setWindowTitle(Q(common::kApplicationTitle));
  setAcceptDrops(true);
  // Half the screen and in its middle: without a place, some desktops put it into a corner beside the splash.
  const QRect desktop = screen()->availableGeometry();
  resize(desktop.size() / 2);
  move(desktop.center() - QRect({}, size()).center());

  auto* center = new QWidget(this);
  auto* layout = new QVBoxLayout(center);
  watch_ =
      new WatchBar(context, [this](const std::vector<std::string>& paths) { ImportOffered(paths); }, center);
  layout->addWidget(watch_);
  BuildGrid(center);
  layout->addWidget(grid_);
  BuildFileMenu();
  layout->addLayout(BuildRaceMenu(center));
  BuildToolsMenu();
  BuildSeasonMenu();
  BuildHelpMenu();
  setCentralWidget(center);
  ShowRecentFiles();
  ShowNoRaces();
  grid_->setFocus();
}

void frmRaces::BuildGrid(QWidget* parent) {
  grid_ = new SelectionGrid(QStringLiteral("fgRaces"), parent);
  grid_->setAccessibleName(tr("Races of the league"));
  grid_->SetColumns({{tr("Race"), 3000, Qt::AlignLeft},
                     {tr("Laps"), 700, Qt::AlignHCenter},
                     {tr("Miles"), 800, Qt::AlignHCenter},
                     {tr("Standings File"), 2500, Qt::AlignLeft}});
  grid_->horizontalHeader()->setStretchLastSection(true);
  grid_->SetArrangeable();
  connect(grid_, &SelectionGrid::SelectionChanged, this, &frmRaces::UpdateCommands);
  connect(grid_, &SelectionGrid::InsertPressed, this, [this] {
    if (context_.session.IsOpen()) Run(&frmRaces::Import);
  });
  connect(grid_, &SelectionGrid::DeletePressed, this, [this] {
    if (context_.session.IsOpen()) Run(&frmRaces::RemoveRaces);
  });
  connect(grid_, &SelectionGrid::EnterPressed, this, [this] {
    if (IsMet(Needs::OneRace)) Run(&frmRaces::EditRace);
  });
  connect(grid_, &SelectionGrid::RowDoubleClicked, this, [this](int clicked) {
    if (grid_->RowData(clicked) >= 1) Run(&frmRaces::EditRace);
  });
}

// ---- commands and when they can be chosen

QAction* frmRaces::AddItem(QMenu* menu, const char* name, int index, const char* icon, const QString& caption,
                           const QKeySequence& shortcut, Handler handler, Needs needs) {
  QAction* item = menu->addAction(CommandIcon(icon), caption);
  item->setObjectName(QStringLiteral("%1_%2").arg(QString::fromLatin1(name)).arg(index));
  item->setShortcut(shortcut);
  connect(item, &QAction::triggered, this, [this, handler] { Run(handler); });
  commands_.push_back({item, needs});
  return item;
}

void frmRaces::Run(Handler command) {
  (this->*command)();
  season_->AfterCommand();
}

void frmRaces::BuildFileMenu() {
  constexpr int kFirstRecentItem = 12;
  QMenu* file = menuBar()->addMenu(tr("&File"));
  AddItem(file, "mnuFile", 0, "document-new", tr("&New"), Qt::CTRL | Qt::Key_N, &frmRaces::NewLeagueFile);
  AddItem(file, "mnuFile", 1, "document-open", tr("&Open..."), Qt::CTRL | Qt::Key_O,
          &frmRaces::OpenLeagueFileDialog);
  file->addSeparator();
  AddItem(file, "mnuFile", 8, "document-properties", tr("&Properties"), Qt::CTRL | Qt::Key_P,
          &frmRaces::ShowProperties, Needs::League);
  file->addSeparator();
  AddItem(file, "mnuFile", 10, "preferences-system", tr("Op&tions"), {}, &frmRaces::ShowOptions);
  file->addSeparator();
  for (int slot = 0; slot < app::RecentFiles::kSlots; ++slot) {
    QAction* item = file->addAction(tr("Recent File %1").arg(slot + 1));
    item->setObjectName(QStringLiteral("mnuFile_%1").arg(kFirstRecentItem + slot));
    connect(item, &QAction::triggered, this, [this, slot] { OpenLeagueFile(std::string(recent_[slot])); });
    recentItems_.push_back(item);
  }
  recentSeparator_ = file->addSeparator();
  QAction* exit = file->addAction(CommandIcon("application-exit"), tr("&Exit"));
  exit->setObjectName(QStringLiteral("mnuFile_17"));
  connect(exit, &QAction::triggered, this, &QWidget::close);
}

// The Race menu, and a row of buttons that do the same as its items.
QLayout* frmRaces::BuildRaceMenu(QWidget* parent) {
  QMenu* race = menuBar()->addMenu(tr("&Race"));
  QAction* import = AddItem(race, "mnuRace", 0, "document-import", tr("&Import..."), Qt::CTRL | Qt::Key_I,
                            &frmRaces::Import, Needs::League);
  QAction* remove = AddItem(race, "mnuRace", 1, "edit-delete", tr("&Remove"), Qt::CTRL | Qt::Key_R,
                            &frmRaces::RemoveRaces, Needs::Races);
  QAction* edit = AddItem(race, "mnuRace", 2, "document-edit", tr("&Edit..."), Qt::CTRL | Qt::Key_E,
                          &frmRaces::EditRace, Needs::OneRace);
  race->addSeparator();
  QAction* calculate = AddItem(race, "mnuRace", 4, "accessories-calculator", tr("&Calculate..."),
                               Qt::CTRL | Qt::Key_C, &frmRaces::Calculate, Needs::Races);
  race->addSeparator();
  QAction* html = AddItem(race, "mnuRace", 6, "text-html", tr("&HTML"), Qt::CTRL | Qt::Key_H,
                          &frmRaces::ExportRace, Needs::OneRace);

  grid_->SetMenu({edit, remove, html, nullptr, import, calculate});
  auto* row = new QHBoxLayout;
  int index = 0;
  auto addButton = [&](const QString& caption, QAction* item, const QString& toolTip = {}) {
    auto* button = new QPushButton(item->icon(), caption, parent);
    button->setObjectName(QStringLiteral("cmdButton_%1").arg(index++));
    button->setToolTip(toolTip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, item, &QAction::trigger);
    connect(item, &QAction::enabledChanged, button, &QWidget::setEnabled);
    row->addWidget(button);
  };
  addButton(tr("Calculate"), calculate);
  addButton(tr("Edit"), edit);
  addButton(tr("Remove"), remove);
  addButton(tr("Import"), import);
  addButton(tr("HTML..."), html, tr("Export results of selected race to HTML"));
  row->addStretch();
  return row;
}

void frmRaces::BuildToolsMenu() {
  QMenu* tools = menuBar()->addMenu(tr("&Tools"));
  AddItem(tools, "mnuTools", 0, "x-office-address-book", tr("&Driver List"), {}, &frmRaces::DriverList,
          Needs::League);
  AddItem(tools, "mnuTools", 1, "view-list-ordered", tr("&Point System"), {}, &frmRaces::PointSystem,
          Needs::League);
  tools->addSeparator();
  AddItem(tools, "mnuTools", 3, "network-offline", tr("Offline Settings"), {}, &frmRaces::OfflineSettings,
          Needs::OfflineLeague);
}

// What concerns the season as a whole.
void frmRaces::BuildSeasonMenu() {
  mnuSeason_ = menuBar()->addMenu(tr("&Season"));
  mnuSeason_->setObjectName(QStringLiteral("mnuSeason"));
  season_ = new SeasonMenu(
      context_, this, mnuSeason_,
      {[this] { ShowLeagueAgain(); }, [this](const std::string& path) { OpenLeagueFile(path); },
       [this] { CloseLeagueFile(); }});
}

void frmRaces::BuildHelpMenu() {
  QMenu* help = menuBar()->addMenu(tr("&Help"));
  AddItem(help, "mnuHelp", 0, "help-contents", tr("View &ReadMe.htm"), {}, &frmRaces::ViewReadMe);
  AddItem(help, "mnuHelp", 1, "help-about", tr("&About"), {}, &frmRaces::About);
}

bool frmRaces::IsMet(Needs needs) const {
  const bool open = context_.session.IsOpen();
  switch (needs) {
    case Needs::Nothing:
      return true;
    case Needs::League:
      return open;
    case Needs::OfflineLeague:
      return open && context_.state.leagueType == common::kOffline;
    case Needs::Races:
      return open && HasRaces();
    case Needs::OneRace:
      return open && HasRaces() && grid_->OneRowSelected();
  }
  return false;
}

QString frmRaces::Hint() const {
  if (!context_.session.IsOpen())
    return tr(
        "No league is open.\n\nFile > New (Ctrl+N) makes one, File > Open (Ctrl+O) opens one.\n"
        "Or drop a league file here.");
  if (!HasRaces())
    return tr(
        "This league has no races yet.\n\nImport (Ctrl+I) brings in the result files that the "
        "simulation wrote.");
  return {};
}

void frmRaces::UpdateCommands() {
  for (const Command& command : commands_) command.item->setEnabled(IsMet(command.needs));
  grid_->SetHint(Hint());
}

void frmRaces::ShowRecentFiles() {
  for (int slot = 0; slot < app::RecentFiles::kSlots; ++slot) {
    QAction* item = recentItems_[static_cast<std::size_t>(slot)];
    // An ampersand in a path is no mnemonic.
    item->setText(QStringLiteral("&%1 %2").arg(slot + 1).arg(
        Q(recent_[slot]).replace(QLatin1Char('&'), QStringLiteral("&&"))));
    item->setVisible(!recent_[slot].empty());
  }
  recentSeparator_->setVisible(!recent_.IsEmpty());
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
    grid_->RestoreOrder();
    FillRaceGrid();
    recent_.Add(context_.session.League().Name());
    ShowRecentFiles();
    season_->LeagueChanged();
    watch_->LeagueOpened();
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
  grid_->SelectRows(0, 0);
  UpdateCommands();
  season_->LeagueChanged();
  watch_->LeagueOpened();
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
    grid_->SelectRows(0, 0);
    grid_->setUpdatesEnabled(true);
  }
  UpdateCommands();
  std::vector<std::int32_t> ids;
  ids.reserve(races.size());
  for (const app::ListedRace& race : races) ids.push_back(race.id);
  watch_->ShowsRaces(ids);
}

void frmRaces::ShowLeagueAgain() {
  const std::vector<int> current = {grid_->RowData(grid_->CurrentRow())};
  const int row = grid_->CurrentRow();
  Guarded(context_.ui, [&] { FillRaceGrid(); });
  grid_->SelectData(current, row);
}

// Another program may have the league open, too: what it has changed is shown when the user comes back.
void frmRaces::ShowOthersChanges() {
  if (!context_.session.IsOpen() || !context_.session.League().ChangedByOthers()) return;
  Guarded(context_.ui, [&] { app::ReadLeagueSettings(context_.session.League(), context_.state); });
  ShowLeagueAgain();
  season_->OthersChanged();
}

bool frmRaces::event(QEvent* event) {
  const bool done = QMainWindow::event(event);
  if (event->type() == QEvent::WindowActivate) ShowOthersChanges();
  if (event->type() == QEvent::WindowUnblocked && QApplication::applicationState() == Qt::ApplicationActive) {
    // A dialog that closes together with its question leaves some desktops without a window to type into.
    QTimer::singleShot(0, this, [this] {
      if (QApplication::activeModalWidget() == nullptr) activateWindow();
    });
  }
  return done;
}

void frmRaces::dragEnterEvent(QDragEnterEvent* event) {
  if (!DraggedLeague(event->mimeData()).empty() ||
      (context_.session.IsOpen() && !DraggedResults(event->mimeData()).empty()))
    event->acceptProposedAction();
}

void frmRaces::dropEvent(QDropEvent* event) {
  const std::string path = DraggedLeague(event->mimeData());
  const std::vector<std::string> results = DraggedResults(event->mimeData());
  if (path.empty() && (results.empty() || !context_.session.IsOpen())) return;
  event->acceptProposedAction();
  // Later, so that the program it comes from does not wait for what opening may ask.
  QTimer::singleShot(0, this, [this, path, results] {
    if (!path.empty()) return OpenLeagueFile(path);
    dropped_ = results;
    Run(&frmRaces::Import);
  });
}

void frmRaces::closeEvent(QCloseEvent* event) {
  CloseLeagueFile();
  recent_.Save(context_.templateDb);
  context_.state.tracks.reset();
  event->accept();
}

}  // namespace scorvane::forms
