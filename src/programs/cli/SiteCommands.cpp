// The command that publishes a league's season as a site.
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/Commands.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "platform/Platform.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "site/Folder.h"
#include "site/Publish.h"
#include "site/SiteSettings.h"
#include "site/Theme.h"

namespace scorvane::cli {
namespace {

namespace fs = std::filesystem;

// The league remembers whole paths: the next run may begin elsewhere.
std::string WholePath(const std::string& path) {
  std::error_code error;
  const fs::path whole = fs::absolute(common::SystemPath(path), error).lexically_normal();
  std::string text = error ? path : common::PathText(whole);
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

std::string ReadLogo(const std::string& path) {
  if (path.empty()) return {};
  std::error_code error;
  const auto size = fs::file_size(common::SystemPath(path), error);
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  if (error || !file) throw CommandError(fmt::format("'{}' cannot be read.", path));
  if (size > site::kMostLogoBytes)
    throw CommandError(fmt::format("The logo has at most {} kB.", site::kMostLogoBytes / 1000));
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.empty()) throw CommandError(fmt::format("'{}' is empty.", path));
  site::CheckLogo(bytes);
  return bytes;
}

// What the league remembers, with what the command line says.
site::SiteSettings Merged(site::SiteSettings settings, const SiteOptions& options) {
  if (!options.folder.empty()) settings.folder = WholePath(options.folder);
  if (options.theme) {
    const auto names = site::ListThemes(site::ThemesFolder());
    const bool own = !options.theme->empty() &&
                     std::find(names.begin(), names.end(), common::LowerCase(*options.theme)) == names.end();
    settings.theme = own ? WholePath(*options.theme) : common::LowerCase(*options.theme);
  }
  if (options.baseUrl) settings.baseUrl = site::CleanBaseUrl(*options.baseUrl);
  if (options.accent) settings.accent = site::CleanAccent(*options.accent);
  if (options.logo) settings.logo = ReadLogo(*options.logo);
  return settings;
}

void ShowSettings(const CommonOptions& common, const site::SiteSettings& settings) {
  const auto text = [](const std::string& value) {
    return value.empty() ? engine::Value() : engine::Value(value);
  };
  OutputTable table;
  table.columns = {{"Setting"}, {"Value"}};
  table.rows = {
      {engine::Value("folder"), text(settings.folder)},
      {engine::Value("theme"),
       engine::Value(settings.theme.empty() ? site::kDefaultTheme : settings.theme.c_str())},
      {engine::Value("base-url"), text(settings.baseUrl)},
      {engine::Value("accent"), text(settings.accent)},
      {engine::Value("logo"),
       settings.logo.empty() ? engine::Value()
                             : engine::Value(fmt::format("{} bytes ({})", settings.logo.size(),
                                                         site::LogoExtension(settings.logo).substr(1)))}};
  Print(table, common.format, common.decimal);
}

void PublishFrom(Context& context, const site::SiteSettings& settings) {
  const site::PublishOutcome outcome =
      site::Publish(context.League(), context.Template(), context.state, context.ui, settings,
                    static_cast<std::int64_t>(std::time(nullptr)), site::ThemesFolder());
  if (outcome.written + outcome.removed == 0) {
    context.Say(fmt::format("{} is up to date ({}).", outcome.front, Plural(outcome.files, "file")));
    return;
  }
  context.Say(fmt::format("Wrote {}: {} written, {} unchanged, {} removed.", outcome.front,
                          Plural(outcome.written, "file"), outcome.unchanged, outcome.removed));
}

}  // namespace

void Site(const CommonOptions& common, const SiteOptions& options) {
  site::SiteSettings settings;
  {
    // As a rule nothing is to be remembered: then the league is only looked at.
    Context context(common, options.path, app::LeagueSession::Use::Looking);
    const site::SiteSettings before = site::ReadSiteSettings(context.League());
    if (options.show) return ShowSettings(common, before);
    settings = Merged(before, options);
    if (settings.folder.empty())
      throw CommandError("site takes a FOLDER the first time; the league remembers it.");
    if (settings == before) return PublishFrom(context, settings);
    // A theme that is none, or a folder that cannot be written into, is not remembered.
    const site::Theme theme(settings.theme, site::ThemesFolder());
    const site::SiteFolder folder(settings.folder, "");
  }
  Context context(common, options.path);
  // Of a league that may not be written to the site is written all the same.
  if (platform::IsWritable(context.League().Name())) app::StoreSiteSettings(context.Session(), settings);
  PublishFrom(context, settings);
}

}  // namespace scorvane::cli
