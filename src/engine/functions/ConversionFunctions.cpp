// From one type to another, and what type a value is of.
#include <cmath>

#include <fmt/format.h>

#include "engine/Date.h"
#include "engine/EngineError.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

Value WholeWithin(const Args& args, double lowest, double highest, const char* type) {
  const double number = RoundHalfEven(args.Number(0));
  if (!(number >= lowest && number <= highest)) throw EngineError(kOverflow, args.Text(0), type);
  return Value(static_cast<std::int32_t>(number));
}

Value CSng(const Args& args) {
  const double number = args.Number(0);
  if (std::fabs(number) > 3.4028234663852886e38) throw EngineError(kOverflow, args.Text(0), "Single");
  return Value(static_cast<float>(number));
}

// Money has four decimals.
Value CCur(const Args& args) {
  const double number = args.Number(0);
  if (std::fabs(number) > 922337203685477.5807) throw EngineError(kOverflow, args.Text(0), "Currency");
  return Value(RoundHalfEven(number * 10000) / 10000);
}

Value CBool(const Args& args) {
  double number = 0;
  if (args.IsText(0) && ReadNumber(args.Text(0), args.decimal, number)) return Value(number != 0);
  return Value(args.At(0).ToBoolean(args.decimal));
}

Value Str(const Args& args) {
  if (args.IsText(0)) args.Number(0);  // throws for what is no number
  const Value value = args.IsText(0) ? Value(args.Number(0)) : args.At(0);
  if (value.GetType() == Type::Date) return Value(ExpressionText(value, '.'));
  const std::string text = value.ToText('.');
  return Value(text.starts_with('-') ? text : " " + text);
}

Value Val(const Args& args) {
  return Value(LeadingNumber(args.Text(0)));
}

Value IsNumeric(const Args& args) {
  if (args.IsNull(0)) return Value(false);
  double number = 0;
  if (args.IsText(0)) return Value(ReadNumber(args.Text(0), args.decimal, number));
  return Value(args.At(0).GetType() != Type::Date);
}

Value IsDate(const Args& args) {
  if (args.IsNull(0)) return Value(false);
  double days = 0;
  if (args.IsText(0)) return Value(ParseDate(args.Text(0), days));
  return Value(args.At(0).GetType() == Type::Date);
}

struct TypeCode {
  int code;
  const char* name;
};

TypeCode TypeOf(const Args& args) {
  switch (args.At(0).GetType()) {
    case Type::Null:
      return {1, "Null"};
    case Type::Boolean:
      return {11, "Boolean"};
    case Type::Long:
      return {3, "Long"};
    case Type::Single:
      return {4, "Single"};
    case Type::Double:
      return {5, "Double"};
    case Type::Date:
      return {7, "Date"};
    case Type::Text:
      break;
  }
  return {8, "String"};
}

}  // namespace

std::span<const FunctionInfo> ConversionFunctions() {
  static constexpr FunctionInfo kTable[] = {
      Function("CStr", 1, 1, Type::Text, [](const Args& a) { return Value(a.Text(0)); }),
      Function("CByte", 1, 1, Type::Long, [](const Args& a) { return WholeWithin(a, 0, 255, "Byte"); }),
      Function("CInt", 1, 1, Type::Long,
               [](const Args& a) { return WholeWithin(a, -32768, 32767, "Integer"); }),
      Function("CLng", 1, 1, Type::Long,
               [](const Args& a) { return WholeWithin(a, INT32_MIN, INT32_MAX, "Long"); }),
      Function("CSng", 1, 1, Type::Single, CSng),
      Function("CDbl", 1, 1, Type::Double, [](const Args& a) { return Value(a.Number(0)); }),
      Function("CCur", 1, 1, Type::Double, CCur),
      Function("CBool", 1, 1, Type::Boolean, CBool),
      Function("CDate", 1, 1, Type::Date, [](const Args& a) { return Value::FromDate(a.Days(0)); }),
      Function("CVDate", 1, 1, Type::Date, [](const Args& a) { return Value::FromDate(a.Days(0)); }),
      Function("Val", 1, 1, Type::Double, Val),
      Function("Str", 1, 1, Type::Text, Str),
      Function(
          "Hex", 1, 1, Type::Text,
          [](const Args& a) { return Value(fmt::format("{:X}", static_cast<std::uint32_t>(a.Whole(0)))); }),
      Function(
          "Oct", 1, 1, Type::Text,
          [](const Args& a) { return Value(fmt::format("{:o}", static_cast<std::uint32_t>(a.Whole(0)))); }),
      NullFunction("IsNumeric", 1, 1, Type::Boolean, IsNumeric),
      NullFunction("IsDate", 1, 1, Type::Boolean, IsDate),
      NullFunction("VarType", 1, 1, Type::Long, [](const Args& a) { return Value(TypeOf(a).code); }),
      NullFunction("TypeName", 1, 1, Type::Text, [](const Args& a) { return Value(TypeOf(a).name); }),
  };
  return kTable;
}

}  // namespace scorvane::engine
