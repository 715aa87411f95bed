#include "championship/PointPresets.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>

#include "championship/Presets.h"
#include "common/Formats.h"
#include "common/RuleError.h"
#include "engine/Names.h"

namespace scorvane::championship {
namespace {

std::int32_t Number(std::string_view text) {
  text = common::TrimBlanks(text);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    throw std::logic_error(fmt::format("a preset of points has '{}' for a number", text));
  return number;
}

// The parts of a text between the separators.
std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

// What stands behind "# key:"; the remarks between a file's facts are for its readers.
PointPreset Parse(const PresetFile& file) {
  constexpr std::string_view kSource = "# source: ";
  constexpr std::string_view kBonus = "# bonus: ";
  PointPreset preset;
  preset.name = file.name;
  for (std::string_view line : Split(file.text, '\n')) {
    if (line.starts_with(kSource)) {
      preset.source = line.substr(kSource.size());
    } else if (line.starts_with(kBonus) && line.substr(kBonus.size()) != "none") {
      for (const std::string_view rule : Split(line.substr(kBonus.size()), ',')) {
        const auto sides = Split(rule, '=');
        preset.bonuses[Number(sides.at(0))] = Number(sides.at(1));
      }
    } else if (!line.empty() && line.front() != '#' && line != "Position,Points") {
      preset.points.push_back(Number(Split(line, ',').at(1)));
    }
  }
  return preset;
}

}  // namespace

std::vector<PointPreset> ListPointPresets() {
  std::vector<PointPreset> presets;
  for (const PresetFile& file : PointPresetFiles()) presets.push_back(Parse(file));
  return presets;
}

PointPreset NeedPointPreset(const std::string& name) {
  std::string names;
  for (const PresetFile& file : PointPresetFiles()) {
    if (engine::SameName(file.name, common::TrimBlanks(name))) return Parse(file);
    names += (names.empty() ? "" : ", ") + std::string(file.name);
  }
  throw common::RuleError(fmt::format("There is no point system '{}'. The presets are: {}.", name, names));
}

void ApplyPreset(const PointPreset& preset, scoring::PointSystemEdit& edit) {
  for (const auto& [id, points] : preset.bonuses) {
    if (std::none_of(edit.bonuses.begin(), edit.bonuses.end(),
                     [&](const auto& rule) { return rule.id == id; }))
      throw common::RuleError(
          fmt::format("The league has no bonus rule {}, which {} needs.", id, preset.name));
  }
  // Positions behind the table's last stay where they pay.
  while (edit.positions.size() > preset.points.size() && edit.positions.back().prizeMoney.value_or(0) == 0)
    edit.positions.pop_back();
  if (edit.positions.size() < preset.points.size()) edit.positions.resize(preset.points.size());
  for (std::size_t i = 0; i < edit.positions.size(); ++i) {
    edit.positions[i].points = i < preset.points.size() ? preset.points[i] : 0;
    edit.positions[i].position = 0;
  }
  edit.usePositions = true;
  for (scoring::BonusPoints& rule : edit.bonuses) {
    const auto found = preset.bonuses.find(rule.id);
    rule.points = found == preset.bonuses.end() ? 0 : found->second;
  }
  edit.useBonus = true;
}

}  // namespace scorvane::championship
