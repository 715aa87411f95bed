// The database engine: Jet-shaped tables and Jet SQL on an SQLite file.
//
//   DBEngine engine;
//   auto league = engine.DefaultWorkspace().OpenDatabase("league.lgx");
//   league->Execute("UPDATE Driver SET Handicap=0");
//   for (auto rows = league->OpenRecordset("SELECT Name FROM Driver ORDER BY Name"); !rows.AtEnd();
//   rows.MoveNext())
//     fmt::print("{}\n", rows["Name"].ToText());
//
// Every failure is thrown as EngineError. A failing statement changes nothing.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/EngineError.h"
#include "engine/QueryLimits.h"
#include "engine/Recordset.h"
#include "engine/RowView.h"
#include "engine/Schema.h"
#include "engine/Value.h"

namespace scorvane::engine {

class Workspace;

class Database {
 public:
  struct Impl;
  explicit Database(std::unique_ptr<Impl> impl);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();  // closes; an open unit of work is committed

  // The full path of the file.
  const std::string& Name() const;

  // Runs a statement that changes data; yields the number of rows inserted, changed or deleted. A text that
  // comes out of a file, or a part of it, runs under limits: kFileTextLimits.
  std::int64_t Execute(std::string_view sql, const QueryLimits& limits = {});
  // Runs a SELECT.
  Recordset OpenRecordset(std::string_view sql, RecordsetType type = RecordsetType::Snapshot,
                          const QueryLimits& limits = {});
  // Runs a SELECT and shows its rows one after another, keeping none; `columns` is called once before them,
  // whether there are any or not. Within `row` the database may be read, and not changed.
  void EachRow(std::string_view sql, const std::function<void(const RowView&)>& columns,
               const std::function<void(const RowView&)>& row, const QueryLimits& limits = {});
  // True when the text is a SELECT, or a UNION of them; throws EngineError 3075 when it is no statement at
  // all.
  static bool IsSelect(std::string_view sql);

  // The schema. Names are found without regard to case. What changes it throws EngineError 3265 for a table,
  // field, index or relation that is not there.
  const std::vector<TableDef>& TableDefs() const;
  const TableDef* FindTableDef(std::string_view name) const;  // null when there is none
  const std::vector<Relation>& Relations() const;
  void AppendTableDef(TableDef table);
  void DeleteTableDef(std::string_view table);
  void AppendField(std::string_view table, Field field);
  void RenameField(std::string_view table, std::string_view field, std::string_view newName);
  void DeleteField(std::string_view table,
                   std::string_view field);  // 3280 while an index or a relation needs it
  void SetFieldDefault(std::string_view table, std::string_view field, std::string_view literal);
  void AppendIndex(std::string_view table, Index index);
  void DeleteIndex(std::string_view table, std::string_view index);
  void AppendRelation(Relation relation);
  void DeleteRelation(std::string_view relation);

  // Makes the counter of a table go on behind `last`, unless it is further already.
  void SetCounter(std::string_view table, std::int32_t last);
  // What is wrong with the file, a sentence each: its pages, its relations, and where its tables are not what
  // its catalogue says. Empty when it is whole.
  std::vector<std::string> CheckIntegrity();

  // True once after another connection, of this or of another program, has committed something since the file
  // was opened or this was last asked. False when it cannot be told.
  bool ChangedByOthers();

  // Writes a compact copy of what is stored to a path that does not exist yet, and flushes it to the disk.
  // Others may have the file open. No unit of work may be open.
  void CopyTo(const std::string& path);

  // Pages of the file that hold nothing; a compaction gives them back.
  std::int64_t FreePages() const;

 private:
  friend class UnitOfWork;
  friend class Workspace;
  friend class ChangeRecorder;
  friend class ChangeTransaction;
  friend class ChangeLog;
  friend class Recordset;
  std::shared_ptr<Impl> impl_;  // recordsets watch it: they may live longer
};

// Several programs may have a file open; who writes waits for his turn.
struct OpenOptions {
  bool exclusive = false;  // no other process may open the file meanwhile: EngineError 3045
  bool readOnly =
      false;  // nothing is changed but what a stopped program left unfinished, which is taken back
};

class Workspace {
 public:
  Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;
  ~Workspace();

  // Throws EngineError 3204 when the file exists, 3044 when its folder does not, 3051 when it cannot be
  // written.
  std::unique_ptr<Database> CreateDatabase(const std::string& path);
  // Throws EngineError 3024 when there is no such file, 3343 when it is no database of this engine or one of
  // a newer version, 3049 when its tables are not what its catalogue says, 3045 when another process keeps it
  // to itself (after five seconds) or, exclusively, has it open at all, 3051 when it (or, unless readOnly,
  // its folder) does not let itself be written.
  std::unique_ptr<Database> OpenDatabase(const std::string& path, OpenOptions options = {});
  // The open database with this path; null when there is none.
  Database* FindDatabase(const std::string& path) const;

  // The decimal separator in which quoted numbers are read and numbers become texts; "." until it is set.
  char DecimalSeparator() const { return decimal_; }
  void SetDecimalSeparator(char decimal) { decimal_ = decimal; }

 private:
  friend class Database;
  std::vector<Database*> databases_;
  char decimal_ = '.';
};

class DBEngine {
 public:
  Workspace& DefaultWorkspace() { return workspace_; }
  // Writes a compact copy of a closed database to a path that does not exist yet, and flushes it to the disk.
  void CompactDatabase(const std::string& from, const std::string& to);
  // Takes back what a program that was stopped left unfinished in a closed database, as the next one to open
  // it would. The caller is alone with the file.
  void TakeBackUnfinished(const std::string& path);

 private:
  Workspace workspace_;
};

// One transaction around many statements; a power cut leaves all of it or nothing. It ends with Commit or
// with its scope and, when an error ends that, as it was told to. Units nest: the outermost commits.
class UnitOfWork {
 public:
  // What becomes of the statements before the error: in effect, or gone with those of all units around this
  // one.
  enum class OnError { Keep, TakeBack };
  // A writer has the file's writing to itself from the unit's begin; a reader only from its first change on,
  // and is refused (3045) when another program writes just then.
  enum class Begin { Writing, Reading };
  explicit UnitOfWork(Database& database, OnError onError = OnError::TakeBack, Begin begin = Begin::Writing);
  UnitOfWork(const UnitOfWork&) = delete;
  UnitOfWork& operator=(const UnitOfWork&) = delete;
  ~UnitOfWork();

  // Commits and reports what goes wrong, which the destructor cannot. On a failure nothing of the unit stays.
  void Commit();
  // Ends the unit, and those around it, with nothing of them kept.
  void TakeBack();

 private:
  Database& database_;
  const OnError onError_;
  const int exceptions_ = std::uncaught_exceptions();  // on their way when the unit began
  bool open_ = true;
};

}  // namespace scorvane::engine
