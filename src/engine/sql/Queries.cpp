#include "engine/sql/Queries.h"

#include <fmt/format.h>

#include <algorithm>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Expressions.h"
#include "engine/sql/Grouping.h"

namespace scorvane::engine::sql {
namespace {

// One term of an ORDER BY: a column of the result, or a text of its own.
struct Term {
  std::size_t output = 0;
  std::string sql;  // empty for a column of the result
  bool descending = false;

  std::string Text() const {
    return (sql.empty() ? std::to_string(output + 1) : sql) + (descending ? " DESC" : "");
  }
};

template <typename Item, typename Text>
std::string Listed(const std::vector<Item>& items, Text text) {
  std::string list;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) list += ", ";
    list += text(items[i], i);
  }
  return list;
}

// ---- columns

void AddStar(Translation& t, const SelectItem& item, Scope& scope, std::vector<Output>& outputs) {
  if (scope.grouped) throw EngineError(kNotAggregate, "*", {}, item.position);
  bool found = false;
  for (std::size_t i = 0; i < scope.sources.size(); ++i) {
    const ScopeSource& source = scope.sources[i];
    if (!item.qualifier.empty() && !SameName(source.name, item.qualifier)) continue;
    found = true;
    scope.used.insert(i);
    for (const ScopeColumn& column : source.columns) {
      Output output;
      output.column.name = column.name;
      output.column.type = column.type;
      output.sql = AsCollated(FieldPiece(t, source, column));
      output.field = &column;
      output.source = i;
      output.qualifier = source.name;
      outputs.push_back(std::move(output));
    }
  }
  if (!found) throw EngineError(kUnknownTable, item.qualifier, {}, item.position);
}

void AddItem(Translation& t, const SelectItem& item, Scope& scope, std::vector<Output>& outputs) {
  Output output;
  output.expr = item.expr.get();
  output.named = !item.alias.empty();
  // An alias may stand in other columns, so while its own is translated it must not name itself.
  if (output.named) scope.openAliases.push_back(item.alias);
  Piece piece = TranslateExpr(t, *item.expr, scope);
  if (output.named) scope.openAliases.pop_back();
  const bool isColumn = item.expr->kind == Expr::Kind::Column;
  output.column.name = output.named ? item.alias
                       : isColumn   ? item.expr->name
                                    : fmt::format("Expr{}", 1000 + outputs.size());
  if (isColumn) {
    const std::optional<Resolved> found = Resolve(*item.expr, scope);
    if (found && found->alias == nullptr && found->level == &scope) {
      // The field's name as its table has it, not as the statement spells it.
      output.field = &scope.sources[found->source].columns[found->column];
      output.source = found->source;
      output.qualifier = item.expr->qualifier;
      if (!output.named) output.column.name = output.field->name;
    }
  }
  output.column.type = piece.type;
  output.sql = AsCollated(std::move(piece));
  outputs.push_back(std::move(output));
}

// Fields of one name are told apart by their tables.
void QualifyDoubles(std::vector<Output>& outputs) {
  auto canQualify = [](const Output& o) { return o.field != nullptr && !o.named && !o.qualifier.empty(); };
  std::vector<std::size_t> doubles;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const bool twice = std::any_of(outputs.begin(), outputs.end(), [&](const Output& other) {
      return &other != &outputs[i] && canQualify(other) &&
             SameName(other.column.name, outputs[i].column.name);
    });
    if (canQualify(outputs[i]) && twice) doubles.push_back(i);
  }
  for (const std::size_t i : doubles)
    outputs[i].column.name = outputs[i].qualifier + "." + outputs[i].column.name;
}

void CollectOutputs(Translation& t, const Select& select, Scope& scope, std::vector<Output>& outputs) {
  const Temporarily checked(scope.checksGroups, scope.grouped);
  const Temporarily allowed(scope.allowsAggregates, true);
  scope.used.clear();
  for (const SelectItem& item : select.items) {
    if (item.star) {
      AddStar(t, item, scope, outputs);
    } else {
      AddItem(t, item, scope, outputs);
    }
    if (outputs.size() > kMaxColumns)
      throw EngineError(kTooComplex, "a result has too many columns", {}, item.position);
  }
  if (outputs.empty()) throw EngineError(kSyntaxError, "the query yields no column");
  scope.shown = scope.used;
  QualifyDoubles(outputs);
}

bool IsGrouped(const Query& query, const Select& select, bool inUnion) {
  if (!select.groupBy.empty() || select.having) return true;
  for (const SelectItem& item : select.items)
    if (item.expr && HasAggregate(*item.expr)) return true;
  return !inUnion && std::any_of(query.orderBy.begin(), query.orderBy.end(),
                                 [](const OrderItem& item) { return HasAggregate(*item.expr); });
}

// ---- order

// What rows are sorted or grouped by. Never a bare number, which the store would take for a column's place.
std::string KeyText(Translation& t, const Expr& e, Scope& scope) {
  Piece piece = TranslateExpr(t, e, scope);
  const std::optional<Resolved> column = e.kind == Expr::Kind::Column ? Resolve(e, scope) : std::nullopt;
  if (column && column->alias == nullptr) return AsCollated(std::move(piece));
  const SqlType type = piece.type;
  return AsCollated(ValuePiece("coalesce(" + AsValue(std::move(piece)) + ", NULL)", type));
}

// The place of a result's column that an ORDER BY names by its number, or that is the same expression.
std::optional<std::size_t> FindOutput(Translation& t, const Expr& e, Scope& scope,
                                      const std::vector<Output>& outputs) {
  if (e.kind == Expr::Kind::Literal && e.value.GetType() == Value::Type::Long) {
    const std::int32_t place = t.LiteralValue(e).ToLong();
    if (place < 1 || static_cast<std::size_t>(place) > outputs.size())
      throw EngineError(kSyntaxError, "ORDER BY names a column that is not there", {}, e.position);
    return static_cast<std::size_t>(place) - 1;
  }
  std::optional<Resolved> column;
  if (e.kind == Expr::Kind::Column) column = Resolve(e, scope);
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const Output& output = outputs[i];
    if (column && column->level == &scope && column->alias == nullptr && output.field != nullptr) {
      if (column->source == output.source &&
          output.field == &scope.sources[column->source].columns[column->column])
        return i;
      continue;
    }
    if (output.expr != nullptr && SameExpr(t, e, scope, *output.expr, scope)) return i;
  }
  return std::nullopt;
}

std::vector<Term> OrderTerms(Translation& t, const Query& query, Scope& scope,
                             const std::vector<Output>& outputs) {
  const Temporarily checked(scope.checksGroups, scope.grouped);
  const Temporarily allowed(scope.allowsAggregates, true);
  std::vector<Term> terms;
  for (const OrderItem& item : query.orderBy) {
    Term term;
    term.descending = item.descending;
    if (const auto place = FindOutput(t, *item.expr, scope, outputs)) {
      term.output = *place;
    } else {
      term.sql = KeyText(t, *item.expr, scope);
    }
    terms.push_back(std::move(term));
  }
  return terms;
}

std::string OrderText(const std::vector<Term>& terms) {
  if (terms.empty()) return {};
  return " ORDER BY " + Listed(terms, [](const Term& term, std::size_t) { return term.Text(); });
}

// ---- SELECT

// Once for each set of rows that the columns come from; the other tables only decide which rows.
std::string DistinctRowText(Scope& scope) {
  if (scope.grouped || scope.shown.empty() || scope.shown.size() == scope.sources.size()) return {};
  std::string text;
  for (const std::size_t i : scope.shown)
    text += (text.empty() ? " GROUP BY " : ", ") + scope.sources[i].KeyText();
  return text;
}

// Everything behind the columns but the order.
std::string TailText(Translation& t, const Select& select, Scope& scope) {
  std::string conditions;
  if (select.where) conditions += " WHERE " + AsCondition(TranslateExpr(t, *select.where, scope));
  for (std::size_t i = 0; i < select.groupBy.size(); ++i)
    conditions += (i == 0 ? " GROUP BY " : ", ") + KeyText(t, *select.groupBy[i], scope);
  if (select.having) {
    const Temporarily allowed(scope.allowsAggregates, true);
    const Temporarily checked(scope.checksGroups, true);
    conditions += " HAVING " + AsCondition(TranslateExpr(t, *select.having, scope));
  }
  if (select.distinctRow) conditions += DistinctRowText(scope);
  return FromText(scope) + conditions;
}

// TOP by rank: with an order the rows that tie with the last one belong to it, too.
std::string TopSql(const Select& select, const std::vector<Output>& outputs, std::vector<Term> terms,
                   const std::string& items, const std::string& tail) {
  std::string extra;
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (terms[i].sql.empty()) {
      terms[i].sql = OutputName(terms[i].output);
      continue;
    }
    const std::string name = fmt::format("sv_order{}", i + 1);
    extra += fmt::format(", {} AS {}", terms[i].sql, name);
    terms[i].sql = name;
  }
  const std::string names = Listed(outputs, [](const Output&, std::size_t i) { return OutputName(i); });
  const std::string over = OrderText(terms);
  const char* rank = terms.empty() ? "row_number" : "rank";
  const std::string count =
      select.topPercent ? fmt::format("(sv_total * {} + 99) / 100", select.top) : std::to_string(select.top);
  return fmt::format(
      "SELECT {0} FROM (SELECT {0}, {1}() OVER ({2}) AS sv_rank, count(*) OVER () AS sv_total FROM "
      "(SELECT {3}{4}{5}{6})) WHERE sv_rank <= {7} ORDER BY sv_rank",
      names, rank, over.empty() ? over : over.substr(1), select.distinct ? "DISTINCT " : "", items, extra,
      tail, count);
}

std::string SelectSql(Translation& t, const Query& query, const Select& select, Scope* parent,
                      std::vector<Output>& outputs, bool ordered, bool inUnion) {
  Scope scope;
  scope.parent = parent;
  AddSources(t, select.sources, scope);
  scope.select = &select;
  scope.grouped = IsGrouped(query, select, inUnion);
  CollectOutputs(t, select, scope, outputs);
  const std::string tail = TailText(t, select, scope);
  const std::string items = Listed(
      outputs, [](const Output& output, std::size_t i) { return output.sql + " AS " + OutputName(i); });
  std::vector<Term> terms;
  if (!inUnion) terms = OrderTerms(t, query, scope, outputs);
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (select.distinct && !terms[i].sql.empty())
      throw EngineError(kOrderByConflictsWithDistinct, Print(*query.orderBy[i].expr), {},
                        query.orderBy[i].expr->position);
  }
  const bool ranked = select.top >= 0 && (select.topPercent || !terms.empty());
  const bool ownOrder = !scope.grouped && !select.distinct && scope.IsOneTable();
  if (terms.empty() && ownOrder && (select.top >= 0 || (ordered && !inUnion))) {
    Term key;
    key.sql = scope.sources[0].store + "._rowid_";
    terms.push_back(std::move(key));
  }
  std::string sql;
  if (ranked) {
    sql = TopSql(select, outputs, std::move(terms), items, tail);
  } else {
    sql = (select.distinct ? "SELECT DISTINCT " : "SELECT ") + items + tail + OrderText(terms);
    if (select.top >= 0) sql += fmt::format(" LIMIT {}", select.top);
  }
  // A SELECT of a UNION cannot have an order or a limit of its own.
  if (inUnion && select.top >= 0) sql = "SELECT * FROM (" + sql + ")";
  t.Spend(sql.size());
  return sql;
}

// A union sorts by its columns, which are those of its first SELECT.
std::string UnionSql(Translation& t, const Query& query, Scope* parent, std::vector<Output>& outputs) {
  std::string sql;
  for (std::size_t i = 0; i < query.selects.size(); ++i) {
    std::vector<Output> own;
    const std::string part = SelectSql(t, query, query.selects[i], parent, own, false, true);
    if (i == 0) {
      outputs = std::move(own);
    } else {
      if (own.size() != outputs.size()) throw EngineError(kUnionColumnsDiffer);
      for (std::size_t c = 0; c < own.size(); ++c)
        outputs[c].column.type = CommonType(outputs[c].column.type, own[c].column.type);
      sql += query.unionAll[i - 1] ? " UNION ALL " : " UNION ";
    }
    sql += part;
  }
  std::vector<Term> terms;
  for (const OrderItem& item : query.orderBy) {
    const Expr& e = *item.expr;
    Term term;
    term.output = outputs.size();
    term.descending = item.descending;
    if (e.kind == Expr::Kind::Literal && e.value.GetType() == Value::Type::Long)
      term.output = static_cast<std::size_t>(t.LiteralValue(e).ToLong() - 1);
    for (std::size_t c = 0; c < outputs.size() && e.kind == Expr::Kind::Column; ++c)
      if (SameName(outputs[c].column.name, e.name)) term.output = c;
    if (term.output >= outputs.size())
      throw EngineError(kSyntaxError, "the ORDER BY of a UNION names its columns", {}, e.position);
    terms.push_back(std::move(term));
  }
  // What outputs point to ended with the SELECTs.
  for (Output& output : outputs) output.field = nullptr;
  return sql + OrderText(terms);
}

void TranslateDynaset(Translation& t, const Query& query) {
  const Select& select = query.selects[0];
  const bool simple = query.selects.size() == 1 && select.sources.size() == 1 &&
                      select.sources[0]->kind == Source::Kind::Table && select.groupBy.empty() &&
                      !select.having && !select.distinct && select.top < 0;
  if (!simple || IsGrouped(query, select, false)) throw EngineError(kNotUpdatable);
  Scope scope;
  AddSources(t, select.sources, scope);
  scope.select = &select;
  std::vector<Output> outputs;
  CollectOutputs(t, select, scope, outputs);
  const std::string columns = Listed(outputs, [](const Output& output, std::size_t) { return output.sql; });
  const std::string key = scope.sources[0].KeyText();
  const std::string from = FromText(scope);
  Term last;
  last.sql = key;
  Plan& plan = t.plan;
  const std::string where =
      select.where ? " WHERE " + AsCondition(TranslateExpr(t, *select.where, scope)) : std::string();
  std::vector<Term> terms = OrderTerms(t, query, scope, outputs);
  terms.push_back(std::move(last));
  plan.sql = "SELECT " + columns + ", " + key + from + where + OrderText(terms);
  plan.rowKeyParam = static_cast<int>(plan.params.size()) + 1;
  plan.rowSql = fmt::format("SELECT {}{} WHERE {} = ?{}", columns, from, key, plan.rowKeyParam);
  plan.keyTable = scope.sources[0].table->Name;
  for (Output& output : outputs) {
    if (output.field != nullptr) output.column.field = output.field->name;
    plan.columns.push_back(std::move(output.column));
  }
}

}  // namespace

std::string OutputName(std::size_t place) {
  return "c" + std::to_string(place + 1);
}

std::string QuerySql(Translation& t, const Query& query, Scope* parent, std::vector<Output>& outputs,
                     bool ordered) {
  if (query.selects.size() > 1) return UnionSql(t, query, parent, outputs);
  std::string sql = SelectSql(t, query, query.selects[0], parent, outputs, ordered, false);
  for (Output& output : outputs) output.field = nullptr;  // its scope has ended
  return sql;
}

void TranslateQuery(Translation& t, const Query& query, bool dynaset) {
  if (dynaset) return TranslateDynaset(t, query);
  std::vector<Output> outputs;
  t.plan.sql = QuerySql(t, query, nullptr, outputs, true);
  for (Output& output : outputs) t.plan.columns.push_back(std::move(output.column));
}

}  // namespace scorvane::engine::sql
