// Calls of functions and aggregates. Most are called as they stand; those whose arguments decide their type,
// or which the store writes in another way, have a handler.
#pragma once

#include "engine/sql/Scope.h"

namespace scorvane::engine::sql {

// Throws EngineError 3085 for a function that is not there, 3075 for a wrong number of arguments.
Piece TranslateCall(Translation& t, const Expr& call, Scope& scope);

}  // namespace scorvane::engine::sql
