#include "app/Commands.h"

#include <fmt/format.h>

#include <memory>

#include "app/RaceList.h"
#include "common/Formats.h"
#include "common/HeldMessages.h"
#include "common/SettingsStore.h"
#include "scoring/OfflineMerge.h"
#include "scoring/RaceScoring.h"

namespace scorvane::app {
namespace {

std::string RaceName(engine::Database& league, std::int32_t raceId) {
  const auto row = league.OpenRecordset(fmt::format("SELECT Name FROM Race WHERE RaceID={}", raceId));
  const std::string name = row.AtEnd() ? std::string() : row.At(0).ToText();
  return name.empty() ? fmt::format("race {}", raceId) : name;
}

std::string DriverName(engine::Database& league, std::int32_t driverId) {
  const auto driver = drivers::ReadDriver(league, driverId);
  return driver ? driver->name : fmt::format("driver {}", driverId);
}

std::string DriverOfResult(engine::Database& league, std::int32_t resultId) {
  const auto row = league.OpenRecordset(
      fmt::format("SELECT Driver.Name FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID WHERE "
                  "Stats.StatsID={}",
                  resultId));
  return row.AtEnd() ? fmt::format("result {}", resultId) : row.At(0).ToText();
}

// "Daytona", or "3 races".
template <typename Name>
std::string OneOrMany(const std::vector<std::int32_t>& ids, const char* many, Name name) {
  return ids.size() == 1 ? name(ids.front()) : fmt::format("{} {}", ids.size(), many);
}

std::string Races(engine::Database& league, const std::vector<std::int32_t>& ids) {
  return OneOrMany(ids, "races", [&](std::int32_t id) { return RaceName(league, id); });
}

std::string Drivers(engine::Database& league, const std::vector<std::int32_t>& ids) {
  return OneOrMany(ids, "drivers", [&](std::int32_t id) { return DriverName(league, id); });
}

// What a result belongs to decides whether its change is one of the league.
template <typename Body>
void OfRace(LeagueSession& session, scoring::RaceKey race, const std::string& what, Body body) {
  if (race.staged) return body();
  return AsChange(session, fmt::format("{}, {}", what, RaceName(session.League(), race.id)), [&] {
    scoring::EditWithPenalties(session.Template(), session.League(), session.State(), race.id, body);
  });
}

// The outcome of races in which drivers have penalties, or give places to who has, after these drivers
// changed.
void ApplyPenalties(LeagueSession& session, const std::vector<std::int32_t>& raceIds) {
  for (const std::int32_t id : raceIds)
    scoring::ApplyPenalties(session.Template(), session.League(), session.State(), id);
}

}  // namespace

std::string ImportLabel(const common::ProcessState& state, std::size_t files) {
  return fmt::format("{}{} file{}", state.leagueType == common::kOffline ? "Import an event of " : "Import ",
                     files, files == 1 ? "" : "s");
}

std::string ReplaceLabel(std::size_t files, std::size_t again) {
  std::string label = fmt::format("Import {} file{}", files, files == 1 ? "" : "s");
  if (again == 0) return label;
  return label + (again == files ? std::string(" again") : fmt::format(", {} of them again", again));
}

ImportOutcome Import(LeagueSession& session, common::UserInterface& ui, std::size_t files) {
  common::HeldMessages held(ui);
  ImportOutcome outcome = AsChange(session, ImportLabel(session.State(), files),
                                   [&] { return ImportStaged(session.League(), session.State(), held); });
  held.Release();
  return outcome;
}

void Remove(LeagueSession& session, const std::vector<std::int32_t>& raceIds) {
  engine::Database& league = session.League();
  AsChange(session, "Remove " + Races(league, raceIds), [&] { RemoveRaces(league, raceIds); });
}

void Recalculate(LeagueSession& session, common::UserInterface& ui,
                 const std::vector<std::int32_t>& raceIds) {
  engine::Database& league = session.League();
  AsChange(session, "Recalculate " + Races(league, raceIds), [&] {
    std::unique_ptr<common::Progress> progress;
    if (raceIds.size() > 1) progress = ui.StartProgress("Recalculating", static_cast<int>(raceIds.size()));
    int done = 0;
    for (const std::int32_t id : raceIds) {
      scoring::RecalculateRace(session.Template(), league, session.State(), id, false);
      if (progress) progress->SetValue(++done);
    }
  });
}

std::int32_t AddResult(LeagueSession& session, scoring::RaceKey race, const scoring::ResultEntry& entry,
                       float length) {
  const std::string name(common::TrimBlanks(entry.fields[scoring::ResultEntry::kName]));
  std::int32_t id = 0;
  OfRace(session, race, fmt::format("Add {}'s result", name),
         [&] { id = scoring::AddResult(session.League(), session.State(), race, entry, length); });
  return id;
}

void UpdateResult(LeagueSession& session, scoring::RaceKey race, std::int32_t resultId,
                  const scoring::ResultEntry& entry, float length) {
  const std::string name = race.staged ? std::string() : DriverOfResult(session.League(), resultId);
  OfRace(session, race, fmt::format("Edit {}'s result", name),
         [&] { scoring::UpdateResult(session.League(), session.State(), race, resultId, entry, length); });
}

void RemoveResults(LeagueSession& session, scoring::RaceKey race,
                   const std::vector<std::int32_t>& resultIds) {
  const std::string what = OneOrMany(resultIds, "results", [&](std::int32_t id) {
    return race.staged ? std::string() : DriverOfResult(session.League(), id) + "'s result";
  });
  OfRace(session, race, "Remove " + what, [&] { scoring::RemoveResults(session.League(), race, resultIds); });
}

std::int32_t AddPenalty(LeagueSession& session, const scoring::Penalty& penalty) {
  engine::Database& league = session.League();
  scoring::CheckPenalty(league, penalty);
  // New tables are no part of a change: they are made before it, and gone again when it fails.
  session.KeepBackup();
  engine::UnitOfWork unit(league);
  scoring::MakePenaltyTables(league);
  const std::int32_t id =
      AsChange(session,
               fmt::format("Penalty for {}, {}", DriverName(league, penalty.driverId),
                           RaceName(league, penalty.raceId)),
               [&] { return scoring::AddPenalty(session.Template(), league, session.State(), penalty); });
  unit.Commit();
  return id;
}

void RemovePenalties(LeagueSession& session, const std::vector<std::int32_t>& penaltyIds) {
  engine::Database& league = session.League();
  const std::string what = OneOrMany(penaltyIds, "penalties", [&](std::int32_t id) {
    const scoring::Penalty penalty = scoring::ReadPenalty(league, id);
    return fmt::format("{}'s penalty, {}", penalty.driver, RaceName(league, penalty.raceId));
  });
  AsChange(session, "Remove " + what, [&] {
    for (const std::int32_t id : penaltyIds)
      scoring::RemovePenalty(session.Template(), league, session.State(), id);
  });
}

namespace {

// The tables that a change needs are made in its transaction, but before it is recorded: a schema is not
// taken back.
template <typename Ensure, typename Body>
auto AsChangeWithTables(LeagueSession& session, const std::string& label, Ensure ensure, Body body) {
  session.KeepBackup();
  engine::UnitOfWork unit(session.League());
  ensure(session.League());
  if constexpr (std::is_void_v<decltype(body())>) {
    AsChange(session, label, body);
    unit.Commit();
  } else {
    auto result = AsChange(session, label, body);
    unit.Commit();
    return result;
  }
}

template <typename Body>
auto AsDriverChange(LeagueSession& session, const std::string& label, const std::vector<GroupChoice>& choices,
                    Body body) {
  if (choices.empty()) return AsChange(session, label, body);
  return AsChangeWithTables(session, label, championship::EnsureTeamTables, body);
}

void TakeChoices(engine::Database& league, std::int32_t driverId, const std::vector<GroupChoice>& choices) {
  for (const GroupChoice& choice : choices) {
    if (common::TrimBlanks(choice.group).empty()) {
      championship::Leave(league, choice.kind, {driverId}, choice.fromRace);
      continue;
    }
    const auto group = championship::FindGroup(league, choice.kind, choice.group);
    championship::Join(league, choice.kind,
                       group ? group->id : championship::AddGroup(league, choice.kind, choice.group),
                       {driverId}, choice.fromRace);
  }
}

}  // namespace

std::int32_t AddDriver(LeagueSession& session, const drivers::Driver& driver,
                       const std::vector<GroupChoice>& choices) {
  return AsDriverChange(session, fmt::format("Add {}", common::TrimBlanks(driver.name)), choices, [&] {
    const std::int32_t id = drivers::AddDriver(session.League(), driver);
    TakeChoices(session.League(), id, choices);
    return id;
  });
}

void UpdateDriver(LeagueSession& session, const drivers::Driver& driver,
                  const std::vector<GroupChoice>& choices) {
  const std::string before = DriverName(session.League(), driver.id);
  const std::string after(common::TrimBlanks(driver.name));
  AsDriverChange(
      session,
      before == after ? fmt::format("Edit {}", before) : fmt::format("Rename {} to {}", before, after),
      choices, [&] {
        drivers::UpdateDriver(session.League(), driver);
        TakeChoices(session.League(), driver.id, choices);
      });
}

void MergeDrivers(LeagueSession& session, std::int32_t from, std::int32_t into,
                  const std::vector<GroupChoice>& choices) {
  engine::Database& league = session.League();
  const std::string label =
      fmt::format("Merge {} into {}", DriverName(league, from), DriverName(league, into));
  AsDriverChange(session, label, choices, [&] {
    const std::vector<std::int32_t> races = scoring::PenalisedRacesOf(league, {from, into});
    championship::MergeMemberships(league, from, into);
    drivers::MergeDrivers(league, from, into);
    TakeChoices(league, into, choices);
    ApplyPenalties(session, races);
  });
}

void SetExclude(LeagueSession& session, const std::vector<std::int32_t>& ids, bool exclude) {
  engine::Database& league = session.League();
  AsChange(session, (exclude ? "Exclude " : "Include ") + Drivers(league, ids),
           [&] { drivers::SetExclude(league, ids, exclude); });
}

void RemoveDrivers(LeagueSession& session, const std::vector<std::int32_t>& ids) {
  engine::Database& league = session.League();
  AsChange(session, "Remove " + Drivers(league, ids), [&] {
    const std::vector<std::int32_t> races = scoring::PenalisedRacesOf(league, ids);
    drivers::RemoveDrivers(league, ids);
    ApplyPenalties(session, races);
  });
}

void RemoveExcludedResults(LeagueSession& session, common::UserInterface& ui) {
  AsChange(session, "Remove excluded results", [&] {
    drivers::RemoveExcludedResults(session.Template(), session.League(), session.State(), ui);
  });
}

void SavePointSystem(LeagueSession& session, const scoring::PointSystemEdit& edit) {
  AsChange(session, "Point system", [&] { scoring::SavePointSystem(session.League(), edit); });
  ReadLeagueSettings(session.League(), session.State());
}

void StoreRankCriteria(LeagueSession& session, const std::vector<std::int32_t>& ids) {
  AsChange(session, "Off-line criteria",
           [&] { scoring::StoreRankCriteria(session.League(), session.State().simType, ids); });
}

void StoreProperties(LeagueSession& session, const LeagueProperties& properties) {
  AsChange(session, "Properties",
           [&] { StoreLeagueProperties(session.League(), session.State(), properties); });
}

void StoreSetting(LeagueSession& session, int id, const std::string& value) {
  std::string name;
  common::GetSettingValue(session.League(), id, &name);
  AsChange(session, name.empty() ? fmt::format("Setting {}", id) : fmt::format("Setting {} ({})", id, name),
           [&] { common::StoreSetting(session.League(), id, value); });
}

void SavePageSettings(LeagueSession& session, const reports::PageTexts& texts,
                      const reports::PageLook& look) {
  AsChange(session, "Page look", [&] { reports::SavePageSettings(session.League(), texts, look); });
}

std::int32_t CountRaces(engine::Database& league) {
  return league.OpenRecordset("SELECT Count(RaceID) AS Races FROM Race").At(0).ToLong();
}

std::optional<std::string> Undo(LeagueSession& session) {
  session.KeepBackup();
  auto label = history::Undo(session.League());
  if (label) ReadLeagueSettings(session.League(), session.State());
  return label;
}

std::optional<std::string> Redo(LeagueSession& session) {
  session.KeepBackup();
  auto label = history::Redo(session.League());
  if (label) ReadLeagueSettings(session.League(), session.State());
  return label;
}

std::vector<std::string> UndoThrough(LeagueSession& session, std::int64_t changeId) {
  session.KeepBackup();
  auto labels = history::UndoThrough(session.League(), changeId);
  if (!labels.empty()) ReadLeagueSettings(session.League(), session.State());
  return labels;
}

std::int32_t AddGroup(LeagueSession& session, championship::GroupKind kind, const std::string& name) {
  return AsChangeWithTables(
      session, fmt::format("Add the {} {}", championship::KindName(kind), common::TrimBlanks(name)),
      championship::EnsureTeamTables, [&] { return championship::AddGroup(session.League(), kind, name); });
}

void RenameGroup(LeagueSession& session, championship::GroupKind kind, const championship::Group& group,
                 const std::string& name) {
  AsChange(session, fmt::format("Rename {} to {}", group.name, common::TrimBlanks(name)),
           [&] { championship::RenameGroup(session.League(), kind, group.id, name); });
}

void RemoveGroup(LeagueSession& session, const championship::Group& group) {
  AsChange(session, "Remove " + group.name, [&] { championship::RemoveGroup(session.League(), group.id); });
}

void JoinGroup(LeagueSession& session, championship::GroupKind kind, const championship::Group& group,
               const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace) {
  engine::Database& league = session.League();
  AsChange(session, fmt::format("{} to {}", Drivers(league, driverIds), group.name),
           [&] { championship::Join(league, kind, group.id, driverIds, fromRace); });
}

void LeaveGroup(LeagueSession& session, championship::GroupKind kind,
                const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace) {
  engine::Database& league = session.League();
  AsChange(session, fmt::format("{} out of the {}", Drivers(league, driverIds), championship::KindName(kind)),
           [&] { championship::Leave(league, kind, driverIds, fromRace); });
}

void SetBestResults(LeagueSession& session, championship::GroupKind kind, int best) {
  AsChangeWithTables(session, fmt::format("Results that count for a {}", championship::KindName(kind)),
                     championship::EnsureTeamTables,
                     [&] { championship::SetBestResults(session.League(), kind, best); });
}

void SetPlayoff(LeagueSession& session, const championship::PlayoffFormat& format) {
  AsChangeWithTables(session, "Playoff " + format.name, championship::EnsurePlayoffTable,
                     [&] { championship::StorePlayoff(session.League(), format); });
}

void ClearPlayoff(LeagueSession& session) {
  AsChange(session, "No playoff", [&] { championship::ClearPlayoff(session.League()); });
}

void StoreSiteSettings(LeagueSession& session, const site::SiteSettings& settings) {
  if (site::ReadSiteSettings(session.League()) == settings) return;
  AsChangeWithTables(session, "Settings of the site", site::EnsureSiteTable,
                     [&] { site::StoreSiteSettings(session.League(), settings); });
}

}  // namespace scorvane::app
