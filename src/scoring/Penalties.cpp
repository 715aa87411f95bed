#include "scoring/Penalties.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <set>
#include <utility>

#include "common/SqlText.h"
#include "db/Tables.h"
#include "engine/EngineError.h"
#include "scoring/PenaltyBase.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace scorvane::scoring {
namespace {

constexpr int kReasonLength = 255;
constexpr const char* kDisqualified = "Disqualified";

bool HasTables(const engine::Database& league) {
  return league.FindTableDef("Penalty") != nullptr && league.FindTableDef("PenaltyBase") != nullptr;
}

// Works out what the penalties make of a race.
class Stewards {
 public:
  Stewards(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
           std::int32_t raceId)
      : templateDb_(templateDb),
        league_(league),
        state_(state),
        raceId_(raceId),
        base_(ReadBase(league, raceId)) {
    for (std::size_t i = 0; i < base_.size(); ++i) {
      if (base_[i].finish.IsNull()) continue;
      order_.push_back(i);
      places_.push_back(base_[i].finish);
    }
    verdicts_.resize(base_.size());
  }

  // The results lie in Stats as they are without penalties.
  void Apply(const std::vector<Penalty>& penalties) {
    for (const Penalty& penalty : penalties) Judge(penalty);
    std::vector<Row> outcome = base_;
    if (!std::is_sorted(order_.begin(), order_.end())) MoveUp(outcome);
    for (std::size_t i = 0; i < outcome.size(); ++i) {
      Row& row = outcome[i];
      if (verdicts_[i].disqualified) {
        row.points = row.bonus = row.prizeMoney = engine::Value(0);
        row.status = engine::Value(kDisqualified);
      }
      row.points = Moved(row.points, -verdicts_[i].pointsOff);
    }
    WriteResults(league_, raceId_, outcome);
  }

 private:
  struct Verdict {
    std::int64_t pointsOff = 0;
    bool disqualified = false;
  };

  void Judge(const Penalty& penalty) {
    const auto bearer = std::find_if(base_.begin(), base_.end(),
                                     [&](const Row& row) { return row.driverId == penalty.driverId; });
    if (bearer == base_.end()) return;
    const auto index = static_cast<std::size_t>(bearer - base_.begin());
    Verdict& verdict = verdicts_[index];
    switch (penalty.kind) {
      case PenaltyKind::Points:
        verdict.pointsOff += penalty.amount;
        break;
      case PenaltyKind::Position:
        if (!verdict.disqualified) MoveBack(index, PlaceOf(penalty.amount));
        break;
      case PenaltyKind::Disqualification:
        verdict.pointsOff = 0;
        if (std::exchange(verdict.disqualified, true)) break;
        MoveLast(index);
        break;
    }
  }

  // Where in the order a place is, or the next one behind it where the race has none of this number.
  std::size_t PlaceOf(std::int32_t place) const {
    const auto found = std::find_if(places_.begin(), places_.end(),
                                    [&](const engine::Value& value) { return value.ToLong() >= place; });
    return static_cast<std::size_t>(found - places_.begin());
  }

  // Those who are disqualified stay behind everybody else.
  void MoveBack(std::size_t index, std::size_t to) {
    const auto end = order_.end() - static_cast<std::ptrdiff_t>(disqualified_);
    const auto at = std::find(order_.begin(), end, index);
    if (at == end) return;
    const auto target =
        order_.begin() + static_cast<std::ptrdiff_t>(std::min(to, order_.size() - disqualified_ - 1));
    if (target > at) std::rotate(at, at + 1, target + 1);
  }

  void MoveLast(std::size_t index) {
    const auto at = std::find(order_.begin(), order_.end(), index);
    if (at == order_.end()) return;
    std::rotate(at, at + 1, order_.end());
    ++disqualified_;
  }

  // Gives the results the places of their new order, and what these are worth more or less than the old ones.
  // Only the differences count: what was edited by hand stays.
  void MoveUp(std::vector<Row>& outcome) {
    LoadPointSystem(templateDb_, league_, state_);
    if (state_.simType == common::kNascarLegends && !state_.useCustomPointSystem)
      column_ = PointStep(league_, raceId_, false).value_or(0);
    for (std::size_t place = 0; place < order_.size(); ++place)
      outcome[order_[place]].finish = places_[place];
    const auto before = RuleBonuses(base_);
    const auto after = RuleBonuses(outcome);
    for (std::size_t i = 0; i < outcome.size(); ++i) {
      Row& row = outcome[i];
      const Score old = Worth(base_[i].finish);
      const Score now = Worth(row.finish);
      const std::int64_t bonus = after.at(row.id) - before.at(row.id);
      row.points = Moved(row.points, Number(now.points) - Number(old.points) + bonus);
      row.bonus = Moved(row.bonus, bonus);
      row.prizeMoney = Moved(row.prizeMoney, Number(now.prizeMoney) - Number(old.prizeMoney));
    }
  }

  Score Worth(const engine::Value& finish) const {
    const std::int64_t place = Number(finish);
    if (place < 1) return {engine::Value(0), engine::Value()};
    return ScoreByPosition(state_, static_cast<int>(place), column_);
  }

  // What the rules give each result of a race that is freshly scored in this order.
  std::map<std::int32_t, std::int64_t> RuleBonuses(std::vector<Row> rows) {
    for (Row& row : rows) {
      row.points = Worth(row.finish).points;
      row.bonus = engine::Value(0);
    }
    WriteResults(league_, raceId_, rows);
    ApplyBonusPoints(league_, state_, raceId_, false);
    std::map<std::int32_t, std::int64_t> bonuses;
    for (const Row& row : ReadResults(league_, raceId_)) bonuses[row.id] = Number(row.bonus);
    return bonuses;
  }

  engine::Database& templateDb_;
  engine::Database& league_;
  common::ProcessState& state_;
  const std::int32_t raceId_;
  const std::vector<Row> base_;
  std::vector<engine::Value> places_;  // the finishes that the race has, gaps and all
  std::vector<std::size_t> order_;     // indexes into the base, in the order of the places
  std::vector<Verdict> verdicts_;      // by index into the base
  std::size_t disqualified_ = 0;       // at the end of the order
  int column_ = 0;
};

std::int32_t Characters(const std::string& text) {
  return static_cast<std::int32_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

std::string CleanReason(std::string_view typed) {
  constexpr const char* kBlanks = " \t\r\n\v\f";
  const std::size_t first = typed.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return std::string(typed.substr(first, typed.find_last_not_of(kBlanks) - first + 1));
}

std::string Ordinal(std::int32_t number) {
  const std::int32_t tens = number % 100;
  const char* ending = "th";
  if (tens < 11 || tens > 13) {
    if (number % 10 == 1) ending = "st";
    if (number % 10 == 2) ending = "nd";
    if (number % 10 == 3) ending = "rd";
  }
  return fmt::format("{}{}", number, ending);
}

std::string Describe(const Penalty& penalty) {
  switch (penalty.kind) {
    case PenaltyKind::Points:
      return fmt::format("{} point{} off", penalty.amount, penalty.amount == 1 ? "" : "s");
    case PenaltyKind::Position:
      return "moved to " + Ordinal(penalty.amount);
    case PenaltyKind::Disqualification:
      break;
  }
  return "disqualified";
}

std::vector<Penalty> ListPenalties(engine::Database& league, std::optional<std::int32_t> raceId) {
  std::vector<Penalty> penalties;
  if (!HasTables(league)) return penalties;
  auto rows = league.OpenRecordset(fmt::format(
      "SELECT Penalty.PenaltyID, Penalty.RaceID, Penalty.DriverID, Penalty.Kind, Penalty.Amount, "
      "Penalty.Reason, "
      "Penalty.Given, Race.Name, Driver.Name FROM (Penalty INNER JOIN Race ON Penalty.RaceID=Race.RaceID) "
      "INNER "
      "JOIN Driver ON Penalty.DriverID=Driver.DriverID {} ORDER BY Penalty.RaceID, Penalty.PenaltyID",
      raceId ? fmt::format("WHERE Penalty.RaceID={}", *raceId) : std::string()));
  std::vector<Row> base;  // of the race of the penalty before
  for (; !rows.AtEnd(); rows.MoveNext()) {
    Penalty penalty;
    penalty.id = rows.At(0).ToLong();
    penalty.raceId = rows.At(1).ToLong();
    penalty.driverId = rows.At(2).ToLong();
    penalty.kind = static_cast<PenaltyKind>(Number(rows.At(3)));
    penalty.amount = static_cast<std::int32_t>(Number(rows.At(4)));
    penalty.reason = rows.At(5).ToText();
    penalty.given = rows.At(6).ToText();
    penalty.race = rows.At(7).ToText();
    penalty.driver = rows.At(8).ToText();
    if (penalties.empty() || penalties.back().raceId != penalty.raceId)
      base = ReadBase(league, penalty.raceId);
    const auto bearer = std::find_if(base.begin(), base.end(),
                                     [&](const Row& row) { return row.driverId == penalty.driverId; });
    if (bearer != base.end()) penalty.resultId = bearer->id;
    penalties.push_back(std::move(penalty));
  }
  return penalties;
}

std::int32_t DriverOfResult(engine::Database& league, std::int32_t resultId) {
  return league.OpenRecordset(fmt::format("SELECT DriverID FROM Stats WHERE StatsID={}", resultId))
      .At(0)
      .ToLong();
}

std::map<std::int32_t, std::string> PenaltyTexts(engine::Database& league, std::int32_t raceId) {
  std::map<std::int32_t, std::string> texts;
  for (const Penalty& penalty : ListPenalties(league, raceId)) {
    if (!penalty.resultId) continue;
    std::string& text = texts[*penalty.resultId];
    if (!text.empty()) text += "; ";
    text += fmt::format("{} ({})", penalty.reason, Describe(penalty));
  }
  return texts;
}

void CheckPenalty(engine::Database& league, const Penalty& penalty) {
  const std::string reason = CleanReason(penalty.reason);
  if (reason.empty()) throw PenaltyError("A penalty needs a reason.");
  if (Characters(reason) > kReasonLength)
    throw PenaltyError(
        fmt::format("A reason has room for {} characters, not {}.", kReasonLength, Characters(reason)));
  if (penalty.kind == PenaltyKind::Points && penalty.amount < 1)
    throw PenaltyError("The points to take off are a whole number from 1 on.");
  if (league.OpenRecordset(fmt::format("SELECT RaceID FROM Race WHERE RaceID={}", penalty.raceId)).AtEnd())
    throw PenaltyError(fmt::format("The league has no race {}.", penalty.raceId));
  const auto driver =
      league.OpenRecordset(fmt::format("SELECT Name FROM Driver WHERE DriverID={}", penalty.driverId));
  if (driver.AtEnd()) throw PenaltyError(fmt::format("The league has no driver {}.", penalty.driverId));
  const std::string name = driver.At(0).ToText();

  const bool penalised = HasPenalties(league, penalty.raceId);
  std::vector<Row> rows = ReadResults(league, penalty.raceId);
  // Who bears a penalty is settled by the places without any.
  std::int32_t resultId = 0;
  std::optional<std::int64_t> best;
  for (const Row& row : penalised ? ReadBase(league, penalty.raceId) : rows) {
    if (row.driverId != penalty.driverId) continue;
    const std::int64_t place = row.finish.IsNull() ? INT32_MAX : Number(row.finish);
    if (best && *best <= place) continue;
    best = place;
    resultId = row.id;
  }
  if (!best) throw PenaltyError(fmt::format("{} has no result in this race.", name));
  std::set<std::int32_t> disqualified;
  for (const Penalty& earlier : ListPenalties(league, penalty.raceId))
    if (earlier.resultId && earlier.kind == PenaltyKind::Disqualification)
      disqualified.insert(*earlier.resultId);
  if (penalty.kind != PenaltyKind::Points && disqualified.contains(resultId))
    throw PenaltyError(fmt::format("{} is disqualified already.", name));
  if (penalty.kind != PenaltyKind::Position) return;

  std::vector<std::int64_t> places;
  std::optional<std::int64_t> now;
  for (const Row& row : rows) {
    if (row.finish.IsNull()) continue;
    places.push_back(Number(row.finish));
    if (row.id == resultId) now = Number(row.finish);
  }
  std::sort(places.begin(), places.end());
  if (penalty.amount < 1 || !std::binary_search(places.begin(), places.end(), penalty.amount)) {
    throw PenaltyError(
        places.empty() || penalty.amount <= places.back()
            ? fmt::format("This race has no place {}.", penalty.amount)
            : fmt::format("This race has no place {}: its last one is {}.", penalty.amount, places.back()));
  }
  if (!now) throw PenaltyError(fmt::format("{} has no place in this race.", name));
  const std::string standing =
      fmt::format("{} is {} already", name, Ordinal(static_cast<std::int32_t>(*now)));
  if (*now >= penalty.amount) throw PenaltyError(standing + ": a penalty moves a result back.");
  if (disqualified.size() < places.size() && *now >= places[places.size() - 1 - disqualified.size()])
    throw PenaltyError(standing + ": behind stands only who is disqualified.");
}

void MakePenaltyTables(engine::Database& league) {
  engine::UnitOfWork unit(league);
  if (league.FindTableDef("Penalty") == nullptr) {
    league.AppendTableDef(db::PenaltyTable());
    league.AppendRelation(db::CascadingRelation("RacePenaltyX", "Race", "Penalty", "RaceID"));
    league.AppendRelation(db::CascadingRelation("DriverPenaltyX", "Driver", "Penalty", "DriverID"));
  }
  if (league.FindTableDef("PenaltyBase") == nullptr) {
    league.AppendTableDef(db::PenaltyBaseTable());
    league.AppendRelation(db::CascadingRelation("StatsPenaltyBaseX", "Stats", "PenaltyBase", "StatsID"));
  }
  unit.Commit();
}

std::int32_t AddPenalty(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                        const Penalty& penalty) {
  engine::UnitOfWork unit(league);
  CheckPenalty(league, penalty);
  MakePenaltyTables(league);
  if (!HasPenalties(league, penalty.raceId)) TakeBase(league, penalty.raceId);
  std::string statement = fmt::format(
      "INSERT INTO Penalty (RaceID, DriverID, Kind, Amount, Given, Reason) VALUES ({}, {}, {}, {}, "
      "'{:%Y-%m-%d "
      "%H:%M}', ",
      penalty.raceId, penalty.driverId, static_cast<std::int32_t>(penalty.kind),
      penalty.kind == PenaltyKind::Disqualification ? 0 : penalty.amount, fmt::localtime(std::time(nullptr)));
  common::AppendLiteral(statement, CleanReason(penalty.reason));
  league.Execute(statement + ")");
  const std::int32_t id = common::GetMaxID(league, "Penalty", "PenaltyID");
  ApplyPenalties(templateDb, league, state, penalty.raceId);
  unit.Commit();
  return id;
}

Penalty ReadPenalty(engine::Database& league, std::int32_t penaltyId) {
  for (Penalty& penalty : ListPenalties(league))
    if (penalty.id == penaltyId) return std::move(penalty);
  throw PenaltyError(fmt::format("The league has no penalty {}.", penaltyId));
}

void RemovePenalty(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                   std::int32_t penaltyId) {
  engine::UnitOfWork unit(league);
  const Penalty penalty = ReadPenalty(league, penaltyId);
  league.Execute(fmt::format("DELETE * FROM Penalty WHERE PenaltyID={}", penaltyId));
  ApplyPenalties(templateDb, league, state, penalty.raceId);
  unit.Commit();
}

bool HasPenalties(engine::Database& league, std::int32_t raceId) {
  return HasTables(league) &&
         !league.OpenRecordset(fmt::format("SELECT PenaltyID FROM Penalty WHERE RaceID={}", raceId)).AtEnd();
}

std::vector<std::int32_t> PenalisedRacesOf(engine::Database& league,
                                           const std::vector<std::int32_t>& driverIds) {
  std::vector<std::int32_t> races;
  if (!HasTables(league)) return races;
  for (const std::int32_t id : driverIds) {
    for (auto rows = league.OpenRecordset(fmt::format(
             "SELECT DISTINCT RaceID FROM Penalty WHERE DriverID={0} OR RaceID IN (SELECT RaceID FROM "
             "Stats WHERE DriverID={0})",
             id));
         !rows.AtEnd(); rows.MoveNext())
      races.push_back(rows.At(0).ToLong());
  }
  std::sort(races.begin(), races.end());
  races.erase(std::unique(races.begin(), races.end()), races.end());
  return races;
}

void EditWithPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                       std::int32_t raceId, const std::function<void()>& edit) {
  if (!HasPenalties(league, raceId)) return edit();
  engine::UnitOfWork unit(league);
  const std::vector<Row> before = ReadResults(league, raceId);
  edit();
  FoldIntoBase(league, raceId, before);
  ApplyPenalties(templateDb, league, state, raceId);
  unit.Commit();
}

void RescoreWithPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                          std::int32_t raceId, const std::function<void()>& rescore) {
  if (!HasPenalties(league, raceId)) return rescore();
  engine::UnitOfWork unit(league);
  RestoreBase(league, raceId);
  rescore();
  DropBase(league, raceId);
  TakeBase(league, raceId);
  ApplyPenalties(templateDb, league, state, raceId);
  unit.Commit();
}

void ApplyPenalties(engine::Database& templateDb, engine::Database& league, common::ProcessState& state,
                    std::int32_t raceId) {
  if (!HasTables(league)) return;
  engine::UnitOfWork unit(league);
  RestoreBase(league, raceId);
  const std::vector<Penalty> penalties = ListPenalties(league, raceId);
  if (penalties.empty()) {
    DropBase(league, raceId);
  } else {
    Stewards(templateDb, league, state, raceId).Apply(penalties);
  }
  unit.Commit();
}

}  // namespace scorvane::scoring
