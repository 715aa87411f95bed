// The page writer: a report or the results of a race as one HTML file. Every page that the program writes is
// its work.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/Report.h"

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

// Writes a page's bytes in the place of a file that is there, in one step; never over a file that is no text,
// as a league. False when that fails: the old file is then as it was.
bool WritePageFile(const std::string& path, std::string_view bytes);

// Used for one page: its properties are set, then HTML writes it. The league's sim type, league type, lap
// reporting method and the user's decimal separator come from `state`, which must outlive the writer.
class CExport {
 public:
  explicit CExport(const common::ProcessState& state) : state_(state) {}

  // Writes the page in Windows-1252, in the place of a file that is there. False when anything fails; what
  // was there is then as it was.
  bool HTML(const std::string& path);
  // After HTML: whether there was anything to show.
  bool HadRows() const { return hadRows_; }

  void Database(engine::Database* league) { database_ = league; }
  engine::Database* Database() const { return database_; }
  // The template; only reports need it.
  void LGDatabase(engine::Database* templateDb) { templateDb_ = templateDb; }
  engine::Database* LGDatabase() const { return templateDb_; }

  // Texts go into the page as they are, markup too. A CR LF pair breaks the line.
  void Title(std::string text) { title_ = std::move(text); }
  const std::string& Title() const { return title_; }
  void Title2(std::string text) { title2_ = std::move(text); }  // the table's caption
  const std::string& Title2() const { return title2_; }
  void ReportName(std::string text) { reportName_ = std::move(text); }
  const std::string& ReportName() const { return reportName_; }
  void Footer(std::string text) { footer_ = std::move(text); }
  const std::string& Footer() const { return footer_; }

  // The report, or the race when ExportType is 1.
  void ReportID(std::int32_t id) { reportId_ = id; }
  std::int32_t ReportID() const { return reportId_; }

  // The report's table, which must outlive the writer; without it the report is run.
  void Table(const ReportTable* table) { table_ = table; }

  // All of the look at once, or each property of it.
  void Look(const PageLook& look) {
    look_ = look;
    complete_ = {true, true, true};
  }

  void UseBGImage(bool use) { look_.useBGImage = use; }
  bool UseBGImage() const { return look_.useBGImage; }
  void BGImage(std::string address) { look_.bgImage = std::move(address); }
  const std::string& BGImage() const { return look_.bgImage; }

  // Colours have red in the low byte; what is no colour is written as white.
  void BGColor(std::int32_t color) { look_.colors[0] = color; }
  std::int32_t BGColor() const { return look_.colors[0]; }
  void TextColor(std::int32_t color) { look_.colors[1] = color; }
  std::int32_t TextColor() const { return look_.colors[1]; }
  void LinkColor(std::int32_t color) { look_.colors[2] = color; }
  std::int32_t LinkColor() const { return look_.colors[2]; }
  void VLinkColor(std::int32_t color) { look_.colors[3] = color; }
  std::int32_t VLinkColor() const { return look_.colors[3]; }
  void ALinkColor(std::int32_t color) { look_.colors[4] = color; }
  std::int32_t ALinkColor() const { return look_.colors[4]; }
  void TitleColor(std::int32_t color) { look_.colors[5] = color; }
  std::int32_t TitleColor() const { return look_.colors[5]; }
  void ReportNameColor(std::int32_t color) { look_.colors[6] = color; }
  std::int32_t ReportNameColor() const { return look_.colors[6]; }
  void CaptionColor(std::int32_t color) { look_.colors[7] = color; }
  std::int32_t CaptionColor() const { return look_.colors[7]; }

  void ExportType(std::int32_t type) { exportType_ = type; }  // 0 a report, 1 the results of a race
  // Ten colours: text and background of the heading row, of data rows, of every second data row; light and
  // dark border; table background; one that is not used.
  void TableColors(const std::vector<std::int32_t>& colors) {
    complete_[0] = Take(colors, look_.colors.begin() + kPageColors, look_.colors.end());
  }
  // Five switches: heading row, data rows, every second data row (only with the data rows' on), border,
  // background.
  void UseTableColors(const std::vector<bool>& switches) {
    complete_[1] = Take(switches, look_.switches.begin(), look_.switches.end());
  }
  // Three widths in pixels: border, cell padding, cell spacing.
  void Layout(const std::vector<std::int16_t>& widths) {
    complete_[2] = Take(widths, look_.layout.begin(), look_.layout.end());
  }
  void HTMLPageFont(std::string face) { look_.font = std::move(face); }
  void HTMLPageFontSize(std::int16_t size) { look_.fontSize = size; }  // 1 to 7; 0 leaves it to the browser

 private:
  struct Column {
    std::string heading;
    int alignment = 0;
  };

  class Writer;

  static constexpr std::size_t kPageColors = 8;  // those of the table follow

  // False when there are too few.
  template <typename Given, typename Place>
  static bool Take(const Given& given, Place first, Place last) {
    const auto count = static_cast<std::size_t>(last - first);
    std::copy_n(given.begin(), std::min(count, given.size()), first);
    return given.size() >= count;
  }

  // Each yields the page row by row; false when there is no table.
  bool WriteTable(Writer& writer);
  bool WriteReport(Writer& writer);
  bool WriteRace(Writer& writer);
  std::string RaceStatistics(const engine::Recordset& race) const;
  std::string RacePenalties() const;
  std::string Head(const std::vector<Column>& columns) const;
  std::string Tail() const;
  void AppendRow(std::string& page, const std::vector<Column>& columns, std::size_t row,
                 const std::vector<std::string>& cells) const;
  std::string SizeAttribute() const;

  const common::ProcessState& state_;
  engine::Database* database_ = nullptr;
  engine::Database* templateDb_ = nullptr;
  std::string title_;
  std::string title2_;
  std::string reportName_;
  std::string footer_;
  std::int32_t reportId_ = 0;
  const ReportTable* table_ = nullptr;
  std::int32_t exportType_ = 0;
  PageLook look_;
  std::array<bool, 3> complete_{};  // table colours, their switches and the layout have been given
  bool hadRows_ = false;
  std::string extraBlock_;    // behind a race's table
  std::string penaltyBlock_;  // and behind its statistics
};

}  // namespace scorvane::reports
