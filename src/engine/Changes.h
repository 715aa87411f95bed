// What statements change, recorded row by row so that it can be taken back and done again. The record holds
// what undoing needs and no more: of new rows their keys, of changed and deleted ones what they were. Whether
// the rows are still as the change left them is known by a checksum over them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/Database.h"

namespace scorvane::engine {

// What a record leaves out of account. Names as "Table" or "Table.Field".
struct ChangeRules {
  std::vector<std::string> derivedFields;  // worked out anew by the program: neither compared nor put back
  // What lies there may have changed since: it is put back all the same.
  std::vector<std::string> uncheckedTables;
  std::vector<std::pair<std::string, std::int64_t>> uncheckedRows;  // tables and row keys
};

// How many rows of a table a record touches.
struct TableChange {
  std::string table;
  std::int64_t inserted = 0;
  std::int64_t updated = 0;
  std::int64_t deleted = 0;
};
std::vector<TableChange> CountChanges(std::string_view record);

// Records from its making on, inside a unit of work; one at a time for a database. Changes of the schema are
// not recorded.
class ChangeRecorder {
 public:
  ChangeRecorder(Database& database, ChangeRules rules);
  ChangeRecorder(const ChangeRecorder&) = delete;
  ChangeRecorder& operator=(const ChangeRecorder&) = delete;
  ~ChangeRecorder();

  // Ends the recording. What takes it all back, empty when every row is as it was. Throws EngineError.
  std::string Finish();

  // True while a recorder of this database is at work.
  static bool IsRecording(const Database& database);

  class State;

 private:
  std::unique_ptr<State> state_;
};

// One transaction in which records are applied; it ends with Commit, or takes everything back.
class ChangeTransaction {
 public:
  // No unit of work may be open. Throws EngineError 3045 when another program is writing.
  ChangeTransaction(Database& database, ChangeRules rules);
  ChangeTransaction(const ChangeTransaction&) = delete;
  ChangeTransaction& operator=(const ChangeTransaction&) = delete;
  ~ChangeTransaction();

  // Takes back what the record holds and yields the record that does it again. Throws EngineError 3197 when
  // rows are no longer as the change left them, or others have come to need them.
  std::string Apply(std::string_view record);
  void Commit();

 private:
  void CheckRelations(const std::vector<TableChange>& changed);

  Database& database_;
  const ChangeRules rules_;
  std::unique_ptr<UnitOfWork> unit_;
};

// Rows that the program keeps in the file for itself, behind the tables that TableDefs shows: made when first
// needed.
struct LoggedChange {
  std::int64_t id = 0;
  std::int64_t time = 0;  // seconds since 1970, UTC
  std::string label;
  bool undone = false;
  std::vector<TableChange> counts;
  std::int64_t bytes = 0;
};

class ChangeLog {
 public:
  explicit ChangeLog(Database& database) : database_(database) {}

  // Oldest first. Without any, also when the file has no log yet.
  std::vector<LoggedChange> List() const;
  // Adds a change behind all that are done, in the open unit of work; what had been undone is gone, and so
  // are the oldest beyond `mostBytes` in all or `mostChanges`.
  void Add(std::string_view label, std::int64_t time, std::string_view record, std::int64_t mostBytes,
           int mostChanges);
  std::string Record(std::int64_t id) const;
  void SetUndone(std::int64_t id, bool undone, std::string_view record);
  void Clear();

 private:
  bool Exists() const;
  Database& database_;
};

}  // namespace scorvane::engine
