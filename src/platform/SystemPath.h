// The one place where a path, which is a text in UTF-8 everywhere, becomes what the system's calls take, and
// back.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace scorvane::platform {

std::filesystem::path SystemPath(std::string_view path);
std::string PathText(const std::filesystem::path& path);

}  // namespace scorvane::platform
