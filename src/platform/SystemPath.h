// The one place where a path, which is a text in UTF-8 everywhere, becomes what the system's calls take, and
// back.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace scorvane::platform {

inline std::filesystem::path SystemPath(std::string_view path) {
  return {std::u8string(path.begin(), path.end())};
}

inline std::string PathText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace scorvane::platform
