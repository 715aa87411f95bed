#include "site/Pages.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "charts/Svg.h"
#include "common/Formats.h"
#include "engine/Format.h"
#include "reports/PageLook.h"
#include "site/SeasonCharts.h"

namespace scorvane::site {
namespace {

constexpr std::size_t kFrontStandings = 10;
constexpr std::size_t kFrontLeaders = 3;

}  // namespace

std::size_t PagesFor(std::size_t items, std::size_t onEach) {
  return std::max<std::size_t>(1, (items + onEach - 1) / onEach);
}

std::string PagePath(const std::string& stem, std::size_t page) {
  return page == 0 ? stem + ".html" : fmt::format("{}-{}.html", stem, page + 1);
}

Pages::Pages(const SiteModel& model, const std::vector<SiteReport>& reports, const SiteSettings& settings,
             Theme& theme)
    : model_(model), reports_(reports), settings_(settings), theme_(theme) {
  shownPlace_.resize(model.drivers.size());
  std::vector<std::string> twice;
  for (std::uint32_t d = 0; d < model.drivers.size(); ++d) {
    if (model.drivers[d].results.empty()) continue;
    shownPlace_[d] = shown_.size();
    shown_.push_back(d);
    if (!driverByName_.try_emplace(model.drivers[d].name, d).second) twice.push_back(model.drivers[d].name);
  }
  // A name that two drivers have leads to neither.
  for (const std::string& name : twice) driverByName_.erase(name);
}

View Pages::Page(const std::string& path, const std::string& title, const std::string& description,
                 const char* section) {
  up_ = path.find('/') == std::string::npos ? "" : "../";
  View page;
  page["title"] = path == "index.html" ? model_.heading : fmt::format("{} - {}", title, model_.heading);
  page["pageheading"] = title;
  page["description"] = description;
  page["league"] = model_.heading;
  page["root"] = up_;
  page["generator"] = "Scorvane " + reports::ProductVersion();
  page["front"] = path == "index.html";
  if (!settings_.baseUrl.empty()) {
    page["address"] = settings_.baseUrl + (path == "index.html" ? "" : path);
    page["home"] = settings_.baseUrl;
  }
  if (!settings_.logo.empty()) {
    View logo;
    const std::string file = "assets/logo" + std::string(LogoExtension(settings_.logo));
    logo["logofile"] = file;
    if (const PictureSize size = LogoSize(settings_.logo); size.width > 0 && size.height > 0) {
      logo["logowidth"] = std::to_string(size.width);
      logo["logoheight"] = std::to_string(size.height);
    }
    page["logo"] = std::move(logo);
    if (!settings_.baseUrl.empty()) page["logoaddress"] = settings_.baseUrl + file;
  }
  View sections = ViewList();
  const auto add = [&](const char* name, const std::string& target) {
    View entry;
    entry["sectionname"] = name;
    entry["sectionpath"] = target;
    entry["sectioncurrent"] = std::string_view(name) == section;
    Append(sections, std::move(entry));
  };
  if (!reports_.empty()) add("Standings", PagePath(ReportStem(reports_.front()), 0));
  add("Races", "races.html");
  add("Drivers", "drivers.html");
  if (!model_.results.empty()) {
    add("Matrix", "matrix.html");
    add("Records", "records.html");
  }
  page["sections"] = std::move(sections);
  page["crumbs"] = ViewList();
  if (path != "index.html") Crumb(page, "Home", "index.html");
  return page;
}

void Pages::Crumb(View& page, const std::string& text, const std::string& path) {
  View crumb;
  crumb["crumbtext"] = text;
  crumb["crumbpath"] = path.empty() ? View(false) : View(Up(path));
  Append(page["crumbs"], std::move(crumb));
}

void Pages::Neighbours(View& page, const std::string& previous, const std::string& previousPath,
                       const std::string& next, const std::string& nextPath) {
  const auto neighbour = [this](const std::string& name, const std::string& path) {
    View view;
    view["neighbourname"] = name;
    view["neighbourpath"] = Up(path);
    return view;
  };
  page["neighbours"] = !previousPath.empty() || !nextPath.empty();
  page["previous"] = previousPath.empty() ? View(false) : neighbour(previous, previousPath);
  page["next"] = nextPath.empty() ? View(false) : neighbour(next, nextPath);
}

void Pages::Pager(View& page, const std::string& stem, std::size_t current, std::size_t pages) {
  if (pages < 2) {
    page["pager"] = false;
    return;
  }
  View list = ViewList();
  constexpr std::size_t kNear = 4;
  for (std::size_t i = 0; i < pages; ++i) {
    // Of very long lists the first, the last and what lies near.
    const bool near = i + kNear >= current && i <= current + kNear;
    if (!near && i != 0 && i + 1 != pages) continue;
    View entry;
    entry["pagernumber"] = std::to_string(i + 1);
    entry["pagerpath"] = Up(PagePath(stem, i));
    entry["pagercurrent"] = i == current;
    Append(list, std::move(entry));
  }
  View pager;
  pager["pagerpages"] = std::move(list);
  page["pager"] = std::move(pager);
}

void Pages::Show(View& page, const char* name, const charts::Chart& chart, const char* id,
                 const char* numbersAt) {
  View view;
  view["svg"] = charts::WriteSvg(chart, id);
  view["charttitle"] = chart.title;
  view["chartid"] = id;
  view["numbersat"] = numbersAt == nullptr ? View(false) : View(numbersAt);
  view["numbers"] = numbersAt == nullptr;
  if (numbersAt == nullptr) {
    View columns = ViewList();
    for (const std::string& column : chart.numbers.columns) Append(columns, View(column));
    View rows = ViewList();
    for (const auto& cells : chart.numbers.rows) {
      View row;
      row["rowhead"] = cells.front();
      View rest = ViewList();
      for (std::size_t i = 1; i < cells.size(); ++i) Append(rest, View(cells[i]));
      row["rowcells"] = std::move(rest);
      Append(rows, std::move(row));
    }
    view["chartcolumns"] = std::move(columns);
    view["chartrows"] = std::move(rows);
  }
  page[name] = std::move(view);
}

std::string Pages::Number(double number, int digits) const {
  return common::LocalizeDecimal(fmt::format("{:.{}f}", number, digits), model_.decimal);
}

View Pages::DriverLink(std::uint32_t driver) const {
  View link;
  link["drivername"] = model_.drivers[driver].name;
  link["driverpath"] = Up(DriverPath(model_.drivers[driver]));
  return link;
}

View Pages::TotalsView(const SiteDriver& driver) const {
  const championship::Totals& totals = driver.Counted();
  const auto average = [this](std::int64_t sum, int count) {
    return count == 0 ? std::string() : Number(static_cast<double>(sum) / count, 1);
  };
  View view;
  view["position"] = driver.position == 0 ? std::string("--") : std::to_string(driver.position);
  view["points"] = std::to_string(driver.Points());
  std::int64_t behind = 0;
  if (driver.position > 0)
    behind = model_.drivers[model_.standings.front()].standing.points - driver.Points();
  view["interval"] = driver.position == 0 || behind == 0 ? std::string("--") : std::to_string(behind);
  view["starts"] = std::to_string(totals.starts);
  view["wins"] = std::to_string(totals.Wins());
  view["topfive"] = std::to_string(totals.Top(5));
  view["topten"] = std::to_string(totals.Top(10));
  view["poles"] = std::to_string(totals.poles);
  view["lapsrun"] = std::to_string(totals.lapsRun);
  view["lapsled"] = std::to_string(totals.lapsLed);
  view["averagestart"] = average(totals.startSum, totals.startsKnown);
  view["averagefinish"] = average(totals.finishSum, totals.finishesKnown);
  view["retired"] = std::to_string(totals.dnfs);
  view["bonus"] = std::to_string(totals.bonus);
  view["stage"] =
      driver.position > 0 && !driver.standing.stage.empty() ? View(driver.standing.stage) : View(false);
  return view;
}

std::string Pages::Front() {
  const std::string events =
      model_.races.size() == 1 ? "1 race" : fmt::format("{} races", model_.races.size());
  std::string description = fmt::format("Standings, results and records after {}.", events);
  if (!model_.standings.empty()) {
    const SiteDriver& leader = model_.drivers[model_.standings.front()];
    description = fmt::format("{} leads with {} points after {}.", leader.name, leader.Points(), events);
  }
  View page = Page("index.html", model_.heading, description, "");
  page["events"] = model_.races.empty() ? "No race has been run yet." : fmt::format("After {}", events);
  page["hasraces"] = !model_.races.empty();

  View top = ViewList();
  for (std::size_t i = 0; i < std::min(kFrontStandings, model_.standings.size()); ++i) {
    View row = TotalsView(model_.drivers[model_.standings[i]]);
    row["driver"] = DriverLink(model_.standings[i]);
    Append(top, std::move(row));
  }
  page["hastop"] = !model_.standings.empty();
  page["top"] = std::move(top);
  page["hasstages"] = model_.playoff.has_value();
  page["standingspath"] = reports_.empty() ? View(false) : View(PagePath(ReportStem(reports_.front()), 0));
  View reports = ViewList();
  for (const SiteReport& report : reports_) {
    View entry;
    entry["reportname"] = report.name;
    entry["reportpath"] = PagePath(ReportStem(report), 0);
    Append(reports, std::move(entry));
  }
  page["hasreports"] = !reports_.empty();
  page["reports"] = std::move(reports);
  ShowLastRace(page);
  ShowLeaders(page);
  ShowPlayoff(page);
  return theme_.Render("front", page);
}

void Pages::ShowLastRace(View& page) const {
  page["lastrace"] = false;
  if (model_.races.empty() || model_.races.back().first == model_.races.back().end) return;
  const SiteRace& race = model_.races.back();
  View last;
  last["racename"] = RaceName(race);
  last["racepath"] = RacePath(race);
  last["racenumber"] = std::to_string(model_.races.size());
  View podium = ViewList();
  for (std::uint32_t i = race.first; i < std::min(race.end, race.first + 3); ++i) {
    const SiteResult& result = model_.results[i];
    View step = DriverLink(result.driver);
    step["steppoints"] = std::to_string(result.points.value_or(0));
    step["stepfinish"] = result.finish ? std::to_string(*result.finish) : std::string("--");
    step["stepplace"] = std::to_string(i - race.first + 1);
    Append(podium, std::move(step));
  }
  last["podium"] = std::move(podium);
  page["lastrace"] = std::move(last);
}

void Pages::ShowLeaders(View& page) const {
  struct Kind {
    const char* name;
    std::int64_t (*number)(const championship::Totals&);
  };
  static constexpr Kind kKinds[] = {
      {"Wins", [](const championship::Totals& t) -> std::int64_t { return t.Wins(); }},
      {"Poles", [](const championship::Totals& t) -> std::int64_t { return t.poles; }},
      {"Laps led", [](const championship::Totals& t) { return t.lapsLed; }}};
  View leaders = ViewList();
  for (const Kind& kind : kKinds) {
    const auto number = [&](std::uint32_t d) { return kind.number(model_.drivers[d].standing.totals); };
    std::vector<std::uint32_t> order;
    for (const std::uint32_t driver : model_.standings)
      if (number(driver) > 0) order.push_back(driver);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return number(a) > number(b); });
    if (order.size() > kFrontLeaders) order.resize(kFrontLeaders);
    if (order.empty()) continue;
    View entries = ViewList();
    for (const std::uint32_t driver : order) {
      View entry = DriverLink(driver);
      entry["leadernumber"] = std::to_string(number(driver));
      Append(entries, std::move(entry));
    }
    View leader;
    leader["leadername"] = kind.name;
    leader["leaderentries"] = std::move(entries);
    Append(leaders, std::move(leader));
  }
  page["hasleaders"] = !leaders.is_empty_list();
  page["leaders"] = std::move(leaders);
}

void Pages::ShowPlayoff(View& page) const {
  page["playoff"] = false;
  if (!model_.playoff) return;
  const auto run = static_cast<int>(model_.races.size());
  View stages = ViewList();
  for (const championship::PlayoffStage& stage : model_.playoff->stages) {
    View entry;
    entry["stagename"] = stage.name;
    const int ahead = stage.after - run;
    std::string note;
    if (ahead <= 0) {
      note = fmt::format("began after race {} with {} drivers", stage.after, stage.drivers);
    } else {
      note = fmt::format("the best {} go on after race {}, {} to go", stage.drivers, stage.after,
                         ahead == 1 ? "1 race" : fmt::format("{} races", ahead));
    }
    entry["stagenote"] = note;
    entry["stagebegun"] = ahead <= 0;
    Append(stages, std::move(entry));
  }
  View playoff;
  playoff["playoffname"] = model_.playoff->name;
  playoff["stages"] = std::move(stages);
  View in = ViewList();
  for (const std::uint32_t driver : model_.standings)
    if (model_.drivers[driver].standing.tier == championship::Standing::In) Append(in, DriverLink(driver));
  playoff["hasin"] = !in.is_empty_list();
  playoff["in"] = std::move(in);
  page["playoff"] = std::move(playoff);
}

View Pages::RecordView(const Record& record) const {
  View view;
  view["recordname"] = record.name;
  View entries = ViewList();
  for (const RecordEntry& entry : record.entries) {
    View row = DriverLink(entry.driver);
    row["recordnumber"] =
        Number(entry.number, record.digits) + (record.unit.empty() ? "" : " " + record.unit);
    row["recordrace"] = false;
    if (entry.race) {
      const SiteRace& race = model_.races[*entry.race];
      View where;
      where["wherename"] = entry.last ? fmt::format("races {} to {}", *entry.race + 1, *entry.last + 1)
                                      : fmt::format("{} (race {})", RaceName(race), *entry.race + 1);
      where["wherepath"] = RacePath(race);
      row["recordrace"] = std::move(where);
    }
    Append(entries, std::move(row));
  }
  view["recordentries"] = std::move(entries);
  return view;
}

std::string Pages::RecordsPage() {
  View page =
      Page("records.html", "Records", "Who has most of what, and the feats of single races.", "Records");
  Crumb(page, "Records");
  View records = ViewList();
  for (const Record& record : FindRecords(model_)) Append(records, RecordView(record));
  page["records"] = std::move(records);
  return theme_.Render("records", page);
}

std::string Pages::Report(const SiteReport& report, std::size_t page,
                          const std::vector<std::vector<engine::Value>>& rows) {
  const std::string path = PagePath(ReportStem(report), page);
  View view = Page(path, report.name, fmt::format("{}. {}.", report.name, report.caption), "Standings");
  Crumb(view, report.name);
  view["caption"] = report.caption;
  View others = ViewList();
  for (const SiteReport& other : reports_) {
    View entry;
    entry["othername"] = other.name;
    entry["otherpath"] = Up(PagePath(ReportStem(other), 0));
    entry["othercurrent"] = &other == &report;
    Append(others, std::move(entry));
  }
  view["others"] = std::move(others);
  Pager(view, ReportStem(report), page, PagesFor(report.rowCount, kReportRows));

  View columns = ViewList();
  for (const reports::ReportColumn& column : report.columns) {
    if (column.hidden) continue;
    View heading;
    heading["columnname"] = column.name;
    heading["columnleft"] = column.alignment != reports::kCentred;
    Append(columns, std::move(heading));
  }
  view["columns"] = std::move(columns);
  View list = ViewList();
  for (std::size_t r = 0; r < rows.size(); ++r) {
    View row;
    row["number"] = std::to_string(page * kReportRows + r + 1);
    View cells = ViewList();
    for (std::size_t c = 0; c < report.columns.size(); ++c) {
      const reports::ReportColumn& column = report.columns[c];
      if (column.hidden) continue;
      std::string text = reports::CellText(column, rows[r][c], model_.decimal);
      // The leader's interval, also where a league's own format does not say so.
      if (column.field == "Interval" && (text.empty() || text == "0")) text = "--";
      // Most cells are numbers, and need no more than themselves.
      if (!rows[r][c].IsText()) {
        Append(cells, View(text));
        continue;
      }
      View cell;
      const bool driver = column.field == "DriverName" || column.field == "Winner";
      const auto known = driver ? driverByName_.find(rows[r][c].Text()) : driverByName_.end();
      if (known != driverByName_.end()) cell["celllink"] = Up(DriverPath(model_.drivers[known->second]));
      if (column.alignment != reports::kCentred) cell["cellleft"] = true;
      cell["celltext"] = text;
      cell["istext"] = true;
      Append(cells, std::move(cell));
    }
    row["cells"] = std::move(cells);
    Append(list, std::move(row));
  }
  view["rows"] = std::move(list);
  view["hasrows"] = !rows.empty();
  view["pointschart"] = false;
  if (page == 0 && &report == &reports_.front()) ShowPointsChart(view);
  return theme_.Render("report", view);
}

// Those whom the league has chosen, as they stand in the championship; else its first ten.
std::vector<std::uint32_t> Pages::DrawnDrivers() const {
  const std::vector<std::int32_t> chosen = ChartedDrivers(settings_.chart);
  std::vector<std::uint32_t> drawn;
  for (const std::uint32_t driver : model_.standings)
    if (std::find(chosen.begin(), chosen.end(), model_.drivers[driver].id) != chosen.end())
      drawn.push_back(driver);
  // Chosen ones may have gone since.
  if (drawn.empty())
    drawn.assign(model_.standings.begin(),
                 model_.standings.begin() +
                     static_cast<std::ptrdiff_t>(std::min(kChartedDrivers, model_.standings.size())));
  return drawn;
}

void Pages::ShowPointsChart(View& page) {
  if (model_.moments.empty() || model_.standings.empty()) return;
  const std::vector<std::uint32_t> drawn = DrawnDrivers();
  const SiteDriver& leader = model_.drivers[model_.standings.front()];
  charts::LineInput input = PointsByRace(model_, drawn);
  const bool first = std::equal(drawn.begin(), drawn.end(), model_.standings.begin());
  input.description =
      fmt::format("The points of {} of the championship after each race. {} leads with {}.",
                  first ? fmt::format("the first {}", drawn.size()) : fmt::format("{} drivers", drawn.size()),
                  leader.name, leader.Points());
  Show(page, "pointschart", charts::LineChart(input), "points-chart");
}

}  // namespace scorvane::site
