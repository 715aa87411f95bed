// The pages of a site: what the model holds, laid out for the theme's templates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "charts/Chart.h"
#include "engine/Value.h"
#include "reports/Report.h"
#include "site/Model.h"
#include "site/Records.h"
#include "site/SiteSettings.h"
#include "site/Theme.h"

namespace scorvane::site {

// Long tables go over several pages.
inline constexpr std::size_t kReportRows = 1000;
inline constexpr std::size_t kKeptRows = 5000;  // of a report; a longer one is run again for its pages
inline constexpr std::size_t kMatrixRaces = 40;
inline constexpr std::size_t kListedRaces = 500;
inline constexpr std::size_t kListedDrivers = 1000;
inline constexpr std::size_t kDriverRaces = 200;    // the last ones stand on his page
inline constexpr std::size_t kChartedDrivers = 10;  // unless the league has chosen some

// A report of the league as its site shows it.
struct SiteReport {
  std::int32_t id = 0;
  std::string name;
  std::string caption;  // without its colon
  std::string slug;
  std::vector<reports::ReportColumn> columns;
  std::size_t rowCount = 0;
  // All of them, or the first kKeptRows.
  std::vector<std::vector<engine::Value>> rows;
};

// How many pages a list of so many items takes; at least one.
std::size_t PagesFor(std::size_t items, std::size_t onEach);
// "races.html", "races-2.html".
std::string PagePath(const std::string& stem, std::size_t page);

class Pages {
 public:
  // All must outlive the pages.
  Pages(const SiteModel& model, const std::vector<SiteReport>& reports, const SiteSettings& settings,
        Theme& theme);

  std::string Front();
  std::string RaceList(std::size_t page);
  std::string Race(std::size_t race);
  std::string DriverList(std::size_t page);
  std::string Driver(std::size_t driver);
  std::string Matrix(std::size_t page);
  std::string RecordsPage();
  // `page` of a report's pages with the rows that stand on it.
  std::string Report(const SiteReport& report, std::size_t page,
                     const std::vector<std::vector<engine::Value>>& rows);

  // Drivers with a page: those with a result.
  const std::vector<std::uint32_t>& Shown() const { return shown_; }

  static std::string RacePath(const SiteRace& race) { return "races/" + race.slug + ".html"; }
  static std::string DriverPath(const SiteDriver& driver) { return "drivers/" + driver.slug + ".html"; }
  static std::string ReportStem(const SiteReport& report) { return "reports/" + report.slug; }
  static std::string DataPath(const SiteRace& race) {
    return "data/races/" + std::to_string(race.id) + ".json";
  }

 private:
  // What every page has. `path` is the page's, `section` the entry of the navigation that it belongs to.
  View Page(const std::string& path, const std::string& title, const std::string& description,
            const char* section);
  // A step on the way to the page; without a path the page itself.
  void Crumb(View& page, const std::string& text, const std::string& path = "");
  void Neighbours(View& page, const std::string& previous, const std::string& previousPath,
                  const std::string& next, const std::string& nextPath);
  // The list of a long table's pages.
  void Pager(View& page, const std::string& stem, std::size_t current, std::size_t pages);
  // With its numbers in a table, unless one with this id is on the page already.
  static void Show(View& page, const char* name, const charts::Chart& chart, const char* id,
                   const char* numbersAt = nullptr);

  std::string Up(const std::string& path) const { return up_ + path; }  // from the page that is being made
  std::string Number(double number, int digits) const;
  std::string Qualifying(const SiteResult& result, const SiteRace& race) const;
  View DriverLink(std::uint32_t driver) const;
  View TotalsView(const SiteDriver& driver) const;
  View RaceRow(std::size_t race) const;
  View ResultView(const SiteResult& result) const;
  View DriverResult(const SiteResult& result) const;
  void ShowPlayoff(View& page) const;
  void ShowLastRace(View& page) const;
  void ShowLeaders(View& page) const;
  std::vector<std::uint32_t> DrawnDrivers() const;
  void ShowPointsChart(View& page);
  void ShowPoints(View& page, const SiteDriver& driver, std::uint32_t index) const;
  void ShowTracks(View& page, const SiteDriver& driver) const;
  View RecordView(const Record& record) const;

  const SiteModel& model_;
  const std::vector<SiteReport>& reports_;
  const SiteSettings& settings_;
  Theme& theme_;
  std::vector<std::uint32_t> shown_;
  std::vector<std::size_t> shownPlace_;  // of each driver among those shown
  std::unordered_map<std::string, std::uint32_t> driverByName_;
  std::string up_;  // from the page that is being made to the front: "" or "../"
};

}  // namespace scorvane::site
