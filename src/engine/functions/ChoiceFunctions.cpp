// Functions that choose one of their arguments: the translator writes them, so that what is not chosen is not
// computed.
#include "engine/functions/Table.h"

namespace scorvane::engine {

std::span<const FunctionInfo> ChoiceFunctions() {
  static constexpr FunctionInfo kTable[] = {
      NativeFunction("IIf", 3, 3, Type::Null), NativeFunction("Nz", 1, 2, Type::Null),
      NativeFunction("Switch", 2, 60, Type::Null), NativeFunction("Choose", 2, 60, Type::Null),
      NativeFunction("IsNull", 1, 1, Type::Boolean)};
  return kTable;
}

}  // namespace scorvane::engine
