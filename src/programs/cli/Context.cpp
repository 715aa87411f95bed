#include "programs/cli/Context.h"

#include <fmt/format.h>

#include "common/Paths.h"
#include "platform/Platform.h"

namespace scorvane::cli {

Context::Context(const CommonOptions& options) {
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
  // The command line only reads it, so several commands and the window can share it.
  engine::OpenOptions readOnly;
  readOnly.readOnly = true;
  template_ = engine.DefaultWorkspace().OpenDatabase(path, readOnly);
}

Context::Context(const CommonOptions& options, const std::string& leaguePath) : Context(options) {
  session_ = std::make_unique<app::LeagueSession>(engine, *template_, state, ui);
  if (!session_->OpenLeagueFile(leaguePath)) throw CommandError("");
}

RaceFacts NeedRace(engine::Database& league, std::int32_t raceId) {
  const auto rows =
      league.OpenRecordset(fmt::format("SELECT Name, Length, Laps FROM Race WHERE RaceID={}", raceId));
  if (rows.AtEnd()) throw CommandError(fmt::format("The league has no race {}.", raceId));
  return {rows.At(0).ToText(), rows.At(1), rows.At(2)};
}

}  // namespace scorvane::cli
