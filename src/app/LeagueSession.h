// The one league file that is open at a time: how it is opened, what opening brings up to date, and how it is
// closed.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::app {

class LeagueSession {
 public:
  // All four must outlive the session.
  LeagueSession(engine::DBEngine& engine, engine::Database& templateDb, common::ProcessState& state,
                common::UserInterface& ui)
      : engine_(engine), templateDb_(templateDb), state_(state), ui_(ui) {}
  LeagueSession(const LeagueSession&) = delete;
  LeagueSession& operator=(const LeagueSession&) = delete;
  ~LeagueSession() { CloseLeagueFile(); }

  // How the user is asked for a simulation's folder: it shows the state's folders and changes them. Without
  // it nobody is asked.
  void SetSimFolderPrompt(std::function<void()> prompt) { askForSimFolder_ = std::move(prompt); }

  // What the league is opened for: to import into it takes a newer simulation's folder with its tracks, to
  // change what is in it does not, and to look at it does not even take a file that may be written to.
  enum class Use { Everything, WithoutImport, Looking };

  // A file of the old database format is converted in its place when the user agrees; the original stays
  // beside it. Closes the open file, opens this one, gives it what it lacks and reads its settings into the
  // process state; for a league of a newer simulation it asks for the simulation's folder when that is not
  // known, and builds the track catalogue. False, after a message, when there is no such file: the open one
  // then stays open; and when the folder stays unknown: no file is open then. Throws EngineError when the
  // file cannot be used as a league; no file is open then.
  bool OpenLeagueFile(const std::string& path, Use use = Use::Everything);

  // Closes the open file, and makes it compact when it holds pages that nothing is in; one that was only
  // looked at stays as it is. Does nothing without a file. What goes wrong while it is made compact costs
  // nothing but the compaction: the file stays as it was.
  void CloseLeagueFile();

  // After a conversion: says which bonus rules have become others, because this opening gave them the
  // condition that the template has under their number. Says nothing when none has.
  void TellReplacedRules();

  // To be called before a command changes the league: keeps a backup when it is the first one of the day.
  // What went wrong with it does not stop the command; it is told here.
  void KeepBackup();
  // What the last KeepBackup could not do; asked for once.
  std::string TakeBackupFault() { return std::exchange(backupFault_, {}); }

  engine::DBEngine& Engine() { return engine_; }
  bool IsOpen() const { return league_ != nullptr; }
  // The open league file; there must be one.
  engine::Database& League() { return *league_; }
  engine::Database& Template() { return templateDb_; }
  common::ProcessState& State() { return state_; }

 private:
  bool AgreesToConvert(const std::string& path);
  std::unique_ptr<engine::Database> OpenShared(const std::string& path, Use use);
  bool BringUpToDate(Use use);
  void AddWhatIsMissing(engine::UnitOfWork::Begin begin);
  bool KnowsSimFolder();
  void RefreshBonusQueries();
  void CopyPageDefaults();

  engine::DBEngine& engine_;
  engine::Database& templateDb_;
  common::ProcessState& state_;
  common::UserInterface& ui_;
  std::function<void()> askForSimFolder_;
  std::unique_ptr<engine::Database> league_;
  Use use_ = Use::Everything;  // what it was opened for
  std::string backedUp_;       // the league and the day of the last look for a backup
  std::string backupFault_;
  std::string replacedRules_;  // a line for each that the opening of the league replaced
};

// Reads the league's settings that the whole program shares into the state; a setting that is missing or no
// number counts as 0.
void ReadLeagueSettings(engine::Database& league, common::ProcessState& state);

}  // namespace scorvane::app
