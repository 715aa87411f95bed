// File names that every web server takes: small letters, digits and hyphens.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace scorvane::site {

// "José Núñez" gives "jose-nunez"; empty when nothing of the text can be kept.
std::string Slug(std::string_view text);

// "12-jose-nunez", or "12" alone: the number tells apart what looks alike.
std::string NumberedSlug(std::int32_t id, std::string_view name);

}  // namespace scorvane::site
