// The first step of every statement: its text becomes tokens, its literals are lifted out, and what is left
// is the statement's shape, under which the prepared statement is kept.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Value.h"

namespace scorvane::engine::sql {

enum class TokenKind : std::uint8_t { End, Name, BracketName, Literal, Symbol };

struct Token {
  TokenKind kind = TokenKind::End;
  int position = 0;       // 1-based character of the statement
  std::string_view text;  // a name without its brackets, a symbol ("<=")
  int literal = -1;       // index into Lexed::literals
};

struct Literal {
  enum class Kind : std::uint8_t { Text, Integer, Decimal, Date };
  Kind kind = Kind::Integer;
  std::string_view text;  // of a Text: between its quotes, doubled quotes still doubled
  char quote = 0;         // the quote that stands doubled in `text`; 0 when none does
  double number = 0;      // of the others

  std::string Unescaped() const;
  Value ToValue() const;
};

// Views into the statement's text: they live as long as it does.
struct Lexed {
  std::vector<Token> tokens;  // the last one is End
  std::vector<Literal> literals;
  std::string shape;
};

// Fills `lexed`, whose buffers are reused. Throws EngineError 3075.
void Lex(std::string_view sql, Lexed& lexed);

}  // namespace scorvane::engine::sql
