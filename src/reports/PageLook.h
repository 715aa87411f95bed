// How a league's pages look: the colours, widths and font of its settings, and the footers.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "engine/Database.h"
#include "reports/Export.h"

namespace scorvane::reports {

constexpr std::int32_t Rgb(int red, int green, int blue) {
  return red + 256 * green + 65536 * blue;
}

// The look of a league that has saved none. The colours are those of the settings from kFirstPageColor on:
// eight of the page (background, text, links, visited links, active link, heading, report name, caption),
// then ten of the table.
inline constexpr std::array<std::int32_t, 18> kDefaultPageColors = {
    Rgb(255, 255, 255), Rgb(0, 0, 0),     Rgb(0, 0, 255),    Rgb(255, 0, 0),     Rgb(128, 128, 255),
    Rgb(0, 0, 0),       Rgb(0, 0, 0),     Rgb(0, 255, 0),    Rgb(255, 255, 255), Rgb(0, 0, 255),
    Rgb(0, 0, 0),       Rgb(0, 255, 255), Rgb(255, 255, 0),  Rgb(255, 0, 255),   Rgb(224, 224, 224),
    Rgb(128, 128, 128), Rgb(64, 64, 64),  Rgb(128, 128, 128)};
inline constexpr std::array<std::int16_t, 3> kDefaultLayout = {1, 3,
                                                               0};  // border, cell padding, cell spacing
inline constexpr const char* kDefaultPageFont = "Times New Roman";

struct PageLook {
  bool useBGImage = false;
  std::string bgImage;
  std::array<std::int32_t, 18> colors = kDefaultPageColors;
  std::array<bool, 5> switches{};  // heading row, data rows, every second data row, border, background
  std::array<std::int16_t, 3> layout = kDefaultLayout;
  std::string font = kDefaultPageFont;
  std::int16_t fontSize = 0;

  bool operator==(const PageLook& other) const = default;
};

// The look that the league's settings describe. A setting that is missing, or a colour that is none, leaves
// the default.
PageLook ReadPageLook(engine::Database& league);

// Stores a look in the league's settings. Throws EngineError; the settings before the failing one are stored.
void SavePageLook(engine::Database& league, const PageLook& look);

// Gives a page its look.
void ApplyPageLook(const PageLook& look, CExport& page);

// The program's version as it shows it: "1.02.05".
std::string ProductVersion();

// The footer of exported pages, and that of a preview.
std::string StandingsFooter();
std::string PreviewFooter();

}  // namespace scorvane::reports
