#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>

#include "engine/FormatParts.h"

namespace scorvane::engine {
namespace {

// One piece of a section.
struct Token {
  enum class Kind { Literal, Digit, Optional, Point, Exponent };
  Kind kind = Kind::Literal;
  char character = 0;  // of a literal, or of the exponent: E or e
};

struct Section {
  std::vector<Token> tokens;
  std::size_t integerPlaces = 0;
  std::size_t decimalPlaces = 0;
  std::size_t exponentPlaces = 0;
  bool exponentPlus = false;  // a positive exponent is written with its sign
  bool grouped = false;
  int powers = 0;  // of ten that the number is multiplied with: percents and thousands
};

// A number as decimal digits: 0.<digits> times ten to the power of `point`.
struct Decimal {
  std::string digits;
  int point = 0;
};

bool IsPlace(char c) {
  return c == '0' || c == '#';
}

class SectionReader {
 public:
  explicit SectionReader(std::string_view text) : rest_(text) {}

  Section Read() {
    while (!rest_.empty()) {
      if (!exponent_ && AtExponent()) {
        Exponent();
        continue;
      }
      if (rest_.front() == ',' && !pointSeen_ && section_.integerPlaces > 0 && Commas()) continue;
      const FormatPiece piece = TakePiece(rest_);
      const char c = piece.literal || piece.text.size() != 1 ? '\0' : piece.text.front();
      if (IsPlace(c) && !exponent_) {
        section_.tokens.push_back({c == '0' ? Token::Kind::Digit : Token::Kind::Optional, 0});
        ++(pointSeen_ ? section_.decimalPlaces : section_.integerPlaces);
      } else if (c == '.' && !pointSeen_ && !exponent_) {
        pointSeen_ = true;
        section_.tokens.push_back({Token::Kind::Point, 0});
      } else {
        if (c == '%') section_.powers += 2;
        for (char literal : piece.text) section_.tokens.push_back({Token::Kind::Literal, literal});
      }
    }
    return std::move(section_);
  }

 private:
  bool AtExponent() const {
    return section_.integerPlaces + section_.decimalPlaces > 0 && rest_.size() > 2 &&
           (rest_[0] == 'E' || rest_[0] == 'e') && (rest_[1] == '+' || rest_[1] == '-') && IsPlace(rest_[2]);
  }

  void Exponent() {
    exponent_ = true;
    section_.tokens.push_back({Token::Kind::Exponent, rest_[0]});
    section_.exponentPlus = rest_[1] == '+';
    rest_.remove_prefix(2);
    while (!rest_.empty() && IsPlace(rest_.front())) {
      ++section_.exponentPlaces;
      rest_.remove_prefix(1);
    }
  }

  // Between digits commas group them; before the point, at the end, or several of them, they divide by
  // thousand. One before other text belongs to that text.
  bool Commas() {
    const std::size_t count = std::min(rest_.find_first_not_of(','), rest_.size());
    const char next = count < rest_.size() ? rest_[count] : '\0';
    if (IsPlace(next)) {
      section_.grouped = true;
    } else if (next == '.' || next == '\0' || count > 1) {
      section_.powers -= 3 * static_cast<int>(count);
    } else {
      return false;
    }
    rest_.remove_prefix(count);
    return true;
  }

  std::string_view rest_;
  Section section_;
  bool pointSeen_ = false;
  bool exponent_ = false;
};

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

std::string ExponentText(const Section& section, char letter, int exponent) {
  const char* sign = exponent < 0 ? "-" : section.exponentPlus ? "+" : "";
  return fmt::format("{}{}{:0{}}", letter, sign, std::abs(exponent), section.exponentPlaces);
}

std::string Write(const Section& section, const std::string& whole, const std::string& decimals, int exponent,
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
    } else if (behindPoint && token.kind != Token::Kind::Literal && token.kind != Token::Kind::Exponent) {
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
      case Token::Kind::Exponent:
        text += ExponentText(section, token.character, exponent);
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

}  // namespace

std::string WriteNumber(double number, int digits, std::string_view text, char decimal, bool sign) {
  const Section section = SectionReader(text).Read();
  Decimal parts = ToDecimal(std::abs(number), digits);
  parts.point += section.powers;
  int exponent = 0;
  const auto places = static_cast<int>(section.integerPlaces);
  if (section.exponentPlaces > 0 && number != 0) {
    exponent = parts.point - places;
    parts.point = places;
  }
  auto [whole, decimals] = Round(parts, section.decimalPlaces);
  // Rounding has made one more digit: 9.99E+9 is 1.0E+10.
  if (section.exponentPlaces > 0 && static_cast<int>(whole.size()) > places && number != 0) {
    ++exponent;
    std::tie(whole, decimals) = Round({"1", places}, section.decimalPlaces);
  }
  std::string written = Write(section, whole, decimals, exponent, decimal);
  const bool showsZero = section.integerPlaces + section.decimalPlaces > 0 && whole.empty() &&
                         decimals.find_first_not_of('0') == std::string::npos;
  if (sign && number < 0 && !showsZero) written.insert(0, 1, '-');
  return written;
}

}  // namespace scorvane::engine
