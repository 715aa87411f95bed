// Names of tables, fields and indexes: found without regard to the case of their ASCII letters.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::engine {

inline char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

inline bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  return true;
}

// A name as the store takes it: in double quotes.
inline std::string StoreName(std::string_view name) {
  std::string quoted = "\"";
  for (char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted += '"';
}

}  // namespace scorvane::engine
