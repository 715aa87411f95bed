// SQLite behind RAII: a connection and its statements. Only .cpp files of the engine see the C interface.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "engine/Value.h"

struct sqlite3;
struct sqlite3_stmt;

namespace scorvane::engine {

struct StatementCloser {
  void operator()(sqlite3_stmt* statement) const;
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementCloser>;

struct ConnectionCloser {
  void operator()(sqlite3* connection) const;
};
using ConnectionPtr = std::unique_ptr<sqlite3, ConnectionCloser>;

// Turns what the store says of its last failure into an EngineError. `path` names the file in the message.
[[noreturn]] void ThrowStoreError(sqlite3* connection, int code, const std::string& path);

// Binds a value to the parameter `index` (from 1). The text must stay where it is until the statement is
// reset.
void Bind(sqlite3_stmt* statement, int index, const Value& value);

}  // namespace scorvane::engine
