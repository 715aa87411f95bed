// Colours that can be read on each other.
#pragma once

#include <cstdint>
#include <string>

namespace scorvane::site {

struct Color {
  int red = 0;
  int green = 0;
  int blue = 0;

  bool operator==(const Color& other) const = default;
};

// As settings hold it: red in the low byte; what is no colour is white.
Color ColorOf(std::int32_t setting);
// "#rrggbb"; black for what is none.
Color ColorOf(const std::string& text);
std::string ColorName(Color color);

// 1 to 21, as the accessibility guidelines count it. Text needs 4.5.
double Contrast(Color a, Color b);
bool IsDark(Color color);
// `part` of the way from one colour to the other, 0 to 1.
Color Blend(Color from, Color to, double part);
// The colour itself where it can be read on the background, else the nearest one on its way to black or white
// that can.
Color Readable(Color color, Color background, double contrast = 4.6);

}  // namespace scorvane::site
