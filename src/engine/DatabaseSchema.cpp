// The schema: what the store cannot hold of a field, an index or a relation stands in tables of our own
// (sv_*), which TableDefs does not show.
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>

#include "engine/Collation.h"
#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

constexpr const char* kSystemTables =
    "CREATE TABLE sv_info (name TEXT PRIMARY KEY, value TEXT);"
    "CREATE TABLE sv_field (table_name TEXT, place INTEGER, name TEXT, type INTEGER, size INTEGER, "
    "attributes INTEGER,"
    " required INTEGER, zero_length INTEGER, default_value TEXT, PRIMARY KEY (table_name, place));"
    "CREATE TABLE sv_index (table_name TEXT, place INTEGER, name TEXT, is_primary INTEGER, is_unique INTEGER,"
    " required INTEGER, fields TEXT, PRIMARY KEY (table_name, place));"
    "CREATE TABLE sv_relation (name TEXT PRIMARY KEY, table_name TEXT, foreign_table TEXT, attributes "
    "INTEGER,"
    " field TEXT, foreign_field TEXT);";

constexpr char kFieldSeparator = '\n';  // between the fields of an index in sv_index
constexpr int kMostFields = 255;

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

int NaturalSize(FieldType type) {
  switch (type) {
    case FieldType::Boolean:
    case FieldType::Byte:
      return 1;
    case FieldType::Integer:
      return 2;
    case FieldType::Long:
    case FieldType::Single:
      return 4;
    case FieldType::Double:
    case FieldType::Date:
      return 8;
    case FieldType::Text:
      return 255;
    case FieldType::Memo:
      return 0;
  }
  return 0;
}

bool IsKnownType(int type) {
  for (FieldType known :
       {FieldType::Boolean, FieldType::Byte, FieldType::Integer, FieldType::Long, FieldType::Single,
        FieldType::Double, FieldType::Date, FieldType::Text, FieldType::Memo})
    if (static_cast<int>(known) == type) return true;
  return false;
}

void CheckName(std::string_view name) {
  const bool bad = name.empty() || name.size() > 64 || name.front() == ' ' ||
                   SameName(name.substr(0, 3), "sv_") || SameName(name.substr(0, 7), "sqlite_") ||
                   name.find_first_of(std::string_view(".![]`\"\n\0", 8)) != std::string_view::npos;
  if (bad) throw EngineError(kInvalidName, name);
}

void Normalise(Field& field) {
  CheckName(field.Name);
  const bool text = field.Type == FieldType::Text;
  if (!text || field.Size <= 0) field.Size = NaturalSize(field.Type);
  if (field.Attributes == 0)
    field.Attributes = text || field.Type == FieldType::Memo ? kVariableField : kFixedField;
}

// The field that SQLite keeps as its row key; null when the table has none.
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

std::string TextColumn(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  return text == nullptr
             ? std::string()
             : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

template <typename Item>
bool HasName(const std::vector<Item>& items, std::string_view name) {
  return std::any_of(items.begin(), items.end(), [&](const Item& item) { return SameName(item.Name, name); });
}

template <typename Item>
typename std::vector<Item>::iterator NeedItem(std::vector<Item>& items, std::string_view name) {
  auto found =
      std::find_if(items.begin(), items.end(), [&](const Item& item) { return SameName(item.Name, name); });
  if (found == items.end()) throw EngineError(kItemNotFound, name);
  return found;
}

void StepToEnd(Database::Impl& impl, sqlite3_stmt* statement) {
  int code = SQLITE_ROW;
  while (code == SQLITE_ROW) code = sqlite3_step(statement);
  if (code != SQLITE_DONE) ThrowStoreError(impl.connection.get(), code, impl.path);
}

}  // namespace

// ---- reading

void Database::Impl::CreateSystemTables() {
  Run(fmt::format("PRAGMA application_id={}; PRAGMA user_version={}", kApplicationId, kFormatVersion));
  Atomically([&] {
    Run(kSystemTables);
    StatementPtr insert = Prepare("INSERT INTO sv_info VALUES ('collation', ?1)");
    const Value version(CollationVersion());
    Bind(insert.get(), 1, version);
    StepToEnd(*this, insert.get());
  });
}

void Database::Impl::LoadSchema() {
  tables.clear();
  relations.clear();
  // Only what the store, too, knows as a plain table: a catalogue that says otherwise has been tampered with.
  std::vector<std::string> stored;
  StatementPtr names = Prepare(
      "SELECT name FROM sqlite_schema WHERE type = 'table' AND sql NOT LIKE 'CREATE VIRTUAL%' ORDER BY name");
  while (sqlite3_step(names.get()) == SQLITE_ROW) stored.push_back(TextColumn(names.get(), 0));

  StatementPtr fields = Prepare(
      "SELECT table_name, name, type, size, attributes, required, zero_length, default_value FROM sv_field "
      "ORDER BY table_name, place");
  int code = 0;
  while ((code = sqlite3_step(fields.get())) == SQLITE_ROW) {
    const std::string table = TextColumn(fields.get(), 0);
    if (std::find(stored.begin(), stored.end(), table) == stored.end()) continue;
    if (tables.empty() || tables.back().Name != table) {
      tables.emplace_back();
      tables.back().Name = table;
    }
    Field field;
    field.Name = TextColumn(fields.get(), 1);
    const int type = sqlite3_column_int(fields.get(), 2);
    if (!IsKnownType(type)) throw EngineError(kDatabaseDamaged, path);
    field.Type = static_cast<FieldType>(type);
    field.Size = sqlite3_column_int(fields.get(), 3);
    field.Attributes = sqlite3_column_int(fields.get(), 4);
    field.Required = sqlite3_column_int(fields.get(), 5) != 0;
    field.AllowZeroLength = sqlite3_column_int(fields.get(), 6) != 0;
    field.DefaultValue = TextColumn(fields.get(), 7);
    tables.back().Fields.push_back(std::move(field));
  }
  if (code != SQLITE_DONE) ThrowStoreError(connection.get(), code, path);

  StatementPtr indexes = Prepare(
      "SELECT table_name, name, is_primary, is_unique, required, fields FROM sv_index ORDER BY table_name, "
      "place");
  while ((code = sqlite3_step(indexes.get())) == SQLITE_ROW) {
    const std::string table = TextColumn(indexes.get(), 0);
    auto owner =
        std::find_if(tables.begin(), tables.end(), [&](const TableDef& t) { return t.Name == table; });
    if (owner == tables.end()) continue;
    Index index;
    index.Name = TextColumn(indexes.get(), 1);
    index.Primary = sqlite3_column_int(indexes.get(), 2) != 0;
    index.Unique = sqlite3_column_int(indexes.get(), 3) != 0;
    index.Required = sqlite3_column_int(indexes.get(), 4) != 0;
    std::string names_ = TextColumn(indexes.get(), 5);
    for (std::size_t from = 0; from <= names_.size();) {
      const std::size_t to = std::min(names_.find(kFieldSeparator, from), names_.size());
      index.Fields.push_back(names_.substr(from, to - from));
      from = to + 1;
    }
    owner->Indexes.push_back(std::move(index));
  }
  if (code != SQLITE_DONE) ThrowStoreError(connection.get(), code, path);

  StatementPtr links = Prepare(
      "SELECT name, table_name, foreign_table, attributes, field, foreign_field FROM sv_relation ORDER BY "
      "rowid");
  while ((code = sqlite3_step(links.get())) == SQLITE_ROW) {
    Relation relation;
    relation.Name = TextColumn(links.get(), 0);
    relation.Table = TextColumn(links.get(), 1);
    relation.ForeignTable = TextColumn(links.get(), 2);
    relation.Attributes = sqlite3_column_int(links.get(), 3);
    relation.FieldName = TextColumn(links.get(), 4);
    relation.ForeignName = TextColumn(links.get(), 5);
    relations.push_back(std::move(relation));
  }
  if (code != SQLITE_DONE) ThrowStoreError(connection.get(), code, path);
}

// An index that was made under other rules of order finds nothing reliably: it is made anew.
void Database::Impl::CheckCollation() {
  const std::string version = CollationVersion();
  std::string stamped;
  {
    StatementPtr read = Prepare("SELECT value FROM sv_info WHERE name = 'collation'");
    if (sqlite3_step(read.get()) == SQLITE_ROW) stamped = TextColumn(read.get(), 0);
  }
  if (stamped == version || readOnly) return;
  Atomically([&] {
    Run("REINDEX");
    StatementPtr write = Prepare("INSERT OR REPLACE INTO sv_info VALUES ('collation', ?1)");
    const Value value(version);
    Bind(write.get(), 1, value);
    StepToEnd(*this, write.get());
  });
}

const TableDef* Database::Impl::FindTable(std::string_view name) const {
  auto found =
      std::find_if(tables.begin(), tables.end(), [&](const TableDef& t) { return SameName(t.Name, name); });
  return found == tables.end() ? nullptr : &*found;
}

TableDef& Database::Impl::NeedTable(std::string_view name) {
  return *NeedItem(tables, name);
}

const std::vector<TableDef>& Database::TableDefs() const {
  return impl_->tables;
}
const TableDef* Database::FindTableDef(std::string_view name) const {
  return impl_->FindTable(name);
}
const std::vector<Relation>& Database::Relations() const {
  return impl_->relations;
}

// ---- writing

void Database::Impl::Atomically(const std::function<void()>& body) {
  Run("SAVEPOINT sv_step");
  try {
    body();
    Run("RELEASE sv_step");
  } catch (...) {
    if (sqlite3_get_autocommit(connection.get()) == 0) {
      sqlite3_exec(connection.get(), "ROLLBACK TO sv_step", nullptr, nullptr, nullptr);
      sqlite3_exec(connection.get(), "RELEASE sv_step", nullptr, nullptr, nullptr);
    } else if (units > 0) {
      unitLost = true;
    }
    throw;
  }
}

// The schema in memory follows the file: when the file takes the change back, so does memory.
void Database::Impl::ChangeSchema(const std::function<void()>& body) {
  NeedTransaction();
  NeedWritable();
  ClearCache();
  const std::vector<TableDef> tablesBefore = tables;
  const std::vector<Relation> relationsBefore = relations;
  try {
    Atomically(body);
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
    Run(sql + ")");
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

// Makes a table anew from its definition and moves its rows: the store cannot add a relation to a table that
// is there.
void Database::Impl::Rebuild(const TableDef& table) {
  const std::string moved = "sv_moved";
  std::string names;
  for (const Field& field : table.Fields) names += (names.empty() ? "" : ", ") + StoreName(field.Name);
  sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_ENABLE_FKEY, 0, nullptr);
  try {
    Run(CreateTableSql(table, moved));
    Run(fmt::format("INSERT INTO {0} ({1}) SELECT {1} FROM {2}", moved, names, StoreName(table.Name)));
    const Field* key = RowKey(table);
    std::string counter;
    if (key != nullptr && key->IsCounter()) {
      // The counter goes on where it was.
      StatementPtr read = Prepare("SELECT seq FROM sqlite_sequence WHERE name = ?1");
      const Value name(table.Name);
      Bind(read.get(), 1, name);
      if (sqlite3_step(read.get()) == SQLITE_ROW) counter = TextColumn(read.get(), 0);
    }
    Run("DROP TABLE " + StoreName(table.Name));
    Run(fmt::format("ALTER TABLE {} RENAME TO {}", moved, StoreName(table.Name)));
    if (!counter.empty()) {
      StatementPtr clear = Prepare("DELETE FROM sqlite_sequence WHERE name = ?1");
      const Value name(table.Name);
      Bind(clear.get(), 1, name);
      StepToEnd(*this, clear.get());
      StatementPtr write =
          Prepare("INSERT INTO sqlite_sequence (name, seq) VALUES (?1, CAST(?2 AS INTEGER))");
      const Value value(counter);
      Bind(write.get(), 1, name);
      Bind(write.get(), 2, value);
      StepToEnd(*this, write.get());
    }
    CreateIndexes(table);
  } catch (...) {
    sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
    throw;
  }
  sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
  StatementPtr check = Prepare("PRAGMA foreign_key_check(" + StoreName(table.Name) + ")");
  if (sqlite3_step(check.get()) == SQLITE_ROW)
    throw EngineError(kRelatedRecordRequired, TextColumn(check.get(), 2));
}

void Database::AppendTableDef(TableDef table) {
  CheckName(table.Name);
  if (impl_->FindTable(table.Name) != nullptr) throw EngineError(kTableExists, table.Name);
  if (table.Fields.empty() || table.Fields.size() > kMostFields) throw EngineError(kInvalidName, table.Name);
  for (std::size_t i = 0; i < table.Fields.size(); ++i) {
    Normalise(table.Fields[i]);
    if (table.FindField(table.Fields[i].Name) != &table.Fields[i])
      throw EngineError(kFieldExists, table.Fields[i].Name);
  }
  for (const Index& index : table.Indexes) {
    if (table.FindIndex(index.Name) != &index) throw EngineError(kIndexExists, index.Name);
    if (index.Fields.empty()) throw EngineError(kInvalidName, index.Name);
    for (const std::string& name : index.Fields)
      if (table.FindField(name) == nullptr) throw EngineError(kItemNotFound, name);
  }
  impl_->ChangeSchema([&] {
    impl_->Run(impl_->CreateTableSql(table, table.Name));
    impl_->CreateIndexes(table);
    impl_->SaveTable(table);
    impl_->tables.push_back(std::move(table));
  });
}

void Database::DeleteTableDef(std::string_view name) {
  const TableDef& table = impl_->NeedTable(name);
  for (const Relation& relation : impl_->relations)
    if (SameName(relation.Table, name) || SameName(relation.ForeignTable, name))
      throw EngineError(kFieldInUse, relation.FieldName);
  impl_->ChangeSchema([&] {
    impl_->Run("DROP TABLE " + StoreName(table.Name));
    TableDef empty;
    empty.Name = table.Name;
    impl_->SaveTable(empty);
    impl_->tables.erase(NeedItem(impl_->tables, name));
  });
}

void Database::AppendField(std::string_view tableName, Field field) {
  TableDef& table = impl_->NeedTable(tableName);
  Normalise(field);
  if (table.FindField(field.Name) != nullptr) throw EngineError(kFieldExists, field.Name);
  if (field.IsCounter())
    throw EngineError(kInvalidName, field.Name);  // rows that are there would need numbers
  impl_->ChangeSchema([&] {
    impl_->Run(fmt::format("ALTER TABLE {} ADD COLUMN {} {}", StoreName(table.Name), StoreName(field.Name),
                           StoreType(field.Type)));
    table.Fields.push_back(std::move(field));
    impl_->SaveTable(table);
  });
}

void Database::RenameField(std::string_view tableName, std::string_view field, std::string_view newName) {
  TableDef& table = impl_->NeedTable(tableName);
  auto found = NeedItem(table.Fields, field);
  CheckName(newName);
  if (!SameName(field, newName) && table.FindField(newName) != nullptr)
    throw EngineError(kFieldExists, newName);
  impl_->ChangeSchema([&] {
    impl_->Run(fmt::format("ALTER TABLE {} RENAME COLUMN {} TO {}", StoreName(table.Name),
                           StoreName(found->Name), StoreName(newName)));
    const std::string old = found->Name;
    found->Name = newName;
    for (Index& index : table.Indexes)
      for (std::string& name : index.Fields)
        if (SameName(name, old)) name = newName;
    for (Relation& relation : impl_->relations) {
      if (SameName(relation.Table, table.Name) && SameName(relation.FieldName, old))
        relation.FieldName = newName;
      if (SameName(relation.ForeignTable, table.Name) && SameName(relation.ForeignName, old))
        relation.ForeignName = newName;
    }
    impl_->SaveTable(table);
    impl_->SaveRelations();
  });
}

void Database::DeleteField(std::string_view tableName, std::string_view field) {
  TableDef& table = impl_->NeedTable(tableName);
  auto found = NeedItem(table.Fields, field);
  for (const Index& index : table.Indexes)
    for (const std::string& name : index.Fields)
      if (SameName(name, field)) throw EngineError(kFieldInUse, found->Name);
  for (const Relation& relation : impl_->relations) {
    if ((SameName(relation.Table, table.Name) && SameName(relation.FieldName, field)) ||
        (SameName(relation.ForeignTable, table.Name) && SameName(relation.ForeignName, field)))
      throw EngineError(kFieldInUse, found->Name);
  }
  if (table.Fields.size() == 1 || found->IsCounter()) throw EngineError(kFieldInUse, found->Name);
  impl_->ChangeSchema([&] {
    impl_->Run(fmt::format("ALTER TABLE {} DROP COLUMN {}", StoreName(table.Name), StoreName(found->Name)));
    table.Fields.erase(found);
    impl_->SaveTable(table);
  });
}

void Database::SetFieldDefault(std::string_view tableName, std::string_view field, std::string_view literal) {
  TableDef& table = impl_->NeedTable(tableName);
  auto found = NeedItem(table.Fields, field);
  impl_->ChangeSchema([&] {
    found->DefaultValue = literal;
    impl_->SaveTable(table);
  });
}

void Database::AppendIndex(std::string_view tableName, Index index) {
  TableDef& table = impl_->NeedTable(tableName);
  if (HasName(table.Indexes, index.Name)) throw EngineError(kIndexExists, index.Name);
  if (index.Fields.empty()) throw EngineError(kInvalidName, index.Name);
  for (const std::string& name : index.Fields) NeedItem(table.Fields, name);
  impl_->ChangeSchema([&] {
    TableDef single = table;
    single.Indexes = {index};
    impl_->CreateIndexes(single);
    table.Indexes.push_back(std::move(index));
    impl_->SaveTable(table);
  });
}

void Database::DeleteIndex(std::string_view tableName, std::string_view index) {
  TableDef& table = impl_->NeedTable(tableName);
  auto found = NeedItem(table.Indexes, index);
  for (const Relation& relation : impl_->relations)
    if (SameName(relation.Table, table.Name) && found->Fields.size() == 1 &&
        SameName(found->Fields[0], relation.FieldName))
      throw EngineError(kFieldInUse, relation.FieldName);
  impl_->ChangeSchema([&] {
    // The index that is the table's row key has no index of its own in the store.
    impl_->Run("DROP INDEX IF EXISTS " + IndexStoreName(table, *found));
    table.Indexes.erase(found);
    impl_->SaveTable(table);
  });
}

void Database::AppendRelation(Relation relation) {
  const TableDef& table = impl_->NeedTable(relation.Table);
  const TableDef& foreign = impl_->NeedTable(relation.ForeignTable);
  if (HasName(impl_->relations, relation.Name)) throw EngineError(kIndexExists, relation.Name);
  const Field* field = table.FindField(relation.FieldName);
  const Field* foreignField = foreign.FindField(relation.ForeignName);
  if (field == nullptr) throw EngineError(kItemNotFound, relation.FieldName);
  if (foreignField == nullptr) throw EngineError(kItemNotFound, relation.ForeignName);
  const bool unique = std::any_of(table.Indexes.begin(), table.Indexes.end(), [&](const Index& index) {
    return (index.Unique || index.Primary) && index.Fields.size() == 1 &&
           SameName(index.Fields[0], field->Name);
  });
  if (!unique) throw EngineError(kNoUniqueIndex, relation.FieldName);
  relation.Table = table.Name;
  relation.ForeignTable = foreign.Name;
  relation.FieldName = field->Name;
  relation.ForeignName = foreignField->Name;
  impl_->ChangeSchema([&] {
    impl_->relations.push_back(std::move(relation));
    impl_->Rebuild(foreign);
    impl_->SaveRelations();
  });
}

void Database::DeleteRelation(std::string_view relation) {
  auto found = NeedItem(impl_->relations, relation);
  const TableDef& foreign = impl_->NeedTable(found->ForeignTable);
  impl_->ChangeSchema([&] {
    impl_->relations.erase(found);
    impl_->Rebuild(foreign);
    impl_->SaveRelations();
  });
}

void Database::SetCounter(std::string_view tableName, std::int32_t last) {
  const TableDef& table = impl_->NeedTable(tableName);
  const Field* key = RowKey(table);
  if (key == nullptr || !key->IsCounter()) throw EngineError(kInvalidOperation);
  impl_->ChangeSchema([&] {
    const Value name(table.Name);
    const Value number(last);
    StatementPtr raise = impl_->Prepare("UPDATE sqlite_sequence SET seq = max(seq, ?2) WHERE name = ?1");
    Bind(raise.get(), 1, name);
    Bind(raise.get(), 2, number);
    StepToEnd(*impl_, raise.get());
    StatementPtr add = impl_->Prepare(
        "INSERT INTO sqlite_sequence (name, seq) SELECT ?1, ?2 WHERE NOT EXISTS (SELECT 1 FROM "
        "sqlite_sequence WHERE "
        "name = ?1)");
    Bind(add.get(), 1, name);
    Bind(add.get(), 2, number);
    StepToEnd(*impl_, add.get());
  });
}

std::vector<std::string> Database::CheckIntegrity() {
  std::vector<std::string> faults;
  StatementPtr check = impl_->Prepare("PRAGMA integrity_check(20)");
  int code = 0;
  while ((code = sqlite3_step(check.get())) == SQLITE_ROW) {
    std::string fault = TextColumn(check.get(), 0);
    if (fault != "ok") faults.push_back(std::move(fault));
  }
  if (code != SQLITE_DONE) faults.emplace_back("the file cannot be read to its end");
  StatementPtr links = impl_->Prepare("PRAGMA foreign_key_check");
  while (sqlite3_step(links.get()) == SQLITE_ROW && faults.size() < 40) {
    faults.push_back(fmt::format("a row of {} names a row of {} that is not there",
                                 TextColumn(links.get(), 0), TextColumn(links.get(), 2)));
  }
  return faults;
}

}  // namespace scorvane::engine
