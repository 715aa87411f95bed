#include "scoring/PointSystemEdit.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/SettingsStore.h"
#include "common/SqlText.h"
#include "engine/EngineError.h"

namespace scorvane::scoring {
namespace {

std::optional<std::int32_t> Cell(const engine::Value& value) {
  if (value.IsNull()) return std::nullopt;
  return value.ToLong();
}

}  // namespace

PointSystemEdit ReadPointSystem(engine::Database& league) {
  PointSystemEdit edit;
  edit.usePositions =
      engine::LeadingNumber(common::GetSettingValue(league, common::kUseCustomPointSystem)) != 0;
  edit.useBonus = engine::LeadingNumber(common::GetSettingValue(league, common::kUseCustomBonusSystem)) != 0;
  for (auto rows = league.OpenRecordset("SELECT * FROM PointSystem ORDER BY Position"); !rows.AtEnd();
       rows.MoveNext())
    edit.positions.push_back({Cell(rows["Points"]), Cell(rows["PrizeMoney"]), rows["Position"].ToLong()});
  for (auto rows = league.OpenRecordset("SELECT * FROM Bonus"); !rows.AtEnd(); rows.MoveNext()) {
    edit.bonuses.push_back(
        {rows["BonusID"].ToLong(), rows["Name"].ToText(), Cell(rows["Points"]).value_or(0)});
  }
  return edit;
}

void SavePointSystem(engine::Database& league, const PointSystemEdit& edit) {
  // The positions are made anew; a value that does not fit is found before the old ones are gone.
  for (const PositionPoints& position : edit.positions) {
    const std::int32_t points = position.points.value_or(0);
    if (points < -32768 || points > 32767)
      throw engine::EngineError(engine::kOverflow, std::to_string(points), "PointSystem.Points");
  }
  for (const BonusPoints& bonus : edit.bonuses) {
    if (bonus.points < -32768 || bonus.points > 32767)
      throw engine::EngineError(engine::kOverflow, std::to_string(bonus.points), "Bonus.Points");
  }
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::TakeBack);
  common::StoreSetting(league, common::kUseCustomPointSystem, edit.usePositions ? "1" : "0");
  common::StoreSetting(league, common::kUseCustomBonusSystem, edit.useBonus ? "1" : "0");
  for (const BonusPoints& bonus : edit.bonuses)
    league.Execute(fmt::format("UPDATE Bonus SET Points={} WHERE BonusID={}", bonus.points, bonus.id));
  league.Execute("DELETE * FROM PointSystem");
  std::int32_t place = 0;
  for (const PositionPoints& position : edit.positions) {
    ++place;
    league.Execute(fmt::format("INSERT INTO PointSystem (Position, Points, PrizeMoney) VALUES ({},{},{})",
                               position.position > 0 ? position.position : place, position.points.value_or(0),
                               position.prizeMoney.value_or(0)));
  }
  unit.Commit();
}

void FillPositions(PointSystemEdit& edit, FillColumn column, int from, int through, std::int32_t initial,
                   std::int32_t interval) {
  std::int32_t value = initial;
  for (int place = from; place <= through; ++place) {
    if (place >= 1 && static_cast<std::size_t>(place) <= edit.positions.size()) {
      PositionPoints& position = edit.positions[static_cast<std::size_t>(place) - 1];
      (column == FillColumn::Points ? position.points : position.prizeMoney) = value;
    }
    if (value > 0) value = std::max(0, value - interval);
  }
}

}  // namespace scorvane::scoring
