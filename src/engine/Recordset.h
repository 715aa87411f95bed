// The rows that a query yields.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Value.h"

namespace scorvane::engine {

enum class RecordsetType {
  Snapshot,     // fixed when opened
  ForwardOnly,  // the same, walked once
  Dynaset,      // a fixed set of row keys of one table; each row is read when one moves there, and can be
                // edited
};

class Recordset {
 public:
  struct State;
  explicit Recordset(std::unique_ptr<State> state);
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;
  ~Recordset();

  // True behind the last row, and at once when there is none.
  bool AtEnd() const;
  void MoveNext();
  void MoveFirst();
  std::size_t RecordCount() const;

  std::size_t FieldCount() const;
  const std::string& FieldName(std::size_t index) const;
  // By name, without regard to case; throws EngineError 3265 when there is none.
  std::size_t FieldIndex(std::string_view name) const;
  bool HasField(std::string_view name) const;

  // A field of the current row. Throws EngineError: 3021 without a row, 3265 without such a field, 3167 when
  // the row of a Dynaset has been deleted, 3420 when its database has been closed.
  const Value& operator[](std::string_view name) const;
  const Value& At(std::size_t index) const;

  // Changing the current row of a Dynaset: Edit, Set each field, Update. Values are converted to the fields'
  // types. Throws EngineError 3027 on a snapshot, and the errors of a statement that writes the same values.
  void Edit();
  void Set(std::string_view name, Value value);
  void Update();

 private:
  std::unique_ptr<State> state_;
};

}  // namespace scorvane::engine
