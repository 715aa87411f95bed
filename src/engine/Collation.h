// How texts compare in a league file: letter case does not count, accents do. One fixed locale, so that a
// file sorts alike on every machine.
#pragma once

#include <string>
#include <string_view>

struct sqlite3;

namespace scorvane::engine {

inline constexpr const char* kCollationName = "GENERAL";

// Below 0, 0 or above 0.
int CompareTexts(std::string_view a, std::string_view b);

// Changes when the order of texts may have changed, so that indexes must be made anew.
std::string CollationVersion();

// Makes the collation known to a connection.
void RegisterCollation(sqlite3* connection);

}  // namespace scorvane::engine
