#include "common/Paths.h"

#include <filesystem>

namespace scorvane::common {
namespace {

constexpr std::string_view kSeparators = "\\/";

}  // namespace

std::string GetFolder(std::string_view path) {
  return std::string(path.substr(0, path.find_last_of(kSeparators) + 1));
}

std::string GetFileTitle(std::string_view path, bool stripExtension) {
  std::string_view title = path.substr(path.find_last_of(kSeparators) + 1);
  if (stripExtension) title = title.substr(0, title.rfind('.'));
  return std::string(title);
}

std::string GetExtension(std::string_view path) {
  const auto stop = path.rfind('.');
  return stop == std::string_view::npos ? std::string() : std::string(path.substr(stop + 1));
}

bool FileExists(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  return !error && std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && kSeparators.find(path.back()) == std::string_view::npos)
    path += static_cast<char>(std::filesystem::path::preferred_separator);
  return path.append(name);
}

}  // namespace scorvane::common
