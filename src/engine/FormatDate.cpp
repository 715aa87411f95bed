#include <fmt/format.h>

#include <array>

#include "engine/FormatParts.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

constexpr std::string_view kShortDate = "m/d/yyyy";
constexpr std::string_view kLongDate = "dddd, mmmm d, yyyy";
constexpr std::string_view kLongTime = "h:nn:ss AM/PM";

constexpr std::array<std::string_view, 3> kHalves = {"AM/PM", "A/P", "AMPM"};

// The mark of morning and afternoon that a format begins with; empty for none.
std::string_view HalfMark(std::string_view format) {
  for (std::string_view half : kHalves)
    if (SameName(format.substr(0, half.size()), half)) return format.substr(0, half.size());
  return {};
}

// The run of one letter that a format begins with, as long as it means something; empty for none.
std::string_view DateToken(std::string_view format) {
  constexpr std::array<std::pair<char, std::size_t>, 10> kLongest = {
      {{'c', 1}, {'d', 6}, {'w', 2}, {'m', 4}, {'q', 1}, {'y', 4}, {'h', 2}, {'n', 2}, {'s', 2}, {'t', 5}}};
  if (const std::string_view half = HalfMark(format); !half.empty()) return half;
  const char letter = LowerAscii(format.front());
  for (const auto& [known, longest] : kLongest) {
    if (letter != known) continue;
    std::size_t length = 1;
    while (length < longest && length < format.size() && LowerAscii(format[length]) == letter) ++length;
    if (letter == 't' && length != longest) return {};
    if (letter == 'y' && length == 3) length = 2;
    return format.substr(0, length);
  }
  return {};
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

std::string Numeral(int number, std::size_t places) {
  return places > 1 ? fmt::format("{:02}", number) : std::to_string(number);
}

// `date` for the letters a to c that are names: 3 letters, or all.
std::string Name(std::string_view name, bool whole) {
  return std::string(whole ? name : name.substr(0, 3));
}

class DateWriter {
 public:
  DateWriter(double days, const WeekRule& weeks) : days_(days), parts_(SplitDate(days)), weeks_(weeks) {}

  std::string Write(std::string_view format) {
    const bool halves = HasHalves(format);
    std::string text;
    char before = 0;  // the letter of the part before, which tells minutes from months
    while (!format.empty()) {
      const std::string_view token =
          format.front() == '"' || format.front() == '\\' ? std::string_view() : DateToken(format);
      if (token.empty()) {
        text += TakePiece(format).text;
        continue;
      }
      text += Part(token, before, halves);
      before = LowerAscii(token.front());
      format.remove_prefix(token.size());
    }
    return text;
  }

 private:
  static bool HasHalves(std::string_view format) {
    while (!format.empty()) {
      if (!HalfMark(format).empty()) return true;
      TakePiece(format);
    }
    return false;
  }

  std::string Part(std::string_view token, char before, bool halves) {
    const std::size_t count = token.size();
    switch (LowerAscii(token.front())) {
      case 'a': {
        const std::string_view half = parts_.hour < 12 ? "AM" : "PM";
        std::string text(half.substr(0, count == 3 ? 1 : 2));
        if (token.front() == 'a')
          for (char& c : text) c = LowerAscii(c);
        return text;
      }
      case 'c':
        return GeneralDate(days_);
      case 'd':
        if (count == 6) return Write(kLongDate);
        if (count == 5) return Write(kShortDate);
        if (count > 2) return Name(WeekdayName(parts_.weekday), count == 4);
        return Numeral(parts_.day, count);
      case 'w':
        return std::to_string(count == 2 ? WeekOfYear(days_, weeks_) : WeekdayOf(days_, weeks_));
      case 'm':
        if (before == 'h' && count <= 2) return Numeral(parts_.minute, count);
        if (count > 2) return Name(MonthName(parts_.month), count == 4);
        return Numeral(parts_.month, count);
      case 'q':
        return std::to_string((parts_.month - 1) / 3 + 1);
      case 'y':
        if (count == 1) return std::to_string(parts_.dayOfYear);
        return count == 2 ? fmt::format("{:02}", parts_.year % 100) : fmt::format("{:04}", parts_.year);
      case 'h':
        return Numeral(!halves ? parts_.hour : parts_.hour % 12 == 0 ? 12 : parts_.hour % 12, count);
      case 'n':
        return Numeral(parts_.minute, count);
      case 's':
        return Numeral(parts_.second, count);
      default:
        return Write(kLongTime);
    }
  }

  double days_;
  DateParts parts_;
  const WeekRule& weeks_;
};

}  // namespace

bool IsDateFormat(std::string_view format) {
  bool found = false;
  while (!format.empty()) {
    if (const std::string_view token = DateToken(format); !token.empty()) {
      found = true;
      format.remove_prefix(token.size());
    } else if (const FormatPiece piece = TakePiece(format); !piece.literal && IsLetter(piece.text.front())) {
      return false;
    }
  }
  return found;
}

std::string WriteDate(double days, std::string_view format, const WeekRule& weeks) {
  return DateWriter(days, weeks).Write(format);
}

}  // namespace scorvane::engine
