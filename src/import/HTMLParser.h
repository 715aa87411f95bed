// The reader of the standings pages that NASCAR Racing 4 and later export: one page becomes a race and its
// drivers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "common/UserInterface.h"
#include "import/KeyedCollection.h"
#include "import/Tracks.h"

namespace scorvane::import {

struct CDriverInfo {
  std::string DriverName;
  std::int16_t Start = 0;
  std::int16_t Finish = 0;
  std::int16_t Laps = 0;
  std::int16_t Led = 0;
  std::int16_t Points = 0;
  float Qualifying = 0;  // mph
  std::string Status;
};

class CDrivers : public KeyedCollection<CDriverInfo> {
 public:
  // Throws CollectionError when the key is there already.
  CDriverInfo& Add(std::string driverName, std::int16_t start, std::int16_t finish, std::int16_t laps,
                   std::int16_t led, std::int16_t points, float qualifying, std::string status,
                   std::string_view sKey) {
    return AddItem({std::move(driverName), start, finish, laps, led, points, qualifying, std::move(status)},
                   sKey);
  }
};

struct CRaceInfo {
  std::string Track;
  std::int16_t Laps = 0;
  std::string FileName;
  float Length = 0;  // miles
  std::string RaceTime;
  std::string AvgSpeed;
  std::string VictoryMargin;
  std::string Cautions;
  std::int16_t LeadChanges = 0;
  std::string Weather;
};

// Why Execute said no.
enum PageError : std::int32_t { kPageAccepted = 0, kNotExported = 2, kNotRaceFinal = 3 };

// Reads one page.
class CHTMLParser {
 public:
  // `decimal` is the decimal separator of the race time.
  CHTMLParser(common::UserInterface& ui, char decimal) : ui_(ui), decimal_(decimal) {}

  // Whether a page that seems to have been edited is shown in a message.
  void ShowAlerts(bool show) { showAlerts_ = show; }
  bool ShowAlerts() const { return showAlerts_; }
  // The catalogue that knows the tracks' lengths; it must outlive the parser.
  void TrackList(const CTracks* tracks) { tracks_ = tracks; }
  const CTracks* TrackList() const { return tracks_; }
  void InputFile(std::string path) { inputFile_ = std::move(path); }
  const std::string& InputFile() const { return inputFile_; }

  // Reads the page; true when it is an exported race final. Otherwise ErrNum and ErrMsg say why. Throws
  // FileFault when the file cannot be read and when the page lacks what must be known of a race: a track that
  // the catalogue has, numbers that are numbers.
  bool Execute();
  // The same for a page's content.
  bool ExecuteOn(std::string_view content);

  std::int32_t ErrNum() const { return errNum_; }
  const std::string& ErrMsg() const { return errMsg_; }
  const CDrivers& Drivers() const { return drivers_; }
  const CRaceInfo& Race() const { return race_; }

 private:
  enum class Session { None, Practice, Qualifying, WarmUp, Race };

  // A stretch of the page.
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  struct Element {
    std::string tag;  // in capitals
    Range content;
    std::size_t start = 0;  // its "<"
    std::size_t next = 0;   // behind it
  };
  // Where a text stands next. A page is walked forwards, so it is looked for again only when it has been
  // passed.
  struct Sighting {
    std::string_view text;
    std::size_t from = 1;  // nothing is known before this
    std::size_t at = 0;
  };
  static constexpr std::size_t kPositions = 43;
  static constexpr std::size_t kQualifyingCells = 4;
  static constexpr std::size_t kRaceCells = 9;

  static std::string StripTags(std::string_view text);
  static std::string LapsBehindText(std::string_view interval);

  void Normalise(std::string_view content);
  std::string_view Text(Range range) const {
    return std::string_view(text_).substr(range.begin, range.end - range.begin);
  }
  Range Trimmed(Range range) const;
  // False at the end of the elements within the range.
  bool NextElement(std::size_t position, Range within, Element& element);
  std::size_t Find(Sighting& sighting, std::size_t from) const;

  bool ReadElements();
  void ReadHeading(std::string_view heading);
  void ReadTable(Range table);
  template <std::size_t count>
  std::array<std::string, count> ReadCells(Range row);
  void ReadQualifyingRow(const std::array<std::string, kQualifyingCells>& cells);
  void ReadRaceRow(const std::array<std::string, kRaceCells>& cells);
  float QualifyingValue(std::string_view text) const;
  float TrackLength() const;
  void FinishRace();
  void WarnOfEditing();

  common::UserInterface& ui_;
  const char decimal_;
  bool showAlerts_ = true;
  const CTracks* tracks_ = nullptr;
  std::string inputFile_;
  std::int32_t errNum_ = kPageAccepted;
  std::string errMsg_;
  CDrivers drivers_;
  CRaceInfo race_;

  std::string text_;    // the page, every line end and tab a blank
  std::string folded_;  // the same in small letters, for finding tags
  Sighting rowEnd_{"</tr>"};
  Sighting rowStart_{"<tr"};
  Session session_ = Session::None;
  bool officialStandings_ = false;
  bool unexpectedTag_ = false;
  std::array<float, kPositions> qualifying_{};  // speeds by qualifying position
};

}  // namespace scorvane::import
