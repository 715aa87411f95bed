#include "scoring/RaceScoring.h"

#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "engine/sql/Parser.h"
#include "scoring/Penalties.h"
#include "scoring/PointSystem.h"

namespace scorvane::scoring {
namespace {

void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
}

// A statement is written against the staged tables; without their prefix it means the stored ones.
void ExecuteFor(engine::Database& league, std::string statement, bool staged,
                const engine::QueryLimits& limits = {}) {
  if (!staged) ReplaceAll(statement, "STN", "");
  league.Execute(statement, limits);
}

std::string SelectFor(bool staged, std::string_view fields, std::int32_t raceId, std::string_view order) {
  return fmt::format("SELECT {} FROM {} WHERE {}={} ORDER BY {}", fields, staged ? "STNStats" : "Stats",
                     staged ? "STNRaceID" : "RaceID", raceId, order);
}

}  // namespace

void ApplyBonusPoints(engine::Database& league, const common::ProcessState& state, std::int32_t raceId,
                      bool staged) {
  if (state.useCustomBonusSystem) {
    auto rules = league.OpenRecordset("SELECT * FROM Bonus");
    for (; !rules.AtEnd(); rules.MoveNext()) {
      std::string condition = rules["Query"].ToText();
      ReplaceAll(condition, "<RACEID>", fmt::format_int(raceId).str());
      const engine::Value& value = rules["Points"];
      const std::string points = value.IsNull() ? "0" : value.ToText();
      try {
        engine::sql::CheckBrackets(condition);
        ExecuteFor(
            league,
            fmt::format(
                "UPDATE STNStats SET Bonus=Bonus+{0}, Points=Points+{0} WHERE (STNRaceID={1}) AND ({2})",
                points, raceId, condition),
            staged, engine::kFileTextLimits);
      } catch (const engine::EngineError& error) {
        throw error.About(fmt::format("The bonus rule \"{}\"", rules["Name"].ToText()));
      }
    }
  } else if (state.simType != common::kNascarLegends) {
    ExecuteFor(
        league,
        fmt::format(
            "UPDATE STNStats SET Bonus=Bonus+5, Points=Points+5 WHERE (STNRaceID={}) AND (LapsLed > 0)",
            raceId),
        staged);
    ExecuteFor(league,
               fmt::format("UPDATE STNStats SET Bonus=Bonus+5, Points=Points+5 WHERE (STNRaceID={0}) AND "
                           "(LapsLed=(SELECT Max(LapsLed) FROM STNStats WHERE STNRaceID={0}))",
                           raceId),
               staged);
  }
}

namespace {

void ScoreAnew(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
               std::int32_t raceId, bool staged) {
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::Keep);
  int column = 0;
  if (state.simType == common::kNascarLegends && !state.useCustomPointSystem)
    column = PointStep(league, raceId, staged).value_or(0);
  LoadPointSystem(templateDb, league, state);

  auto starters = league.OpenRecordset(SelectFor(staged, "Start", raceId, "Qualifying DESC, Start"),
                                       engine::RecordsetType::Dynaset);
  for (std::int32_t start = 1; !starters.AtEnd(); ++start, starters.MoveNext()) {
    if (starters.At(0) == engine::Value(start)) continue;
    starters.Edit();
    starters.Set("Start", start);
    starters.Update();
  }

  auto finishers =
      league.OpenRecordset(SelectFor(staged, "Finish, Points, Bonus, PrizeMoney", raceId, "Finish"),
                           engine::RecordsetType::Dynaset);
  for (std::int32_t finish = 1; !finishers.AtEnd(); ++finish, finishers.MoveNext()) {
    Score score = ScoreByPosition(state, finish, column);
    const bool same = finishers.At(0) == engine::Value(finish) && finishers.At(1) == score.points &&
                      finishers.At(2) == engine::Value(0) && finishers.At(3) == score.prizeMoney;
    if (same) continue;
    finishers.Edit();
    finishers.Set("Finish", finish);
    finishers.Set("Points", std::move(score.points));
    finishers.Set("Bonus", 0);
    finishers.Set("PrizeMoney", std::move(score.prizeMoney));
    finishers.Update();
  }

  ApplyBonusPoints(league, state, raceId, staged);
  unit.Commit();
}

}  // namespace

void RecalculateRace(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                     std::int32_t raceId, bool staged) {
  const auto score = [&] { ScoreAnew(templateDb, league, state, raceId, staged); };
  if (staged) return score();
  RescoreWithPenalties(templateDb, league, state, raceId, score);
}

}  // namespace scorvane::scoring
