// Recursive descent from tokens to a tree.
#pragma once

#include "engine/sql/Lexer.h"
#include "engine/sql/Tree.h"

namespace scorvane::engine::sql {

// Throws EngineError: 3075 with the place of the fault, 3360 for a statement nested too deeply.
Statement Parse(const Lexed& lexed);

// A text as a whole statement, for callers that have no tokens yet.
Statement ParseText(std::string_view sql);

// Throws 3075 where the text closes a bracket that it has not opened, and so would leave those that it is to
// stand in.
void CheckBrackets(std::string_view text);

}  // namespace scorvane::engine::sql
