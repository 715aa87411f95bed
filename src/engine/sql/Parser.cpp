#include "engine/sql/Parser.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Keywords.h"

namespace scorvane::engine::sql {
namespace {

constexpr std::array<std::string_view, 44> kReserved = {
    "ALL",         "AND",    "AS",     "ASC",    "BETWEEN", "BY",      "DELETE", "DESC",   "DISTINCT",
    "DISTINCTROW", "EQV",    "EXISTS", "FALSE",  "FROM",    "GROUP",   "HAVING", "IMP",    "IN",
    "INNER",       "INSERT", "INTO",   "IS",     "JOIN",    "LEFT",    "LIKE",   "MOD",    "NOT",
    "NULL",        "ON",     "OR",     "ORDER",  "OUTER",   "PERCENT", "RIGHT",  "SELECT", "SET",
    "TOP",         "TRUE",   "UNION",  "UPDATE", "VALUES",  "WHERE",   "XOR",    "WITH"};

class Parser {
 public:
  explicit Parser(const Lexed& lexed) : lexed_(lexed) {}

  Statement Run() {
    Statement statement;
    if (AtWord("SELECT") || AtSymbol("(")) {
      statement.kind = Statement::Kind::Query;
      statement.query = ParseQuery();
    } else if (TakeWord("INSERT")) {
      ParseInsert(statement);
    } else if (TakeWord("UPDATE")) {
      ParseUpdate(statement);
    } else if (TakeWord("DELETE")) {
      ParseDelete(statement);
    } else {
      Fail("expected SELECT, INSERT, UPDATE or DELETE");
    }
    TakeSymbol(";");
    if (Here().kind != TokenKind::End) Fail("expected the end of the statement");
    statement.needsLiterals = needsLiterals_;
    return statement;
  }

 private:
  // Counts the nesting for as long as it lives.
  class Depth {
   public:
    explicit Depth(Parser& parser) : parser_(parser) {
      if (++parser_.depth_ > kMaxDepth)
        throw EngineError(kTooComplex, "it is nested too deeply", {}, parser_.Here().position);
    }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;
    ~Depth() { --parser_.depth_; }

   private:
    Parser& parser_;
  };

  const Token& Here() const { return lexed_.tokens[place_]; }
  const Token& Ahead(std::size_t steps) const {
    return lexed_.tokens[std::min(place_ + steps, lexed_.tokens.size() - 1)];
  }

  [[noreturn]] void Fail(std::string_view what) const {
    const Token& token = Here();
    const std::string near =
        token.kind == TokenKind::End ? std::string("the end") : fmt::format("'{}'", token.text);
    throw EngineError(kSyntaxError, fmt::format("{} at {}", what, near), {}, token.position);
  }

  static bool IsWord(const Token& token, std::string_view word) {
    return token.kind == TokenKind::Name && SameName(token.text, word);
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
  bool AtSymbol(std::string_view symbol) const {
    return Here().kind == TokenKind::Symbol && Here().text == symbol;
  }
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

  // ---- queries

  QueryPtr ParseQuery() {
    Depth depth(*this);
    auto query = std::make_unique<Query>();
    query->selects.push_back(ParseSelect());
    while (TakeWord("UNION")) {
      query->unionAll.push_back(TakeWord("ALL"));
      query->selects.push_back(ParseSelect());
    }
    if (TakeWord("ORDER")) {
      NeedWord("BY");
      do {
        OrderItem item;
        // A number names a column of the result, so its value is part of the meaning.
        if (Here().kind == TokenKind::Literal) needsLiterals_ = true;
        item.expr = ParseExpr();
        if (TakeWord("DESC")) {
          item.descending = true;
        } else {
          TakeWord("ASC");
        }
        query->orderBy.push_back(std::move(item));
      } while (TakeSymbol(","));
    }
    return query;
  }

  // A subquery in parentheses may end with a semicolon.
  QueryPtr ParseSubquery() {
    QueryPtr query = ParseQuery();
    TakeSymbol(";");
    NeedSymbol(")");
    return query;
  }

  Select ParseSelect() {
    NeedWord("SELECT");
    Select select;
    if (TakeWord("DISTINCT")) {
      select.distinct = true;
    } else if (TakeWord("DISTINCTROW")) {
      select.distinctRow = true;
    } else {
      TakeWord("ALL");
    }
    if (TakeWord("TOP")) {
      if (Here().kind != TokenKind::Literal || LiteralOf(Here()).kind != Literal::Kind::Integer)
        Fail("expected a whole number after TOP");
      select.top = static_cast<int>(LiteralOf(Here()).number);
      needsLiterals_ = true;
      ++place_;
      select.topPercent = TakeWord("PERCENT");
      if (select.topPercent && select.top > 100) Fail("TOP takes at most 100 PERCENT");
    }
    do {
      select.items.push_back(ParseItem());
    } while (TakeSymbol(","));
    if (TakeWord("FROM")) select.sources = ParseSources();
    if (TakeWord("WHERE")) select.where = ParseExpr();
    if (TakeWord("GROUP")) {
      NeedWord("BY");
      needsLiterals_ = true;  // which expressions are grouped shows only with the literals in them
      do {
        select.groupBy.push_back(ParseExpr());
      } while (TakeSymbol(","));
    }
    if (TakeWord("HAVING")) select.having = ParseExpr();
    return select;
  }

  SelectItem ParseItem() {
    SelectItem item;
    item.position = Here().position;
    if (TakeSymbol("*")) {
      item.star = true;
      return item;
    }
    if (AtName() && IsSymbol(Ahead(1), ".") && IsSymbol(Ahead(2), "*")) {
      item.star = true;
      item.qualifier = NeedName("a table");
      place_ += 2;
      return item;
    }
    item.expr = ParseExpr();
    if (TakeWord("AS")) {
      item.alias = NeedName("a name after AS");
    } else if (AtName()) {
      item.alias = NeedName("a name");
    }
    return item;
  }

  static bool IsSymbol(const Token& token, std::string_view symbol) {
    return token.kind == TokenKind::Symbol && token.text == symbol;
  }

  std::vector<SourcePtr> ParseSources() {
    std::vector<SourcePtr> sources;
    do {
      sources.push_back(ParseJoins());
    } while (TakeSymbol(","));
    return sources;
  }

  bool AtJoin() const { return AtWord("INNER") || AtWord("LEFT") || AtWord("RIGHT") || AtWord("JOIN"); }

  SourcePtr ParseJoins() {
    Depth depth(*this);
    SourcePtr left = ParseSource();
    int joins = 0;
    while (AtJoin()) {
      if (++joins > kMaxTerms) throw EngineError(kTooComplex, "too many joins", {}, Here().position);
      auto join = std::make_unique<Source>();
      join->kind = Source::Kind::Join;
      join->position = Here().position;
      if (TakeWord("LEFT")) {
        join->join = Source::JoinType::Left;
        TakeWord("OUTER");
      } else if (TakeWord("RIGHT")) {
        join->join = Source::JoinType::Right;
        TakeWord("OUTER");
      } else {
        TakeWord("INNER");
      }
      NeedWord("JOIN");
      join->left = std::move(left);
      join->right = ParseSource();
      if (AtJoin()) {
        // A INNER JOIN B INNER JOIN C ON ... ON ...: the inner join comes first.
        Fail("expected ON (nested joins stand in parentheses)");
      }
      NeedWord("ON");
      join->on = ParseExpr();
      left = std::move(join);
    }
    return left;
  }

  SourcePtr ParseSource() {
    if (AtSymbol("(")) {
      Depth depth(*this);
      const int position = Here().position;
      ++place_;
      if (!AtWord("SELECT")) {
        SourcePtr inner = ParseJoins();
        NeedSymbol(")");
        return inner;
      }
      auto source = std::make_unique<Source>();
      source->kind = Source::Kind::Subquery;
      source->position = position;
      source->query = ParseSubquery();
      ParseAlias(*source);
      return source;
    }
    auto source = std::make_unique<Source>();
    source->position = Here().position;
    source->name = NeedName("a table");
    ParseAlias(*source);
    return source;
  }

  void ParseAlias(Source& source) {
    if (TakeWord("AS")) {
      source.alias = NeedName("a name after AS");
    } else if (AtName()) {
      source.alias = NeedName("a name");
    }
  }

  // ---- statements that change data

  void ParseInsert(Statement& statement) {
    statement.kind = Statement::Kind::Insert;
    NeedWord("INTO");
    statement.tablePosition = Here().position;
    statement.table = NeedName("a table");
    ParseInPath(statement);
    if (TakeSymbol("(")) {
      do {
        statement.columnPositions.push_back(Here().position);
        statement.columns.push_back(NeedName("a field"));
      } while (TakeSymbol(","));
      NeedSymbol(")");
    }
    ParseInPath(statement);
    if (TakeWord("VALUES")) {
      NeedSymbol("(");
      do {
        statement.values.push_back(ParseExpr());
      } while (TakeSymbol(","));
      NeedSymbol(")");
    } else if (AtWord("SELECT")) {
      statement.query = ParseQuery();
    } else {
      Fail("expected VALUES or SELECT");
    }
  }

  // IN 'path' stands before or behind the fields.
  void ParseInPath(Statement& statement) {
    if (statement.hasInPath || !TakeWord("IN")) return;
    if (Here().kind != TokenKind::Literal || LiteralOf(Here()).kind != Literal::Kind::Text)
      Fail("expected the path of a database after IN");
    statement.inPath = LiteralOf(Here()).Unescaped();
    statement.hasInPath = true;
    needsLiterals_ = true;
    ++place_;
  }

  void ParseUpdate(Statement& statement) {
    statement.kind = Statement::Kind::Update;
    statement.sources = ParseSources();
    NeedWord("SET");
    do {
      Assignment assignment;
      assignment.position = Here().position;
      assignment.name = NeedName("a field");
      if (TakeSymbol(".")) {
        assignment.qualifier = std::move(assignment.name);
        assignment.name = NeedName("a field");
      }
      NeedSymbol("=");
      assignment.expr = ParseExpr();
      statement.assignments.push_back(std::move(assignment));
    } while (TakeSymbol(","));
    if (TakeWord("WHERE")) statement.where = ParseExpr();
  }

  void ParseDelete(Statement& statement) {
    statement.kind = Statement::Kind::Delete;
    TakeWord("DISTINCTROW");
    if (!AtWord("FROM")) {
      if (!TakeSymbol("*")) {
        statement.tablePosition = Here().position;
        statement.table = NeedName("*, a table's name or FROM");
        NeedSymbol(".");
        NeedSymbol("*");
      }
    }
    NeedWord("FROM");
    statement.sources = ParseSources();
    if (TakeWord("WHERE")) statement.where = ParseExpr();
  }

  // ---- expressions, weakest binding first

  ExprPtr ParseExpr() {
    Depth depth(*this);
    return ParseLeftSide(0);
  }

  ExprPtr MakeBinary(std::string_view op, ExprPtr left, ExprPtr right, int position) {
    auto e = std::make_unique<Expr>();
    e->kind = Expr::Kind::Binary;
    e->op = op;
    e->position = position;
    e->args.push_back(std::move(left));
    e->args.push_back(std::move(right));
    return e;
  }

  struct Level {
    std::array<std::string_view, 2> ops;
    bool words;
  };
  // Imp, Eqv, Or and Xor, And, (Not), (comparisons), &, + and -, Mod, \, * and /
  static constexpr int kNotLevel = 4;
  static constexpr int kComparisonLevel = 5;
  static constexpr int kLevels = 11;
  static constexpr std::array<Level, kLevels> kOperators = {{{{"Imp", ""}, true},
                                                             {{"Eqv", ""}, true},
                                                             {{"Or", "Xor"}, true},
                                                             {{"And", ""}, true},
                                                             {{"", ""}, true},
                                                             {{"", ""}, true},
                                                             {{"&", ""}, false},
                                                             {{"+", "-"}, false},
                                                             {{"Mod", ""}, true},
                                                             {{"\\", ""}, false},
                                                             {{"*", "/"}, false}}};

  ExprPtr ParseLeftSide(int level) {
    if (level == kNotLevel) return ParseNot();
    if (level == kComparisonLevel) return ParseComparison();
    if (level == kLevels) return ParseSign();
    const Level& operators = kOperators[static_cast<std::size_t>(level)];
    ExprPtr left = ParseLeftSide(level + 1);
    int length = 0;
    while (true) {
      std::string_view op;
      for (std::string_view candidate : operators.ops)
        if (!candidate.empty() && (operators.words ? AtWord(candidate) : AtSymbol(candidate))) op = candidate;
      if (op.empty()) return left;
      if (++length > kMaxTerms)
        throw EngineError(kTooComplex, "an expression is too long", {}, Here().position);
      const int position = Here().position;
      ++place_;
      left = MakeBinary(op, std::move(left), ParseLeftSide(level + 1), position);
    }
  }

  ExprPtr ParseNot() {
    if (!AtWord("NOT")) return ParseLeftSide(kComparisonLevel);
    Depth depth(*this);
    auto e = std::make_unique<Expr>();
    e->kind = Expr::Kind::Unary;
    e->op = "Not";
    e->position = Here().position;
    ++place_;
    e->args.push_back(ParseNot());
    return e;
  }

  ExprPtr ParseComparison() {
    ExprPtr left = ParseLeftSide(kComparisonLevel + 1);
    int length = 0;
    while (true) {
      const int position = Here().position;
      if (++length > kMaxTerms) throw EngineError(kTooComplex, "an expression is too long", {}, position);
      bool compared = false;
      for (std::string_view op : {"=", "<>", "<=", ">=", "<", ">"}) {
        if (!TakeSymbol(op)) continue;
        left = MakeBinary(op, std::move(left), ParseLeftSide(kComparisonLevel + 1), position);
        compared = true;
        break;
      }
      if (compared) continue;
      if (TakeWord("IS")) {
        auto e = std::make_unique<Expr>();
        e->kind = Expr::Kind::IsNull;
        e->position = position;
        e->negated = TakeWord("NOT");
        NeedWord("NULL");
        e->args.push_back(std::move(left));
        left = std::move(e);
        continue;
      }
      const bool negated = AtWord("NOT") && (IsWord(Ahead(1), "LIKE") || IsWord(Ahead(1), "BETWEEN") ||
                                             IsWord(Ahead(1), "IN"));
      if (negated) ++place_;
      auto e = std::make_unique<Expr>();
      e->position = position;
      e->negated = negated;
      if (TakeWord("LIKE")) {
        e->kind = Expr::Kind::Like;
        e->args.push_back(std::move(left));
        e->args.push_back(ParseLeftSide(kComparisonLevel + 1));
      } else if (TakeWord("BETWEEN")) {
        e->kind = Expr::Kind::Between;
        e->args.push_back(std::move(left));
        e->args.push_back(ParseLeftSide(kComparisonLevel + 1));
        NeedWord("AND");
        e->args.push_back(ParseLeftSide(kComparisonLevel + 1));
      } else if (TakeWord("IN")) {
        NeedSymbol("(");
        e->args.push_back(std::move(left));
        if (AtWord("SELECT")) {
          e->kind = Expr::Kind::InQuery;
          e->query = ParseSubquery();
        } else {
          e->kind = Expr::Kind::InList;
          do {
            e->args.push_back(ParseExpr());
          } while (TakeSymbol(","));
          NeedSymbol(")");
        }
      } else {
        return left;
      }
      left = std::move(e);
    }
  }

  // A minus before a number belongs to the number: -10^2 is 100, and -(10)^2 is -100.
  bool AtNegativeNumber() const {
    return AtSymbol("-") && Ahead(1).kind == TokenKind::Literal &&
           LiteralOf(Ahead(1)).kind != Literal::Kind::Text && LiteralOf(Ahead(1)).kind != Literal::Kind::Date;
  }

  ExprPtr ParseSign() {
    if ((!AtSymbol("-") && !AtSymbol("+")) || AtNegativeNumber()) return ParsePower();
    Depth depth(*this);
    auto e = std::make_unique<Expr>();
    e->kind = Expr::Kind::Unary;
    e->op = Here().text;
    e->position = Here().position;
    ++place_;
    e->args.push_back(ParseSign());
    return e;
  }

  ExprPtr ParsePower() {
    ExprPtr left = ParsePrimary();
    int length = 0;
    while (AtSymbol("^")) {
      if (++length > kMaxTerms)
        throw EngineError(kTooComplex, "an expression is too long", {}, Here().position);
      const int position = Here().position;
      ++place_;
      const bool signedExponent = AtSymbol("-") || AtSymbol("+");
      left = MakeBinary("^", std::move(left), signedExponent ? ParseSign() : ParsePrimary(), position);
    }
    return left;
  }

  ExprPtr ParsePrimary() {
    auto e = std::make_unique<Expr>();
    const Token& token = Here();
    e->position = token.position;
    if (token.kind == TokenKind::Literal) {
      e->kind = Expr::Kind::Literal;
      e->literal = token.literal;
      e->value = LiteralOf(token).ToValue();
      ++place_;
      return e;
    }
    if (AtNegativeNumber()) {
      e->kind = Expr::Kind::Unary;
      e->op = "-";
      ++place_;
      e->args.push_back(ParsePrimary());
      return e;
    }
    if (TakeSymbol("(")) {
      if (AtWord("SELECT")) {
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
      ++place_;
      return e;
    }
    if (AtWord("EXISTS") && IsSymbol(Ahead(1), "(")) {
      place_ += 2;
      e->kind = Expr::Kind::Exists;
      e->query = ParseSubquery();
      return e;
    }
    if (token.kind == TokenKind::Name && IsSymbol(Ahead(1), "(") &&
        (!IsReservedWord(token.text) || AtWord("LEFT") || AtWord("RIGHT") || AtWord("ASC"))) {
      return ParseCall();
    }
    if (!AtName()) Fail("expected a value");
    e->kind = Expr::Kind::Column;
    e->name = NeedName("a field");
    if (TakeSymbol(".")) {
      e->qualifier = std::move(e->name);
      e->name = NeedName("a field");
    }
    return e;
  }

  ExprPtr ParseCall() {
    auto e = std::make_unique<Expr>();
    e->kind = Expr::Kind::Call;
    e->position = Here().position;
    e->name = std::string(Here().text);
    place_ += 2;
    if (TakeSymbol(")")) return e;
    if (AtSymbol("*") && IsSymbol(Ahead(1), ")")) {
      place_ += 2;
      e->star = true;
      return e;
    }
    do {
      e->args.push_back(ParseExpr());
    } while (TakeSymbol(","));
    NeedSymbol(")");
    return e;
  }

  const Lexed& lexed_;
  std::size_t place_ = 0;
  int depth_ = 0;
  bool needsLiterals_ = false;
};

}  // namespace

bool IsReservedWord(std::string_view word) {
  return std::any_of(kReserved.begin(), kReserved.end(),
                     [&](std::string_view reserved) { return SameName(reserved, word); });
}

Statement Parse(const Lexed& lexed) {
  return Parser(lexed).Run();
}

Statement ParseText(std::string_view sql) {
  Lexed lexed;
  Lex(sql, lexed);
  return Parse(lexed);
}

}  // namespace scorvane::engine::sql
