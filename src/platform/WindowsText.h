// Texts as Windows' wide calls take them.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::platform {

// What is no UTF-8, or no UTF-16, becomes the replacement character.
std::wstring Wide(std::string_view text);
std::string Narrow(std::wstring_view text);

}  // namespace scorvane::platform
