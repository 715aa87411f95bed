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

// Knows how the last statements began, up to their first literals: an import repeats a few statements many
// times, and only what differs is looked at then.
class ShapeLexer {
 public:
  // Fills the literals and the shape. The tokens are there only when it yields true; when it does not, and
  // they are needed, Lex reads the statement. Throws EngineError 3075.
  bool Lex(std::string_view sql, Lexed& lexed);

 private:
  struct Head {
    std::string text;
    std::string shape;
    Token last;                 // its text is to be taken from the statement
    std::size_t lastPlace = 0;  // from 0
    std::size_t lastSize = 0;
  };
  void Learn(std::string_view sql, const Lexed& lexed);

  static constexpr std::size_t kHeads = 8;
  static constexpr std::size_t kShortest = 24;  // characters; what is shorter is read as fast as it is found

  std::vector<Head> heads_;
  std::size_t next_ = 0;  // the place of the one that is given up next
};

}  // namespace scorvane::engine::sql
