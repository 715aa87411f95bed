// The pages of races: their list, each of them, and the matrix of all of them.
#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "charts/Chart.h"
#include "common/Formats.h"
#include "site/Pages.h"
#include "site/SeasonCharts.h"

namespace scorvane::site {
namespace {

template <typename Number>
std::string Text(const std::optional<Number>& value) {
  return value ? std::to_string(*value) : std::string();
}

std::string Signed(int number) {
  return number > 0 ? fmt::format("+{}", number) : std::to_string(number);
}

}  // namespace

std::string Pages::Qualifying(const SiteResult& result, const SiteRace& race) const {
  if (!result.qualifying) return "--";
  return common::FormatQualifying(engine::Value(*result.qualifying), race.length.value_or(0),
                                  model_.lapReportingMethod, model_.decimal);
}

View Pages::RaceRow(std::size_t index) const {
  const SiteRace& race = model_.races[index];
  View row;
  row["racenumber"] = std::to_string(index + 1);
  row["raceid"] = std::to_string(race.id);
  row["racename"] = RaceName(race);
  row["racepath"] = Up(RacePath(race));
  row["racelength"] = race.length ? engine::Value(*race.length).ToText(model_.decimal) : std::string();
  row["racelaps"] = Text(race.laps);
  row["racespeed"] = common::LocalizeDecimal(race.avgSpeed, model_.decimal);
  row["racecautions"] = Text(race.cautions);
  row["racestarters"] = std::to_string(race.end - race.first);
  const SiteResult* winner = model_.Winner(race);
  row["winner"] = winner == nullptr ? View(false) : DriverLink(winner->driver);
  row["pole"] = false;
  for (std::uint32_t i = race.first; i < race.end; ++i) {
    if (model_.results[i].start != 1) continue;
    row["pole"] = DriverLink(model_.results[i].driver);
    break;
  }
  return row;
}

std::string Pages::RaceList(std::size_t number) {
  View page = Page(PagePath("races", number), "Races",
                   fmt::format("All races of {}, with winners and poles.", model_.heading), "Races");
  Crumb(page, "Races");
  Pager(page, "races", number, PagesFor(model_.races.size(), kListedRaces));
  View rows = ViewList();
  const std::size_t first = number * kListedRaces;
  for (std::size_t i = first; i < std::min(model_.races.size(), first + kListedRaces); ++i)
    Append(rows, RaceRow(i));
  page["hasraces"] = !rows.is_empty_list();
  page["races"] = std::move(rows);
  return theme_.Render("races", page);
}

// What the pages of races and drivers both show.
View Pages::ResultView(const SiteResult& result) const {
  View row;
  row["finish"] = Text(result.finish);
  row["start"] = result.start && *result.start > 0 ? Text(result.start) : std::string("--");
  const auto gained = result.Gained();
  // What holds of few rows is set on those only.
  if (gained) row["gained"] = Signed(*gained);
  if (gained && *gained != 0) row[*gained > 0 ? "gainedup" : "gaineddown"] = true;
  row["laps"] = Text(result.lapsRun);
  row["led"] = Text(result.lapsLed);
  row["resultpoints"] = Text(result.points);
  row["resultbonus"] = Text(result.bonus);
  if (!result.avgSpeed.empty()) row["speed"] = common::LocalizeDecimal(result.avgSpeed, model_.decimal);
  row["status"] = model_.Status(result);
  if (!model_.IsRunning(result)) row["out"] = true;
  if (result.finish == 1) row["won"] = true;
  return row;
}

std::string Pages::Race(std::size_t index) {
  const SiteRace& race = model_.races[index];
  const std::string name = RaceName(race);
  const SiteResult* winner = model_.Winner(race);
  const std::string description = winner == nullptr
                                      ? fmt::format("Race {} of {}.", index + 1, model_.heading)
                                      : fmt::format("Race {} of {}: won by {}.", index + 1, model_.heading,
                                                    model_.drivers[winner->driver].name);
  View page = Page(RacePath(race), name, description, "Races");
  Crumb(page, "Races", PagePath("races", index / kListedRaces));
  Crumb(page, name);
  const SiteRace* before = index > 0 ? &model_.races[index - 1] : nullptr;
  const SiteRace* after = index + 1 < model_.races.size() ? &model_.races[index + 1] : nullptr;
  Neighbours(page, before != nullptr ? RaceName(*before) : "", before != nullptr ? RacePath(*before) : "",
             after != nullptr ? RaceName(*after) : "", after != nullptr ? RacePath(*after) : "");
  page["racenumber"] = std::to_string(index + 1);
  page["winner"] = winner == nullptr ? View(false) : DriverLink(winner->driver);

  View facts = ViewList();
  const auto fact = [&](const char* label, const std::string& value) {
    View entry;
    entry["factname"] = label;
    entry["factvalue"] = value.empty() ? std::string("n/a") : value;
    Append(facts, std::move(entry));
  };
  fact("Track length",
       race.length ? engine::Value(*race.length).ToText(model_.decimal) + " miles" : std::string());
  fact("Laps", Text(race.laps));
  fact("Race time", race.raceTime);
  fact("Average speed", common::LocalizeDecimal(race.avgSpeed, model_.decimal));
  fact("Margin of victory", common::LocalizeDecimal(race.victoryMargin, model_.decimal));
  fact("Caution flags", Text(race.cautions));
  fact("Lead changes", Text(race.leadChanges));
  fact("Weather", race.weather);
  page["facts"] = std::move(facts);

  View penalties = ViewList();
  for (const scoring::Penalty& penalty : race.penalties) {
    if (!penalty.resultId) continue;
    View entry;
    entry["penaltydriver"] = penalty.driver;
    entry["penaltytext"] = scoring::Describe(penalty);
    entry["penaltyreason"] = penalty.reason.empty() ? View(false) : View(penalty.reason);
    Append(penalties, std::move(entry));
  }
  page["haspenalties"] = !penalties.is_empty_list();
  page["penalties"] = std::move(penalties);

  bool prizes = false;
  View rows = ViewList();
  View bonuses = ViewList();
  std::set<std::uint32_t> seen;
  for (std::uint32_t i = race.first; i < race.end; ++i) {
    const SiteResult& result = model_.results[i];
    const SiteDriver& driver = model_.drivers[result.driver];
    View row = ResultView(result);
    row["drivername"] = driver.name;
    row["driverpath"] = Up(DriverPath(driver));
    row["qualifying"] = Qualifying(result, race);
    if (result.prizeMoney) row["prize"] = Text(result.prizeMoney);
    // A driver may have two results in a race: the first one is where links lead.
    const bool first = seen.insert(result.driver).second;
    row["anchor"] = first ? fmt::format("driver-{}", driver.id) : fmt::format("result-{}", result.id);
    Append(rows, std::move(row));
    prizes = prizes || result.prizeMoney.value_or(0) != 0;
    if (result.bonus.value_or(0) != 0) {
      View bonus = DriverLink(result.driver);
      bonus["bonuspoints"] = Signed(*result.bonus);
      Append(bonuses, std::move(bonus));
    }
  }
  page["hasresults"] = !rows.is_empty_list();
  page["results"] = std::move(rows);
  page["hasprizes"] = prizes;
  page["hasspeeds"] = model_.HasAverageSpeeds();
  page["qualifyingunit"] = model_.lapReportingMethod == common::kLapSpeed ? "mph" : "time";
  page["hasbonuses"] = !bonuses.is_empty_list();
  page["bonuses"] = std::move(bonuses);
  page["datapath"] = Up(DataPath(race));
  page["shiftchart"] = false;
  const charts::ShiftInput shifts = PlacesGained(model_, index);
  if (!shifts.rows.empty()) Show(page, "shiftchart", charts::ShiftChart(shifts), "places-chart", "results");
  return theme_.Render("race", page);
}

std::string Pages::Matrix(std::size_t number) {
  const std::size_t pages = PagesFor(model_.races.size(), kMatrixRaces);
  const std::size_t first = number * kMatrixRaces;
  const std::size_t end = std::min(model_.races.size(), first + kMatrixRaces);
  View page = Page(PagePath("matrix", number), "Matrix", "Every driver's finish in every race.", "Matrix");
  Crumb(page, "Matrix");
  Pager(page, "matrix", number, pages);
  View columns = ViewList();
  for (std::size_t i = first; i < end; ++i) Append(columns, RaceRow(i));
  page["races"] = std::move(columns);

  // In the order of the championship, then who stands in no table.
  std::vector<std::uint32_t> order = model_.standings;
  for (const std::uint32_t driver : shown_)
    if (model_.drivers[driver].position == 0) order.push_back(driver);
  View rows = ViewList();
  for (const std::uint32_t d : order) {
    const SiteDriver& driver = model_.drivers[d];
    View row = DriverLink(d);
    row["matrixposition"] = driver.position == 0 ? std::string("--") : std::to_string(driver.position);
    row["matrixpoints"] = std::to_string(driver.Points());
    row["anchor"] = fmt::format("driver-{}", driver.id);
    View cells = ViewList();
    auto result = std::lower_bound(
        driver.results.begin(), driver.results.end(), first,
        [this](std::uint32_t index, std::size_t race) { return model_.results[index].race < race; });
    bool any = false;
    for (std::size_t race = first; race < end; ++race) {
      View cell;
      const bool there = result != driver.results.end() && model_.results[*result].race == race;
      cell["started"] = there;
      if (there) {
        const SiteResult& shown = model_.results[*result];
        any = true;
        cell["cellfinish"] = shown.finish ? std::to_string(*shown.finish) : std::string("--");
        cell["cellpoints"] = Text(shown.points);
        if (shown.dropped) cell["celldropped"] = true;
        if (shown.finish == 1) cell["cellwon"] = true;
        if (!model_.IsRunning(shown)) cell["cellout"] = true;
        while (result != driver.results.end() && model_.results[*result].race == race) ++result;
      }
      Append(cells, std::move(cell));
    }
    if (!any) continue;
    row["matrixcells"] = std::move(cells);
    Append(rows, std::move(row));
  }
  page["matrixrows"] = std::move(rows);
  return theme_.Render("matrix", page);
}

}  // namespace scorvane::site
