// Opens every window on the sample league and writes a picture of each: scorvane_screenshots FOLDER
// light|dark LEAGUE SAMPLES. tools/screenshots runs it for every theme and scale.
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QStyleFactory>
#include <QTabBar>
#include <QTabWidget>
#include <QTimer>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <tuple>
#include <vector>

#include "app/Commands.h"
#include "app/LeagueSession.h"
#include "app/NewLeague.h"
#include "common/Paths.h"
#include "forms/FormContext.h"
#include "forms/frmAddRaces.h"
#include "forms/frmDriverList.h"
#include "forms/frmEditColumns.h"
#include "forms/frmEditDriver.h"
#include "forms/frmEditDriver2.h"
#include "forms/frmEditRace.h"
#include "forms/frmExport.h"
#include "forms/frmHistory.h"
#include "forms/frmLGXProperties.h"
#include "forms/frmOfflineSettings.h"
#include "forms/frmOptions.h"
#include "forms/frmPenalties.h"
#include "forms/frmPenalty.h"
#include "forms/frmPickDriver.h"
#include "forms/frmPickDrivers.h"
#include "forms/frmPlayoff.h"
#include "forms/frmPointSystem.h"
#include "forms/frmPublish.h"
#include "forms/frmRaces.h"
#include "forms/frmSeasonView.h"
#include "forms/frmSplash.h"
#include "forms/frmStats.h"
#include "forms/frmTeams.h"
#include "forms/frmWhatIf.h"
#include "forms/widgets/QtUserInterface.h"
#include "forms/widgets/Text.h"
#include "history/History.h"
#include "platform/Platform.h"

namespace {

using namespace scorvane;

// Picks the sample's files where the program would show the file dialog.
class SampleInterface : public forms::QtUserInterface {
 public:
  std::vector<std::string> files;
  std::vector<std::string> OpenFiles(common::FileRequest&) override { return files; }
};

QPalette DarkPalette() {
  QPalette palette;
  const QColor window(45, 45, 48);
  const QColor base(30, 30, 32);
  const QColor text(225, 225, 225);
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::WindowText, text);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, window);
  palette.setColor(QPalette::Text, text);
  palette.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
  palette.setColor(QPalette::Button, window);
  palette.setColor(QPalette::ButtonText, text);
  palette.setColor(QPalette::ToolTipBase, window);
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::Highlight, QColor(42, 100, 170));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(110, 170, 255));
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
  return palette;
}

class Photographer {
 public:
  explicit Photographer(QString folder) : folder_(std::move(folder)) { QDir().mkpath(folder_); }

  void Take(QWidget& window, const char* name, const QSize& size = {}) {
    if (size.isValid()) window.resize(size);
    window.show();
    QApplication::processEvents();
    Save(window.grab(), name);
  }
  // The window with one of its menus open.
  void TakeMenu(QWidget& window, QMenu& menu, const char* name) {
    menu.popup(QPoint());
    QApplication::processEvents();
    const QPixmap opened = menu.grab();
    menu.close();
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    auto* bar = window.findChild<QMenuBar*>();
    painter.drawPixmap(bar->mapTo(&window, bar->actionGeometry(menu.menuAction()).bottomLeft()), opened);
    painter.end();
    Save(picture, name);
  }
  bool Failed() const { return failed_; }

 private:
  void Save(const QPixmap& picture, const char* name) {
    const QString path = folder_ + QLatin1Char('/') + QString::fromLatin1(name) + QStringLiteral(".png");
    if (picture.save(path)) return;
    std::fprintf(stderr, "screenshots: %s could not be written\n", qPrintable(path));
    failed_ = true;
  }

  QString folder_;
  bool failed_ = false;
};

// A few changes for the history to list; yields the first of them.
std::int64_t DoSomething(app::LeagueSession& session) {
  engine::Database& league = session.League();
  const auto all = drivers::ListDrivers(league);
  drivers::Driver renamed = all[3];
  renamed.name += " Jr.";
  app::UpdateDriver(session, renamed);
  const std::int64_t first = history::List(league).front().id;
  app::SetExclude(session, {all[5].id, all[6].id}, true);
  app::LeagueProperties properties;
  properties.droppedRaces = 5;
  app::StoreProperties(session, properties);
  app::Remove(session, {33});
  return first;
}

// Teams, makes and a playoff; yields the first of the changes.
std::int64_t MakeTeams(app::LeagueSession& session) {
  using championship::GroupKind;
  const auto join = [&](GroupKind kind, const char* name, const std::vector<std::int32_t>& drivers,
                        std::optional<std::int32_t> from) {
    const std::int32_t id = app::AddGroup(session, kind, name);
    app::JoinGroup(session, kind, {id, name}, drivers, from);
  };
  join(GroupKind::Team, "Hendrick Motorsports", {2, 3, 9}, std::nullopt);
  const std::int64_t first = history::List(session.League())[1].id;
  join(GroupKind::Team, "Richard Childress Racing", {1, 9}, 12);
  join(GroupKind::Team, "Roush Racing with a Name That Is Fifty Characters", {4, 5, 6}, std::nullopt);
  join(GroupKind::Make, "Chevrolet", {1, 2, 3, 9}, std::nullopt);
  join(GroupKind::Make, "Ford", {4, 5, 6}, std::nullopt);
  app::SetPlayoff(session, championship::PresetPlayoff("2014"));
  return first;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() != 5) return 2;
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  if (arguments[2] == QLatin1String("dark")) QApplication::setPalette(DarkPalette());
  Photographer photographer(arguments[1]);

  SampleInterface ui;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[4].toStdString()))
    if (entry.path().extension() == ".stn") ui.files.push_back(entry.path().string());
  std::sort(ui.files.begin(), ui.files.end());
  ui.files.resize(std::min<std::size_t>(ui.files.size(), 8));

  common::ProcessState state;
  engine::DBEngine engine;
  const auto templateDb =
      engine.DefaultWorkspace().OpenDatabase(common::JoinPath(platform::ApplicationFolder(), "Kirrelon.dat"));
  app::LeagueSession session(engine, *templateDb, state, ui);
  forms::FormContext context{engine, *templateDb, state, ui, session};

  forms::frmRaces window(context);
  photographer.Take(window, "main-empty", {760, 480});
  // Over one that an earlier run has left there, too.
  const std::string fresh = common::JoinPath(platform::ApplicationFolder(), "new.lgx");
  app::CreateLeague(engine, *templateDb, fresh, {});
  window.OpenLeagueFile(fresh);
  photographer.Take(window, "main-no-races", {760, 480});
  window.OpenLeagueFile(arguments[3].toStdString());
  photographer.Take(window, "main", {760, 480});
  {
    // A folder with results of which the league lacks some.
    const std::string folder = common::JoinPath(platform::ApplicationFolder(), "exports");
    std::filesystem::create_directories(folder);
    for (std::size_t i = 0; i < 2; ++i)
      std::filesystem::copy_file(ui.files[i], common::JoinPath(folder, common::GetFileTitle(ui.files[i])),
                                 std::filesystem::copy_options::overwrite_existing);
    app::StoreWatchChoice(*templateDb, fresh, {folder, true});
    window.OpenLeagueFile(fresh);
    QEventLoop waiting;
    QTimer::singleShot(2500, &waiting, &QEventLoop::quit);
    waiting.exec();
    photographer.Take(window, "main-watch", {760, 480});
    app::StoreWatchChoice(*templateDb, fresh, {});
    window.OpenLeagueFile(arguments[3].toStdString());
  }
  {
    const std::int64_t first = DoSomething(session);
    window.OpenLeagueFile(arguments[3].toStdString());
    auto* season = window.findChild<QMenu*>(QStringLiteral("mnuSeason"));
    window.findChild<QAction*>(QStringLiteral("mnuSeason_0"))->trigger();
    photographer.TakeMenu(window, *season, "main-season");
    const auto menus = window.findChild<QMenuBar*>()->actions();
    photographer.TakeMenu(window, *menus[0]->menu(), "main-file");
    photographer.TakeMenu(window, *menus[1]->menu(), "main-race");
    photographer.TakeMenu(window, *menus[2]->menu(), "main-tools");
    forms::frmHistory dialog(context, {}, &window);
    photographer.Take(dialog, "history", {800, 340});
    app::UndoThrough(session, first);
    window.OpenLeagueFile(arguments[3].toStdString());
  }
  {
    forms::frmLGXProperties dialog(context, &window);
    dialog.NewDialog(true);
    dialog.setWindowTitle(QStringLiteral("New Scorvane File"));
    photographer.Take(dialog, "properties-new");
  }
  {
    forms::frmLGXProperties dialog(context, &window);
    dialog.NewDialog(false);
    photographer.Take(dialog, "properties");
  }
  {
    forms::frmAddRaces dialog(context, &window);
    photographer.Take(dialog, "import-empty");
  }
  {
    // Several files are read behind the progress dialog, after which the dialog stands there again, modally.
    forms::frmAddRaces dialog(context, &window);
    dialog.show();
    QTimer::singleShot(0, &dialog,
                       [&dialog] { dialog.findChild<QPushButton*>(QStringLiteral("cmdButton_0"))->click(); });
    QTimer::singleShot(1500, &dialog, [&] {
      photographer.Take(dialog, "import");
      dialog.reject();
    });
    QEventLoop waiting;
    QTimer::singleShot(2000, &waiting, &QEventLoop::quit);
    waiting.exec();
  }
  {
    forms::frmStats dialog(context, &window);
    photographer.Take(dialog, "standings", {1000, 600});
    photographer.Take(dialog, "standings-small", {640, 480});
  }
  {
    forms::frmOptions dialog(context, &window);
    photographer.Take(dialog, "options");
    dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    photographer.Take(dialog, "options-html");
    dialog.findChild<QTabWidget*>()->setCurrentIndex(2);
    photographer.Take(dialog, "options-backups");
    dialog.findChild<QTabWidget*>()->setCurrentIndex(3);
    photographer.Take(dialog, "options-watch");
  }
  {
    forms::frmDriverList dialog(context, &window);
    photographer.Take(dialog, "drivers");
  }
  {
    forms::frmEditDriver dialog(context, &window);
    dialog.DriverID(1);
    dialog.Mode(forms::frmEditDriver::kEdit);
    photographer.Take(dialog, "driver");
  }
  {
    forms::frmPickDriver dialog(context, &window);
    photographer.Take(dialog, "pick-driver");
  }
  {
    forms::frmPointSystem dialog(context, &window);
    photographer.Take(dialog, "points");
  }
  {
    forms::frmEditRace dialog(context, {1, false}, &window);
    photographer.Take(dialog, "race");
  }
  {
    forms::frmEditDriver2 dialog(context, &window);
    photographer.Take(dialog, "result");
  }
  {
    forms::frmPenalties dialog(context, &window);
    photographer.Take(dialog, "penalties-none");
  }
  {
    forms::frmPenalty dialog(context, 1, 1, QStringLiteral("Dale Earnhardt"), &window);
    photographer.Take(dialog, "penalty");
  }
  // Some that were given before, taken back at the end: the league is the same for every theme and size.
  std::vector<std::int32_t> given;
  for (const auto& [kind, amount, reason] :
       {std::tuple{scoring::PenaltyKind::Position, 8, "Blocking on the last lap"},
        std::tuple{scoring::PenaltyKind::Points, 25, "Missed the drivers' meeting"},
        std::tuple{scoring::PenaltyKind::Disqualification, 0, "Illegal setup"}}) {
    scoring::Penalty penalty;
    penalty.raceId = 1;
    penalty.driverId = static_cast<std::int32_t>(given.size()) + 1;
    penalty.kind = kind;
    penalty.amount = amount;
    penalty.reason = reason;
    given.push_back(app::AddPenalty(session, penalty));
  }
  {
    forms::frmPenalties dialog(context, &window);
    photographer.Take(dialog, "penalties");
  }
  {
    forms::frmEditRace dialog(context, {1, false}, &window);
    photographer.Take(dialog, "race-penalties");
  }
  app::RemovePenalties(session, given);
  {
    forms::frmTeams dialog(context, &window);
    photographer.Take(dialog, "teams-none");
  }
  {
    forms::frmPlayoff dialog(context, &window);
    photographer.Take(dialog, "playoff-none");
  }
  const std::int64_t before = MakeTeams(session);
  {
    forms::frmTeams dialog(context, &window);
    photographer.Take(dialog, "teams");
    dialog.findChild<QTabBar*>(QStringLiteral("ts"))->setCurrentIndex(1);
    photographer.Take(dialog, "makes");
    forms::frmPickDrivers picker(context, QStringLiteral("Join Hendrick Motorsports"),
                                 {{1, QStringLiteral("Richard Childress Racing")}}, &dialog);
    photographer.Take(picker, "pick-drivers");
  }
  {
    forms::frmEditDriver dialog(context, &window);
    dialog.DriverID(1);
    dialog.Mode(forms::frmEditDriver::kEdit);
    dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    photographer.Take(dialog, "driver-team");
  }
  {
    forms::frmPlayoff dialog(context, &window);
    photographer.Take(dialog, "playoff");
  }
  {
    forms::frmWhatIf dialog(context, &window);
    dialog.findChild<QComboBox*>(QStringLiteral("cboPoints"))->setCurrentIndex(3);
    photographer.Take(dialog, "what-if");
    dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    photographer.Take(dialog, "what-if-title");
  }
  {
    forms::frmStats dialog(context, &window);
    auto* reports = dialog.findChild<QComboBox*>();
    reports->setCurrentIndex(reports->count() - 2);
    photographer.Take(dialog, "standings-teams", {1000, 600});
  }
  app::UndoThrough(session, before);
  {
    forms::frmSeasonView view(context, &window);
    auto* tabs = view.findChild<QTabWidget*>();
    for (const auto& [tab, name] :
         {std::pair{0, "season"}, {1, "season-matrix"}, {2, "season-driver"}, {3, "season-race"}}) {
      tabs->setCurrentIndex(tab);
      photographer.Take(view, name, {1000, 600});
    }
  }
  {
    forms::frmPublish dialog(context, &window);
    const std::string site = common::JoinPath(platform::ApplicationFolder(), "site");
    dialog.findChild<QLineEdit*>(QStringLiteral("txtFolder"))->setText(QString::fromStdString(site));
    dialog.findChild<QPushButton*>(QStringLiteral("cmdButton_0"))->click();
    photographer.Take(dialog, "publish");
  }
  {
    forms::frmOfflineSettings dialog(context, &window);
    photographer.Take(dialog, "offline");
  }
  {
    forms::frmEditColumns dialog(context, 1, QStringLiteral("Point Standings"), &window);
    photographer.Take(dialog, "columns");
  }
  {
    forms::frmExport dialog(context, {reports::PageSubject::kReport, 1}, &window);
    auto* tabs = dialog.findChild<QTabWidget*>();
    for (int tab = 0; tab < tabs->count(); ++tab) {
      tabs->setCurrentIndex(tab);
      photographer.Take(dialog, ("export-" + std::to_string(tab)).c_str());
    }
  }
  {
    forms::frmSplash about(&window);
    photographer.Take(about, "about");
  }
  {
    const auto progress = ui.StartProgress("Reading STN Files", 100);
    progress->SetInfo("Reading: \"12-dover.stn\"");
    progress->SetValue(37);
    if (QWidget* dialog = QApplication::activeModalWidget()) photographer.Take(*dialog, "progress");
  }
  {
    QMessageBox box(QMessageBox::Question, QStringLiteral("Confirmation"),
                    QStringLiteral("This will remove the results of this race and cannot be undone.\r\n"
                                   "Do you want to continue?"),
                    QMessageBox::Yes | QMessageBox::No, &window);
    photographer.Take(box, "question");
  }
  return photographer.Failed() ? 1 : 0;
}
