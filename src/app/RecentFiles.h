// The league files that were open last, most recent first.
#pragma once

#include <array>
#include <string>

#include "engine/Database.h"

namespace scorvane::app {

class RecentFiles {
 public:
  static constexpr int kSlots = 4;

  // Reads the list from the template's settings; a file that is not there any more drops out.
  void Load(engine::Database& templateDb);
  // Puts a path at the top; one that is in the list already, in whatever letter case, moves there.
  void Add(const std::string& path);
  // Writes the list to the template's settings.
  void Save(engine::Database& templateDb) const;

  // Empty for a slot without a file.
  const std::string& operator[](int slot) const { return paths_[static_cast<std::size_t>(slot)]; }
  bool IsEmpty() const;

 private:
  std::array<std::string, kSlots> paths_;
};

}  // namespace scorvane::app
