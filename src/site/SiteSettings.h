// What a league remembers of its site. It is kept in a table of the league's own that is made with the first
// of these settings; a league without a site does not have it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Database.h"

namespace scorvane::site {

inline constexpr std::size_t kMostLogoBytes = 200000;
inline constexpr std::size_t kMostCharted = 20;  // drivers whose lines one can tell apart
inline constexpr const char* kDefaultTheme = "classic";

struct SiteSettings {
  std::string folder;      // where it is written, a whole path
  std::string theme;       // one of the program's by its name, or a folder; empty: the default
  std::string baseUrl;     // where it is read, with a slash at its end; empty: nobody knows
  std::string accent;      // "#rrggbb"; empty: the theme's own
  std::string logo;        // the picture's bytes
  std::string chart = {};  // the keys of the drivers whose points are drawn, "3,17"; empty: the first ten

  bool operator==(const SiteSettings& other) const = default;
};

// Empty ones in a league without the table. Throws EngineError.
SiteSettings ReadSiteSettings(engine::Database& league);
void EnsureSiteTable(engine::Database& league);
// Needs the table. Throws EngineError; nothing is changed then.
void StoreSiteSettings(engine::Database& league, const SiteSettings& settings);

// As it is kept. Each throws common::RuleError with a sentence for the user when it cannot be that.
std::string CleanBaseUrl(std::string_view typed);
std::string CleanAccent(std::string_view typed);
// Of drivers' keys, each once and in order; empty for none. Throws when there are more than kMostCharted.
std::string ChartText(const std::vector<std::int32_t>& drivers);
std::vector<std::int32_t> ChartedDrivers(std::string_view chart);
void CheckLogo(std::string_view bytes);
// ".png" and the like, by what the picture's bytes begin with; empty for what is no picture that pages show.
std::string_view LogoExtension(std::string_view bytes);
// Width and height in pixels; zeros when they cannot be told.
struct PictureSize {
  int width = 0;
  int height = 0;
};
PictureSize LogoSize(std::string_view bytes);

}  // namespace scorvane::site
