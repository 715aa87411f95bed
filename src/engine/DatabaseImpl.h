// The inside of an open database: its connection, its schema in memory, its prepared statements.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/Database.h"
#include "engine/Functions.h"
#include "engine/Store.h"
#include "engine/sql/Lexer.h"
#include "engine/sql/Translator.h"
#include "platform/Platform.h"

namespace scorvane::engine {

// What marks a file as ours: SQLite's application id and the version of our tables in it.
inline constexpr int kApplicationId = 0x53435256;
inline constexpr int kFormatVersion = 1;
// From here on each new row is looked at before it is kept: a counter ends at 2,147,483,647.
inline constexpr std::int64_t kCounterWatch = INT32_MAX - 1'000'000;

class LimitGuard;

struct Prepared {
  sql::Plan plan;
  StatementPtr statement;
  int parameters = 0;
  std::size_t lastValues = 0;  // that the last run of a query yielded, for the room that the next one takes
};

// Resets a statement when the work with it ends.
class ResetGuard {
 public:
  explicit ResetGuard(sqlite3_stmt* statement) : statement_(statement) {}
  ResetGuard(const ResetGuard&) = delete;
  ResetGuard& operator=(const ResetGuard&) = delete;
  ~ResetGuard();

 private:
  sqlite3_stmt* statement_;
};

// A column of the current row. Throws EngineError 6 for an infinite number.
Value ReadColumn(sqlite3_stmt* statement, int column, sql::SqlType type);
std::string TextColumn(sqlite3_stmt* statement, int column);

// The field that the store keeps as its row key; null when the table has none.
const Field* RowKey(const TableDef& table);
// The name of an index in the store's own catalogue.
std::string IndexStoreName(const TableDef& table, const Index& index);
// How the store keeps a field of this type.
const char* StoreType(FieldType type);
// True for a name that a table or a field may have.
bool IsValidName(std::string_view name);

struct Database::Impl : sql::Catalog {
  Impl(Workspace& owner, std::string fullPath) : workspace(&owner), path(std::move(fullPath)) {
    functions.workspace = workspace;
  }

  // ---- opening

  void Connect(bool create, bool readOnly);
  void Configure();
  void CreateSystemTables();
  // Throws EngineError 3049, with the reason, when the tables are not what the catalogue says.
  void LoadSchema();
  void CheckCollation();

  // ---- statements

  // Runs store text that takes no parameters, such as "BEGIN".
  // `table` is named when a rule of its rows stands against it.
  void Run(const std::string& storeSql, std::string_view table = {});
  StatementPtr Prepare(std::string_view storeSql);
  // The prepared statement for a text, from the cache when one of its shape is there. Leaves the text's
  // literals in `lexed`.
  Prepared& Find(std::string_view text, bool dynaset);
  void BindLiterals(Prepared& prepared);
  // One step: true when there is a row. Throws what went wrong, after a reset.
  bool Step(Prepared& prepared);
  [[noreturn]] void ThrowStepError(Prepared& prepared);
  void ClearCache();
  // Drops the prepared statements that delete rows.
  void DropDeletes();
  // A number that another is when another connection has committed meanwhile; -1 when it cannot be read.
  // The whole number that such a statement yields; -1 where it fails.
  std::int64_t Pragma(const char* sql);
  std::int64_t DataVersion();
  std::int64_t SchemaVersion();
  // Steps a statement that yields no rows and tells how many rows it changed.
  std::int64_t Change(Prepared& prepared);
  std::int64_t InsertInto(Prepared& prepared, LimitGuard& guard);
  // The statement that reads one row of a dynaset again.
  Prepared& FindRowStatement(const std::string& rowSql, const std::vector<sql::PlanColumn>& columns);
  // False when the file is surely what it was in the unit of work `unit` after `changes` changes.
  bool HasChangedSince(std::int64_t unit, std::int64_t changes) const;
  std::int64_t Changes() const;
  void NeedTransaction() const;
  void NeedWritable() const;

  // Throws why a relation refuses a statement: 3201 or 3200, with the table on the other side.
  [[noreturn]] void ThrowRelationError(Prepared& prepared);

  // ---- schema

  const TableDef* FindTable(std::string_view name) const override;
  int AddTarget(std::shared_ptr<const StoreTarget> target) override;
  bool HasOutdatedIndexes() const override { return indexesOutdated; }
  // Reads the schema anew when the file may have taken changes of it back.
  void RefreshSchema();
  // To be called when another program may have changed the schema.
  void NoteOthersSchema();
  // To be called when a transaction has been rolled back, by us or by the store.
  void NoteRollback();
  // Where the file differs from its catalogue, a sentence each.
  std::vector<std::string> SchemaFaults();
  TableDef& NeedTable(std::string_view name);
  // Runs `body` as one step: all of it or, when it throws, nothing.
  void Atomically(const std::function<void()>& body);
  void TakeStepBack();
  void ChangeSchema(const std::function<void()>& body);
  std::string CreateTableSql(const TableDef& table, const std::string& storeName) const;
  void CreateIndexes(const TableDef& table);
  void SaveTable(const TableDef& table);
  void SaveRelations();
  std::string ReadCounter(const TableDef& table);
  void WriteCounter(const TableDef& table, const std::string& counter);
  void Rebuild(const TableDef& table);

  Workspace* workspace;
  std::string path;
  bool readOnly = false;
  bool indexesOutdated = false;              // of a file that is open for reading only: see CheckCollation
  bool countersNearEnd = false;              // some counter may be about to leave its range
  std::shared_ptr<platform::FileLock> lock;  // one for all that this process opens of the file
  FunctionState functions;                   // outlives the connection, whose functions use it
  ConnectionPtr connection;

  std::vector<TableDef> tables;
  std::vector<Relation> relations;

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Cache = std::unordered_map<std::string, std::unique_ptr<Prepared>, TextHash, std::equal_to<>>;
  Cache byShape;  // null: statements of this shape are kept by their text
  Cache byText;
  Cache updates;   // of edited recordsets, by their table and fields
  Cache rowReads;  // of dynasets, by their text
  std::unordered_map<std::string, int> targetNumbers;
  sql::Lexed lexed;
  sql::ShapeLexer shapes;
  std::vector<Value> bound;  // what the parameters of the running statement point into

  std::int64_t dataVersion = -1;    // when it was last asked for
  std::int64_t schemaVersion = -1;  // of the schema that `tables` and `relations` are

  bool recording = false;  // a ChangeRecorder is at work

  const LimitGuard* limits = nullptr;  // of the running statement; null for none

  int units = 0;                      // units of work that are open
  std::int64_t unitCount = 0;         // that were begun, not counting those inside others
  bool unitLost = false;              // the store has rolled the unit back on its own
  std::optional<EngineError> lostTo;  // why, where that is known
  bool schemaChanged = false;         // inside the open unit
  bool schemaStale =
      false;  // the file has another schema: changes of it were taken back, or others made some
};

}  // namespace scorvane::engine
