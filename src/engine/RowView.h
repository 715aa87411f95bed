// The rows of a query, one at a time: for results that are larger than one would keep.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Value.h"

namespace scorvane::engine {

class RowView {
 public:
  std::size_t FieldCount() const { return names_.size(); }
  const std::string& FieldName(std::size_t index) const { return names_[index]; }
  // By name, without regard to case; throws EngineError 3265 when there is none.
  std::size_t FieldIndex(std::string_view name) const;
  // A field of the current row.
  const Value& At(std::size_t index) const { return values_[index]; }

 private:
  friend class Database;
  std::vector<std::string> names_;
  std::vector<Value> values_;
};

}  // namespace scorvane::engine
