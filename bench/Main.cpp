// scorvane_bench [FILES [TURNS]]: the speed goals, each as a ratio. Exit status 1 when one is missed.
#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "Bench.h"
#include "Loop.h"
#include "Silent.h"
#include "app/LeagueSession.h"
#include "common/UserInterface.h"
#include "db/MDBBuild.h"
#include "history/History.h"
#include "import/StandingsFile.h"
#include "platform/Platform.h"
#include "reports/DroppedRaces.h"
#include "reports/Report.h"
#include "scoring/OfflineMerge.h"
#include "scoring/OnlineImport.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace {

using namespace scorvane;
namespace fs = std::filesystem;

constexpr int kCars = 43;
constexpr int kDropped = 10;
constexpr int kEventFiles = 40;

// A standings file as the simulation writes it: these drivers in an order of their own.
void WriteFile(const std::string& path, std::mt19937& random, std::vector<std::string> drivers) {
  std::shuffle(drivers.begin(), drivers.end(), random);
  std::ofstream file(path, std::ios::binary);
  file << "Race Final Test Speedway\r\n"
       << fmt::format("{:<25}{:<15}{:<3}\r\n\r\n", "Track length in miles:   ", "2.500    Laps: ", 200);
  const std::string rule(77, '-');
  file << rule << "\r\nFin St  Car  Driver\r\n" << rule << "\r\n";
  for (int i = 0; i < kCars; ++i) {
    const std::string& driver = drivers[static_cast<std::size_t>(i)];
    const int start = static_cast<int>(random() % kCars) + 1;
    const int led = i < 8 ? static_cast<int>(random() % 60) : 0;
    file << fmt::format("{:>2}  {:>2}  {:>3}  {:<28}{:>3}  {:>3}   {:>3}  {:>7.3f}  {}\r\n", i + 1, start, i,
                        driver, 200 - i / 4, led, 175 - 4 * i > 0 ? 175 - 4 * i : 0,
                        150.0 + static_cast<double>(random() % 40000) / 1000.0,
                        i < 34 ? "running" : "engine");
  }
  file << "\r\nRace time - 3:05:07.250\r\nAverage speed - 162.040\r\nCaution flags - 5\r\n"
          "# of lead changes - 12\r\nWeather - Clear 72^F\r\n*\r\n";
}

std::vector<std::string> Drivers(int number) {
  std::vector<std::string> drivers;
  for (int i = 0; i < number; ++i) drivers.push_back(fmt::format("Driver Number {}", i));
  return drivers;
}

void Must(bool same, const char* what) {
  if (!same) throw std::runtime_error(fmt::format("the loop and the program differ in {}", what));
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 1000;
  const int turns = argc > 2 ? std::atoi(argv[2]) : 5;
  const fs::path folder = fs::temp_directory_path() / "scorvane-bench";
  fs::remove_all(folder);
  fs::create_directories(folder);
  const std::string templatePath = platform::ProgramFolder() + "/../Kirrelon.dat";
  std::mt19937 random(1998);
  std::vector<std::string> files;
  for (int i = 0; i < count; ++i) {
    files.push_back((folder / fmt::format("{:05}.stn", i)).string());
    WriteFile(files.back(), random, Drivers(60));
  }
  // An off-line event: in every file one member against the same computer cars.
  std::vector<std::string> event;
  for (int i = 0; i < kEventFiles; ++i) {
    event.push_back((folder / fmt::format("event{:02}.stn", i)).string());
    std::vector<std::string> drivers = Drivers(kCars);
    drivers.back() = fmt::format("Member {}", i);
    WriteFile(event.back(), random, std::move(drivers));
  }

  engine::DBEngine engine;
  bench::Silent ui;
  common::ProcessState state;
  engine::OpenOptions readOnly;
  readOnly.readOnly = true;
  const auto templateDb = engine.DefaultWorkspace().OpenDatabase(templatePath, readOnly);
  const std::string fresh = (folder / "fresh.lgx").string();
  const std::string full = (folder / "full.lgx").string();
  const std::string league = (folder / "league.lgx").string();
  db::CreateLeagueFile(engine, fresh, 0, 0, *templateDb, kDropped, 0);
  auto opened = [&](const std::string& path, auto body) {
    app::LeagueSession session(engine, *templateDb, state, ui);
    session.OpenLeagueFile(path);
    body(session.League());
  };
  opened(fresh, [](engine::Database&) {});  // an open that changes nothing any more
  auto copy = [&](const std::string& from) {
    return [&, from] { fs::copy_file(from, league, fs::copy_options::overwrite_existing); };
  };

  auto import = [&](const std::vector<std::string>& chosen, auto store) {
    opened(league, [&](engine::Database& db) {
      engine::UnitOfWork unit(db);
      db.Execute("DELETE * FROM STNRace");
      scoring::LoadPointSystem(*templateDb, db, state);
      for (const std::string& file : chosen) import::ReadStandingsFile(db, state, ui, file, 0);
      store(db, state, ui);
      unit.Commit();
    });
  };
  double loopPoints = 0;
  bool met = true;
  fmt::print("{} files of {} cars, medians of {} turns: ours, the loop, their ratio\n", count, kCars, turns);
  met &= bench::Run(
      {"import", 1.25, copy(fresh), [&] { import(files, scoring::ImportStagedRaces); },
       [&] {
         bench::ImportLoop(league, templatePath, files);
         loopPoints = bench::Ask(league, "SELECT sum(Points * Finish + DriverID) FROM Stats");
       },
       [&] {
         Must(bench::Ask(league, "SELECT sum(Points * Finish + DriverID) FROM Stats") == loopPoints,
              "the imported results");
       }},
      turns);
  fs::copy_file(league, full, fs::copy_options::overwrite_existing);

  std::vector<int> expected;
  std::vector<int> shown;
  met &= bench::Run({"standings, first time after an import", 1.5, copy(full),
                     [&] {
                       opened(league, [&](engine::Database& db) {
                         reports::MarkDroppedRaces(db, kDropped);
                         const auto report =
                             reports::RunReport(db, *templateDb, reports::ListReports(*templateDb)[0].id);
                         shown.clear();
                         for (const auto& row : report->rows) shown.push_back(row[1].ToLong());
                       });
                     },
                     [&] { expected = bench::StandingsStatement(league, kDropped); },
                     [&] { Must(shown == expected && !shown.empty(), "the standings"); }},
                    turns);
  fs::copy_file(league, full, fs::copy_options::overwrite_existing);
  met &= bench::Run({"standings, marks already right", 1.5, copy(full),
                     [&] {
                       opened(league, [&](engine::Database& db) {
                         reports::MarkDroppedRaces(db, kDropped);
                         reports::RunReport(db, *templateDb, reports::ListReports(*templateDb)[0].id);
                       });
                     },
                     [&] { expected = bench::StandingsStatement(league, kDropped); }, [] {}},
                    turns);

  met &= bench::Run(
      {"recalculating every race", 1.3, copy(full),
       [&] {
         opened(league, [&](engine::Database& db) {
           engine::UnitOfWork unit(db);
           for (auto rows = db.OpenRecordset("SELECT RaceID FROM Race"); !rows.AtEnd(); rows.MoveNext())
             scoring::RecalculateRace(*templateDb, db, state, rows.At(0).ToLong(), false);
           unit.Commit();
         });
       },
       [&] {
         bench::RecalculateLoop(league, templatePath);
         loopPoints = bench::Ask(league, "SELECT sum(Points * Start + Finish) FROM Stats");
       },
       [&] {
         Must(bench::Ask(league, "SELECT sum(Points * Start + Finish) FROM Stats") == loopPoints,
              "the recalculated results");
       }},
      turns);

  const auto importRecorded = [&](const std::vector<std::string>& chosen) {
    opened(league, [&](engine::Database& db) {
      history::Change change(db, "Import");
      db.Execute("DELETE * FROM STNRace");
      scoring::LoadPointSystem(*templateDb, db, state);
      for (const std::string& file : chosen) import::ReadStandingsFile(db, state, ui, file, 0);
      scoring::ImportStagedRaces(db, state, ui);
      change.Commit();
    });
  };
  fmt::print("{} files of {} cars: with the change recorded, without, their ratio\n", count, kCars);
  std::uintmax_t sizes[2] = {0, 0};
  met &= bench::Run({"import with its history", 1.15, copy(fresh),
                     [&] {
                       importRecorded(files);
                       sizes[0] = fs::file_size(league);
                     },
                     [&] {
                       import(files, scoring::ImportStagedRaces);
                       sizes[1] = fs::file_size(league);
                     },
                     [] {}},
                    turns);
  fmt::print("  the file: {} bytes with, {} without\n", sizes[0], sizes[1]);
  const std::vector<std::string> season(files.begin(), files.begin() + std::min<std::ptrdiff_t>(33, count));
  const std::string recorded = (folder / "recorded.lgx").string();
  const std::string recordedSeason = (folder / "season.lgx").string();
  copy(fresh)();
  importRecorded(files);
  fs::copy_file(league, recorded, fs::copy_options::overwrite_existing);
  copy(fresh)();
  importRecorded(season);
  fs::copy_file(league, recordedSeason, fs::copy_options::overwrite_existing);
  for (const bool whole : {false, true}) {
    const std::vector<std::string>& chosen = whole ? files : season;
    const std::string& path = whole ? recorded : recordedSeason;
    fmt::print("{} files: undone, imported, their ratio\n", chosen.size());
    met &= bench::Run({"undo of an import", 1.0, [] {},
                       [&] {
                         fs::copy_file(path, league, fs::copy_options::overwrite_existing);
                         opened(league, [&](engine::Database& db) { history::Undo(db); });
                         Must(bench::Ask(league, "SELECT count(*) FROM Stats") == 0, "what was undone");
                       },
                       [&] {
                         fs::copy_file(fresh, league, fs::copy_options::overwrite_existing);
                         importRecorded(chosen);
                       },
                       [] {}},
                      turns);
  }

  fmt::print("{} files of {} cars: merged, imported as races, their ratio\n", kEventFiles, kCars);
  double ranked = 0;
  met &= bench::Run({"off-line merge", 3.0, copy(fresh),
                     [&] {
                       import(event, scoring::MergeOfflineEvent);
                       ranked = bench::Ask(league, "SELECT count(*) FROM Stats WHERE RaceID=1");
                     },
                     [&] { import(event, scoring::ImportStagedRaces); },
                     [&] { Must(ranked == kEventFiles, "the members of the event"); }},
                    turns);
  fs::remove_all(folder);
  return met ? 0 : 1;
}
