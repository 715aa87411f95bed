#include "common/Paths.h"

#include <filesystem>
#include <system_error>

#include "common/Formats.h"

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
  const auto status = std::filesystem::status(SystemPath(path), error);
  return !error && std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::equivalent(SystemPath(a), SystemPath(b), error) && !error;
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && kSeparators.find(path.back()) == std::string_view::npos)
    path += static_cast<char>(std::filesystem::path::preferred_separator);
  return path.append(name);
}

std::string FindIgnoringCase(std::string_view folder, std::string_view name) {
  namespace fs = std::filesystem;
  // A separator of the other system would be taken for a letter of the folder's name.
  while (folder.size() > 1 && kSeparators.find(folder.back()) != std::string_view::npos &&
         SystemPath(folder) != SystemPath(folder).root_path())
    folder.remove_suffix(1);
  const fs::path parent = SystemPath(folder);
  std::error_code error;
  if (const fs::path same = parent / SystemPath(name); fs::exists(same, error)) return PathText(same);
  const std::string wanted = LowerCase(name);
  std::string found;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    std::string path = PathText(entry->path());
    // Of several, the same one every time.
    if (LowerCase(GetFileTitle(path)) == wanted && (found.empty() || path < found)) found = std::move(path);
  }
  return found;
}

}  // namespace scorvane::common
