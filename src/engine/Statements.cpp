// Finding, binding and stepping the prepared statements, and what their failures mean.
#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "engine/DatabaseImpl.h"
#include "engine/EngineError.h"
#include "engine/LimitGuard.h"
#include "engine/Names.h"
#include "engine/sql/Parser.h"

namespace scorvane::engine {
namespace {

// Beyond these the caches start anew: their use is the few shapes that an operation repeats.
constexpr std::size_t kMostShapes = 400;
constexpr std::size_t kMostTexts = 200;

double Finite(double number) {
  if (!std::isfinite(number)) throw EngineError(kOverflow, "that is infinite", "Double");
  return number;
}

float FiniteSingle(double number) {
  const auto single = static_cast<float>(number);
  if (!std::isfinite(single)) throw EngineError(kOverflow, Value(number).ToText(), "Single");
  return single;
}

}  // namespace

ResetGuard::~ResetGuard() {
  sqlite3_reset(statement_);
}

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
      const double number = Finite(sqlite3_column_double(statement, column));
      if (type == sql::SqlType::Single) return Value(FiniteSingle(number));
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

std::string TextColumn(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  const int size = sqlite3_column_bytes(statement, column);
  return text == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(size));
}

// ---- preparing

void Database::Impl::Run(const std::string& storeSql, std::string_view table) {
  const int code = sqlite3_exec(connection.get(), storeSql.c_str(), nullptr, nullptr, nullptr);
  if ((code & 0xFF) == SQLITE_CONSTRAINT && !table.empty()) throw EngineError(kDuplicateKey, table);
  if (code != SQLITE_OK) ThrowStoreError(connection.get(), sqlite3_extended_errcode(connection.get()), path);
}

StatementPtr Database::Impl::Prepare(std::string_view storeSql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(connection.get(), storeSql.data(), static_cast<int>(storeSql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  StatementPtr owned(statement);
  if (limits != nullptr) limits->ThrowIfReached(code);
  // It was written for the store, which has bounds of its own for brackets and terms.
  if (code == SQLITE_ERROR) {
    throw EngineError(kTooComplex, fmt::format("it is nested too deeply or too long ({})",
                                               sqlite3_errmsg(connection.get())));
  }
  if (code != SQLITE_OK) ThrowStoreError(connection.get(), code, path);
  return owned;
}

Prepared& Database::Impl::Find(std::string_view text, bool dynaset) {
  const bool whole = shapes.Lex(text, lexed);
  if (dynaset) lexed.shape += "?dynaset";
  auto shaped = byShape.find(std::string_view(lexed.shape));
  if (shaped != byShape.end() && shaped->second) return *shaped->second;
  std::string textKey;
  if (shaped != byShape.end()) {
    textKey = std::string(text) + (dynaset ? "?dynaset" : "");
    auto found = byText.find(textKey);
    if (found != byText.end()) return *found->second;
  }
  if (!whole) {
    sql::Lex(text, lexed);
    if (dynaset) lexed.shape += "?dynaset";
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

Prepared& Database::Impl::FindRowStatement(const std::string& rowSql,
                                           const std::vector<sql::PlanColumn>& columns) {
  std::unique_ptr<Prepared>& kept = rowReads[rowSql];
  if (!kept) {
    auto prepared = std::make_unique<Prepared>();
    prepared->plan.columns = columns;
    prepared->statement = Prepare(rowSql);
    kept = std::move(prepared);
  }
  return *kept;
}

void Database::Impl::ClearCache() {
  byShape.clear();
  byText.clear();
  updates.clear();
  rowReads.clear();
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
           (target->field.Type == FieldType::Integer && std::fabs(literal.number) <= 32767))) {
        const auto whole = static_cast<sqlite3_int64>(literal.number);
        sqlite3_bind_int64(statement, i + 1, param.negate ? -whole : whole);
        continue;
      }
    }
    Value value =
        param.literal >= 0 ? lexed.literals[static_cast<std::size_t>(param.literal)].ToValue() : param.fixed;
    if (param.negate) value = Value(-value.ToDouble());
    if (target != nullptr) value = ConvertForField(value, *target, decimal);
    bound.push_back(std::move(value));
    Bind(statement, i + 1, bound.back());
  }
}

// ---- running

bool Database::Impl::Step(Prepared& prepared) {
  const int code = sqlite3_step(prepared.statement.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  ThrowStepError(prepared);
}

void Database::Impl::ThrowStepError(Prepared& prepared) {
  const int code = sqlite3_extended_errcode(connection.get());
  const std::string words = sqlite3_errmsg(connection.get());
  std::exception_ptr pending;
  std::swap(pending, functions.pending);
  const bool lost = units > 0 && sqlite3_get_autocommit(connection.get()) != 0;
  if (lost) {
    unitLost = true;
    lostTo.reset();
    NoteRollback();
  }
  sqlite3_reset(prepared.statement.get());
  if (pending) std::rethrow_exception(pending);
  if (limits != nullptr) limits->ThrowIfReached(code);
  const sql::Plan& plan = prepared.plan;
  if (code == SQLITE_CONSTRAINT_FOREIGNKEY) ThrowRelationError(prepared);
  if (code == SQLITE_CONSTRAINT_NOTNULL) throw EngineError(kNullInIndex, plan.table);
  if ((code & 0xFF) == SQLITE_CONSTRAINT) throw EngineError(kDuplicateKey, plan.table);
  // Our own functions throw; what is left to the store can only leave its range.
  if ((code & 0xFF) == SQLITE_ERROR && plan.totals) throw EngineError(kOverflow, "of a sum", "Long");
  // The store says that it is full, too, when it has no number left to give.
  if ((code & 0xFF) == SQLITE_FULL && plan.usesCounter && countersNearEnd)
    throw EngineError(kOverflow, "behind the last number", plan.table);
  if ((code & 0xFF) == SQLITE_ERROR) throw EngineError(kTooComplex, words);
  try {
    ThrowStoreError(connection.get(), code, path);
  } catch (const EngineError& error) {
    if (lost) lostTo = error;
    throw;
  }
}

namespace {

// The rows of a table that lack their parent: row key and which of its relations.
std::set<std::pair<std::int64_t, int>> Orphans(Database::Impl& impl, const std::string& table) {
  std::set<std::pair<std::int64_t, int>> orphans;
  const StatementPtr check = impl.Prepare("PRAGMA foreign_key_check(" + StoreName(table) + ")");
  while (sqlite3_step(check.get()) == SQLITE_ROW)
    orphans.emplace(sqlite3_column_int64(check.get(), 1), sqlite3_column_int(check.get(), 3));
  return orphans;
}

}  // namespace

// The statement is run once more with the check put off, the file is asked which rows lack their parent now
// that did not before, and all of it is taken back.
void Database::Impl::ThrowRelationError(Prepared& prepared) {
  std::set<std::string> tablesBelow;
  for (const Relation& relation : relations) tablesBelow.insert(relation.ForeignTable);
  std::map<std::string, std::set<std::pair<std::int64_t, int>>> before;
  for (const std::string& table : tablesBelow) before[table] = Orphans(*this, table);
  std::string parent;
  std::string child;
  Run("SAVEPOINT sv_parent");
  Run("PRAGMA defer_foreign_keys=ON");
  if (sqlite3_step(prepared.statement.get()) == SQLITE_DONE) {
    for (const std::string& table : tablesBelow) {
      const StatementPtr check = Prepare("PRAGMA foreign_key_check(" + StoreName(table) + ")");
      while (parent.empty() && sqlite3_step(check.get()) == SQLITE_ROW) {
        if (before[table].contains(
                {sqlite3_column_int64(check.get(), 1), sqlite3_column_int(check.get(), 3)}))
          continue;
        // A row that lost its parent is a related record, not one that misses one.
        if (SameName(table, prepared.plan.table) && prepared.plan.kind != sql::Statement::Kind::Delete) {
          parent = TextColumn(check.get(), 2);
        } else {
          child = table;
        }
      }
    }
  }
  functions.pending = nullptr;
  sqlite3_reset(prepared.statement.get());
  Run("ROLLBACK TO sv_parent");
  Run("RELEASE sv_parent");
  Run("PRAGMA defer_foreign_keys=OFF");
  if (!parent.empty()) throw EngineError(kRelatedRecordRequired, parent);
  throw EngineError(kRelatedRecordsExist, child);
}

void Database::Impl::NeedTransaction() const {
  if (unitLost) throw lostTo.value_or(EngineError(kNoTransaction));
}

void Database::Impl::NeedWritable() const {
  if (readOnly) throw EngineError(kReadOnly);
}

std::int64_t Database::Impl::Changes() const {
  return sqlite3_total_changes64(connection.get());
}

bool Database::Impl::HasChangedSince(std::int64_t unit, std::int64_t changes) const {
  return units == 0 || unit != unitCount || changes != Changes();
}

std::int64_t Database::Impl::Change(Prepared& prepared) {
  std::int64_t changed = 0;
  const auto step = [&] {
    const ResetGuard reset(prepared.statement.get());
    Step(prepared);
    changed = sqlite3_changes64(connection.get());
  };
  const sql::Plan& plan = prepared.plan;
  if (plan.setsCounter) countersNearEnd = true;
  if (!plan.usesCounter) {
    step();
    return changed;
  }
  const auto check = [&] {
    const std::int64_t last = changed > 0 ? sqlite3_last_insert_rowid(connection.get()) : 0;
    if (last > kCounterWatch) countersNearEnd = true;
    if (last > INT32_MAX) throw EngineError(kOverflow, std::to_string(last), plan.table);
  };
  if (!countersNearEnd) {
    step();
    check();
    return changed;
  }
  Atomically([&] {
    step();
    check();
  });
  return changed;
}

}  // namespace scorvane::engine
