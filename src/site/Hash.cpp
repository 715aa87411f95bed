#include "site/Hash.h"

#include <fmt/format.h>

#include <bit>
#include <cstring>
#include <fstream>
#include <vector>

#include "platform/SystemPath.h"

namespace scorvane::site {
namespace {

std::uint64_t Scatter(std::uint64_t word) {
  word ^= word >> 33U;
  word *= 0xFF51AFD7ED558CCD;
  word ^= word >> 33U;
  word *= 0xC4CEB9FE1A85EC53;
  return word ^ word >> 33U;
}

}  // namespace

void Hash::Mix(std::uint64_t word) {
  a_ = std::rotl(a_ ^ word * 0x87C37B91114253D5, 31) * 0x4CF5AD432745937F + b_;
  b_ = std::rotl(b_ + word * 0x4CF5AD432745937F, 33) * 0x87C37B91114253D5 ^ a_;
}

void Hash::Add(std::string_view bytes) {
  length_ += bytes.size();
  std::size_t place = 0;
  for (; place + 8 <= bytes.size(); place += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + place, 8);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    Mix(word);
  }
  std::uint64_t rest = 0;
  for (std::size_t i = bytes.size(); i > place; --i)
    rest = rest << 8U | static_cast<unsigned char>(bytes[i - 1]);
  if (place < bytes.size()) Mix(rest);
}

void Hash::AddText(std::string_view text) {
  Mix(text.size());
  Add(text);
}

std::string Hash::Digits() const {
  Hash end = *this;
  end.Mix(length_);
  return fmt::format("{:016x}{:016x}", Scatter(end.a_ ^ end.b_), Scatter(end.b_ + length_));
}

std::string HashOf(std::string_view bytes) {
  Hash hash;
  hash.Add(bytes);
  return hash.Digits();
}

std::string HashOfFile(const std::string& path) {
  std::ifstream file(platform::SystemPath(path), std::ios::binary);
  if (!file) return {};
  Hash hash;
  std::vector<char> block(1U << 18U);
  while (file) {
    file.read(block.data(), static_cast<std::streamsize>(block.size()));
    hash.Add({block.data(), static_cast<std::size_t>(file.gcount())});
  }
  return file.bad() ? std::string() : hash.Digits();
}

}  // namespace scorvane::site
