// What is remembered of a league: who has most of what, and the feats of single races.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "site/Model.h"

namespace scorvane::site {

struct RecordEntry {
  std::uint32_t driver = 0;  // its place in the model's drivers
  double number = 0;
  std::optional<std::uint32_t> race;  // where it happened, or where a streak began
  std::optional<std::uint32_t> last;  // and where it ended
};

// The first ones of a kind, level ones by name.
struct Record {
  std::string name;
  std::string unit;  // "wins"; empty where the name says it
  int digits = 0;    // behind the point
  std::vector<RecordEntry> entries;
};

inline constexpr std::size_t kRecordEntries = 5;

// Over all results, whether they count in the championship or not; drivers who are excluded are left out.
// What nobody has is left out, too.
std::vector<Record> FindRecords(const SiteModel& model);

}  // namespace scorvane::site
