#include "engine/Date.h"

#include <chrono>
#include <cmath>
#include <string>

#include "engine/Names.h"

namespace scorvane::engine {
namespace {

constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  void Blanks() {
    while (!text_.empty() && text_.front() == ' ') text_.remove_prefix(1);
  }
  bool Number(int& number) {
    number = 0;
    int digits = 0;
    while (!text_.empty() && text_.front() >= '0' && text_.front() <= '9' && digits < 5) {
      number = number * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
      ++digits;
    }
    return digits > 0 && digits < 5;
  }
  bool Take(char c) {
    if (text_.empty() || text_.front() != c) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool TakeWord(std::string_view word) {
    if (!SameName(text_.substr(0, word.size()), word)) return false;
    text_.remove_prefix(word.size());
    return true;
  }
  bool AtEnd() const { return text_.empty(); }

 private:
  std::string_view text_;
};

bool ReadTime(Reader& reader, int hour, double& fraction) {
  int minute = 0;
  int second = 0;
  if (!reader.Number(minute)) return false;
  if (reader.Take(':') && !reader.Number(second)) return false;
  reader.Blanks();
  if (reader.TakeWord("AM")) {
    if (hour == 12) hour = 0;
  } else if (reader.TakeWord("PM")) {
    if (hour < 12) hour += 12;
  }
  if (hour > 23 || minute > 59 || second > 59) return false;
  fraction = (hour * 3600 + minute * 60 + second) / 86400.0;
  return true;
}

}  // namespace

bool ParseDate(std::string_view text, double& days) {
  Reader reader(text);
  reader.Blanks();
  int first = 0;
  double date = 0;
  double time = 0;
  if (!reader.Number(first)) return false;
  if (reader.Take(':')) {
    if (!ReadTime(reader, first, time)) return false;
  } else {
    const bool yearFirst = reader.Take('-');
    if (!yearFirst && !reader.Take('/')) return false;
    int second = 0;
    int third = 0;
    if (!reader.Number(second) || !reader.Take(yearFirst ? '-' : '/') || !reader.Number(third)) return false;
    int year = yearFirst ? first : third;
    if (year < 30) year += 2000;
    if (year < 100) year += 1900;
    const std::chrono::year_month_day ymd{std::chrono::year(year),
                                          std::chrono::month(static_cast<unsigned>(yearFirst ? second : first)),
                                          std::chrono::day(static_cast<unsigned>(yearFirst ? third : second))};
    if (!ymd.ok()) return false;
    date = static_cast<double>((std::chrono::sys_days(ymd) - kDayZero).count());
    reader.Blanks();
    int hour = 0;
    if (!reader.AtEnd() && (!reader.Number(hour) || !reader.Take(':') || !ReadTime(reader, hour, time))) return false;
  }
  reader.Blanks();
  if (!reader.AtEnd()) return false;
  days = date < 0 ? date - time : date + time;
  return true;
}

}  // namespace scorvane::engine
