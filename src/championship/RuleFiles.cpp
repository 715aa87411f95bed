#include "championship/RuleFiles.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "common/Formats.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "reports/Export.h"

namespace scorvane::championship {
namespace {

using common::RuleError;

constexpr std::size_t kMostPointBytes = 1 << 20;

// At most one byte more than `most`, so that what reads it sees that it is too long.
std::string ReadSmallFile(const std::string& path, std::size_t most) {
  std::ifstream disk;
  const bool piped = path == common::kStandardInput;
  if (!piped) disk.open(common::SystemPath(path), std::ios::binary);
  std::istream& file = piped ? std::cin : disk;
  std::string text(most + 1, '\0');
  if (std::error_code error;
      !file || (!piped && std::filesystem::is_directory(common::SystemPath(path), error)))
    throw RuleError(fmt::format("'{}' cannot be read.", path));
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad()) throw RuleError(fmt::format("'{}' cannot be read.", path));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

std::int32_t WholeNumber(const std::string& text, const std::string& what) {
  std::int32_t number = 0;
  const std::string_view trimmed = common::TrimBlanks(text);
  const auto [end, error] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), number);
  if (error != std::errc() || end != trimmed.data() + trimmed.size())
    throw RuleError(fmt::format("{} is a whole number, not '{}'.", what, text));
  return number;
}

}  // namespace

std::vector<scoring::PositionPoints> ReadPointFile(const std::string& path) {
  const std::string text = ReadSmallFile(path, kMostPointBytes);
  if (text.size() > kMostPointBytes) throw RuleError(fmt::format("'{}' is too long for points.", path));
  std::istringstream file(text);
  std::vector<scoring::PositionPoints> positions;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (common::TrimBlanks(line).empty()) continue;
    std::vector<std::string> cells;
    std::stringstream stream(line);
    // Where numbers have a decimal comma, spreadsheets write semicolons.
    const char separator = line.find(';') == std::string::npos ? ',' : ';';
    for (std::string cell; std::getline(stream, cell, separator);) cells.push_back(cell);
    if (number == 1 && cells[0].find_first_not_of("0123456789 ") != std::string::npos) continue;
    const std::string where = fmt::format("{}:{}: ", path, number);
    if (cells.size() < 2 || cells.size() > 3)
      throw RuleError(where + "a line has a position, its points and, behind these, prize money.");
    if (WholeNumber(cells[0], where + "The position") != static_cast<std::int32_t>(positions.size()) + 1)
      throw RuleError(where + fmt::format("position {} is expected here.", positions.size() + 1));
    scoring::PositionPoints position;
    position.points = WholeNumber(cells[1], where + "The points");
    if (cells.size() == 3 && !common::TrimBlanks(cells[2]).empty())
      position.prizeMoney = WholeNumber(cells[2], where + "The prize money");
    positions.push_back(position);
  }
  if (positions.empty()) throw RuleError(fmt::format("'{}' holds no positions.", path));
  return positions;
}

PlayoffFormat ReadPlayoffFile(const std::string& path) {
  return ParsePlayoff(ReadSmallFile(path, kMostPlayoffBytes));
}

void WritePlayoffFile(const std::string& path, const PlayoffFormat& format) {
  if (!reports::WritePageFile(path, PlayoffText(format) + "\n"))
    throw RuleError(fmt::format("'{}' cannot be written.", path));
}

}  // namespace scorvane::championship
