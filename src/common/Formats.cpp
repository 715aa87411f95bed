#include "common/Formats.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "engine/Format.h"

namespace scorvane::common {
namespace {

constexpr std::int64_t kHighestColor = 0xFFFFFF;

// The small and capital letters of the league's code page that share no rule: 2 bytes of UTF-8 each.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kOddLetters = {
    {{"š", "Š"}, {"œ", "Œ"}, {"ž", "Ž"}, {"ÿ", "Ÿ"}}};

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

void UpperCaseAt(std::string& text, std::size_t at) {
  char& c = text[at];
  if (c >= 'a' && c <= 'z') {
    c = static_cast<char>(c - 'a' + 'A');
    return;
  }
  const std::string_view letter = std::string_view(text).substr(at, 2);
  for (const auto& [lower, upper] : kOddLetters) {
    if (letter == lower) {
      text.replace(at, 2, upper);
      return;
    }
  }
  // à to þ, but for the division sign among them.
  if (letter >= "à" && letter <= "þ" && letter != "÷") text[at + 1] = static_cast<char>(text[at + 1] - 0x20);
}

void LowerCaseAt(std::string& text, std::size_t at) {
  char& c = text[at];
  if (static_cast<unsigned char>(c) < 0x80) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return;
  }
  const std::string_view letter = std::string_view(text).substr(at, 2);
  for (const auto& [lower, upper] : kOddLetters) {
    if (letter == upper) {
      text.replace(at, 2, lower);
      return;
    }
  }
  // À to Þ, but for the multiplication sign among them.
  if (letter >= "À" && letter <= "Þ" && letter != "×") text[at + 1] = static_cast<char>(text[at + 1] + 0x20);
}

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string LocalizeDecimal(std::string_view text, char decimal) {
  std::string localized(text);
  std::replace(localized.begin(), localized.end(), '.', decimal);
  return localized;
}

std::string ProperCase(std::string_view text) {
  std::string proper(text);
  for (std::size_t i = 0; i < proper.size(); ++i) {
    if (i == 0 || proper[i - 1] == ' ' || (i >= 2 && proper[i - 2] == '\r' && proper[i - 1] == '\n'))
      UpperCaseAt(proper, i);
  }
  return proper;
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (std::size_t i = 0; i < lower.size(); ++i) LowerCaseAt(lower, i);
  return lower;
}

float SecondsPerLap(float speed, float length) {
  return speed == 0 ? 0 : length / speed * 3600;
}

std::string FormatLapTime(float seconds, char decimal) {
  if (seconds == 0) return "--";
  const float hours = std::floor(seconds / 3600);
  seconds -= hours * 3600;
  const float minutes = std::floor(seconds / 60);
  seconds -= minutes * 60;
  std::string rest = engine::FormatValue(engine::Value(seconds), "00.000", decimal);
  if (hours >= 1) return fmt::format("{:.0f}:{:02.0f}:{}", hours, minutes, rest);
  if (minutes >= 1) return fmt::format("{:.0f}:{}", minutes, rest);
  return rest;
}

std::string FormatQualifying(const engine::Value& value, float length, int method, char decimal) {
  if (value.IsNull()) return "--";
  if (method == kLapSpeed) return engine::FormatValue(value, "##0.000;;--", decimal);
  if (method == kLapTime) return FormatLapTime(SecondsPerLap(value.ToSingle(decimal), length), decimal);
  return {};
}

std::string PadLeft(std::string_view text, int width, char pad) {
  if (width <= 0) return {};
  const auto wanted = static_cast<std::size_t>(width);
  std::size_t characters =
      text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
  for (; characters > wanted; --characters) {
    text.remove_prefix(1);
    while (!text.empty() && IsContinuation(text.front())) text.remove_prefix(1);
  }
  return std::string(wanted - characters, pad).append(text);
}

int ColorByte(std::int64_t color, int byte) {
  if (byte < 1 || byte > 3 || color < 0 || color > kHighestColor) return -1;
  return static_cast<int>((color >> (8 * (byte - 1))) & 0xFF);
}

std::string ColorToHTML(std::int64_t color) {
  if (color < 0 || color > kHighestColor) return "FFFFFF";
  return fmt::format("{:02X}{:02X}{:02X}", ColorByte(color, 1), ColorByte(color, 2), ColorByte(color, 3));
}

std::string ColorText(std::int64_t color) {
  return fmt::format("&H{:08X}", static_cast<std::uint32_t>(color));
}

std::optional<std::int32_t> ParseColor(std::string_view text) {
  int base = 10;
  if (text.size() > 2 && text[0] == '&' && (text[1] == 'H' || text[1] == 'h')) {
    base = 16;
    text.remove_prefix(2);
  }
  std::int64_t color = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), color, base);
  if (error != std::errc() || end != text.data() + text.size() || color > 0xFFFFFFFF || color < INT32_MIN)
    return std::nullopt;
  return static_cast<std::int32_t>(color);
}

int CountOccurrences(std::string_view text, std::string_view part) {
  if (part.empty()) return 0;
  int count = 0;
  for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size()))
    ++count;
  return count;
}

int DefaultSimType(const ProcessState& state) {
  constexpr std::array<int, 5> kSimTypes = {kNascarRacing3, kNascarLegends, kNascarRacing4, kNascarRacing2002,
                                            kNascarRacing2003};
  for (std::size_t i = kSimTypes.size(); i-- > 0;) {
    if (state.simFolders[i].find_first_not_of(' ') != std::string::npos) return kSimTypes[i];
  }
  return -1;
}

std::string_view SimTypeName(int simType) {
  constexpr std::array<std::string_view, 6> kNames = {
      "NASCAR Racing 3",           "NASCAR Legends",           "NASCAR Racing 2 / 1999", "NASCAR Racing 4",
      "NASCAR Racing 2002 Season", "NASCAR Racing 2003 Season"};
  if (simType < 0 || simType >= static_cast<int>(kNames.size())) return {};
  return kNames[static_cast<std::size_t>(simType)];
}

}  // namespace scorvane::common
