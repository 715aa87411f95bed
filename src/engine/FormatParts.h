// The parts of a format expression's work: numbers and dates each in a file of their own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/Date.h"

namespace scorvane::engine {

// Splits at each ";" that is neither quoted nor behind a "\".
std::vector<std::string_view> SplitSections(std::string_view format);

// The next piece of a format: a character that means something, or literal text.
struct FormatPiece {
  std::string_view text;
  bool literal = false;  // quoted, or behind a "\"
};

// Takes the quoted text, the character behind a "\", or a single character off the front of `format`.
FormatPiece TakePiece(std::string_view& format);

// A finite number by one section. `digits` are the significant ones that it has; `sign`: a negative number
// gets its minus here.
std::string WriteNumber(double number, int digits, std::string_view section, char decimal, bool sign);

// Whether every letter of a format belongs to the parts of a date, and there is one.
bool IsDateFormat(std::string_view format);
std::string WriteDate(double days, std::string_view format, const WeekRule& weeks);

}  // namespace scorvane::engine
