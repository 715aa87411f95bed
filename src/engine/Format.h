// Format expressions: how report columns, race pages and the function Format write their values.
#pragma once

#include <string>
#include <string_view>

#include "engine/Date.h"
#include "engine/Value.h"

namespace scorvane::engine {

// The value written by a format expression. An empty format gives the plain text, Null the empty text (or the
// fourth section), a text that reads as a number is formatted as that number, another text is returned
// unchanged unless the format is one for texts, or for dates and the text is one. `decimal` is the user's
// decimal separator, both for reading such texts and for writing.
//
// A number format has up to four sections separated by ";" for positive, negative, zero and Null: "0" a digit
// that is always written, "#" a digit written when significant, "." the decimal point, "," between digits
// groups of thousands and before the point a division by thousand, "%" hundredths, "E+0" and "E-0" the
// exponent, all else as it stands, and so is what stands in quotes or behind "\". A date format is made of d,
// w, m, q, y, h, n, s, t and AM/PM; a text format of @ & < > !. By name: General Number, Currency, Euro,
// Fixed, Standard, Percent, Scientific, Yes/No, True/False, On/Off, and General, Long, Medium, Short Date and
// Time.
std::string FormatValue(const Value& value, std::string_view format, char decimal = '.',
                        const WeekRule& weeks = {});

}  // namespace scorvane::engine
