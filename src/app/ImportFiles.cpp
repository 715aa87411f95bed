#include "app/ImportFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

#include "common/Formats.h"
#include "common/HeldMessages.h"
#include "common/Paths.h"
#include "common/SqlText.h"
#include "import/Tracks.h"
#include "scoring/OfflineMerge.h"
#include "scoring/OnlineImport.h"
#include "scoring/Penalties.h"
#include "scoring/PointSystem.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostMessages = 20;
constexpr const char* kMerged = "Merged";  // the file name of a merged event

std::string ResultFileExtension(std::int16_t simType) {
  return simType <= common::kNascarRacing2 ? "stn" : "html";
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

void ShowHeld(common::UserInterface& ui, const std::vector<common::Message>& held) {
  for (std::size_t i = 0; i < std::min(held.size(), kMostMessages); ++i) ui.ShowMessage(held[i]);
  if (held.size() > kMostMessages) {
    ui.ShowMessage({fmt::format("There are {} more messages about these files.", held.size() - kMostMessages),
                    "Warning", common::MessageIcon::Information});
  }
}

// ---- what is there already

// What a race brings of a driver, and no edit of points or places changes.
using ResultRow = std::tuple<std::string, std::string, std::string, std::string>;

std::vector<ResultRow> ReadRows(engine::Database& league, const std::string& query) {
  std::vector<ResultRow> rows;
  auto read = league.OpenRecordset(query);
  for (; !read.AtEnd(); read.MoveNext()) {
    rows.emplace_back(common::LowerCase(read.At(0).ToText()), read.At(1).ToText(), read.At(2).ToText(),
                      read.At(3).ToText());
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::vector<ResultRow> StoredRows(engine::Database& league, std::int32_t raceId) {
  return ReadRows(
      league, fmt::format("SELECT Driver.Name, Stats.LapsRun, Stats.LapsLed, Stats.Qualifying FROM Driver "
                          "INNER JOIN Stats ON Driver.DriverID=Stats.DriverID WHERE Stats.RaceID={}",
                          raceId));
}

std::vector<ResultRow> StagedRows(engine::Database& league, std::int32_t stagedRaceId) {
  return ReadRows(
      league, fmt::format("SELECT DriverName, LapsRun, LapsLed, Qualifying FROM STNStats WHERE STNRaceID={}",
                          stagedRaceId));
}

struct StoredRace {
  std::int32_t id;
  std::string name;
  std::string fileName;
};

// The races of the league by their file and by their track and laps.
class StoredRaces {
 public:
  explicit StoredRaces(engine::Database& league) : league_(league) {
    for (auto rows = league.OpenRecordset("SELECT RaceID, Name, FileName, Laps FROM Race"); !rows.AtEnd();
         rows.MoveNext()) {
      StoredRace race{rows.At(0).ToLong(), rows.At(1).ToText(), rows.At(2).ToText()};
      if (race.fileName != kMerged && race.fileName != common::kStandardInput)
        byFile_.emplace(common::LowerCase(race.fileName), race);
      const std::string key = Key(race.name, rows.At(3).ToText());
      byTrack_.emplace(key, std::move(race));
    }
  }

  bool IsEmpty() const { return byTrack_.empty(); }

  // The league's race and a sentence when it has the race that was staged from a file.
  struct Found {
    std::string reason;
    std::int32_t raceId = 0;
  };
  Found Find(const engine::Recordset& staged, bool offline) const {
    const std::string fileName = staged["FileName"].ToText();
    if (const auto found = byFile_.find(common::LowerCase(fileName)); !offline && found != byFile_.end()) {
      return {fmt::format("the league has a race from a file of this name: race {}, {}", found->second.id,
                          found->second.name),
              found->second.id};
    }
    const std::vector<ResultRow> rows = StagedRows(league_, staged["STNRaceID"].ToLong());
    const auto [first, last] = byTrack_.equal_range(Key(staged["Name"].ToText(), staged["Laps"].ToText()));
    for (auto race = first; race != last; ++race) {
      const std::vector<ResultRow> stored = StoredRows(league_, race->second.id);
      // An event has one row of each member's file, that of the member.
      const bool same = offline ? HasRowOf(rows, stored) : !rows.empty() && rows == stored;
      if (same) {
        return {fmt::format("the league has these results already: race {}, {}", race->second.id,
                            race->second.name),
                race->second.id};
      }
    }
    return {};
  }

 private:
  static std::string Key(const std::string& name, const std::string& laps) {
    return common::LowerCase(name) + "|" + laps;
  }
  static bool HasRowOf(const std::vector<ResultRow>& file, const std::vector<ResultRow>& event) {
    return std::any_of(event.begin(), event.end(), [&](const ResultRow& row) {
      return std::binary_search(file.begin(), file.end(), row);
    });
  }

  engine::Database& league_;
  std::multimap<std::string, StoredRace> byFile_;
  std::multimap<std::string, StoredRace> byTrack_;
};

std::string Bytes(const std::string& path) {
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Which of the files has the same content as one before it; only files of one size are looked into.
class ChosenFiles {
 public:
  bool IsRepeated(const std::string& path) {
    std::error_code error;
    const auto size = fs::file_size(common::SystemPath(path), error);
    if (error) return false;
    auto& same = bySize_[size];
    const auto content = std::any_of(same.begin(), same.end(), [&](const std::string& other) {
      return other == path || Bytes(other) == Bytes(path);
    });
    same.push_back(path);
    return content;
  }

 private:
  std::map<std::uintmax_t, std::vector<std::string>> bySize_;
};

// ---- what is said afterwards

std::int32_t Count(engine::Database& league, const std::string& query) {
  return league.OpenRecordset(query).At(0).ToLong();
}

void NoteMarkup(engine::Database& league, std::int32_t lastDriver, std::vector<std::string>& notes) {
  auto rows = league.OpenRecordset(
      fmt::format("SELECT Name FROM Driver WHERE DriverID>{} AND InStr(Name, '<')>0", lastDriver));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    notes.push_back(fmt::format(
        "The name \"{}\" holds a \"<\": classic pages write names as they are, so a browser will take it for "
        "markup.",
        rows.At(0).ToText()));
  }
}

void NoteFewerMembers(engine::Database& league, std::int32_t before, std::int32_t drivers,
                      std::vector<std::string>& notes) {
  auto last = league.OpenRecordset(
      fmt::format("SELECT TOP 1 Race.Name, Count(Stats.StatsID) FROM Race INNER JOIN Stats ON "
                  "Race.RaceID=Stats.RaceID WHERE Race.RaceID<={} GROUP BY Race.RaceID, Race.Name ORDER BY "
                  "Race.RaceID DESC",
                  before));
  if (last.AtEnd() || last.At(1).ToLong() <= drivers) return;
  notes.push_back(
      fmt::format("{} member{} took part; in the last event ({}) there were {}. Should a file be missing: "
                  "remove this event, and import all its files together with the late one.",
                  drivers, drivers == 1 ? "" : "s", last.At(0).ToText(), last.At(1).ToLong()));
}

}  // namespace

bool NaturallyBefore(const std::string& a, const std::string& b) {
  const std::string left = common::LowerCase(a);
  const std::string right = common::LowerCase(b);
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < left.size() && j < right.size()) {
    if (IsDigit(left[i]) && IsDigit(right[j])) {
      const auto number = [](const std::string& text, std::size_t& at) {
        while (at < text.size() && text[at] == '0') ++at;
        const std::size_t from = at;
        while (at < text.size() && IsDigit(text[at])) ++at;
        return text.substr(from, at - from);
      };
      const std::string first = number(left, i);
      const std::string second = number(right, j);
      if (first.size() != second.size()) return first.size() < second.size();
      if (first != second) return first < second;
    } else {
      if (left[i] != right[j]) return left[i] < right[j];
      ++i;
      ++j;
    }
  }
  if (i == left.size() && j == right.size()) return a < b;
  return i == left.size();
}

std::string ResultFileFilter(std::int16_t simType) {
  return simType <= common::kNascarRacing2 ? "Standings File (*.stn)|*.stn"
                                           : "Exported Standings (*.html)|*.html";
}

std::string ResultFolder(const common::ProcessState& state) {
  // NASCAR Racing 2 has no folder of its own here.
  const std::int16_t simType =
      state.simType == common::kNascarRacing2 ? std::int16_t{common::kNascarRacing3} : state.simType;
  const auto index = common::SimFolderIndex(simType);
  if (!index) return {};
  const std::string& home = state.simFolders[*index];
  if (common::TrimBlanks(home).empty()) return {};
  const char* name = simType >= common::kNascarRacing2002 ? "exports_imports" : "exports";
  const std::string found = common::FindIgnoringCase(home, name);
  return common::JoinPath(found.empty() ? common::JoinPath(home, name) : found, "");
}

std::vector<std::string> ExpandFolders(const std::vector<std::string>& paths, std::int16_t simType) {
  const std::string extension = ResultFileExtension(simType);
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code error;
    if (!fs::is_directory(common::SystemPath(path), error)) {
      files.push_back(path);
      continue;
    }
    std::vector<std::string> inside;
    for (fs::directory_iterator entry(common::SystemPath(path), error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code unknown;
      std::string name = common::PathText(entry->path());
      if (common::LowerCase(common::GetExtension(name)) == extension && entry->is_regular_file(unknown))
        inside.push_back(std::move(name));
    }
    std::sort(inside.begin(), inside.end(), NaturallyBefore);
    std::move(inside.begin(), inside.end(), std::back_inserter(files));
  }
  return files;
}

void PrepareImport(engine::Database& league, engine::Database& templateDb, common::ProcessState& state) {
  league.Execute("DELETE * FROM STNRace");
  scoring::LoadPointSystem(templateDb, league, state);
  if (state.simType >= common::kNascarRacing4) import::BuildTrackCatalogue(state);
}

StagedFiles StageFiles(engine::Database& league, common::ProcessState& state, common::UserInterface& ui,
                       const std::vector<std::string>& paths, const import::ResultFileOptions& options) {
  StagedFiles staged;
  common::HeldMessages held(ui);
  {
    std::unique_ptr<common::Progress> progress;
    if (paths.size() > 1) {
      progress = ui.StartProgress(
          state.simType <= common::kNascarRacing2 ? "Reading STN Files" : "Reading Standings Files",
          static_cast<int>(paths.size()));
    }
    // One unit for all, so that the disk is waited for once.
    engine::UnitOfWork work(league);
    int number = 0;
    for (const std::string& path : paths) {
      if (progress) {
        progress->SetInfo("Reading: \"" + common::GetFileTitle(path) + "\"");
        progress->SetValue(++number);
      }
      const std::int32_t raceId = import::ReadResultFile(league, state, held, path, options);
      if (raceId >= 1) {
        staged.files.push_back({path, raceId});
      } else {
        ++staged.failed;
      }
    }
    work.Commit();
  }
  ShowHeld(ui, held.Held());
  for (const common::Message& message : held.Held()) staged.texts.push_back(message.text);
  return staged;
}

common::Message FailedFilesWarning(std::size_t failed) {
  return {fmt::format("There were {} file(s) that failed to import.  To see error messages for individual\r\n"
                      "files, enable \"Show Alerts when importing result files\"on the \"Options\" dialog.",
                      failed),
          "Warning", common::MessageIcon::Information};
}

std::vector<Duplicate> FindDuplicates(engine::Database& league, const common::ProcessState& state,
                                      const std::vector<StagedFile>& staged) {
  std::vector<Duplicate> found;
  const StoredRaces stored(league);
  ChosenFiles chosen;
  for (const StagedFile& file : staged) {
    if (chosen.IsRepeated(file.path)) {
      found.push_back({file, "it is among the chosen files twice", 0});
      continue;
    }
    if (stored.IsEmpty()) continue;
    const auto race = league.OpenRecordset(
        fmt::format("SELECT STNRaceID, Name, FileName, Laps FROM STNRace WHERE STNRaceID={}", file.raceId));
    if (race.AtEnd()) continue;
    StoredRaces::Found same = stored.Find(race, state.leagueType == common::kOffline);
    if (same.raceId != 0) found.push_back({file, std::move(same.reason), same.raceId});
  }
  return found;
}

common::Message DuplicatesQuestion(const std::vector<Duplicate>& duplicates) {
  constexpr std::size_t kMostNamed = 10;
  std::string text;
  for (std::size_t i = 0; i < std::min(duplicates.size(), kMostNamed); ++i) {
    text += fmt::format("{}: {}.\r\n", common::GetFileTitle(duplicates[i].file.path), duplicates[i].reason);
  }
  if (duplicates.size() > kMostNamed)
    text += fmt::format("... and {} more.\r\n", duplicates.size() - kMostNamed);
  return {text + "\r\nDo you want to import all the same?", "Import", common::MessageIcon::Question};
}

void RemoveStagedRaces(engine::Database& league, const std::vector<std::int32_t>& ids) {
  engine::UnitOfWork work(league);
  for (const std::int32_t id : ids)
    league.Execute(fmt::format("DELETE * FROM STNRace WHERE STNRaceID={}", id));
  work.Commit();
}

ImportOutcome ImportStaged(engine::Database& league, common::ProcessState& state, common::UserInterface& ui) {
  constexpr const char* kRaces = "SELECT Count(RaceID) AS Races FROM Race";
  ImportOutcome outcome;
  common::HeldMessages held(ui);
  {
    engine::UnitOfWork work(league);
    const std::int32_t before = Count(league, kRaces);
    const std::int32_t lastRace = common::GetMaxID(league, "Race", "RaceID");
    const std::int32_t lastDriver = common::GetMaxID(league, "Driver", "DriverID");
    const bool offline = state.leagueType == common::kOffline;
    if (offline) {
      outcome.done = scoring::MergeOfflineEvent(league, state, held);
    } else {
      scoring::ImportStagedRaces(league, state, held);
      outcome.done = true;
    }
    outcome.leagueRaces = Count(league, kRaces);
    outcome.races = outcome.leagueRaces - before;
    if (outcome.done) {
      outcome.drivers = Count(league, fmt::format("SELECT Count(*) AS N FROM Stats WHERE RaceID={}",
                                                  common::GetMaxID(league, "Race", "RaceID")));
      NoteMarkup(league, lastDriver, outcome.notes);
      if (offline) NoteFewerMembers(league, lastRace, outcome.drivers, outcome.notes);
    }
    work.Commit();
  }
  ShowHeld(ui, held.Held());
  return outcome;
}

namespace {

// Gives the league's race what was imported as a new one, which goes.
void Replace(engine::Database& league, std::int32_t raceId, std::int32_t imported) {
  const auto from = league.OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", imported));
  auto to = league.OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", raceId),
                                 engine::RecordsetType::Dynaset);
  to.Edit();
  for (std::size_t i = 0; i < from.FieldCount(); ++i)
    if (from.FieldName(i) != "RaceID") to.Set(from.FieldName(i), from.At(i));
  to.Update();
  league.Execute(fmt::format("DELETE * FROM Stats WHERE RaceID={}", raceId));
  league.Execute(fmt::format("UPDATE Stats SET RaceID={} WHERE RaceID={}", raceId, imported));
  league.Execute(fmt::format("DELETE * FROM Race WHERE RaceID={}", imported));
}

std::vector<std::int32_t> Keys(engine::Database& league, const std::string& query) {
  std::vector<std::int32_t> keys;
  for (auto rows = league.OpenRecordset(query); !rows.AtEnd(); rows.MoveNext())
    keys.push_back(rows.At(0).ToLong());
  return keys;
}

}  // namespace

ImportOutcome ImportReplacing(engine::Database& templateDb, engine::Database& league,
                              common::ProcessState& state, common::UserInterface& ui,
                              const std::vector<Replacement>& replacements) {
  engine::UnitOfWork work(league);
  const std::int32_t lastRace = common::GetMaxID(league, "Race", "RaceID");
  const std::vector<std::int32_t> staged = Keys(league, "SELECT STNRaceID FROM STNRace ORDER BY STNRaceID");
  ImportOutcome outcome = ImportStaged(league, state, ui);
  // Each staged race has become one, in their order; those of an event the one.
  const std::vector<std::int32_t> imported =
      Keys(league, fmt::format("SELECT RaceID FROM Race WHERE RaceID>{} ORDER BY RaceID", lastRace));
  const bool event = state.leagueType == common::kOffline;
  for (const Replacement& replacement : replacements) {
    const auto at = static_cast<std::size_t>(
        event ? 0 : std::find(staged.begin(), staged.end(), replacement.stagedRaceId) - staged.begin());
    if (at >= imported.size()) continue;
    scoring::RescoreWithPenalties(templateDb, league, state, replacement.raceId,
                                  [&] { Replace(league, replacement.raceId, imported[at]); });
    --outcome.races;
    --outcome.leagueRaces;
  }
  work.Commit();
  return outcome;
}

}  // namespace scorvane::app
