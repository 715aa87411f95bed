// What the charts of a season show, for the pages and the window alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "charts/Chart.h"
#include "site/Model.h"

namespace scorvane::site {

// The points of drivers (places in the model's) after each of the model's moments. The description is the
// caller's.
charts::LineInput PointsByRace(const SiteModel& model, const std::vector<std::uint32_t>& drivers);
// The finishes of a driver in the last `most` races that he drove.
charts::PlaceInput FinishesOf(const SiteModel& model, std::uint32_t driver, std::size_t most);
// Start against finish of everybody in a race of whom both are known; no rows when there are none.
charts::ShiftInput PlacesGained(const SiteModel& model, std::size_t race);

}  // namespace scorvane::site
