// scorvane_window_bench: the window on a league of 1,000 races, beside an empty window and one read of the
// rows; and what a page costs beside its query.
#include <fmt/format.h>

#include <QApplication>
#include <QMainWindow>
#include <filesystem>

#include "Bench.h"
#include "Loop.h"
#include "Silent.h"
#include "app/LeagueSession.h"
#include "db/MDBBuild.h"
#include "forms/FormContext.h"
#include "forms/frmRaces.h"
#include "platform/Platform.h"
#include "reports/PageExport.h"
#include "reports/Report.h"

int main(int argc, char** argv) {
  using namespace scorvane;
  namespace fs = std::filesystem;
  constexpr int kRaces = 1000;
  constexpr int kTurns = 9;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  const fs::path folder = fs::temp_directory_path() / "scorvane-window-bench";
  fs::remove_all(folder);
  fs::create_directories(folder);
  engine::DBEngine engine;
  bench::Silent ui;
  common::ProcessState state;
  engine::OpenOptions readOnly;
  readOnly.readOnly = true;
  const auto templateDb =
      engine.DefaultWorkspace().OpenDatabase(platform::ProgramFolder() + "/../Kirrelon.dat", readOnly);
  const std::string path = (folder / "league.lgx").string();
  db::CreateLeagueFile(engine, path, 0, 0, *templateDb, 0, 0);
  app::LeagueSession session(engine, *templateDb, state, ui);
  session.OpenLeagueFile(path);
  {
    engine::UnitOfWork unit(session.League());
    for (int i = 1; i <= kRaces; ++i) {
      session.League().Execute(
          fmt::format("INSERT INTO Race (Name, FileName, Length, Laps) VALUES ('A Track of Some Length "
                      "{0}','{0}.stn','2.5',200)",
                      i));
    }
    session.League().Execute("INSERT INTO Driver (Name) VALUES ('x')");
    for (int i = 1; i <= 43; ++i) {
      session.League().Execute(
          fmt::format("INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, Bonus, "
                      "Qualifying, Status) "
                      "VALUES (1,1,{0},{0},200,0,{1},0,'150.5','running')",
                      i, 180 - i));
    }
    unit.Commit();
  }
  session.CloseLeagueFile();

  forms::FormContext context{engine, *templateDb, state, ui, session};
  bool met =
      bench::Run({"window ready on 1,000 races", 1.5, [&] { session.CloseLeagueFile(); },
                  [&] {
                    forms::frmRaces window(context);
                    window.OpenLeagueFile(path);
                    window.show();
                    QApplication::processEvents();
                  },
                  [&] {
                    QMainWindow window;
                    window.resize(960, 540);
                    bench::Ask(path, "SELECT sum(length(Name || Laps || Length || FileName)) FROM Race");
                    window.show();
                    QApplication::processEvents();
                  },
                  [] {}},
                 kTurns);

  session.OpenLeagueFile(path);
  const auto start = std::chrono::steady_clock::now();
  constexpr int kPages = 100;
  for (int i = 0; i < kPages; ++i) {
    if (!reports::WritePage(session.League(), *templateDb, state, {reports::PageSubject::kRace, 1}, {}, {},
                            "", (folder / "page.htm").string()))
      return 2;
  }
  const double page =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() / kPages;
  fmt::print("a page of 43 rows, its query included: {:.2f} ms (goal 1.0 beside the query) {}\n", page,
             page < 1 ? "met" : "see the query's share");
  session.CloseLeagueFile();
  fs::remove_all(folder);
  return met ? 0 : 1;
}
