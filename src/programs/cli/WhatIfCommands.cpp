// What `standings` shows of what might be: other rules, and the races that are still to come.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "championship/RuleFiles.h"
#include "championship/Title.h"
#include "championship/WhatIf.h"
#include "common/Paths.h"
#include "engine/Names.h"
#include "programs/cli/Context.h"
#include "programs/cli/DriverNames.h"
#include "programs/cli/ReportNames.h"

namespace scorvane::cli {
namespace {

constexpr std::array<std::string_view, 5> kKeys = {"points", "drop", "bonus", "without", "playoff"};

bool BeginsWithKey(std::string_view text) {
  return std::any_of(kKeys.begin(), kKeys.end(), [&](std::string_view key) {
    return text.size() > key.size() && engine::SameName(text.substr(0, key.size()), key) &&
           text[key.size()] == '=';
  });
}

// A comma within a file's or a driver's name parts nothing: only one with a key behind it does.
std::vector<std::string> Parts(std::string_view text) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  for (std::size_t comma = text.find(','); comma != std::string_view::npos;
       comma = text.find(',', comma + 1)) {
    if (!BeginsWithKey(text.substr(comma + 1))) continue;
    parts.emplace_back(text.substr(begin, comma - begin));
    begin = comma + 1;
  }
  parts.emplace_back(text.substr(begin));
  return parts;
}

bool IsFile(const std::string& path) {
  std::error_code error;
  return path == common::kStandardInput || std::filesystem::is_regular_file(common::SystemPath(path), error);
}

void TakePart(Context& context, const std::string& part, championship::WhatIf& whatIf) {
  if (!BeginsWithKey(part))
    throw CommandError(
        fmt::format("--what-if takes points=, drop=, bonus=, without= and playoff=, not '{}'.", part));
  const std::size_t equals = part.find('=');
  const std::string_view key = std::string_view(part).substr(0, equals);
  const std::string value = part.substr(equals + 1);
  if (engine::SameName(key, "points")) {
    // A preset has the name before a file of that name.
    const auto presets = championship::ListPointPresets();
    const bool known = std::any_of(presets.begin(), presets.end(),
                                   [&](const auto& preset) { return engine::SameName(preset.name, value); });
    if (known || !IsFile(value)) {
      whatIf.preset = championship::NeedPointPreset(value);
    } else {
      whatIf.points.emplace();
      for (const scoring::PositionPoints& position : championship::ReadPointFile(value))
        whatIf.points->push_back(position.points.value_or(0));
    }
  } else if (engine::SameName(key, "drop")) {
    whatIf.dropped = WholeNumber(value, "How many races are dropped");
    if (*whatIf.dropped < 0 || *whatIf.dropped > championship::kMostDropped)
      throw CommandError(
          fmt::format("0 to {} races are dropped, not {}.", championship::kMostDropped, value));
  } else if (engine::SameName(key, "bonus")) {
    if (!engine::SameName(value, "off"))
      throw CommandError(fmt::format("bonus= takes off, not '{}'.", value));
    whatIf.noBonus = true;
  } else if (engine::SameName(key, "without")) {
    whatIf.without.push_back(NeedDriver(context.League(), value).id);
  } else if (engine::SameName(value, "none")) {
    whatIf.noPlayoff = true;
  } else {
    whatIf.playoff = NeedPlayoff(value);
  }
}

}  // namespace

void ShowWhatIf(const CommonOptions& common, Context& context, const StandingsOptions& options) {
  championship::WhatIf whatIf;
  std::string caption;
  for (const std::string& text : options.whatIf) {
    for (const std::string& part : Parts(text)) TakePart(context, part, whatIf);
    caption += (caption.empty() ? "With " : ", ") + text;
  }
  const auto table =
      championship::RunWhatIf(context.League(), context.Template(), context.state, whatIf, options.afterRace);
  PrintReport(common, context.League(), "What If", caption + ":", table);
}

void ShowTitle(const CommonOptions& common, Context& context, int remaining,
               std::optional<std::int32_t> afterRace) {
  championship::RaceMost most;
  const auto table =
      championship::RunTitle(context.League(), context.Template(), context.state, remaining, afterRace, most);
  PrintReport(
      common, context.League(), "Title",
      fmt::format(
          "With {} to come, each of which brings at most {} points. Needs: the first must add them to "
          "be champion whatever happens, the others must gain them on the first.",
          Plural(remaining, "race"), most.points),
      table);
}

}  // namespace scorvane::cli
