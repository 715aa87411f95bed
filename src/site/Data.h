// What a site says to programs: its data as JSON, the standings as CSV, the races as a feed, the pages for
// search engines and for the pages' own search. Numbers have a full stop here, and texts are as the league
// has them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "site/Model.h"
#include "site/Pages.h"
#include "site/SiteSettings.h"

namespace scorvane::site {

inline constexpr int kDataVersion = 1;  // of the shapes; season.schema.json and race.schema.json tell them
inline constexpr std::size_t kFeedRaces = 20;  // the last ones

std::string SeasonData(const SiteModel& model, const std::vector<SiteReport>& reports);
std::string RaceData(const SiteModel& model, std::size_t race);
// The first report (Point Standings as the program comes) with a position before its columns, for
// spreadsheets.
std::string StandingsCsv(const SiteReport& report);
// Atom. `changed` tells when what is said of a race last changed, in seconds since 1970; `since` when the
// site began.
std::string Feed(const SiteModel& model, const SiteSettings& settings, std::int64_t since,
                 const std::function<std::int64_t(std::size_t race)>& changed);
// Of the paths that are pages. There must be a base URL.
std::string Sitemap(const SiteSettings& settings, const std::vector<std::string>& paths);
// A script that says which drivers and races there are.
std::string SearchScript(const SiteModel& model, const std::vector<std::uint32_t>& drivers);

}  // namespace scorvane::site
