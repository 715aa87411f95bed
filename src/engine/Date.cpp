#include "engine/Date.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <vector>

#include "engine/Names.h"

namespace scorvane::engine {
namespace {

constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;
constexpr double kFirstDay = -657434;  // 0100-01-01
constexpr double kLastDay = 2958465;   // 9999-12-31
constexpr int kSecondsADay = 86400;

constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};

struct Moment {
  int day = 0;
  int second = 0;
};

Moment MomentOf(double days) {
  const double whole = std::trunc(days);
  Moment moment{static_cast<int>(whole),
                static_cast<int>(std::lround(std::fabs(days - whole) * kSecondsADay))};
  if (moment.second == kSecondsADay) {
    ++moment.day;
    moment.second = 0;
  }
  return moment;
}

std::chrono::year_month_day CalendarDay(int dayNumber) {
  return std::chrono::year_month_day{kDayZero + std::chrono::days{dayNumber}};
}

int YearOf(int dayNumber) {
  return static_cast<int>(CalendarDay(dayNumber).year());
}

int WeekdayIndex(int dayNumber) {
  // Day 1 was a Sunday.
  return ((dayNumber - 1) % 7 + 7) % 7;
}

// The day on which the year's first week begins.
int FirstWeekBegins(int year, const WeekRule& rule) {
  const int january = static_cast<int>(DayNumberOf(year, 1, 1));
  const int into = WeekdayOf(january, rule) - 1;  // days of that week which lie in the old year
  const int begin = january - into;
  switch (rule.firstWeek) {
    case WeekRule::First::FourDays:
      return into <= 3 ? begin : begin + 7;
    case WeekRule::First::FullWeek:
      return into == 0 ? begin : begin + 7;
    case WeekRule::First::WithJanuaryFirst:
      break;
  }
  return begin;
}

// ---- reading

struct Word {
  enum class Kind { Number, Name, Mark };
  Kind kind = Kind::Mark;
  std::string_view text;
  int number = 0;
  bool blankBefore = false;
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// False for what stands in no date.
bool SplitWords(std::string_view text, std::vector<Word>& words) {
  constexpr std::size_t kMostWords = 16;
  bool blank = false;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      blank = true;
      ++i;
      continue;
    }
    Word word;
    word.blankBefore = blank;
    blank = false;
    std::size_t end = i + 1;
    if (IsDigit(text[i])) {
      word.kind = Word::Kind::Number;
      while (end < text.size() && IsDigit(text[end])) ++end;
      if (end - i > 4) return false;
      for (char c : text.substr(i, end - i)) word.number = word.number * 10 + (c - '0');
    } else if (IsLetter(text[i])) {
      word.kind = Word::Kind::Name;
      while (end < text.size() && IsLetter(text[end])) ++end;
    } else if (std::string_view("/-,:").find(text[i]) == std::string_view::npos) {
      return false;
    }
    word.text = text.substr(i, end - i);
    words.push_back(word);
    if (words.size() > kMostWords) return false;
    i = end;
  }
  return !words.empty();
}

// A month's name or its first three letters; 0 for none.
int MonthOf(std::string_view name) {
  for (std::size_t i = 0; i < kMonths.size(); ++i)
    if (SameName(name, kMonths[i]) || SameName(name, kMonths[i].substr(0, 3))) return static_cast<int>(i) + 1;
  return 0;
}

class Reader {
 public:
  explicit Reader(const std::vector<Word>& words) : words_(words) {}

  bool Read(double& days) {
    bool hasDate = false;
    bool hasTime = false;
    while (place_ < words_.size()) {
      if (!hasTime && AtTime()) {
        if (!ReadTime()) return false;
        hasTime = true;
      } else if (!hasDate && ReadDate()) {
        hasDate = true;
      } else {
        return false;
      }
    }
    days = JoinDate(date_, second_);
    return true;
  }

 private:
  bool AtMark(char mark, std::size_t ahead = 0) const {
    return place_ + ahead < words_.size() && words_[place_ + ahead].text[0] == mark;
  }
  bool AtNumber(std::size_t ahead = 0) const {
    return place_ + ahead < words_.size() && words_[place_ + ahead].kind == Word::Kind::Number;
  }
  // 0 none, 1 AM, 2 PM
  int HalfOfDay(std::size_t ahead) const {
    if (place_ + ahead >= words_.size()) return 0;
    const std::string_view text = words_[place_ + ahead].text;
    return SameName(text, "AM") ? 1 : SameName(text, "PM") ? 2 : 0;
  }
  bool AtTime() const { return AtNumber() && (AtMark(':', 1) || HalfOfDay(1) != 0); }

  bool TakeNumber(int& number) {
    if (!AtNumber()) return false;
    number = words_[place_++].number;
    return true;
  }

  bool ReadTime() {
    int hour = 0;
    std::array<int, 2> rest{};
    TakeNumber(hour);
    for (int& part : rest) {
      if (!AtMark(':')) break;
      ++place_;
      if (!TakeNumber(part)) return false;
    }
    if (const int half = HalfOfDay(0); half != 0) {
      ++place_;
      if (half == 1 && hour == 12) hour = 0;
      if (half == 2 && hour < 12) hour += 12;
    }
    if (hour > 23 || rest[0] > 59 || rest[1] > 59) return false;
    second_ = (hour * 60 + rest[0]) * 60 + rest[1];
    return true;
  }

  // The two or three parts of a date, with their marks.
  bool ReadDate() {
    std::array<int, 3> parts{-1, -1, -1};
    std::array<std::size_t, 3> digits{};
    int month = 0;
    std::size_t count = 0;
    while (count < 3 && place_ < words_.size() && !AtTime()) {
      const Word& word = words_[place_];
      if (word.kind == Word::Kind::Number) {
        digits[count] = word.text.size();
        parts[count++] = word.number;
      } else if (word.kind == Word::Kind::Name && month == 0 && MonthOf(word.text) != 0) {
        month = MonthOf(word.text);
        monthPlace_ = count;
        ++count;
      } else {
        return false;
      }
      ++place_;
      const bool mark = AtMark('/') || AtMark('-') || AtMark(',');
      // A name needs no mark beside it, numbers do.
      if (mark && count < 3) {
        ++place_;
        if (place_ >= words_.size()) return false;
      } else if (count < 3 && place_ < words_.size() && !AtTime() && month == 0 &&
                 words_[place_].kind == Word::Kind::Number) {
        return false;
      }
    }
    if (count < 2) return false;
    return month != 0 ? NamedDate(month, parts, digits, count) : NumberedDate(parts, digits, count);
  }

  bool NamedDate(int month, const std::array<int, 3>& parts, const std::array<std::size_t, 3>& digits,
                 std::size_t count) {
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < count; ++i)
      if (i != monthPlace_) numbers.push_back(i);
    const auto isYear = [&](std::size_t i) { return digits[i] > 2 || parts[i] > 31; };
    if (numbers.size() == 1) {
      const std::size_t i = numbers[0];
      return isYear(i) ? Set(parts[i], digits[i], month, 1) : Set(YearOf(Today()), 4, month, parts[i]);
    }
    const std::size_t year = isYear(numbers[0]) ? numbers[0] : numbers[1];
    const std::size_t day = year == numbers[0] ? numbers[1] : numbers[0];
    return Set(parts[year], digits[year], month, parts[day]);
  }

  bool NumberedDate(const std::array<int, 3>& parts, const std::array<std::size_t, 3>& digits,
                    std::size_t count) {
    if (count == 2) {
      if (digits[1] > 2) return Set(parts[1], digits[1], parts[0], 1);
      const int year = YearOf(Today());
      return Set(year, 4, parts[0], parts[1]) || Set(year, 4, parts[1], parts[0]);
    }
    if (digits[0] > 2) return Set(parts[0], digits[0], parts[1], parts[2]);
    return Set(parts[2], digits[2], parts[0], parts[1]) || Set(parts[2], digits[2], parts[1], parts[0]);
  }

  bool Set(int year, std::size_t yearDigits, int month, int day) {
    if (yearDigits <= 2) year += year < 30 ? 2000 : 1900;
    const bool valid = year >= 100 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
                       day <= DaysInMonth(year, month);
    if (valid) date_ = DayNumberOf(year, month, day);
    return valid;
  }

  static int Today() { return DayNumber(LocalNow()); }

  const std::vector<Word>& words_;
  std::size_t place_ = 0;
  std::size_t monthPlace_ = 0;
  double date_ = 0;
  int second_ = 0;
};

}  // namespace

bool IsDateInRange(double days) {
  return days > kFirstDay - 1 && days < kLastDay + 1;
}

int DayNumber(double days) {
  return MomentOf(days).day;
}
int SecondOfDay(double days) {
  return MomentOf(days).second;
}

DateParts SplitDate(double days) {
  const Moment moment = MomentOf(days);
  const std::chrono::year_month_day date = CalendarDay(moment.day);
  DateParts parts;
  parts.year = static_cast<int>(date.year());
  parts.month = static_cast<int>(static_cast<unsigned>(date.month()));
  parts.day = static_cast<int>(static_cast<unsigned>(date.day()));
  parts.hour = moment.second / 3600;
  parts.minute = moment.second / 60 % 60;
  parts.second = moment.second % 60;
  parts.weekday = WeekdayIndex(moment.day) + 1;
  parts.dayOfYear = moment.day - static_cast<int>(DayNumberOf(parts.year, 1, 1)) + 1;
  return parts;
}

double JoinDate(double dayNumber, double seconds) {
  const double over = std::floor(seconds / kSecondsADay);
  const double day = dayNumber + over;
  const double fraction = (seconds - over * kSecondsADay) / kSecondsADay;
  return day < 0 ? day - fraction : day + fraction;
}

double DayNumberOf(int year, int month, int day) {
  const std::int64_t months = std::int64_t{year} * 12 + month - 1;
  const std::int64_t wholeYear = months >= 0 ? months / 12 : (months - 11) / 12;
  // Far outside the calendar any number out of range will do.
  if (wholeYear < -30000 || wholeYear > 30000) return wholeYear < 0 ? -1e9 : 1e9;
  const std::chrono::sys_days first = std::chrono::year{static_cast<int>(wholeYear)} /
                                      std::chrono::month{static_cast<unsigned>(months - wholeYear * 12 + 1)} /
                                      1;
  return static_cast<double>((first - kDayZero).count()) + day - 1;
}

int DaysInMonth(int year, int month) {
  return static_cast<int>(DayNumberOf(year, month + 1, 1) - DayNumberOf(year, month, 1));
}

int WeekdayOf(double days, const WeekRule& rule) {
  return (WeekdayIndex(DayNumber(days)) - (rule.firstDay - 1) + 7) % 7 + 1;
}

int WeekOfYear(double days, const WeekRule& rule) {
  const int day = DayNumber(days);
  int year = YearOf(day);
  // The last days of December may be in the next year's first week, the first of January in the last year's
  // last one.
  if (rule.firstWeek == WeekRule::First::FourDays && day >= FirstWeekBegins(year + 1, rule)) {
    ++year;
  } else if (day < FirstWeekBegins(year, rule)) {
    --year;
  }
  return (day - FirstWeekBegins(year, rule)) / 7 + 1;
}

std::string_view MonthName(int month) {
  return kMonths[static_cast<std::size_t>(month - 1)];
}
std::string_view WeekdayName(int weekday) {
  return kWeekdays[static_cast<std::size_t>(weekday - 1)];
}

double LocalNow() {
  const std::time_t now = std::time(nullptr);
  const std::tm* local = std::localtime(&now);  // NOLINT(concurrency-mt-unsafe): one thread
  if (local == nullptr) return 0;
  return JoinDate(DayNumberOf(local->tm_year + 1900, local->tm_mon + 1, local->tm_mday),
                  (local->tm_hour * 60 + local->tm_min) * 60 + std::min(local->tm_sec, 59));
}

bool ParseDate(std::string_view text, double& days) {
  std::vector<Word> words;
  return SplitWords(text, words) && Reader(words).Read(days);
}

std::string GeneralDate(double days) {
  if (!IsDateInRange(days)) return fmt::format("{}", days);
  const DateParts parts = SplitDate(days);
  const bool hasTime = SecondOfDay(days) != 0;
  std::string text;
  if (DayNumber(days) != 0 || !hasTime) text = fmt::format("{}/{}/{}", parts.month, parts.day, parts.year);
  if (!hasTime) return text;
  const int hour = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
  return text + fmt::format("{}{}:{:02}:{:02} {}", text.empty() ? "" : " ", hour, parts.minute, parts.second,
                            parts.hour < 12 ? "AM" : "PM");
}

}  // namespace scorvane::engine
