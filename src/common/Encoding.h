// Windows-1252, the code page of result files, track lists and written pages. The five bytes that it leaves
// unassigned stand for their control characters, so that no file is refused for them.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::common {

std::string FromWindows1252(std::string_view bytes);
// A character outside the code page becomes "?".
std::string ToWindows1252(std::string_view utf8);

}  // namespace scorvane::common
