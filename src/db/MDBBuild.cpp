#include "db/MDBBuild.h"

#include <array>
#include <memory>
#include <utility>

#include <fmt/format.h>

#include "common/SettingsStore.h"
#include "common/SqlText.h"
#include "db/Tables.h"

namespace scorvane::db {
namespace {

// `rest` is what follows the id in the list of values: the name and the value, each as a literal.
void InsertSetting(engine::Database& league, int id, std::string_view rest) {
  league.Execute(
      fmt::format("INSERT INTO Settings (SettingsID, SettingName, SettingValue) VALUES ({}{}", id, rest));
}

}  // namespace

void CreateLeagueFile(engine::DBEngine& engine, const std::string& path, std::int16_t simType,
                      std::int16_t leagueType, engine::Database& templateDb, std::int16_t droppedRaces,
                      std::int16_t lapReportingMethod) {
  const std::unique_ptr<engine::Database> league = engine.DefaultWorkspace().CreateDatabase(path);
  // A league whose making fails is left as far as it came.
  engine::UnitOfWork unit(*league, engine::UnitOfWork::OnError::Keep);

  league->AppendTableDef(DriverTable());
  league->AppendTableDef(RaceTable());
  league->AppendTableDef(SettingsTable());
  league->AppendTableDef(StatsTable());
  league->AppendRelation(CascadingRelation("DriverStatsX", "Driver", "Stats", "DriverID"));
  league->AppendRelation(CascadingRelation("RaceStatsX", "Race", "Stats", "RaceID"));

  InsertSetting(*league, common::kPageHeading, ",'Page Heading','XYZ Racing League')");
  InsertSetting(*league, common::kReportName, ",'Report Name','Point Standings')");
  InsertSetting(*league, common::kCaption, ",'Caption','Results after X races')");
  InsertSetting(*league, common::kSimTitle, fmt::format(",'Sim Title',{})", simType));
  InsertSetting(*league, common::kDroppedRaces, fmt::format(",'Dropped Races','{}')", droppedRaces));
  InsertSetting(*league, common::kLeagueTypeSetting, fmt::format(",'League Type','{}')", leagueType));
  InsertSetting(*league, common::kUseCustomPointSystem, ",'Use Custom Point System','0')");
  InsertSetting(*league, common::kUseCustomBonusSystem, ",'Use Custom Bonus System','0')");
  InsertSetting(*league, common::kLapReportingMethodSetting,
                fmt::format(",'Lap Reporting Method','{}')", lapReportingMethod));

  CreateStagingAndTemplateTables(*league, templateDb);
  unit.Commit();
}

void EnsureDefaultSettings(engine::Database& league) {
  constexpr std::array<std::pair<int, std::string_view>, 3> kDefaults{{
      {common::kLeagueTypeSetting, ",'League Type',0)"},
      {common::kUseCustomPointSystem, ",'Use Custom Point System',0)"},
      {common::kUseCustomBonusSystem, ",'Use Custom Bonus System',0)"},
  }};
  for (const auto& [id, rest] : kDefaults) {
    if (common::GetSettingValue(league, id) == common::kMissingSetting) InsertSetting(league, id, rest);
  }
}

void CreateStagingAndTemplateTables(engine::Database& league, engine::Database& templateDb) {
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::Keep);

  league.AppendTableDef(StagedRaceTable());
  league.AppendTableDef(StagedResultTable());
  league.AppendTableDef(PointSystemTable());
  league.AppendTableDef(BonusTable());
  league.AppendTableDef(RankCriteriaTable());
  league.AppendRelation(CascadingRelation("STNRaceResults", "STNRace", "STNStats", "STNRaceID"));

  std::string path;
  common::AppendLiteral(path, league.Name());
  templateDb.Execute("INSERT INTO Bonus IN " + path + " SELECT * FROM Bonus");
  templateDb.Execute("INSERT INTO PointSystem IN " + path +
                     " SELECT Position, Kirrelon As Points FROM PointSystem");
  templateDb.Execute("INSERT INTO RankCriteria IN " + path + " SELECT * FROM RankCriteria");
  unit.Commit();
}

}  // namespace scorvane::db
