#include "import/Tracks.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/Value.h"
#include "import/FileContent.h"

namespace scorvane::import {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A remark may follow a value; a ";" within a word is part of it.
std::string_view WithoutRemark(std::string_view value) {
  for (auto at = value.find(';'); at != std::string_view::npos; at = value.find(';', at + 1)) {
    if (at == 0 || kBlanks.find(value[at - 1]) != std::string_view::npos) return Trim(value.substr(0, at));
  }
  return value;
}

// The file's text: as the simulation's code page has it, or as an editor may have saved it since.
std::string TextOf(std::string_view content) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (!common::IsUtf8(content)) return common::FromWindows1252(content);
  return std::string(content.starts_with(kMark) ? content.substr(kMark.size()) : content);
}

}  // namespace

std::string WithoutTrademarks(std::string_view name) {
  std::string plain(name);
  for (const std::string_view sign : {"®", "™"}) {
    for (auto at = plain.find(sign); at != std::string::npos; at = plain.find(sign, at))
      plain.erase(at, sign.size());
  }
  return plain;
}

void AddTrackFromIni(CTracks& tracks, std::string_view bytes) {
  const std::string text = TextOf(bytes);
  std::string_view content = text;
  std::optional<std::string> name;
  std::optional<float> length;
  bool inTrack = false;
  while (!content.empty() && !(name && length)) {
    const auto end = std::min(content.find('\n'), content.size());
    const std::string_view line = Trim(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
    if (const auto close = line.find(']');
        !line.empty() && line.front() == '[' && close != std::string_view::npos) {
      inTrack = Trim(line.substr(1, close - 1)) == "track";
      continue;
    }
    const auto equals = line.find('=');
    if (!inTrack || equals == std::string_view::npos) continue;
    const std::string_view key = Trim(line.substr(0, equals));
    const std::string_view value = Trim(line.substr(equals + 1));
    if (key == "track_name") {
      const std::string plain = WithoutTrademarks(WithoutRemark(value));
      name = common::TrimBlanks(plain);
    } else if (key == "track_length") {
      length = static_cast<float>(engine::LeadingNumber(value));
    }
  }
  const std::string key = name.value_or("");
  if (!tracks.Contains(key)) tracks.Add(key, length.value_or(0.0F), key);
}

void ReadTrackIni(CTracks& tracks, const std::string& path) {
  std::string content;
  try {
    content = ReadFileContent(path);
  } catch (const FileFault&) {
    return;
  }
  AddTrackFromIni(tracks, content);
}

void BuildTrackCatalogue(common::ProcessState& state) {
  const bool newer = state.simType >= common::kNascarRacing4 && state.simType <= common::kNascarRacing2003;
  const auto index = common::SimFolderIndex(newer ? state.simType : std::int16_t{common::kNascarRacing4});
  BuildTrackCatalogue(state, index ? state.simFolders[*index] : std::string());
}

void BuildTrackCatalogue(common::ProcessState& state, const std::string& simulationFolder) {
  const std::string simulation(common::TrimBlanks(simulationFolder));
  if (state.tracks && state.tracksFolder == simulation) return;
  state.tracks = std::make_shared<CTracks>();
  state.tracksFolder = simulation;
  if (simulation.empty()) return;
  const std::string folder = common::FindIgnoringCase(simulation, "tracks");
  if (folder.empty()) return;
  std::vector<std::string> tracks;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(common::SystemPath(folder), error), end;
       !error && entry != end; entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_directory(unknown)) tracks.push_back(common::PathText(entry->path()));
  }
  std::sort(tracks.begin(), tracks.end());
  for (const std::string& track : tracks) {
    const std::string ini = common::FindIgnoringCase(track, "track.ini");
    if (!ini.empty()) ReadTrackIni(*state.tracks, ini);
  }
}

}  // namespace scorvane::import
