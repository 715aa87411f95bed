// What the translator writes for operators, and for values on their way into fields and functions.
#include <fmt/format.h>

#include <cmath>

#include "engine/EngineError.h"
#include "engine/functions/Characters.h"
#include "engine/functions/Like.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

Value Divide(const Args& args) {
  const double divisor = args.Number(1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(args.Number(0) / divisor);
}

double WholeOperand(const Args& args, int i) {
  const double number = RoundHalfEven(args.Number(i));
  if (std::fabs(number) > 2147483648.0) throw EngineError(kOverflow, args.Text(i), "Long");
  return number;
}

Value IntegerDivide(const Args& args) {
  const double divisor = WholeOperand(args, 1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(std::trunc(WholeOperand(args, 0) / divisor));
}

Value Modulo(const Args& args) {
  const double divisor = WholeOperand(args, 1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(static_cast<std::int32_t>(std::fmod(WholeOperand(args, 0), divisor)));
}

Value Power(const Args& args) {
  const double base = args.Number(0);
  const double exponent = args.Number(1);
  // A root of a negative number, and 0 to a negative power, have no value.
  const bool root = base < 0 && exponent != std::trunc(exponent);
  if (root || (base == 0 && exponent < 0)) throw EngineError(kInvalidArgument, "^");
  const double result = std::pow(base, exponent);
  if (!std::isfinite(result))
    throw EngineError(kOverflow, fmt::format("{}^{}", args.Text(0), args.Text(1)), "Double");
  return Value(result);
}

// Texts join, numbers add, and a text beside a number is added when it reads as one.
Value Add(const Args& args) {
  double number = 0;
  const auto isWord = [&](int i) {
    return args.IsText(i) && !ReadNumber(args.Text(i), args.decimal, number);
  };
  if ((args.IsText(0) && args.IsText(1)) || isWord(0) || isWord(1)) {
    std::string joined = args.Text(0) + args.Text(1);
    if (joined.size() > kLongestText) throw EngineError(kOutOfStringSpace, "+", std::to_string(kLongestText));
    return Value(std::move(joined));
  }
  return Value(args.Number(0) + args.Number(1));
}

Value Store(const Args& args) {
  const std::shared_ptr<const StoreTarget>& target =
      args.State().targets.at(static_cast<std::size_t>(args.Whole(1)));
  return ConvertForField(args.At(0), *target, args.decimal);
}

constexpr FunctionInfo Operator(const char* name, int args, Type result, Handler handler) {
  FunctionInfo info = Function(name, args, args, result, handler);
  info.internal = true;
  return info;
}

constexpr FunctionInfo StoreOperator() {
  FunctionInfo info = Operator("store", 2, Type::Null, Store);
  info.takesNull = true;
  info.repeatable = false;
  return info;
}

}  // namespace

std::span<const FunctionInfo> Operators() {
  static constexpr FunctionInfo kTable[] = {
      Operator("div", 2, Type::Double, Divide),
      Operator("idiv", 2, Type::Long, IntegerDivide),
      Operator("mod", 2, Type::Long, Modulo),
      Operator("pow", 2, Type::Double, Power),
      Operator("add", 2, Type::Null, Add),
      Operator("like", 2, Type::Boolean,
               [](const Args& a) { return Value(MatchesPattern(FoldCase(a.Text(0)), FoldCase(a.Text(1)))); }),
      Operator("number", 1, Type::Double,
               [](const Args& a) { return a.IsText(0) ? Value(a.Number(0)) : a.At(0); }),
      // A value of the store with the type that it has lost there.
      Operator("as_date", 1, Type::Date, [](const Args& a) { return Value::FromDate(a.Number(0)); }),
      Operator("as_single", 1, Type::Single,
               [](const Args& a) { return Value(static_cast<float>(a.Number(0))); }),
      StoreOperator(),
  };
  return kTable;
}

}  // namespace scorvane::engine
