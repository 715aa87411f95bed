// Every value on its way into a field is converted to the field's type here.
#pragma once

#include <string>

#include "engine/Schema.h"
#include "engine/Value.h"

namespace scorvane::engine {

// Where a value goes.
struct StoreTarget {
  Field field;
  std::string label;           // "Table.Field", for messages
  bool nullForbidden = false;  // an index or the primary key takes no Null
};

// A Boolean field takes Null as False. Throws EngineError: 6 outside the type's range, 3058 and 3314 for a
// Null that is not allowed, 3163 for a text that is too long, 3315 for an empty text that is not allowed,
// 3421 for what cannot be converted.
Value ConvertForField(const Value& value, const StoreTarget& target, char decimal);

// Characters, not bytes.
int CharacterCount(std::string_view text);

}  // namespace scorvane::engine
