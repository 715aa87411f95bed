// League files of the old database format: recognised by their content, and brought over into a new file.
#pragma once

#include <string>

#include "engine/Database.h"

namespace scorvane::db {

// True for a database file of the old format, whatever its name.
bool IsOldFormat(const std::string& path);

// Brings everything that the old file `from` holds into the new league file `to`, which must not exist yet:
// tables, indexes, relations, counters, rows. The old file is only read, by the program scorvane-mdbread at
// `reader`. Throws std::runtime_error with a text for the user, or EngineError; `to` is then gone again.
void ConvertOldFile(engine::DBEngine& engine, const std::string& from, const std::string& to,
                    const std::string& reader);

// Converts a league file in its place. The original stays beside it under the name that is returned, which no
// later conversion overwrites. Throws as ConvertOldFile; the file is then as it was.
std::string ConvertInPlace(engine::DBEngine& engine, const std::string& path, const std::string& reader);

// Where the reader stands: beside the running program.
std::string OldFileReader();

}  // namespace scorvane::db
