// File filters that several dialogs use.
#pragma once

namespace scorvane::forms {

inline constexpr const char* kPlayoffFilter = "Playoff (*.json)|*.json|All Files (*.*)|*.*";
inline constexpr const char* kSeasonFilter = "Spreadsheet (*.xlsx)|*.xlsx";
inline constexpr const char* kPointFilter = "Points (*.csv)|*.csv|All Files (*.*)|*.*";
inline constexpr const char* kLogoFilter =
    "Pictures (*.png, *.jpg, *.gif, *.webp)|*.png;*.jpg;*.jpeg;*.gif;*.webp|All Files (*.*)|*.*";
inline constexpr const char* kImageFilter =
    "All Files (*.*)|*.*|GIF and JPEG (*.gif, *.jpg)|*.gif;*.jpg|Bitmap (*.bmp)|*.bmp|TIFF (*.tif)|*.tif|"
    "Windows Metafile (*.wmf)|*.wmf|PCX (*.pcx)|*.pcx|Targa (*.tga)|*.tga";

}  // namespace scorvane::forms
