// How a league comes to be, and how its properties change: what the properties dialog and the command line
// do.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/LeagueSession.h"
#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::app {

inline constexpr const char* kLeagueExtension = "lgx";

struct LeagueProperties {
  std::int16_t simType = common::kNascarRacing3;
  std::int16_t leagueType = common::kOnline;
  std::int16_t droppedRaces = 0;
  std::int16_t lapReportingMethod = common::kLapSpeed;
};

// The path with the extension of league files, in whatever letter case, at its end.
std::string WithLeagueExtension(const std::string& path);

// What was typed as a league's name, as a path: a name without a folder lies in `folder`.
std::string CompleteLeaguePath(const std::string& typed, std::string_view folder);

// Makes the league file `path`, in the place of one that is there. An old league goes only when the new one
// is complete; after an error nothing is there that was not there before. Throws EngineError, 3045 when the
// old one is open, or std::system_error.
void CreateLeague(engine::DBEngine& engine, engine::Database& templateDb, const std::string& path,
                  const LeagueProperties& properties);

// The same for the file at `path` with a user at hand, who is asked before a file is replaced and told what
// goes wrong. The session's own file is closed before it is replaced. True when the league was made.
enum class Creation { Done, Declined, Failed };
Creation CreateLeagueAsking(engine::DBEngine& engine, LeagueSession& session, common::UserInterface& ui,
                            const std::string& path, const LeagueProperties& properties);

// Says why a league could not be made.
void ShowCreationError(common::UserInterface& ui, const std::string& reason);

// Whether the open league can be switched to this simulation: not, after a message, when it is a newer one
// whose folder is not known. Builds the catalogue of the simulation's tracks when it can and there is none.
bool CanSwitchSimulation(common::ProcessState& state, common::UserInterface& ui, std::int16_t simType);

// Stores the properties, the league's type aside, in the open league and the state. Throws EngineError when
// they cannot be stored; the state is then as it was.
void StoreLeagueProperties(engine::Database& league, common::ProcessState& state,
                           const LeagueProperties& properties);

}  // namespace scorvane::app
