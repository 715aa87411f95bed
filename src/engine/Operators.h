// The operators of the dialect that the store would answer differently, as functions that the translator
// writes in their place.
#pragma once

#include "engine/Functions.h"

namespace scorvane::engine {

// `state` must live as long as the connection.
void RegisterOperators(sqlite3* connection, FunctionState& state);

}  // namespace scorvane::engine
