// Drivers by the names that the user gives, and what else several families of commands read alike.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "championship/Playoff.h"
#include "drivers/Roster.h"
#include "engine/Database.h"

namespace scorvane::cli {

// Throws CommandError, with the names that come near, when the league has no such driver.
drivers::Driver NeedDriver(engine::Database& league, const std::string& name);

// The number that is all of a text, blanks aside; throws CommandError about `what`.
std::int32_t WholeNumber(const std::string& text, const std::string& what);

// The playoff of a preset or, where none has the name, of a file. Throws common::RuleError.
championship::PlayoffFormat NeedPlayoff(const std::string& name);

}  // namespace scorvane::cli
