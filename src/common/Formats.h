// Numbers, times, colours and texts as the program shows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/ProcessState.h"
#include "engine/Value.h"

namespace scorvane::common {

// The text without the blanks at its two ends; only the space counts as a blank.
std::string_view TrimBlanks(std::string_view text);

// The text with every full stop replaced by the decimal separator.
std::string LocalizeDecimal(std::string_view text, char decimal);

// Upper-cases the first character and every one behind a blank or a CR LF pair.
std::string ProperCase(std::string_view text);

// The text in small letters, accented ones too.
std::string LowerCase(std::string_view text);

// Seconds for a lap of `length` miles at `speed` miles per hour; 0 for the speed 0.
float SecondsPerLap(float speed, float length);

// 83.5 seconds as 1:23.500, 3723.25 as 1:02:03.250, 9.1 as 09.100, 0 as "--".
std::string FormatLapTime(float seconds, char decimal);

// A qualifying speed (mph) as the league reports laps: the speed, or the time for `length` miles; "--" for
// Null and for 0, the empty text for an unknown method.
std::string FormatQualifying(const engine::Value& value, float length, int method, char decimal);

// The last `width` characters of the text padded on its left.
std::string PadLeft(std::string_view text, int width, char pad);

// Byte 1 (red), 2 (green) or 3 (blue) of a colour 0 to 16777215; -1 for any other byte or colour.
int ColorByte(std::int64_t color, int byte);

// RRGGBB in upper case; FFFFFF for a value that is no colour.
std::string ColorToHTML(std::int64_t color);

// A colour as settings store it: "&H" and 8 hexadecimal digits.
std::string ColorText(std::int64_t color);
// Reads a stored colour, or a plain decimal one; nothing when the text is none.
std::optional<std::int32_t> ParseColor(std::string_view text);

// The number of places at which `part` stands in `text`, none overlapping another.
int CountOccurrences(std::string_view text, std::string_view part);

// The sim type of the newest simulation whose folder is known; -1 when none is.
int DefaultSimType(const ProcessState& state);

// The simulation's name as users know it; the empty text for an unknown code.
std::string_view SimTypeName(int simType);

}  // namespace scorvane::common
