#include "engine/Value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "engine/Date.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 15;
// From this power of ten on, and below its reciprocal, numbers are written with an exponent.
constexpr int kPlainPowers = 15;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The length of the number that starts at `text`: sign, digits with one decimal separator, exponent. 0
// without a digit.
std::size_t NumberLength(std::string_view text, char decimal) {
  std::size_t at = 0;
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
  std::size_t digits = 0;
  bool point = false;
  for (; at < text.size(); ++at) {
    if (IsDigit(text[at])) {
      ++digits;
    } else if (text[at] == decimal && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (digits == 0) return 0;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    std::size_t exponent = at + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    const std::size_t firstDigit = exponent;
    while (exponent < text.size() && IsDigit(text[exponent])) ++exponent;
    if (exponent > firstDigit) at = exponent;
  }
  return at;
}

// Converts what NumberLength has found to be a number. Beyond the range of a double it is infinite, or 0.
double ConvertNumber(std::string_view text, char decimal) {
  if (text.front() == '+') text.remove_prefix(1);
  std::array<char, 64> plain{};
  std::string longPlain;
  if (decimal != '.') {
    if (const auto point = text.find(decimal); point != std::string_view::npos) {
      if (text.size() <= plain.size()) {
        std::memcpy(plain.data(), text.data(), text.size());
        plain[point] = '.';
        text = {plain.data(), text.size()};
      } else {
        longPlain = text;
        longPlain[point] = '.';
        text = longPlain;
      }
    }
  }
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec == std::errc::result_out_of_range) {
    const bool negative = text.front() == '-';
    const auto significant = text.find_first_of("123456789");
    const auto point = text.find_first_of(".eE");
    const auto exponent = text.find_first_of("eE");
    const bool tiny = exponent != std::string_view::npos ? text[exponent + 1] == '-' : significant > point;
    if (tiny) return 0;
    return negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
  }
  return number;
}

std::string DateText(double days) {
  if (!IsDateInRange(days)) return NumberText(days, kDoubleDigits);
  const DateParts parts = SplitDate(days);
  std::string text = fmt::format("{:04}-{:02}-{:02}", parts.year, parts.month, parts.day);
  if (SecondOfDay(days) != 0)
    text += fmt::format(" {:02}:{:02}:{:02}", parts.hour, parts.minute, parts.second);
  return text;
}

}  // namespace

Value Value::FromDate(double days) {
  Value value(days);
  value.type_ = Type::Date;
  return value;
}

bool Value::ToBoolean(char decimal) const {
  if (type_ == Type::Text) {
    const std::string_view text = TrimBlanks(text_);
    if (SameName(text, "true")) return true;
    if (SameName(text, "false")) return false;
  }
  return ToDouble(decimal) != 0;
}

std::int32_t Value::ToLong(char decimal) const {
  if (type_ == Type::Boolean || type_ == Type::Long) return static_cast<std::int32_t>(integer_);
  const double rounded = RoundHalfEven(ToDouble(decimal));
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
        rounded <= std::numeric_limits<std::int32_t>::max()))
    throw EngineError(kOverflow, ToText(decimal), "Long");
  return static_cast<std::int32_t>(rounded);
}

double Value::ToDouble(char decimal) const {
  switch (type_) {
    case Type::Null:
      throw EngineError(kInvalidUseOfNull);
    case Type::Boolean:
    case Type::Long:
      return static_cast<double>(integer_);
    case Type::Single:
    case Type::Double:
    case Type::Date:
      return real_;
    case Type::Text:
      break;
  }
  double number = 0;
  if (!ParseNumber(text_, decimal, number)) throw EngineError(kTypeMismatch, text_, "a number");
  if (!std::isfinite(number)) throw EngineError(kOverflow, text_, "Double");
  return number;
}

float Value::ToSingle(char decimal) const {
  const auto number = static_cast<float>(ToDouble(decimal));
  if (!std::isfinite(number)) throw EngineError(kOverflow, ToText(decimal), "Single");
  return number;
}

std::string Value::ToText(char decimal) const {
  switch (type_) {
    case Type::Null:
      return {};
    case Type::Boolean:
      return integer_ != 0 ? "True" : "False";
    case Type::Long:
      return fmt::format_int(integer_).str();
    case Type::Single:
      return NumberText(real_, kSingleDigits, decimal);
    case Type::Double:
      return NumberText(real_, kDoubleDigits, decimal);
    case Type::Date:
      return DateText(real_);
    case Type::Text:
      return text_;
  }
  return {};
}

std::string NumberText(double number, int digits, char decimal) {
  if (number == 0) return "0";
  std::array<char, 32> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                 std::chars_format::scientific, std::clamp(digits, 1, 17) - 1)
                       .ptr;
  std::string_view mantissa(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  const auto mark = mantissa.find('e');
  if (mark == std::string_view::npos) return std::string(mantissa);  // infinite, or no number
  int power = 0;
  const char* exponent = mantissa.data() + mark + 1;
  std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end, power);
  mantissa = mantissa.substr(0, mark);

  std::string text;
  if (mantissa.front() == '-') {
    text += '-';
    mantissa.remove_prefix(1);
  }
  std::string significant(1, mantissa.front());
  if (mantissa.size() > 2) significant += mantissa.substr(2);
  significant.erase(significant.find_last_not_of('0') + 1);
  const auto count = static_cast<int>(significant.size());

  if (power >= kPlainPowers || power < -kPlainPowers) {
    text += significant.front();
    if (count > 1) {
      text += decimal;
      text.append(significant, 1);
    }
    return text + fmt::format("E{:+03}", power);
  }
  if (power < 0) {
    text += '0';
    text += decimal;
    text.append(static_cast<std::size_t>(-power - 1), '0');
    return text + significant;
  }
  if (count <= power + 1) {
    text += significant;
    return text.append(static_cast<std::size_t>(power) + 1 - significant.size(), '0');
  }
  text.append(significant, 0, static_cast<std::size_t>(power) + 1);
  text += decimal;
  return text.append(significant, static_cast<std::size_t>(power) + 1);
}

bool ParseNumber(std::string_view text, char decimal, double& number) {
  text = TrimBlanks(text);
  const std::size_t length = NumberLength(text, decimal);
  if (length == 0 || length != text.size()) return false;
  number = ConvertNumber(text, decimal);
  return true;
}

bool RadixNumber(std::string_view text, double& number, std::size_t& length) {
  if (text.size() < 3 || text[0] != '&') return false;
  const char mark = LowerAscii(text[1]);
  if (mark != 'h' && mark != 'o') return false;
  const int base = mark == 'h' ? 16 : 8;
  std::uint32_t bits = 0;
  const auto result = std::from_chars(text.data() + 2, text.data() + text.size(), bits, base);
  if (result.ec != std::errc()) return false;
  length = static_cast<std::size_t>(result.ptr - text.data());
  // What fits 16 bits is a number of 16 bits, with its sign; unless an "&" says that it is a long one.
  const bool isLong = bits > 0xFFFF || text.substr(length).starts_with('&');
  if (text.substr(length).starts_with('&')) ++length;
  number = isLong ? static_cast<double>(static_cast<std::int32_t>(bits))
                  : static_cast<double>(static_cast<std::int16_t>(bits));
  return true;
}

double LeadingNumber(std::string_view text) {
  // Blanks, tabs and line ends do not count, wherever they stand: "1 234" gives 1234.
  constexpr std::string_view kIgnored = " \t\r\n";
  std::string compact;
  if (text.find_first_of(kIgnored) != std::string_view::npos) {
    std::copy_if(text.begin(), text.end(), std::back_inserter(compact),
                 [&](char c) { return kIgnored.find(c) == std::string_view::npos; });
    text = compact;
  }
  std::size_t length = 0;
  double radix = 0;
  if (RadixNumber(text, radix, length)) return radix;
  length = NumberLength(text, '.');
  return length == 0 ? 0 : ConvertNumber(text.substr(0, length), '.');
}

double RoundHalfEven(double number) {
  return std::nearbyint(number);
}

}  // namespace scorvane::engine
