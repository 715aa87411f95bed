#include "import/ExportedStandings.h"

#include <iterator>

#include <fmt/format.h>

#include "common/Formats.h"
#include "common/SettingsStore.h"
#include "common/SqlText.h"
#include "engine/Names.h"
#include "import/FileContent.h"
#include "import/HTMLParser.h"
#include "scoring/DriverIdentity.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace scorvane::import {
namespace {

// Writes one page's race and results.
class Stager {
 public:
  Stager(engine::Database& league, const common::ProcessState& state) : league_(league), state_(state) {}

  // 0 until the staged race exists.
  std::int32_t RaceId() const { return raceId_; }

  void StageRace(const CRaceInfo& race) {
    CheckRace(race);
    sql_ =
        "INSERT INTO STNRace (Name, FileName, Length, Laps, RaceTime, AvgSpeed, "
        "VictoryMargin, Cautions, LeadChanges, Weather) VALUES (";
    common::AppendQuoted(sql_, race.Track);
    sql_ += ',';
    common::AppendQuoted(sql_, FileNameOfRace(race.FileName));
    sql_ += ',';
    AppendDecimal(race.Length);
    fmt::format_to(std::back_inserter(sql_), ",{},", race.Laps);
    AppendLocalized(race.RaceTime);
    sql_ += ',';
    AppendLocalized(FitStatistic(race.AvgSpeed, kSpeedCharacters));
    sql_ += ',';
    AppendLocalized(FitStatistic(race.VictoryMargin, kMarginCharacters));
    fmt::format_to(std::back_inserter(sql_), ",{},{},", race.Cautions, race.LeadChanges);
    common::AppendLiteral(sql_, race.Weather);
    sql_ += ')';
    league_.Execute(sql_);
    raceId_ = common::GetMaxID(league_, "STNRace", "STNRaceID");
  }

  void StageResults(const CDrivers& drivers) {
    int position = 0;
    const scoring::Exclusions excluded(league_);
    for (const CDriverInfo& driver : drivers) {
      try {
        if (!excluded.Has(driver.DriverName)) StageResult(driver, ++position);
      } catch (const engine::EngineError& error) {
        throw FileFault(fmt::format("{}: {}", driver.DriverName, error.Description()));
      }
    }
  }

 private:
  // What a race must have: the tables refuse empty texts, and only digits go into a statement as they stand.
  static void CheckRace(const CRaceInfo& race) {
    const auto missing = [](const char* what) {
      throw FileFault(fmt::format("The page does not say {}.", what));
    };
    if (race.AvgSpeed.empty()) missing("how fast the winner was: no row has the finishing position 1");
    if (race.VictoryMargin.empty())
      missing("by how much the winner won: no row has the finishing position 2");
    if (race.Cautions.empty()) missing("how many caution flags there were");
    if (race.Cautions.find_first_not_of("0123456789") != std::string::npos)
      throw FileFault(fmt::format("The number of caution flags is no number: \"{}\".", race.Cautions));
    if (race.Weather.empty()) missing("what the weather was");
  }

  void StageResult(const CDriverInfo& driver, int position) {
    const scoring::Score score = scoring::ScoreByPosition(state_, position, 0);
    sql_ =
        "INSERT INTO STNStats (STNRaceID, Finish, Start, DriverName, "
        "LapsRun, LapsLed, Points, Qualifying, ReasonOut, PrizeMoney, Bonus) VALUES (";
    fmt::format_to(std::back_inserter(sql_), "{},{},{},", raceId_, position, driver.Start);
    common::AppendQuoted(sql_, driver.DriverName);
    fmt::format_to(std::back_inserter(sql_), ",{},{},{},", driver.Laps, driver.Led, score.points.ToLong());
    AppendDecimal(driver.Qualifying);
    sql_ += ',';
    common::AppendQuoted(sql_, driver.Status);
    sql_ += ',';
    common::AppendQuoted(sql_, score.prizeMoney.ToText(state_.decimalSeparator));
    sql_ += ",0)";
    league_.Execute(sql_);
  }

  void AppendLocalized(std::string_view text) {
    common::AppendLiteral(sql_, common::LocalizeDecimal(text, state_.decimalSeparator));
  }
  void AppendDecimal(float number) { AppendLocalized(engine::Value(number).ToText()); }

  engine::Database& league_;
  const common::ProcessState& state_;
  std::int32_t raceId_ = 0;
  std::string sql_;  // the statement being built; one buffer for all of them
};

}  // namespace

bool ShowsImportAlerts(engine::Database& templateDb) {
  const std::string setting = common::GetSettingValue(templateDb, common::kShowImportAlerts);
  return setting == common::kMissingSetting || engine::SameName(setting, "True") ||
         engine::LeadingNumber(setting) != 0;
}

std::int32_t ReadExportedStandingsFile(engine::Database& templateDb, engine::Database& league,
                                       common::ProcessState& state, common::UserInterface& ui,
                                       const std::string& path) {
  return ReadExportedStandingsFile(league, state, ui, path, ShowsImportAlerts(templateDb));
}

std::int32_t ReadExportedStandingsFile(engine::Database& league, common::ProcessState& state,
                                       common::UserInterface& ui, const std::string& path, bool showAlerts) {
  CHTMLParser parser(ui, state.decimalSeparator);
  parser.InputFile(path);
  parser.TrackList(state.tracks.get());
  parser.ShowAlerts(showAlerts);
  if (!parser.Execute()) {
    if (parser.ShowAlerts()) {
      ui.ShowMessage(
          {path + "\r\n" + parser.ErrMsg(), "Failed to Read Import File", common::MessageIcon::Critical});
    }
    return 0;
  }
  engine::UnitOfWork unit(league);
  Stager stager(league, state);
  try {
    stager.StageRace(parser.Race());
    stager.StageResults(parser.Drivers());
    scoring::ApplyBonusPoints(league, state, stager.RaceId(), true);
  } catch (...) {
    // Nothing of a page that failed may be imported with the others.
    league.Execute(fmt::format("DELETE * FROM STNRace WHERE STNRaceID={}", stager.RaceId()));
    unit.Commit();
    throw;
  }
  unit.Commit();
  return stager.RaceId();
}

}  // namespace scorvane::import
