// A place in the tokens of a statement, and the steps from there that every part of the parser takes.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Keywords.h"
#include "engine/sql/Lexer.h"
#include "engine/sql/Limits.h"

namespace scorvane::engine::sql {

class TokenReader {
 public:
  explicit TokenReader(const Lexed& lexed) : lexed_(lexed) {}

 protected:
  // Counts the nesting for as long as it lives.
  class Depth {
   public:
    explicit Depth(TokenReader& reader) : reader_(reader) {
      if (++reader_.depth_ > kMaxDepth) reader_.TooMuch("it is nested too deeply");
    }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
    ~Depth() { --reader_.depth_; }

   private:
    TokenReader& reader_;
  };

  const Token& Here() const { return lexed_.tokens[place_]; }
  const Token& Ahead(std::size_t steps) const {
    return lexed_.tokens[std::min(place_ + steps, lexed_.tokens.size() - 1)];
  }
  void Skip(std::size_t steps) { place_ = std::min(place_ + steps, lexed_.tokens.size() - 1); }

  [[noreturn]] void Fail(std::string_view what) const {
    const Token& token = Here();
    const std::string near =
        token.kind == TokenKind::End ? std::string("the end") : fmt::format("'{}'", token.text);
    throw EngineError(kSyntaxError, fmt::format("{} at {}", what, near), {}, token.position);
  }
  [[noreturn]] void TooMuch(std::string_view what) const {
    throw EngineError(kTooComplex, what, {}, Here().position);
  }

  static bool IsWord(const Token& token, std::string_view word) {
    return token.kind == TokenKind::Name && SameName(token.text, word);
  }
  static bool IsSymbol(const Token& token, std::string_view symbol) {
    return token.kind == TokenKind::Symbol && token.text == symbol;
  }
  bool AtWord(std::string_view word) const { return IsWord(Here(), word); }
  bool TakeWord(std::string_view word) {
    if (!AtWord(word)) return false;
    ++place_;
    return true;
  }
  void NeedWord(std::string_view word) {
    if (!TakeWord(word)) Fail(fmt::format("expected {}", word));
  }
  bool AtSymbol(std::string_view symbol) const { return IsSymbol(Here(), symbol); }
  bool TakeSymbol(std::string_view symbol) {
    if (!AtSymbol(symbol)) return false;
    ++place_;
    return true;
  }
  void NeedSymbol(std::string_view symbol) {
    if (!TakeSymbol(symbol)) Fail(fmt::format("expected '{}'", symbol));
  }

  bool AtName() const {
    return Here().kind == TokenKind::BracketName ||
           (Here().kind == TokenKind::Name && !IsReservedWord(Here().text));
  }
  std::string NeedName(std::string_view what) {
    if (!AtName()) Fail(fmt::format("expected {}", what));
    return std::string(lexed_.tokens[place_++].text);
  }

  const Literal& LiteralOf(const Token& token) const {
    return lexed_.literals[static_cast<std::size_t>(token.literal)];
  }

  // True when a whole query begins here: a SELECT, or in brackets the first SELECT of a UNION.
  bool AtQuery() const;

 private:
  const Lexed& lexed_;
  std::size_t place_ = 0;
  int depth_ = 0;
};

}  // namespace scorvane::engine::sql
