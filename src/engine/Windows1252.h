// Windows-1252: the code page of the simulations' files, and of character codes.
#pragma once

#include <array>

namespace scorvane::engine {

// What the bytes 80 to 9F stand for; all others are the character of their own number. The five unassigned
// ones stand for their control characters.
inline constexpr std::array<char16_t, 32> kWindows1252UpperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace scorvane::engine
