// The rows of a query as texts that a test can name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/Database.h"

namespace scorvane::test {

// One text a row, its values separated by "|"; Null is "Null".
inline std::vector<std::string> Rows(engine::Database& database, std::string_view sql) {
  std::vector<std::string> rows;
  for (auto set = database.OpenRecordset(sql); !set.AtEnd(); set.MoveNext()) {
    std::string row;
    for (std::size_t i = 0; i < set.FieldCount(); ++i) {
      if (i > 0) row += '|';
      row += set.At(i).IsNull() ? "Null" : set.At(i).ToText();
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

// The first value of the first row.
inline std::string Single(engine::Database& database, std::string_view sql) {
  auto set = database.OpenRecordset(sql);
  return set.AtEnd() ? "no row" : set.At(0).IsNull() ? "Null" : set.At(0).ToText();
}

// The number of the EngineError that a statement throws, 0 for none.
inline int ErrorOf(engine::Database& database, std::string_view sql) {
  try {
    database.Execute(sql);
  } catch (const engine::EngineError& error) {
    return error.Number();
  }
  return 0;
}

}  // namespace scorvane::test
