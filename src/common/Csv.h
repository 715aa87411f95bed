// Comma-separated values, as spreadsheets read them.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::common {

// A cell: in quotes where it would be taken for several.
std::string CsvCell(std::string_view text);

}  // namespace scorvane::common
