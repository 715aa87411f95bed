#include "site/Records.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace scorvane::site {
namespace {

constexpr int kStartsForAverage = 5;
constexpr std::size_t kMostKept = 4096;  // of a season's results before the best are chosen

class Finder {
 public:
  explicit Finder(const SiteModel& model) : model_(model) {}

  // A number of each driver, the highest (or lowest) first; none of who is left out.
  void Drivers(const char* name, const char* unit,
               const std::function<std::optional<double>(const SiteDriver&)>& number, int digits = 0,
               bool lowest = false) {
    std::vector<RecordEntry> entries;
    for (std::uint32_t d = 0; d < model_.drivers.size(); ++d) {
      const SiteDriver& driver = model_.drivers[d];
      if (driver.excluded || driver.results.empty()) continue;
      if (const auto value = number(driver)) entries.push_back({d, *value, {}, {}});
    }
    Add(name, unit, digits, std::move(entries), lowest);
  }

  void Results(const char* name, const char* unit,
               const std::function<std::optional<double>(const SiteResult&)>& number, int digits = 0) {
    std::vector<RecordEntry> entries;
    for (const SiteResult& result : model_.results) {
      if (model_.drivers[result.driver].excluded) continue;
      if (const auto value = number(result)) entries.push_back({result.driver, *value, result.race, {}});
      if (entries.size() >= kMostKept) Trim(entries, false);
    }
    Add(name, unit, digits, std::move(entries), false);
  }

  // Races on end in which a driver did something; one that he did not start ends it.
  void Streaks(const char* name, const std::function<bool(const SiteResult&)>& did) {
    std::vector<RecordEntry> entries;
    for (std::uint32_t d = 0; d < model_.drivers.size(); ++d) {
      const SiteDriver& driver = model_.drivers[d];
      if (driver.excluded) continue;
      RecordEntry best{d, 0, {}, {}};
      std::uint32_t length = 0;
      std::uint32_t first = 0;
      std::optional<std::uint32_t> before;
      for (const std::uint32_t index : driver.results) {
        const SiteResult& result = model_.results[index];
        if (before == result.race) continue;
        const bool goesOn = before && *before + 1 == result.race;
        before = result.race;
        if (!did(result)) {
          length = 0;
          continue;
        }
        if (!goesOn || length == 0) {
          length = 0;
          first = result.race;
        }
        if (++length > best.number) best = {d, static_cast<double>(length), first, result.race};
      }
      if (best.number > 1) entries.push_back(best);
    }
    Add(name, "races", 0, std::move(entries), false);
  }

  std::vector<Record> Take() { return std::move(records_); }

 private:
  static void Trim(std::vector<RecordEntry>& entries, bool lowest) {
    // They come by name, or by race: that stays the order of level ones.
    std::stable_sort(entries.begin(), entries.end(), [lowest](const RecordEntry& a, const RecordEntry& b) {
      return lowest ? a.number < b.number : a.number > b.number;
    });
    if (entries.size() > kRecordEntries) entries.resize(kRecordEntries);
  }

  void Add(const char* name, const char* unit, int digits, std::vector<RecordEntry> entries, bool lowest) {
    if (!lowest) std::erase_if(entries, [](const RecordEntry& entry) { return entry.number <= 0; });
    if (entries.empty()) return;
    Trim(entries, lowest);
    records_.push_back({name, unit, digits, std::move(entries)});
  }

  const SiteModel& model_;
  std::vector<Record> records_;
};

template <typename Number>
std::optional<double> Known(const std::optional<Number>& value) {
  if (!value) return std::nullopt;
  return static_cast<double>(*value);
}

}  // namespace

std::vector<Record> FindRecords(const SiteModel& model) {
  Finder finder(model);
  finder.Drivers("Most wins", "wins", [](const SiteDriver& d) { return d.all.Wins(); });
  finder.Drivers("Most poles", "poles", [](const SiteDriver& d) { return d.all.poles; });
  finder.Drivers("Most top 5 finishes", "", [](const SiteDriver& d) { return d.all.Top(5); });
  finder.Drivers("Most top 10 finishes", "", [](const SiteDriver& d) { return d.all.Top(10); });
  finder.Drivers("Most starts", "starts", [](const SiteDriver& d) { return d.all.starts; });
  finder.Drivers("Most laps", "laps", [](const SiteDriver& d) { return static_cast<double>(d.all.lapsRun); });
  finder.Drivers("Most laps led", "laps",
                 [](const SiteDriver& d) { return static_cast<double>(d.all.lapsLed); });
  finder.Drivers("Most races not finished", "", [](const SiteDriver& d) { return d.all.dnfs; });
  finder.Drivers(
      "Best average finish, five races or more", "",
      [](const SiteDriver& d) -> std::optional<double> {
        if (d.all.finishesKnown < kStartsForAverage) return std::nullopt;
        return static_cast<double>(d.all.finishSum) / d.all.finishesKnown;
      },
      1, true);
  finder.Streaks("Most wins in a row", [](const SiteResult& result) { return result.finish == 1; });
  finder.Streaks("Most top 10 finishes in a row", [](const SiteResult& result) {
    return result.finish && *result.finish >= 1 && *result.finish <= 10;
  });
  finder.Results("Most points in a race", "points", [](const SiteResult& r) { return Known(r.points); });
  finder.Results("Most laps led in a race", "laps", [](const SiteResult& r) { return Known(r.lapsLed); });
  finder.Results("Most places gained in a race", "places",
                 [](const SiteResult& r) { return Known(r.Gained()); });
  finder.Results("Won from furthest back", "on the grid", [](const SiteResult& r) {
    return r.finish == 1 ? Known(r.start) : std::optional<double>();
  });
  finder.Results("Fastest in qualifying", "mph", [](const SiteResult& r) { return Known(r.qualifying); }, 3);
  return finder.Take();
}

}  // namespace scorvane::site
