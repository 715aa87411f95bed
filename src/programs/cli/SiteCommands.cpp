// The command that publishes a league's season as a site.
#include <fmt/format.h>

#include <algorithm>

#include "app/PublishSite.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/DriverNames.h"
#include "site/SiteSettings.h"

namespace scorvane::cli {
namespace {

void ShowSettings(const CommonOptions& common, engine::Database& league, const site::SiteSettings& settings) {
  const auto text = [](const std::string& value) {
    return value.empty() ? engine::Value() : engine::Value(value);
  };
  std::string drawn;
  const auto charted = site::ChartedDrivers(settings.chart);
  for (const drivers::Driver& driver : drivers::ListDrivers(league))
    if (std::find(charted.begin(), charted.end(), driver.id) != charted.end())
      drawn += (drawn.empty() ? "" : ", ") + driver.name;
  OutputTable table;
  table.columns = {{"Setting"}, {"Value"}};
  table.rows = {
      {engine::Value("folder"), text(settings.folder)},
      {engine::Value("theme"),
       engine::Value(settings.theme.empty() ? site::kDefaultTheme : settings.theme.c_str())},
      {engine::Value("base-url"), text(settings.baseUrl)},
      {engine::Value("accent"), text(settings.accent)},
      {engine::Value("logo"), settings.logo.empty()
                                  ? engine::Value()
                                  : engine::Value(fmt::format("{} bytes ({})", settings.logo.size(),
                                                              site::LogoExtension(settings.logo).substr(1)))},
      {engine::Value("chart"), text(drawn)}};
  Print(table, common.format, common.decimal);
}

}  // namespace

void Site(const CommonOptions& common, const SiteOptions& options) {
  site::SiteSettings settings;
  {
    // As a rule nothing is to be remembered: then the league is only looked at.
    Context context(common, options.path, app::LeagueSession::Use::Looking);
    const site::SiteSettings before = site::ReadSiteSettings(context.League());
    if (options.show) return ShowSettings(common, context.League(), before);
    app::SiteChoices choices{{}, options.theme, options.baseUrl, options.accent, options.logo, {}};
    if (!options.chart.empty()) {
      choices.chart.emplace();
      for (const std::string& name : options.chart)
        if (!name.empty()) choices.chart->push_back(NeedDriver(context.League(), name).id);
    }
    if (!options.folder.empty()) choices.folder = options.folder;
    settings = app::WithChoices(before, choices);
    if (settings.folder.empty())
      throw CommandError("site takes a FOLDER the first time; the league remembers it.");
    if (settings == before)
      return context.Say(app::OutcomeText(app::PublishSite(context.Session(), context.ui, settings)));
  }
  Context context(common, options.path);
  context.Say(app::OutcomeText(app::PublishSite(context.Session(), context.ui, settings)));
}

}  // namespace scorvane::cli
