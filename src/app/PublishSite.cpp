#include "app/PublishSite.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "app/Commands.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "platform/Platform.h"
#include "site/Folder.h"
#include "site/Theme.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

// The league remembers whole paths: the next run may begin elsewhere.
std::string WholePath(const std::string& path) {
  if (path.empty()) return path;
  std::error_code error;
  const fs::path whole = fs::absolute(common::SystemPath(path), error).lexically_normal();
  std::string text = error ? path : common::PathText(whole);
  const std::size_t root = error ? 1 : whole.root_path().native().size();
  while (text.size() > root && (text.back() == '/' || text.back() == fs::path::preferred_separator))
    text.pop_back();
  return text;
}

std::string Files(std::size_t count) {
  return fmt::format("{} file{}", count, count == 1 ? "" : "s");
}

}  // namespace

std::string ReadLogo(const std::string& path) {
  if (path.empty()) return {};
  std::error_code error;
  const auto size = fs::file_size(common::SystemPath(path), error);
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  if (error || !file) throw common::RuleError(fmt::format("'{}' cannot be read.", path));
  if (size > site::kMostLogoBytes)
    throw common::RuleError(fmt::format("The logo has at most {} kB.", site::kMostLogoBytes / 1000));
  std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.empty()) throw common::RuleError(fmt::format("'{}' is empty.", path));
  site::CheckLogo(bytes);
  return bytes;
}

site::SiteSettings WithChoices(site::SiteSettings settings, const SiteChoices& choices) {
  if (choices.folder) settings.folder = WholePath(*choices.folder);
  if (choices.theme) {
    const auto names = site::ListThemes(site::ThemesFolder());
    const bool own = !choices.theme->empty() &&
                     std::find(names.begin(), names.end(), common::LowerCase(*choices.theme)) == names.end();
    settings.theme = own ? WholePath(*choices.theme) : common::LowerCase(*choices.theme);
  }
  if (choices.baseUrl) settings.baseUrl = site::CleanBaseUrl(*choices.baseUrl);
  if (choices.accent) settings.accent = site::CleanAccent(*choices.accent);
  if (choices.chart) settings.chart = site::ChartText(*choices.chart);
  if (choices.logo) settings.logo = ReadLogo(*choices.logo);
  return settings;
}

site::PublishOutcome PublishSite(LeagueSession& session, common::UserInterface& ui,
                                 const site::SiteSettings& settings) {
  const std::string themes = site::ThemesFolder();
  if (site::ReadSiteSettings(session.League()) != settings) {
    // A theme that is none, or a folder that cannot be written into, is not remembered.
    const site::Theme theme(settings.theme, themes);
    const site::SiteFolder folder(settings.folder, "");
    // Of a league that may not be written to the site is written all the same.
    if (platform::IsWritable(session.League().Name())) StoreSiteSettings(session, settings);
  }
  return site::Publish(session.League(), session.Template(), session.State(), ui, settings,
                       static_cast<std::int64_t>(std::time(nullptr)), themes);
}

std::string OutcomeText(const site::PublishOutcome& outcome) {
  if (outcome.written + outcome.removed == 0)
    return fmt::format("{} is up to date ({}).", outcome.front, Files(outcome.files));
  return fmt::format("Wrote {}: {} written, {} unchanged, {} removed.", outcome.front, Files(outcome.written),
                     outcome.unchanged, outcome.removed);
}

}  // namespace scorvane::app
