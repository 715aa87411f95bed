#include "championship/WhatIf.h"

#include <algorithm>
#include <map>
#include <utility>

#include "championship/RaceRules.h"
#include "championship/Reports.h"
#include "championship/Standings.h"

namespace scorvane::championship {
namespace {

using engine::Value;

Value Number(std::int64_t number) {
  return {static_cast<double>(number)};
}

}  // namespace

Season ApplyWhatIf(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
                   Season season, const WhatIf& whatIf) {
  const bool otherPoints = whatIf.points || whatIf.preset;
  if (otherPoints || !whatIf.without.empty()) {
    RaceRules rules =
        whatIf.preset ? RulesOf(league, *whatIf.preset) : ReadRaceRules(league, templateDb, state, season);
    if (whatIf.points) {
      rules.tables = {*whatIf.points};
      rules.tableOf.clear();
    }
    if (whatIf.noBonus) rules.bonuses.clear();
    std::vector<bool> which(season.races.size(), otherPoints);
    for (SeasonDriver& driver : season.drivers) {
      if (std::find(whatIf.without.begin(), whatIf.without.end(), driver.id) == whatIf.without.end())
        continue;
      for (const SeasonResult& result : driver.results) which[result.race] = true;
      driver.results.clear();
    }
    ScoreRaces(season, rules, which);
  }
  if (whatIf.noBonus) {
    for (SeasonDriver& driver : season.drivers) {
      for (SeasonResult& result : driver.results) {
        result.points -= result.bonus;
        result.bonus = 0;
      }
    }
    season.SortResults();
  }
  return season;
}

reports::ReportTable RunWhatIf(engine::Database& league, engine::Database& templateDb,
                               const common::ProcessState& state, const WhatIf& whatIf,
                               std::optional<std::int32_t> afterRace) {
  const auto playoff = ReadPlayoff(league);
  Season now = ReadSeasonAfter(league, playoff, afterRace);
  const PlayoffFormat* playoffNow = playoff ? &*playoff : nullptr;
  const PlayoffFormat* playoffThen = whatIf.noPlayoff ? nullptr
                                     : whatIf.playoff ? &*whatIf.playoff
                                                      : playoffNow;
  const Season then = ApplyWhatIf(league, templateDb, state, now, whatIf);
  struct Place {
    std::int32_t place = 0;
    std::int64_t points = 0;
  };
  std::map<std::size_t, Place> places;
  std::int32_t place = 0;
  for (const Standing& standing : ComputeStandings(now, state.droppedRaces, playoffNow))
    places[standing.driver] = {++place, standing.points};

  reports::ReportTable table;
  const auto number = [](const char* name, int width, const char* field, const char* format = "0") {
    return reports::ReportColumn{name, width, reports::kCentred, format, false, field};
  };
  constexpr const char* kSigned = "+0;-0;--";
  table.columns = {{"Driver", 2200, 0, "", false, "DriverName"},
                   number("Points", 750, "Points"),
                   number("Pos Now", 850, "PosNow"),
                   number("Points Now", 1050, "PointsNow"),
                   number("Places", 750, "Places", kSigned),
                   number("Difference", 1050, "Difference", kSigned)};
  if (playoffThen != nullptr) table.columns.push_back({"Playoff", 1700, 0, "", false, "Playoff"});
  place = 0;
  for (const Standing& standing :
       ComputeStandings(then, whatIf.dropped.value_or(state.droppedRaces), playoffThen)) {
    ++place;
    const Place& before = places[standing.driver];
    auto& row = table.rows.emplace_back();
    row = {Value(then.drivers[standing.driver].name),
           Number(standing.points),
           Value(before.place),
           Number(before.points),
           Value(before.place - place),
           Number(standing.points - before.points)};
    if (playoffThen != nullptr) row.emplace_back(standing.stage);
  }
  return table;
}

}  // namespace scorvane::championship
