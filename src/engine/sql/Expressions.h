// Expressions: operators and predicates. An operator writes each of its operands once, so that a nested
// expression grows no faster than what was typed.
#pragma once

#include "engine/sql/Scope.h"

namespace scorvane::engine::sql {

Piece TranslateExpr(Translation& t, const Expr& e, Scope& scope);

}  // namespace scorvane::engine::sql
