#include "engine/sql/Calls.h"

#include <fmt/format.h>

#include <unordered_map>

#include "engine/EngineError.h"
#include "engine/Functions.h"
#include "engine/Names.h"
#include "engine/sql/Expressions.h"

namespace scorvane::engine::sql {
namespace {

using Handler = Piece (*)(Translation& t, const Expr& call, Scope& scope);

[[noreturn]] void WrongCount(const FunctionInfo& info, const Expr& call) {
  throw EngineError(kSyntaxError, fmt::format("wrong number of arguments used with function '{}'", info.name),
                    {}, call.position);
}

Piece Argument(Translation& t, const Expr& call, std::size_t i, Scope& scope) {
  return TranslateExpr(t, *call.args[i], scope);
}

// ---- aggregates

Piece AggregateArgument(Translation& t, const Expr& call, Scope& scope) {
  const Temporarily inside(scope.inAggregate, true);
  const Temporarily unchecked(scope.checksGroups, false);
  return Argument(t, call, 0, scope);
}

Piece Count(Translation& t, const Expr& call, Scope& scope) {
  if (call.star) return ValuePiece("count(*)", SqlType::Long);
  return ValuePiece("count(" + AsValue(AggregateArgument(t, call, scope)) + ")", SqlType::Long);
}

Piece SumOf(Translation& t, const Expr& call, Scope& scope) {
  t.plan.totals = true;
  return ValuePiece("sum(" + AsNumber(AggregateArgument(t, call, scope)) + ")", SqlType::Double);
}

Piece Avg(Translation& t, const Expr& call, Scope& scope) {
  return ValuePiece("avg(" + AsNumber(AggregateArgument(t, call, scope)) + ")", SqlType::Double);
}

// Min, Max, First and Last give one of the values.
Piece Pick(Translation& t, const Expr& call, Scope& scope, const std::string& function) {
  Piece value = AggregateArgument(t, call, scope);
  const SqlType type = value.type == SqlType::Boolean ? SqlType::Long : value.type;
  return ValuePiece(fmt::format("{}({})", function, AsCollated(std::move(value))), type);
}

Piece Min(Translation& t, const Expr& call, Scope& scope) {
  return Pick(t, call, scope, "min");
}
Piece Max(Translation& t, const Expr& call, Scope& scope) {
  return Pick(t, call, scope, "max");
}

Piece PlainAggregate(Translation& t, const Expr& call, Scope& scope, const FunctionInfo& info) {
  if (info.result == Value::Type::Null) return Pick(t, call, scope, info.StoreName());
  return ValuePiece(fmt::format("{}({})", info.StoreName(), AsValue(AggregateArgument(t, call, scope))),
                    TypeOfValue(info.result));
}

// ---- choices

// One that stands in the last place of another goes on with its cases: the store allows only so many
// brackets.
Piece IIf(Translation& t, const Expr& call, Scope& scope) {
  const FunctionInfo* self = FindFunction(call.name);
  const auto goesOn = [&](const Expr& no) {
    return no.kind == Expr::Kind::Call && no.args.size() == 3 && FindFunction(no.name) == self &&
           !scope.ChecksGroups();  // what is grouped may be a part of it
  };
  SqlType type = SqlType::Null;
  std::string sql = "(CASE";
  const Expr* e = &call;
  while (true) {
    const std::string test = AsCondition(Argument(t, *e, 0, scope));
    Piece yes = Argument(t, *e, 1, scope);
    type = CommonType(type, yes.type);
    sql += fmt::format(" WHEN {} THEN {}", test, AsValue(std::move(yes)));
    if (!goesOn(*e->args[2])) break;
    e = e->args[2].get();
  }
  Piece no = Argument(t, *e, 2, scope);
  type = CommonType(type, no.type);
  return ValuePiece(fmt::format("{} ELSE {} END)", sql, AsValue(std::move(no))), type);
}

Piece Nz(Translation& t, const Expr& call, Scope& scope) {
  Piece value = Argument(t, call, 0, scope);
  const SqlType alone = value.type;
  if (call.args.size() == 1) {
    const char* nothing = alone == SqlType::Text || alone == SqlType::Null ? "''" : "0";
    return ValuePiece(fmt::format("coalesce({}, {})", AsValue(std::move(value)), nothing),
                      alone == SqlType::Null ? SqlType::Text : alone);
  }
  Piece instead = Argument(t, call, 1, scope);
  const SqlType type = CommonType(alone, instead.type);
  return ValuePiece(fmt::format("coalesce({}, {})", AsValue(std::move(value)), AsValue(std::move(instead))),
                    type);
}

Piece IsNullCall(Translation& t, const Expr& call, Scope& scope) {
  return ConditionPiece(fmt::format("({} IS NULL)", AsValue(Argument(t, call, 0, scope))));
}

Piece Abs(Translation& t, const Expr& call, Scope& scope) {
  t.plan.totals = true;
  Piece value = Argument(t, call, 0, scope);
  const SqlType type = value.type == SqlType::Boolean ? SqlType::Long : value.type;
  return ValuePiece(fmt::format("abs({})", AsNumber(std::move(value))),
                    IsNumeric(type) ? type : SqlType::Double);
}

Piece Switch(Translation& t, const Expr& call, Scope& scope) {
  if (call.args.size() % 2 != 0) WrongCount(*FindFunction(call.name), call);
  SqlType type = SqlType::Null;
  std::string sql = "(CASE";
  for (std::size_t i = 0; i < call.args.size(); i += 2) {
    const std::string when = AsCondition(Argument(t, call, i, scope));
    Piece then = Argument(t, call, i + 1, scope);
    type = CommonType(type, then.type);
    sql += fmt::format(" WHEN {} THEN {}", when, AsValue(std::move(then)));
  }
  return ValuePiece(sql + " END)", type);
}

Piece Choose(Translation& t, const Expr& call, Scope& scope) {
  SqlType type = SqlType::Null;
  std::string sql = fmt::format("(CASE sv_fix({})", AsValue(Argument(t, call, 0, scope)));
  for (std::size_t i = 1; i < call.args.size(); ++i) {
    Piece then = Argument(t, call, i, scope);
    type = CommonType(type, then.type);
    sql += fmt::format(" WHEN {} THEN {}", i, AsValue(std::move(then)));
  }
  return ValuePiece(sql + " END)", type);
}

// ---- the others

Piece PlainCall(Translation& t, const Expr& call, Scope& scope, const FunctionInfo& info) {
  std::string args;
  for (std::size_t i = 0; i < call.args.size(); ++i)
    args += (i > 0 ? ", " : "") + AsArgument(Argument(t, call, i, scope));
  return ValuePiece(fmt::format("{}({})", info.StoreName(), args), TypeOfValue(info.result));
}

Handler HandlerOf(const FunctionInfo& info) {
  static const std::unordered_map<const FunctionInfo*, Handler> kHandlers = {
      {FindFunction("Count"), Count},   {FindFunction("Sum"), SumOf},         {FindFunction("Avg"), Avg},
      {FindFunction("Min"), Min},       {FindFunction("Max"), Max},           {FindFunction("IIf"), IIf},
      {FindFunction("Nz"), Nz},         {FindFunction("IsNull"), IsNullCall}, {FindFunction("Abs"), Abs},
      {FindFunction("Switch"), Switch}, {FindFunction("Choose"), Choose},
  };
  const auto found = kHandlers.find(&info);
  return found == kHandlers.end() ? nullptr : found->second;
}

}  // namespace

Piece TranslateCall(Translation& t, const Expr& call, Scope& scope) {
  const FunctionInfo* info = FindFunction(call.name);
  if (info == nullptr) throw EngineError(kUndefinedFunction, call.name, {}, call.position);
  const Handler handler = HandlerOf(*info);
  const int count = call.star ? 1 : static_cast<int>(call.args.size());
  if (count < info->minArgs || count > info->maxArgs || (call.star && handler != Count))
    WrongCount(*info, call);
  if (info->aggregate && !scope.allowsAggregates)
    throw EngineError(kSyntaxError, fmt::format("the aggregate '{}' cannot stand here", info->name), {},
                      call.position);
  if (info->aggregate && scope.inAggregate)
    throw EngineError(kSyntaxError, "an aggregate stands inside an aggregate", {}, call.position);
  if (handler != nullptr) return handler(t, call, scope);
  if (info->aggregate) return PlainAggregate(t, call, scope, *info);
  return PlainCall(t, call, scope, *info);
}

}  // namespace scorvane::engine::sql
