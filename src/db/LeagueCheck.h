// A look over a league file: whether the database is whole, its tables are those of a league, and its rows
// make sense.
#pragma once

#include <string>
#include <vector>

#include "engine/Database.h"

namespace scorvane::db {

// What is wrong, in words; empty when all is in order. Reads only. Throws EngineError when the file cannot be
// read.
std::vector<std::string> CheckLeague(engine::Database& league, engine::Database& templateDb);

}  // namespace scorvane::db
