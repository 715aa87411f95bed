// Recursive descent from tokens to a tree.
#pragma once

#include "engine/sql/Lexer.h"
#include "engine/sql/Tree.h"

namespace scorvane::engine::sql {

// Throws EngineError: 3075 with the place of the fault, 3360 for a statement nested too deeply.
Statement Parse(const Lexed& lexed);

// A text as a whole statement, for callers that have no tokens yet.
Statement ParseText(std::string_view sql);

// Throws 3075 unless the text is one expression that is whole by itself, and so stays one within brackets.
void CheckExpression(std::string_view text);

}  // namespace scorvane::engine::sql
