#include "db/LeagueCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "db/Tables.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::db {
namespace {

constexpr std::size_t kMostOfAKind = 20;

class Checker {
 public:
  Checker(engine::Database& league, engine::Database& templateDb)
      : league_(league), templateDb_(templateDb) {}

  std::vector<std::string> Run() {
    for (const std::string& fault : league_.CheckIntegrity())
      faults_.push_back("The database: " + fault + ".");
    Schema();
    if (schemaIsWhole_) Rows();
    return std::move(faults_);
  }

 private:
  void Schema() {
    const std::vector<engine::TableDef> expected = {
        DriverTable(),       RaceTable(),        SettingsTable(), StatsTable(),       StagedRaceTable(),
        StagedResultTable(), PointSystemTable(), BonusTable(),    RankCriteriaTable()};
    for (const engine::TableDef& table : expected) {
      const engine::TableDef* present = league_.FindTableDef(table.Name);
      if (present == nullptr) {
        Missing(fmt::format("The table {} is missing", table.Name));
        continue;
      }
      for (const engine::Field& field : table.Fields) {
        const engine::Field* own = present->FindField(field.Name);
        if (own == nullptr) {
          Missing(fmt::format("The field {} of {} is missing", field.Name, table.Name));
        } else if (own->Type != field.Type) {
          Missing(fmt::format("The field {} of {} is of another type", field.Name, table.Name));
        }
      }
    }
    for (const char* name : {"DriverStatsX", "RaceStatsX", "STNRaceResults"}) {
      const auto& relations = league_.Relations();
      const bool there = std::any_of(
          relations.begin(), relations.end(),
          [&](const engine::Relation& relation) { return engine::SameName(relation.Name, name); });
      if (!there) faults_.push_back(fmt::format("The relation {} is missing.", name));
    }
  }

  // An older file, which opening it brings up to date, or a damaged one.
  void Missing(const std::string& what) {
    schemaIsWhole_ = false;
    faults_.push_back(what + "; opening the league adds what older files lack.");
  }

  // One fault a row of the query for which `text`, which takes the row, has something to say.
  template <typename Text>
  void Each(const std::string& query, Text text) {
    auto rows = league_.OpenRecordset(query);
    std::size_t count = 0;
    for (; !rows.AtEnd(); rows.MoveNext()) {
      std::string fault = text(rows);
      if (!fault.empty() && ++count <= kMostOfAKind) faults_.push_back(std::move(fault));
    }
    if (count > kMostOfAKind)
      faults_.push_back(fmt::format("... and {} more of this kind.", count - kMostOfAKind));
  }

  void Rows() {
    for (const auto& [table, what] :
         {std::pair{"PointSystem", "point system"}, std::pair{"Bonus", "bonus rules"},
          std::pair{"RankCriteria", "ranking criteria"}}) {
      if (league_.OpenRecordset(fmt::format("SELECT Count(*) AS N FROM {}", table)).At(0).ToLong() == 0)
        faults_.push_back(fmt::format("The league has no {}: the table {} is empty.", what, table));
    }
    Each("SELECT SettingsID FROM Settings ORDER BY SettingsID", [](const engine::Recordset& row) {
      return common::IsLeagueSetting(row.At(0).ToLong())
                 ? std::string()
                 : fmt::format("The setting {} is none that the program knows.", row.At(0).ToText());
    });
    Each("SELECT StatsID FROM Stats WHERE RaceID Is Null OR DriverID Is Null",
         [](const engine::Recordset& row) {
           return fmt::format("The result {} belongs to no race or no driver.", row.At(0).ToText());
         });
    Each("SELECT RaceID, Finish, Count(*) FROM Stats GROUP BY RaceID, Finish HAVING Count(*) > 1",
         [](const engine::Recordset& row) {
           return fmt::format("Race {} has position {} {} times.", row.At(0).ToText(), row.At(1).ToText(),
                              row.At(2).ToText());
         });
    Each("SELECT Name, Count(*) FROM Driver GROUP BY Name HAVING Count(*) > 1",
         [](const engine::Recordset& row) {
           return fmt::format("The driver {} is there {} times.", row.At(0).ToText(), row.At(1).ToText());
         });
    Each(
        "SELECT Stats.RaceID, Driver.Name, Count(*) FROM Stats INNER JOIN Driver ON "
        "Driver.DriverID=Stats.DriverID GROUP BY Stats.RaceID, Stats.DriverID, Driver.Name HAVING Count(*) > "
        "1",
        [](const engine::Recordset& row) {
          return fmt::format("{} has {} results in race {}.", row.At(1).ToText(), row.At(2).ToText(),
                             row.At(0).ToText());
        });
    Each("SELECT RaceID FROM Race WHERE Length Is Null OR Laps Is Null", [](const engine::Recordset& row) {
      return fmt::format("Race {} has no length or no laps.", row.At(0).ToText());
    });
    hasPenalties_ =
        league_.FindTableDef("Penalty") != nullptr && league_.FindTableDef("PenaltyBase") != nullptr;
    if (hasPenalties_) Penalties();
    Points();
  }

  void Penalties() {
    Each(
        "SELECT Penalty.PenaltyID, Driver.Name, Penalty.RaceID FROM Penalty INNER JOIN Driver ON "
        "Penalty.DriverID=Driver.DriverID WHERE NOT EXISTS (SELECT StatsID FROM Stats WHERE "
        "Stats.RaceID=Penalty.RaceID AND Stats.DriverID=Penalty.DriverID)",
        [](const engine::Recordset& row) {
          return fmt::format("The penalty {} of {} waits: the driver has no result in race {}.",
                             row.At(0).ToText(), row.At(1).ToText(), row.At(2).ToText());
        });
    Each("SELECT PenaltyID, Kind FROM Penalty WHERE Kind NOT IN (0, 1, 2)", [](const engine::Recordset& row) {
      return fmt::format("The penalty {} is of no kind that the program knows.", row.At(0).ToText());
    });
    Each(
        "SELECT DISTINCT Stats.RaceID FROM Stats INNER JOIN PenaltyBase ON Stats.StatsID=PenaltyBase.StatsID "
        "WHERE "
        "Stats.RaceID NOT IN (SELECT RaceID FROM Penalty)",
        [](const engine::Recordset& row) {
          return fmt::format("Race {} has no penalty, and yet its results without penalties are kept.",
                             row.At(0).ToText());
        });
    Each(
        "SELECT DISTINCT RaceID FROM Stats WHERE RaceID IN (SELECT RaceID FROM Penalty) AND StatsID NOT IN "
        "(SELECT "
        "StatsID FROM PenaltyBase)",
        [](const engine::Recordset& row) {
          return fmt::format("Race {} has penalties, and not all of its results are kept without them.",
                             row.At(0).ToText());
        });
  }

  // Position points are the result's points without its bonus; some table must have them.
  void Points() {
    std::set<std::int32_t> known = {0};
    auto collect = [&known](engine::Recordset rows) {
      for (; !rows.AtEnd(); rows.MoveNext())
        for (std::size_t i = 0; i < rows.FieldCount(); ++i)
          if (!rows.At(i).IsNull()) known.insert(rows.At(i).ToLong());
    };
    collect(templateDb_.OpenRecordset("SELECT Kirrelon, LPoints1, LPoints2, LPoints3 FROM PointSystem"));
    collect(league_.OpenRecordset("SELECT Points FROM PointSystem"));
    std::size_t unexplained = 0;
    std::string examples;
    // Of a race with penalties the results without them.
    auto rows = league_.OpenRecordset(
        hasPenalties_
            ? "SELECT Stats.RaceID, Driver.Name, IIf(PenaltyBase.StatsID Is Null, Stats.Points, "
              "PenaltyBase.Points), IIf(PenaltyBase.StatsID Is Null, Stats.Bonus, PenaltyBase.Bonus) FROM "
              "(Stats INNER JOIN Driver ON Driver.DriverID=Stats.DriverID) LEFT JOIN PenaltyBase ON "
              "Stats.StatsID=PenaltyBase.StatsID ORDER BY Stats.RaceID, Stats.Finish"
            : "SELECT Stats.RaceID, Driver.Name, Stats.Points, Stats.Bonus FROM Stats INNER JOIN Driver ON "
              "Driver.DriverID=Stats.DriverID ORDER BY Stats.RaceID, Stats.Finish");
    for (; !rows.AtEnd(); rows.MoveNext()) {
      const std::int32_t points = rows.At(2).IsNull() ? 0 : rows.At(2).ToLong();
      const std::int32_t bonus = rows.At(3).IsNull() ? 0 : rows.At(3).ToLong();
      if (known.contains(points - bonus)) continue;
      if (++unexplained <= 3) {
        examples += fmt::format("{}{} in race {} ({} points, {} of them bonus)", examples.empty() ? "" : ", ",
                                rows.At(1).ToText(), rows.At(0).ToText(), points, bonus);
      }
    }
    if (unexplained > 0)
      faults_.push_back(
          fmt::format("{} result(s) have points that no point table explains: {}.", unexplained, examples));
  }

  engine::Database& league_;
  engine::Database& templateDb_;
  std::vector<std::string> faults_;
  bool schemaIsWhole_ = true;
  bool hasPenalties_ = false;
};

}  // namespace

std::vector<std::string> CheckLeague(engine::Database& league, engine::Database& templateDb) {
  return Checker(league, templateDb).Run();
}

}  // namespace scorvane::db
