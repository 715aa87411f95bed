// The settings of a league file or of the template: texts under fixed numbers in the table Settings.
#pragma once

#include <string>
#include <string_view>

#include "engine/Database.h"

namespace scorvane::common {

// What reading yields for a setting that is not there: the text of the one character NUL.
inline const std::string kMissingSetting(1, '\0');

// Settings of the template.
enum TemplateSetting : int {
  kFolderNR3 = 0,
  kFolderLegends = 1,
  kRecentFile1 = 7,  // to 10
  kOpenPreviousFile = 11,
  kFolderNR4 = 12,
  kFolderNR2002 = 13,
  kFolderNR2003 = 14,
  kShowImportAlerts = 18,
  kBackupFolder = 20,
  kBackupDays = 21,
  kWindowPlaces = 22,
  kWatchedFolders = 23,
};

// Settings of a league file.
enum LeagueSetting : int {
  kPageHeading = 2,
  kReportName = 3,
  kCaption = 4,
  kSimTitle = 5,
  kDroppedRaces = 6,
  kLeagueTypeSetting = 12,
  kUseCustomPointSystem = 13,
  kUseCustomBonusSystem = 14,
  kPageFont = 15,
  kPageFontSize = 16,
  kLapReportingMethodSetting = 17,
};

// Page defaults, in both databases.
enum PageSetting : int {
  kUseBackgroundImage = 100,
  kBackgroundImage = 101,
  kFirstPageColor = 102,   // to 109: background, text, link, visited, active, heading, report name, caption
  kFirstTableColor = 110,  // to 119
  kFirstTableColorSwitch = 200,  // to 204
  kFirstLayout = 300,            // to 302
};

// Whether the program knows a league setting of this number.
bool IsLeagueSetting(int id);

// The setting's value without blanks around it; the empty text for Null; kMissingSetting without such a row
// and on any error. `name`, when given, takes the setting's name and is left alone on an error.
std::string GetSettingValue(engine::Database& database, int id, std::string* name = nullptr);

// Stores a value, adding the row when it is not there. Throws EngineError.
void StoreSetting(engine::Database& database, int id, std::string_view value);

// The same where nobody is told of a failure: false on any error.
bool SaveSettingValue(engine::Database& database, int id, std::string_view value);

}  // namespace scorvane::common
