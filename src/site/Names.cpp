#include "site/Names.h"

#include <fmt/format.h>

#include <array>

#include "engine/Names.h"

namespace scorvane::site {
namespace {

constexpr std::size_t kMostLetters = 60;

// The letters U+00C0 to U+017F without what stands on or below them; '-' where there is none.
constexpr std::string_view kPlainLetters =
    "aaaaaaaceeeeiiiidnooooo-ouuuuytsaaaaaaaceeeeiiiidnooooo-ouuuuyty"
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiiiiijjkkklllllll"
    "lllnnnnnnnnnoooooooorrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
static_assert(kPlainLetters.size() == 0x180 - 0xC0);

// The character that starts at `place`, which moves behind it; 0 for what is no UTF-8.
std::uint32_t NextCharacter(std::string_view text, std::size_t& place) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const std::uint32_t first = byte(place++);
  if (first < 0x80) return first;
  const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  std::uint32_t character = more == 0 ? 0 : first & (0x3FU >> more);
  for (std::size_t i = 0; i < more; ++i) {
    if (place >= text.size() || (byte(place) & 0xC0U) != 0x80U) return 0;
    character = character << 6U | (byte(place++) & 0x3FU);
  }
  return character;
}

}  // namespace

std::string Slug(std::string_view text) {
  std::string slug;
  for (std::size_t place = 0; place < text.size() && slug.size() < kMostLetters;) {
    const std::uint32_t character = NextCharacter(text, place);
    char letter = '-';
    if (character < 0x80) {
      letter = engine::LowerAscii(static_cast<char>(character));
    } else if (character >= 0xC0 && character < 0x180) {
      letter = kPlainLetters[character - 0xC0];
    }
    const bool plain = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
    if (character == '\'') continue;
    if (plain) {
      slug += letter;
    } else if (!slug.empty() && slug.back() != '-') {
      slug += '-';
    }
  }
  while (!slug.empty() && slug.back() == '-') slug.pop_back();
  return slug;
}

std::string NumberedSlug(std::int32_t id, std::string_view name) {
  const std::string slug = Slug(name);
  return slug.empty() ? std::to_string(id) : fmt::format("{}-{}", id, slug);
}

}  // namespace scorvane::site
