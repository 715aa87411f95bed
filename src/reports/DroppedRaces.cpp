#include "reports/DroppedRaces.h"

#include <fmt/format.h>

#include <algorithm>

namespace scorvane::reports {

DroppedMarks MarkDroppedRaces(engine::Database& league, int dropped) {
  engine::UnitOfWork work(league);
  DroppedMarks marks;
  marks.events = league.OpenRecordset("SELECT Count(RaceID) As NumEvents FROM Race")["NumEvents"].ToLong();
  marks.best = std::max(marks.events - dropped, 1);
  if (dropped <= 0) {
    league.Execute("Update Stats Set Dropped=False");
    work.Commit();
    return marks;
  }
  league.Execute("Update Stats Set Dropped=True");
  for (auto drivers = league.OpenRecordset("SELECT DriverID FROM Driver"); !drivers.AtEnd();
       drivers.MoveNext()) {
    auto results = league.OpenRecordset(
        fmt::format(
            "SELECT Dropped FROM Stats WHERE DriverID={} ORDER BY Points DESC, Bonus DESC, LapsLed DESC",
            drivers["DriverID"].ToLong()),
        engine::RecordsetType::Dynaset);
    for (int counted = 0; counted < marks.best && !results.AtEnd(); ++counted, results.MoveNext()) {
      results.Edit();
      results.Set("Dropped", false);
      results.Update();
    }
  }
  work.Commit();
  return marks;
}

std::string StandingsCaption(const DroppedMarks& marks) {
  if (marks.best >= marks.events) return fmt::format("Results after {} events:", marks.events);
  return fmt::format("Results based on each driver's best {} finishes of {} events:", marks.best,
                     marks.events);
}

}  // namespace scorvane::reports
