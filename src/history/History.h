// What the commands of the user changed in a league, kept in the league so that it can be taken back and done
// again: across closing and opening, by whichever program. One command is one change, whatever it writes.
// Marks that are derived, and what opening a file brings up to date, are no changes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/Changes.h"
#include "engine/Database.h"

namespace scorvane::history {

// As many changes are kept as take this much room in the file, and no more than this.
inline constexpr std::int64_t kMostBytes = 16 << 20;
inline constexpr int kMostChanges = 1000;

// Stands around a command: what is written while it lives is one change, in one transaction. Without Commit
// all of it is taken back. Within another change of the same league it is a part of that one.
class Change {
 public:
  // Throws EngineError: 3045 when another program writes for longer than one waits for it.
  Change(engine::Database& league, std::string label);
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;
  ~Change();

  // What the change is called where that is known only afterwards.
  void SetLabel(std::string label) { label_ = std::move(label); }
  // Keeps the change, with its label and the time. True when anything is other than before. Throws
  // EngineError; then nothing was changed.
  bool Commit();

 private:
  engine::Database& league_;
  std::string label_;
  std::optional<engine::UnitOfWork> unit_;
  std::optional<engine::ChangeRecorder> recorder_;  // none within another change
};

// Newest first.
std::vector<engine::LoggedChange> List(engine::Database& league);

// What Undo would take back and Redo do again; none when there is nothing.
std::optional<engine::LoggedChange> NextUndo(engine::Database& league);
std::optional<engine::LoggedChange> NextRedo(engine::Database& league);

// Takes the last change back, or does the one again that was taken back last, and yields its label; nothing
// when there is none. Every row is then the very same as before, keys included. Throws EngineError, 3197 when
// something else has changed the same rows since; then nothing is changed.
std::optional<std::string> Undo(engine::Database& league);
std::optional<std::string> Redo(engine::Database& league);
// Takes back all changes from the newest to the one with this id, in one transaction, and yields their
// labels, the newest first. Throws as Undo does.
std::vector<std::string> UndoThrough(engine::Database& league, std::int64_t id);

// Forgets every change. What the file held of them is overwritten.
void Clear(engine::Database& league);

// What a change touched, in words: "33 races, 1419 results, 69 drivers"; "settings" for what has no number.
std::string Summary(const engine::LoggedChange& change);
// "2026-11-23 20:15", local time.
std::string TimeText(const engine::LoggedChange& change);

}  // namespace scorvane::history
