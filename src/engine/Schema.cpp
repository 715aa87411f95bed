#include "engine/Schema.h"

#include <algorithm>

#include "engine/Names.h"

namespace scorvane::engine {
namespace {

template <typename Item>
const Item* FindByName(const std::vector<Item>& items, std::string_view name) {
  auto found =
      std::find_if(items.begin(), items.end(), [&](const Item& item) { return SameName(item.Name, name); });
  return found == items.end() ? nullptr : &*found;
}

}  // namespace

const Field* TableDef::FindField(std::string_view name) const {
  return FindByName(Fields, name);
}
const Index* TableDef::FindIndex(std::string_view name) const {
  return FindByName(Indexes, name);
}

}  // namespace scorvane::engine
