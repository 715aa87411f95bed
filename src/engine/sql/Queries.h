// SELECT and UNION: columns, order, TOP, DISTINCT and DISTINCTROW, and the queries whose rows can be edited.
#pragma once

#include <string>
#include <vector>

#include "engine/sql/Scope.h"

namespace scorvane::engine::sql {

// A column of a result.
struct Output {
  PlanColumn column;
  std::string sql;
  bool named = false;                  // by an alias
  const Expr* expr = nullptr;          // null for one that comes of a star
  const ScopeColumn* field = nullptr;  // when it is a field of this level
  std::size_t source = 0;              // of the field
  std::string qualifier;               // of the field, as the statement names its table
};

// The name that the column at a place of a result has for the store.
std::string OutputName(std::size_t place);

// The text of a query, and its columns. `parent` is what a subquery sees of the query around it. `ordered`:
// the rows' order matters, so that a query without ORDER BY takes its table's key order.
std::string QuerySql(Translation& t, const Query& query, Scope* parent, std::vector<Output>& outputs,
                     bool ordered);

// Fills the plan's text and columns. A dynaset yields the rows of one table, each with its key behind its
// columns; throws EngineError 3073 when the query's rows are not those of one table.
void TranslateQuery(Translation& t, const Query& query, bool dynaset);

}  // namespace scorvane::engine::sql
