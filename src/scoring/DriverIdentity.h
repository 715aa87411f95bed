// Who is who: result files name drivers, the league knows them by key.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/Database.h"

namespace scorvane::scoring {

// The key of the driver with this name, letter case aside; a driver not known yet is added. Throws
// EngineError, 3314 for a blank name.
std::int32_t FindOrAddDriver(engine::Database& league, std::string_view name);

// Whether the league leaves a driver out; an unknown one it does not. Both throw EngineError.
bool IsExcludedById(engine::Database& league, std::int32_t driverId);
bool IsExcludedByName(engine::Database& league, std::string_view name);

// The same for the many names of a file: most leagues exclude nobody.
class Exclusions {
 public:
  explicit Exclusions(engine::Database& league);
  bool Has(std::string_view name) const { return any_ && IsExcludedByName(league_, name); }

 private:
  engine::Database& league_;
  bool any_;
};

}  // namespace scorvane::scoring
