// The schema on its way into the file: the store's own tables and indexes, and beside them the tables of our
// own (sv_*) for what the store cannot hold of a field, an index or a relation.
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>

#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/SchemaTables.h"

namespace scorvane::engine {
namespace {

// Relations are not looked at for as long as it lives.
class ForeignKeysOff {
 public:
  explicit ForeignKeysOff(sqlite3* connection) : connection_(connection) { Set(0); }
  ForeignKeysOff(const ForeignKeysOff&) = delete;
  ForeignKeysOff& operator=(const ForeignKeysOff&) = delete;
  ~ForeignKeysOff() { Set(1); }

 private:
  void Set(int on) { sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_FKEY, on, nullptr); }
  sqlite3* connection_;
};

}  // namespace

const char* StoreType(FieldType type) {
  switch (type) {
    case FieldType::Boolean:
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
      return "INTEGER";
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::Date:
      return "REAL";
    case FieldType::Text:
    case FieldType::Memo:
      return "TEXT COLLATE GENERAL";
  }
  return "TEXT";
}

const Field* RowKey(const TableDef& table) {
  for (const Field& field : table.Fields)
    if (field.IsCounter()) return &field;
  for (const Index& index : table.Indexes) {
    if (!index.Primary || index.Fields.size() != 1) continue;
    const Field* field = table.FindField(index.Fields[0]);
    if (field != nullptr && (field->Type == FieldType::Long || field->Type == FieldType::Integer))
      return field;
  }
  return nullptr;
}

std::string IndexStoreName(const TableDef& table, const Index& index) {
  return StoreName(table.Name + "." + index.Name);
}

void StepToEnd(Database::Impl& impl, sqlite3_stmt* statement) {
  int code = SQLITE_ROW;
  while (code == SQLITE_ROW) code = sqlite3_step(statement);
  if (code != SQLITE_DONE) ThrowStoreError(impl.connection.get(), code, impl.path);
}

void Database::Impl::Atomically(const std::function<void()>& body) {
  Run("SAVEPOINT sv_step");
  try {
    body();
    Run("RELEASE sv_step");
  } catch (const EngineError& error) {
    TakeStepBack();
    if (unitLost) lostTo = error;
    throw;
  } catch (...) {
    TakeStepBack();
    throw;
  }
}

void Database::Impl::TakeStepBack() {
  if (sqlite3_get_autocommit(connection.get()) == 0) {
    sqlite3_exec(connection.get(), "ROLLBACK TO sv_step", nullptr, nullptr, nullptr);
    sqlite3_exec(connection.get(), "RELEASE sv_step", nullptr, nullptr, nullptr);
  } else if (units > 0) {
    unitLost = true;
    lostTo.reset();
    NoteRollback();
  }
}

// The schema in memory follows the file: when the file takes the change back, so does memory.
void Database::Impl::ChangeSchema(const std::function<void()>& body) {
  NeedTransaction();
  NeedWritable();
  ClearCache();
  schemaChanged = units > 0;
  const std::vector<TableDef> tablesBefore = tables;
  const std::vector<Relation> relationsBefore = relations;
  try {
    Atomically(body);
    schemaVersion = SchemaVersion();
  } catch (...) {
    tables = tablesBefore;
    relations = relationsBefore;
    throw;
  }
  ClearCache();
}

std::string Database::Impl::CreateTableSql(const TableDef& table, const std::string& storeName) const {
  const Field* key = RowKey(table);
  std::string sql = "CREATE TABLE " + StoreName(storeName) + " (";
  for (const Field& field : table.Fields) {
    if (&field != &table.Fields.front()) sql += ", ";
    sql += StoreName(field.Name);
    if (&field == key) {
      sql += field.IsCounter() ? " INTEGER PRIMARY KEY AUTOINCREMENT" : " INTEGER PRIMARY KEY";
    } else {
      sql += std::string(" ") + StoreType(field.Type);
    }
  }
  for (const Relation& relation : relations) {
    if (!SameName(relation.ForeignTable, table.Name)) continue;
    sql += fmt::format(", FOREIGN KEY ({}) REFERENCES {} ({})", StoreName(relation.ForeignName),
                       StoreName(relation.Table), StoreName(relation.FieldName));
    if ((relation.Attributes & kUpdateCascade) != 0) sql += " ON UPDATE CASCADE";
    if ((relation.Attributes & kDeleteCascade) != 0) sql += " ON DELETE CASCADE";
  }
  return sql + ")";
}

void Database::Impl::CreateIndexes(const TableDef& table) {
  const Field* key = RowKey(table);
  for (const Index& index : table.Indexes) {
    if (key != nullptr && index.Fields.size() == 1 && SameName(index.Fields[0], key->Name)) continue;
    std::string sql = fmt::format("CREATE {}INDEX {} ON {} (", index.Unique || index.Primary ? "UNIQUE " : "",
                                  IndexStoreName(table, index), StoreName(table.Name));
    for (const std::string& name : index.Fields)
      sql += (&name == &index.Fields.front() ? "" : ", ") + StoreName(name);
    Run(sql + ")", table.Name);
  }
}

void Database::Impl::SaveTable(const TableDef& table) {
  const Value name(table.Name);
  for (const char* text :
       {"DELETE FROM sv_field WHERE table_name = ?1", "DELETE FROM sv_index WHERE table_name = ?1"}) {
    StatementPtr clear = Prepare(text);
    Bind(clear.get(), 1, name);
    StepToEnd(*this, clear.get());
  }
  auto insert = [&](const char* text, const std::vector<Value>& values) {
    StatementPtr statement = Prepare(text);
    for (std::size_t i = 0; i < values.size(); ++i) Bind(statement.get(), static_cast<int>(i) + 1, values[i]);
    StepToEnd(*this, statement.get());
  };
  std::int32_t place = 0;
  for (const Field& field : table.Fields) {
    insert("INSERT INTO sv_field VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)",
           {name, Value(place++), Value(field.Name), Value(static_cast<std::int32_t>(field.Type)),
            Value(field.Size), Value(field.Attributes), Value(field.Required ? 1 : 0),
            Value(field.AllowZeroLength ? 1 : 0), Value(field.DefaultValue)});
  }
  place = 0;
  for (const Index& index : table.Indexes) {
    std::string fields;
    for (const std::string& field : index.Fields) {
      if (!fields.empty()) fields += kFieldSeparator;
      fields += field;
    }
    insert("INSERT INTO sv_index VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
           {name, Value(place++), Value(index.Name), Value(index.Primary ? 1 : 0),
            Value(index.Unique ? 1 : 0), Value(index.Required ? 1 : 0), Value(fields)});
  }
}

void Database::Impl::SaveRelations() {
  Run("DELETE FROM sv_relation");
  for (const Relation& relation : relations) {
    StatementPtr insert = Prepare("INSERT INTO sv_relation VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    const Value values[] = {Value(relation.Name),         Value(relation.Table),
                            Value(relation.ForeignTable), Value(relation.Attributes),
                            Value(relation.FieldName),    Value(relation.ForeignName)};
    for (int i = 0; i < 6; ++i) Bind(insert.get(), i + 1, values[i]);
    StepToEnd(*this, insert.get());
  }
}

// Where the counter of a table stands; empty when it has none.
std::string Database::Impl::ReadCounter(const TableDef& table) {
  const Field* key = RowKey(table);
  if (key == nullptr || !key->IsCounter()) return {};
  const StatementPtr read = Prepare("SELECT seq FROM sqlite_sequence WHERE name = ?1");
  const Value name(table.Name);
  Bind(read.get(), 1, name);
  return sqlite3_step(read.get()) == SQLITE_ROW ? TextColumn(read.get(), 0) : std::string();
}

void Database::Impl::WriteCounter(const TableDef& table, const std::string& counter) {
  const Value name(table.Name);
  const Value last(counter);
  const StatementPtr clear = Prepare("DELETE FROM sqlite_sequence WHERE name = ?1");
  Bind(clear.get(), 1, name);
  StepToEnd(*this, clear.get());
  const StatementPtr write =
      Prepare("INSERT INTO sqlite_sequence (name, seq) VALUES (?1, CAST(?2 AS INTEGER))");
  Bind(write.get(), 1, name);
  Bind(write.get(), 2, last);
  StepToEnd(*this, write.get());
}

// Makes a table anew from its definition and moves its rows: the store cannot add a relation to a table that
// is there.
void Database::Impl::Rebuild(const TableDef& table) {
  const std::string moved = "sv_moved";
  std::string names;
  for (const Field& field : table.Fields) names += (names.empty() ? "" : ", ") + StoreName(field.Name);
  // Rows that have no number of their own keep the one that the store gave them: it is their order.
  if (RowKey(table) == nullptr) names = "_rowid_, " + names;
  {
    const ForeignKeysOff off(connection.get());
    Run(CreateTableSql(table, moved));
    Run(fmt::format("INSERT INTO {0} ({1}) SELECT {1} FROM {2}", moved, names, StoreName(table.Name)),
        table.Name);
    const std::string counter = ReadCounter(table);
    Run("DROP TABLE " + StoreName(table.Name));
    Run(fmt::format("ALTER TABLE {} RENAME TO {}", moved, StoreName(table.Name)));
    // The counter goes on where it was.
    if (!counter.empty()) WriteCounter(table, counter);
    CreateIndexes(table);
  }
  StatementPtr check = Prepare("PRAGMA foreign_key_check(" + StoreName(table.Name) + ")");
  if (sqlite3_step(check.get()) == SQLITE_ROW)
    throw EngineError(kRelatedRecordRequired, TextColumn(check.get(), 2));
}

}  // namespace scorvane::engine
