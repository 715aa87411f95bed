#include "common/SettingsStore.h"

#include <exception>

#include <fmt/format.h>

#include "common/Formats.h"
#include "common/SqlText.h"

namespace scorvane::common {

bool IsLeagueSetting(int id) {
  const auto within = [id](int first, int last) { return id >= first && id <= last; };
  return within(kPageHeading, kDroppedRaces) || within(kLeagueTypeSetting, kLapReportingMethodSetting) ||
         within(kUseBackgroundImage, kFirstTableColor + 9) ||
         within(kFirstTableColorSwitch, kFirstTableColorSwitch + 4) || within(kFirstLayout, kFirstLayout + 2);
}

std::string GetSettingValue(engine::Database& database, int id, std::string* name) {
  try {
    const auto rows = database.OpenRecordset(fmt::format("SELECT * FROM Settings WHERE SettingsID={}", id),
                                             engine::RecordsetType::ForwardOnly);
    if (rows.AtEnd()) return kMissingSetting;
    std::string value(TrimBlanks(rows["SettingValue"].Text()));
    if (name != nullptr) *name = rows["SettingName"].ToText();
    return value;
  } catch (const std::exception&) {
    return kMissingSetting;
  }
}

void StoreSetting(engine::Database& database, int id, std::string_view value) {
  const std::string quoted = QuoteSQL(value);
  if (database.OpenRecordset(fmt::format("SELECT SettingsID FROM Settings WHERE SettingsID={}", id))
          .AtEnd()) {
    database.Execute(
        fmt::format("INSERT INTO Settings (SettingsID,SettingValue) VALUES ({},{})", id, quoted));
  }
  database.Execute(fmt::format("UPDATE Settings SET SettingValue={} WHERE SettingsID={}", quoted, id));
}

bool SaveSettingValue(engine::Database& database, int id, std::string_view value) {
  try {
    StoreSetting(database, id, value);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace scorvane::common
