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

constexpr double kReadable = 4.5;  // the contrast that text needs
constexpr double kSeen = 3;        // and the one that a sign or a frame needs

// The colour, brought nearer to a strong one until it has that contrast on the paper.
inline QColor ReadableOn(const QColor& paper, const QColor& color, const QColor& strong,
                         double contrast = kReadable) {
  constexpr int kSteps = 20;
  for (int step = 0; step < kSteps; ++step) {
    const auto mixed = [&](int from, int to) { return from + (to - from) * step / kSteps; };
    const QColor nearer(mixed(color.red(), strong.red()), mixed(color.green(), strong.green()),
                        mixed(color.blue(), strong.blue()));
    if (ContrastOf(nearer, paper) >= contrast) return nearer;
  }
  return strong;
}

// The theme's colour of disabled text, brought nearer to that of other text until it can be read: text that
// stands back, and is meant to be read all the same.
inline QColor MutedText(const QPalette& palette, QPalette::ColorRole background = QPalette::Base) {
  return ReadableOn(palette.color(QPalette::Active, background),
                    palette.color(QPalette::Disabled, QPalette::Text),
                    palette.color(QPalette::Active, QPalette::Text));
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
