// How far a statement may go whose text comes out of a file: a league may come from a stranger, and its bonus
// and ranking queries are run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace scorvane::engine {

// 0 is no limit. Beyond one the statement ends with EngineError 3059 and has changed nothing.
struct QueryLimits {
  std::chrono::milliseconds time{0};
  std::int64_t steps = 0;  // instructions of the store's machine: the same on every computer
  std::size_t bytes = 0;   // of memory, for the result and for what the store needs on the way
};

// For the reports of the template, whose rows are written as they come: however many there are, it is work
// that goes on.
inline constexpr QueryLimits kStreamLimits{std::chrono::milliseconds(0), 20'000'000'000, 0};
// Several times what a report over the results of 10,000 races takes.
inline constexpr QueryLimits kFileTextLimits{std::chrono::milliseconds(4000), 1'000'000'000, 192U << 20U};

}  // namespace scorvane::engine
