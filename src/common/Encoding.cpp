#include "common/Encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "engine/Windows1252.h"

namespace scorvane::common {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

void AppendUtf8(std::string& text, char16_t character) {
  const auto byte = [&](unsigned value) { text += static_cast<char>(value); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0U | (character >> 6U));
    byte(0x80U | (character & 0x3FU));
  } else {
    byte(0xE0U | (character >> 12U));
    byte(0x80U | ((character >> 6U) & 0x3FU));
    byte(0x80U | (character & 0x3FU));
  }
}

// Takes one character off the front; a byte that starts none is taken alone.
char32_t TakeCharacter(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80) return lead;
  const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : 0;
  if (more == 0 || lead > 0xF4 || text.size() < more) return kInvalid;
  char32_t character = lead & (0x3FU >> more);
  for (std::size_t i = 0; i < more; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80) return kInvalid;
    character = (character << 6U) | (next & 0x3FU);
  }
  constexpr std::array<char32_t, 4> kSmallest = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[more] || character > 0x10FFFF || surrogate) return kInvalid;
  text.remove_prefix(more);
  return character;
}

}  // namespace

std::string FromWindows1252(std::string_view bytes) {
  if (IsAscii(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    AppendUtf8(
        text, byte >= 0x80 && byte < 0xA0 ? engine::kWindows1252UpperControls[byte - 0x80U] : char16_t{byte});
  }
  return text;
}

bool IsUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    if (TakeCharacter(bytes) == kInvalid) return false;
  }
  return true;
}

std::string FromPageBytes(std::string_view bytes) {
  return IsUtf8(bytes) ? std::string(bytes) : FromWindows1252(bytes);
}

std::string ToWindows1252(std::string_view utf8) {
  if (IsAscii(utf8)) return std::string(utf8);
  std::string bytes;
  bytes.reserve(utf8.size());
  while (!utf8.empty()) {
    const char32_t character = TakeCharacter(utf8);
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
      bytes += static_cast<char>(character);
      continue;
    }
    const auto* const found = std::find(engine::kWindows1252UpperControls.begin(),
                                        engine::kWindows1252UpperControls.end(), character);
    bytes += found == engine::kWindows1252UpperControls.end()
                 ? '?'
                 : static_cast<char>(0x80 + (found - engine::kWindows1252UpperControls.begin()));
  }
  return bytes;
}

}  // namespace scorvane::common
