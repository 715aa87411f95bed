// Twips, the unit of stored column widths: 1,440 to an inch, 15 to a pixel at 96 dpi.
#pragma once

#include <QWidget>

namespace scorvane::forms {

// In the widget's own pixels, which the screen's scale multiplies by itself.
inline int TwipsToPixels(int twips, const QWidget* widget) {
  return (twips * widget->logicalDpiX() + 720) / 1440;
}

}  // namespace scorvane::forms
