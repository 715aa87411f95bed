#include "drivers/Roster.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/Formats.h"
#include "common/SqlText.h"
#include "scoring/RaceScoring.h"

namespace scorvane::drivers {
namespace {

const char* Word(bool flag) {
  return flag ? "True" : "False";
}

bool Flag(const engine::Value& value) {
  return !value.IsNull() && value.ToBoolean();
}

Driver CurrentDriver(const engine::Recordset& rows) {
  Driver driver;
  driver.id = rows["DriverID"].ToLong();
  driver.name = rows["Name"].ToText();
  driver.excluded = Flag(rows["Exclude"]);
  driver.rookie = Flag(rows["Rookie"]);
  driver.handicap = rows["Handicap"].IsNull() ? 0 : rows["Handicap"].ToLong();
  return driver;
}

}  // namespace

std::vector<Driver> ListDrivers(engine::Database& league) {
  std::vector<Driver> drivers;
  for (auto rows = league.OpenRecordset("SELECT * FROM Driver ORDER BY Name"); !rows.AtEnd(); rows.MoveNext())
    drivers.push_back(CurrentDriver(rows));
  return drivers;
}

std::optional<Driver> ReadDriver(engine::Database& league, std::int32_t id) {
  const auto rows = league.OpenRecordset(fmt::format("SELECT * FROM Driver WHERE DriverID={}", id));
  if (rows.AtEnd()) return std::nullopt;
  return CurrentDriver(rows);
}

std::optional<std::int32_t> FindNameClash(engine::Database& league, const std::string& name,
                                          std::optional<std::int32_t> id) {
  std::string sql = "SELECT DriverID FROM Driver WHERE Name=" + common::QuoteSQL(common::TrimBlanks(name));
  if (id) sql += fmt::format(" AND DriverID<>{}", *id);
  const auto rows = league.OpenRecordset(sql);
  if (rows.AtEnd()) return std::nullopt;
  return rows.At(0).ToLong();
}

std::int32_t AddDriver(engine::Database& league, const Driver& driver) {
  engine::UnitOfWork unit(league);
  league.Execute(fmt::format("INSERT INTO Driver (Name,Exclude,Rookie,Handicap) VALUES ({},{},{},{})",
                             common::QuoteSQL(common::TrimBlanks(driver.name)), Word(driver.excluded),
                             Word(driver.rookie), driver.handicap));
  const std::int32_t id = common::GetMaxID(league, "Driver", "DriverID");
  unit.Commit();
  return id;
}

void UpdateDriver(engine::Database& league, const Driver& driver) {
  league.Execute(
      fmt::format("UPDATE Driver SET Name={}, Handicap={}, Rookie={}, Exclude={} WHERE DriverID = {}",
                  common::QuoteSQL(common::TrimBlanks(driver.name)), driver.handicap, Word(driver.rookie),
                  Word(driver.excluded), driver.id));
}

void MergeDrivers(engine::Database& league, std::int32_t from, std::int32_t into) {
  engine::UnitOfWork unit(league);
  league.Execute(fmt::format("UPDATE Stats SET DriverID={} WHERE DriverID={}", into, from));
  if (common::TableExists(league, "Penalty"))
    league.Execute(fmt::format("UPDATE Penalty SET DriverID={} WHERE DriverID={}", into, from));
  league.Execute(fmt::format("DELETE * FROM Driver WHERE DriverID={}", from));
  unit.Commit();
}

void SetExclude(engine::Database& league, const std::vector<std::int32_t>& ids, bool exclude) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t id : ids)
    league.Execute(fmt::format("UPDATE Driver SET Exclude={} WHERE DriverID={}", Word(exclude), id));
  unit.Commit();
}

void RemoveDrivers(engine::Database& league, const std::vector<std::int32_t>& ids) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t id : ids) league.Execute(fmt::format("DELETE * FROM Driver WHERE DriverID={}", id));
  unit.Commit();
}

void RemoveExcludedResults(engine::Database& templateDb, engine::Database& league,
                           common::ProcessState& state, common::UserInterface& ui) {
  engine::UnitOfWork unit(league);
  league.Execute(
      "DELETE Stats.* FROM Driver INNER JOIN Stats ON Driver.DriverID = Stats.DriverID WHERE "
      "(((Driver.Exclude)=True));");
  auto races = league.OpenRecordset("SELECT RaceID FROM Race", engine::RecordsetType::ForwardOnly);
  const auto progress = ui.StartProgress("Remove Excluded Results", static_cast<int>(races.RecordCount()));
  progress->SetInfo("Recalculating...");
  for (int done = 0; !races.AtEnd(); races.MoveNext()) {
    scoring::RecalculateRace(templateDb, league, state, races.At(0).ToLong(), false);
    progress->SetValue(++done);
  }
  unit.Commit();
}

std::int32_t HandicapFromText(const std::string& text) {
  const double number = std::trunc(engine::LeadingNumber(text));
  return static_cast<std::int32_t>(std::clamp<double>(number, std::numeric_limits<std::int32_t>::min(),
                                                      std::numeric_limits<std::int32_t>::max()));
}

}  // namespace scorvane::drivers
