#include "engine/Format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

namespace scorvane::engine {
namespace {

// One piece of a section.
struct Token {
  enum class Kind { Literal, Digit, Optional, Point };
  Kind kind = Kind::Literal;
  char character = 0;  // of a literal
};

struct Section {
  std::vector<Token> tokens;
  std::size_t integerPlaces = 0;
  std::size_t decimalPlaces = 0;
  bool grouped = false;
};

// A number as decimal digits: 0.<digits> times ten to the power of `point`.
struct Decimal {
  std::string digits;
  int point = 0;
};

bool IsNamed(std::string_view format, std::string_view lower) {
  return std::equal(format.begin(), format.end(), lower.begin(), lower.end(), [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
  });
}

// Splits at each ";" that is neither quoted nor behind a "\".
std::vector<std::string_view> SplitSections(std::string_view format) {
  std::vector<std::string_view> sections;
  std::size_t start = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '"') {
      quoted = !quoted;
    } else if (format[i] == '\\' && !quoted) {
      ++i;
    } else if (format[i] == ';' && !quoted) {
      sections.push_back(format.substr(start, i - start));
      start = i + 1;
    }
  }
  sections.push_back(format.substr(start));
  return sections;
}

Section ParseSection(std::string_view text) {
  Section section;
  bool quoted = false;
  bool pointSeen = false;
  const auto literal = [&](char c) { section.tokens.push_back({Token::Kind::Literal, c}); };
  const auto digitFollows = [&](std::size_t from) {
    const auto next = text.find_first_not_of(',', from);
    return next != std::string_view::npos && (text[next] == '0' || text[next] == '#');
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted && c != '"') {
      literal(c);
      continue;
    }
    if (c == '"') {
      quoted = !quoted;
    } else if (c == '\\') {
      if (++i < text.size()) literal(text[i]);
    } else if (c == '0' || c == '#') {
      section.tokens.push_back({c == '0' ? Token::Kind::Digit : Token::Kind::Optional, 0});
      ++(pointSeen ? section.decimalPlaces : section.integerPlaces);
    } else if (c == '.' && !pointSeen) {
      pointSeen = true;
      section.tokens.push_back({Token::Kind::Point, 0});
    } else if (c == ',' && !pointSeen && section.integerPlaces > 0 && digitFollows(i)) {
      section.grouped = true;
    } else {
      literal(c);
    }
  }
  return section;
}

// The digits that users see: 7 of a Single, 15 of all else, so that 2.675 rounds as it reads.
Decimal ToDecimal(double number, int digits) {
  std::array<char, 32> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                 std::chars_format::scientific, digits - 1)
                       .ptr;
  const std::string_view text(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  const auto mark = text.find('e');
  Decimal decimal;
  decimal.digits = text.front();
  decimal.digits += text.substr(2, mark - 2);
  const char* exponent = text.data() + mark + 1;
  std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end, decimal.point);
  ++decimal.point;
  return decimal;
}

// Rounds to `places` decimals, half away from zero: the digits before and behind the decimal point.
std::pair<std::string, std::string> Round(Decimal decimal, std::size_t places) {
  if (decimal.point < 0) {
    decimal.digits.insert(0, static_cast<std::size_t>(-decimal.point), '0');
    decimal.point = 0;
  }
  auto wholeDigits = static_cast<std::size_t>(decimal.point);
  const std::size_t kept = wholeDigits + places;
  if (decimal.digits.size() > kept) {
    const bool up = decimal.digits[kept] >= '5';
    decimal.digits.resize(kept);
    if (up) {
      auto digit = decimal.digits.rbegin();
      while (digit != decimal.digits.rend() && *digit == '9') *digit++ = '0';
      if (digit != decimal.digits.rend()) {
        ++*digit;
      } else {
        decimal.digits.insert(0, 1, '1');
        ++wholeDigits;
      }
    }
  }
  decimal.digits.resize(wholeDigits + places, '0');
  std::string whole = decimal.digits.substr(0, wholeDigits);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
  return {std::move(whole), decimal.digits.substr(wholeDigits)};
}

std::string Write(const Section& section, const std::string& whole, const std::string& decimals,
                  char decimal) {
  const char groupSeparator = decimal == ',' ? '.' : ',';
  std::string text;
  // Digits still to come before the decimal point; from the first one that is written on, all are.
  std::size_t places = section.integerPlaces;
  bool started = false;
  const auto writeWhole = [&](char digit, std::size_t digitsBehind) {
    text += digit;
    started = true;
    if (section.grouped && digitsBehind > 0 && digitsBehind % 3 == 0) text += groupSeparator;
  };
  // Optional digits behind the point are written up to the last one that matters.
  std::size_t lastDecimal = decimals.find_last_not_of('0') + 1;
  std::size_t place = 0;
  bool behindPoint = false;
  for (const Token& token : section.tokens) {
    if (token.kind == Token::Kind::Point) {
      behindPoint = true;
    } else if (behindPoint && token.kind != Token::Kind::Literal) {
      ++place;
      if (token.kind == Token::Kind::Digit) lastDecimal = std::max(lastDecimal, place);
    }
  }

  place = 0;
  behindPoint = false;
  for (const Token& token : section.tokens) {
    switch (token.kind) {
      case Token::Kind::Literal:
        text += token.character;
        break;
      case Token::Kind::Point:
        if (!started) {  // no place before the point: the whole digits stand all the same
          for (std::size_t i = 0; i < whole.size(); ++i) writeWhole(whole[i], whole.size() - i - 1);
        }
        text += decimal;
        behindPoint = true;
        break;
      case Token::Kind::Digit:
      case Token::Kind::Optional:
        if (behindPoint) {
          if (place < lastDecimal) text += decimals[place];
          ++place;
          break;
        }
        // The first place takes the digits that have no place of their own.
        if (!started) {
          for (std::size_t i = 0; i + places < whole.size(); ++i) writeWhole(whole[i], whole.size() - i - 1);
        }
        --places;
        if (places < whole.size()) {
          writeWhole(whole[whole.size() - places - 1], places);
        } else if (token.kind == Token::Kind::Digit || started) {
          writeWhole('0', places);
        }
        break;
    }
  }
  return text;
}

std::string FormatNumber(const Value& value, double number, int digits, std::string_view format,
                         char decimal) {
  const std::vector<std::string_view> sections = SplitSections(format);
  const auto has = [&](std::size_t index) { return sections.size() > index && !sections[index].empty(); };
  std::size_t chosen = 0;
  if (number < 0 && has(1)) chosen = 1;
  if (number == 0 && has(2)) chosen = 2;
  if (sections[chosen].empty() || !std::isfinite(number)) return value.ToText(decimal);

  const Section section = ParseSection(sections[chosen]);
  const auto [whole, decimals] = Round(ToDecimal(std::abs(number), digits), section.decimalPlaces);
  std::string text = Write(section, whole, decimals, decimal);
  const bool showsZero = section.integerPlaces + section.decimalPlaces > 0 && whole.empty() &&
                         decimals.find_first_not_of('0') == std::string::npos;
  if (number < 0 && chosen == 0 && !showsZero) text.insert(0, 1, '-');
  return text;
}

}  // namespace

std::string FormatValue(const Value& value, std::string_view format, char decimal) {
  if (value.IsNull()) return {};
  if (format.empty()) return value.ToText(decimal);

  double number = 0;
  bool readable = true;
  if (!value.IsText()) {
    number = value.ToDouble();
  } else if (IsNamed(value.Text(), "true") || IsNamed(value.Text(), "false")) {
    number = IsNamed(value.Text(), "true") ? -1 : 0;
    readable = IsNamed(format, "yes/no") || IsNamed(format, "true/false");
  } else {
    readable = ParseNumber(value.Text(), decimal, number);
  }
  if (!readable) return value.Text();
  if (IsNamed(format, "yes/no")) return number != 0 ? "Yes" : "No";
  if (IsNamed(format, "true/false")) return number != 0 ? "True" : "False";
  return FormatNumber(value, number, value.GetType() == Value::Type::Single ? 7 : 15, format, decimal);
}

}  // namespace scorvane::engine
