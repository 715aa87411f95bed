#include "import/HTMLParser.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/Names.h"
#include "engine/Value.h"
#include "import/FileContent.h"

namespace scorvane::import {
namespace {

using common::TrimBlanks;

// No tag has a longer name; what looks like one is not closed anywhere.
constexpr std::size_t kLongestTag = 256;
// A race of a year has no time, but a winner whose speed is hardly one.
constexpr double kLongestRace = 365.0 * 24 * 3600;
constexpr std::size_t kNowhere = std::string::npos;

constexpr const char* kNotExportedText =
    "This file does not seem to have been exported by\r\nNASCAR Racing or else it has been modified.";
constexpr const char* kNoTrackText =
    "The page does not name a track. It seems to be cut off, or to be none that the simulation exported.";
constexpr const char* kNotRaceFinalText =
    "This file does not seem to be a race final.  Scorvane\r\n"
    "is not designed to calculate the points based\r\n"
    "on anything less than the final races results.";

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

// The start of a text, for a message.
std::string_view Excerpt(std::string_view text) {
  std::size_t size = std::min<std::size_t>(text.size(), 60);
  while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) --size;
  return text.substr(0, size);
}

// The number that a text starts with, as a whole one.
std::int16_t Whole(const char* what, std::string_view text) {
  const double number = engine::RoundHalfEven(engine::LeadingNumber(text));
  if (!(std::abs(number) <= std::numeric_limits<std::int16_t>::max()))
    throw FileFault(fmt::format("The {} is out of bounds: \"{}\".", what, Excerpt(text)));
  return static_cast<std::int16_t>(number);
}

// A heading's value up to the bracket that explains it.
std::string_view BeforeBracket(std::string_view label, std::string_view value) {
  const auto bracket = value.find('(');
  if (bracket == std::string_view::npos)
    throw FileFault(fmt::format("The heading {} has no \"(\" behind its number: \"{}\".", label,
                                Excerpt(TrimBlanks(value))));
  return TrimBlanks(value.substr(0, bracket));
}

}  // namespace

bool CHTMLParser::Execute() {
  const std::string content = ReadFileContent(inputFile_);
  return ExecuteOn(content);
}

bool CHTMLParser::ExecuteOn(std::string_view content) {
  if (content.find('\0') != std::string_view::npos) throw FileFault("This is no text file.");
  race_.FileName = common::GetFileTitle(inputFile_);
  Normalise(content);
  if (!ReadElements()) {
    errNum_ = kNotExported;
    errMsg_ = kNotExportedText;
    return false;
  }
  FinishRace();
  if (!officialStandings_) {
    errNum_ = kNotRaceFinal;
    errMsg_ = kNotRaceFinalText;
    return false;
  }
  if (unexpectedTag_ && showAlerts_) WarnOfEditing();
  return true;
}

void CHTMLParser::Normalise(std::string_view content) {
  std::string flat;
  flat.reserve(content.size());
  for (std::size_t i = 0; i < content.size(); ++i) {
    const char c = content[i];
    if (c == '\r' && i + 1 < content.size() && content[i + 1] == '\n') ++i;
    flat += c == '\r' || c == '\n' || c == '\t' ? ' ' : c;
  }
  text_ = common::FromPageBytes(TrimBlanks(flat));
  folded_ = text_;
  for (char& c : folded_) c = engine::LowerAscii(c);
}

CHTMLParser::Range CHTMLParser::Trimmed(Range range) const {
  while (range.begin < range.end && text_[range.begin] == ' ') ++range.begin;
  while (range.begin < range.end && text_[range.end - 1] == ' ') --range.end;
  return range;
}

std::size_t CHTMLParser::Find(Sighting& sighting, std::size_t from) const {
  if (from < sighting.from || (sighting.at != kNowhere && sighting.at < from)) {
    sighting.from = from;
    sighting.at = folded_.find(sighting.text, from);
  }
  return sighting.at;
}

bool CHTMLParser::NextElement(std::size_t position, Range within, Element& element) {
  const std::string_view text = std::string_view(text_).substr(0, within.end);
  const std::size_t lt = text.find('<', position);
  if (lt == kNowhere) return false;
  const std::size_t gt = text.find('>', lt);
  if (gt == kNowhere) return false;
  const std::size_t nameEnd = text.find_first_of(" >", lt + 1);
  element.tag = UpperCase(text.substr(lt + 1, nameEnd - lt - 1));
  element.start = lt;
  element.content = {gt + 1, gt + 1};
  if (element.tag == "BR" || element.tag == "P" || element.tag == "/P" || element.tag.starts_with('!')) {
    element.next = gt + 1;
    return true;
  }
  // An end tag right behind the ">" does not close the element: both searches start a character further on.
  const std::size_t from = gt + 2;
  const auto inside = [&](std::size_t at, std::size_t size) {
    return at != kNowhere && at + size <= within.end;
  };
  if (element.tag == "TR") {
    // A row without an end tag ends where the next one starts.
    const std::size_t rowEnd = Find(rowEnd_, from);
    const std::size_t rowStart = Find(rowStart_, from);
    const bool closed = inside(rowEnd, rowEnd_.text.size());
    const bool followed = inside(rowStart, rowStart_.text.size());
    if (closed && (!followed || rowEnd < rowStart)) {
      element.content.end = rowEnd;
      element.next = rowEnd + rowEnd_.text.size();
    } else {
      element.content.end = element.next = followed ? rowStart : within.end;
    }
  } else {
    const std::string endTag =
        fmt::format("</{}>", std::string_view(folded_).substr(lt + 1, nameEnd - lt - 1));
    const std::size_t found = endTag.size() > kLongestTag || from > within.end
                                  ? kNowhere
                                  : std::string_view(folded_).substr(0, within.end).find(endTag, from);
    if (found == kNowhere) {
      element.next = within.end;
    } else {
      element.content.end = found;
      element.next = found + endTag.size();
    }
  }
  element.content = Trimmed(element.content);
  return true;
}

std::string CHTMLParser::StripTags(std::string_view text) {
  std::string plain;
  while (true) {
    const auto open = text.find('<');
    const auto close = open == std::string_view::npos ? open : text.find('>', open);
    if (close == std::string_view::npos) return plain.append(text);
    plain.append(text.substr(0, open));
    text.remove_prefix(close + 1);
  }
}

// False when the page says itself that it is another one.
bool CHTMLParser::ReadElements() {
  Range range{0, text_.size()};
  Element element;
  for (std::size_t position = 0; position < range.end && NextElement(position, range, element);) {
    position = element.next;
    const std::string& tag = element.tag;
    if (tag == "HTML" || tag == "BODY") {
      range = element.content;
      position = range.begin;
    } else if (tag == "H1") {
      if (Text(element.content).find("EXPORTED STANDINGS") == std::string_view::npos) return false;
    } else if (tag == "H3") {
      ReadHeading(Text(element.content));
    } else if (tag == "TABLE") {
      ReadTable(element.content);
      session_ = Session::None;
    } else if (tag != "HEAD" && tag != "BR" && !tag.starts_with('!')) {
      unexpectedTag_ = true;
    }
  }
  return true;
}

void CHTMLParser::ReadHeading(std::string_view heading) {
  const auto colon = heading.find(':');
  const std::string label = UpperCase(heading.substr(0, colon));
  const auto value = [&] {
    if (colon == std::string_view::npos) throw FileFault(fmt::format("The heading {} has no value.", label));
    const std::string_view rest = heading.substr(colon + 1);
    return rest.substr(0, rest.find(':'));
  };
  if (label == "TRACK") {
    const std::string name = common::ProperCase(common::LowerCase(WithoutTrademarks(value())));
    // A blank at the start is no letter, so the capitals are right before it goes.
    race_.Track = TrimBlanks(name);
  } else if (label == "SESSION") {
    const std::string name = UpperCase(TrimBlanks(value()));
    if (name == "PRACTICE") session_ = Session::Practice;
    if (name == "QUALIFYING") session_ = Session::Qualifying;
    if (name == "WARMUP" || name == "HAPPY HOUR") session_ = Session::WarmUp;
    if (name == "RACE") session_ = Session::Race;
  } else if (label == "WEATHER") {
    race_.Weather = TrimBlanks(value());
  } else if (label == "CAUTION FLAGS") {
    race_.Cautions = BeforeBracket(label, value());
  } else if (label == "LEAD CHANGES") {
    const std::string_view changes = BeforeBracket(label, value());
    double number = 0;
    if (!engine::ParseNumber(changes, '.', number))
      throw FileFault(fmt::format("The number of lead changes is no number: \"{}\".", Excerpt(changes)));
    race_.LeadChanges = Whole("number of lead changes", changes);
  } else if (label == "OFFICIAL STANDINGS") {
    officialStandings_ = true;
  }
}

void CHTMLParser::ReadTable(Range table) {
  if (session_ != Session::Qualifying && session_ != Session::Race) return;
  Element row;
  std::size_t position = table.begin;
  if (NextElement(position, table, row) && row.tag == "TBODY") {
    table = row.content;
    position = table.begin;
  }
  while (position < table.end && NextElement(position, table, row)) {
    position = row.next;
    if (session_ == Session::Qualifying) {
      ReadQualifyingRow(ReadCells<kQualifyingCells>(row.content));
    } else {
      ReadRaceRow(ReadCells<kRaceCells>(row.content));
    }
  }
}

// The row's first cells without their tags; cells that the row lacks are empty, cells that it has beyond them
// do not count.
template <std::size_t count>
std::array<std::string, count> CHTMLParser::ReadCells(Range row) {
  std::array<std::string, count> cells;
  Element cell;
  std::size_t position = row.begin;
  for (std::size_t i = 0; i < count && position < row.end && NextElement(position, row, cell); ++i) {
    const std::string plain = StripTags(Text(cell.content));
    cells[i] = TrimBlanks(plain);
    position = cell.next;
  }
  return cells;
}

void CHTMLParser::ReadQualifyingRow(const std::array<std::string, kQualifyingCells>& cells) {
  if (cells[2] == "DRIVER") return;
  const int position = Whole("qualifying position", cells[0]);
  const float speed = QualifyingValue(cells[3]);
  if (position >= 1 && position <= static_cast<int>(kPositions))
    qualifying_[static_cast<std::size_t>(position - 1)] = speed;
}

void CHTMLParser::ReadRaceRow(const std::array<std::string, kRaceCells>& cells) {
  const auto& [finish, start, number, driver, interval, laps, led, points, status] = cells;
  if (driver == "DRIVER") return;
  if (!driver.empty()) {
    const std::int16_t started = Whole("starting position", start);
    const bool known = started >= 1 && started <= static_cast<int>(kPositions);
    try {
      drivers_.Add(driver, started, Whole("finishing position", finish), Whole("number of laps", laps),
                   Whole("number of laps led", led), Whole("number of points", points),
                   known ? qualifying_[static_cast<std::size_t>(started - 1)] : 0, status,
                   fmt::format("{}\t{}", number, driver));
    } catch (const CollectionError&) {
      throw FileFault(
          fmt::format("The page lists {} with the number \"{}\" twice.", Excerpt(driver), Excerpt(number)));
    }
  }
  const double position = engine::LeadingNumber(finish);
  if (position == 1) {
    race_.AvgSpeed = interval + "mph";
    race_.Laps = Whole("number of laps", laps);
  } else if (position == 2) {
    race_.VictoryMargin = LapsBehindText(interval);
  }
}

std::string CHTMLParser::LapsBehindText(std::string_view interval) {
  std::string text;
  bool laps = false;
  for (const char c : interval) {
    if (c == 'L') {
      text += " lap(s)";
      laps = true;
    } else if (c != '-') {
      text += c;
    }
  }
  return laps ? text : text + " sec";
}

float CHTMLParser::QualifyingValue(std::string_view text) const {
  if (text == "--") return 0;
  if (text.find("mph") != std::string_view::npos) return static_cast<float>(engine::LeadingNumber(text));
  const auto colon = text.find(':');
  double seconds = engine::LeadingNumber(text.substr(colon == std::string_view::npos ? 0 : colon + 1));
  if (colon != std::string_view::npos) seconds += engine::LeadingNumber(text.substr(0, colon)) * 60;
  return common::SecondsPerLap(static_cast<float>(seconds), TrackLength());
}

float CHTMLParser::TrackLength() const {
  if (race_.Track.empty()) throw FileFault(kNoTrackText);
  if (tracks_ == nullptr || !tracks_->Contains(race_.Track)) {
    throw FileFault(fmt::format(
        "The length of the track \"{}\" is not known: the simulation's folder has no such track.\r\n"
        "Its folder with a \"track.ini\" (a section [track] with track_name and track_length) belongs "
        "into the folder \"tracks\" of the simulation; or another folder of the simulation is to be "
        "named (in the Options, or by --sim-folder).",
        Excerpt(race_.Track)));
  }
  return tracks_->Item(race_.Track).Length;
}

void CHTMLParser::FinishRace() {
  race_.Length = TrackLength();
  const float distance = static_cast<float>(race_.Laps) * race_.Length;
  const double speed = engine::LeadingNumber(race_.AvgSpeed);
  const double seconds = speed == 0 ? 0 : static_cast<double>(distance) / speed * 3600;
  const bool possible = seconds > 0 && seconds <= kLongestRace;
  race_.RaceTime = common::FormatLapTime(possible ? static_cast<float>(seconds) : 0, decimal_);
}

void CHTMLParser::WarnOfEditing() {
  ui_.ShowMessage(
      {"Possible evidence of editing has been discovered in the following file:\r\n\r\n" + inputFile_ +
           "\r\n\r\nScorvane has found HTML tags in this file not used by NASCAR Racing 4\r\n"
           "as of the v1.3.0.6 patch.  This may be an indication that the file has been edited by\r\n"
           "an HTML editor such as Microsoft FrontPage.  It's also possible that this file was\r\n"
           "created by a later patch of NASCAR Racing 4 that uses the detected tags.",
       "Warning", common::MessageIcon::Exclamation});
}

}  // namespace scorvane::import
