#include "scoring/PenaltyBase.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

namespace scorvane::scoring {
namespace {

// Throws EngineError 6 outside 32 bits.
engine::Value Long(std::int64_t number) {
  return engine::Value(engine::Value(static_cast<double>(number)).ToLong());
}

std::vector<Row> ReadRows(engine::Database& league, const std::string& query) {
  std::vector<Row> found;
  for (auto rows = league.OpenRecordset(query); !rows.AtEnd(); rows.MoveNext()) {
    found.push_back({rows.At(0).ToLong(), rows.At(1).IsNull() ? 0 : rows.At(1).ToLong(), rows.At(2),
                     rows.At(3), rows.At(4), rows.At(5), rows.At(6)});
  }
  return found;
}

}  // namespace

std::int64_t Number(const engine::Value& value) {
  return value.IsNull() ? 0 : value.ToLong();
}

engine::Value Moved(const engine::Value& value, std::int64_t difference) {
  return difference == 0 ? value : Long(Number(value) + difference);
}

std::vector<Row> ReadResults(engine::Database& league, std::int32_t raceId) {
  return ReadRows(league,
                  fmt::format("SELECT StatsID, DriverID, Finish, Points, Bonus, PrizeMoney, Status FROM "
                              "Stats WHERE RaceID={} ORDER BY StatsID",
                              raceId));
}

std::vector<Row> ReadBase(engine::Database& league, std::int32_t raceId) {
  std::vector<Row> rows = ReadRows(
      league,
      fmt::format("SELECT PenaltyBase.StatsID, Stats.DriverID, PenaltyBase.Finish, PenaltyBase.Points, "
                  "PenaltyBase.Bonus, PenaltyBase.PrizeMoney, PenaltyBase.Status FROM PenaltyBase INNER "
                  "JOIN Stats ON PenaltyBase.StatsID=Stats.StatsID WHERE Stats.RaceID={}",
                  raceId));
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    if (a.finish.IsNull() != b.finish.IsNull()) return b.finish.IsNull();
    return std::pair(Number(a.finish), a.id) < std::pair(Number(b.finish), b.id);
  });
  return rows;
}

void TakeBase(engine::Database& league, std::int32_t raceId) {
  league.Execute(
      fmt::format("INSERT INTO PenaltyBase (StatsID, Finish, Points, Bonus, PrizeMoney, Status) SELECT "
                  "StatsID, Finish, Points, Bonus, PrizeMoney, Status FROM Stats WHERE RaceID={}",
                  raceId));
}

void DropBase(engine::Database& league, std::int32_t raceId) {
  league.Execute(fmt::format(
      "DELETE * FROM PenaltyBase WHERE StatsID IN (SELECT StatsID FROM Stats WHERE RaceID={})", raceId));
}

void WriteResults(engine::Database& league, std::int32_t raceId, const std::vector<Row>& rows) {
  const std::vector<Row> stored = ReadResults(league, raceId);
  for (const Row& row : rows) {
    const auto same = std::lower_bound(stored.begin(), stored.end(), row.id,
                                       [](const Row& other, std::int32_t id) { return other.id < id; });
    if (same == stored.end() || same->id != row.id || *same == row) continue;
    auto result = league.OpenRecordset(
        fmt::format("SELECT Finish, Points, Bonus, PrizeMoney, Status FROM Stats WHERE StatsID={}", row.id),
        engine::RecordsetType::Dynaset);
    result.Edit();
    result.Set("Finish", row.finish);
    result.Set("Points", row.points);
    result.Set("Bonus", row.bonus);
    result.Set("PrizeMoney", row.prizeMoney);
    result.Set("Status", row.status);
    result.Update();
  }
}

void RestoreBase(engine::Database& league, std::int32_t raceId) {
  WriteResults(league, raceId, ReadBase(league, raceId));
}

// What an edit changed of the outcome goes to the base: numbers by their difference, place and status as
// typed.
void FoldIntoBase(engine::Database& league, std::int32_t raceId, const std::vector<Row>& before) {
  for (const Row& now : ReadResults(league, raceId)) {
    const auto old =
        std::find_if(before.begin(), before.end(), [&](const Row& row) { return row.id == now.id; });
    if (old == before.end()) {
      league.Execute(
          fmt::format("INSERT INTO PenaltyBase (StatsID, Finish, Points, Bonus, PrizeMoney, Status) SELECT "
                      "StatsID, Finish, "
                      "Points, Bonus, PrizeMoney, Status FROM Stats WHERE StatsID={}",
                      now.id));
      continue;
    }
    if (now == *old) continue;
    auto base = league.OpenRecordset(fmt::format("SELECT * FROM PenaltyBase WHERE StatsID={}", now.id),
                                     engine::RecordsetType::Dynaset);
    if (base.AtEnd()) continue;
    const auto moved = [&](const char* field, const engine::Value& from, const engine::Value& to) {
      return to.IsNull() ? to : Moved(base[field], Number(to) - Number(from));
    };
    const engine::Value points = moved("Points", old->points, now.points);
    const engine::Value bonus = moved("Bonus", old->bonus, now.bonus);
    const engine::Value prizeMoney = moved("PrizeMoney", old->prizeMoney, now.prizeMoney);
    base.Edit();
    base.Set("Points", points);
    base.Set("Bonus", bonus);
    base.Set("PrizeMoney", prizeMoney);
    if (now.finish != old->finish) base.Set("Finish", now.finish);
    if (now.status != old->status) base.Set("Status", now.status);
    base.Update();
  }
}

}  // namespace scorvane::scoring
