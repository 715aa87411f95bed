// A league file in the place of another, and what stopped programs leave beside a league.
#pragma once

#include <string>

#include "engine/Database.h"

namespace scorvane::db {

inline constexpr const char* kCompactName = "TmpPoints.mdb";

// Removes the file with what the store keeps beside it; what is not there is no matter.
void RemoveWithJournal(const std::string& path);

// Puts the complete database `fresh` in the place of `path`, which nobody has open, in one step. What a
// stopped program left beside the old file is taken back first: it would be taken for a part of the new one.
// Throws std::system_error; the old file is then there.
void ReplaceDatabase(engine::DBEngine& engine, const std::string& fresh, const std::string& path);

// The path of the copy that a stopped compaction left in the folder of a league; empty when there is none.
std::string LeftCopyBeside(const std::string& path);

// Clears the way for a file at `copy`, the name under which leagues of its folder are compacted: removes what
// is there when it is no whole league, or the copy of one that lies in the same folder. True when nothing is
// there any more; false when somebody has it open, or it may be all that is left of a league.
bool RemoveLeftCopy(engine::DBEngine& engine, const std::string& copy);

// Removes such a copy beside the league at `path` before anything is written to that one, so long as the two
// are still the same; the marks of dropped results may differ. Nothing happens while another program is at
// it.
void ClearLeftCopyBeside(engine::DBEngine& engine, const std::string& path);

}  // namespace scorvane::db
