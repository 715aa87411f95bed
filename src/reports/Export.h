// The writer of HTML pages: a report of the league, or the results of one race.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "engine/Database.h"

namespace scorvane::reports {

enum ExportKind : std::int32_t { kReportPage = 0, kRacePage = 1 };

using TableColorArray = std::array<std::int32_t, 10>;
using TableColorSwitches = std::array<bool, 5>;
using LayoutArray = std::array<std::int16_t, 3>;

// Filled by its properties, used once. Colours have red in the low byte.
class CExport {
 public:
  // The state tells how the league's races are reported; it must outlive the writer.
  explicit CExport(const common::ProcessState& state) : state_(state) {}

  // Writes the page as Windows-1252 text, in the place of an older file. False, and nothing else, when the table
  // cannot be built or holds no rows - an older file is then as it was - or when the file cannot be written.
  bool HTML(const std::string& path);

  void Database(engine::Database* database) { database_ = database; }
  engine::Database* Database() const { return database_; }
  void LGDatabase(engine::Database* database) { templateDb_ = database; }
  engine::Database* LGDatabase() const { return templateDb_; }
  void Title(std::string text) { title_ = std::move(text); }
  const std::string& Title() const { return title_; }
  void Title2(std::string text) { title2_ = std::move(text); }
  const std::string& Title2() const { return title2_; }
  void ReportName(std::string text) { reportName_ = std::move(text); }
  const std::string& ReportName() const { return reportName_; }
  void Footer(std::string text) { footer_ = std::move(text); }
  const std::string& Footer() const { return footer_; }
  void ReportID(std::int32_t id) { reportId_ = id; }
  std::int32_t ReportID() const { return reportId_; }
  void UseBGImage(bool use) { useBGImage_ = use; }
  bool UseBGImage() const { return useBGImage_; }
  void BGImage(std::string path) { bgImage_ = std::move(path); }
  const std::string& BGImage() const { return bgImage_; }
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

  void ExportType(std::int32_t type) { exportType_ = type; }
  void TableColors(const TableColorArray& colors) { tableColors_ = colors; }
  void UseTableColors(const TableColorSwitches& switches) { useTableColors_ = switches; }
  void Layout(const LayoutArray& layout) { layout_ = layout; }
  void HTMLPageFont(std::string font) { font_ = std::move(font); }
  void HTMLPageFontSize(std::int16_t size) { fontSize_ = size; }

 private:
  bool BuildTable();
  bool BuildRaceTable();
  bool BuildReportTable();
  std::string Page() const;
  std::string HeadingRow() const;
  std::string DataRow(std::size_t row) const;
  std::string RaceStatistics(const engine::Recordset& race) const;
  std::string SizeAttribute() const;

  const common::ProcessState& state_;
  engine::Database* database_ = nullptr;
  engine::Database* templateDb_ = nullptr;
  std::string title_;
  std::string title2_;
  std::string reportName_;
  std::string footer_;
  std::int32_t reportId_ = 0;
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
  std::int32_t exportType_ = kReportPage;
  TableColorArray tableColors_{};
  TableColorSwitches useTableColors_{};
  LayoutArray layout_{};
  std::string font_;
  std::int16_t fontSize_ = 0;

  std::vector<std::string> headings_;            // 0 is the position's
  std::vector<int> alignments_;                  // kHiddenColumn is not written at all
  std::vector<std::vector<std::string>> cells_;  // 0 of each row stays empty: the row's number takes its place
  std::string extraBlock_;                       // behind the table
};

}  // namespace scorvane::reports
