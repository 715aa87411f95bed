// The reader of standings files (.stn), the plain-text race results of the older simulations: one file
// becomes one staged race with a scored result for each driver.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::import {

// Stages the file at `path` for the league's sim type and yields the key of its staged race. When that fails
// it shows one message, leaves nothing staged and yields 0. `qualifying` says what the file's qualifying
// column holds: 0 speeds (mph), anything else lap times. The point table must be loaded.
std::int32_t ReadStandingsFile(engine::Database& league, common::ProcessState& state,
                               common::UserInterface& ui, const std::string& path, int qualifying);

// The text ends where more of it is needed.
class EndOfText : public std::runtime_error {
 public:
  EndOfText() : std::runtime_error("Input past the end of the file.") {}
};

// The lines of a text, ended by LF or CR LF; a DOS end-of-file character ends the text.
class TextLines {
 public:
  explicit TextLines(std::string_view text) : rest_(text.substr(0, text.find('\x1A'))) {}

  bool AtEnd() const { return rest_.empty(); }
  // Throws EndOfText behind the last line.
  std::string_view ReadLine();
  // The number of the line read last, from 1.
  int LineNumber() const { return line_; }

 private:
  std::string_view rest_;
  int line_ = 0;
};

// The next line that is neither blank nor a comment ("*"); the last line of the text is taken whatever it
// holds. Throws EndOfText.
std::string_view ReadDataLine(TextLines& lines);

// A qualifying column as the SQL literal that is stored: a speed as it stands, a lap time ("1:05.5" or
// seconds) as the speed over `length` miles, nothing as 0.
std::string QualifyingSpeedText(std::string_view text, int qualifying, float length, char decimal);

}  // namespace scorvane::import
