// Texts as characters rather than bytes.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::engine {

// The byte place that lies `characters` behind the byte place `place`.
std::size_t Advance(std::string_view text, std::size_t place, int characters);

std::u32string Characters(std::string_view text);
std::string TextOf(std::u32string_view characters);

// Letter case is folded character by character, so that places stay what they were: ß is one character.
std::u32string FoldCase(std::string_view text);
std::string UpperCase(std::string_view text);
std::string LowerCase(std::string_view text);
// The first letter of each word upper, all others lower.
std::string ProperCase(std::string_view text);

}  // namespace scorvane::engine
