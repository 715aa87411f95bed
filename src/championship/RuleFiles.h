// The rules of a championship as files of the user's: points by position as a table of text, playoffs as
// JSON. What the window and the command line both load and save.
#pragma once

#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "scoring/PointSystemEdit.h"

namespace scorvane::championship {

// Position,Points,PrizeMoney: a line a position, from 1 on without gaps; a heading may stand above. A file
// that is none is a common::RuleError that says where.
std::vector<scoring::PositionPoints> ReadPointFile(const std::string& path);

// Throws common::RuleError.
PlayoffFormat ReadPlayoffFile(const std::string& path);
// Puts the format in the place of what is there, in one step. RuleError when it cannot be written; the file
// is then as it was.
void WritePlayoffFile(const std::string& path, const PlayoffFormat& format);

}  // namespace scorvane::championship
