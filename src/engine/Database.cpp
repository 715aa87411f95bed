#include "engine/Database.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "engine/Collation.h"
#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/RecordsetState.h"
#include "engine/sql/Parser.h"

namespace scorvane::engine {
namespace {

// Beyond these the caches start anew: their use is the few shapes that an operation repeats.
constexpr std::size_t kMostShapes = 400;
constexpr std::size_t kMostTexts = 200;

Value ReadColumn(sqlite3_stmt* statement, int column, sql::SqlType type) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER: {
      const sqlite3_int64 whole = sqlite3_column_int64(statement, column);
      if (type == sql::SqlType::Boolean) return Value(whole != 0);
      if (type == sql::SqlType::Single) return Value(static_cast<float>(whole));
      if (type == sql::SqlType::Date) return Value::FromDate(static_cast<double>(whole));
      if (whole >= INT32_MIN && whole <= INT32_MAX) return Value(static_cast<std::int32_t>(whole));
      return Value(static_cast<double>(whole));
    }
    case SQLITE_FLOAT: {
      const double number = sqlite3_column_double(statement, column);
      if (type == sql::SqlType::Single) return Value(static_cast<float>(number));
      if (type == sql::SqlType::Date) return Value::FromDate(number);
      return Value(number);
    }
    default: {
      const auto* text = static_cast<const char*>(sqlite3_column_blob(statement, column));
      const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
      return Value(text == nullptr ? std::string_view() : std::string_view(text, size));
    }
  }
}

class Reset {
 public:
  explicit Reset(sqlite3_stmt* statement) : statement_(statement) {}
  Reset(const Reset&) = delete;
  Reset& operator=(const Reset&) = delete;
  ~Reset() { sqlite3_reset(statement_); }

 private:
  sqlite3_stmt* statement_;
};

}  // namespace

// ---- preparing

void Database::Impl::Run(const std::string& storeSql) {
  const int code = sqlite3_exec(connection.get(), storeSql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) ThrowStoreError(connection.get(), sqlite3_extended_errcode(connection.get()), path);
}

StatementPtr Database::Impl::Prepare(std::string_view storeSql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(connection.get(), storeSql.data(), static_cast<int>(storeSql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  StatementPtr owned(statement);
  if (code == SQLITE_ERROR) throw EngineError(kTooComplex, sqlite3_errmsg(connection.get()));
  if (code != SQLITE_OK) ThrowStoreError(connection.get(), code, path);
  return owned;
}

Prepared& Database::Impl::Find(std::string_view text, bool dynaset) {
  sql::Lex(text, lexed);
  if (dynaset) lexed.shape += "?dynaset";
  auto shaped = byShape.find(std::string_view(lexed.shape));
  if (shaped != byShape.end() && shaped->second) return *shaped->second;
  std::string textKey;
  if (shaped != byShape.end()) {
    textKey = std::string(text) + (dynaset ? "?dynaset" : "");
    auto found = byText.find(textKey);
    if (found != byText.end()) return *found->second;
  }
  const sql::Statement statement = sql::Parse(lexed);
  auto prepared = std::make_unique<Prepared>();
  prepared->plan = sql::Translate(statement, *this, dynaset);
  prepared->statement = Prepare(prepared->plan.sql);
  prepared->parameters = sqlite3_bind_parameter_count(prepared->statement.get());
  if (!prepared->plan.needsLiterals) {
    if (byShape.size() > kMostShapes) byShape.clear();
    return *byShape.insert_or_assign(lexed.shape, std::move(prepared)).first->second;
  }
  byShape.insert_or_assign(lexed.shape, nullptr);
  if (textKey.empty()) textKey = std::string(text) + (dynaset ? "?dynaset" : "");
  if (byText.size() > kMostTexts) byText.clear();
  return *byText.insert_or_assign(std::move(textKey), std::move(prepared)).first->second;
}

void Database::Impl::ClearCache() {
  byShape.clear();
  byText.clear();
  updates.clear();
  targetNumbers.clear();
  functions.targets.clear();
}

void Database::Impl::DropDeletes() {
  for (Cache* cache : {&byShape, &byText}) {
    std::erase_if(*cache, [](const auto& entry) {
      return entry.second && entry.second->plan.kind == sql::Statement::Kind::Delete;
    });
  }
}

int Database::Impl::AddTarget(std::shared_ptr<const StoreTarget> target) {
  const auto [found, added] =
      targetNumbers.try_emplace(target->label, static_cast<int>(functions.targets.size()));
  if (added) functions.targets.push_back(std::move(target));
  return found->second;
}

void Database::Impl::BindLiterals(Prepared& prepared) {
  const std::vector<sql::PlanParam>& params = prepared.plan.params;
  const char decimal = workspace->DecimalSeparator();
  sqlite3_stmt* statement = prepared.statement.get();
  bound.clear();
  bound.reserve(params.size());  // the texts must not move once they are bound
  const int count = std::min(static_cast<int>(params.size()), prepared.parameters);
  for (int i = 0; i < count; ++i) {
    const sql::PlanParam& param = params[static_cast<std::size_t>(i)];
    const StoreTarget* target = param.target.get();
    if (param.literal >= 0) {
      const sql::Literal& literal = lexed.literals[static_cast<std::size_t>(param.literal)];
      // The two that make up nearly every import go in without a detour over a Value.
      if (literal.kind == sql::Literal::Kind::Text && literal.quote == 0 &&
          (target == nullptr || (target->field.Type == FieldType::Text && !literal.text.empty() &&
                                 literal.text.size() <= static_cast<std::size_t>(target->field.Size)))) {
        sqlite3_bind_text(statement, i + 1, literal.text.data(), static_cast<int>(literal.text.size()),
                          SQLITE_STATIC);
        continue;
      }
      if (literal.kind == sql::Literal::Kind::Integer &&
          (target == nullptr || target->field.Type == FieldType::Long ||
           (target->field.Type == FieldType::Integer && literal.number <= 32767))) {
        const auto whole = static_cast<int>(literal.number);
        sqlite3_bind_int(statement, i + 1, param.negate ? -whole : whole);
        continue;
      }
    }
    Value value =
        param.literal >= 0 ? lexed.literals[static_cast<std::size_t>(param.literal)].ToValue() : param.fixed;
    if (param.negate) value = Value(-value.ToDouble());
    bound.push_back(target == nullptr ? std::move(value) : ConvertForField(value, *target, decimal));
    Bind(statement, i + 1, bound.back());
  }
}

// ---- running

bool Database::Impl::Step(Prepared& prepared) {
  const int code = sqlite3_step(prepared.statement.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  ThrowStepError(prepared, code);
}

void Database::Impl::ThrowStepError(Prepared& prepared, int) {
  const int code = sqlite3_extended_errcode(connection.get());
  std::exception_ptr pending;
  std::swap(pending, functions.pending);
  if (units > 0 && sqlite3_get_autocommit(connection.get()) != 0) unitLost = true;
  if (pending) {
    sqlite3_reset(prepared.statement.get());
    std::rethrow_exception(pending);
  }
  if ((code & 0xFF) == SQLITE_CONSTRAINT) {
    sqlite3_reset(prepared.statement.get());
    // The table is the first name of the statement's text: INSERT INTO "T", UPDATE "T", DELETE FROM "T".
    const std::string& text = prepared.plan.sql;
    const std::size_t from = text.find('"');
    const std::size_t to = text.find('"', from + 1);
    const std::string table = from == std::string::npos || to == std::string::npos
                                  ? std::string()
                                  : text.substr(from + 1, to - from - 1);
    if (code == SQLITE_CONSTRAINT_FOREIGNKEY) {
      const std::string parent = MissingParent(prepared);
      if (!parent.empty()) throw EngineError(kRelatedRecordRequired, parent);
      std::string child;
      for (const Relation& relation : relations)
        if (SameName(relation.Table, table)) child = relation.ForeignTable;
      throw EngineError(kRelatedRecordsExist, child);
    }
    if (code == SQLITE_CONSTRAINT_NOTNULL) throw EngineError(kNullInIndex, table);
    throw EngineError(kDuplicateKey, table);
  }
  if (code == SQLITE_ERROR && std::string_view(sqlite3_errmsg(connection.get())) == "integer overflow") {
    sqlite3_reset(prepared.statement.get());
    throw EngineError(kOverflow, "a sum", "Long");
  }
  ThrowStoreError(connection.get(), code, path);
}

// The statement is run once more with the check put off, the file is asked which rows lack their parent, and
// all of it is taken back.
std::string Database::Impl::MissingParent(Prepared& prepared) {
  std::string parent;
  Run("SAVEPOINT sv_parent");
  Run("PRAGMA defer_foreign_keys=ON");
  if (sqlite3_step(prepared.statement.get()) == SQLITE_DONE) {
    StatementPtr check = Prepare("PRAGMA foreign_key_check");
    if (sqlite3_step(check.get()) == SQLITE_ROW) {
      const auto* child = reinterpret_cast<const char*>(sqlite3_column_text(check.get(), 0));
      const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(check.get(), 2));
      // A row that lost its parent is a related record, not a missing one.
      const std::string changed = "INTO " + StoreName(child == nullptr ? "" : child);
      const std::string updated = "UPDATE " + StoreName(child == nullptr ? "" : child);
      const bool ours =
          prepared.plan.sql.find(changed) != std::string::npos || prepared.plan.sql.starts_with(updated);
      if (name != nullptr && ours) parent = name;
    }
  }
  functions.pending = nullptr;
  sqlite3_reset(prepared.statement.get());
  Run("ROLLBACK TO sv_parent");
  Run("RELEASE sv_parent");
  Run("PRAGMA defer_foreign_keys=OFF");
  return parent;
}

void Database::Impl::NeedTransaction() const {
  if (unitLost) throw EngineError(kNoTransaction);
}

void Database::Impl::NeedWritable() const {
  if (readOnly) throw EngineError(kReadOnly);
}

std::int64_t Database::Impl::Change(Prepared& prepared) {
  const Reset reset(prepared.statement.get());
  Step(prepared);
  return sqlite3_changes64(connection.get());
}

std::int64_t Database::Execute(std::string_view sql) {
  impl_->NeedTransaction();
  Prepared& prepared = impl_->Find(sql, false);
  if (prepared.plan.kind == sql::Statement::Kind::Query) throw EngineError(kIsSelectQuery);
  if (!prepared.plan.inPath.empty()) return impl_->InsertInto(prepared);
  impl_->NeedWritable();
  impl_->BindLiterals(prepared);
  return impl_->Change(prepared);
}

namespace {

std::unique_ptr<Recordset::State> Fetch(Database::Impl& impl, Prepared& prepared, RecordsetType type) {
  auto state = std::make_unique<Recordset::State>();
  state->type = type;
  state->database = &impl;
  state->columns = prepared.plan.columns;
  state->keyTable = prepared.plan.keyTable;
  sqlite3_stmt* statement = prepared.statement.get();
  const Reset reset(statement);
  const auto count = static_cast<int>(state->columns.size());
  while (impl.Step(prepared)) {
    for (int i = 0; i < count; ++i)
      state->values.push_back(ReadColumn(statement, i, state->columns[static_cast<std::size_t>(i)].type));
    if (type == RecordsetType::Dynaset) state->keys.push_back(sqlite3_column_int64(statement, count));
    ++state->rows;
  }
  return state;
}

}  // namespace

Recordset Database::OpenRecordset(std::string_view sql, RecordsetType type) {
  impl_->NeedTransaction();
  const bool dynaset = type == RecordsetType::Dynaset;
  if (dynaset) impl_->NeedWritable();
  Prepared& prepared = impl_->Find(sql, dynaset);
  if (prepared.plan.kind != sql::Statement::Kind::Query ||
      sqlite3_stmt_readonly(prepared.statement.get()) == 0)
    throw EngineError(kInvalidOperation);
  impl_->BindLiterals(prepared);
  return Recordset(Fetch(*impl_, prepared, type));
}

bool Database::IsSelect(std::string_view sql) {
  return sql::ParseText(sql).kind == sql::Statement::Kind::Query;
}

// Rows go one by one into the other database, inside its transaction.
std::int64_t Database::Impl::InsertInto(Prepared& prepared) {
  std::unique_ptr<Database> opened;
  Database* target = workspace->FindDatabase(prepared.plan.inPath);
  if (target == nullptr) {
    opened = workspace->OpenDatabase(prepared.plan.inPath);
    target = opened.get();
  }
  Impl& other = *target->impl_;
  other.NeedTransaction();
  other.NeedWritable();
  const sql::Plan& plan = prepared.plan;
  const TableDef* table = other.FindTable(plan.inTable);
  if (table == nullptr) throw EngineError(kUnknownTable, plan.inTable);

  BindLiterals(prepared);
  const std::unique_ptr<Recordset::State> rows = Fetch(*this, prepared, RecordsetType::Snapshot);
  std::vector<std::string> names = plan.inColumns;
  if (names.empty())
    for (const sql::PlanColumn& column : rows->columns) names.push_back(column.name);
  if (names.size() != rows->columns.size()) throw EngineError(kValueCountDiffers);
  std::string text = "INSERT INTO [" + table->Name + "] (";
  std::string marks;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += fmt::format("{}[{}]", i > 0 ? ", " : "", names[i]);
    marks += i > 0 ? ", Null" : "Null";
  }
  // A plan with fixed values in the places of the literals, set for each row.
  sql::Statement statement = sql::ParseText(text + ") VALUES (" + marks + ")");
  for (sql::ExprPtr& value : statement.values) value->kind = sql::Expr::Kind::Literal;
  Prepared insert;
  insert.plan = sql::Translate(statement, other, false);
  insert.statement = other.Prepare(insert.plan.sql);
  insert.parameters = sqlite3_bind_parameter_count(insert.statement.get());
  std::int64_t count = 0;
  other.Atomically([&] {
    for (std::size_t row = 0; row < rows->rows; ++row) {
      for (std::size_t i = 0; i < names.size(); ++i)
        insert.plan.params[i].fixed = rows->values[row * names.size() + i];
      other.BindLiterals(insert);
      count += other.Change(insert);
    }
  });
  return count;
}

const std::string& Database::Name() const {
  return impl_->path;
}

std::int64_t Database::FreePages() const {
  StatementPtr statement = impl_->Prepare("PRAGMA freelist_count");
  return sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int64(statement.get(), 0) : 0;
}

std::int64_t Database::Impl::DataVersion() {
  try {
    StatementPtr statement = Prepare("PRAGMA data_version");
    return sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int64(statement.get(), 0) : -1;
  } catch (const EngineError&) {
    return -1;
  }
}

bool Database::ChangedByOthers() {
  const std::int64_t now = impl_->DataVersion();
  if (now < 0) return false;
  const std::int64_t before = std::exchange(impl_->dataVersion, now);
  return before >= 0 && before != now;
}

// ---- units of work

UnitOfWork::UnitOfWork(Database& database, OnError onError, Begin begin)
    : database_(database), onError_(onError) {
  Database::Impl& impl = *database_.impl_;
  impl.NeedTransaction();
  const bool writing = begin == Begin::Writing && !impl.readOnly;
  if (impl.units == 0) impl.Run(writing ? "BEGIN IMMEDIATE" : "BEGIN");
  ++impl.units;
}

void UnitOfWork::Commit() {
  if (!open_) return;
  open_ = false;
  Database::Impl& impl = *database_.impl_;
  if (--impl.units > 0) {
    impl.NeedTransaction();
    return;
  }
  if (impl.unitLost || sqlite3_get_autocommit(impl.connection.get()) != 0) {
    impl.unitLost = false;
    throw EngineError(kNoTransaction);
  }
  try {
    impl.Run("COMMIT");
  } catch (const EngineError&) {
    sqlite3_exec(impl.connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

void UnitOfWork::TakeBack() {
  if (!open_) return;
  open_ = false;
  Database::Impl& impl = *database_.impl_;
  sqlite3_exec(impl.connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  impl.unitLost = --impl.units > 0;
}

UnitOfWork::~UnitOfWork() {
  if (open_ && onError_ == OnError::TakeBack && std::uncaught_exceptions() > exceptions_) TakeBack();
  try {
    Commit();
  } catch (const EngineError&) {  // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    // Nothing of the unit was kept; whoever must know calls Commit.
  }
}

}  // namespace scorvane::engine
