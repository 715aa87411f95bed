// The functions and operators of the SQL dialect that the store does not bring, or answers differently: one
// table, from which the translator learns how a call is written and the connection what it runs.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Conversion.h"

struct sqlite3;

namespace scorvane::engine {

class Args;
class Workspace;

// What the functions of one connection share with it. Errors are carried past the store's C code in
// `pending`.
struct FunctionState {
  const Workspace* workspace = nullptr;
  std::vector<std::shared_ptr<const StoreTarget>>
      targets;  // by the number that a statement's sv_store calls carry
  std::exception_ptr pending;
  std::uint32_t random = 0x50000;  // Rnd's place in its sequence
};

// What an aggregate has seen of its group.
class Accumulator {
 public:
  virtual ~Accumulator() = default;
  virtual void Add(const Args& args) = 0;
  virtual Value Result() const = 0;
};

// An entry of the table. Every function has a handler, makes an accumulator, or is `native`: then the
// translator writes it in the store's own words.
struct FunctionInfo {
  const char* name = "";  // as the dialect writes it
  int minArgs = 0;
  int maxArgs = 0;
  Value::Type result = Value::Type::Null;  // Null: depends on the arguments
  bool aggregate = false;
  bool native = false;
  bool internal = false;   // written by the translator alone; no statement can call it
  bool takesNull = false;  // else a Null argument makes the result Null before the handler is asked
  bool repeatable = true;  // the same arguments give the same result
  Value (*handler)(const Args&) = nullptr;
  std::unique_ptr<Accumulator> (*accumulator)() = nullptr;

  // What the store knows it by.
  std::string StoreName() const;
};

// Null for a function that the dialect does not have. `Left$` is `Left`.
const FunctionInfo* FindFunction(std::string_view name);

// `state` must live as long as the connection.
void RegisterFunctions(sqlite3* connection, FunctionState& state);

}  // namespace scorvane::engine
