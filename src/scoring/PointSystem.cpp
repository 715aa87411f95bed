#include "scoring/PointSystem.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace scorvane::scoring {
namespace {

constexpr int kTemplatePositions = 43;

template <std::size_t columns>
void FillTable(common::PointTable& table, engine::Recordset rows,
               const std::array<const char*, columns>& names) {
  std::array<std::size_t, columns> fields;
  for (std::size_t i = 0; i < columns; ++i) fields[i] = rows.FieldIndex(names[i]);
  for (int position = 1; position <= table.Positions() && !rows.AtEnd(); ++position, rows.MoveNext()) {
    for (std::size_t i = 0; i < columns; ++i) table.Cell(position, static_cast<int>(i)) = rows.At(fields[i]);
  }
}

}  // namespace

void LoadPointSystem(engine::Database& templateDb, engine::Database& league, common::ProcessState& state) {
  if (!state.useCustomPointSystem) {
    common::PointTable table(kTemplatePositions, 4);
    FillTable<4>(table, templateDb.OpenRecordset("SELECT * FROM PointSystem"),
                 {"Kirrelon", "LPoints1", "LPoints2", "LPoints3"});
    state.pointTable = std::move(table);
    return;
  }
  const auto count = league.OpenRecordset("SELECT Count(*) As NumPos FROM PointSystem");
  common::PointTable table(count["NumPos"].ToLong(), 2);
  FillTable<2>(table, league.OpenRecordset("SELECT * FROM PointSystem"), {"Points", "PrizeMoney"});
  state.pointTable = std::move(table);
}

Score ScoreByPosition(const common::ProcessState& state, int position, int column) {
  if (position > state.pointTable.Positions()) return {engine::Value(0), engine::Value()};
  Score score{state.pointTable.Cell(position, column), engine::Value()};
  if (score.points.IsNull()) score.points = engine::Value(0);
  if (state.useCustomPointSystem) score.prizeMoney = state.pointTable.Cell(position, 1);
  return score;
}

std::optional<int> PointStep(engine::Database& league, std::int32_t raceId, bool staged) {
  auto rows = league.OpenRecordset(
      staged ? fmt::format("SELECT Points FROM STNStats WHERE STNRaceID={} ORDER BY Points DESC", raceId)
             : fmt::format("SELECT Points FROM Stats WHERE RaceID={} ORDER BY Points DESC", raceId));
  struct Step {
    std::int64_t difference;
    int count;
  };
  std::vector<Step> steps = {{0, 0}};
  std::int64_t previous = 0;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    const engine::Value& value = rows.At(0);
    const std::int64_t points = value.IsNull() ? 0 : value.ToLong();
    if (previous > 0) {
      const auto found = std::find_if(steps.begin(), steps.end(),
                                      [&](const Step& step) { return step.difference == previous - points; });
      if (found != steps.end()) {
        ++found->count;
      } else {
        steps.push_back({previous - points, 1});
      }
    }
    previous = points;
  }
  // The first of the most frequent ones.
  const Step step = *std::max_element(steps.begin(), steps.end(),
                                      [](const Step& a, const Step& b) { return a.count < b.count; });
  if (step.difference < 1 || step.difference > 3) return std::nullopt;
  return static_cast<int>(step.difference);
}

}  // namespace scorvane::scoring
