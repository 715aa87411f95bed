#include "db/Upgrade.h"

#include <exception>
#include <string_view>

#include <fmt/format.h>

#include "common/SqlText.h"
#include "db/MDBBuild.h"
#include "db/Tables.h"
#include "engine/EngineError.h"

namespace scorvane::db {
namespace {

using common::FieldExists;
using common::TableExists;
using engine::FieldType;

constexpr int kWeatherSize = 50;

// What cannot be done is skipped, but for what a full or failing disk refuses: a later step might then remove
// what this one was to copy.
template <typename Statement>
void Try(Statement statement) {
  try {
    statement();
  } catch (const engine::EngineError& error) {
    if (error.Number() == engine::kDiskFull || error.Number() == engine::kDiskError) throw;
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): skipped
  }
}

void TryAppend(engine::Database& database, std::string_view table, const char* field, FieldType type,
               int size = 0) {
  Try([&] { database.AppendField(table, Column(field, type, size)); });
}

void TryDelete(engine::Database& database, std::string_view table, std::string_view field) {
  Try([&] { database.DeleteField(table, field); });
}

void AppendRaceStatistics(engine::Database& league) {
  TryAppend(league, "Race", "RaceTime", FieldType::Text, 15);
  TryAppend(league, "Race", "AvgSpeed", FieldType::Text, 10);
  TryAppend(league, "Race", "VictoryMargin", FieldType::Text, 10);
  TryAppend(league, "Race", "Cautions", FieldType::Integer);
  TryAppend(league, "Race", "LeadChanges", FieldType::Integer);
  TryAppend(league, "Race", "Weather", FieldType::Text, 20);
}

// Drivers once had car numbers.
void ReplaceCarNumber(engine::Database& league) {
  TryDelete(league, "Driver", "CarNumber");
  Try([&] { league.DeleteIndex("STNStats", "DNumIDX"); });
  TryDelete(league, "STNStats", "DriverNum");
  TryAppend(league, "Driver", "Rookie", FieldType::Boolean);
  TryAppend(league, "Driver", "Handicap", FieldType::Long);
  Try([&] { league.SetFieldDefault("Driver", "Handicap", "0"); });
  Try([&] { league.Execute("UPDATE Driver SET Handicap=0"); });
}

bool WeatherIsNarrow(const engine::Database& league) {
  const engine::TableDef* race = league.FindTableDef("Race");
  const engine::Field* weather = race == nullptr ? nullptr : race->FindField("Weather");
  return weather == nullptr || weather->Size != kWeatherSize;
}

void WidenWeather(engine::Database& league) {
  Try([&] { league.RenameField("Race", "Weather", "Weather2"); });
  TryAppend(league, "Race", "Weather", FieldType::Text, kWeatherSize);
  Try([&] { league.Execute("UPDATE Race SET Weather=Weather2"); });
  TryDelete(league, "Race", "Weather2");
  // What is staged there does not outlive the import it belongs to.
  TryDelete(league, "STNRace", "Weather");
  TryAppend(league, "STNRace", "Weather", FieldType::Text, kWeatherSize);
}

void MarkCriteriaOfNewSimulations(engine::Database& league, engine::Database& templateDb) {
  TryAppend(league, "RankCriteria", "N4", FieldType::Boolean);
  Try([&] {
    auto rows = templateDb.OpenRecordset("SELECT RankCriteriaID, [N4] FROM RankCriteria",
                                         engine::RecordsetType::ForwardOnly);
    for (; !rows.AtEnd(); rows.MoveNext()) {
      Try([&] {
        const engine::Value& marked = rows.At(1);
        league.Execute(fmt::format("UPDATE RankCriteria SET [N4]={} WHERE RankCriteriaID={}",
                                   !marked.IsNull() && marked.ToBoolean() ? "True" : "False",
                                   rows.At(0).ToLong()));
      });
    }
  });
}

// Rows older than a field have Null in it, which no comparison finds. `RankCriteria.N4` keeps it: a criterion
// of the league's own is one of the older simulations.
void FillFlag(engine::Database& league, const char* table, const char* field) {
  Try([&] {
    if (league.OpenRecordset(fmt::format("SELECT TOP 1 {0} FROM {1} WHERE {0} Is Null", field, table))
            .AtEnd())
      return;
    league.Execute(fmt::format("UPDATE {1} SET {0}=False WHERE {0} Is Null", field, table));
  });
}

}  // namespace

void UpgradeLeagueFile(engine::Database& league, engine::Database& templateDb) {
  engine::UnitOfWork unit(league);
  if (!FieldExists(league, "Stats", "Dropped")) {
    TryAppend(league, "Stats", "Dropped", FieldType::Boolean);
    FillFlag(league, "Stats", "Dropped");
  }
  if (!FieldExists(league, "Driver", "Exclude")) TryAppend(league, "Driver", "Exclude", FieldType::Boolean);
  if (!FieldExists(league, "Race", "RaceTime")) AppendRaceStatistics(league);
  if (!TableExists(league, "STNRace")) Try([&] { CreateStagingAndTemplateTables(league, templateDb); });
  if (FieldExists(league, "Driver", "CarNumber")) ReplaceCarNumber(league);
  if (!FieldExists(league, "Stats", "AvgSpeed")) TryAppend(league, "Stats", "AvgSpeed", FieldType::Text, 10);
  if (!FieldExists(templateDb, "ReportField", "Hidden"))
    TryAppend(templateDb, "ReportField", "Hidden", FieldType::Boolean);
  if (WeatherIsNarrow(league)) WidenWeather(league);
  if (!FieldExists(league, "RankCriteria", "N4")) MarkCriteriaOfNewSimulations(league, templateDb);
  FillFlag(league, "Driver", "Exclude");
  FillFlag(league, "Driver", "Rookie");
  Try([&] { unit.Commit(); });
}

}  // namespace scorvane::db
