// What GROUP BY asks of a statement: every field of a grouped query is grouped or stands inside an aggregate.
#pragma once

#include <vector>

#include "engine/sql/Scope.h"

namespace scorvane::engine::sql {

// Fields are not looked at as ungrouped for as long as it lives, when `e` is one of the expressions that a
// query around it is grouped by.
class GroupedHere {
 public:
  GroupedHere(Translation& t, const Expr& e, Scope& scope);
  GroupedHere(const GroupedHere&) = delete;
  GroupedHere& operator=(const GroupedHere&) = delete;
  ~GroupedHere();

 private:
  std::vector<Scope*> levels_;
};

// An aggregate of this level, not of a subquery.
bool HasAggregate(const Expr& e);

// The same expression: written alike but for letter case and brackets, with names that mean the same. `a` is
// read in `aScope`, `b` in `bScope`.
bool SameExpr(Translation& t, const Expr& a, Scope& aScope, const Expr& b, Scope& bScope);

}  // namespace scorvane::engine::sql
