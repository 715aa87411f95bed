#include "app/LeagueSession.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "app/Backup.h"
#include "app/SimFolders.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "common/SqlText.h"
#include "db/LeftCopy.h"
#include "db/MDBBuild.h"
#include "db/OldFile.h"
#include "db/Upgrade.h"
#include "engine/Names.h"
#include "import/Tracks.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

constexpr int kFirstPageDefault = 100;
constexpr int kLastPageDefault = 109;

// A setting as a whole number within the bounds.
int SettingNumber(engine::Database& league, int id, int lowest, int highest) {
  const double number = std::trunc(engine::LeadingNumber(common::GetSettingValue(league, id)));
  return number >= lowest && number <= highest ? static_cast<int>(number) : lowest;
}

// A rule's condition without what makes no difference to it.
std::string Condition(const engine::Value& query) {
  std::string text = common::LowerCase(query.ToText());
  std::erase(text, ' ');
  return text;
}

bool SettingFlag(engine::Database& league, int id) {
  const std::string value = common::GetSettingValue(league, id);
  return engine::SameName(value, "True") || engine::LeadingNumber(value) != 0;
}

}  // namespace

void ReadLeagueSettings(engine::Database& league, common::ProcessState& state) {
  state.simType = static_cast<std::int16_t>(
      SettingNumber(league, common::kSimTitle, common::kNascarRacing3, common::kNascarRacing2003));
  state.leagueType = SettingNumber(league, common::kLeagueTypeSetting, common::kOnline, common::kOffline);
  state.useCustomPointSystem = SettingFlag(league, common::kUseCustomPointSystem);
  state.useCustomBonusSystem = SettingFlag(league, common::kUseCustomBonusSystem);
  state.droppedRaces = static_cast<std::int16_t>(SettingNumber(league, common::kDroppedRaces, 0, 32767));
  state.lapReportingMethod = static_cast<std::int16_t>(
      SettingNumber(league, common::kLapReportingMethodSetting, common::kLapSpeed, common::kLapTime));
}

bool LeagueSession::OpenLeagueFile(const std::string& path, Use use) {
  // A folder is there, but no league: opening says so.
  std::error_code error;
  if (!common::FileExists(path) && !std::filesystem::is_directory(common::SystemPath(path), error)) {
    ui_.ShowMessage(
        {"\"" + path + "\" does not exist!", "Open File Error", common::MessageIcon::Exclamation});
    return false;
  }
  const bool old = db::IsOldFormat(path);
  if (old && !AgreesToConvert(path)) return false;
  CloseLeagueFile();
  if (old) {
    const std::string kept = db::ConvertInPlace(engine_, path, db::OldFileReader());
    ui_.ShowMessage({"The league has been converted. The original is kept as\r\n\"" + kept + "\".",
                     "Old League File", common::MessageIcon::Information});
  }
  league_ = OpenShared(path, use);
  use_ = use;
  if (use != Use::Looking) db::ClearLeftCopyBeside(engine_, league_->Name());
  try {
    if (!BringUpToDate(use)) {
      CloseLeagueFile();
      return false;
    }
  } catch (...) {
    league_.reset();
    throw;
  }
  if (use == Use::Everything && state_.simType >= common::kNascarRacing4) import::BuildTrackCatalogue(state_);
  if (old) TellReplacedRules();
  return true;
}

// A league that is only looked at may lie where nothing can be written.
std::unique_ptr<engine::Database> LeagueSession::OpenShared(const std::string& path, Use use) {
  try {
    return engine_.DefaultWorkspace().OpenDatabase(path);
  } catch (const engine::EngineError& error) {
    if (use != Use::Looking || error.Number() != engine::kCannotOpenFile) throw;
  }
  engine::OpenOptions options;
  options.readOnly = true;
  return engine_.DefaultWorkspace().OpenDatabase(path, options);
}

// False when the simulation's folder stays unknown. A file that lacks nothing is not written to, and another
// program may be writing to it meanwhile.
bool LeagueSession::BringUpToDate(Use use) {
  try {
    AddWhatIsMissing(engine::UnitOfWork::Begin::Reading);
  } catch (const engine::EngineError& error) {
    if (error.Number() != engine::kFileInUse) throw;
    AddWhatIsMissing(engine::UnitOfWork::Begin::Writing);
  }
  return use != Use::Everything || !LacksSimFolder(state_, state_.simType) || KnowsSimFolder();
}

void LeagueSession::AddWhatIsMissing(engine::UnitOfWork::Begin begin) {
  engine::UnitOfWork work(*league_, engine::UnitOfWork::OnError::TakeBack, begin);
  db::UpgradeLeagueFile(*league_, templateDb_);
  db::EnsureDefaultSettings(*league_);
  ReadLeagueSettings(*league_, state_);
  RefreshBonusQueries();
  CopyPageDefaults();
  if (common::GetSettingValue(*league_, common::kDroppedRaces) == common::kMissingSetting) {
    league_->Execute(
        "INSERT INTO Settings (SettingsID, SettingName, SettingValue) VALUES (6,'Dropped Races','0')");
  }
  work.Commit();
}

bool LeagueSession::AgreesToConvert(const std::string& path) {
  const common::Message question{
      "\"" + path +
          "\" is a league file of the old database format.\r\nScorvane converts it, and "
          "keeps the original beside it.\r\nDo you want to convert it now?",
      "Old League File", common::MessageIcon::Question};
  return ui_.Ask(question, common::Buttons::YesNo) == common::Answer::Yes;
}

// Says that the folder is missing and has it asked for.
bool LeagueSession::KnowsSimFolder() {
  ui_.ShowMessage({fmt::format("Scorvane needs to know the path of\r\n{} before this file can be\r\nopened.",
                               common::SimTypeName(state_.simType)),
                   "Missing Path", common::MessageIcon::Exclamation});
  if (askForSimFolder_) askForSimFolder_();
  return !LacksSimFolder(state_, state_.simType);
}

// The league's rules carry the template's query texts. What is the same already is not written again, so that
// a file that is only looked at stays as it is.
void LeagueSession::RefreshBonusQueries() {
  struct Rule {
    engine::Value query;
    std::string name;
  };
  std::map<std::int32_t, Rule> present;
  for (auto rows = league_->OpenRecordset("SELECT BonusID, Query, Name FROM Bonus"); !rows.AtEnd();
       rows.MoveNext())
    present[rows.At(0).ToLong()] = {rows.At(1), rows.At(2).ToText()};
  replacedRules_ = {};
  for (auto rows = templateDb_.OpenRecordset("SELECT BonusID, Query, Name FROM Bonus"); !rows.AtEnd();
       rows.MoveNext()) {
    const std::int32_t id = rows.At(0).ToLong();
    const auto found = present.find(id);
    if (found == present.end() || found->second.query == rows.At(1)) continue;
    if (Condition(found->second.query) != Condition(rows.At(1))) {
      replacedRules_ += fmt::format("\r\n\"{}\" is now paid for what \"{}\" asks for.", found->second.name,
                                    rows.At(2).ToText());
    }
    league_->Execute(fmt::format("UPDATE Bonus SET Query={} WHERE BonusID={}",
                                 common::QuoteSQL(rows.At(1), state_.decimalSeparator), id));
  }
}

void LeagueSession::TellReplacedRules() {
  if (replacedRules_.empty()) return;
  ui_.ShowMessage({"The league's bonus rules now go by Scorvane's own rules of the same number." +
                       replacedRules_ +
                       "\r\nPlease look at the point system before races are imported or recalculated.",
                   "Old League File", common::MessageIcon::Exclamation});
}

void LeagueSession::CopyPageDefaults() {
  for (int id = kFirstPageDefault; id <= kLastPageDefault; ++id) {
    if (common::GetSettingValue(*league_, id) != common::kMissingSetting) continue;
    std::string name;
    std::string value = common::GetSettingValue(templateDb_, id, &name);
    if (value == common::kMissingSetting) continue;
    // The template keeps the switch as a number; a league's pages go by the word.
    if (id == common::kUseBackgroundImage) value = SettingFlag(templateDb_, id) ? "True" : "False";
    league_->Execute(
        fmt::format("INSERT INTO Settings (SettingsID, SettingName, SettingValue) VALUES ({},{},{})", id,
                    common::QuoteSQL(name), common::QuoteSQL(value)));
  }
}

void LeagueSession::KeepBackup() {
  const std::string day = fmt::format("{:%Y-%m-%d} {}", fmt::localtime(std::time(nullptr)), league_->Name());
  if (std::exchange(backedUp_, day) == day) return;
  backupFault_ = BackUpOnceADay(engine_, *league_, ReadBackupOptions(templateDb_));
}

void LeagueSession::CloseLeagueFile() {
  if (!league_) return;
  const std::string path = league_->Name();
  const bool worthCompacting = use_ != Use::Looking && league_->FreePages() > 0;
  league_.reset();
  if (!worthCompacting) return;
  // Who has opened the league meanwhile, or compacts another one in this folder, goes first.
  const auto folderLock = platform::FileLock::TryLock(common::GetFolder(path));
  if (!folderLock) return;
  std::string copy;  // once it is ours
  try {
    platform::RemoveTemporariesIn(common::GetFolder(path));
    std::string name = common::GetFolder(path) + db::kCompactName;
    // What an earlier compaction left keeps its place only while it may be all that is left of a league.
    if (name == path || !db::RemoveLeftCopy(engine_, name)) name = platform::TemporaryBeside(path);
    const auto lock = platform::FileLock::TryLock(path);
    if (!lock) return;
    copy = std::move(name);
    engine_.CompactDatabase(path, copy);
    platform::ReplaceFile(copy, path);
  } catch (const std::exception&) {
    if (!copy.empty()) db::RemoveWithJournal(copy);
  }
}

}  // namespace scorvane::app
