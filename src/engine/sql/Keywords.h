// The words that cannot stand as a bare name.
#pragma once

#include <string_view>

namespace scorvane::engine::sql {

bool IsReservedWord(std::string_view word);

}  // namespace scorvane::engine::sql
