#include "championship/RaceRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "common/Formats.h"
#include "common/RuleError.h"
#include "scoring/PointSystem.h"

namespace scorvane::championship {
namespace {

constexpr std::int32_t kBuiltInBonus = 5;

// The conditions that come with the program, in small letters and without blanks.
constexpr std::pair<const char*, Condition> kConditions[] = {
    {"lapsled>0", Condition::LedALap},
    {"lapsled>0andlapsled=(selectmax(lapsled)fromstnstatswherestnraceid=<raceid>)", Condition::MostLed},
    {"finish=1", Condition::Win},
    {"start=1", Condition::Pole},
    {"finish<=5", Condition::Top5},
    {"finish<=10", Condition::Top10},
    {"lapsrun>0andlapsrun=(selectmax(lapsrun)fromstnstatswherestnraceid=<raceid>)", Condition::LeadLap},
    {"start>finishandstart-finish=(selectmax(start-finish)fromstnstatswherestnraceid=<raceid>)",
     Condition::MostGained},
    {"start=1andfinish=1", Condition::PoleWin},
    {"finish>=1", Condition::Starting},
};

Condition ConditionOf(const engine::Value& query) {
  std::string text = common::LowerCase(query.ToText());
  std::erase_if(text, [](char c) { return c == ' ' || c == '\r' || c == '\n' || c == '\t'; });
  for (const auto& [condition, meaning] : kConditions)
    if (text == condition) return meaning;
  return Condition::Other;
}

std::map<std::int32_t, BonusRule> StoredRules(engine::Database& league) {
  std::map<std::int32_t, BonusRule> rules;
  for (auto rows = league.OpenRecordset("SELECT BonusID, Name, Points, Query FROM Bonus"); !rows.AtEnd();
       rows.MoveNext()) {
    rules[rows.At(0).ToLong()] = {rows.At(1).ToText(), ConditionOf(rows.At(3)),
                                  rows.At(2).IsNull() ? 0 : rows.At(2).ToLong()};
  }
  return rules;
}

std::vector<std::int32_t> Column(const common::ProcessState& state, int column) {
  std::vector<std::int32_t> points;
  for (int position = 1; position <= state.pointTable.Positions(); ++position)
    points.push_back(scoring::ScoreByPosition(state, position, column).points.ToLong());
  return points;
}

// The results of one race while it is scored.
struct Field {
  std::vector<SeasonResult*> finishers;  // in their order
  std::int32_t mostLed = 0;
  std::int32_t mostLaps = 0;
  std::int32_t mostGained = 0;
};

bool Fulfils(const SeasonResult& result, const Field& field, const BonusRule& rule) {
  switch (rule.condition) {
    case Condition::LedALap:
      return result.lapsLed > 0;
    case Condition::MostLed:
      return result.lapsLed > 0 && result.lapsLed == field.mostLed;
    case Condition::MostLedOrNobody:
      return result.lapsLed == field.mostLed;
    case Condition::Win:
      return result.finish == 1;
    case Condition::Pole:
      return result.start == 1;
    case Condition::Top5:
      return result.finish <= 5;
    case Condition::Top10:
      return result.finish <= 10;
    case Condition::LeadLap:
      return result.lapsRun > 0 && result.lapsRun == field.mostLaps;
    case Condition::MostGained:
      return result.start > result.finish && result.start - result.finish == field.mostGained;
    case Condition::PoleWin:
      return result.start == 1 && result.finish == 1;
    case Condition::Starting:
      return true;
    case Condition::Other:
      break;
  }
  throw common::RuleError(fmt::format(
      "What the bonus rule \"{}\" asks for is the league's own and known to the file only. Without bonus "
      "points, or with a preset, it can be done.",
      rule.name));
}

// Closes the gaps that drivers who are left out leave in an order.
template <typename Member>
void Number(std::vector<SeasonResult*>& results, Member place) {
  std::sort(results.begin(), results.end(), [place](const SeasonResult* a, const SeasonResult* b) {
    return std::pair(a->*place, a->id) < std::pair(b->*place, b->id);
  });
  std::int32_t number = 0;
  for (SeasonResult* result : results) result->*place = ++number;
}

void ScoreRace(Field& field, const std::vector<std::int32_t>& table, const std::vector<BonusRule>& bonuses) {
  std::vector<SeasonResult*> starters;
  for (SeasonResult* result : field.finishers)
    if (result->start > 0) starters.push_back(result);
  Number(starters, &SeasonResult::start);
  Number(field.finishers, &SeasonResult::finish);
  for (const SeasonResult* result : field.finishers) {
    field.mostLed = std::max(field.mostLed, result->lapsLed);
    field.mostLaps = std::max(field.mostLaps, result->lapsRun);
    field.mostGained = std::max(field.mostGained, result->start - result->finish);
  }
  for (SeasonResult* result : field.finishers) {
    result->points = -result->pointsOff;
    result->bonus = 0;
    if (result->disqualified) continue;
    for (const BonusRule& rule : bonuses)
      if (Fulfils(*result, field, rule)) result->bonus += rule.points;
    const auto place = static_cast<std::size_t>(result->finish) - 1;
    result->points += (place < table.size() ? table[place] : 0) + result->bonus;
  }
}

}  // namespace

RaceRules ReadRaceRules(engine::Database& league, engine::Database& templateDb,
                        const common::ProcessState& state, const Season& season) {
  RaceRules rules;
  common::ProcessState own = state;
  scoring::LoadPointSystem(templateDb, league, own);
  rules.tables.push_back(Column(own, 0));
  if (own.simType == common::kNascarLegends && !own.useCustomPointSystem) {
    constexpr int kColumns = 3;
    for (int column = 1; column <= kColumns; ++column) rules.tables.push_back(Column(own, column));
    for (const std::int32_t race : season.races)
      rules.tableOf.push_back(static_cast<std::size_t>(scoring::PointStep(league, race, false).value_or(0)));
  }
  if (own.useCustomBonusSystem) {
    for (const auto& [id, rule] : StoredRules(league))
      if (rule.points != 0) rules.bonuses.push_back(rule);
  } else if (own.simType != common::kNascarLegends) {
    rules.bonuses = {{"Led a Lap", Condition::LedALap, kBuiltInBonus},
                     {"Most Led", Condition::MostLedOrNobody, kBuiltInBonus}};
  }
  return rules;
}

RaceRules RulesOf(engine::Database& league, const PointPreset& preset) {
  RaceRules rules;
  rules.tables.push_back(preset.points);
  auto stored = StoredRules(league);
  for (const auto& [id, points] : preset.bonuses) {
    const auto rule = stored.find(id);
    if (rule == stored.end())
      throw common::RuleError(
          fmt::format("The league has no bonus rule {}, which {} needs.", id, preset.name));
    rules.bonuses.push_back({rule->second.name, rule->second.condition, points});
  }
  return rules;
}

void ScoreRaces(Season& season, const RaceRules& rules, const std::vector<bool>& which) {
  std::vector<Field> fields(season.races.size());
  for (SeasonDriver& driver : season.drivers)
    for (SeasonResult& result : driver.results)
      if (which[result.race]) fields[result.race].finishers.push_back(&result);
  for (std::size_t race = 0; race < fields.size(); ++race) {
    const std::size_t table = rules.tableOf.empty() ? 0 : rules.tableOf[race];
    ScoreRace(fields[race], rules.tables[table], rules.bonuses);
  }
  season.SortResults();
}

RaceMost MostOfARace(const RaceRules& rules) {
  std::int32_t place = 0;
  for (std::size_t table = 0; table < rules.tables.size(); ++table) {
    // A table that no race of the season is scored by says nothing about the next one.
    const bool used = rules.tableOf.empty() ? table == 0
                                            : std::find(rules.tableOf.begin(), rules.tableOf.end(), table) !=
                                                  rules.tableOf.end();
    if (!used) continue;
    for (const std::int32_t points : rules.tables[table]) place = std::max(place, points);
  }
  RaceMost most;
  std::int32_t fromPole = 0;
  std::int32_t gained = 0;
  for (const BonusRule& rule : rules.bonuses) {
    if (rule.points <= 0) continue;
    // Nobody gains places from the pole.
    if (rule.condition == Condition::Pole || rule.condition == Condition::PoleWin) {
      fromPole += rule.points;
    } else if (rule.condition == Condition::MostGained) {
      gained += rule.points;
    } else {
      most.bonus += rule.points;
    }
  }
  most.bonus += std::max(fromPole, gained);
  most.points = place + most.bonus;
  return most;
}

}  // namespace scorvane::championship
