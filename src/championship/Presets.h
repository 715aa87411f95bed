// The readable files of share/points and share/playoffs, as they are compiled into the program.
#pragma once

#include <span>
#include <string_view>

namespace scorvane::championship {

struct PresetFile {
  std::string_view name;  // the file's, without its extension
  std::string_view text;
};

// By name.
std::span<const PresetFile> PointPresetFiles();
std::span<const PresetFile> PlayoffPresetFiles();

}  // namespace scorvane::championship
