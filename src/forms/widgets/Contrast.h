// Colours that can be read in every theme.
#pragma once

#include <QColor>
#include <QPalette>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace scorvane::forms {

// The contrast of two colours as the WCAG define it, from 1 to 21.
inline double ContrastOf(const QColor& a, const QColor& b) {
  const auto luminance = [](const QColor& color) {
    const auto linear = [](double part) {
      return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
  };
  const auto [low, high] = std::minmax({luminance(a), luminance(b)});
  return (high + 0.05) / (low + 0.05);
}

// The theme's colour of disabled text, brought nearer to that of other text until it can be read: text that
// stands back, and is meant to be read all the same.
inline QColor MutedText(const QPalette& palette, QPalette::ColorRole background = QPalette::Base) {
  constexpr double kReadable = 4.5;
  constexpr int kSteps = 20;
  const QColor paper = palette.color(QPalette::Active, background);
  const QColor strong = palette.color(QPalette::Active, QPalette::Text);
  const QColor weak = palette.color(QPalette::Disabled, QPalette::Text);
  for (int step = 0; step < kSteps; ++step) {
    const auto mixed = [&](int from, int to) { return from + (to - from) * step / kSteps; };
    const QColor color(mixed(weak.red(), strong.red()), mixed(weak.green(), strong.green()),
                       mixed(weak.blue(), strong.blue()));
    if (ContrastOf(color, paper) >= kReadable) return color;
  }
  return strong;
}

// What stands in an empty box as a hint can be read.
inline void ShowHintReadably(QWidget& box) {
  QPalette colors = box.palette();
  const QColor hint = MutedText(colors);
  if (colors.color(QPalette::Active, QPalette::PlaceholderText) == hint) return;
  colors.setColor(QPalette::PlaceholderText, hint);
  box.setPalette(colors);
}

}  // namespace scorvane::forms
