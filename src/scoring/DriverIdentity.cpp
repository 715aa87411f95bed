#include "scoring/DriverIdentity.h"

#include <string>

#include <fmt/format.h>

#include "common/Formats.h"
#include "common/SqlText.h"

namespace scorvane::scoring {
namespace {

bool FirstIsExcluded(const engine::Recordset& rows) {
  if (rows.AtEnd()) return false;
  const engine::Value& exclude = rows.At(0);  // Null in rows older than the field
  return !exclude.IsNull() && exclude.ToBoolean();
}

}  // namespace

std::int32_t FindOrAddDriver(engine::Database& league, std::string_view name) {
  const std::string quoted = common::QuoteSQL(common::TrimBlanks(name));
  {
    const auto rows = league.OpenRecordset("SELECT DriverID FROM Driver WHERE Name=" + quoted);
    if (!rows.AtEnd()) return rows.At(0).ToLong();
  }
  league.Execute(fmt::format("INSERT INTO Driver (Name, Handicap) VALUES ({},0)", quoted));
  return common::GetMaxID(league, "Driver", "DriverID");
}

bool IsExcludedById(engine::Database& league, std::int32_t driverId) {
  return FirstIsExcluded(
      league.OpenRecordset(fmt::format("SELECT Exclude FROM Driver WHERE DriverID={}", driverId)));
}

bool IsExcludedByName(engine::Database& league, std::string_view name) {
  std::string select = "SELECT Exclude FROM Driver WHERE Name=";
  common::AppendQuoted(select, name);
  return FirstIsExcluded(league.OpenRecordset(select));
}

Exclusions::Exclusions(engine::Database& league)
    : league_(league),
      any_(!league.OpenRecordset("SELECT TOP 1 DriverID FROM Driver WHERE Exclude=True").AtEnd()) {}

}  // namespace scorvane::scoring
