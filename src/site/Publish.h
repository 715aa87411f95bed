// Publishes a league's season as a site: the one operation behind the window and the command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"
#include "site/SiteSettings.h"

namespace scorvane::site {

struct PublishOutcome {
  std::string front;  // the path of the front page
  std::size_t files = 0;
  std::size_t written = 0;
  std::size_t unchanged = 0;
  std::size_t removed = 0;
};

// Writes the site into the settings' folder. What differs is written, what is there already stays; when
// nothing of the league, the theme, the settings and the program has changed and every file is as it was
// written, nothing is read or rendered at all. Progress is shown race by race and driver by driver.
//
// The league is read in one go, so that a change that another program makes meanwhile is in it as a whole or
// not at all; only marks of dropped races that are not as they should be are written. `now` is in seconds
// since 1970 and dates what has changed in the feed. `themesFolder` is where the program's own themes are.
//
// Throws common::RuleError with a sentence for the user (folder, theme, disk), and EngineError. Each page is
// then as it was before or as it is to be, and the next run goes on.
PublishOutcome Publish(engine::Database& league, engine::Database& templateDb,
                       const common::ProcessState& state, common::UserInterface& ui,
                       const SiteSettings& settings, std::int64_t now, const std::string& themesFolder);

}  // namespace scorvane::site
