#include "app/NewLeague.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "app/SimFolders.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "db/LeftCopy.h"
#include "db/MDBBuild.h"
#include "import/Tracks.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

// Another program, or another window of this one, has the old file.
class FileOpenElsewhere : public engine::EngineError {
 public:
  explicit FileOpenElsewhere(const std::string& path)
      : EngineError(engine::kFileInUse, path, platform::LockHolder(path)) {}
};

}  // namespace

void ShowCreationError(common::UserInterface& ui, const std::string& reason) {
  ui.ShowMessage({"Error creating new LGX file: " + reason, "Error", common::MessageIcon::Exclamation});
}

std::string WithLeagueExtension(const std::string& path) {
  std::string extension = common::GetExtension(common::GetFileTitle(path));
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
  return extension == kLeagueExtension ? path : path + "." + kLeagueExtension;
}

std::string CompleteLeaguePath(const std::string& typed, std::string_view folder) {
  return WithLeagueExtension(common::GetFolder(typed).empty() ? common::JoinPath(folder, typed) : typed);
}

void CreateLeague(engine::DBEngine& engine, engine::Database& templateDb, const std::string& path,
                  const LeagueProperties& properties) {
  const auto make = [&](const std::string& target) {
    db::CreateLeagueFile(engine, target, properties.simType, properties.leagueType, templateDb,
                         properties.droppedRaces, properties.lapReportingMethod);
  };
  // A league gets its name when it is complete, so that no command ever meets half of one.
  std::unique_ptr<platform::FileLock> lock;
  if (common::FileExists(path)) {
    if (engine.DefaultWorkspace().FindDatabase(path) != nullptr) throw FileOpenElsewhere(path);
    if (!platform::IsWritable(path)) throw engine::EngineError(engine::kCannotOpenFile, path);
    lock = platform::FileLock::TryLock(path);
    if (!lock) throw FileOpenElsewhere(path);
  }
  std::error_code error;
  const auto folder = common::SystemPath(common::GetFolder(path));
  if (!folder.empty() && !std::filesystem::is_directory(folder, error))
    throw engine::EngineError(engine::kInvalidPath, path);
  platform::RemoveTemporariesIn(common::GetFolder(path));
  const std::string fresh = platform::TemporaryBeside(path);
  try {
    make(fresh);
    db::ReplaceDatabase(engine, fresh, path);
  } catch (...) {
    db::RemoveWithJournal(fresh);
    throw;
  }
}

Creation CreateLeagueAsking(engine::DBEngine& engine, LeagueSession& session, common::UserInterface& ui,
                            const std::string& path, const LeagueProperties& properties) {
  if (common::FileExists(path)) {
    const common::Message question{"\"" + path + "\" already exists!  Do you want to replace it?",
                                   "File Exists", common::MessageIcon::None};
    if (ui.Ask(question, common::Buttons::YesNo) != common::Answer::Yes) return Creation::Declined;
  }
  try {
    if (session.IsOpen() && engine.DefaultWorkspace().FindDatabase(path) == &session.League())
      session.CloseLeagueFile();
    CreateLeague(engine, session.Template(), path, properties);
    return Creation::Done;
  } catch (const FileOpenElsewhere& error) {
    ShowCreationError(
        ui, session.IsOpen() ? error.Description() : "Existing file is already open by another program!");
  } catch (const std::exception& error) {
    ShowCreationError(ui, error.what());
  }
  return Creation::Failed;
}

bool CanSwitchSimulation(common::ProcessState& state, common::UserInterface& ui, std::int16_t simType) {
  if (simType < common::kNascarRacing4 || simType == state.simType) return true;
  if (LacksSimFolder(state, simType)) {
    const std::string_view name = Simulations().at(common::SimFolderIndex(simType).value_or(0)).name;
    ui.ShowMessage({fmt::format("Scorvane needs to know the path of\r\n{} before this file can be\r\n"
                                "switched to that simulation.",
                                name),
                    "Missing Path", common::MessageIcon::Exclamation});
    return false;
  }
  if (const auto index = common::SimFolderIndex(simType); index && simType >= common::kNascarRacing4)
    import::BuildTrackCatalogue(state, state.simFolders[*index]);
  return true;
}

void StoreLeagueProperties(engine::Database& league, common::ProcessState& state,
                           const LeagueProperties& properties) {
  const std::pair<int, std::int16_t> settings[] = {
      {common::kDroppedRaces, properties.droppedRaces},
      {common::kLapReportingMethodSetting, properties.lapReportingMethod},
      {common::kSimTitle, properties.simType}};
  engine::UnitOfWork work(league, engine::UnitOfWork::OnError::TakeBack);
  for (const auto& [id, value] : settings) common::StoreSetting(league, id, std::to_string(value));
  work.Commit();
  state.droppedRaces = properties.droppedRaces;
  state.lapReportingMethod = properties.lapReportingMethod;
  state.simType = properties.simType;
}

}  // namespace scorvane::app
