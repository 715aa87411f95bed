#include "app/ImportFiles.h"

#include <fmt/format.h>

#include "app/SimFolders.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "scoring/OfflineMerge.h"
#include "scoring/OnlineImport.h"
#include "scoring/PointSystem.h"

namespace scorvane::app {

std::string ResultFileFilter(std::int16_t simType) {
  return simType <= common::kNascarRacing2 ? "Standings File (*.stn)|*.stn"
                                           : "Exported Standings (*.html)|*.html";
}

std::string ResultFolder(const common::ProcessState& state) {
  // NASCAR Racing 2 has no folder of its own here.
  const std::int16_t simType =
      state.simType == common::kNascarRacing2 ? std::int16_t{common::kNascarRacing3} : state.simType;
  const auto index = SimFolderIndex(simType);
  if (!index) return {};
  const std::string& home = state.simFolders[*index];
  if (common::TrimBlanks(home).empty()) return {};
  const char* name = simType >= common::kNascarRacing2002 ? "exports_imports" : "exports";
  const std::string found = common::FindIgnoringCase(home, name);
  return common::JoinPath(found.empty() ? common::JoinPath(home, name) : found, "");
}

void PrepareImport(engine::Database& league, engine::Database& templateDb, common::ProcessState& state) {
  league.Execute("DELETE * FROM STNRace");
  scoring::LoadPointSystem(templateDb, league, state);
}

StagedFiles StageFiles(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                       const std::vector<std::string>& paths, const import::ResultFileOptions& options) {
  std::unique_ptr<common::Progress> progress;
  if (paths.size() > 1) {
    progress = ui.StartProgress(
        state.simType <= common::kNascarRacing2 ? "Reading STN Files" : "Reading Standings Files",
        static_cast<int>(paths.size()));
  }
  StagedFiles staged;
  // One unit for all, so that the disk is waited for once.
  engine::UnitOfWork work(league);
  int number = 0;
  for (const std::string& path : paths) {
    if (progress) {
      progress->SetInfo("Reading: \"" + common::GetFileTitle(path) + "\"");
      progress->SetValue(++number);
    }
    const std::int32_t raceId = import::ReadResultFile(league, state, ui, path, options);
    if (raceId >= 1) {
      staged.files.push_back({path, raceId});
    } else {
      ++staged.failed;
    }
  }
  work.Commit();
  return staged;
}

common::Message FailedFilesWarning(std::size_t failed) {
  return {fmt::format("There were {} file(s) that failed to import.  To see error messages for individual\r\n"
                      "files, enable \"Show Alerts when importing result files\"on the \"Options\" dialog.",
                      failed),
          "Warning", common::MessageIcon::Information};
}

void RemoveStagedRaces(engine::Database& league, const std::vector<std::int32_t>& ids) {
  engine::UnitOfWork work(league);
  for (const std::int32_t id : ids)
    league.Execute(fmt::format("DELETE * FROM STNRace WHERE STNRaceID={}", id));
  work.Commit();
}

bool ImportStaged(engine::Database& league, common::ProcessState& state, common::UserInterface& ui) {
  engine::UnitOfWork work(league, engine::UnitOfWork::OnError::TakeBack);
  bool imported = true;
  if (state.leagueType == common::kOffline) {
    imported = scoring::MergeOfflineEvent(league, state, ui);
  } else {
    scoring::ImportStagedRaces(league, state, ui);
  }
  work.Commit();
  return imported;
}

}  // namespace scorvane::app
