#include "programs/cli/Context.h"

#include <fmt/format.h>

#include "app/SimFolders.h"
#include "common/Paths.h"
#include "platform/Platform.h"

namespace scorvane::cli {

Context::Context(const CommonOptions& options, Access access) : quiet_(options.quiet) {
  engine.DefaultWorkspace().SetDecimalSeparator(options.decimal);
  state.decimalSeparator = options.decimal;
  const std::string path = options.templatePath.empty()
                               ? common::JoinPath(platform::ApplicationFolder(), "Kirrelon.dat")
                               : options.templatePath;
  if (!common::FileExists(path)) {
    throw CommandError(fmt::format(
        "The template database '{}' is not there. It comes with the program; --template names another place.",
        path));
  }
  engine::OpenOptions open;
  open.readOnly = access == Access::ReadTemplate;
  template_ = engine.DefaultWorkspace().OpenDatabase(path, open);
}

Context::Context(const CommonOptions& options, const std::string& leaguePath, app::LeagueSession::Use use)
    : Context(options) {
  OpenLeague(leaguePath, use);
}

Context::Context(const CommonOptions& options, const std::string& leaguePath, const std::string& simFolder)
    : Context(options) {
  app::ReadSimFolders(*template_, state);
  if (!simFolder.empty()) {
    if (common::FindIgnoringCase(simFolder, "tracks").empty())
      throw CommandError(
          fmt::format("'{}' is no simulation's folder: it has no folder \"tracks\".", simFolder));
    state.simFolders.fill(simFolder);
  }
  OpenLeague(leaguePath, app::LeagueSession::Use::Everything);
}

Context::~Context() {
  if (session_) {
    if (const std::string fault = session_->TakeBackupFault(); !fault.empty())
      fmt::print(stderr, "scorvane-cli: {}\n", fault);
  }
}

void Context::Say(const std::string& line) const {
  if (!quiet_) fmt::print("{}\n", line);
}

void Context::OpenLeague(const std::string& path, app::LeagueSession::Use use) {
  session_ = std::make_unique<app::LeagueSession>(engine, *template_, state, ui);
  if (session_->OpenLeagueFile(path, use)) return;
  throw CommandError(
      app::LacksSimFolder(state, state.simType) ? "--sim-folder DIR names the simulation's folder." : "");
}

void NeedConsent(Context& context, bool yes, const std::string& question) {
  if (yes) return;
  const common::Message message{question, common::kApplicationTitle, common::MessageIcon::Question};
  if (context.ui.Ask(message, common::Buttons::YesNo) != common::Answer::Yes)
    throw CommandError("Nothing was changed. --yes answers the question beforehand.");
}

RaceFacts NeedRace(engine::Database& league, std::int32_t raceId) {
  const auto rows =
      league.OpenRecordset(fmt::format("SELECT Name, Length, Laps FROM Race WHERE RaceID={}", raceId));
  if (rows.AtEnd()) throw CommandError(fmt::format("The league has no race {}.", raceId));
  return {rows.At(0).ToText(), rows.At(1), rows.At(2)};
}

}  // namespace scorvane::cli
