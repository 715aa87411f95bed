// A statement as a tree, and its way back to text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/Value.h"

namespace scorvane::engine::sql {

enum class Op : std::uint8_t {
  None,
  Negate,
  Plus,
  Not,
  Power,
  Multiply,
  Divide,
  IntegerDivide,
  Modulo,
  Add,
  Subtract,
  Join,
  Equal,
  NotEqual,
  Less,
  Greater,
  LessOrEqual,
  GreaterOrEqual,
  And,
  Or,
  Xor,
  Eqv,
  Imp,
};
// As it is written.
const char* OpText(Op op);

struct Expr;
struct Query;
using ExprPtr = std::unique_ptr<Expr>;
using QueryPtr = std::unique_ptr<Query>;

struct Expr {
  enum class Kind : std::uint8_t {
    Literal,  // value, literal
    Null,
    Boolean,     // value
    Column,      // qualifier (may be empty), name
    Unary,       // op Negate, Plus or Not; args[0]
    Binary,      // op; args[0], args[1]
    Like,        // args[0] Like args[1]; negated
    Between,     // args[0] between args[1] and args[2]; negated
    InList,      // args[0] in args[1...]; negated
    InQuery,     // args[0] in query; negated
    Quantified,  // args[0], a comparison op, All or Any of query; all
    Exists,      // query
    IsNull,      // args[0]; negated
    Call,        // name, args; Count(*) has star
    Subquery,    // query
  };
  Kind kind = Kind::Null;
  int position = 0;
  Value value;
  int literal = -1;  // which literal of the statement, -1 for one that is not lifted
  std::string qualifier;
  std::string name;
  Op op = Op::None;
  bool negated = false;
  bool star = false;
  bool all = false;
  std::vector<ExprPtr> args;
  QueryPtr query;
};

struct Source {
  enum class Kind : std::uint8_t { Table, Subquery, Join };
  enum class JoinType : std::uint8_t { Inner, Left, Right };
  Kind kind = Kind::Table;
  int position = 0;
  std::string name;   // of a table
  std::string alias;  // empty for none
  QueryPtr query;
  JoinType join = JoinType::Inner;
  std::unique_ptr<Source> left;
  std::unique_ptr<Source> right;
  ExprPtr on;
};
using SourcePtr = std::unique_ptr<Source>;

struct SelectItem {
  bool star = false;
  std::string qualifier;  // of T.*
  ExprPtr expr;
  std::string alias;
  int position = 0;
};

struct Select {
  bool distinct = false;
  bool distinctRow = false;
  int top = -1;  // -1 for none
  bool topPercent = false;
  std::vector<SelectItem> items;
  std::vector<SourcePtr> sources;
  ExprPtr where;
  std::vector<ExprPtr> groupBy;
  ExprPtr having;
};

struct OrderItem {
  ExprPtr expr;
  bool descending = false;
};

struct Query {
  std::vector<Select> selects;  // more than one: a UNION
  std::vector<bool> unionAll;   // between selects[i] and selects[i + 1]
  std::vector<OrderItem> orderBy;
};

struct Assignment {
  std::string qualifier;
  std::string name;
  int position = 0;
  ExprPtr expr;
};

struct Statement {
  enum class Kind : std::uint8_t { Query, Insert, Update, Delete };
  Kind kind = Kind::Query;
  QueryPtr query;  // of a Query, or the source of an Insert

  std::string table;  // Insert: the target; Delete: the T of T.*, empty for none
  int tablePosition = 0;
  std::string inPath;
  bool hasInPath = false;
  std::vector<std::string> columns;
  std::vector<int> columnPositions;
  std::vector<ExprPtr> values;

  std::vector<SourcePtr> sources;  // Update, Delete
  std::vector<Assignment> assignments;
  ExprPtr where;

  // Literals are part of the tree (TOP 5, IN 'path'), so that it is not the tree of every statement of its
  // shape.
  bool needsLiterals = false;
};

// The statement as text again; parsing that gives the same tree.
std::string Print(const Statement& statement);
std::string Print(const Expr& expr);

}  // namespace scorvane::engine::sql
