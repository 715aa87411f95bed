#include "app/Options.h"

#include "common/Formats.h"
#include "common/SettingsStore.h"
#include "reports/PageLook.h"

namespace scorvane::app {
namespace {

bool Flag(engine::Database& templateDb, int id) {
  return engine::LeadingNumber(common::GetSettingValue(templateDb, id)) != 0;
}

const char* FlagText(bool on) {
  return on ? "1" : "0";
}

}  // namespace

Options ReadOptions(engine::Database& templateDb) {
  Options options;
  options.useBackgroundImage = Flag(templateDb, common::kUseBackgroundImage);
  options.backgroundImage = common::GetSettingValue(templateDb, common::kBackgroundImage);
  if (options.backgroundImage == common::kMissingSetting) options.backgroundImage.clear();
  for (std::size_t i = 0; i < options.colors.size(); ++i) {
    const int id = common::kFirstPageColor + static_cast<int>(i);
    options.colors[i] =
        common::ParseColor(common::GetSettingValue(templateDb, id)).value_or(reports::kDefaultPageColors[i]);
  }
  options.openPreviousFile = Flag(templateDb, common::kOpenPreviousFile);
  options.showImportAlerts = Flag(templateDb, common::kShowImportAlerts);
  return options;
}

void SaveOptions(engine::Database& templateDb, const Options& options) {
  common::SaveSettingValue(templateDb, common::kUseBackgroundImage, FlagText(options.useBackgroundImage));
  common::SaveSettingValue(templateDb, common::kBackgroundImage, options.backgroundImage);
  for (std::size_t i = 0; i < options.colors.size(); ++i)
    common::SaveSettingValue(templateDb, common::kFirstPageColor + static_cast<int>(i),
                             common::ColorText(options.colors[i]));
  common::SaveSettingValue(templateDb, common::kOpenPreviousFile, FlagText(options.openPreviousFile));
  common::SaveSettingValue(templateDb, common::kShowImportAlerts, FlagText(options.showImportAlerts));
}

}  // namespace scorvane::app
