// The inside of a Recordset.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/DatabaseImpl.h"
#include "engine/Recordset.h"

namespace scorvane::engine {

struct Recordset::State {
  RecordsetType type = RecordsetType::Snapshot;
  std::weak_ptr<Database::Impl> database;
  std::vector<sql::PlanColumn> columns;
  std::vector<Value> values;  // row after row
  std::size_t rows = 0;
  std::size_t current = 0;

  // Of a dynaset.
  std::vector<std::int64_t> keys;
  std::string keyTable;
  std::string rowSql;            // reads one row again
  std::vector<Value> rowValues;  // its parameters, but for the key
  std::size_t loaded = 0;        // the row that has been read since one moved there
  std::int64_t unit = 0;         // in which it was opened; 0 for none
  std::int64_t changes = 0;      // of the connection, when it was opened

  bool editing = false;
  std::vector<std::pair<std::size_t, Value>> edits;  // column, new value

  // Throws EngineError 3420 when the database has been closed.
  std::shared_ptr<Database::Impl> NeedDatabase() const;
  // Makes the current row of a dynaset what the table has now; throws EngineError 3167 when it is gone.
  void Load();
};

}  // namespace scorvane::engine
