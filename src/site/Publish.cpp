#include "site/Publish.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "championship/Reports.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "reports/DroppedRaces.h"
#include "reports/PageLook.h"
#include "site/Data.h"
#include "site/Folder.h"
#include "site/Hash.h"
#include "site/Model.h"
#include "site/Names.h"
#include "site/Pages.h"
#include "site/Theme.h"

namespace scorvane::site {
namespace {

using Rows = std::vector<std::vector<engine::Value>>;

class Publication {
 public:
  Publication(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
              common::UserInterface& ui, const SiteSettings& settings, Theme& theme, SiteFolder& folder)
      : league_(league),
        templateDb_(templateDb),
        state_(state),
        ui_(ui),
        settings_(settings),
        theme_(theme),
        folder_(folder) {}

  void Read(const reports::DroppedMarks& marks) {
    model_ = ReadModel(league_, state_);
    KeepNames();
    ReadReports(marks);
  }

  void Write() {
    Pages pages(model_, reports_, settings_, theme_);
    const std::vector<std::string> paths = Paths(pages);
    folder_.Begin(paths);

    folder_.Write("assets/style.css", theme_.StyleSheet(model_.look, settings_));
    folder_.Write("assets/site.js", theme_.SharedFile("site.js"));
    folder_.Write("assets/search.js", SearchScript(model_, pages.Shown()));
    for (const auto& [path, content] : theme_.Files()) folder_.Write(path, content);
    if (!settings_.logo.empty()) folder_.Write(LogoPath(), settings_.logo);

    const auto progress =
        ui_.StartProgress("Writing the site", static_cast<int>(model_.races.size() + pages.Shown().size()));
    int done = 0;
    for (std::size_t i = 0; i < model_.races.size(); ++i) {
      progress->SetValue(++done);
      folder_.Write(Pages::RacePath(model_.races[i]), pages.Race(i));
      folder_.Write(Pages::DataPath(model_.races[i]), RaceData(model_, i));
    }
    for (const std::uint32_t driver : pages.Shown()) {
      progress->SetValue(++done);
      folder_.Write(Pages::DriverPath(model_.drivers[driver]), pages.Driver(driver));
    }
    for (const SiteReport& report : reports_) WriteReport(pages, report);
    const auto list = [&](const std::string& stem, std::size_t items, std::size_t onEach, auto page) {
      for (std::size_t i = 0; i < PagesFor(items, onEach); ++i) folder_.Write(PagePath(stem, i), page(i));
    };
    list("races", model_.races.size(), kListedRaces, [&](std::size_t i) { return pages.RaceList(i); });
    list("drivers", pages.Shown().size(), kListedDrivers, [&](std::size_t i) { return pages.DriverList(i); });
    if (!model_.results.empty()) {
      list("matrix", model_.races.size(), kMatrixRaces, [&](std::size_t i) { return pages.Matrix(i); });
      folder_.Write("records.html", pages.RecordsPage());
    }
    folder_.Write("data/season.json", SeasonData(model_, reports_));
    for (const char* schema : kSchemas)
      folder_.Write(fmt::format("data/{}", schema), theme_.SharedFile(schema));
    if (!reports_.empty()) folder_.Write("standings.csv", StandingsCsv(reports_.front()));
    folder_.Write("feed.xml", Feed(model_, settings_, folder_.Since(), [this](std::size_t race) {
                    return folder_.ChangedAt(Pages::DataPath(model_.races[race]));
                  }));
    if (!settings_.baseUrl.empty()) folder_.Write("sitemap.xml", Sitemap(settings_, paths));
    // The front leads to all of it, and comes last.
    folder_.Write("index.html", pages.Front());
  }

 private:
  static constexpr const char* kSchemas[] = {"season.schema.json", "race.schema.json"};

  std::string LogoPath() const { return "assets/logo" + std::string(LogoExtension(settings_.logo)); }

  // Who is renamed keeps the address that others have linked to.
  void KeepNames() {
    for (SiteRace& race : model_.races)
      if (std::string known = folder_.KnownName("races", race.id); !known.empty())
        race.slug = std::move(known);
    for (SiteDriver& driver : model_.drivers)
      if (std::string known = folder_.KnownName("drivers", driver.id); !known.empty())
        driver.slug = std::move(known);
  }

  void ReadReports(const reports::DroppedMarks& marks) {
    std::set<std::string> slugs;
    for (const reports::ReportInfo& info : championship::ListReports(league_, templateDb_)) {
      SiteReport report;
      report.id = info.id;
      report.name = info.name;
      report.caption = championship::ReportCaption(league_, info.id, marks);
      report.caption.pop_back();
      if (championship::IsComputed(league_, templateDb_, info.id)) {
        auto table = championship::RunReport(league_, templateDb_, state_, info.id);
        if (!table) continue;
        report.columns = std::move(table->columns);
        report.rows = std::move(table->rows);
        report.rowCount = report.rows.size();
      } else {
        const bool shown = reports::StreamReport(
            league_, templateDb_, info.id,
            [&](const std::vector<reports::ReportColumn>& columns) { report.columns = columns; },
            [&](const std::vector<engine::Value>& row) {
              if (report.rowCount++ < kKeptRows) report.rows.push_back(row);
            });
        if (!shown) continue;
      }
      // A report with nothing to show, as Rookie Standings in most leagues, has no page; the first one, which
      // the site is about, has.
      if (report.rowCount == 0 && !reports_.empty()) continue;
      report.slug = Slug(info.name);
      if (report.slug.empty() || !slugs.insert(report.slug).second)
        report.slug =
            fmt::format("report{}{}", report.slug.empty() ? "" : "-" + report.slug, slugs.size() + 1);
      slugs.insert(report.slug);
      reports_.push_back(std::move(report));
    }
  }

  void WriteReport(Pages& pages, const SiteReport& report) {
    if (report.rowCount <= report.rows.size()) {
      for (std::size_t page = 0; page < PagesFor(report.rowCount, kReportRows); ++page) {
        const auto first = static_cast<std::ptrdiff_t>(page * kReportRows);
        const auto end = static_cast<std::ptrdiff_t>(std::min(report.rowCount, (page + 1) * kReportRows));
        folder_.Write(
            PagePath(Pages::ReportStem(report), page),
            pages.Report(report, page, Rows(report.rows.begin() + first, report.rows.begin() + end)));
      }
      return;
    }
    Rows rows;
    std::size_t page = 0;
    std::size_t count = 0;
    const auto write = [&] {
      folder_.Write(PagePath(Pages::ReportStem(report), page), pages.Report(report, page, rows));
      ++page;
      rows.clear();
    };
    reports::StreamReport(
        league_, templateDb_, report.id, [](const std::vector<reports::ReportColumn>&) {},
        [&](const std::vector<engine::Value>& row) {
          // What another program has added since the pages were counted comes with the next run.
          if (++count > report.rowCount) return;
          rows.push_back(row);
          if (rows.size() == kReportRows) write();
        });
    if (!rows.empty()) write();
  }

  // All files of the site.
  std::vector<std::string> Paths(const Pages& pages) const {
    std::vector<std::string> paths = {"index.html",     "feed.xml",         "assets/style.css",
                                      "assets/site.js", "assets/search.js", "data/season.json"};
    for (const char* schema : kSchemas) paths.push_back(fmt::format("data/{}", schema));
    const auto list = [&](const std::string& stem, std::size_t items, std::size_t onEach) {
      for (std::size_t i = 0; i < PagesFor(items, onEach); ++i) paths.push_back(PagePath(stem, i));
    };
    list("races", model_.races.size(), kListedRaces);
    list("drivers", pages.Shown().size(), kListedDrivers);
    if (!model_.results.empty()) {
      list("matrix", model_.races.size(), kMatrixRaces);
      paths.emplace_back("records.html");
    }
    for (const SiteReport& report : reports_) list(Pages::ReportStem(report), report.rowCount, kReportRows);
    if (!reports_.empty()) paths.emplace_back("standings.csv");
    if (!settings_.baseUrl.empty()) paths.emplace_back("sitemap.xml");
    for (const auto& file : theme_.Files()) paths.push_back(file.first);
    if (!settings_.logo.empty()) paths.push_back(LogoPath());
    for (const SiteRace& race : model_.races) {
      paths.push_back(Pages::RacePath(race));
      paths.push_back(Pages::DataPath(race));
    }
    for (const std::uint32_t driver : pages.Shown())
      paths.push_back(Pages::DriverPath(model_.drivers[driver]));
    return paths;
  }

  engine::Database& league_;
  engine::Database& templateDb_;
  const common::ProcessState& state_;
  common::UserInterface& ui_;
  const SiteSettings& settings_;
  Theme& theme_;
  SiteFolder& folder_;
  SiteModel model_;
  std::vector<SiteReport> reports_;
};

// Over everything that a site is made of; empty when that cannot be told. No unit of work may be open: the
// store's locks on a file end with the closing of any other handle on it.
std::string FingerprintOf(engine::Database& league, engine::Database& templateDb,
                          const common::ProcessState& state, const SiteSettings& settings,
                          const Theme& theme) {
  const std::string file = HashOfFile(league.Name());
  const std::string reports = HashOfFile(templateDb.Name());
  if (file.empty() || reports.empty()) return {};
  Hash hash;
  for (const std::string& part :
       {reports::ProductVersion(), file, reports, theme.Fingerprint(), settings.baseUrl, settings.accent,
        settings.logo, std::string(1, state.decimalSeparator), common::GetFileTitle(league.Name(), true)})
    hash.AddText(part);
  return hash.Digits();
}

}  // namespace

PublishOutcome Publish(engine::Database& league, engine::Database& templateDb,
                       const common::ProcessState& state, common::UserInterface& ui,
                       const SiteSettings& settings, std::int64_t now, const std::string& themesFolder) {
  if (settings.folder.empty()) throw common::RuleError("A folder for the site is needed.");
  Theme theme(settings.theme, themesFolder);
  SiteFolder folder(settings.folder, common::GetFileTitle(league.Name(), true));
  folder.Now(now);
  PublishOutcome outcome;
  outcome.front = common::JoinPath(settings.folder, "index.html");
  std::string fingerprint = FingerprintOf(league, templateDb, state, settings, theme);
  if (folder.IsUpToDate(fingerprint)) {
    outcome.files = outcome.unchanged = folder.Files();
    return outcome;
  }
  const reports::DroppedMarks marks = reports::MarkDroppedRaces(league, state.droppedRaces);
  // Before the league is read: what is committed meanwhile makes another fingerprint, and the next run shows
  // it.
  fingerprint = FingerprintOf(league, templateDb, state, settings, theme);
  Publication publication(league, templateDb, state, ui, settings, theme, folder);
  {
    engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::TakeBack,
                            engine::UnitOfWork::Begin::Reading);
    publication.Read(marks);
    unit.Commit();
  }
  publication.Write();
  folder.Finish(fingerprint);
  outcome.files = folder.Files();
  outcome.written = folder.Written();
  outcome.unchanged = folder.Unchanged();
  outcome.removed = folder.Removed();
  return outcome;
}

}  // namespace scorvane::site
