// A record of changed rows as bytes: how it is put together and taken apart.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3_stmt;
struct sqlite3_value;

namespace scorvane::engine {

struct KeyRange {
  std::int64_t first = 0;
  std::int64_t last = 0;
};

struct OldRow {
  std::int64_t key = 0;
  bool existsNow = false;  // it was changed, not deleted
  std::string values;      // packed
};

struct TableRecord {
  std::string name;
  std::vector<std::string> columns;
  bool checked = true;
  std::uint64_t checksum = 0;  // of the rows as the change left them
  std::vector<KeyRange> inserted;
  std::vector<OldRow> old;
};

std::string PackRecord(const std::vector<TableRecord>& tables);
// Throws EngineError 3049 when the bytes are no record.
std::vector<TableRecord> UnpackRecord(std::string_view record);

// Null for a value counts as the SQL value Null.
void PackValue(std::string& packed, sqlite3_value* value);
// Binds packed values to the parameters from `first` on; they must outlive the statement's run.
void BindPacked(sqlite3_stmt* statement, int first, std::string_view values);

}  // namespace scorvane::engine
