#include "engine/LimitGuard.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

constexpr int kStepsBetweenLooks = 100;  // one step may be a search through a long text
constexpr std::size_t kBytesBetweenLooks = 1U << 20U;

}  // namespace

LimitGuard::LimitGuard(sqlite3* connection, const QueryLimits& limits)
    : connection_(connection), limits_(limits) {
  if (limits_.time.count() > 0) start_ = std::chrono::steady_clock::now();
  if (limits_.time.count() > 0 || limits_.steps > 0)
    sqlite3_progress_handler(connection_, kStepsBetweenLooks, Watch, this);
  if (limits_.bytes > 0) {
    heapBefore_ = sqlite3_hard_heap_limit64(-1);
    usedBefore_ = sqlite3_memory_used();
    sqlite3_hard_heap_limit64(usedBefore_ + static_cast<sqlite3_int64>(limits_.bytes));
  }
}

LimitGuard::~LimitGuard() {
  if (limits_.time.count() > 0 || limits_.steps > 0)
    sqlite3_progress_handler(connection_, 0, nullptr, nullptr);
  if (limits_.bytes > 0) sqlite3_hard_heap_limit64(heapBefore_);
}

int LimitGuard::Watch(void* guard) {
  auto& self = *static_cast<LimitGuard*>(guard);
  self.steps_ += kStepsBetweenLooks;
  if (self.limits_.steps > 0 && self.steps_ > self.limits_.steps) self.reached_ = "it takes too many steps";
  if (self.limits_.time.count() > 0 && std::chrono::steady_clock::now() - self.start_ > self.limits_.time)
    self.reached_ = "it takes too long";
  return self.reached_ == nullptr ? 0 : 1;
}

void LimitGuard::ThrowIfReached(int code) const {
  if ((code & 0xFF) == SQLITE_INTERRUPT && reached_ != nullptr) throw EngineError(kQueryStopped, reached_);
  if ((code & 0xFF) == SQLITE_NOMEM && limits_.bytes > 0)
    throw EngineError(kQueryStopped, "it needs too much memory");
}

void LimitGuard::AddBytes(std::size_t bytes) {
  bytes_ += bytes;
  if (limits_.bytes == 0 || bytes_ - looked_ < kBytesBetweenLooks) return;
  looked_ = bytes_;
  const std::int64_t store = sqlite3_memory_used() - usedBefore_;
  if (static_cast<std::int64_t>(bytes_) + store > static_cast<std::int64_t>(limits_.bytes))
    throw EngineError(kQueryStopped, "its result is too large");
}

}  // namespace scorvane::engine
