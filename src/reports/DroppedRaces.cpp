#include "reports/DroppedRaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace scorvane::reports {
namespace {

// Sets the marks that are not as they should be, and those only: what is right already is not written again.
void MarkWorst(engine::Database& league, int best) {
  std::vector<std::int32_t> drop;
  std::vector<std::int32_t> keep;
  std::int32_t driver = 0;
  int place = 0;
  auto rows = league.OpenRecordset(
      "SELECT StatsID, DriverID, Dropped FROM Stats ORDER BY DriverID, Points DESC, Bonus DESC, LapsLed "
      "DESC, StatsID");
  for (; !rows.AtEnd(); rows.MoveNext()) {
    bool dropped = true;  // as it stays for a result without a driver
    if (!rows.At(1).IsNull()) {
      const std::int32_t current = rows.At(1).ToLong();
      place = current == driver ? place + 1 : 1;
      driver = current;
      dropped = place > best;
    }
    const engine::Value& mark = rows.At(2);
    if (mark.IsNull() || mark.ToBoolean() != dropped) (dropped ? drop : keep).push_back(rows.At(0).ToLong());
  }
  if (drop.empty() && keep.empty()) return;
  engine::UnitOfWork unit(league);
  for (const std::int32_t id : drop)
    league.Execute(fmt::format("UPDATE Stats SET Dropped=True WHERE StatsID={}", id));
  for (const std::int32_t id : keep)
    league.Execute(fmt::format("UPDATE Stats SET Dropped=False WHERE StatsID={}", id));
  unit.Commit();
}

}  // namespace

DroppedMarks MarkDroppedRaces(engine::Database& league, int dropped) {
  DroppedMarks marks;
  marks.events = league.OpenRecordset("SELECT Count(RaceID) As NumEvents FROM Race")["NumEvents"].ToLong();
  marks.best = std::max(1, marks.events - dropped);
  if (dropped <= 0) {
    league.Execute("Update Stats Set Dropped=False WHERE Dropped=True OR Dropped Is Null");
  } else {
    MarkWorst(league, marks.best);
  }
  return marks;
}

std::string StandingsCaption(const DroppedMarks& marks) {
  if (marks.best >= marks.events) return fmt::format("Results after {} events:", marks.events);
  return fmt::format("Results based on each driver's best {} finishes of {} events:", marks.best,
                     marks.events);
}

}  // namespace scorvane::reports
