#include "engine/sql/Lexer.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>

#include "engine/Date.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Keywords.h"
#include "engine/sql/Limits.h"

namespace scorvane::engine::sql {
namespace {

enum CharClass : std::uint8_t { kOther, kBlank, kNameStart, kDigit };

constexpr std::array<std::uint8_t, 256> MakeClasses() {
  std::array<std::uint8_t, 256> classes{};
  for (int c = 0; c < 256; ++c) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      classes[static_cast<std::size_t>(c)] = kBlank;
    } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 128) {
      classes[static_cast<std::size_t>(c)] = kNameStart;
    } else if (c >= '0' && c <= '9') {
      classes[static_cast<std::size_t>(c)] = kDigit;
    }
  }
  return classes;
}
constexpr std::array<std::uint8_t, 256> kClasses = MakeClasses();

std::uint8_t ClassOf(char c) {
  return kClasses[static_cast<unsigned char>(c)];
}

[[noreturn]] void Fail(std::string_view what, std::size_t place) {
  throw EngineError(kSyntaxError, what, {}, static_cast<int>(place) + 1);
}

class Scanner {
 public:
  Scanner(std::string_view sql, Lexed& lexed) : sql_(sql), lexed_(lexed) {}

  // Goes on behind a beginning whose tokens but the last are not wanted.
  void RunBehind(std::size_t place) {
    place_ = place;
    lastOnly_ = true;
    Run();
  }

  void Run() {
    while (place_ < sql_.size()) {
      const char c = sql_[place_];
      switch (ClassOf(c)) {
        case kBlank:
          ++place_;
          break;
        case kNameStart:
          Name();
          break;
        case kDigit:
          Number();
          break;
        default:
          if (c == '\'' || c == '"') {
            Text(c);
          } else if (c == '[') {
            Bracket(']');
          } else if (c == '`') {
            Bracket('`');
          } else if (c == '&' && AtRadixNumber()) {
            RadixNumber();
          } else if (c == '#') {
            Date();
          } else if (c == '.' && place_ + 1 < sql_.size() && ClassOf(sql_[place_ + 1]) == kDigit &&
                     !AfterName()) {
            Number();
          } else {
            Symbol();
          }
      }
    }
    Add(TokenKind::End, place_, {});
  }

 private:
  // True when a name stands directly before, as in T.1 - which is then no number.
  bool AfterName() const {
    if (lexed_.tokens.empty() || place_ == 0) return false;
    return ClassOf(sql_[place_ - 1]) == kNameStart || sql_[place_ - 1] == ']';
  }

  // &H10 and &O17, where no value stands before that the & would join it to.
  bool AtRadixNumber() const {
    if (place_ + 2 >= sql_.size()) return false;
    const char letter = LowerAscii(sql_[place_ + 1]);
    if ((letter != 'h' && letter != 'o') || DigitOf(sql_[place_ + 2]) >= (letter == 'h' ? 16 : 8))
      return false;
    if (lexed_.tokens.empty()) return true;
    const Token& before = lexed_.tokens.back();
    switch (before.kind) {
      case TokenKind::Name:
        return IsReservedWord(before.text) && !SameName(before.text, "NULL") &&
               !SameName(before.text, "TRUE") && !SameName(before.text, "FALSE");
      case TokenKind::Symbol:
        return before.text != ")";
      default:
        return false;
    }
  }

  static int DigitOf(char c) {
    const char lower = LowerAscii(c);
    if (lower >= '0' && lower <= '9') return lower - '0';
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 99;
  }

  // 32 bits, so that the upper half of them is negative.
  void RadixNumber() {
    const std::size_t start = place_;
    const int radix = LowerAscii(sql_[start + 1]) == 'h' ? 16 : 8;
    std::uint64_t number = 0;
    for (place_ += 2; place_ < sql_.size() && DigitOf(sql_[place_]) < radix; ++place_) {
      number = number * static_cast<unsigned>(radix) + static_cast<unsigned>(DigitOf(sql_[place_]));
      if (number > 0xFFFFFFFFU) Fail("a number is too large", start);
    }
    if (place_ < sql_.size() && (ClassOf(sql_[place_]) == kNameStart || ClassOf(sql_[place_]) == kDigit))
      Fail("a name cannot begin with a digit", start);
    Literal literal;
    literal.number = static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(number)));
    AddLiteral(literal, start, "?i ");
  }

  void Add(TokenKind kind, std::size_t start, std::string_view text, int literal = -1) {
    if (++tokens_ > kMaxTokens)
      throw EngineError(kTooComplex, "it is too long", {}, static_cast<int>(start) + 1);
    Token token;
    token.kind = kind;
    token.position = static_cast<int>(start) + 1;
    token.text = text;
    token.literal = literal;
    if (lastOnly_) {
      lexed_.tokens[0] = token;
    } else {
      lexed_.tokens.push_back(token);
    }
  }

  void AddLiteral(const Literal& literal, std::size_t start, std::string_view mark) {
    lexed_.literals.push_back(literal);
    Add(TokenKind::Literal, start, sql_.substr(start, place_ - start),
        static_cast<int>(lexed_.literals.size()) - 1);
    lexed_.shape += mark;
  }

  void Name() {
    const std::size_t start = place_;
    while (place_ < sql_.size() && (ClassOf(sql_[place_]) == kNameStart || ClassOf(sql_[place_]) == kDigit))
      ++place_;
    // Left$( is Left(
    if (place_ + 1 < sql_.size() && sql_[place_] == '$' && sql_[place_ + 1] == '(') ++place_;
    const std::string_view text = sql_.substr(start, place_ - start);
    Add(TokenKind::Name, start, text);
    lexed_.shape += text;
    lexed_.shape += ' ';
  }

  // A name that brings its own end: [name] or `name`.
  void Bracket(char closing) {
    const std::size_t start = place_;
    const std::size_t end = sql_.find(closing, start + 1);
    if (end == std::string_view::npos) Fail("a name is missing its closing bracket", start);
    place_ = end + 1;
    const std::string_view text = sql_.substr(start + 1, end - start - 1);
    if (text.empty()) Fail("a name is empty", start);
    // The store's text would end there.
    if (text.find('\0') != std::string_view::npos) Fail("a name holds a character that no name has", start);
    Add(TokenKind::BracketName, start, text);
    lexed_.shape += sql_.substr(start, end + 1 - start);
    lexed_.shape += ' ';
  }

  void Number() {
    const std::size_t start = place_;
    bool decimal = false;
    auto digits = [&] {
      while (place_ < sql_.size() && ClassOf(sql_[place_]) == kDigit) ++place_;
    };
    digits();
    if (place_ < sql_.size() && sql_[place_] == '.') {
      decimal = true;
      ++place_;
      digits();
    }
    if (place_ < sql_.size() && (sql_[place_] == 'e' || sql_[place_] == 'E')) {
      std::size_t ahead = place_ + 1;
      if (ahead < sql_.size() && (sql_[ahead] == '+' || sql_[ahead] == '-')) ++ahead;
      if (ahead < sql_.size() && ClassOf(sql_[ahead]) == kDigit) {
        decimal = true;
        place_ = ahead;
        digits();
      }
    }
    if (place_ < sql_.size() && ClassOf(sql_[place_]) == kNameStart)
      Fail("a name cannot begin with a digit", start);
    Literal literal;
    literal.kind = decimal ? Literal::Kind::Decimal : Literal::Kind::Integer;
    const char* first = sql_.data() + start;
    const char* last = sql_.data() + place_;
    if (!decimal && place_ - start <= 15) {
      std::int64_t whole = 0;
      std::from_chars(first, last, whole);
      literal.number = static_cast<double>(whole);
    } else {
      const auto result = std::from_chars(first, last, literal.number);
      if (result.ec != std::errc() || !std::isfinite(literal.number)) Fail("a number is too large", start);
    }
    if (!decimal && std::fabs(literal.number) > 2147483647.0) literal.kind = Literal::Kind::Decimal;
    AddLiteral(literal, start, literal.kind == Literal::Kind::Decimal ? "?d " : "?i ");
  }

  void Text(char quote) {
    const std::size_t start = place_++;
    Literal literal;
    literal.kind = Literal::Kind::Text;
    while (true) {
      const std::size_t end = sql_.find(quote, place_);
      if (end == std::string_view::npos) Fail("a text is missing its closing quote", start);
      place_ = end + 1;
      if (place_ < sql_.size() && sql_[place_] == quote) {
        literal.quote = quote;
        ++place_;
        continue;
      }
      literal.text = sql_.substr(start + 1, end - start - 1);
      break;
    }
    AddLiteral(literal, start, "?t ");
  }

  void Date() {
    const std::size_t start = place_;
    const std::size_t end = sql_.find('#', start + 1);
    if (end == std::string_view::npos) Fail("a date is missing its closing #", start);
    Literal literal;
    literal.kind = Literal::Kind::Date;
    if (!ParseDate(sql_.substr(start + 1, end - start - 1), literal.number))
      Fail("a date is not valid", start);
    place_ = end + 1;
    AddLiteral(literal, start, "?D ");
  }

  void Symbol() {
    const std::size_t start = place_;
    std::string_view text = sql_.substr(start, 1);
    const std::string_view two = sql_.substr(start, 2);
    if (two == "<=" || two == ">=" || two == "<>") {
      text = two;
    } else if (std::string_view("()<>=+-*/\\^&,.;").find(text[0]) == std::string_view::npos) {
      Fail(fmt::format("the character '{}' does not belong here", text), start);
    }
    place_ += text.size();
    Add(TokenKind::Symbol, start, text);
    lexed_.shape += text;
  }

  std::string_view sql_;
  Lexed& lexed_;
  std::size_t place_ = 0;
  std::size_t tokens_ = 0;
  bool lastOnly_ = false;  // of the tokens only the last one is kept
};

}  // namespace

std::string Literal::Unescaped() const {
  std::string plain(text);
  if (quote == 0) return plain;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    plain[kept++] = plain[i];
    if (plain[i] == quote) ++i;
  }
  plain.resize(kept);
  return plain;
}

Value Literal::ToValue() const {
  switch (kind) {
    case Kind::Text:
      return Value(Unescaped());
    case Kind::Integer:
      return Value(static_cast<std::int32_t>(number));
    case Kind::Decimal:
      return Value(number);
    case Kind::Date:
      return Value::FromDate(number);
  }
  return {};
}

void Lex(std::string_view sql, Lexed& lexed) {
  lexed.tokens.clear();
  lexed.literals.clear();
  lexed.shape.clear();
  lexed.shape.reserve(sql.size() + 32);
  Scanner(sql, lexed).Run();
}

bool ShapeLexer::Lex(std::string_view sql, Lexed& lexed) {
  for (const Head& head : heads_) {
    if (!sql.starts_with(head.text)) continue;
    lexed.literals.clear();
    lexed.tokens.assign(1, head.last);
    lexed.tokens[0].text = sql.substr(head.lastPlace, head.lastSize);
    lexed.shape = head.shape;
    Scanner(sql, lexed).RunBehind(head.text.size());
    return false;
  }
  sql::Lex(sql, lexed);
  Learn(sql, lexed);
  return true;
}

void ShapeLexer::Learn(std::string_view sql, const Lexed& lexed) {
  if (lexed.literals.empty()) return;
  std::size_t first = 0;
  while (lexed.tokens[first].kind != TokenKind::Literal) ++first;
  const auto length = static_cast<std::size_t>(lexed.tokens[first].position) - 1;
  // Behind these characters another token begins, whatever follows.
  constexpr std::string_view kEnds = " (,=";
  if (first == 0 || length < kShortest || kEnds.find(sql[length - 1]) == std::string_view::npos) return;
  Head head;
  head.text = sql.substr(0, length);
  Lexed begun;
  sql::Lex(head.text, begun);
  head.shape = std::move(begun.shape);
  head.last = lexed.tokens[first - 1];
  head.lastPlace = static_cast<std::size_t>(head.last.text.data() - sql.data());
  head.lastSize = head.last.text.size();
  if (heads_.size() < kHeads) {
    heads_.push_back(std::move(head));
  } else {
    heads_[next_] = std::move(head);
    next_ = (next_ + 1) % kHeads;
  }
}

}  // namespace scorvane::engine::sql
