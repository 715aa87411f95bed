#include "reports/Export.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "engine/Format.h"
#include "reports/Report.h"

namespace scorvane::reports {
namespace {

constexpr int kHiddenColumn = 999;
constexpr const char* kLineEnd = "\r\n";

enum TableColor : std::size_t {
  kHeadText,
  kHeadBackground,
  kRowText,
  kRowBackground,
  kEvenText,
  kEvenBackground,
  kBorderLight,
  kBorderDark,
  kTableBackground,
};
enum ColorSwitch : std::size_t { kHeadColors, kRowColors, kAlternate, kBorderColors, kBackgroundColor };

std::string Hex(std::int32_t color) { return common::ColorToHTML(color); }

std::string Replaced(const std::string& text, std::string_view part, std::string_view with) {
  std::string result;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(part, from)) != std::string::npos; from = at + part.size())
    result.append(text, from, at - from).append(with);
  return result.append(text, from);
}

std::string WithBreaks(const std::string& text) { return Replaced(text, "\r\n", "<BR>"); }

const char* AlignmentName(int alignment) { return alignment == kCentred ? "center" : "left"; }

}  // namespace

bool CExport::HTML(const std::string& path) {
  try {
    if (!BuildTable() || headings_.empty() || cells_.empty()) return false;
    const std::string page = common::ToWindows1252(Page());
    std::ofstream file(std::filesystem::path(std::u8string(path.begin(), path.end())),
                       std::ios::binary | std::ios::trunc);
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
    file.close();
    return !file.fail();
  } catch (const std::exception&) {
    return false;
  }
}

bool CExport::BuildTable() {
  headings_.clear();
  alignments_.clear();
  cells_.clear();
  extraBlock_.clear();
  if (database_ == nullptr) return false;
  if (exportType_ == kReportPage) return BuildReportTable();
  if (exportType_ == kRacePage) return BuildRaceTable();
  return false;
}

bool CExport::BuildReportTable() {
  if (templateDb_ == nullptr) return false;
  std::optional<ReportTable> report = RunReport(*database_, *templateDb_, reportId_);
  if (!report) return false;
  headings_.emplace_back("Pos");
  alignments_.push_back(kCentred);
  for (ReportColumn& column : report->columns) {
    headings_.push_back(column.name);
    alignments_.push_back(column.hidden ? kHiddenColumn : column.alignment);
    if (column.field == "Interval") {
      // The leader's interval is not 0 but "--".
      const int separators = common::CountOccurrences(column.format, ";");
      if (separators == 0) column.format += ";;--";
      if (separators == 1) column.format += ";--";
    }
  }
  cells_.reserve(report->rows.size());
  for (const auto& row : report->rows) {
    std::vector<std::string> cells(1);
    cells.reserve(row.size() + 1);
    for (std::size_t i = 0; i < row.size(); ++i)
      cells.push_back(CellText(report->columns[i], row[i], state_.decimalSeparator));
    cells_.push_back(std::move(cells));
  }
  return true;
}

std::string CExport::RaceStatistics(const engine::Recordset& race) const {
  static constexpr std::pair<const char*, const char*> kStatistics[] = {
      {"RaceTime", "Race time"},      {"AvgSpeed", "Average speed"},       {"VictoryMargin", "Margin of victory"},
      {"Cautions", "Caution flags"},  {"LeadChanges", "Lead changes"},     {"Weather", "Weather"}};
  auto sized = [&](const std::string& text) {
    return fontSize_ >= 1 ? fmt::format("<font size=\"{}\">{}</font>", fontSize_, text) : text;
  };
  std::string block = "<TABLE align=\"center\">\r\n";
  for (const auto& [field, label] : kStatistics) {
    const engine::Value& value = race[field];
    const std::string text = value.IsNull() ? "n/a" : value.ToText(state_.decimalSeparator);
    block += fmt::format("<TR>\r\n\t<TD align=right>{}</TD><TD> - </TD><TD>{}</TD>\r\n</TR>\r\n", sized(label),
                         sized(text));
  }
  return block + "\r\n</TABLE>";
}

bool CExport::BuildRaceTable() {
  const auto race = database_->OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", reportId_));
  if (race.AtEnd()) return false;
  const float length = race["Length"].IsNull() ? 0.0F : race["Length"].ToSingle();
  extraBlock_ = RaceStatistics(race);

  const bool exported = state_.simType == common::kNascarRacing4 || state_.simType == common::kNascarRacing2002 ||
                        state_.simType == common::kNascarRacing2003;
  const bool withSpeed = !exported && state_.leagueType != common::kOnline;
  const bool bySpeed = state_.lapReportingMethod == common::kLapSpeed;
  struct Column {
    const char* heading;
    const char* format;
    bool centred;
  };
  std::vector<Column> columns = {{"Finish", "", true}, {"Start", "##", true},       {"Driver", "", false},
                                 {"Laps", "####;;--", true}, {"Led", "", true}, {"Points", "", true},
                                 {"Bonus", "", true}};
  if (withSpeed) columns.push_back({"Avg Speed", "##0.000", true});
  columns.push_back({"Qualify", bySpeed ? "##0.000 mph;;--" : "##0.000;;--", true});
  columns.push_back({"Reason Out", "", false});
  for (const Column& column : columns) {
    headings_.emplace_back(column.heading);
    alignments_.push_back(column.centred ? kCentred : 0);
  }

  auto rows = database_->OpenRecordset(
      fmt::format("SELECT Stats.Start, Driver.Name, Stats.LapsRun, Stats.LapsLed, Stats.Points, Stats.Bonus, {}"
                  "Stats.Qualifying, Stats.Status FROM Stats INNER JOIN Driver ON Driver.DriverID=Stats.DriverID "
                  "WHERE RaceID={} ORDER BY Finish",
                  withSpeed ? "Stats.AvgSpeed, " : "", reportId_));
  const std::size_t qualifying = rows.FieldIndex("Qualifying");
  for (; !rows.AtEnd(); rows.MoveNext()) {
    std::vector<std::string> cells(1);
    for (std::size_t f = 0; f < rows.FieldCount(); ++f) {
      const engine::Value& value = rows.At(f);
      if (f != qualifying || (bySpeed && !value.IsNull())) {
        cells.push_back(engine::FormatValue(value, columns[f + 1].format, state_.decimalSeparator));
      } else if (value.IsNull()) {
        cells.emplace_back("--");
      } else {
        cells.push_back(common::FormatLapTime(common::SecondsPerLap(value.ToSingle(), length), state_.decimalSeparator));
      }
    }
    cells_.push_back(std::move(cells));
  }
  return true;
}

std::string CExport::SizeAttribute() const { return fontSize_ >= 1 ? fmt::format(" size=\"{}\"", fontSize_) : ""; }

std::string CExport::HeadingRow() const {
  const std::string size = SizeAttribute();
  std::string row;
  for (std::size_t i = 0; i < headings_.size(); ++i) {
    if (alignments_[i] == kHiddenColumn) continue;
    if (useTableColors_[kHeadColors]) {
      row += fmt::format("\t<TH align=\"{}\" BGCOLOR=\"#{}\"><FONT color=\"#{}\"{}>{}</FONT></TH>\r\n",
                         AlignmentName(alignments_[i]), Hex(tableColors_[kHeadBackground]),
                         Hex(tableColors_[kHeadText]), size, headings_[i]);
    } else {
      row += fmt::format("\t<TH align=\"{}\"><FONT {}>{}</FONT></TH>\r\n", AlignmentName(alignments_[i]), size,
                         headings_[i]);
    }
  }
  return row;
}

std::string CExport::DataRow(std::size_t row) const {
  const bool colored = useTableColors_[kRowColors];
  const bool alternate = useTableColors_[kAlternate];
  const bool even = alternate && row % 2 == 0;
  const std::string text = Hex(tableColors_[even ? kEvenText : kRowText]);
  const std::string background = Hex(tableColors_[even ? kEvenBackground : kRowBackground]);
  const std::string size = SizeAttribute();
  std::string lines =
      colored ? fmt::format("<TR style = \"color : #{}\">\r\n\t<TH align=\"center\" bgcolor=\"#{}\"><FONT {}>{}</FONT></TH>\r\n",
                            text, background, size, row)
              : fmt::format("<TR>\r\n\t<TH align=\"center\"><FONT {}>{}</FONT></TH>\r\n", size, row);
  const std::vector<std::string>& cells = cells_[row - 1];
  for (std::size_t c = 1; c < cells.size(); ++c) {
    if (alignments_[c] == kHiddenColumn) continue;
    if (colored) {
      lines += fmt::format("\t<TD bgcolor=\"#{}\" {}=\"{}\"><FONT color=\"#{}\"{}>{}</FONT></TD>\r\n", background,
                           alternate ? "align" : "ALIGN", AlignmentName(alignments_[c]), text, size, cells[c]);
    } else {
      lines += fmt::format("\t<TD align=\"{}\"><FONT {}>{}</FONT></TD>\r\n", AlignmentName(alignments_[c]), size,
                           cells[c]);
    }
  }
  return lines + "</TR>\r\n";
}

std::string CExport::Page() const {
  std::string page;
  auto write = [&page](std::string_view text) { page.append(text).append(kLineEnd); };
  const std::string background = useBGImage_ ? " background=\"" + bgImage_ + "\"" : "";
  std::string extras;
  if (useTableColors_[kBorderColors]) {
    extras += fmt::format(" bordercolordark=\"#{}\" bordercolorlight=\"#{}\"", Hex(tableColors_[kBorderDark]),
                          Hex(tableColors_[kBorderLight]));
  }
  if (useTableColors_[kBackgroundColor]) extras += fmt::format(" bgcolor=\"#{}\"", Hex(tableColors_[kTableBackground]));

  write("<HTML>\r\n<HEAD>");
  write("<TITLE>" + Replaced(title_, "\r\n", " - ") + "</TITLE>");
  write(fmt::format("</HEAD>\r\n<BODY{} bgcolor=\"#{}\" text=\"#{}\" link=\"#{}\" vlink=\"#{}\" alink=\"#{}\">\r\n"
                    "<FONT face=\"{}\"{}>",
                    background, Hex(bgColor_), Hex(textColor_), Hex(linkColor_), Hex(vLinkColor_), Hex(aLinkColor_),
                    font_, SizeAttribute()));
  write(fmt::format("<HR>\r\n<H1 align=\"center\" style=\"color : #{}\">{} </H1>\r\n<HR>", Hex(titleColor_),
                    WithBreaks(title_)));
  write(fmt::format("<H2 align=\"center\" style=\"color : #{}\">{}</H2>\r\n"
                    "<H3 align=\"center\" style=\"color : #{}\">{}</H3>\r\n"
                    "<TABLE align=\"center\" border={} cellpadding={} cellspacing={}{}>\r\n<TR>",
                    Hex(reportNameColor_), WithBreaks(reportName_), Hex(captionColor_), WithBreaks(title2_), layout_[0],
                    layout_[1], layout_[2], extras));
  page += HeadingRow();
  write("</TR>");
  for (std::size_t row = 1; row <= cells_.size(); ++row) page += DataRow(row);
  write("</TABLE>");
  if (exportType_ == kRacePage && !extraBlock_.empty()) write("<p></p>\r\n" + extraBlock_);
  write("<p></p>\r\n<HR>");
  write(footer_);
  write("</FONT>");
  write("</BODY>");
  write("</HTML>");
  return page;
}

}  // namespace scorvane::reports
