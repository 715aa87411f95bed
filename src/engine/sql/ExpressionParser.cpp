#include "engine/sql/ExpressionParser.h"

#include <array>

namespace scorvane::engine::sql {
namespace {

struct Operator {
  Op op = Op::None;
  bool word = false;
};

// By strength, the weakest first; two levels have rules of their own.
constexpr int kNotLevel = 5;
constexpr int kComparisonLevel = 6;
constexpr int kSignLevel = 12;
constexpr std::array<std::array<Operator, 2>, kSignLevel> kLevels = {{
    {{{Op::Imp, true}, {}}},
    {{{Op::Eqv, true}, {}}},
    {{{Op::Xor, true}, {}}},
    {{{Op::Or, true}, {}}},
    {{{Op::And, true}, {}}},
    {{{}, {}}},
    {{{}, {}}},
    {{{Op::Join, false}, {}}},
    {{{Op::Add, false}, {Op::Subtract, false}}},
    {{{Op::Modulo, true}, {}}},
    {{{Op::IntegerDivide, false}, {}}},
    {{{Op::Multiply, false}, {Op::Divide, false}}},
}};

constexpr Op kComparisons[] = {Op::Equal,          Op::NotEqual, Op::LessOrEqual,
                               Op::GreaterOrEqual, Op::Less,     Op::Greater};

}  // namespace

// Brackets may stand around it that belong to an expression or a join instead: what follows the SELECT's own
// brackets tells.
bool TokenReader::AtQuery() const {
  std::size_t at = 0;
  while (IsSymbol(Ahead(at), "(")) ++at;
  if (!IsWord(Ahead(at), "SELECT")) return false;
  for (std::size_t open = at; open > 0; --open) {
    int nested = 1;
    while (nested > 0) {
      const Token& token = Ahead(++at);
      if (token.kind == TokenKind::End) return true;
      if (IsSymbol(token, "(")) ++nested;
      if (IsSymbol(token, ")")) --nested;
    }
    const Token& behind = Ahead(at + 1);
    const bool ends = behind.kind == TokenKind::End || IsSymbol(behind, ";") || IsWord(behind, "ORDER");
    if (IsWord(behind, "UNION") || (open == 1 && ends)) return true;
    if (!IsSymbol(behind, ")")) return false;
  }
  return true;
}

QueryPtr ExpressionParser::ParseSubquery() {
  QueryPtr query = ParseQuery();
  TakeSymbol(";");
  NeedSymbol(")");
  return query;
}

ExprPtr ExpressionParser::ParseExpr() {
  const Depth depth(*this);
  return ParseLevel(0);
}

ExprPtr ExpressionParser::MakeBinary(Op op, ExprPtr left, ExprPtr right, int position) const {
  auto e = std::make_unique<Expr>();
  e->kind = Expr::Kind::Binary;
  e->op = op;
  e->position = position;
  e->args.push_back(std::move(left));
  e->args.push_back(std::move(right));
  return e;
}

Op ExpressionParser::OperatorOf(int level) const {
  for (const Operator& candidate : kLevels[static_cast<std::size_t>(level)]) {
    if (candidate.op == Op::None) continue;
    if (candidate.word ? AtWord(OpText(candidate.op)) : AtSymbol(OpText(candidate.op))) return candidate.op;
  }
  return Op::None;
}

ExprPtr ExpressionParser::ParseLevel(int level) {
  if (level == kNotLevel) return ParseNot();
  if (level == kComparisonLevel) return ParseComparison();
  if (level == kSignLevel) return ParseSign();
  ExprPtr left = ParseLevel(level + 1);
  for (int length = 0;; ++length) {
    const Op op = OperatorOf(level);
    if (op == Op::None) return left;
    if (length >= kMaxTerms) TooMuch("an expression is too long");
    const int position = Here().position;
    Skip(1);
    left = MakeBinary(op, std::move(left), ParseLevel(level + 1), position);
  }
}

ExprPtr ExpressionParser::ParseNot() {
  if (!AtWord("NOT")) return ParseLevel(kComparisonLevel);
  const Depth depth(*this);
  auto e = std::make_unique<Expr>();
  e->kind = Expr::Kind::Unary;
  e->op = Op::Not;
  e->position = Here().position;
  Skip(1);
  e->args.push_back(ParseNot());
  return e;
}

ExprPtr ExpressionParser::ParseComparison() {
  ExprPtr left = ParseLevel(kComparisonLevel + 1);
  for (int length = 0;; ++length) {
    if (length >= kMaxTerms) TooMuch("an expression is too long");
    const int position = Here().position;
    Op op = Op::None;
    for (const Op candidate : kComparisons)
      if (op == Op::None && TakeSymbol(OpText(candidate))) op = candidate;
    if (op == Op::None) {
      const Expr* before = left.get();
      left = ParsePredicate(std::move(left));
      if (left.get() == before) return left;
    } else if ((AtWord("ANY") || AtWord("SOME") || AtWord("ALL")) && IsSymbol(Ahead(1), "(")) {
      left = ParseQuantified(op, std::move(left), position);
    } else {
      left = MakeBinary(op, std::move(left), ParseLevel(kComparisonLevel + 1), position);
    }
  }
}

ExprPtr ExpressionParser::ParseQuantified(Op op, ExprPtr left, int position) {
  auto e = std::make_unique<Expr>();
  e->kind = Expr::Kind::Quantified;
  e->op = op;
  e->position = position;
  e->all = AtWord("ALL");
  Skip(2);
  e->args.push_back(std::move(left));
  e->query = ParseSubquery();
  return e;
}

// Is Null, Like, Between and In; `left` itself when none of them stands here.
ExprPtr ExpressionParser::ParsePredicate(ExprPtr left) {
  auto e = std::make_unique<Expr>();
  e->position = Here().position;
  if (TakeWord("IS")) {
    e->kind = Expr::Kind::IsNull;
    e->negated = TakeWord("NOT");
    NeedWord("NULL");
    e->args.push_back(std::move(left));
    return e;
  }
  e->negated =
      AtWord("NOT") && (IsWord(Ahead(1), "LIKE") || IsWord(Ahead(1), "BETWEEN") || IsWord(Ahead(1), "IN"));
  if (e->negated) Skip(1);
  if (TakeWord("LIKE")) {
    e->kind = Expr::Kind::Like;
    e->args.push_back(std::move(left));
    e->args.push_back(ParseLevel(kComparisonLevel + 1));
  } else if (TakeWord("BETWEEN")) {
    e->kind = Expr::Kind::Between;
    e->args.push_back(std::move(left));
    e->args.push_back(ParseLevel(kComparisonLevel + 1));
    NeedWord("AND");
    e->args.push_back(ParseLevel(kComparisonLevel + 1));
  } else if (TakeWord("IN")) {
    e->args.push_back(std::move(left));
    ParseIn(*e);
  } else {
    return left;
  }
  return e;
}

void ExpressionParser::ParseIn(Expr& e) {
  NeedSymbol("(");
  if (AtQuery()) {
    e.kind = Expr::Kind::InQuery;
    e.query = ParseSubquery();
    return;
  }
  e.kind = Expr::Kind::InList;
  do {
    if (e.args.size() > kMaxListItems) TooMuch("a list of values is too long");
    e.args.push_back(ParseExpr());
  } while (TakeSymbol(","));
  NeedSymbol(")");
}

// A minus before a number belongs to the number: -10^2 is 100, and -(10)^2 is -100.
bool ExpressionParser::AtNegativeNumber() const {
  return AtSymbol("-") && Ahead(1).kind == TokenKind::Literal &&
         LiteralOf(Ahead(1)).kind != Literal::Kind::Text && LiteralOf(Ahead(1)).kind != Literal::Kind::Date;
}

ExprPtr ExpressionParser::ParseSign() {
  if ((!AtSymbol("-") && !AtSymbol("+")) || AtNegativeNumber()) return ParsePower();
  const Depth depth(*this);
  auto e = std::make_unique<Expr>();
  e->kind = Expr::Kind::Unary;
  e->op = AtSymbol("-") ? Op::Negate : Op::Plus;
  e->position = Here().position;
  Skip(1);
  e->args.push_back(ParseSign());
  return e;
}

ExprPtr ExpressionParser::ParsePower() {
  ExprPtr left = ParsePrimary();
  for (int length = 0; AtSymbol("^"); ++length) {
    if (length >= kMaxTerms) TooMuch("an expression is too long");
    const int position = Here().position;
    Skip(1);
    const bool signedExponent = AtSymbol("-") || AtSymbol("+");
    left = MakeBinary(Op::Power, std::move(left), signedExponent ? ParseSign() : ParsePrimary(), position);
  }
  return left;
}

ExprPtr ExpressionParser::ParsePrimary() {
  auto e = std::make_unique<Expr>();
  const Token& token = Here();
  e->position = token.position;
  if (token.kind == TokenKind::Literal) {
    e->kind = Expr::Kind::Literal;
    e->literal = token.literal;
    e->value = LiteralOf(token).ToValue();
    Skip(1);
    return e;
  }
  if (AtNegativeNumber()) {
    e->kind = Expr::Kind::Unary;
    e->op = Op::Negate;
    Skip(1);
    e->args.push_back(ParsePrimary());
    return e;
  }
  if (AtSymbol("(")) {
    Skip(1);
    if (AtQuery()) {
      e->kind = Expr::Kind::Subquery;
      e->query = ParseSubquery();
      return e;
    }
    e = ParseExpr();
    NeedSymbol(")");
    return e;
  }
  if (TakeWord("NULL")) return e;
  if (AtWord("TRUE") || AtWord("FALSE")) {
    e->kind = Expr::Kind::Boolean;
    e->value = Value(AtWord("TRUE"));
    Skip(1);
    return e;
  }
  if (AtWord("EXISTS") && IsSymbol(Ahead(1), "(")) {
    Skip(2);
    e->kind = Expr::Kind::Exists;
    e->query = ParseSubquery();
    return e;
  }
  if (token.kind == TokenKind::Name && IsSymbol(Ahead(1), "(") &&
      (!IsReservedWord(token.text) || AtWord("LEFT") || AtWord("RIGHT") || AtWord("ASC"))) {
    return ParseCall();
  }
  e->kind = Expr::Kind::Column;
  if (AtWord("ON")) {  // the constant; no JOIN's ON stands where a value is expected
    e->name = "On";
    Skip(1);
    return e;
  }
  if (!AtName()) Fail("expected a value");
  e->name = NeedName("a field");
  if (TakeSymbol(".")) {
    e->qualifier = std::move(e->name);
    e->name = NeedName("a field");
  }
  return e;
}

ExprPtr ExpressionParser::ParseCall() {
  auto e = std::make_unique<Expr>();
  e->kind = Expr::Kind::Call;
  e->position = Here().position;
  e->name = std::string(Here().text);
  Skip(2);
  if (TakeSymbol(")")) return e;
  if (AtSymbol("*") && IsSymbol(Ahead(1), ")")) {
    Skip(2);
    e->star = true;
    return e;
  }
  do {
    if (e->args.size() >= kMaxColumns) TooMuch("a function has too many arguments");
    e->args.push_back(ParseExpr());
  } while (TakeSymbol(","));
  NeedSymbol(")");
  return e;
}

}  // namespace scorvane::engine::sql
