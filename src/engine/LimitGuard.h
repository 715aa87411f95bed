// Holds a connection to limits for as long as it lives.
#pragma once

#include <chrono>
#include <cstdint>

#include "engine/QueryLimits.h"

struct sqlite3;

namespace scorvane::engine {

class LimitGuard {
 public:
  LimitGuard(sqlite3* connection, const QueryLimits& limits);
  LimitGuard(const LimitGuard&) = delete;
  LimitGuard& operator=(const LimitGuard&) = delete;
  ~LimitGuard();

  // Throws EngineError 3059 when a limit was the reason for the store's result `code`.
  void ThrowIfReached(int code) const;
  // Counts a part of the result; throws when that and what the store holds are beyond the limit.
  void AddBytes(std::size_t bytes);

 private:
  // Called by the store now and then; not 0 stops it.
  static int Watch(void* guard);

  sqlite3* connection_;
  const QueryLimits limits_;
  std::chrono::steady_clock::time_point start_;
  const char* reached_ = nullptr;
  std::int64_t steps_ = 0;
  std::size_t bytes_ = 0;
  std::size_t looked_ = 0;  // of them, when the store was asked last
  std::int64_t usedBefore_ = 0;
  std::int64_t heapBefore_ = 0;
};

}  // namespace scorvane::engine
