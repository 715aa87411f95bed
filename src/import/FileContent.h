// Result files as the readers take them in.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace scorvane::import {

// A fault of a file, in words for the administrator.
class FileFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The content of the result file at `path`, or of the standard input for kStandardInput. Throws FileFault
// when it cannot be read, is empty, or is so large that it can be none.
std::string ReadFileContent(const std::string& path);

// The name of the file at `path` as a race keeps it: a name too long for its field loses the end of its stem.
std::string FileNameOfRace(std::string_view path);

// A statistic of a race in a field of so many characters: when it is too long for it, without the blanks
// before its unit, then without its unit ("101.512 sec" becomes "101.512sec", "1:02.345 sec" "1:02.345"). A
// text that is longer still, or begins with no digit, stays as it is.
std::string FitStatistic(std::string text, std::size_t characters);

// What the fields of a race have room for.
inline constexpr std::size_t kFileNameCharacters = 50;
inline constexpr std::size_t kRaceTimeCharacters = 15;
inline constexpr std::size_t kSpeedCharacters = 10;
inline constexpr std::size_t kMarginCharacters = 10;

}  // namespace scorvane::import
