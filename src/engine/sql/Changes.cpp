#include "engine/sql/Changes.h"

#include <fmt/format.h>

#include <algorithm>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Expressions.h"
#include "engine/sql/Queries.h"

namespace scorvane::engine::sql {
namespace {

bool HasSubquery(const Expr& e) {
  if (e.query) return true;
  return std::any_of(e.args.begin(), e.args.end(), [](const ExprPtr& arg) { return HasSubquery(*arg); });
}

// A piece on its way into a field.
std::string StoredPiece(Translation& t, Piece piece, const TableDef& table, const Field& field) {
  return t.StoreCall(AsArgument(std::move(piece)), table, field);
}

// The expression, converted to the field.
std::string StoredExpr(Translation& t, const Expr& e, const TableDef& table, const Field& field,
                       Scope& scope) {
  if (e.kind == Expr::Kind::Literal) return t.Param(e, false, TargetFor(table, field));
  if (e.kind == Expr::Kind::Unary && e.op == Op::Negate && e.args[0]->kind == Expr::Kind::Literal &&
      e.args[0]->value.IsNumber())
    return t.Param(*e.args[0], true, TargetFor(table, field));
  if (e.kind == Expr::Kind::Null) {
    const auto target = TargetFor(table, field);
    const bool allowed = !field.Required && !target->nullForbidden && field.Type != FieldType::Boolean;
    if (allowed || field.IsCounter()) return "NULL";
  }
  if (e.kind == Expr::Kind::Boolean && field.Type == FieldType::Boolean)
    return e.value.ToBoolean() ? "-1" : "0";
  return StoredPiece(t, TranslateExpr(t, e, scope), table, field);
}

// What a field gets that a new row does not name; empty for Null.
std::string OmittedValue(Translation& t, const TableDef& table, const Field& field) {
  auto target = TargetFor(table, field);
  if (!field.DefaultValue.empty()) {
    Expr literal;
    literal.kind = Expr::Kind::Literal;
    literal.value = Value(field.DefaultValue);
    return t.Param(literal, false, std::move(target));
  }
  if (field.Type == FieldType::Boolean) return "0";
  if (!field.Required && !target->nullForbidden) return {};
  return t.StoreCall("NULL", table, field);
}

std::string WhereText(Translation& t, const ExprPtr& where, Scope& scope) {
  return where ? " WHERE " + AsCondition(TranslateExpr(t, *where, scope)) : std::string();
}

}  // namespace

void TranslateInsert(Translation& t, const Statement& statement) {
  Plan& plan = t.plan;
  if (statement.hasInPath) {
    if (!statement.query)
      throw EngineError(kSyntaxError, "an INSERT into another database takes a SELECT", {},
                        statement.tablePosition);
    TranslateQuery(t, *statement.query, false);
    plan.inPath = statement.inPath;
    plan.inTable = statement.table;
    plan.inColumns = statement.columns;
    return;
  }
  const TableDef& table = t.NeedTable(statement.table, statement.tablePosition);
  std::vector<Output> outputs;
  std::string from;
  std::vector<std::string> names = statement.columns;
  std::size_t count = statement.values.size();
  if (statement.query) {
    from = QuerySql(t, *statement.query, nullptr, outputs, true);
    count = outputs.size();
    // Without a list of fields the query's columns name them.
    if (names.empty())
      for (const Output& output : outputs) names.push_back(output.column.name);
  } else if (names.empty()) {
    for (const Field& field : table.Fields) names.push_back(field.Name);
  }
  if (names.size() != count) throw EngineError(kValueCountDiffers);

  Scope scope;
  std::string columns;
  std::string values;
  std::vector<const Field*> given;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Field* field = table.FindField(names[i]);
    if (field == nullptr) {
      throw EngineError(kUnknownInsertField, names[i], {},
                        i < statement.columnPositions.size() ? statement.columnPositions[i] : 0);
    }
    if (std::find(given.begin(), given.end(), field) != given.end())
      throw EngineError(kSyntaxError, fmt::format("the field '{}' stands twice", names[i]));
    given.push_back(field);
    columns += (i > 0 ? ", " : "") + StoreName(field->Name);
    if (i > 0) values += ", ";
    values += statement.query ? StoredPiece(t, ValuePiece("sv_from." + OutputName(i), outputs[i].column.type),
                                            table, *field)
                              : StoredExpr(t, *statement.values[i], table, *field, scope);
  }
  for (const Field& field : table.Fields) {
    if (field.IsCounter()) plan.usesCounter = true;
    if (std::find(given.begin(), given.end(), &field) != given.end() || field.IsCounter()) continue;
    const std::string value = OmittedValue(t, table, field);
    if (value.empty()) continue;
    columns += (columns.empty() ? "" : ", ") + StoreName(field.Name);
    values += (values.empty() ? "" : ", ") + value;
  }
  plan.table = table.Name;
  const std::string target =
      "INSERT INTO " + StoreName(table.Name) + (columns.empty() ? "" : " (" + columns + ")");
  plan.sql = statement.query ? target + " SELECT " + values + " FROM (" + from + ") AS sv_from"
                             : target + " VALUES (" + values + ")";
}

void TranslateUpdate(Translation& t, const Statement& statement) {
  Scope scope;
  AddSources(t, statement.sources, scope);
  ScopeSource* target = nullptr;
  std::vector<const Field*> fields;
  bool subquery = false;
  for (const Assignment& assignment : statement.assignments) {
    ScopeSource* owner = nullptr;
    const Field* field = nullptr;
    for (ScopeSource& source : scope.sources) {
      if (!assignment.qualifier.empty() && !SameName(source.name, assignment.qualifier)) continue;
      const Field* candidate = source.table == nullptr ? nullptr : source.table->FindField(assignment.name);
      if (candidate == nullptr) continue;
      if (field != nullptr) throw EngineError(kAmbiguousField, assignment.name, {}, assignment.position);
      owner = &source;
      field = candidate;
    }
    if (field == nullptr)
      throw EngineError(kTooFewParameters, "1", "'" + assignment.name + "'", assignment.position);
    if (target != nullptr && target != owner) throw EngineError(kNotUpdatable);
    if (std::find(fields.begin(), fields.end(), field) != fields.end())
      throw EngineError(kSyntaxError, fmt::format("the field '{}' is set twice", field->Name), {},
                        assignment.position);
    target = owner;
    fields.push_back(field);
    subquery = subquery || HasSubquery(*assignment.expr);
  }
  if (target == nullptr) throw EngineError(kNotUpdatable);
  const TableDef& table = *target->table;
  const bool direct = scope.sources.size() == 1 && !subquery;
  std::string sets;
  std::string values;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::string value = StoredExpr(t, *statement.assignments[i].expr, table, *fields[i], scope);
    if (i > 0) sets += ", ";
    sets += StoreName(fields[i]->Name) + " = ";
    if (direct) {
      sets += value;
    } else {
      sets += fmt::format("sv_from.sv_value{}", i);
      values += fmt::format(", {} AS sv_value{}", value, i);
    }
    t.plan.setsCounter = t.plan.setsCounter || fields[i]->IsCounter();
  }
  const std::string where = WhereText(t, statement.where, scope);
  t.plan.table = table.Name;
  if (direct) {
    t.plan.sql = fmt::format("UPDATE {} AS {} SET {}{}", target->body, target->store, sets, where);
    return;
  }
  const std::string key = target->KeyText();
  t.plan.sql = fmt::format(
      "UPDATE {0} SET {1} FROM (SELECT {2} AS sv_key{3}{4}{5}) AS sv_from WHERE {0}._rowid_ = sv_from.sv_key",
      StoreName(table.Name), sets, key, values, FromText(scope), where);
}

void TranslateDelete(Translation& t, const Statement& statement) {
  Scope scope;
  AddSources(t, statement.sources, scope);
  ScopeSource* target = nullptr;
  for (ScopeSource& source : scope.sources)
    if (target == nullptr && (statement.table.empty() || SameName(source.name, statement.table)))
      target = &source;
  if (target == nullptr) throw EngineError(kUnknownTable, statement.table, {}, statement.tablePosition);
  if (target->table == nullptr || (statement.table.empty() && scope.sources.size() > 1))
    throw EngineError(kNotUpdatable);
  const std::string where = WhereText(t, statement.where, scope);
  t.plan.table = target->table->Name;
  if (scope.sources.size() == 1 && (!statement.where || !HasSubquery(*statement.where))) {
    t.plan.sql = fmt::format("DELETE FROM {} AS {}{}", target->body, target->store, where);
    return;
  }
  const std::string key = target->KeyText();
  t.plan.sql = fmt::format("DELETE FROM {} WHERE _rowid_ IN (SELECT {}{}{})", target->body, key,
                           FromText(scope), where);
}

}  // namespace scorvane::engine::sql
