// Tells contents apart: 128 bits over any bytes, the same on every machine. No protection against somebody
// who wants two contents to look the same.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace scorvane::site {

class Hash {
 public:
  void Add(std::string_view bytes);
  // A text with its end, so that "a" and "bc" are not "ab" and "c".
  void AddText(std::string_view text);
  // 32 hexadecimal digits of all that was added.
  std::string Digits() const;

 private:
  void Mix(std::uint64_t word);

  std::uint64_t a_ = 0x9E3779B97F4A7C15;
  std::uint64_t b_ = 0xC2B2AE3D27D4EB4F;
  std::uint64_t length_ = 0;
};

std::string HashOf(std::string_view bytes);
// Of a file's content; empty when it cannot be read.
std::string HashOfFile(const std::string& path);

}  // namespace scorvane::site
