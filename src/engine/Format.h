// Format expressions: how report columns and race pages write their values.
#pragma once

#include <string>
#include <string_view>

#include "engine/Value.h"

namespace scorvane::engine {

// The value written by a format expression: up to three sections separated by ";" for positive, negative and
// zero values, "0" a digit that is always written, "#" a digit written when significant, "." the decimal
// point, all else as it stands; "Yes/No" and "True/False" name Booleans. An empty format gives the plain
// text, Null the empty text, a text that reads as a number is formatted as that number, another text is
// returned unchanged. `decimal` is the user's decimal separator, both for reading such texts and for writing.
std::string FormatValue(const Value& value, std::string_view format, char decimal = '.');

}  // namespace scorvane::engine
