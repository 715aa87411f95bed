// The page writer: a report or the results of a race as one HTML file. Every page that the program writes is
// its work.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/Report.h"

namespace scorvane::reports {

// Writes a page's bytes in the place of a file that is there, in one step; never over a file that is no text, as
// a league. False when that fails: the old file is then as it was.
bool WritePageFile(const std::string& path, std::string_view bytes);

// Used for one page: its properties are set, then HTML writes it. The league's sim type, league type, lap
// reporting method and the user's decimal separator come from `state`, which must outlive the writer.
class CExport {
 public:
  explicit CExport(const common::ProcessState& state) : state_(state) {}

  // Writes the page in Windows-1252, in the place of a file that is there. False when anything fails; what was
  // there is then as it was.
  bool HTML(const std::string& path);

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

  void UseBGImage(bool use) { useBGImage_ = use; }
  bool UseBGImage() const { return useBGImage_; }
  void BGImage(std::string address) { bgImage_ = std::move(address); }
  const std::string& BGImage() const { return bgImage_; }

  // Colours have red in the low byte; what is no colour is written as white.
  void BGColor(std::int32_t color) { bgColor_ = color; }
  std::int32_t BGColor() const { return bgColor_; }
  void TextColor(std::int32_t color) { textColor_ = color; }
  std::int32_t TextColor() const { return textColor_; }
  void LinkColor(std::int32_t color) { linkColor_ = color; }
  std::int32_t LinkColor() const { return linkColor_; }
  void VLinkColor(std::int32_t color) { vLinkColor_ = color; }
  std::int32_t VLinkColor() const { return vLinkColor_; }
  void ALinkColor(std::int32_t color) { aLinkColor_ = color; }
  std::int32_t ALinkColor() const { return aLinkColor_; }
  void TitleColor(std::int32_t color) { titleColor_ = color; }
  std::int32_t TitleColor() const { return titleColor_; }
  void ReportNameColor(std::int32_t color) { reportNameColor_ = color; }
  std::int32_t ReportNameColor() const { return reportNameColor_; }
  void CaptionColor(std::int32_t color) { captionColor_ = color; }
  std::int32_t CaptionColor() const { return captionColor_; }

  void ExportType(std::int32_t type) { exportType_ = type; }  // 0 a report, 1 the results of a race
  // Ten colours: text and background of the heading row, of data rows, of every second data row; light and
  // dark border; table background; one that is not used.
  void TableColors(std::vector<std::int32_t> colors) { tableColors_ = std::move(colors); }
  // Five switches: heading row, data rows, every second data row (only with the data rows' on), border,
  // background.
  void UseTableColors(std::vector<bool> switches) { useTableColors_ = std::move(switches); }
  // Three widths in pixels: border, cell padding, cell spacing.
  void Layout(std::vector<std::int16_t> widths) { layout_ = std::move(widths); }
  void HTMLPageFont(std::string face) { font_ = std::move(face); }
  void HTMLPageFontSize(std::int16_t size) { fontSize_ = size; }  // 1 to 7; 0 leaves it to the browser

 private:
  struct Column {
    std::string heading;
    int alignment = 0;
  };

  bool BuildTable();
  bool BuildRaceTable();
  bool BuildReportTable();
  std::string RaceStatistics(const engine::Recordset& race) const;
  std::string Page() const;
  void AppendRow(std::string& page, std::size_t row) const;
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
  bool useBGImage_ = false;
  std::string bgImage_;
  std::int32_t bgColor_ = 0;
  std::int32_t textColor_ = 0;
  std::int32_t linkColor_ = 0;
  std::int32_t vLinkColor_ = 0;
  std::int32_t aLinkColor_ = 0;
  std::int32_t titleColor_ = 0;
  std::int32_t reportNameColor_ = 0;
  std::int32_t captionColor_ = 0;
  std::int32_t exportType_ = 0;
  std::vector<std::int32_t> tableColors_;
  std::vector<bool> useTableColors_;
  std::vector<std::int16_t> layout_;
  std::string font_;
  std::int16_t fontSize_ = 0;

  // The table, once it is built. Column 0 is the position, which has no cells of its own.
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> cells_;
  std::string extraBlock_;
};

}  // namespace scorvane::reports
