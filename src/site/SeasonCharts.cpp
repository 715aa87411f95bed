#include "site/SeasonCharts.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace scorvane::site {

charts::LineInput PointsByRace(const SiteModel& model, const std::vector<std::uint32_t>& drivers) {
  charts::LineInput input;
  input.title = "Points race by race";
  input.entryHeading = "After";
  for (const SiteMoment& moment : model.moments) {
    input.entries.push_back(RaceName(model.races[moment.races - 1]));
    input.entryNumbers.push_back(static_cast<int>(moment.races));
  }
  for (const std::uint32_t driver : drivers) {
    charts::Series series{model.drivers[driver].name, {}};
    for (const SiteMoment& moment : model.moments) {
      series.values.emplace_back();
      if (const auto& held = moment.points[driver]) series.values.back() = static_cast<double>(*held);
    }
    input.series.push_back(std::move(series));
  }
  return input;
}

charts::PlaceInput FinishesOf(const SiteModel& model, std::uint32_t driver, std::size_t most) {
  const SiteDriver& shown = model.drivers[driver];
  charts::PlaceInput input;
  input.title = "Finishes";
  input.description =
      fmt::format("The finish of {} in each race; the longer the bar, the better.", shown.name);
  input.entryHeading = "Race";
  for (std::size_t i = shown.results.size() - std::min(most, shown.results.size()); i < shown.results.size();
       ++i) {
    const SiteResult& result = model.results[shown.results[i]];
    input.entries.push_back(RaceName(model.races[result.race]));
    input.entryNumbers.push_back(static_cast<int>(result.race + 1));
    input.places.emplace_back();
    if (result.finish && *result.finish > 0) input.places.back() = *result.finish;
  }
  return input;
}

charts::ShiftInput PlacesGained(const SiteModel& model, std::size_t race) {
  charts::ShiftInput input{
      "Places gained and lost",
      fmt::format("For each driver of the race at {} the places between start and finish.",
                  RaceName(model.races[race])),
      {}};
  for (std::uint32_t i = model.races[race].first; i < model.races[race].end; ++i) {
    const SiteResult& result = model.results[i];
    if (result.Gained())
      input.rows.push_back(
          {model.drivers[result.driver].name, result.start.value_or(0), result.finish.value_or(0)});
  }
  return input;
}

}  // namespace scorvane::site
