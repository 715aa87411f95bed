#include "app/RecentFiles.h"

#include <algorithm>

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"

namespace scorvane::app {

void RecentFiles::Load(engine::Database& templateDb) {
  paths_.fill({});
  std::size_t next = 0;
  for (int slot = 0; slot < kSlots; ++slot) {
    const std::string path = common::GetSettingValue(templateDb, common::kRecentFile1 + slot);
    if (path == common::kMissingSetting || common::TrimBlanks(path).empty() || !common::FileExists(path))
      continue;
    paths_[next++] = path;
  }
}

void RecentFiles::Add(const std::string& path) {
  const auto known = std::find_if(paths_.begin(), paths_.end(), [&](const std::string& other) {
    return common::LowerCase(other) == common::LowerCase(path);
  });
  const auto last = known == paths_.end() ? paths_.end() - 1 : known;
  std::rotate(paths_.begin(), last, last + 1);
  paths_.front() = path;
}

void RecentFiles::Save(engine::Database& templateDb) const {
  for (int slot = 0; slot < kSlots; ++slot)
    common::SaveSettingValue(templateDb, common::kRecentFile1 + slot, (*this)[slot]);
}

bool RecentFiles::IsEmpty() const {
  return std::all_of(paths_.begin(), paths_.end(), [](const std::string& path) { return path.empty(); });
}

}  // namespace scorvane::app
