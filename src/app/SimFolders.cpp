#include "app/SimFolders.h"

#include <array>

#include "common/Formats.h"
#include "common/SettingsStore.h"

namespace scorvane::app {

std::optional<std::size_t> SimFolderIndex(std::int16_t simType) {
  if (simType == common::kNascarRacing3 || simType == common::kNascarLegends) return simType;
  if (simType >= common::kNascarRacing4 && simType <= common::kNascarRacing2003) return simType - 1;
  return std::nullopt;
}

bool LacksSimFolder(const common::ProcessState& state, std::int16_t simType) {
  if (simType < common::kNascarRacing4) return false;
  const auto index = SimFolderIndex(simType);
  return index && common::TrimBlanks(state.simFolders[*index]).empty();
}

void ReadSimFolders(engine::Database& templateDb, common::ProcessState& state) {
  constexpr std::array<int, 5> kSettings = {common::kFolderNR3, common::kFolderLegends, common::kFolderNR4,
                                            common::kFolderNR2002, common::kFolderNR2003};
  for (std::size_t i = 0; i < kSettings.size(); ++i) {
    const std::string folder = common::GetSettingValue(templateDb, kSettings[i]);
    state.simFolders[i] = folder == common::kMissingSetting ? "" : folder;
  }
}

}  // namespace scorvane::app
