#include "engine/sql/Parser.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "engine/sql/ExpressionParser.h"

namespace scorvane::engine::sql {
namespace {

constexpr std::array<std::string_view, 44> kReserved = {
    "ALL",         "AND",    "AS",     "ASC",    "BETWEEN", "BY",      "DELETE", "DESC",   "DISTINCT",
    "DISTINCTROW", "EQV",    "EXISTS", "FALSE",  "FROM",    "GROUP",   "HAVING", "IMP",    "IN",
    "INNER",       "INSERT", "INTO",   "IS",     "JOIN",    "LEFT",    "LIKE",   "MOD",    "NOT",
    "NULL",        "ON",     "OR",     "ORDER",  "OUTER",   "PERCENT", "RIGHT",  "SELECT", "SET",
    "TOP",         "TRUE",   "UNION",  "UPDATE", "VALUES",  "WHERE",   "XOR",    "WITH"};

class Parser final : public ExpressionParser {
 public:
  using ExpressionParser::ExpressionParser;

  Statement Run() {
    Statement statement;
    if (AtQuery()) {
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
  // ---- queries

  QueryPtr ParseQuery() override {
    const Depth depth(*this);
    auto query = std::make_unique<Query>();
    query->selects.push_back(ParseUnionMember());
    while (TakeWord("UNION")) {
      if (query->selects.size() >= kMaxUnionSelects) TooMuch("a UNION has too many SELECTs");
      query->unionAll.push_back(TakeWord("ALL"));
      query->selects.push_back(ParseUnionMember());
    }
    if (TakeWord("ORDER")) {
      NeedWord("BY");
      do {
        if (query->orderBy.size() >= kMaxColumns) TooMuch("ORDER BY names too many columns");
        OrderItem item;
        item.expr = ParseExpr();
        if (TakeWord("DESC")) {
          item.descending = true;
        } else {
          TakeWord("ASC");
        }
        query->orderBy.push_back(std::move(item));
      } while (TakeSymbol(","));
    }
    // Who may read is settled by the file; the words are let pass.
    if (AtWord("WITH") && IsWord(Ahead(1), "OWNERACCESS")) {
      Skip(2);
      NeedWord("OPTION");
    }
    return query;
  }

  // A SELECT, or one in brackets; what has an order or a UNION of its own in there becomes a subquery.
  Select ParseUnionMember() {
    if (!AtSymbol("(")) return ParseSelect();
    const int position = Here().position;
    Skip(1);
    QueryPtr inner = ParseSubquery();
    if (inner->selects.size() == 1 && inner->orderBy.empty()) return std::move(inner->selects[0]);
    auto source = std::make_unique<Source>();
    source->kind = Source::Kind::Subquery;
    source->position = position;
    source->alias = "Query1";
    source->query = std::move(inner);
    Select select;
    select.sources.push_back(std::move(source));
    SelectItem all;
    all.star = true;
    all.position = position;
    select.items.push_back(std::move(all));
    return select;
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
      Skip(1);
      select.topPercent = TakeWord("PERCENT");
      if (select.topPercent && select.top > 100) Fail("TOP takes at most 100 PERCENT");
    }
    do {
      if (select.items.size() >= kMaxColumns) TooMuch("a SELECT has too many columns");
      select.items.push_back(ParseItem());
    } while (TakeSymbol(","));
    if (TakeWord("FROM")) select.sources = ParseSources();
    if (TakeWord("WHERE")) select.where = ParseExpr();
    if (TakeWord("GROUP")) {
      NeedWord("BY");
      do {
        if (select.groupBy.size() >= kMaxColumns) TooMuch("GROUP BY names too many columns");
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
      Skip(2);
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

  std::vector<SourcePtr> ParseSources() {
    std::vector<SourcePtr> sources;
    do {
      if (sources.size() >= kMaxSources) TooMuch("FROM names too many tables");
      sources.push_back(ParseJoins());
    } while (TakeSymbol(","));
    return sources;
  }

  bool AtJoin() const { return AtWord("INNER") || AtWord("LEFT") || AtWord("RIGHT") || AtWord("JOIN"); }

  SourcePtr ParseJoins() {
    const Depth depth(*this);
    SourcePtr left = ParseSource();
    int joins = 0;
    while (AtJoin()) {
      if (++joins > kMaxTerms) TooMuch("too many joins");
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
      const Depth depth(*this);
      const int position = Here().position;
      Skip(1);
      if (!AtQuery()) {
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
    if (!AtQuery() && TakeSymbol("(")) {
      do {
        if (statement.columns.size() >= kMaxColumns) TooMuch("INSERT names too many fields");
        statement.columnPositions.push_back(Here().position);
        statement.columns.push_back(NeedName("a field"));
      } while (TakeSymbol(","));
      NeedSymbol(")");
    }
    ParseInPath(statement);
    if (TakeWord("VALUES")) {
      NeedSymbol("(");
      do {
        if (statement.values.size() >= kMaxColumns) TooMuch("INSERT has too many values");
        statement.values.push_back(ParseExpr());
      } while (TakeSymbol(","));
      NeedSymbol(")");
    } else if (AtQuery()) {
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
    Skip(1);
  }

  void ParseUpdate(Statement& statement) {
    statement.kind = Statement::Kind::Update;
    TakeWord("DISTINCTROW");  // a row is changed once in any case
    statement.sources = ParseSources();
    NeedWord("SET");
    do {
      if (statement.assignments.size() >= kMaxColumns) TooMuch("SET names too many fields");
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

void CheckBrackets(std::string_view text) {
  Lexed lexed;
  Lex(text, lexed);
  int open = 0;
  for (const Token& token : lexed.tokens) {
    if (token.kind != TokenKind::Symbol) continue;
    open += token.text == "(" ? 1 : token.text == ")" ? -1 : 0;
    if (open < 0) throw EngineError(kSyntaxError, fmt::format("at character {}", token.position), text);
  }
}

}  // namespace scorvane::engine::sql
