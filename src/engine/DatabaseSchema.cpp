// Changing the schema.
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>

#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/SchemaTables.h"

namespace scorvane::engine {
namespace {

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

void CheckName(std::string_view name) {
  if (!IsValidName(name)) throw EngineError(kInvalidName, name);
}

void Normalise(Field& field) {
  CheckName(field.Name);
  const bool text = field.Type == FieldType::Text;
  if (!text || field.Size <= 0) field.Size = NaturalSize(field.Type);
  if (field.Attributes == 0)
    field.Attributes = text || field.Type == FieldType::Memo ? kVariableField : kFixedField;
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

}  // namespace

const TableDef* Database::Impl::FindTable(std::string_view name) const {
  auto found =
      std::find_if(tables.begin(), tables.end(), [&](const TableDef& t) { return SameName(t.Name, name); });
  return found == tables.end() ? nullptr : &*found;
}

TableDef& Database::Impl::NeedTable(std::string_view name) {
  RefreshSchema();
  return *NeedItem(tables, name);
}

const std::vector<TableDef>& Database::TableDefs() const {
  impl_->RefreshSchema();
  return impl_->tables;
}
const TableDef* Database::FindTableDef(std::string_view name) const {
  impl_->RefreshSchema();
  return impl_->FindTable(name);
}
const std::vector<Relation>& Database::Relations() const {
  impl_->RefreshSchema();
  return impl_->relations;
}

void Database::AppendTableDef(TableDef table) {
  CheckName(table.Name);
  impl_->RefreshSchema();
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
    const Field* keyBefore = RowKey(table);
    table.Indexes.push_back(std::move(index));
    const Field* key = RowKey(table);
    if (key != keyBefore) {
      // The store gives its row key only to a table that is made with it, and numbers what has no number.
      const StatementPtr nulls = impl_->Prepare(
          fmt::format("SELECT 1 FROM {} WHERE {} IS NULL", StoreName(table.Name), StoreName(key->Name)));
      if (sqlite3_step(nulls.get()) == SQLITE_ROW) throw EngineError(kNullInIndex, table.Name);
    }
    if (key != keyBefore) {
      impl_->Rebuild(table);
    } else {
      TableDef single = table;
      single.Indexes = {table.Indexes.back()};
      impl_->CreateIndexes(single);
    }
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
    const Field* keyBefore = RowKey(table);
    table.Indexes.erase(found);
    if (RowKey(table) != keyBefore) impl_->Rebuild(table);
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
    impl_->countersNearEnd = impl_->countersNearEnd || last > kCounterWatch;
  });
}

}  // namespace scorvane::engine
