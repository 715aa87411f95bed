#include "engine/sql/Expressions.h"

#include <fmt/format.h>

#include <optional>
#include <vector>

#include "engine/EngineError.h"
#include "engine/sql/Calls.h"
#include "engine/sql/Grouping.h"
#include "engine/sql/Queries.h"

namespace scorvane::engine::sql {
namespace {

void NeedOneColumn(const std::vector<Output>& outputs, const Expr& e) {
  if (outputs.size() != 1)
    throw EngineError(kSyntaxError, "a subquery that stands for a value yields one column", {}, e.position);
}

void CheckComparable(SqlType a, SqlType b, const Expr& e) {
  const bool mismatch = (a == SqlType::Text && IsNumeric(b)) || (b == SqlType::Text && IsNumeric(a));
  if (mismatch) throw EngineError(kCriteriaMismatch, "a text is compared with a number", {}, e.position);
}

const char* Negation(const Expr& e) {
  return e.negated ? "NOT " : "";
}

Piece Comparison(Op op, Piece left, Piece right, const Expr& e) {
  CheckComparable(left.type, right.type, e);
  // The left side's collation decides, unless only the right side brings one.
  const bool rightBrings = right.collated && !left.collated;
  const std::string a = rightBrings ? AsValue(std::move(left)) : AsCollated(std::move(left));
  return ConditionPiece(fmt::format("({} {} {})", a, OpText(op), AsValue(std::move(right))));
}

Piece Between(Translation& t, const Expr& e, Scope& scope) {
  Piece value = TranslateExpr(t, *e.args[0], scope);
  Piece low = TranslateExpr(t, *e.args[1], scope);
  Piece high = TranslateExpr(t, *e.args[2], scope);
  CheckComparable(value.type, low.type, e);
  CheckComparable(value.type, high.type, e);
  // The bounds may come in either order.
  if (low.leaf && high.leaf) {
    const std::string from = AsCollated(std::move(low));
    const std::string to = AsCollated(std::move(high));
    return ConditionPiece(fmt::format("({0} {1}BETWEEN min({2}, {3}) AND max({2}, {3}))",
                                      AsCollated(std::move(value)), Negation(e), from, to));
  }
  return ConditionPiece(fmt::format("({}sv_between({}, {}, {}))", Negation(e), AsValue(std::move(value)),
                                    AsValue(std::move(low)), AsValue(std::move(high))));
}

// A Null in the list is equal to nothing, and that is known: it is left out.
Piece InList(Translation& t, const Expr& e, Scope& scope) {
  Piece value = TranslateExpr(t, *e.args[0], scope);
  std::string list;
  for (std::size_t i = 1; i < e.args.size(); ++i) {
    if (e.args[i]->kind == Expr::Kind::Null) continue;
    Piece item = TranslateExpr(t, *e.args[i], scope);
    CheckComparable(value.type, item.type, e);
    if (!list.empty()) list += ", ";
    list += AsValue(std::move(item));
  }
  // Without items the store says False of a Null, too.
  if (list.empty()) {
    return ConditionPiece(
        fmt::format("({}iif({} IS NULL, NULL, 0))", Negation(e), AsValue(std::move(value))));
  }
  return ConditionPiece(fmt::format("({} {}IN ({}))", AsCollated(std::move(value)), Negation(e), list));
}

Piece InQuery(Translation& t, const Expr& e, Scope& scope) {
  Piece value = TranslateExpr(t, *e.args[0], scope);
  std::vector<Output> outputs;
  const std::string query = QuerySql(t, *e.query, &scope, outputs, false);
  NeedOneColumn(outputs, e);
  CheckComparable(value.type, outputs[0].column.type, e);
  return ConditionPiece(fmt::format("({} {}IN ({}))", AsCollated(std::move(value)), Negation(e), query));
}

// Compares a total with the least or the greatest of the rows: the store takes no aggregate of a query into a
// subquery's own rows. The rows are written anew for each question, which nothing but a HAVING does.
Piece QuantifiedTotal(Piece value, const Expr& e, const std::string& query, SqlType type) {
  const bool in = e.op == (e.all ? Op::NotEqual : Op::Equal);
  if (in) {
    return ConditionPiece(
        fmt::format("({} {}IN ({}))", AsCollated(std::move(value)), e.all ? "NOT " : "", query));
  }
  if (e.op == Op::Equal || e.op == Op::NotEqual)
    throw EngineError(kSyntaxError, "an aggregate cannot be compared so", {}, e.position);
  const bool greater = e.op == Op::Greater || e.op == Op::GreaterOrEqual;
  const std::string rows = fmt::format("({})", query);
  const std::string column = OutputName(0);
  Piece bound = ValuePiece(
      fmt::format("(SELECT {}({}) FROM {})", greater == e.all ? "max" : "min", column, rows), type);
  const std::string test = Comparison(e.op, std::move(value), std::move(bound), e).sql;
  return ConditionPiece(
      fmt::format("(CASE {0} WHEN {1} THEN {1} WHEN {2} THEN (SELECT iif(count(*) > count({3}), NULL, {2}) "
                  "FROM {4}) ELSE "
                  "(SELECT iif(count(*) > 0, NULL, {2}) FROM {4}) END)",
                  test, e.all ? 0 : 1, e.all ? 1 : 0, column, rows));
}

// Any: True when the comparison holds for one row, Null when that is not known. All: False when it fails for
// one.
Piece Quantified(Translation& t, const Expr& e, Scope& scope) {
  Piece value = TranslateExpr(t, *e.args[0], scope);
  std::vector<Output> outputs;
  const std::string query = QuerySql(t, *e.query, &scope, outputs, false);
  NeedOneColumn(outputs, e);
  const SqlType type = outputs[0].column.type;
  if (HasAggregate(*e.args[0])) return QuantifiedTotal(std::move(value), e, query, type);
  const std::string source = t.NextSourceName();
  Piece row = ValuePiece(source + "." + OutputName(0), type);
  row.collated = row.type == SqlType::Text;
  const std::string test = Comparison(e.op, std::move(value), std::move(row), e).sql;
  const std::string rows = fmt::format("SELECT {} AS sv_holds FROM ({}) AS {}", test, query, source);
  return ConditionPiece(fmt::format(
      "(SELECT CASE WHEN {0}(sv_holds) = {1} THEN {1} WHEN count(*) > count(sv_holds) THEN NULL ELSE {2} END "
      "FROM ({3}))",
      e.all ? "min" : "max", e.all ? 0 : 1, e.all ? 1 : 0, rows));
}

// Two truth values, or the bits of two whole numbers.
Piece Logical(Op op, Piece left, Piece right) {
  const auto isNumber = [](SqlType type) { return IsNumeric(type) && type != SqlType::Boolean; };
  const auto canBeNumber = [](SqlType type) { return IsNumeric(type) || type == SqlType::Null; };
  if ((isNumber(left.type) && canBeNumber(right.type)) || (isNumber(right.type) && canBeNumber(left.type))) {
    const char* function = op == Op::And   ? "sv_bits_and"
                           : op == Op::Or  ? "sv_bits_or"
                           : op == Op::Xor ? "sv_bits_xor"
                           : op == Op::Eqv ? "sv_bits_eqv"
                                           : "sv_bits_imp";
    return ValuePiece(
        fmt::format("{}({}, {})", function, AsValue(std::move(left)), AsValue(std::move(right))),
        SqlType::Long);
  }
  const std::string a = AsCondition(std::move(left));
  const std::string b = AsCondition(std::move(right));
  switch (op) {
    case Op::And:
      return ConditionPiece(fmt::format("({} AND {})", a, b));
    case Op::Or:
      return ConditionPiece(fmt::format("({} OR {})", a, b));
    case Op::Xor:
      return ConditionPiece(fmt::format("((NOT {}) <> (NOT {}))", a, b));
    case Op::Eqv:
      return ConditionPiece(fmt::format("((NOT {}) = (NOT {}))", a, b));
    default:
      return ConditionPiece(fmt::format("((NOT {}) OR {})", a, b));
  }
}

Piece Unary(Translation& t, const Expr& e, Scope& scope) {
  Piece operand = TranslateExpr(t, *e.args[0], scope);
  if (e.op == Op::Not) {
    if (operand.type == SqlType::Boolean || !IsNumeric(operand.type))
      return ConditionPiece("(NOT " + AsCondition(std::move(operand)) + ")");
    return ValuePiece("sv_bits_not(" + AsValue(std::move(operand)) + ")", SqlType::Long);
  }
  const SqlType type = operand.type == SqlType::Single ? SqlType::Single
                       : IsWhole(operand.type)         ? SqlType::Long
                                                       : SqlType::Double;
  const std::string number = AsNumber(std::move(operand));
  return ValuePiece(e.op == Op::Negate ? "(-" + number + ")" : number, type);
}

// Whole numbers cannot leave the store's range unseen; all others are watched for it.
Piece Arithmetic(Op op, Piece left, Piece right) {
  const SqlType type = ArithmeticType(left.type, right.type);
  const bool whole = IsWhole(left.type) && IsWhole(right.type);
  const std::string a = AsNumber(std::move(left));
  const std::string b = AsNumber(std::move(right));
  if (whole) return ValuePiece(fmt::format("({} {} {})", a, OpText(op), b), type);
  const char* function = op == Op::Add ? "sv_plus" : op == Op::Subtract ? "sv_minus" : "sv_times";
  return ValuePiece(fmt::format("{}({}, {})", function, a, b), type);
}

// Numbers add, texts join; what it is may show only when it runs.
Piece Sum(Piece left, Piece right) {
  if (IsNumeric(left.type) && IsNumeric(right.type))
    return Arithmetic(Op::Add, std::move(left), std::move(right));
  if (left.type == SqlType::Text && right.type == SqlType::Text)
    return ValuePiece(fmt::format("({} || {})", left.sql, right.sql), SqlType::Text);
  const bool maybeText = !IsNumeric(left.type) && !IsNumeric(right.type);
  return ValuePiece(fmt::format("sv_add({}, {})", AsValue(std::move(left)), AsValue(std::move(right))),
                    maybeText ? SqlType::Unknown : SqlType::Double);
}

// a & b & c, or And and Or, in one pair of brackets, as the store allows only so many. Null when the operator
// has no such form, or another one for these operands.
std::optional<Piece> Chain(Translation& t, const Expr& e, Scope& scope) {
  if (e.op != Op::Join && e.op != Op::And && e.op != Op::Or) return std::nullopt;
  const auto continues = [&](const Expr& left) { return left.kind == Expr::Kind::Binary && left.op == e.op; };
  // What is grouped may be a part of it.
  if (!continues(*e.args[0]) || scope.ChecksGroups()) return std::nullopt;
  std::vector<const Expr*> operands;
  const Expr* left = &e;
  for (; continues(*left); left = left->args[0].get()) operands.push_back(left->args[1].get());
  operands.push_back(left);
  const char* between = e.op == Op::Join ? " || " : e.op == Op::And ? " AND " : " OR ";
  std::string sql;
  for (auto operand = operands.rbegin(); operand != operands.rend(); ++operand) {
    Piece piece = TranslateExpr(t, **operand, scope);
    if (e.op != Op::Join && IsNumeric(piece.type) && piece.type != SqlType::Boolean) return std::nullopt;
    sql += sql.empty() ? "(" : between;
    sql +=
        e.op == Op::Join ? "coalesce(" + AsText(std::move(piece)) + ", '')" : AsCondition(std::move(piece));
  }
  sql += ")";
  return e.op == Op::Join ? ValuePiece(std::move(sql), SqlType::Text) : ConditionPiece(std::move(sql));
}

Piece Binary(Translation& t, const Expr& e, Scope& scope) {
  if (std::optional<Piece> chain = Chain(t, e, scope)) return std::move(*chain);
  Piece left = TranslateExpr(t, *e.args[0], scope);
  Piece right = TranslateExpr(t, *e.args[1], scope);
  auto call = [&](const char* function, SqlType type) {
    return ValuePiece(
        fmt::format("{}({}, {})", function, AsValue(std::move(left)), AsValue(std::move(right))), type);
  };
  switch (e.op) {
    case Op::And:
    case Op::Or:
    case Op::Xor:
    case Op::Eqv:
    case Op::Imp:
      return Logical(e.op, std::move(left), std::move(right));
    case Op::Join:
      return ValuePiece(fmt::format("(coalesce({}, '') || coalesce({}, ''))", AsText(std::move(left)),
                                    AsText(std::move(right))),
                        SqlType::Text);
    case Op::Add:
      return Sum(std::move(left), std::move(right));
    case Op::Subtract:
    case Op::Multiply:
      return Arithmetic(e.op, std::move(left), std::move(right));
    case Op::Divide:
      return call("sv_div", SqlType::Double);
    case Op::IntegerDivide:
      return call("sv_idiv", SqlType::Long);
    case Op::Modulo:
      return call("sv_mod", SqlType::Long);
    case Op::Power:
      return call("sv_pow", SqlType::Double);
    default:
      return Comparison(e.op, std::move(left), std::move(right), e);
  }
}

Piece TranslateKind(Translation& t, const Expr& e, Scope& scope) {
  switch (e.kind) {
    case Expr::Kind::Literal:
      return LeafPiece(t.Param(e, false, nullptr), TypeOfValue(e.value.GetType()));
    case Expr::Kind::Null:
      return LeafPiece("NULL", SqlType::Null);
    case Expr::Kind::Boolean:
      return LeafPiece(e.value.ToBoolean() ? "(-1)" : "0", SqlType::Boolean);
    case Expr::Kind::Column:
      return TranslateColumn(t, e, scope);
    case Expr::Kind::Unary:
      return Unary(t, e, scope);
    case Expr::Kind::Binary:
      return Binary(t, e, scope);
    case Expr::Kind::Like: {
      const std::string text = AsText(TranslateExpr(t, *e.args[0], scope));
      const std::string pattern = AsText(TranslateExpr(t, *e.args[1], scope));
      return ConditionPiece(fmt::format("({}sv_like({}, {}))", Negation(e), text, pattern));
    }
    case Expr::Kind::Between:
      return Between(t, e, scope);
    case Expr::Kind::InList:
      return InList(t, e, scope);
    case Expr::Kind::InQuery:
      return InQuery(t, e, scope);
    case Expr::Kind::Quantified:
      return Quantified(t, e, scope);
    case Expr::Kind::Exists: {
      std::vector<Output> outputs;
      return ConditionPiece("EXISTS (" + QuerySql(t, *e.query, &scope, outputs, false) + ")");
    }
    case Expr::Kind::IsNull:
      return ConditionPiece(fmt::format("({} IS {}NULL)", AsValue(TranslateExpr(t, *e.args[0], scope)),
                                        e.negated ? "NOT " : ""));
    case Expr::Kind::Call:
      return TranslateCall(t, e, scope);
    case Expr::Kind::Subquery: {
      std::vector<Output> outputs;
      std::string sql = "(" + QuerySql(t, *e.query, &scope, outputs, false) + ")";
      NeedOneColumn(outputs, e);
      return ValuePiece(std::move(sql), outputs[0].column.type);
    }
  }
  return {};
}

}  // namespace

Piece TranslateExpr(Translation& t, const Expr& e, Scope& scope) {
  const Translation::Deeper deeper(t, e.position);
  const GroupedHere grouped(t, e, scope);
  Piece piece = TranslateKind(t, e, scope);
  t.Spend(piece.sql.size());
  return piece;
}

}  // namespace scorvane::engine::sql
