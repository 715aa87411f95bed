#include "engine/functions/Characters.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>

namespace scorvane::engine {
namespace {

template <typename Change>
std::string Changed(std::string_view text, Change change) {
  std::u32string characters = Characters(text);
  for (char32_t& c : characters) c = change(c);
  return TextOf(characters);
}

char32_t Upper(char32_t c) {
  return static_cast<char32_t>(u_toupper(static_cast<UChar32>(c)));
}
char32_t Lower(char32_t c) {
  return static_cast<char32_t>(u_tolower(static_cast<UChar32>(c)));
}

}  // namespace

std::size_t Advance(std::string_view text, std::size_t place, int characters) {
  while (characters > 0 && place < text.size()) {
    ++place;
    while (place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U) ++place;
    --characters;
  }
  return place;
}

std::u32string Characters(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::size_t place = 0;
  while (place < text.size()) {
    UChar32 c = 0;
    U8_NEXT_OR_FFFD(bytes, place, text.size(), c);  // NOLINT(bugprone-inc-dec-in-conditions): ICU's macro
    characters += static_cast<char32_t>(c);
  }
  return characters;
}

std::string TextOf(std::u32string_view characters) {
  std::string text;
  text.reserve(characters.size());
  for (char32_t c : characters) {
    std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
    std::size_t length = 0;
    UBool failed = 0;
    U8_APPEND(bytes, length, bytes.size(), static_cast<UChar32>(c), failed);
    if (!failed) text.append(reinterpret_cast<const char*>(bytes.data()), length);
  }
  return text;
}

std::u32string FoldCase(std::string_view text) {
  std::u32string characters = Characters(text);
  for (char32_t& c : characters)
    c = static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
  return characters;
}

std::string UpperCase(std::string_view text) {
  return Changed(text, Upper);
}
std::string LowerCase(std::string_view text) {
  return Changed(text, Lower);
}

std::string ProperCase(std::string_view text) {
  bool inWord = false;
  return Changed(text, [&](char32_t c) {
    const char32_t changed = inWord ? Lower(c) : Upper(c);
    // Words end at blanks and line ends, not at apostrophes or hyphens.
    inWord = !u_isUWhiteSpace(static_cast<UChar32>(c)) && c != 0;
    return changed;
  });
}

}  // namespace scorvane::engine
