#include "app/SimFolders.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "engine/EngineError.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSeparators = "\\/";

// True when the path exists. Throws when that cannot be told; a place where the user may not look holds
// nothing for this program, and neither does one whose disk cannot even have such a name.
bool IsThere(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(common::SystemPath(path), error);
  if (!error) return true;
  if (status.type() == fs::file_type::not_found || error == std::errc::permission_denied ||
      error == std::errc::invalid_argument || error == std::errc::filename_too_long)
    return false;
  throw std::system_error(error, path);
}

// The path that `names`, one below another, have below a folder; empty when one is missing.
std::string FindBelow(std::string folder, std::string_view names) {
  while (!names.empty() && !folder.empty()) {
    const auto end = std::min(names.find_first_of(kSeparators), names.size());
    if (end > 0) {
      folder = common::FindIgnoringCase(folder, names.substr(0, end));
      if (!folder.empty() && !IsThere(folder)) return {};
    }
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  return folder;
}

std::string FileBelow(std::string folder, std::string_view names) {
  std::string path = FindBelow(std::move(folder), names);
  return common::FileExists(path) ? path : std::string();
}

bool FindOnDrives(const Simulation& simulation, std::string& folder) {
  for (const platform::Drive& drive : platform::FixedDrives()) {
    const std::string program =
        FileBelow(drive.folder, common::JoinPath(simulation.location, simulation.programFile));
    if (program.empty()) continue;
    folder = common::GetFolder(program);
    return true;
  }
  return false;
}

void ShowScanError(common::UserInterface& ui, int number, const std::string& description) {
  ui.ShowMessage({fmt::format("An unanticipated error has occurred:\r\nError {}: {}", number, description),
                  "Scanning for NASCAR Racing sims", common::MessageIcon::Critical});
}

}  // namespace

const std::array<Simulation, kSimulations>& Simulations() {
  static constexpr std::array<Simulation, kSimulations> kTable = {{
      {"NASCAR Racing 3", "NASCAR Racing 3", common::kFolderNR3, "NASCAR Racing 3.exe", "Papyrus\\NASCAR3\\"},
      {"NASCAR Legends", "NASCAR Legends", common::kFolderLegends, "NASCAR Legends.exe",
       "Papyrus\\NASCAR Legends\\"},
      {"NASCAR Racing 4", "NASCAR Racing 4", common::kFolderNR4, "NASCAR Racing 4.exe",
       "Papyrus\\NASCAR Racing 4\\"},
      {"NASCAR Racing 2002", "NASCAR Racing 2002 Season", common::kFolderNR2002, "NR2002.exe",
       "Papyrus\\NASCAR Racing 2002 Season\\"},
      {"NASCAR Racing 2003", "NASCAR Racing 2003 Season", common::kFolderNR2003, "NR2003.exe", {}},
  }};
  return kTable;
}

bool LacksSimFolder(const common::ProcessState& state, std::int16_t simType) {
  if (simType < common::kNascarRacing4) return false;
  const auto index = common::SimFolderIndex(simType);
  return index && common::TrimBlanks(state.simFolders[*index]).empty();
}

void ReadSimFolders(engine::Database& templateDb, common::ProcessState& state) {
  for (std::size_t i = 0; i < kSimulations; ++i) {
    std::string folder = common::GetSettingValue(templateDb, Simulations()[i].setting);
    // A missing setting is the text of one NUL, and so becomes empty.
    std::erase(folder, '\0');
    state.simFolders[i] = std::move(folder);
  }
}

bool ScanDefaultPaths(engine::Database& templateDb, common::ProcessState& state, common::UserInterface& ui) {
  bool found = false;
  try {
    for (int i = 0; i < kSimulations; ++i) {
      const Simulation& simulation = Simulations()[static_cast<std::size_t>(i)];
      if (simulation.location.empty()) continue;
      std::string& folder = state.simFolders[static_cast<std::size_t>(i)];
      if (!FindProgram(folder, i).empty()) {
        found = true;
      } else if (FindOnDrives(simulation, folder)) {
        SaveNASCARPaths(templateDb, state, i);
        found = true;
      }
    }
  } catch (const std::system_error& error) {
    ShowScanError(ui, error.code().value(), error.code().message());
  } catch (const engine::EngineError& error) {
    ShowScanError(ui, error.Number(), error.Description());
  }
  return found;
}

void SaveNASCARPaths(engine::Database& templateDb, const common::ProcessState& state, int index) {
  const auto at = static_cast<std::size_t>(index);
  common::SaveSettingValue(templateDb, Simulations().at(at).setting, state.simFolders.at(at));
}

std::string FindProgram(std::string_view folder, int index) {
  const std::string_view program = Simulations().at(static_cast<std::size_t>(index)).programFile;
  // The folder as it is spelled, which may hold a "\" in a name; an empty one is the working folder.
  std::string path = FileBelow(folder.empty() ? "." : std::string(folder), program);
  if (!path.empty() || folder.empty()) return path;
  const bool fromRoot = kSeparators.find(folder.front()) != std::string_view::npos;
  return FileBelow(fromRoot ? "/" : ".", common::JoinPath(folder, program));
}

FolderCheck CheckSimFolders(const std::array<std::string, kSimulations>& folders) {
  FolderCheck check;
  for (int i = 0; i < kSimulations; ++i) {
    const std::string& folder = folders[static_cast<std::size_t>(i)];
    if (common::TrimBlanks(folder).empty()) continue;
    try {
      if (!FindProgram(folder, i).empty()) continue;
    } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch): it fails the check below
      // A folder that cannot be looked into cannot be verified either.
    }
    const Simulation& simulation = Simulations()[static_cast<std::size_t>(i)];
    check.failing.push_back(i);
    check.message = {fmt::format("{}\r\n\r\nScorvane cannot verify that this is the folder for {} because\r\n"
                                 "the file \"{}\" is not in this folder.",
                                 folder, simulation.name, simulation.programFile),
                     "Invalid Path", common::MessageIcon::Exclamation};
  }
  return check;
}

}  // namespace scorvane::app
