// Functions that write numbers and dates for people.
#include <array>

#include "engine/Format.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

// Format(value, format, first day, first week)
Value Format(const Args& args) {
  const Value value = args.At(0);
  const std::string format = args.Count() > 1 && !args.IsNull(1) ? args.Text(1) : std::string();
  if (format.empty()) return value.IsNull() ? Value() : Value(args.Text(0));
  WeekRule weeks;
  if (args.Count() > 2 && args.WholeWithin(2, 0, 7) != 0) weeks.firstDay = args.Whole(2);
  if (args.Count() > 3 && args.WholeWithin(3, 0, 3) != 0)
    weeks.firstWeek = static_cast<WeekRule::First>(args.Whole(3));
  return args.Bounded(FormatValue(value, format, args.decimal, weeks));
}

// A switch that is -1, 0, or -2 for what is usual.
bool Switch(const Args& args, int i, bool usual) {
  const int chosen = i < args.Count() ? args.WholeWithin(i, -2, 1) : -2;
  return chosen == -2 ? usual : chosen != 0;
}

// value, decimals, a zero before the point, negatives in parentheses, groups of thousands
Value Written(const Args& args, std::string_view before, std::string_view behind, bool usualParentheses) {
  const int given = args.Count() > 1 ? args.WholeWithin(1, -1, 15) : -1;
  const int decimals = given < 0 ? 2 : given;
  std::string number(before);
  number += Switch(args, 4, true) ? "#,##" : "#";
  number += Switch(args, 2, true) ? '0' : '#';
  if (decimals > 0) number.append(1, '.').append(static_cast<std::size_t>(decimals), '0');
  number += behind;
  std::string format = number;
  if (Switch(args, 3, usualParentheses)) format += ";(" + number + ")";
  const Value value = args.At(0);
  return Value(
      FormatValue(value.GetType() == Type::Single ? value : Value(args.Number(0)), format, args.decimal));
}

Value FormatDateTime(const Args& args) {
  constexpr std::array<std::string_view, 5> kNames = {"General Date", "Long Date", "Short Date", "Long Time",
                                                      "Short Time"};
  const int name = args.Count() > 1 ? args.WholeWithin(1, 0, 4) : 0;
  return Value(
      FormatValue(Value::FromDate(args.Days(0)), kNames[static_cast<std::size_t>(name)], args.decimal));
}

}  // namespace

std::span<const FunctionInfo> FormatFunctions() {
  static constexpr FunctionInfo kTable[] = {
      NullFunction("Format", 1, 4, Type::Text, Format),
      Function("FormatNumber", 1, 5, Type::Text, [](const Args& a) { return Written(a, "", "", false); }),
      Function("FormatPercent", 1, 5, Type::Text, [](const Args& a) { return Written(a, "", "%", false); }),
      Function("FormatCurrency", 1, 5, Type::Text, [](const Args& a) { return Written(a, "$", "", true); }),
      Function("FormatDateTime", 1, 2, Type::Text, FormatDateTime),
  };
  return kTable;
}

}  // namespace scorvane::engine
