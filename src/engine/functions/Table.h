// The table of functions, in the parts in which it is kept.
#pragma once

#include <span>

#include "engine/Functions.h"
#include "engine/functions/Args.h"

namespace scorvane::engine {

std::span<const FunctionInfo> AggregateFunctions();
std::span<const FunctionInfo> ChoiceFunctions();
std::span<const FunctionInfo> ConversionFunctions();
std::span<const FunctionInfo> DateFunctions();
std::span<const FunctionInfo> FormatFunctions();
std::span<const FunctionInfo> NumberFunctions();
std::span<const FunctionInfo> Operators();
std::span<const FunctionInfo> TextFunctions();

using Type = Value::Type;
using Handler = Value (*)(const Args&);

constexpr FunctionInfo Function(const char* name, int minArgs, int maxArgs, Type result, Handler handler) {
  FunctionInfo info;
  info.name = name;
  info.minArgs = minArgs;
  info.maxArgs = maxArgs;
  info.result = result;
  info.handler = handler;
  return info;
}

// A function that is asked about Null, too.
constexpr FunctionInfo NullFunction(const char* name, int minArgs, int maxArgs, Type result,
                                    Handler handler) {
  FunctionInfo info = Function(name, minArgs, maxArgs, result, handler);
  info.takesNull = true;
  return info;
}

// A function that answers anew each time it is asked.
constexpr FunctionInfo ChangingFunction(const char* name, int minArgs, int maxArgs, Type result,
                                        Handler handler) {
  FunctionInfo info = Function(name, minArgs, maxArgs, result, handler);
  info.repeatable = false;
  return info;
}

// A function that the translator writes itself.
constexpr FunctionInfo NativeFunction(const char* name, int minArgs, int maxArgs, Type result) {
  FunctionInfo info = Function(name, minArgs, maxArgs, result, nullptr);
  info.native = true;
  return info;
}

}  // namespace scorvane::engine
