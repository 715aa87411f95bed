#include "app/Options.h"

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "import/ExportedStandings.h"
#include "platform/Platform.h"
#include "reports/PageLook.h"

namespace scorvane::app {
namespace {

bool Flag(engine::Database& templateDb, int id) {
  return engine::LeadingNumber(common::GetSettingValue(templateDb, id)) != 0;
}

const char* FlagText(bool on) {
  return on ? "1" : "0";
}

std::string CompleteFolder(const std::string& typed) {
  std::string folder(common::TrimBlanks(typed));
  if (folder.empty() || common::SystemPath(folder).is_absolute()) return folder;
  return common::JoinPath(platform::ApplicationFolder(), folder);
}

}  // namespace

Options ReadOptions(engine::Database& templateDb, const common::ProcessState& state,
                    const std::string& watchedLeague) {
  Options options;
  options.simFolders = state.simFolders;
  options.useBackgroundImage = Flag(templateDb, common::kUseBackgroundImage);
  options.backgroundImage = common::GetSettingValue(templateDb, common::kBackgroundImage);
  if (options.backgroundImage == common::kMissingSetting) options.backgroundImage.clear();
  for (std::size_t i = 0; i < options.colors.size(); ++i) {
    const int id = common::kFirstPageColor + static_cast<int>(i);
    options.colors[i] =
        common::ParseColor(common::GetSettingValue(templateDb, id)).value_or(reports::kDefaultPageColors[i]);
  }
  options.openPreviousFile = Flag(templateDb, common::kOpenPreviousFile);
  options.showImportAlerts = import::ShowsImportAlerts(templateDb);
  options.backups = ReadBackupOptions(templateDb);
  options.watchedLeague = watchedLeague;
  if (!watchedLeague.empty()) options.watch = ReadWatchChoice(templateDb, watchedLeague);
  return options;
}

void SaveOptions(engine::Database& templateDb, common::ProcessState& state, const Options& options) {
  const auto store = [&templateDb](int id, const std::string& value) {
    common::StoreSetting(templateDb, id, value);
  };
  engine::UnitOfWork unit(templateDb, engine::UnitOfWork::OnError::TakeBack);
  for (std::size_t i = 0; i < options.simFolders.size(); ++i)
    store(Simulations()[i].setting, options.simFolders[i]);
  store(common::kUseBackgroundImage, FlagText(options.useBackgroundImage));
  store(common::kBackgroundImage, options.backgroundImage);
  for (std::size_t i = 0; i < options.colors.size(); ++i)
    store(common::kFirstPageColor + static_cast<int>(i), common::ColorText(options.colors[i]));
  store(common::kOpenPreviousFile, FlagText(options.openPreviousFile));
  store(common::kShowImportAlerts, FlagText(options.showImportAlerts));
  SaveBackupOptions(templateDb, {CompleteFolder(options.backups.folder), options.backups.days});
  if (!options.watchedLeague.empty()) StoreWatchChoice(templateDb, options.watchedLeague, options.watch);
  unit.Commit();
  state.simFolders = options.simFolders;
}

}  // namespace scorvane::app
