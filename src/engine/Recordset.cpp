#include "engine/Recordset.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/RecordsetState.h"
#include "engine/sql/Translator.h"

namespace scorvane::engine {

std::shared_ptr<Database::Impl> Recordset::State::NeedDatabase() const {
  auto locked = database.lock();
  if (!locked) throw EngineError(kObjectInvalid);
  return locked;
}

void Recordset::State::Load() {
  if (loaded == current) return;
  const auto locked = NeedDatabase();
  Database::Impl& impl = *locked;
  // Inside one unit of work nobody else writes: without a change of our own the row is what it was.
  if (!impl.HasChangedSince(unit, changes)) {
    loaded = current;
    return;
  }
  impl.NeedTransaction();
  Prepared& row = impl.FindRowStatement(rowSql, columns);
  sqlite3_stmt* statement = row.statement.get();
  for (std::size_t i = 0; i < rowValues.size(); ++i) Bind(statement, static_cast<int>(i) + 1, rowValues[i]);
  sqlite3_bind_int64(statement, static_cast<int>(rowValues.size()) + 1, keys[current]);
  const ResetGuard reset(statement);
  if (!impl.Step(row)) throw EngineError(kRecordDeleted);
  for (std::size_t i = 0; i < columns.size(); ++i)
    values[current * columns.size() + i] = ReadColumn(statement, static_cast<int>(i), columns[i].type);
  loaded = current;
}

Recordset::Recordset(std::unique_ptr<State> state) : state_(std::move(state)) {}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

bool Recordset::AtEnd() const {
  return state_->current >= state_->rows;
}

void Recordset::MoveNext() {
  if (AtEnd()) throw EngineError(kNoCurrentRecord);
  state_->editing = false;
  ++state_->current;
}

void Recordset::MoveFirst() {
  state_->editing = false;
  state_->current = 0;
}

std::size_t Recordset::RecordCount() const {
  return state_->rows;
}
std::size_t Recordset::FieldCount() const {
  return state_->columns.size();
}

const std::string& Recordset::FieldName(std::size_t index) const {
  if (index >= state_->columns.size()) throw EngineError(kItemNotFound, std::to_string(index));
  return state_->columns[index].name;
}

std::size_t Recordset::FieldIndex(std::string_view name) const {
  for (std::size_t i = 0; i < state_->columns.size(); ++i)
    if (SameName(state_->columns[i].name, name)) return i;
  throw EngineError(kItemNotFound, name);
}

bool Recordset::HasField(std::string_view name) const {
  return std::any_of(state_->columns.begin(), state_->columns.end(),
                     [&](const sql::PlanColumn& column) { return SameName(column.name, name); });
}

const Value& Recordset::operator[](std::string_view name) const {
  return At(FieldIndex(name));
}

const Value& Recordset::At(std::size_t index) const {
  if (AtEnd()) throw EngineError(kNoCurrentRecord);
  if (index >= state_->columns.size()) throw EngineError(kItemNotFound, std::to_string(index));
  if (state_->type == RecordsetType::Dynaset) state_->Load();
  return state_->values[state_->current * state_->columns.size() + index];
}

void Recordset::Edit() {
  if (state_->type != RecordsetType::Dynaset) throw EngineError(kReadOnly);
  if (AtEnd()) throw EngineError(kNoCurrentRecord);
  state_->Load();
  state_->editing = true;
  state_->edits.clear();
}

void Recordset::Set(std::string_view name, Value value) {
  if (!state_->editing) throw EngineError(kReadOnly);
  const std::size_t column = FieldIndex(name);
  if (state_->columns[column].field.empty()) throw EngineError(kNotUpdatable);
  state_->edits.emplace_back(column, std::move(value));
}

void Recordset::Update() {
  if (!state_->editing) throw EngineError(kReadOnly);
  state_->editing = false;
  if (state_->edits.empty()) return;
  const auto locked = state_->NeedDatabase();
  Database::Impl& impl = *locked;
  impl.NeedTransaction();
  const TableDef& table = impl.NeedTable(state_->keyTable);
  // Kept under a key that is cheap to make: the statement's text would be built anew for every row.
  std::string& key = impl.lexed.shape;
  key = state_->keyTable;
  for (const auto& [column, value] : state_->edits) {
    key += '?';
    key += state_->columns[column].field;
  }
  auto found = impl.updates.find(key);
  if (found == impl.updates.end()) {
    auto prepared = std::make_unique<Prepared>();
    prepared->plan.kind = sql::Statement::Kind::Update;
    prepared->plan.table = table.Name;
    std::string& text = prepared->plan.sql;
    text = "UPDATE " + StoreName(table.Name) + " SET ";
    for (std::size_t i = 0; i < state_->edits.size(); ++i) {
      const std::string& name = state_->columns[state_->edits[i].first].field;
      const Field* field = table.FindField(name);
      if (field == nullptr) throw EngineError(kItemNotFound, name);
      text += fmt::format("{}{} = ?{}", i > 0 ? ", " : "", StoreName(field->Name), i + 1);
      sql::PlanParam param;
      param.target = sql::TargetFor(table, *field);
      prepared->plan.params.push_back(std::move(param));
      prepared->plan.setsCounter = prepared->plan.setsCounter || field->IsCounter();
    }
    text += fmt::format(" WHERE _rowid_ = ?{}", state_->edits.size() + 1);
    prepared->plan.params.emplace_back();
    prepared->statement = impl.Prepare(text);
    prepared->parameters = static_cast<int>(prepared->plan.params.size());
    found = impl.updates.insert_or_assign(key, std::move(prepared)).first;
  }
  Prepared& prepared = *found->second;
  const char decimal = impl.workspace->DecimalSeparator();
  for (std::size_t i = 0; i < state_->edits.size(); ++i) {
    auto& [column, value] = state_->edits[i];
    value = ConvertForField(value, *prepared.plan.params[i].target, decimal);
    Bind(prepared.statement.get(), static_cast<int>(i) + 1, value);
  }
  sqlite3_bind_int64(prepared.statement.get(), prepared.parameters, state_->keys[state_->current]);
  const bool unchanged = !impl.HasChangedSince(state_->unit, state_->changes);
  if (impl.Change(prepared) == 0) throw EngineError(kRecordDeleted);
  // The one change of this row; what a relation changes along with it counts as others' changes.
  if (unchanged) ++state_->changes;
  for (auto& [column, value] : state_->edits)
    state_->values[state_->current * state_->columns.size() + column] = std::move(value);
  state_->edits.clear();
}

std::size_t RowView::FieldIndex(std::string_view name) const {
  for (std::size_t i = 0; i < names_.size(); ++i)
    if (SameName(names_[i], name)) return i;
  throw EngineError(kItemNotFound, name);
}

}  // namespace scorvane::engine
