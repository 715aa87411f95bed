#include "import/ResultFile.h"

#include <exception>

#include "import/ExportedStandings.h"
#include "import/StandingsFile.h"

namespace scorvane::import {

std::int32_t ReadResultFile(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                            const std::string& path, const ResultFileOptions& options) {
  if (state.simType <= common::kNascarRacing2)
    return ReadStandingsFile(league, state, ui, path, options.qualifying);
  try {
    return ReadExportedStandingsFile(league, state, ui, path, options.showAlerts);
  } catch (const std::exception& error) {
    ui.ShowMessage({error.what(), "Error Reading '" + path + "'", common::MessageIcon::Exclamation});
    return 0;
  }
}

}  // namespace scorvane::import
