// The inside of an open database: its connection, its schema in memory, its prepared statements.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
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

struct Prepared {
  sql::Plan plan;
  StatementPtr statement;
  int parameters = 0;
};

struct Database::Impl : sql::Catalog {
  Impl(Workspace& owner, std::string fullPath) : workspace(&owner), path(std::move(fullPath)) {
    functions.workspace = workspace;
  }

  // ---- opening

  void Connect(bool create, bool readOnly);
  void CreateSystemTables();
  void LoadSchema();
  void CheckCollation();

  // ---- statements

  // Runs store text that takes no parameters, such as "BEGIN".
  void Run(const std::string& storeSql);
  StatementPtr Prepare(std::string_view storeSql);
  // The prepared statement for a text, from the cache when one of its shape is there. Leaves the text's
  // literals in `lexed`.
  Prepared& Find(std::string_view text, bool dynaset);
  void BindLiterals(Prepared& prepared);
  // One step: true when there is a row. Throws what went wrong, after a reset.
  bool Step(Prepared& prepared);
  [[noreturn]] void ThrowStepError(Prepared& prepared, int code);
  void ClearCache();
  // Drops the prepared statements that delete rows.
  void DropDeletes();
  // A number that another is when another connection has committed meanwhile; -1 when it cannot be read.
  std::int64_t DataVersion();
  // Steps a statement that yields no rows and tells how many rows it changed.
  std::int64_t Change(Prepared& prepared);
  std::int64_t InsertInto(Prepared& prepared);
  void NeedTransaction() const;
  void NeedWritable() const;

  // The name of the table that a failing statement misses a related record in.
  std::string MissingParent(Prepared& prepared);

  // ---- schema

  const TableDef* FindTable(std::string_view name) const override;
  int AddTarget(std::shared_ptr<const StoreTarget> target) override;
  TableDef& NeedTable(std::string_view name);
  // Runs `body` as one step: all of it or, when it throws, nothing.
  void Atomically(const std::function<void()>& body);
  void ChangeSchema(const std::function<void()>& body);
  std::string CreateTableSql(const TableDef& table, const std::string& storeName) const;
  void CreateIndexes(const TableDef& table);
  void SaveTable(const TableDef& table);
  void SaveRelations();
  void Rebuild(const TableDef& table);

  Workspace* workspace;
  std::string path;
  bool readOnly = false;
  std::shared_ptr<platform::FileLock> lock;  // one for all that this process opens of the file
  FunctionState functions;  // outlives the connection, whose functions use it
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
  Cache updates;  // of edited recordsets, by their table and fields
  std::unordered_map<std::string, int> targetNumbers;
  sql::Lexed lexed;
  std::vector<Value> bound;  // what the parameters of the running statement point into

  std::int64_t dataVersion = -1;  // when it was last asked for

  bool recording = false;  // a ChangeRecorder is at work

  int units = 0;          // units of work that are open
  bool unitLost = false;  // the store has rolled the unit back on its own
};

}  // namespace scorvane::engine
