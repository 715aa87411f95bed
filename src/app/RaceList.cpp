#include "app/RaceList.h"

#include <fmt/format.h>

namespace scorvane::app {

std::vector<ListedRace> ListRaces(engine::Database& league) {
  std::vector<ListedRace> races;
  auto rows = league.OpenRecordset("SELECT * FROM Race", engine::RecordsetType::ForwardOnly);
  for (; !rows.AtEnd(); rows.MoveNext()) {
    ListedRace race;
    race.id = rows["RaceID"].ToLong();
    race.name = rows["Name"].ToText();
    race.laps = rows["Laps"].ToText();
    race.fileName = rows["FileName"].ToText();
    if (!rows["Length"].IsNull() && !rows["Laps"].IsNull()) {
      // In the precision of the length: 2.66 miles are not a little more than that, and 125 laps of it no
      // more than 332.5.
      const auto miles = static_cast<float>(rows["Length"].ToDouble() * rows["Laps"].ToDouble());
      race.miles = fmt::format("{:.0f}", engine::RoundHalfEven(miles));
    }
    races.push_back(std::move(race));
  }
  return races;
}

void RemoveRaces(engine::Database& league, const std::vector<std::int32_t>& ids) {
  engine::UnitOfWork unit(league);
  for (const std::int32_t id : ids) league.Execute(fmt::format("DELETE * FROM Race WHERE RaceID={}", id));
  unit.Commit();
}

}  // namespace scorvane::app
