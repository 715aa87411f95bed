// The inside of a Recordset.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/DatabaseImpl.h"
#include "engine/Recordset.h"

namespace scorvane::engine {

struct Recordset::State {
  RecordsetType type = RecordsetType::Snapshot;
  Database::Impl* database = nullptr;
  std::vector<sql::PlanColumn> columns;
  std::vector<Value> values;  // row after row
  std::vector<std::int64_t> keys;
  std::string keyTable;
  std::size_t rows = 0;
  std::size_t current = 0;

  bool editing = false;
  std::vector<std::pair<std::size_t, Value>> changes;  // column, new value
};

}  // namespace scorvane::engine
