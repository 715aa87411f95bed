#include "scoring/RaceResults.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/Formats.h"
#include "common/SqlText.h"
#include "engine/Collation.h"
#include "engine/EngineError.h"
#include "engine/Format.h"
#include "scoring/DriverIdentity.h"

namespace scorvane::scoring {
namespace {

bool ReportsTimes(const common::ProcessState& state) {
  return state.lapReportingMethod == common::kLapTime;
}

// The boxes take a full stop; texts from the league have the user's separator.
bool ReadNumber(std::string_view text, char decimal, double& number) {
  return engine::ParseNumber(text, '.', number) || engine::ParseNumber(text, decimal, number);
}

// A typed number in SQL: the digits, or 0 for an empty box. What is no number would change the statement.
std::string Number(const ResultEntry& entry, ResultEntry::Field field, char decimal) {
  const std::string text(common::TrimBlanks(entry.fields[field]));
  if (text.empty()) return "0";
  double number = 0;
  if (!ReadNumber(text, decimal, number)) throw engine::EngineError(engine::kTypeMismatch, text, "a number");
  // In SQL a number has a full stop whatever the user's separator is.
  return engine::NumberText(number, 15);
}

// The speed that a qualifying box means, as a single-precision number.
float QualifyingSpeed(const common::ProcessState& state, const ResultEntry& entry, float length) {
  const std::string& text = entry.fields[ResultEntry::kQualifying];
  double number = 0;
  if (!common::TrimBlanks(text).empty() && !ReadNumber(text, state.decimalSeparator, number))
    throw engine::EngineError(engine::kTypeMismatch, text, "a number");
  const auto typed = static_cast<float>(number);
  return ReportsTimes(state) ? common::SecondsPerLap(typed, length) : typed;
}

std::string QuotedNumber(double number, char decimal) {
  return common::QuoteSQL(engine::Value(static_cast<float>(number)), decimal);
}

// A stored average speed is a text in the user's notation, whichever separator was typed.
std::string QuotedAverageSpeed(const ResultEntry& entry, char decimal) {
  std::string text(common::TrimBlanks(entry.fields[ResultEntry::kAvgSpeed]));
  std::replace(text.begin(), text.end(), '.', decimal);
  return common::QuoteSQL(text.empty() ? "0" : text);
}

std::string ResultTable(RaceKey race) {
  return race.staged ? "STNStats" : "Stats";
}

}  // namespace

bool ShowsAverageSpeed(const common::ProcessState& state) {
  return state.leagueType == common::kOffline && state.simType <= common::kNascarRacing2;
}

RaceHeader ReadRaceHeader(engine::Database& league, const common::ProcessState& state, RaceKey race) {
  const auto row = league.OpenRecordset(
      fmt::format("SELECT * FROM {0}Race WHERE {0}RaceID={1}", race.staged ? "STN" : "", race.id));
  RaceHeader header;
  header.name = row["Name"].ToText();
  header.fileName = row["FileName"].ToText();
  header.length = row["Length"].IsNull() ? 0.0F : row["Length"].ToSingle();
  header.laps = row["Laps"].IsNull() ? 0 : row["Laps"].ToLong();
  header.weather = row["Weather"].ToText();
  if (state.leagueType == common::kOffline) {
    header.raceTime = header.avgSpeed = header.victoryMargin = header.cautions = header.leadChanges = "---";
    return header;
  }
  header.raceTime = row["RaceTime"].ToText();
  header.avgSpeed = row["AvgSpeed"].ToText();
  header.victoryMargin = row["VictoryMargin"].ToText();
  header.cautions = row["Cautions"].ToText();
  header.leadChanges = common::NullToText(row["LeadChanges"], "---", state.decimalSeparator);
  return header;
}

namespace {

// The results that meet a condition of their table, in finishing order.
std::vector<RaceResult> SelectResults(engine::Database& league, bool staged, const std::string& condition) {
  const std::string_view columns =
      staged ? "SELECT Start, Finish, DriverName as Name, LapsRun, LapsLed, Points, Bonus, Qualifying, "
               "ReasonOut as Status, Exclude, STNStatsID As StatsID, AvgSpeed FROM STNStats"
             : "SELECT Stats.*, Driver.Name, Driver.Exclude FROM Stats INNER JOIN Driver ON "
               "Driver.DriverID=Stats.DriverID";
  auto rows = league.OpenRecordset(fmt::format("{} WHERE {} ORDER BY Finish", columns, condition));
  std::vector<RaceResult> results;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    RaceResult result;
    result.id = rows["StatsID"].ToLong();
    result.start = rows["Start"];
    result.finish = rows["Finish"];
    result.driver = rows["Name"].ToText();
    result.lapsRun = rows["LapsRun"];
    result.lapsLed = rows["LapsLed"];
    result.points = rows["Points"];
    result.bonus = rows["Bonus"];
    result.avgSpeed = rows["AvgSpeed"];
    result.qualifying = rows["Qualifying"];
    result.status = rows["Status"].ToText();
    result.excluded = !rows["Exclude"].IsNull() && rows["Exclude"].ToBoolean();
    results.push_back(std::move(result));
  }
  return results;
}

}  // namespace

std::vector<RaceResult> ReadRaceResults(engine::Database& league, RaceKey race) {
  return SelectResults(league, race.staged,
                       fmt::format("{}={}", race.staged ? "STNRaceID" : "RaceID", race.id));
}

bool HasResult(engine::Database& league, RaceKey race, const std::string& driver) {
  const std::string_view wanted = common::TrimBlanks(driver);
  const auto results = ReadRaceResults(league, race);
  return std::any_of(results.begin(), results.end(), [&](const RaceResult& result) {
    return engine::CompareTexts(common::TrimBlanks(result.driver), wanted) == 0;
  });
}

RaceResult ReadRaceResult(engine::Database& league, RaceKey race, std::int32_t resultId) {
  auto found = SelectResults(league, race.staged,
                             fmt::format("{}={}", race.staged ? "STNStatsID" : "StatsID", resultId));
  if (found.empty()) throw engine::EngineError(engine::kNoCurrentRecord);
  return std::move(found.front());
}

ResultEntry ReadResultEntry(engine::Database& league, const common::ProcessState& state, RaceKey race,
                            std::int32_t resultId, float length) {
  const auto row = league.OpenRecordset(
      race.staged
          ? fmt::format(
                "SELECT Finish, Start, DriverName, LapsRun, LapsLed, Points, Bonus, AvgSpeed, Qualifying, "
                "PrizeMoney, ReasonOut FROM STNStats WHERE STNStatsID={}",
                resultId)
          : fmt::format(
                "SELECT Stats.Finish, Stats.Start, Driver.Name As DriverName, Stats.LapsRun, Stats.LapsLed, "
                "Stats.Points, Stats.Bonus, Stats.AvgSpeed, Stats.Qualifying, Stats.PrizeMoney, "
                "Stats.Status As ReasonOut FROM Stats INNER JOIN Driver ON "
                "Driver.DriverID=Stats.DriverID WHERE Stats.StatsID={}",
                resultId));
  ResultEntry entry;
  for (std::size_t i = 0; i < entry.fields.size(); ++i)
    entry.fields[i] = row.At(i).ToText(state.decimalSeparator);
  entry.reason = row["ReasonOut"].ToText();
  const engine::Value& qualifying = row["Qualifying"];
  if (ReportsTimes(state) && !qualifying.IsNull()) {
    const float seconds = common::SecondsPerLap(qualifying.ToSingle(), length);
    entry.fields[ResultEntry::kQualifying] =
        engine::FormatValue(engine::Value(seconds), "##0.000", state.decimalSeparator);
  }
  if (!ShowsAverageSpeed(state)) entry.fields[ResultEntry::kAvgSpeed] = "0";
  return entry;
}

std::int32_t AddResult(engine::Database& league, const common::ProcessState& state, RaceKey race,
                       const ResultEntry& entry, float length) {
  const char decimal = state.decimalSeparator;
  auto number = [&](ResultEntry::Field field) { return Number(entry, field, decimal); };
  const std::string name(common::TrimBlanks(entry.fields[ResultEntry::kName]));
  // A reason may hold an apostrophe; a speed goes in as the user writes numbers.
  const std::string reason = common::QuoteSQL(entry.reason);
  const std::string qualifying =
      QuotedNumber(static_cast<double>(QualifyingSpeed(state, entry, length)), decimal);
  engine::UnitOfWork unit(league);
  if (race.staged) {
    league.Execute(
        fmt::format("INSERT INTO STNStats (STNRaceID, DriverName, Finish, Start, LapsRun, LapsLed, "
                    "ReasonOut, Points, Bonus, Qualifying, AvgSpeed, PrizeMoney) VALUES "
                    "({},{},{},{},{},{},{},{},{},{},{},{})",
                    race.id, common::QuoteSQL(name), number(ResultEntry::kFinish),
                    number(ResultEntry::kStart), number(ResultEntry::kLapsRun), number(ResultEntry::kLapsLed),
                    reason, number(ResultEntry::kPoints), number(ResultEntry::kBonus), qualifying,
                    number(ResultEntry::kAvgSpeed), number(ResultEntry::kWinnings)));
  } else {
    league.Execute(
        fmt::format("INSERT INTO Stats (RaceID, DriverID, Finish, Start, LapsRun, LapsLed, Status, Points, "
                    "Bonus, Qualifying, AvgSpeed, PrizeMoney) VALUES "
                    "({},{},{},{},{},{},{},{},{},{},{},{})",
                    race.id, FindOrAddDriver(league, name), number(ResultEntry::kFinish),
                    number(ResultEntry::kStart), number(ResultEntry::kLapsRun), number(ResultEntry::kLapsLed),
                    reason, number(ResultEntry::kPoints), number(ResultEntry::kBonus), qualifying,
                    QuotedAverageSpeed(entry, decimal), number(ResultEntry::kWinnings)));
  }
  const std::int32_t id = common::GetMaxID(league, ResultTable(race), race.staged ? "STNStatsID" : "StatsID");
  unit.Commit();
  return id;
}

void UpdateResult(engine::Database& league, const common::ProcessState& state, RaceKey race,
                  std::int32_t resultId, const ResultEntry& entry, float length) {
  const char decimal = state.decimalSeparator;
  const ResultEntry stored = ReadResultEntry(league, state, race, resultId, length);
  engine::UnitOfWork unit(league);
  std::string assignments;
  const auto assign = [&](const char* field, const std::string& value) {
    assignments += fmt::format("{}{}={}", assignments.empty() ? "" : ", ", field, value);
  };
  // What nobody has touched stays as it is stored: Null, and with all its digits.
  const auto touched = [&](ResultEntry::Field field) { return entry.fields[field] != stored.fields[field]; };
  const std::string name(common::TrimBlanks(entry.fields[ResultEntry::kName]));
  if (name != stored.fields[ResultEntry::kName]) {
    if (race.staged) {
      assign("DriverName", common::QuoteSQL(name));
    } else {
      assign("DriverID", std::to_string(FindOrAddDriver(league, name)));
    }
  }
  static constexpr std::pair<ResultEntry::Field, const char*> kWholeNumbers[] = {
      {ResultEntry::kFinish, "Finish"},      {ResultEntry::kStart, "Start"},
      {ResultEntry::kLapsRun, "LapsRun"},    {ResultEntry::kLapsLed, "LapsLed"},
      {ResultEntry::kPoints, "Points"},      {ResultEntry::kBonus, "Bonus"},
      {ResultEntry::kWinnings, "PrizeMoney"}};
  for (const auto& [field, column] : kWholeNumbers)
    if (touched(field)) assign(column, Number(entry, field, decimal));
  if (touched(ResultEntry::kAvgSpeed)) {
    assign("AvgSpeed",
           race.staged ? Number(entry, ResultEntry::kAvgSpeed, decimal) : QuotedAverageSpeed(entry, decimal));
  }
  if (touched(ResultEntry::kQualifying)) {
    assign("Qualifying", QuotedNumber(static_cast<double>(QualifyingSpeed(state, entry, length)), decimal));
  }
  if (entry.reason != stored.reason)
    assign(race.staged ? "ReasonOut" : "Status", common::QuoteSQL(entry.reason));
  if (!assignments.empty()) {
    league.Execute(fmt::format("UPDATE {} SET {} WHERE {}={}", ResultTable(race), assignments,
                               race.staged ? "STNStatsID" : "StatsID", resultId));
  }
  unit.Commit();
}

void RemoveResults(engine::Database& league, RaceKey race, const std::vector<std::int32_t>& resultIds) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t id : resultIds) {
    league.Execute(fmt::format("DELETE * FROM {} WHERE {}={}", ResultTable(race),
                               race.staged ? "STNStatsID" : "StatsID", id));
  }
  unit.Commit();
}

bool AcceptsCharacter(int field, const std::string& text, char32_t character) {
  const bool point = character == U'.';
  if (point) {
    const bool takesPoint =
        field == ResultEntry::kName || field == ResultEntry::kAvgSpeed || field == ResultEntry::kQualifying;
    return takesPoint && text.find('.') == std::string::npos;
  }
  return field == ResultEntry::kName || (character >= U'0' && character <= U'9');
}

std::string LeftField(int field, const std::string& text) {
  return field >= ResultEntry::kLapsRun && common::TrimBlanks(text).empty() ? "0" : text;
}

std::optional<EntryFault> FindFault(const ResultEntry& entry, const ResultEntry& before, char decimal) {
  struct Rule {
    ResultEntry::Field field;
    const char* name;
    double most;  // 0: any number, with decimals, too
  };
  constexpr double kMostInteger = 32767;
  constexpr double kMostLong = 2147483647;
  static constexpr Rule kRules[] = {
      {ResultEntry::kFinish, "Finish", kMostInteger},    {ResultEntry::kStart, "Start", kMostInteger},
      {ResultEntry::kLapsRun, "Laps Run", kMostInteger}, {ResultEntry::kLapsLed, "Laps Led", kMostInteger},
      {ResultEntry::kPoints, "Points", kMostLong},       {ResultEntry::kBonus, "Bonus", kMostLong},
      {ResultEntry::kAvgSpeed, "Avg Speed", 0},          {ResultEntry::kQualifying, "Qualifying", 0},
      {ResultEntry::kWinnings, "Winnings", kMostLong}};
  for (const Rule& rule : kRules) {
    const std::string text(common::TrimBlanks(entry.fields[rule.field]));
    if (text.empty() || entry.fields[rule.field] == before.fields[rule.field]) continue;
    double number = 0;
    if (!ReadNumber(text, decimal, number))
      return EntryFault{rule.field, fmt::format("{}: \"{}\" is no number.", rule.name, text)};
    if (rule.most == 0) continue;
    if (std::trunc(number) != number)
      return EntryFault{rule.field, fmt::format("{}: \"{}\" is no whole number.", rule.name, text)};
    if (std::abs(number) > rule.most)
      return EntryFault{
          rule.field, fmt::format("{}: {} is too large; it can be {} at most.", rule.name, text, rule.most)};
  }
  return std::nullopt;
}

bool IsComplete(const ResultEntry& entry) {
  for (const int field : {ResultEntry::kFinish, ResultEntry::kStart, ResultEntry::kName})
    if (common::TrimBlanks(entry.fields[static_cast<std::size_t>(field)]).empty()) return false;
  return true;
}

const std::vector<std::string_view>& ReasonsOut(int simType) {
  static const std::vector<std::string_view> older = {
      "Accident", "Brakes",    "Clutch",  "DNF",        "DNS",      "DQ",         "Electrical", "Engine",
      "Fire",     "Fuel Pump", "Gasket",  "Gearbox",    "Handling", "Header",     "Mechanical", "Oil leak",
      "Oil pump", "Running",   "Shifter", "Suspension", "Valve",    "Water Hose", "Waterpump",  "Vibration"};
  static const std::vector<std::string_view> newer = {
      "Running",  "Brakes",  "Overheat", "Radiator", "Engine",   "Header",   "Valve",   "Piston",
      "Gearbox",  "Clutch",  "Camshaft", "Ignition", "Fire",     "Electr",   "Fuel Lk", "Fuel Inj",
      "Fuel Pmp", "Fuel Ln", "Oil Leak", "Oil Line", "Oil Pump", "Oil Pres", "Susp",    "Puncture",
      "Tire",     "Wheel",   "Accident", "Retired",  "DQ",       "DNF",      "DNS"};
  return simType <= common::kNascarRacing2 ? older : newer;
}

}  // namespace scorvane::scoring
