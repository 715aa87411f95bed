// Windows-1252, the code page of result files, track lists and written pages. The five bytes that it leaves
// unassigned stand for their control characters, so that no file is refused for them.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::common {

std::string FromWindows1252(std::string_view bytes);
// Whether the bytes can be read as UTF-8. Letters of Windows-1252 next to each other hardly ever can.
bool IsUtf8(std::string_view bytes);
// A page as the simulation writes it, or as an HTML editor may have saved it since: what can be read as UTF-8
// is that.
std::string FromPageBytes(std::string_view bytes);
// A character outside the code page becomes "?".
std::string ToWindows1252(std::string_view utf8);

}  // namespace scorvane::common
