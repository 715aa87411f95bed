#include "site/Colors.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "common/Formats.h"

namespace scorvane::site {
namespace {

constexpr Color kWhite{255, 255, 255};
constexpr Color kBlack{0, 0, 0};

double Channel(int value) {
  const double part = value / 255.0;
  return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(Color color) {
  return 0.2126 * Channel(color.red) + 0.7152 * Channel(color.green) + 0.0722 * Channel(color.blue);
}

}  // namespace

Color ColorOf(std::int32_t setting) {
  if (setting < 0 || setting > 0xFFFFFF) return kWhite;
  return {common::ColorByte(setting, 1), common::ColorByte(setting, 2), common::ColorByte(setting, 3)};
}

Color ColorOf(const std::string& text) {
  unsigned rgb = 0;
  if (text.size() == 7) std::from_chars(text.data() + 1, text.data() + 7, rgb, 16);
  return {static_cast<int>(rgb >> 16U & 0xFFU), static_cast<int>(rgb >> 8U & 0xFFU),
          static_cast<int>(rgb & 0xFFU)};
}

std::string ColorName(Color color) {
  return fmt::format("#{:02x}{:02x}{:02x}", color.red, color.green, color.blue);
}

double Contrast(Color a, Color b) {
  const double one = Luminance(a) + 0.05;
  const double two = Luminance(b) + 0.05;
  return std::max(one, two) / std::min(one, two);
}

bool IsDark(Color color) {
  return Contrast(color, kWhite) > Contrast(color, kBlack);
}

Color Blend(Color from, Color to, double part) {
  const auto mix = [part](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * part)); };
  return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

Color Readable(Color color, Color background, double contrast) {
  const Color goal = IsDark(background) ? kWhite : kBlack;
  constexpr int kSteps = 40;
  for (int step = 0; step < kSteps; ++step) {
    const Color tried = Blend(color, goal, static_cast<double>(step) / kSteps);
    if (Contrast(tried, background) >= contrast) return tried;
  }
  return goal;
}

}  // namespace scorvane::site
