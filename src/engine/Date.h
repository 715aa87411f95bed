// Dates as days since 1899-12-30, the fraction being the time of day.
#pragma once

#include <string_view>

namespace scorvane::engine {

// Reads month/day/year or year-month-day, a time hour:minute[:second] [AM|PM], or a date and a time; false when the
// text is none of them.
bool ParseDate(std::string_view text, double& days);

}  // namespace scorvane::engine
