// The commands that change a league, each as one change that can be taken back: what the window and the
// command line both do. Behind each stands an operation of a lower floor; here it gets its name in the
// history, its transaction and the day's backup. All throw what their operation throws; the league is then as
// it was.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/ImportFiles.h"
#include "app/LeagueSession.h"
#include "app/NewLeague.h"
#include "championship/Playoff.h"
#include "championship/Teams.h"
#include "drivers/Roster.h"
#include "history/History.h"
#include "reports/PageExport.h"
#include "scoring/Penalties.h"
#include "scoring/PointSystemEdit.h"
#include "scoring/RaceResults.h"
#include "site/SiteSettings.h"

namespace scorvane::app {

// Runs `body` as one change of the open league with this name.
template <typename Body>
auto AsChange(LeagueSession& session, std::string label, Body body) {
  if (!engine::ChangeRecorder::IsRecording(session.League())) session.KeepBackup();
  history::Change change(session.League(), std::move(label));
  if constexpr (std::is_void_v<decltype(body())>) {
    body();
    change.Commit();
  } else {
    auto result = body();
    change.Commit();
    return result;
  }
}

// ---- races

// As one change "Import 3 files"; in an off-line league "Import an event of 3 files".
std::string ImportLabel(const common::ProcessState& state, std::size_t files);
ImportOutcome Import(LeagueSession& session, common::UserInterface& ui, std::size_t files);
// "Import 1 file again", "Import 3 files, 1 of them again".
std::string ReplaceLabel(std::size_t files, std::size_t again);
void Remove(LeagueSession& session, const std::vector<std::int32_t>& raceIds);
// Numbers and scores the races anew, showing progress for several.
void Recalculate(LeagueSession& session, common::UserInterface& ui, const std::vector<std::int32_t>& raceIds);

// ---- results; those of a staged race are no part of the league and no change

std::int32_t AddResult(LeagueSession& session, scoring::RaceKey race, const scoring::ResultEntry& entry,
                       float length);
void UpdateResult(LeagueSession& session, scoring::RaceKey race, std::int32_t resultId,
                  const scoring::ResultEntry& entry, float length);
void RemoveResults(LeagueSession& session, scoring::RaceKey race, const std::vector<std::int32_t>& resultIds);

// ---- penalties; both throw scoring::PenaltyError, too

std::int32_t AddPenalty(LeagueSession& session, const scoring::Penalty& penalty);
void RemovePenalties(LeagueSession& session, const std::vector<std::int32_t>& penaltyIds);

// ---- drivers

// The team or make that a driver is to belong to, by its name: one that is new is added; empty: none.
struct GroupChoice {
  championship::GroupKind kind = championship::GroupKind::Team;
  std::string group;
  std::optional<std::int32_t> fromRace;  // as JoinGroup takes it
};

// The driver's choices are a part of the change; of two who are merged, they are those of the one who stays.
std::int32_t AddDriver(LeagueSession& session, const drivers::Driver& driver,
                       const std::vector<GroupChoice>& choices = {});
void UpdateDriver(LeagueSession& session, const drivers::Driver& driver,
                  const std::vector<GroupChoice>& choices = {});
void MergeDrivers(LeagueSession& session, std::int32_t from, std::int32_t into,
                  const std::vector<GroupChoice>& choices = {});
void SetExclude(LeagueSession& session, const std::vector<std::int32_t>& ids, bool exclude);
void RemoveDrivers(LeagueSession& session, const std::vector<std::int32_t>& ids);
void RemoveExcludedResults(LeagueSession& session, common::UserInterface& ui);

// ---- the league's rules and looks

void SavePointSystem(LeagueSession& session, const scoring::PointSystemEdit& edit);
void StoreRankCriteria(LeagueSession& session, const std::vector<std::int32_t>& ids);
void StoreProperties(LeagueSession& session, const LeagueProperties& properties);
void StoreSetting(LeagueSession& session, int id, const std::string& value);
void SavePageSettings(LeagueSession& session, const reports::PageTexts& texts, const reports::PageLook& look);

// How many races have been scored under the rules as they were before, for what is said after a change of
// them.
std::int32_t CountRaces(engine::Database& league);

// ---- going back and forth; the settings that the whole program shares are read anew

std::optional<std::string> Undo(LeagueSession& session);
std::optional<std::string> Redo(LeagueSession& session);
std::vector<std::string> UndoThrough(LeagueSession& session, std::int64_t changeId);

// ---- the championship: teams, makes and playoffs, whose tables are made with the first of them; these throw
// common::RuleError, too, with a sentence for the user

std::int32_t AddGroup(LeagueSession& session, championship::GroupKind kind, const std::string& name);
void RenameGroup(LeagueSession& session, championship::GroupKind kind, const championship::Group& group,
                 const std::string& name);
void RemoveGroup(LeagueSession& session, const championship::Group& group);
// From a race on, 0 from the start; none: championship::NextChange.
void JoinGroup(LeagueSession& session, championship::GroupKind kind, const championship::Group& group,
               const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace);
void LeaveGroup(LeagueSession& session, championship::GroupKind kind,
                const std::vector<std::int32_t>& driverIds, std::optional<std::int32_t> fromRace);
void SetBestResults(LeagueSession& session, championship::GroupKind kind, int best);
void SetPlayoff(LeagueSession& session, const championship::PlayoffFormat& format);
void ClearPlayoff(LeagueSession& session);

// ---- the site; its table is made with the first of its settings

// Does nothing when they are as they were.
void StoreSiteSettings(LeagueSession& session, const site::SiteSettings& settings);

}  // namespace scorvane::app
