// The league's drivers: added, changed, merged, excluded, removed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::drivers {

struct Driver {
  std::int32_t id = 0;
  std::string name;
  bool excluded = false;
  bool rookie = false;
  std::int32_t handicap = 0;
};

// By name. Throws EngineError, as all of these do.
std::vector<Driver> ListDrivers(engine::Database& league);

// None when there is no such driver.
std::optional<Driver> ReadDriver(engine::Database& league, std::int32_t id);

// Another driver who has the name, letter case aside; `id` is the driver who may have it, none for a new one.
std::optional<std::int32_t> FindNameClash(engine::Database& league, const std::string& name,
                                          std::optional<std::int32_t> id);

// Adds a driver, whose name must be free, and yields the new key.
std::int32_t AddDriver(engine::Database& league, const Driver& driver);

// Stores a driver's name, handicap and flags under its key.
void UpdateDriver(engine::Database& league, const Driver& driver);

// Gives all results and penalties of one driver to another and removes the one. No race is recalculated.
void MergeDrivers(engine::Database& league, std::int32_t from, std::int32_t into);

void SetExclude(engine::Database& league, const std::vector<std::int32_t>& ids, bool exclude);

// Removes drivers with all their results. No race is recalculated.
void RemoveDrivers(engine::Database& league, const std::vector<std::int32_t>& ids);

// Removes every result of every excluded driver and recalculates all races, showing progress.
void RemoveExcludedResults(engine::Database& templateDb, engine::Database& league,
                           common::ProcessState& state, common::UserInterface& ui);

// The whole number that a handicap's text begins with: "12-3" gives 12, "-" gives 0. Beyond 32 bits the
// bound.
std::int32_t HandicapFromText(const std::string& text);

}  // namespace scorvane::drivers
