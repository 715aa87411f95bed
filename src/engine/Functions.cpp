#include "engine/Functions.h"

#include <sqlite3.h>

#include <array>
#include <unordered_map>

#include "engine/Names.h"
#include "engine/functions/Args.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

constexpr int kFlags = SQLITE_UTF8 | SQLITE_DIRECTONLY;

// One function as a connection has it.
struct Call {
  FunctionState& state;
  const FunctionInfo& info;
};

Call& CallOf(sqlite3_context* context) {
  return *static_cast<Call*>(sqlite3_user_data(context));
}

template <typename Body>
void Guarded(FunctionState& state, sqlite3_context* context, Body body) {
  try {
    body();
  } catch (...) {
    if (!state.pending) state.pending = std::current_exception();
    sqlite3_result_error(context, "function", -1);
  }
}

void Invoke(sqlite3_context* context, int count, sqlite3_value** values) {
  const Call& call = CallOf(context);
  Guarded(call.state, context, [&] {
    const Args args(call.state, call.info.name, count, values);
    if (!call.info.takesNull && args.AnyNull()) {
      sqlite3_result_null(context);
    } else {
      SetResult(context, call.info.handler(args));
    }
  });
}

void StepAggregate(sqlite3_context* context, int count, sqlite3_value** values) {
  const Call& call = CallOf(context);
  auto** accumulator = static_cast<Accumulator**>(sqlite3_aggregate_context(context, sizeof(Accumulator*)));
  if (accumulator == nullptr) return;
  Guarded(call.state, context, [&] {
    if (*accumulator == nullptr) *accumulator = call.info.accumulator().release();
    (*accumulator)->Add(Args(call.state, call.info.name, count, values));
  });
}

void FinishAggregate(sqlite3_context* context) {
  auto** accumulator = static_cast<Accumulator**>(sqlite3_aggregate_context(context, 0));
  if (accumulator == nullptr || *accumulator == nullptr) return sqlite3_result_null(context);
  const std::unique_ptr<Accumulator> owned(*accumulator);
  Guarded(CallOf(context).state, context, [&] { SetResult(context, owned->Result()); });
}

const auto& Parts() {
  static const std::array parts = {AggregateFunctions(), ChoiceFunctions(), ConversionFunctions(),
                                   DateFunctions(),      FormatFunctions(), NumberFunctions(),
                                   Operators(),          TextFunctions()};
  return parts;
}

std::string Lowered(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = LowerAscii(c);
  return lower;
}

void Register(sqlite3* connection, FunctionState& state, const FunctionInfo& info) {
  auto* call = new Call{state, info};
  const int count = info.minArgs == info.maxArgs ? info.minArgs : -1;
  const bool aggregate = info.accumulator != nullptr;
  sqlite3_create_function_v2(
      connection, info.StoreName().c_str(), count, kFlags | (info.repeatable ? SQLITE_DETERMINISTIC : 0),
      call, aggregate ? nullptr : Invoke, aggregate ? StepAggregate : nullptr,
      aggregate ? FinishAggregate : nullptr, [](void* data) { delete static_cast<Call*>(data); });
}

}  // namespace

std::string FunctionInfo::StoreName() const {
  return (native ? "" : "sv_") + Lowered(name);
}

const FunctionInfo* FindFunction(std::string_view name) {
  static const auto byName = [] {
    std::unordered_map<std::string, const FunctionInfo*> map;
    for (const auto& part : Parts())
      for (const FunctionInfo& info : part)
        if (!info.internal) map.emplace(Lowered(info.name), &info);
    return map;
  }();
  if (name.ends_with('$')) name.remove_suffix(1);
  const auto found = byName.find(Lowered(name));
  return found == byName.end() ? nullptr : found->second;
}

void RegisterFunctions(sqlite3* connection, FunctionState& state) {
  for (const auto& part : Parts())
    for (const FunctionInfo& info : part)
      if (!info.native) Register(connection, state, info);
}

}  // namespace scorvane::engine
