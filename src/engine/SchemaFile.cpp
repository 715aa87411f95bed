// The schema on its way out of the file, which may come from a stranger: it is taken only when the store's
// tables are what the catalogue says of them.
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <set>

#include "engine/Collation.h"
#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/SchemaTables.h"

namespace scorvane::engine {
namespace {

// Far more than any league has; a catalogue that says more was not written by us.
constexpr std::size_t kMostTables = 500;
constexpr std::size_t kMostIndexes = 2000;
constexpr std::size_t kMostRelations = 500;

bool IsKnownType(int type) {
  for (FieldType known :
       {FieldType::Boolean, FieldType::Byte, FieldType::Integer, FieldType::Long, FieldType::Single,
        FieldType::Double, FieldType::Date, FieldType::Text, FieldType::Memo})
    if (static_cast<int>(known) == type) return true;
  return false;
}

[[noreturn]] void Refuse(const Database::Impl& impl, const std::string& reason) {
  throw EngineError(kDatabaseDamaged, impl.path, " " + reason);
}

struct StoredColumn {
  std::string type;
  bool generated = false;
  bool key = false;
};
using StoredColumns = std::map<std::string, StoredColumn>;  // by their names in lower case

std::string Lower(std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii);
  return lower;
}

void NeedEnd(const Database::Impl& impl, int code) {
  if (code == SQLITE_DONE) return;
  ThrowStoreError(impl.connection.get(), code, impl.path);
}

// The columns of the plain tables. The text of every other kind begins in another way.
std::map<std::string, StoredColumns> ReadStoredTables(Database::Impl& impl) {
  std::map<std::string, StoredColumns> tables;
  const StatementPtr columns = impl.Prepare(
      "SELECT t.name, c.name, c.type, c.hidden, c.pk FROM sqlite_schema AS t, pragma_table_xinfo(t.name) AS "
      "c "
      "WHERE t.type = 'table' AND substr(t.sql, 1, 13) = 'CREATE TABLE '");
  int code = 0;
  while ((code = sqlite3_step(columns.get())) == SQLITE_ROW) {
    StoredColumn column;
    column.type = TextColumn(columns.get(), 2);
    column.generated = sqlite3_column_int(columns.get(), 3) != 0;
    column.key = sqlite3_column_int(columns.get(), 4) != 0;
    tables[TextColumn(columns.get(), 0)][Lower(TextColumn(columns.get(), 1))] = column;
    if (tables.size() > 2 * kMostTables) Refuse(impl, "It has too many tables.");
  }
  NeedEnd(impl, code);
  return tables;
}

void CheckTable(const Database::Impl& impl, const TableDef& table, const StoredColumns& columns) {
  if (!IsValidName(table.Name)) Refuse(impl, fmt::format("'{}' is not a valid name.", table.Name));
  for (const Field& field : table.Fields) {
    const auto stored = columns.find(Lower(field.Name));
    if (!IsValidName(field.Name)) Refuse(impl, fmt::format("'{}' is not a valid name.", field.Name));
    if (stored == columns.end())
      Refuse(impl, fmt::format("The field '{}' of the table '{}' is missing.", field.Name, table.Name));
    if (field.IsCounter() && (!stored->second.key || !SameName(stored->second.type, "INTEGER")))
      Refuse(impl, fmt::format("The field '{}' of the table '{}' does not count.", field.Name, table.Name));
  }
  for (const auto& [name, column] : columns) {
    if (column.generated)
      Refuse(impl, fmt::format("The field '{}' of the table '{}' is computed.", name, table.Name));
    if (name == "_rowid_") Refuse(impl, fmt::format("'{}' is not a valid name.", name));
  }
}

void ReadFields(Database::Impl& impl, const std::map<std::string, StoredColumns>& stored) {
  const StatementPtr fields = impl.Prepare(
      "SELECT table_name, name, type, size, attributes, required, zero_length, default_value FROM sv_field "
      "ORDER BY table_name, place");
  int code = 0;
  while ((code = sqlite3_step(fields.get())) == SQLITE_ROW) {
    const std::string table = TextColumn(fields.get(), 0);
    if (!stored.contains(table)) continue;  // CheckIntegrity reports it
    if (impl.tables.empty() || impl.tables.back().Name != table) {
      impl.tables.emplace_back();
      impl.tables.back().Name = table;
    }
    if (impl.tables.size() > kMostTables || impl.tables.back().Fields.size() >= kMostFields)
      Refuse(impl, "It has too many tables or fields.");
    Field field;
    field.Name = TextColumn(fields.get(), 1);
    const int type = sqlite3_column_int(fields.get(), 2);
    if (!IsKnownType(type))
      Refuse(impl, fmt::format("The field '{}' of the table '{}' has no known type.", field.Name, table));
    field.Type = static_cast<FieldType>(type);
    field.Size = sqlite3_column_int(fields.get(), 3);
    field.Attributes = sqlite3_column_int(fields.get(), 4);
    field.Required = sqlite3_column_int(fields.get(), 5) != 0;
    field.AllowZeroLength = sqlite3_column_int(fields.get(), 6) != 0;
    field.DefaultValue = TextColumn(fields.get(), 7);
    if (impl.tables.back().FindField(field.Name) != nullptr)
      Refuse(impl, fmt::format("The field '{}' of the table '{}' is there twice.", field.Name, table));
    impl.tables.back().Fields.push_back(std::move(field));
  }
  NeedEnd(impl, code);
}

void ReadIndexes(Database::Impl& impl) {
  const StatementPtr indexes = impl.Prepare(
      "SELECT table_name, name, is_primary, is_unique, required, fields FROM sv_index ORDER BY table_name, "
      "place");
  int code = 0;
  std::size_t count = 0;
  while ((code = sqlite3_step(indexes.get())) == SQLITE_ROW) {
    if (++count > kMostIndexes) Refuse(impl, "It has too many indexes.");
    const std::string table = TextColumn(indexes.get(), 0);
    auto owner = std::find_if(impl.tables.begin(), impl.tables.end(),
                              [&](const TableDef& t) { return t.Name == table; });
    if (owner == impl.tables.end()) continue;
    Index index;
    index.Name = TextColumn(indexes.get(), 1);
    index.Primary = sqlite3_column_int(indexes.get(), 2) != 0;
    index.Unique = sqlite3_column_int(indexes.get(), 3) != 0;
    index.Required = sqlite3_column_int(indexes.get(), 4) != 0;
    const std::string names = TextColumn(indexes.get(), 5);
    for (std::size_t from = 0; from <= names.size();) {
      const std::size_t to = std::min(names.find(kFieldSeparator, from), names.size());
      index.Fields.push_back(names.substr(from, to - from));
      if (owner->FindField(index.Fields.back()) == nullptr)
        Refuse(impl, fmt::format("The index '{}' of the table '{}' names a field that is missing.",
                                 index.Name, table));
      from = to + 1;
    }
    owner->Indexes.push_back(std::move(index));
  }
  NeedEnd(impl, code);
}

void ReadRelations(Database::Impl& impl) {
  const StatementPtr links = impl.Prepare(
      "SELECT name, table_name, foreign_table, attributes, field, foreign_field FROM sv_relation ORDER BY "
      "rowid");
  int code = 0;
  while ((code = sqlite3_step(links.get())) == SQLITE_ROW) {
    if (impl.relations.size() >= kMostRelations) Refuse(impl, "It has too many relations.");
    Relation relation;
    relation.Name = TextColumn(links.get(), 0);
    relation.Table = TextColumn(links.get(), 1);
    relation.ForeignTable = TextColumn(links.get(), 2);
    relation.Attributes = sqlite3_column_int(links.get(), 3);
    relation.FieldName = TextColumn(links.get(), 4);
    relation.ForeignName = TextColumn(links.get(), 5);
    const TableDef* table = impl.FindTable(relation.Table);
    const TableDef* foreign = impl.FindTable(relation.ForeignTable);
    if (table == nullptr || foreign == nullptr || table->FindField(relation.FieldName) == nullptr ||
        foreign->FindField(relation.ForeignName) == nullptr)
      Refuse(impl, fmt::format("The relation '{}' names a field that is missing.", relation.Name));
    impl.relations.push_back(std::move(relation));
  }
  NeedEnd(impl, code);
}

// A table without row keys is none of ours.
void CheckRowKeys(Database::Impl& impl) {
  for (const TableDef& table : impl.tables) {
    sqlite3_stmt* raw = nullptr;
    const std::string text = "SELECT _rowid_ FROM " + StoreName(table.Name);
    const int code = sqlite3_prepare_v2(impl.connection.get(), text.c_str(), -1, &raw, nullptr);
    const StatementPtr probe(raw);
    if (code == SQLITE_ERROR) Refuse(impl, fmt::format("The table '{}' has no row keys.", table.Name));
    if (code != SQLITE_OK) ThrowStoreError(impl.connection.get(), code, impl.path);
  }
}

bool NamesCounter(const TableDef& table) {
  return std::any_of(table.Fields.begin(), table.Fields.end(),
                     [](const Field& field) { return field.IsCounter(); });
}

}  // namespace

bool IsValidName(std::string_view name) {
  return !name.empty() && name.size() <= 64 && name.front() != ' ' && !SameName(name.substr(0, 3), "sv_") &&
         !SameName(name.substr(0, 7), "sqlite_") && !SameName(name, "_rowid_") &&
         name.find_first_of(std::string_view(".![]`\"\n\0", 8)) == std::string_view::npos;
}

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
  const std::map<std::string, StoredColumns> stored = ReadStoredTables(*this);
  for (const char* name : {"sv_info", "sv_field", "sv_index", "sv_relation"})
    if (!stored.contains(name)) Refuse(*this, fmt::format("Its catalogue '{}' is missing.", name));
  ReadFields(*this, stored);
  ReadIndexes(*this);
  for (const TableDef& table : tables) CheckTable(*this, table, stored.at(table.Name));
  ReadRelations(*this);
  CheckRowKeys(*this);
  if (std::any_of(tables.begin(), tables.end(), NamesCounter)) {
    const StatementPtr counters =
        Prepare(fmt::format("SELECT 1 FROM sqlite_sequence WHERE seq > {} LIMIT 1", kCounterWatch));
    countersNearEnd = sqlite3_step(counters.get()) == SQLITE_ROW;
  }
  schemaVersion = SchemaVersion();
}

void Database::Impl::NoteOthersSchema() {
  const std::int64_t now = SchemaVersion();
  schemaStale = schemaStale || (now >= 0 && now != schemaVersion);
}

void Database::Impl::NoteRollback() {
  schemaStale = schemaStale || schemaChanged;
  schemaChanged = false;
}

void Database::Impl::RefreshSchema() {
  if (!schemaStale || unitLost) return;
  ClearCache();
  LoadSchema();
  schemaStale = false;
}

// An index that was made under other rules of order finds nothing reliably: it is made anew, or,
// where nothing may be written, not asked.
void Database::Impl::CheckCollation() {
  const std::string version = CollationVersion();
  std::string stamped;
  {
    StatementPtr read = Prepare("SELECT value FROM sv_info WHERE name = 'collation'");
    if (sqlite3_step(read.get()) == SQLITE_ROW) stamped = TextColumn(read.get(), 0);
  }
  if (stamped == version) return;
  if (readOnly) {
    indexesOutdated = true;
    return;
  }
  Atomically([&] {
    Run("REINDEX");
    StatementPtr write = Prepare("INSERT OR REPLACE INTO sv_info VALUES ('collation', ?1)");
    const Value value(version);
    Bind(write.get(), 1, value);
    StepToEnd(*this, write.get());
  });
}

// ---- checking

namespace {

// What the store has and the catalogue does not know of. None of it is ever run.
void FindStrangers(Database::Impl& impl, std::vector<std::string>& faults) {
  const StatementPtr items = impl.Prepare("SELECT type, name, tbl_name FROM sqlite_schema ORDER BY name");
  while (sqlite3_step(items.get()) == SQLITE_ROW) {
    const std::string type = TextColumn(items.get(), 0);
    const std::string name = TextColumn(items.get(), 1);
    if (SameName(name.substr(0, 3), "sv_") || SameName(name.substr(0, 7), "sqlite_")) continue;
    if (type == "table" && impl.FindTable(name) == nullptr)
      faults.push_back(fmt::format("The catalogue does not know the table {}.", name));
    if (type == "trigger" || type == "view")
      faults.push_back(fmt::format("The file holds the {} {}, which is never used.", type, name));
    if (type != "index") continue;
    const TableDef* table = impl.FindTable(TextColumn(items.get(), 2));
    const bool known = table != nullptr &&
                       std::any_of(table->Indexes.begin(), table->Indexes.end(), [&](const Index& index) {
                         return SameName(table->Name + "." + index.Name, name);
                       });
    if (!known) faults.push_back(fmt::format("The catalogue does not know the index {}.", name));
  }
  for (const auto& [name, columns] : ReadStoredTables(impl)) {
    const TableDef* table = impl.FindTable(name);
    for (const auto& [column, stored] : columns)
      if (table != nullptr && table->FindField(column) == nullptr)
        faults.push_back(fmt::format("The catalogue does not know the field {} of {}.", column, name));
  }
}

// What the catalogue says and the store does not have.
void FindMissing(Database::Impl& impl, std::vector<std::string>& faults) {
  const StatementPtr lost = impl.Prepare(
      "SELECT DISTINCT table_name FROM sv_field WHERE table_name NOT IN (SELECT name FROM sqlite_schema "
      "WHERE "
      "type = 'table' AND substr(sql, 1, 13) = 'CREATE TABLE ') LIMIT 20");
  while (sqlite3_step(lost.get()) == SQLITE_ROW)
    faults.push_back(fmt::format("The table {} is missing.", TextColumn(lost.get(), 0)));
  std::set<std::string> indexes;
  const StatementPtr stored = impl.Prepare("SELECT name FROM sqlite_schema WHERE type = 'index'");
  while (sqlite3_step(stored.get()) == SQLITE_ROW) indexes.insert(TextColumn(stored.get(), 0));
  for (const TableDef& table : impl.tables) {
    const Field* key = RowKey(table);
    for (const Index& index : table.Indexes) {
      if (key != nullptr && index.Fields.size() == 1 && SameName(index.Fields[0], key->Name)) continue;
      if (!indexes.contains(table.Name + "." + index.Name))
        faults.push_back(fmt::format("The index {} of {} is missing.", index.Name, table.Name));
    }
  }
  for (const Relation& relation : impl.relations) {
    const StatementPtr links =
        impl.Prepare("PRAGMA foreign_key_list(" + StoreName(relation.ForeignTable) + ")");
    bool found = false;
    while (sqlite3_step(links.get()) == SQLITE_ROW)
      found = found || (SameName(TextColumn(links.get(), 2), relation.Table) &&
                        SameName(TextColumn(links.get(), 3), relation.ForeignName) &&
                        SameName(TextColumn(links.get(), 4), relation.FieldName));
    if (!found) faults.push_back(fmt::format("Nothing in the file keeps the relation {}.", relation.Name));
  }
}

}  // namespace

std::vector<std::string> Database::Impl::SchemaFaults() {
  std::vector<std::string> faults;
  FindStrangers(*this, faults);
  FindMissing(*this, faults);
  return faults;
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
  for (std::string& fault : impl_->SchemaFaults()) {
    if (faults.size() >= 60) break;
    faults.push_back(std::move(fault));
  }
  return faults;
}

}  // namespace scorvane::engine
