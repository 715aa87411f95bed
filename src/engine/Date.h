// Dates as days since 1899-12-30, the fraction being the time of day. Before that day the fraction still
// counts from midnight on: -1.25 is six o'clock on 1899-12-29.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::engine {

// The parts of a date, its time rounded to seconds.
struct DateParts {
  int year = 1899;
  int month = 12;  // 1 to 12
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int weekday = 7;    // 1 is Sunday
  int dayOfYear = 0;  // 1 is the first of January
};

// Which days are the first of a week (1 is Sunday) and which week is the first of a year.
struct WeekRule {
  enum class First { WithJanuaryFirst = 1, FourDays = 2, FullWeek = 3 };
  int firstDay = 1;
  First firstWeek = First::WithJanuaryFirst;
};

// The years 100 to 9999.
bool IsDateInRange(double days);
DateParts SplitDate(double days);
// Whole days since 1899-12-30, rounded as SplitDate rounds.
int DayNumber(double days);
// Seconds since midnight.
int SecondOfDay(double days);
// The day and the seconds behind its midnight; these may be more than a day has, and less than none.
double JoinDate(double dayNumber, double seconds);
// A month and a day beyond their bounds go on into the next year and month, or back.
double DayNumberOf(int year, int month, int day);
int DaysInMonth(int year, int month);

// 1 to 7, counted from the rule's first day.
int WeekdayOf(double days, const WeekRule& rule);
// 1 to 53. A day before the first week belongs to the last one of the year before.
int WeekOfYear(double days, const WeekRule& rule);

std::string_view MonthName(int month);      // 1 to 12
std::string_view WeekdayName(int weekday);  // 1 is Sunday

// The user's date and time, to the second.
double LocalNow();

// Reads month/day/year, year-month-day, or a day with a month's name; a time hour:minute[:second] [AM|PM]; or
// a date and a time. The day may stand before the month where only that is a date. Without a year it is this
// one; years of two digits are 1930 to 2029. False when the text is none of them.
bool ParseDate(std::string_view text, double& days);

// 2/15/1998 6:30:00 PM; the date alone at midnight, the time alone on day 0.
std::string GeneralDate(double days);

}  // namespace scorvane::engine
