// What a command works with: the engine, the template and, for most, a league that is opened and closed
// again.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>

#include "app/LeagueSession.h"
#include "common/ProcessState.h"
#include "drivers/Roster.h"
#include "engine/Database.h"
#include "programs/cli/CliUserInterface.h"
#include "programs/cli/Commands.h"

namespace scorvane::cli {

class Context {
 public:
  // Most commands only read the template, so that several of them and the window can share it.
  enum class Access { ReadTemplate, WriteTemplate };
  // Opens the template. Throws EngineError or CommandError.
  explicit Context(const CommonOptions& options, Access access = Access::ReadTemplate);
  // Opens the template and a league, to change what is in it or, where nothing can be written, to look at it.
  Context(const CommonOptions& options, const std::string& leaguePath,
          app::LeagueSession::Use use = app::LeagueSession::Use::WithoutImport);
  // The same to import into it; `simFolder` stands in for the folders that the template knows unless it is
  // empty.
  Context(const CommonOptions& options, const std::string& leaguePath, const std::string& simFolder);

  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  engine::DBEngine engine;
  CliUserInterface ui;
  common::ProcessState state;

  // Says what the command did, in a line, unless it is to be quiet.
  void Say(const std::string& line) const;

  engine::Database& Template() { return *template_; }
  app::LeagueSession& Session() { return *session_; }
  engine::Database& League() { return session_->League(); }

 private:
  bool quiet_;
  void OpenLeague(const std::string& path, app::LeagueSession::Use use);

  std::unique_ptr<engine::Database> template_;
  std::unique_ptr<app::LeagueSession> session_;
};

// "1 race", "3 races".
template <typename Number>
std::string Plural(Number number, const char* noun) {
  return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

// Asks before something goes. Without a terminal there is nobody to ask: then only --yes will do.
void NeedConsent(Context& context, bool yes, const std::string& question);

// The name and length of a race; throws CommandError when the league has no such race.
struct RaceFacts {
  std::string name;
  engine::Value length;
  engine::Value laps;
};
RaceFacts NeedRace(engine::Database& league, std::int32_t raceId);

// The league's penalties by race, as `penalty list` shows them.
OutputTable PenaltyTable(engine::Database& league);

}  // namespace scorvane::cli
