// The pages of drivers: their list, and each of them.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "charts/Chart.h"
#include "site/Pages.h"
#include "site/SeasonCharts.h"

namespace scorvane::site {

std::string Pages::DriverList(std::size_t number) {
  View page = Page(PagePath("drivers", number), "Drivers",
                   fmt::format("All drivers of {} with their seasons.", model_.heading), "Drivers");
  Crumb(page, "Drivers");
  Pager(page, "drivers", number, PagesFor(shown_.size(), kListedDrivers));
  View rows = ViewList();
  const std::size_t first = number * kListedDrivers;
  for (std::size_t i = first; i < std::min(shown_.size(), first + kListedDrivers); ++i) {
    const SiteDriver& driver = model_.drivers[shown_[i]];
    View row = TotalsView(driver);
    row["driver"] = DriverLink(shown_[i]);
    if (driver.rookie) row["rookie"] = true;
    if (driver.excluded) row["excluded"] = true;
    row["anchor"] = fmt::format("driver-{}", driver.id);
    Append(rows, std::move(row));
  }
  page["hasdrivers"] = !rows.is_empty_list();
  page["drivers"] = std::move(rows);
  return theme_.Render("drivers", page);
}

View Pages::DriverResult(const SiteResult& result) const {
  const SiteRace& race = model_.races[result.race];
  View row = ResultView(result);
  row["racenumber"] = std::to_string(result.race + 1);
  row["racename"] = RaceName(race);
  row["racepath"] = fmt::format("{}#driver-{}", Up(RacePath(race)), model_.drivers[result.driver].id);
  if (result.dropped) row["dropped"] = true;
  const SiteMoment* moment = model_.MomentAfter(result.race);
  if (moment != nullptr && moment->position[result.driver] > 0) {
    View after;
    after["afterposition"] = std::to_string(moment->position[result.driver]);
    const std::int64_t points = moment->points[result.driver].value_or(0);
    after["afterpoints"] = std::to_string(points);
    const std::int64_t behind = moment->leader - points;
    after["afterbehind"] = behind == 0 ? std::string("--") : std::to_string(behind);
    row["after"] = std::move(after);
  }
  return row;
}

std::string Pages::Driver(std::size_t index) {
  const SiteDriver& driver = model_.drivers[index];
  const std::size_t place = shownPlace_[index];
  std::string description = fmt::format("{}: {} starts.", driver.name, driver.all.starts);
  if (driver.position > 0)
    description =
        fmt::format("{}: position {} with {} points, {} wins in {} starts.", driver.name, driver.position,
                    driver.Points(), driver.standing.totals.Wins(), driver.standing.totals.starts);
  View page = Page(DriverPath(driver), driver.name, description, "Drivers");
  Crumb(page, "Drivers", PagePath("drivers", place / kListedDrivers));
  Crumb(page, driver.name);
  const SiteDriver* before = place > 0 ? &model_.drivers[shown_[place - 1]] : nullptr;
  const SiteDriver* after = place + 1 < shown_.size() ? &model_.drivers[shown_[place + 1]] : nullptr;
  Neighbours(page, before != nullptr ? before->name : "", before != nullptr ? DriverPath(*before) : "",
             after != nullptr ? after->name : "", after != nullptr ? DriverPath(*after) : "");
  page["season"] = TotalsView(driver);
  page["rookie"] = driver.rookie;
  page["excluded"] = driver.excluded;

  const std::size_t shown = std::min(driver.results.size(), kDriverRaces);
  const std::size_t first = driver.results.size() - shown;
  View rows = ViewList();
  bool dropped = false;
  for (std::size_t i = first; i < driver.results.size(); ++i) {
    const SiteResult& result = model_.results[driver.results[i]];
    Append(rows, DriverResult(result));
    dropped = dropped || result.dropped;
  }
  page["driverresults"] = std::move(rows);
  page["hasdropped"] = dropped;
  page["hasspeeds"] = model_.HasAverageSpeeds();
  page["onlylast"] =
      first == 0 ? View(false) : View(fmt::format("The last {} of {} races.", shown, driver.results.size()));
  page["finishchart"] = false;
  if (shown > 0)
    Show(page, "finishchart",
         charts::PlaceChart(FinishesOf(model_, static_cast<std::uint32_t>(index), shown)), "finish-chart",
         "races");
  ShowPoints(page, driver, static_cast<std::uint32_t>(index));
  ShowTracks(page, driver);
  return theme_.Render("driver", page);
}

// His points beside the leader's.
void Pages::ShowPoints(View& page, const SiteDriver& driver, std::uint32_t index) const {
  page["gapchart"] = false;
  if (driver.position == 0) return;
  charts::LineInput input;
  input.title = "Points against the leader";
  input.description = fmt::format("The points of {} and of the leader after each race.", driver.name);
  input.entryHeading = "After";
  charts::Series leader{"Leader", {}};
  charts::Series own{driver.name, {}};
  for (const SiteMoment& moment : model_.moments) {
    input.entries.push_back(RaceName(model_.races[moment.races - 1]));
    input.entryNumbers.push_back(static_cast<int>(moment.races));
    leader.values.emplace_back(static_cast<double>(moment.leader));
    own.values.emplace_back();
    if (const auto& held = moment.points[index]) own.values.back() = static_cast<double>(*held);
  }
  input.series = {std::move(leader), std::move(own)};
  Show(page, "gapchart", charts::LineChart(input), "gap-chart");
}

// Where he does best and worst, by his average finish there.
void Pages::ShowTracks(View& page, const SiteDriver& driver) const {
  struct Track {
    int starts = 0;
    std::int64_t finishes = 0;
    double Average() const { return static_cast<double>(finishes) / starts; }
  };
  std::map<std::string, Track> tracks;
  for (const std::uint32_t index : driver.results) {
    const SiteResult& result = model_.results[index];
    if (!result.finish || *result.finish <= 0) continue;
    Track& track = tracks[RaceName(model_.races[result.race])];
    ++track.starts;
    track.finishes += *result.finish;
  }
  page["tracks"] = false;
  if (tracks.size() < 2) return;
  auto best = tracks.begin();
  auto worst = tracks.begin();
  for (auto track = tracks.begin(); track != tracks.end(); ++track) {
    if (track->second.Average() < best->second.Average()) best = track;
    if (track->second.Average() > worst->second.Average()) worst = track;
  }
  const auto text = [this](const auto& track) {
    return fmt::format(
        "{} (average finish {} in {})", track->first, Number(track->second.Average(), 1),
        track->second.starts == 1 ? "1 start" : fmt::format("{} starts", track->second.starts));
  };
  View view;
  view["besttrack"] = text(best);
  view["worsttrack"] = text(worst);
  page["tracks"] = std::move(view);
}

}  // namespace scorvane::site
