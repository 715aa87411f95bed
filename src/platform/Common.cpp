// What is alike on every system.
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/Platform.h"
#include "platform/System.h"
#include "platform/SystemPath.h"

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTemplateName = "Kirrelon.dat";
// The installation's template has a folder of its own: where the prefix is the user's own, the installation's
// folder is the one of the user's data.
constexpr const char* kTemplateFolder = "template";

constexpr std::string_view kTemporaryMark = ".scorvane-";
constexpr std::string_view kTemporaryEnd = ".tmp";

std::string WithoutTrailingSeparator(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == fs::path::preferred_separator))
    path.pop_back();
  return path;
}

// Copies the program's template, which may be read-only, to a folder that has none yet: the one of the
// installation or the one beside the program. Without one to copy the program says so itself when it opens
// its template.
void FillFromProgramsTemplate(const fs::path& folder) {
  std::error_code error;
  const fs::path target = folder / kTemplateName;
  if (fs::exists(target, error)) return;
  fs::path installed = SystemPath(InstalledFolder()) / kTemplateFolder / kTemplateName;
  if (!fs::exists(installed, error)) installed = SystemPath(ProgramFolder()) / kTemplateName;
  if (!fs::is_directory(folder, error)) return;
  const fs::path copy = folder / (std::string(kTemplateName) + "." + std::to_string(ThisProcess()));
  fs::remove(copy, error);
  if (!fs::copy_file(installed, copy, error)) return;
  fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::add, error);
  try {
    ReplaceFile(PathText(copy), PathText(target));
  } catch (const std::system_error&) {
    fs::remove(copy, error);
  }
}

// True for the name of a temporary file of a process that is gone, of a file whose name begins with `start`.
bool IsLeft(const std::string& name, const std::string& start) {
  const auto mark = name.rfind(kTemporaryMark);
  if (mark == std::string::npos || (!start.empty() && name.substr(0, mark) != start)) return false;
  const std::string rest = name.substr(mark + kTemporaryMark.size());
  const std::size_t digits = rest.find_first_not_of("0123456789-");
  if (digits == std::string::npos || digits == 0 ||
      !std::string_view(rest).substr(digits).starts_with(kTemporaryEnd))
    return false;
  const long process = std::strtol(rest.c_str(), nullptr, 10);
  return process <= 0 || (process != ThisProcess() && !IsRunning(process));
}

void RemoveLeft(const fs::path& folder, const std::string& start) {
  std::vector<fs::path> left;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (IsLeft(PathText(entry->path().filename()), start)) left.push_back(entry->path());
  for (const fs::path& temporary : left) fs::remove(temporary, error);
}

}  // namespace

std::string TemporaryBeside(const std::string& path) {
  std::error_code error;
  for (int number = 1;; ++number) {
    std::string candidate = path;
    candidate.append(kTemporaryMark).append(std::to_string(ThisProcess())).append("-");
    candidate.append(std::to_string(number)).append(kTemporaryEnd);
    if (!fs::exists(fs::symlink_status(SystemPath(candidate), error))) return candidate;
  }
}

void RemoveTemporariesBeside(const std::string& path) {
  const fs::path target = SystemPath(path);
  RemoveLeft(target.has_parent_path() ? target.parent_path() : fs::path("."), PathText(target.filename()));
}

void RemoveTemporariesIn(const std::string& folder) {
  RemoveLeft(folder.empty() ? fs::path(".") : SystemPath(folder), {});
}

std::string ApplicationFolder() {
  if (std::string home = Environment("SCORVANE_HOME"); !home.empty()) {
    FillFromProgramsTemplate(SystemPath(home));
    return WithoutTrailingSeparator(std::move(home));
  }
  std::string program = ProgramFolder();
  if (IsWritable(PathText(SystemPath(program) / kTemplateName))) return program;
  std::string folder = UserDataFolder();
  std::error_code error;
  fs::create_directories(SystemPath(folder), error);
  FillFromProgramsTemplate(SystemPath(folder));
  return folder;
}

}  // namespace scorvane::platform
