#include "engine/sql/Grouping.h"

#include <algorithm>

#include "engine/Functions.h"
#include "engine/Names.h"

namespace scorvane::engine::sql {
namespace {

bool IsAggregate(const Expr& e) {
  if (e.kind != Expr::Kind::Call) return false;
  const FunctionInfo* info = FindFunction(e.name);
  return info != nullptr && info->aggregate;
}

bool SameColumn(const Expr& a, Scope& aScope, const Expr& b, Scope& bScope) {
  const std::optional<Resolved> left = Resolve(a, aScope);
  const std::optional<Resolved> right = Resolve(b, bScope);
  if (!left || !right) return !left && !right && SameName(a.name, b.name);
  return left->level == right->level && left->alias == right->alias && left->source == right->source &&
         left->column == right->column;
}

// What an alias stands for; null for every other expression.
const Expr* BehindAlias(const Expr& e, Scope& scope, Scope*& level) {
  if (e.kind != Expr::Kind::Column) return nullptr;
  const std::optional<Resolved> found = Resolve(e, scope);
  if (!found || found->alias == nullptr) return nullptr;
  level = found->level;
  return found->alias->expr.get();
}

}  // namespace

GroupedHere::GroupedHere(Translation& t, const Expr& e, Scope& scope) {
  for (Scope* level = &scope; level != nullptr; level = level->parent) {
    if (!level->checksGroups || level->select == nullptr) continue;
    const auto& groupBy = level->select->groupBy;
    const bool grouped = std::any_of(groupBy.begin(), groupBy.end(), [&](const ExprPtr& expr) {
      return SameExpr(t, e, scope, *expr, *level);
    });
    if (grouped) levels_.push_back(level);
  }
  for (Scope* level : levels_) level->checksGroups = false;
}

GroupedHere::~GroupedHere() {
  for (Scope* level : levels_) level->checksGroups = true;
}

bool HasAggregate(const Expr& e) {
  if (IsAggregate(e)) return true;
  return std::any_of(e.args.begin(), e.args.end(), [](const ExprPtr& arg) { return HasAggregate(*arg); });
}

bool SameExpr(Translation& t, const Expr& a, Scope& aScope, const Expr& b, Scope& bScope) {
  const Translation::Deeper deeper(t, a.position);
  t.Spend(1);
  if (&a == &b) return true;
  if (a.kind == Expr::Kind::Column && b.kind == Expr::Kind::Column && SameColumn(a, aScope, b, bScope))
    return true;
  // A circle of aliases ends at the limit of depth, or where it is translated.
  Scope* level = nullptr;
  if (const Expr* behind = BehindAlias(a, aScope, level); behind != nullptr && behind != &a)
    return SameExpr(t, *behind, *level, b, bScope);
  if (const Expr* behind = BehindAlias(b, bScope, level); behind != nullptr && behind != &b)
    return SameExpr(t, a, aScope, *behind, *level);
  if (a.kind != b.kind || a.op != b.op || a.negated != b.negated || a.star != b.star || a.all != b.all ||
      a.args.size() != b.args.size())
    return false;
  switch (a.kind) {
    case Expr::Kind::Column:
      return false;
    case Expr::Kind::Literal:
      if (a.value.GetType() != b.value.GetType()) return false;
      return t.LiteralValue(a) == t.LiteralValue(b);
    case Expr::Kind::Boolean:
      return a.value == b.value;
    case Expr::Kind::Call:
      if (!SameName(a.name, b.name)) return false;
      break;
    default:
      break;
  }
  if ((a.query || b.query) && !SameName(t.PrintWithLiterals(a), t.PrintWithLiterals(b))) return false;
  for (std::size_t i = 0; i < a.args.size(); ++i)
    if (!SameExpr(t, *a.args[i], aScope, *b.args[i], bScope)) return false;
  return true;
}

}  // namespace scorvane::engine::sql
