#include "import/StandingsFile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "common/SqlText.h"
#include "import/FileContent.h"
#include "scoring/DriverIdentity.h"
#include "scoring/PointSystem.h"
#include "scoring/RaceScoring.h"

namespace scorvane::import {
namespace {

using common::TrimBlanks;

constexpr int kStatisticLines = 6;
constexpr std::string_view kDegreeSign = "\xB0";

// The place of a field in a driver line, its first column counted from 1.
struct Column {
  std::size_t start;
  std::size_t width;
};

struct Columns {
  Column start;
  Column driverName;
  Column lapsRun;
  Column lapsLed;
  Column points;
  Column qualifying;
  Column reasonOut;
};

constexpr Columns kNascarRacing2Columns = {{5, 2}, {14, 26}, {41, 3}, {46, 3}, {52, 3}, {56, 7}, {63, 12}};
constexpr Columns kOtherColumns = {{5, 2}, {14, 27}, {42, 3}, {47, 3}, {53, 3}, {57, 8}, {66, 12}};

std::string_view Cut(std::string_view line, std::size_t start, std::size_t width = std::string_view::npos) {
  return start > line.size() ? std::string_view() : line.substr(start - 1, width);
}

std::string_view Cut(std::string_view line, Column column) {
  return TrimBlanks(Cut(line, column.start, column.width));
}

// The file in the code page of the simulation, a byte a column: an editor may have saved it as UTF-8 since,
// which moves what stands behind a letter like "é".
std::string InColumns(std::string content) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (!common::IsUtf8(content)) return content;
  if (content.starts_with(kMark)) content.erase(0, kMark.size());
  return common::ToWindows1252(content);
}

// Reads one file into the staging tables.
class Reader {
 public:
  Reader(engine::Database& league, const common::ProcessState& state, const std::string& path, int qualifying,
         std::string_view content)
      : league_(league),
        content_(content),
        state_(state),
        path_(path),
        qualifying_(qualifying),
        excluded_(league),
        lines_(content),
        columns_(state.simType == common::kNascarRacing2 ? kNascarRacing2Columns : kOtherColumns) {}

  // 0 until the staged race exists.
  std::int32_t RaceId() const { return raceId_; }

  void Stage() {
    try {
      const std::string_view title = ReadSection("before the title line");
      CheckTitle(title);
      if (content_.find('\0') != std::string_view::npos) throw FileFault("This is no text file.");
      ReadTrackLine(title);
      SkipTableHead();
      ReadDrivers();
      ReadStatistics();
      failing_.clear();
      scoring::ApplyBonusPoints(league_, state_, raceId_, true);
    } catch (const EndOfText&) {
      throw FileFault(fmt::format("The file ends {}. It seems to be cut off.", section_));
    } catch (const engine::EngineError& error) {
      throw FileFault(failing_.empty() ? error.Description()
                                       : fmt::format("{}: {}", failing_, error.Description()));
    }
  }

 private:
  std::string_view ReadSection(const char* section) {
    section_ = section;
    return ReadDataLine(lines_);
  }

  void CheckTitle(std::string_view title) const {
    const std::string_view kind = TrimBlanks(title.substr(0, 10));
    if (kind != "Race Final" && !kind.empty())
      throw FileFault(fmt::format("\"{} does not seem to be a race final!", path_));
  }

  void ReadTrackLine(std::string_view title) {
    const int titleLine = lines_.LineNumber();
    const std::string_view line = ReadSection("before the track line");
    const std::string_view length = Cut(line, 26, 5);
    double miles = 0;
    if (!engine::ParseNumber(length, '.', miles)) throw Fault("track length", length);
    length_ = static_cast<float>(miles);
    std::string_view laps = Cut(line, 41, 3);
    laps = laps.substr(0, laps.find(' '));
    CheckWholeNumber("number of laps", laps);

    sql_ = "INSERT INTO STNRace (Name, FileName, Length, Laps) VALUES (";
    AppendQuoted(TrimBlanks(Cut(title, 11)));
    sql_ += ',';
    common::AppendLiteral(sql_, FileNameOfRace(path_));
    fmt::format_to(std::back_inserter(sql_), ",'{}',{})",
                   common::LocalizeDecimal(length, state_.decimalSeparator), laps);
    failing_ = fmt::format("Track and file name (lines {} and {})", titleLine, lines_.LineNumber());
    league_.Execute(sql_);
    raceId_ = common::GetMaxID(league_, "STNRace", "STNRaceID");
  }

  void SkipTableHead() {
    for (int rules = 0; rules < 2;) {
      if (ReadSection("before the table of drivers").substr(0, 10) == "----------") ++rules;
    }
  }

  void ReadDrivers() {
    section_ = "within the table of drivers";
    int position = 0;
    for (std::string_view line = lines_.ReadLine(); !TrimBlanks(line).empty(); line = lines_.ReadLine()) {
      if (TrimBlanks(line).substr(0, 4) == "AI :") continue;
      const std::string_view rawName = Cut(line, columns_.driverName);
      if (rawName.empty()) continue;
      const std::string name = common::FromWindows1252(rawName);
      failing_.clear();
      fmt::format_to(std::back_inserter(failing_), "Line {} ({})", lines_.LineNumber(), name);
      if (excluded_.Has(name)) continue;
      StageResult(line, name, ++position);
    }
  }

  void StageResult(std::string_view line, const std::string& name, int position) {
    const std::string_view start = Cut(line, columns_.start);
    const std::string_view lapsRun = Cut(line, columns_.lapsRun);
    const std::string_view lapsLed = Cut(line, columns_.lapsLed);
    CheckWholeNumber("start position", start);
    CheckWholeNumber("number of laps run", lapsRun);
    CheckWholeNumber("number of laps led", lapsLed);

    sql_ =
        "INSERT INTO STNStats (STNRaceID, Finish, Start, DriverName, "
        "LapsRun, LapsLed, Points, Qualifying, ReasonOut, PrizeMoney, Bonus) VALUES (";
    common::AppendNumber(sql_, raceId_);
    sql_ += ',';
    common::AppendNumber(sql_, position);
    sql_.append(",").append(start).append(",");
    common::AppendQuoted(sql_, name);
    sql_.append(",").append(lapsRun).append(",").append(lapsLed).append(",");
    engine::Value prizeMoney;
    if (state_.simType != common::kNascarLegends || state_.useCustomPointSystem) {
      scoring::Score score = scoring::ScoreByPosition(state_, position, 0);
      sql_ += score.points.ToText();
      prizeMoney = std::move(score.prizeMoney);
    } else {
      const std::string_view points = Cut(line, columns_.points);
      CheckWholeNumber("number of points", points);
      sql_ += points;
    }
    sql_ += ',';
    AppendQualifying(Cut(line, columns_.qualifying));
    sql_ += ',';
    AppendQuoted(Cut(line, columns_.reasonOut));
    sql_ += ',';
    common::AppendQuoted(sql_, prizeMoney.ToText(state_.decimalSeparator));
    sql_ += ",0)";
    league_.Execute(sql_);
  }

  void AppendQualifying(std::string_view text) {
    double speed = 0;
    if (qualifying_ == 0 && !text.empty() && !engine::ParseNumber(text, '.', speed))
      throw Fault("qualifying speed", text);
    sql_ += QualifyingSpeedText(text, qualifying_, length_, state_.decimalSeparator);
  }

  void ReadStatistics() {
    enum Statistic { kRaceTime, kAvgSpeed, kVictoryMargin, kCautions, kLeadChanges, kWeather };
    static constexpr std::array<std::string_view, 6> kLabels = {
        "Race time", "Average speed", "Margin of victory", "Caution flags", "# of lead changes", "Weather"};
    static constexpr std::array<std::size_t, 3> kRoom = {kRaceTimeCharacters, kSpeedCharacters,
                                                         kMarginCharacters};
    std::array<std::string, 6> values;
    for (int i = 0; i < kStatisticLines; ++i) {
      const std::string_view line = ReadSection("before the race statistics");
      if (lines_.AtEnd()) break;
      const auto hyphen = line.find('-');
      if (hyphen == std::string_view::npos) continue;
      const auto label = std::find(kLabels.begin(), kLabels.end(), TrimBlanks(line.substr(0, hyphen)));
      if (label == kLabels.end()) continue;
      const auto statistic = static_cast<std::size_t>(label - kLabels.begin());
      std::string value(TrimBlanks(line.substr(hyphen + 1)));
      if (statistic == kWeather) {
        std::replace(value.begin(), value.end(), state_.simType == common::kNascarRacing2 ? '\xA9' : '^',
                     kDegreeSign.front());
      } else if (statistic <= kVictoryMargin) {
        value = FitStatistic(common::LocalizeDecimal(value, state_.decimalSeparator), kRoom[statistic]);
      }
      values[statistic] = common::FromWindows1252(value);
    }

    static constexpr std::array<std::string_view, 6> kAssignments = {"UPDATE STNRace SET RaceTime=",
                                                                     ", AvgSpeed=",
                                                                     ", VictoryMargin=",
                                                                     ", Cautions=",
                                                                     ", LeadChanges=",
                                                                     ", Weather="};
    sql_.clear();
    for (std::size_t i = 0; i < values.size(); ++i) {
      sql_ += kAssignments[i];
      common::AppendQuoted(sql_, values[i]);
    }
    fmt::format_to(std::back_inserter(sql_), " WHERE STNRaceID={}", raceId_);
    failing_ = fmt::format("Race statistics (up to line {})", lines_.LineNumber());
    league_.Execute(sql_);
  }

  void AppendQuoted(std::string_view raw) { common::AppendQuoted(sql_, common::FromWindows1252(raw)); }

  // Only digits go into a statement as they stand.
  void CheckWholeNumber(const char* what, std::string_view text) const {
    const std::string_view digits = text.substr(text.substr(0, 1) == "-" ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
      throw Fault(what, text);
  }

  FileFault Fault(const char* what, std::string_view text) const {
    if (TrimBlanks(text).empty())
      return FileFault(fmt::format("Line {}: the {} is missing.", lines_.LineNumber(), what));
    return FileFault(fmt::format("Line {}: the {} is not a number: \"{}\".", lines_.LineNumber(), what,
                                 common::FromWindows1252(text)));
  }

  engine::Database& league_;
  const std::string_view content_;
  const common::ProcessState& state_;
  const std::string& path_;
  const int qualifying_;
  const scoring::Exclusions excluded_;
  TextLines lines_;
  const Columns& columns_;
  float length_ = 0;  // of the track, in miles
  std::int32_t raceId_ = 0;
  std::string sql_;           // the statement being built; one buffer for all of them
  const char* section_ = "";  // where the file ends when it is cut off
  std::string failing_;       // what an error of the database is about
};

}  // namespace

std::string_view TextLines::ReadLine() {
  if (AtEnd()) throw EndOfText();
  ++line_;
  const auto end = std::min(rest_.find('\n'), rest_.size());
  std::string_view line = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + 1, rest_.size()));
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string_view ReadDataLine(TextLines& lines) {
  while (true) {
    const std::string_view line = lines.ReadLine();
    const std::string_view trimmed = TrimBlanks(line);
    if (lines.AtEnd() || (!trimmed.empty() && trimmed.front() != '*')) return line;
  }
}

std::string QualifyingSpeedText(std::string_view text, int qualifying, float length, char decimal) {
  std::string speed(text);
  if (text.empty()) {
    speed = "0.00";
  } else if (qualifying != 0) {
    const auto colon = text.find(':');
    float seconds = 0;
    if (colon == std::string_view::npos) {
      seconds = static_cast<float>(engine::LeadingNumber(text));
    } else {
      seconds = static_cast<float>(engine::LeadingNumber(text.substr(0, colon))) * 60 +
                static_cast<float>(engine::LeadingNumber(text.substr(colon + 1)));
    }
    speed = engine::Value(common::SecondsPerLap(seconds, length)).ToText();
  }
  return common::LocalizeDecimal(common::QuoteSQL(speed), decimal);
}

std::int32_t ReadStandingsFile(engine::Database& league, common::ProcessState& state,
                               common::UserInterface& ui, const std::string& path, int qualifying) {
  std::string failure;
  try {
    const std::string content = InColumns(ReadFileContent(path));
    engine::UnitOfWork unit(league);
    Reader reader(league, state, path, qualifying, content);
    try {
      reader.Stage();
      unit.Commit();
      return reader.RaceId();
    } catch (const std::exception& error) {
      failure = error.what();
      league.Execute(fmt::format("DELETE * FROM STNRace WHERE STNRaceID={}", reader.RaceId()));
      unit.Commit();
    }
  } catch (const std::exception& error) {
    if (failure.empty()) failure = error.what();
  }
  ui.ShowMessage({failure, "Error Reading '" + path + "'", common::MessageIcon::Exclamation});
  return 0;
}

}  // namespace scorvane::import
