// Texts on their way into a page, a picture or a feed.
#pragma once

#include <string>
#include <string_view>

namespace scorvane::common {

// Escaped, so that it is shown as it stands and is nothing else.
inline std::string EscapeMarkup(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// Without the control characters that no such file may hold, which become the replacement character; tabs and
// ends of lines stay.
inline std::string WithoutControls(std::string_view text) {
  std::string shown;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool second = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (second || byte == 0x7F || (byte < ' ' && byte != '\t' && byte != '\n')) {
      shown += "\xEF\xBF\xBD";
      if (second) ++i;
    } else {
      shown += text[i];
    }
  }
  return shown;
}

// One line that is shown as it stands, as far as it can be.
inline std::string EscapeLine(std::string_view text) {
  std::string line = WithoutControls(text);
  for (char& c : line)
    if (c == '\t' || c == '\n') c = ' ';
  return EscapeMarkup(line);
}

}  // namespace scorvane::common
