#include "engine/Database.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/LimitGuard.h"
#include "engine/RecordsetState.h"
#include "engine/sql/Parser.h"

namespace scorvane::engine {
namespace {

const std::size_t kShortText = std::string().capacity();  // needs no memory of its own

// The limits of a statement, known to the connection while it runs.
class Limited {
 public:
  Limited(Database::Impl& impl, const QueryLimits& limits)
      : impl_(impl), before_(impl.limits), guard(impl.connection.get(), limits) {
    impl_.limits = &guard;
  }
  Limited(const Limited&) = delete;
  Limited& operator=(const Limited&) = delete;
  ~Limited() { impl_.limits = before_; }

 private:
  Database::Impl& impl_;
  const LimitGuard* before_;

 public:
  LimitGuard guard;
};

std::unique_ptr<Recordset::State> Fetch(Database::Impl& impl, Prepared& prepared, RecordsetType type,
                                        LimitGuard& guard) {
  auto state = std::make_unique<Recordset::State>();
  state->type = type;
  const sql::Plan& plan = prepared.plan;
  state->columns = plan.columns;
  sqlite3_stmt* statement = prepared.statement.get();
  const ResetGuard reset(statement);
  const auto count = static_cast<int>(state->columns.size());
  constexpr std::size_t kMostReserved = 10'000;
  state->values.reserve(std::min(prepared.lastValues, kMostReserved));
  while (impl.Step(prepared)) {
    std::size_t bytes = state->columns.size() * sizeof(Value);
    for (int i = 0; i < count; ++i) {
      state->values.push_back(ReadColumn(statement, i, state->columns[static_cast<std::size_t>(i)].type));
      const std::string& text = state->values.back().Text();
      if (text.capacity() > kShortText) bytes += text.capacity();
    }
    guard.AddBytes(bytes);
    if (type == RecordsetType::Dynaset) state->keys.push_back(sqlite3_column_int64(statement, count));
    ++state->rows;
  }
  prepared.lastValues = state->values.size();
  if (type == RecordsetType::Dynaset) {
    state->keyTable = plan.keyTable;
    state->rowSql = plan.rowSql;
    state->unit = impl.units > 0 ? impl.unitCount : 0;
    state->changes = impl.Changes();
    // The literals in its columns, which are gone when a row is read again.
    for (const sql::PlanParam& param : plan.params) {
      const Value value = param.literal < 0
                              ? param.fixed
                              : impl.lexed.literals[static_cast<std::size_t>(param.literal)].ToValue();
      state->rowValues.push_back(param.negate ? Value(-value.ToDouble()) : value);
    }
  }
  return state;
}

}  // namespace

std::int64_t Database::Execute(std::string_view sql, const QueryLimits& limits) {
  impl_->NeedTransaction();
  impl_->RefreshSchema();
  Limited limited(*impl_, limits);
  Prepared& prepared = impl_->Find(sql, false);
  if (prepared.plan.kind == sql::Statement::Kind::Query) throw EngineError(kIsSelectQuery);
  if (!prepared.plan.inPath.empty()) return impl_->InsertInto(prepared, limited.guard);
  impl_->NeedWritable();
  impl_->BindLiterals(prepared);
  return impl_->Change(prepared);
}

Recordset Database::OpenRecordset(std::string_view sql, RecordsetType type, const QueryLimits& limits) {
  impl_->NeedTransaction();
  impl_->RefreshSchema();
  const bool dynaset = type == RecordsetType::Dynaset;
  if (dynaset) impl_->NeedWritable();
  Limited limited(*impl_, limits);
  Prepared& prepared = impl_->Find(sql, dynaset);
  if (prepared.plan.kind != sql::Statement::Kind::Query ||
      sqlite3_stmt_readonly(prepared.statement.get()) == 0)
    throw EngineError(kInvalidOperation);
  impl_->BindLiterals(prepared);
  auto state = Fetch(*impl_, prepared, type, limited.guard);
  state->database = impl_;
  return Recordset(std::move(state));
}

void Database::EachRow(std::string_view sql, const std::function<void(const RowView&)>& columns,
                       const std::function<void(const RowView&)>& row, const QueryLimits& limits) {
  impl_->NeedTransaction();
  impl_->RefreshSchema();
  // A statement of its own: the cached one of this shape may be asked for by whoever is shown a row.
  sql::Lexed lexed;
  sql::Lex(sql, lexed);
  const sql::Statement parsed = sql::Parse(lexed);
  Prepared prepared;
  prepared.plan = sql::Translate(parsed, *impl_, false);
  prepared.statement = impl_->Prepare(prepared.plan.sql);
  prepared.parameters = sqlite3_bind_parameter_count(prepared.statement.get());
  sqlite3_stmt* statement = prepared.statement.get();
  if (prepared.plan.kind != sql::Statement::Kind::Query || sqlite3_stmt_readonly(statement) == 0)
    throw EngineError(kInvalidOperation);
  std::swap(impl_->lexed, lexed);
  std::vector<Value> bound;  // the parameters point into it
  impl_->BindLiterals(prepared);
  std::swap(impl_->bound, bound);
  std::swap(impl_->lexed, lexed);
  Limited limited(*impl_, limits);
  RowView view;
  for (const sql::PlanColumn& column : prepared.plan.columns) view.names_.push_back(column.name);
  view.values_.resize(view.names_.size());
  columns(view);
  const ResetGuard reset(statement);
  while (impl_->Step(prepared)) {
    for (std::size_t i = 0; i < view.values_.size(); ++i)
      view.values_[i] = ReadColumn(statement, static_cast<int>(i), prepared.plan.columns[i].type);
    row(view);
  }
}

bool Database::IsSelect(std::string_view sql) {
  return sql::ParseText(sql).kind == sql::Statement::Kind::Query;
}

// Rows go one by one into the other database, inside its transaction.
std::int64_t Database::Impl::InsertInto(Prepared& prepared, LimitGuard& guard) {
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
  const std::unique_ptr<Recordset::State> rows = Fetch(*this, prepared, RecordsetType::Snapshot, guard);
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

std::int64_t Database::Impl::Pragma(const char* sql) {
  try {
    StatementPtr statement = Prepare(sql);
    return sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int64(statement.get(), 0) : -1;
  } catch (const EngineError&) {
    return -1;
  }
}

std::int64_t Database::Impl::DataVersion() {
  return Pragma("PRAGMA data_version");
}
std::int64_t Database::Impl::SchemaVersion() {
  return Pragma("PRAGMA schema_version");
}

bool Database::ChangedByOthers() {
  const std::int64_t now = impl_->DataVersion();
  if (now < 0) return false;
  const std::int64_t before = std::exchange(impl_->dataVersion, now);
  if (before < 0 || before == now) return false;
  impl_->NoteOthersSchema();
  return true;
}

// ---- units of work

UnitOfWork::UnitOfWork(Database& database, OnError onError, Begin begin)
    : database_(database), onError_(onError) {
  Database::Impl& impl = *database_.impl_;
  impl.NeedTransaction();
  if (impl.units == 0) {
    const bool writing = begin == Begin::Writing && !impl.readOnly;
    impl.Run(writing ? "BEGIN IMMEDIATE" : "BEGIN");
    ++impl.unitCount;
    impl.NoteOthersSchema();
  }
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
    const EngineError reason =
        impl.unitLost ? impl.lostTo.value_or(EngineError(kNoTransaction)) : EngineError(kNoTransaction);
    impl.unitLost = false;
    impl.NoteRollback();
    throw reason;
  }
  try {
    impl.Run("COMMIT");
  } catch (const EngineError&) {
    sqlite3_exec(impl.connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    impl.NoteRollback();
    throw;
  }
  impl.schemaChanged = false;
}

void UnitOfWork::TakeBack() {
  if (!open_) return;
  open_ = false;
  Database::Impl& impl = *database_.impl_;
  sqlite3_exec(impl.connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  impl.NoteRollback();
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
