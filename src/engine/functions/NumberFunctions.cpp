// Functions of numbers.
#include <algorithm>
#include <bit>
#include <cmath>

#include <fmt/format.h>

#include "engine/EngineError.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

Value Round(const Args& args) {
  const int digits = args.Count() > 1 ? args.WholeWithin(1, 0, 15) : 0;
  const double scale = std::pow(10.0, digits);
  const double number = args.Number(0);
  const double scaled = number * scale;
  return std::fabs(scaled) < 1e15 ? Value(RoundHalfEven(scaled) / scale) : Value(number);
}

Value Sqr(const Args& args) {
  if (args.Number(0) < 0) args.Refuse();
  return Value(std::sqrt(args.Number(0)));
}

Value Log(const Args& args) {
  if (args.Number(0) <= 0) args.Refuse();
  return Value(std::log(args.Number(0)));
}

Value Exp(const Args& args) {
  const double result = std::exp(args.Number(0));
  if (!std::isfinite(result)) throw EngineError(kOverflow, fmt::format("Exp({})", args.Text(0)), "Double");
  return Value(result);
}

// The documented generator: 24 bits, each number made of the one before. A negative argument is a place in
// the sequence of its own, 0 asks for the number before once more.
Value Rnd(const Args& args) {
  constexpr std::uint32_t kMask = 0xFFFFFF;
  const double argument = args.Count() > 0 ? args.Number(0) : 1;
  std::uint32_t& place = args.State().random;
  if (argument < 0) {
    const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(argument));
    place = (bits & kMask) + (bits >> 24U);
  }
  if (argument != 0) place = (place * 0x43FD43FDU + 0xC39EC3U) & kMask;
  return Value(static_cast<float>(place) / 16777216.0F);
}

// The range that a number falls into, "20:29", both ends as wide as the widest.
Value Partition(const Args& args) {
  const std::int64_t number = args.Whole(0);
  const std::int64_t start = args.Whole(1);
  const std::int64_t stop = args.Whole(2);
  const std::int64_t interval = args.Whole(3);
  if (start < 0 || stop <= start || interval < 1) args.Refuse();
  const std::size_t width = std::max(std::to_string(start - 1).size(), std::to_string(stop + 1).size());
  std::string from;
  std::string to;
  if (number < start) {
    to = std::to_string(start - 1);
  } else if (number > stop) {
    from = std::to_string(stop + 1);
  } else {
    const std::int64_t lower = start + (number - start) / interval * interval;
    from = std::to_string(lower);
    to = std::to_string(std::min(lower + interval - 1, stop));
  }
  return Value(fmt::format("{:>{}}:{:>{}}", from, width, to, width));
}

}  // namespace

std::span<const FunctionInfo> NumberFunctions() {
  static constexpr FunctionInfo kTable[] = {
      NativeFunction("Abs", 1, 1, Type::Null),
      Function("Int", 1, 1, Type::Double, [](const Args& a) { return Value(std::floor(a.Number(0))); }),
      Function("Fix", 1, 1, Type::Double, [](const Args& a) { return Value(std::trunc(a.Number(0))); }),
      Function("Sgn", 1, 1, Type::Long,
               [](const Args& a) {
                 const double number = a.Number(0);
                 return Value(number > 0 ? 1 : number < 0 ? -1 : 0);
               }),
      Function("Sqr", 1, 1, Type::Double, Sqr),
      Function("Round", 1, 2, Type::Double, Round),
      Function("Exp", 1, 1, Type::Double, Exp),
      Function("Log", 1, 1, Type::Double, Log),
      Function("Sin", 1, 1, Type::Double, [](const Args& a) { return Value(std::sin(a.Number(0))); }),
      Function("Cos", 1, 1, Type::Double, [](const Args& a) { return Value(std::cos(a.Number(0))); }),
      Function("Tan", 1, 1, Type::Double, [](const Args& a) { return Value(std::tan(a.Number(0))); }),
      Function("Atn", 1, 1, Type::Double, [](const Args& a) { return Value(std::atan(a.Number(0))); }),
      ChangingFunction("Rnd", 0, 1, Type::Single, Rnd),
      Function("Partition", 4, 4, Type::Text, Partition),
  };
  return kTable;
}

}  // namespace scorvane::engine
