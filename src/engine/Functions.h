// The functions and aggregates of the SQL dialect that the store does not bring, or answers differently.
#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "engine/Conversion.h"

struct sqlite3;
struct sqlite3_context;
struct sqlite3_value;

namespace scorvane::engine {

class Workspace;

// What the functions of one connection share with it. Errors are carried past the store's C code in
// `pending`.
struct FunctionState {
  const Workspace* workspace = nullptr;
  std::vector<std::shared_ptr<const StoreTarget>>
      targets;  // by the number that a statement's sv_store calls carry
  std::exception_ptr pending;
};

// `state` must live as long as the connection.
void RegisterFunctions(sqlite3* connection, FunctionState& state);

// What a function of the dialect takes and gives.
struct FunctionInfo {
  const char* name;  // as the dialect writes it
  int minArgs;
  int maxArgs;
  Value::Type result;  // Null: depends on the arguments
  bool aggregate;
  bool native;    // the translator writes it itself; else it is called "sv_" + the name in lower case
  bool textArgs;  // its first argument is taken as text
};

// Null for a function that the dialect does not have.
const FunctionInfo* FindFunction(std::string_view name);

}  // namespace scorvane::engine
