#include "history/History.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "common/SettingsStore.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::history {
namespace {

const engine::ChangeRules& Rules() {
  static const engine::ChangeRules rules = {
      // Every opening gives a rule the template's condition, and every look at the standings marks what is
      // dropped.
      {"Stats.Dropped", "Bonus.Query"},
      // What is staged there is gone with the next import.
      {"STNRace", "STNStats"},
      // The caption of pages follows the standings whenever they are looked at.
      {{"Settings", common::kCaption}}};
  return rules;
}

std::optional<engine::LoggedChange> FirstOf(const std::vector<engine::LoggedChange>& changes, bool undone) {
  const auto found = std::find_if(changes.begin(), changes.end(), [&](const engine::LoggedChange& change) {
    return change.undone == undone;
  });
  if (found == changes.end()) return std::nullopt;
  return *found;
}

// Takes back what is done, or does again what is undone.
std::optional<std::string> Turn(engine::Database& league, bool undone) {
  engine::ChangeTransaction transaction(league, Rules());
  const auto change = undone ? NextRedo(league) : NextUndo(league);
  if (!change) return std::nullopt;
  engine::ChangeLog log(league);
  log.SetUndone(change->id, !change->undone, transaction.Apply(log.Record(change->id)));
  transaction.Commit();
  return change->label;
}

}  // namespace

Change::Change(engine::Database& league, std::string label) : league_(league), label_(std::move(label)) {
  const bool outermost = !engine::ChangeRecorder::IsRecording(league);
  unit_.emplace(league);
  if (outermost) recorder_.emplace(league, Rules());
}

Change::~Change() {
  recorder_.reset();
  if (unit_) unit_->TakeBack();
}

bool Change::Commit() {
  bool changed = true;
  if (recorder_) {
    const std::string record = recorder_->Finish();
    changed = !record.empty();
    if (changed) {
      const auto now = std::chrono::system_clock::now().time_since_epoch();
      engine::ChangeLog(league_).Add(label_, std::chrono::duration_cast<std::chrono::seconds>(now).count(),
                                     record, kMostBytes, kMostChanges);
    }
  }
  if (unit_) unit_->Commit();
  unit_.reset();
  return changed;
}

std::vector<engine::LoggedChange> List(engine::Database& league) {
  std::vector<engine::LoggedChange> changes = engine::ChangeLog(league).List();
  std::reverse(changes.begin(), changes.end());
  return changes;
}

std::optional<engine::LoggedChange> NextUndo(engine::Database& league) {
  return FirstOf(List(league), false);
}

std::optional<engine::LoggedChange> NextRedo(engine::Database& league) {
  return FirstOf(engine::ChangeLog(league).List(), true);
}

std::optional<std::string> Undo(engine::Database& league) {
  return Turn(league, false);
}

std::optional<std::string> Redo(engine::Database& league) {
  return Turn(league, true);
}

std::vector<std::string> UndoThrough(engine::Database& league, std::int64_t id) {
  std::vector<std::string> labels;
  engine::ChangeTransaction transaction(league, Rules());
  engine::ChangeLog log(league);
  for (const engine::LoggedChange& change : List(league)) {
    if (change.undone || change.id < id) continue;
    log.SetUndone(change.id, true, transaction.Apply(log.Record(change.id)));
    labels.push_back(change.label);
  }
  transaction.Commit();
  return labels;
}

void Clear(engine::Database& league) {
  engine::ChangeLog(league).Clear();
}

std::string Summary(const engine::LoggedChange& change) {
  struct Word {
    const char* table;
    const char* noun;
  };
  // In the order in which a user would ask.
  static constexpr Word kCounted[] = {{"Race", "race"}, {"Stats", "result"}, {"Driver", "driver"}};
  // Worked out with the results, or nobody's concern.
  static constexpr const char* kUncounted[] = {"STNRace", "STNStats", "PenaltyBase"};
  static constexpr Word kNamed[] = {
      {"PointSystem", "point system"}, {"Bonus", "bonus rules"}, {"RankCriteria", "ranking criteria"},
      {"Penalty", "penalties"},        {"Team", "teams"},        {"TeamMember", "team members"},
      {"TeamScoring", "team scoring"}, {"Playoff", "playoff"},   {"Settings", "settings"},
      {"SiteSetting", "site settings"}};
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  const auto rows = [&](const char* table) {
    std::int64_t count = 0;
    for (const engine::TableChange& counts : change.counts)
      if (engine::SameName(counts.table, table)) count += counts.inserted + counts.updated + counts.deleted;
    return count;
  };
  for (const Word& word : kCounted) {
    if (const auto count = rows(word.table); count > 0)
      add(fmt::format("{} {}{}", count, word.noun, count == 1 ? "" : "s"));
  }
  for (const Word& word : kNamed)
    if (rows(word.table) > 0) add(word.noun);
  for (const engine::TableChange& counts : change.counts) {
    const auto known = [&](const Word& word) { return engine::SameName(word.table, counts.table); };
    if (std::none_of(std::begin(kCounted), std::end(kCounted), known) &&
        std::none_of(std::begin(kNamed), std::end(kNamed), known) &&
        std::none_of(std::begin(kUncounted), std::end(kUncounted),
                     [&](const char* table) { return engine::SameName(counts.table, table); }))
      add(counts.table);
  }
  return text;
}

std::string TimeText(const engine::LoggedChange& change) {
  return fmt::format("{:%Y-%m-%d %H:%M}", fmt::localtime(static_cast<std::time_t>(change.time)));
}

}  // namespace scorvane::history
