// Publishing a league's season as a site: what the window and the command line do with what was chosen.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/LeagueSession.h"
#include "common/UserInterface.h"
#include "site/Publish.h"
#include "site/SiteSettings.h"

namespace scorvane::app {

// As a user gives it; what is not given stays, an empty text forgets.
struct SiteChoices {
  std::optional<std::string> folder;
  std::optional<std::string> theme;  // one of the program's by its name, or a folder
  std::optional<std::string> baseUrl;
  std::optional<std::string> accent;
  std::optional<std::string> logo;                 // a file
  std::optional<std::vector<std::int32_t>> chart;  // drivers' keys; none: the first ten
};

// The settings with the choices, as they are kept: paths are whole ones (a relative one is taken from the
// current folder), the logo is read. Throws common::RuleError with a sentence for the user.
site::SiteSettings WithChoices(site::SiteSettings settings, const SiteChoices& choices);

// The bytes of a picture for the site; none of an empty path. Throws common::RuleError when it cannot be read
// or is none that pages show.
std::string ReadLogo(const std::string& path);

// Keeps the settings in the league, as a change that can be taken back, where they are others and the league
// may be written to; a theme that is none is not kept. Then writes the site. Throws as site::Publish does.
site::PublishOutcome PublishSite(LeagueSession& session, common::UserInterface& ui,
                                 const site::SiteSettings& settings);

// "Wrote /srv/league/index.html: 3 files written, 80 unchanged, 0 removed."
std::string OutcomeText(const site::PublishOutcome& outcome);

}  // namespace scorvane::app
