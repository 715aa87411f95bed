// Functions of dates and times.
#include <algorithm>
#include <array>
#include <cmath>

#include "engine/Date.h"
#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

enum class Interval { Year, Quarter, Month, DayOfYear, Day, Weekday, Week, Hour, Minute, Second };

Interval IntervalOf(const Args& args, int i) {
  constexpr std::array<std::string_view, 10> kNames = {"yyyy", "q", "m", "y", "d", "w", "ww", "h", "n", "s"};
  const std::string name = args.Text(i);
  for (std::size_t n = 0; n < kNames.size(); ++n)
    if (SameName(name, kNames[n])) return static_cast<Interval>(n);
  args.Refuse();
}

Value DateWithin(const Args& args, double days) {
  if (!IsDateInRange(days)) args.Refuse();
  return Value::FromDate(days);
}

Value DateAdd(const Args& args) {
  const Interval interval = IntervalOf(args, 0);
  const int number = args.Whole(1);
  const double days = args.Days(2);
  const DateParts parts = SplitDate(days);
  const int day = DayNumber(days);
  const double second = SecondOfDay(days);
  switch (interval) {
    case Interval::Year:
    case Interval::Quarter:
    case Interval::Month: {
      const std::int64_t months = std::int64_t{number} * (interval == Interval::Year      ? 12
                                                          : interval == Interval::Quarter ? 3
                                                                                          : 1);
      const std::int64_t all = std::int64_t{parts.year} * 12 + parts.month - 1 + months;
      if (all < 1200 || all >= 120000) args.Refuse();
      const auto year = static_cast<int>(all / 12);
      const auto month = static_cast<int>(all % 12) + 1;
      // The last day of a month that is shorter.
      return DateWithin(
          args, JoinDate(DayNumberOf(year, month, std::min(parts.day, DaysInMonth(year, month))), second));
    }
    case Interval::DayOfYear:
    case Interval::Day:
    case Interval::Weekday:
      return DateWithin(args, JoinDate(day + static_cast<double>(number), second));
    case Interval::Week:
      return DateWithin(args, JoinDate(day + 7.0 * number, second));
    case Interval::Hour:
      return DateWithin(args, JoinDate(day, second + 3600.0 * number));
    case Interval::Minute:
      return DateWithin(args, JoinDate(day, second + 60.0 * number));
    case Interval::Second:
      break;
  }
  return DateWithin(args, JoinDate(day, second + number));
}

// First day (0 and 1: Sunday) and first week (0 and 1: that of January 1) from two optional arguments.
WeekRule WeekRuleOf(const Args& args, int i) {
  WeekRule rule;
  if (i < args.Count() && args.WholeWithin(i, 0, 7) != 0) rule.firstDay = args.Whole(i);
  if (i + 1 < args.Count() && args.WholeWithin(i + 1, 0, 3) != 0)
    rule.firstWeek = static_cast<WeekRule::First>(args.Whole(i + 1));
  return rule;
}

Value DateDiff(const Args& args) {
  const Interval interval = IntervalOf(args, 0);
  const double from = args.Days(1);
  const double to = args.Days(2);
  const WeekRule rule = WeekRuleOf(args, 3);
  const DateParts a = SplitDate(from);
  const DateParts b = SplitDate(to);
  const int days = DayNumber(to) - DayNumber(from);
  // Units that begin between the two, not whole ones that lie between.
  const auto clock = [&](std::int64_t seconds) {
    const std::int64_t difference =
        days * (86400 / seconds) + SecondOfDay(to) / seconds - SecondOfDay(from) / seconds;
    return Value(Value(static_cast<double>(difference)).ToLong());
  };
  switch (interval) {
    case Interval::Year:
      return Value(b.year - a.year);
    case Interval::Quarter:
      return Value((b.year - a.year) * 4 + (b.month - 1) / 3 - (a.month - 1) / 3);
    case Interval::Month:
      return Value((b.year - a.year) * 12 + b.month - a.month);
    case Interval::DayOfYear:
    case Interval::Day:
      return Value(days);
    case Interval::Weekday:
      return Value(days / 7);
    case Interval::Week:
      return Value((days + WeekdayOf(from, rule) - WeekdayOf(to, rule)) / 7);
    case Interval::Hour:
      return clock(3600);
    case Interval::Minute:
      return clock(60);
    case Interval::Second:
      break;
  }
  return clock(1);
}

Value DatePart(const Args& args) {
  const double days = args.Days(1);
  const DateParts parts = SplitDate(days);
  switch (IntervalOf(args, 0)) {
    case Interval::Year:
      return Value(parts.year);
    case Interval::Quarter:
      return Value((parts.month - 1) / 3 + 1);
    case Interval::Month:
      return Value(parts.month);
    case Interval::DayOfYear:
      return Value(parts.dayOfYear);
    case Interval::Day:
      return Value(parts.day);
    case Interval::Weekday:
      return Value(WeekdayOf(days, WeekRuleOf(args, 2)));
    case Interval::Week:
      return Value(WeekOfYear(days, WeekRuleOf(args, 2)));
    case Interval::Hour:
      return Value(parts.hour);
    case Interval::Minute:
      return Value(parts.minute);
    case Interval::Second:
      break;
  }
  return Value(parts.second);
}

// Years of two digits are 1930 to 2029; months and days beyond their bounds go on into the next ones.
Value DateSerial(const Args& args) {
  const std::array<int, 3> parts = {args.WholeWithin(0, -32768, 32767), args.WholeWithin(1, -32768, 32767),
                                    args.WholeWithin(2, -32768, 32767)};
  int year = parts[0];
  if (year >= 0 && year < 100) year += year < 30 ? 2000 : 1900;
  return DateWithin(args, DayNumberOf(year, parts[1], parts[2]));
}

Value TimeSerial(const Args& args) {
  const double seconds =
      (args.WholeWithin(0, -32768, 32767) * 60.0 + args.WholeWithin(1, -32768, 32767)) * 60 +
      args.WholeWithin(2, -32768, 32767);
  // Time alone, on day 0: what is before midnight is the same time after it.
  return Value::FromDate(seconds < 0 ? -JoinDate(0, -seconds) : JoinDate(0, seconds));
}

Value WeekdayNamed(const Args& args) {
  const int weekday = args.WholeWithin(0, 1, 7);
  const bool shortened = args.Count() > 1 && args.Number(1) != 0;
  const int first = WeekRuleOf(args, 2).firstDay;
  const std::string_view name = WeekdayName((weekday + first - 2) % 7 + 1);
  return Value(shortened ? name.substr(0, 3) : name);
}

Value MonthNamed(const Args& args) {
  const std::string_view name = MonthName(args.WholeWithin(0, 1, 12));
  return Value(args.Count() > 1 && args.Number(1) != 0 ? name.substr(0, 3) : name);
}

template <int DateParts::* kPart>
Value Part(const Args& args) {
  return Value(SplitDate(args.Days(0)).*kPart);
}

// The date of a text or a date, without its time; and the time without its date.
Value DateValue(const Args& args) {
  return Value::FromDate(static_cast<double>(DayNumber(args.Days(0))));
}
Value TimeValue(const Args& args) {
  return Value::FromDate(JoinDate(0, SecondOfDay(args.Days(0))));
}

}  // namespace

std::span<const FunctionInfo> DateFunctions() {
  static constexpr FunctionInfo kTable[] = {
      ChangingFunction("Now", 0, 0, Type::Date, [](const Args&) { return Value::FromDate(LocalNow()); }),
      ChangingFunction("Date", 0, 0, Type::Date,
                       [](const Args&) { return Value::FromDate(std::trunc(LocalNow())); }),
      ChangingFunction("Time", 0, 0, Type::Date,
                       [](const Args&) { return Value::FromDate(JoinDate(0, SecondOfDay(LocalNow()))); }),
      ChangingFunction("Timer", 0, 0, Type::Single,
                       [](const Args&) { return Value(static_cast<float>(SecondOfDay(LocalNow()))); }),
      Function("DateAdd", 3, 3, Type::Date, DateAdd),
      Function("DateDiff", 3, 5, Type::Long, DateDiff),
      Function("DatePart", 2, 4, Type::Long, DatePart),
      Function("DateSerial", 3, 3, Type::Date, DateSerial),
      Function("DateValue", 1, 1, Type::Date, DateValue),
      Function("TimeSerial", 3, 3, Type::Date, TimeSerial),
      Function("TimeValue", 1, 1, Type::Date, TimeValue),
      Function("Year", 1, 1, Type::Long, Part<&DateParts::year>),
      Function("Month", 1, 1, Type::Long, Part<&DateParts::month>),
      Function("Day", 1, 1, Type::Long, Part<&DateParts::day>),
      Function("Hour", 1, 1, Type::Long, Part<&DateParts::hour>),
      Function("Minute", 1, 1, Type::Long, Part<&DateParts::minute>),
      Function("Second", 1, 1, Type::Long, Part<&DateParts::second>),
      Function("Weekday", 1, 2, Type::Long,
               [](const Args& a) { return Value(WeekdayOf(a.Days(0), WeekRuleOf(a, 1))); }),
      Function("WeekdayName", 1, 3, Type::Text, WeekdayNamed),
      Function("MonthName", 1, 2, Type::Text, MonthNamed),
  };
  return kTable;
}

}  // namespace scorvane::engine
