#include "reports/Export.h"

#include <fmt/format.h>

#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "engine/Format.h"
#include "platform/Platform.h"
#include "reports/Report.h"

namespace scorvane::reports {
namespace {

enum ExportKind : std::int32_t { kReport = 0, kRaceResults = 1 };

constexpr int kLeft = 0;
constexpr int kHiddenColumn = 999;  // an alignment

constexpr std::size_t kTableColors = 10;
enum TableColor : std::size_t {
  kHeadingText,
  kHeadingBackground,
  kRowText,
  kRowBackground,
  kEvenRowText,
  kEvenRowBackground,
  kBorderLight,
  kBorderDark,
  kTableBackground,
};
constexpr std::size_t kTableSwitches = 5;
enum TableSwitch : std::size_t { kColorHeading, kColorRows, kAlternateRows, kColorBorder, kColorTable };
constexpr std::size_t kWidths = 3;

std::string ReplaceAll(std::string text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::string WithBreaks(const std::string& text) {
  return ReplaceAll(text, "\r\n", "<BR>");
}

std::string_view AlignmentName(int alignment) {
  return alignment == kCentred ? "center" : "left";
}

template <typename... Args>
void Append(std::string& text, fmt::format_string<Args...> format, Args&&... args) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
}

template <typename... Args>
void AppendLine(std::string& page, fmt::format_string<Args...> format, Args&&... args) {
  Append(page, format, std::forward<Args>(args)...);
  page += "\r\n";
}

// The leader's interval, and that of everyone level with him, is shown as "--", whatever the column's format.
std::string IntervalFormat(const std::string& format) {
  switch (common::CountOccurrences(format, ";")) {
    case 0:
      return format + ";;--";
    case 1:
      return format + ";--";
    default:
      return format;
  }
}

// Whether a file begins as no text does: a league or the template, whose name was given for the page's.
bool IsNoText(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(common::SystemPath(path), error)) return false;
  std::array<char, 16> start{};
  std::ifstream file(common::SystemPath(path), std::ios::binary);
  file.read(start.data(), start.size());
  return std::string_view(start.data(), static_cast<std::size_t>(file.gcount())).find('\0') !=
         std::string_view::npos;
}

}  // namespace

bool WritePageFile(const std::string& path, std::string_view bytes) {
  if (IsNoText(path)) return false;
  std::error_code error;
  const auto status = std::filesystem::status(common::SystemPath(path), error);
  // What is no file, as a printer's port or a pipe, takes the page as it comes.
  const bool inPlace = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  const std::string target = inPlace ? path : platform::TemporaryBeside(path);
  try {
    std::ofstream file(common::SystemPath(target), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (inPlace) return file.good();
    if (file.good()) {
      platform::RemoveTemporariesBeside(path);
      platform::ReplaceFile(target, path);
      return true;
    }
  } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch): as below
  }
  std::filesystem::remove(common::SystemPath(target), error);
  return false;
}

bool CExport::HTML(const std::string& path) {
  try {
    if (tableColors_.size() < kTableColors || useTableColors_.size() < kTableSwitches ||
        layout_.size() < kWidths)
      return false;
    if (!BuildTable() || columns_.empty() || cells_.empty()) return false;
    return WritePageFile(path, common::ToWindows1252(Page()));
  } catch (const std::exception&) {
    return false;
  }
}

bool CExport::BuildTable() {
  columns_.clear();
  cells_.clear();
  extraBlock_.clear();
  if (database_ == nullptr) return false;
  switch (exportType_) {
    case kReport:
      return BuildReportTable();
    case kRaceResults:
      return BuildRaceTable();
    default:
      return false;
  }
}

bool CExport::BuildReportTable() {
  std::optional<ReportTable> report;
  if (table_ != nullptr) {
    report = *table_;
  } else if (templateDb_ != nullptr) {
    report = RunReport(*database_, *templateDb_, reportId_);
  }
  if (!report) return false;
  columns_.push_back({"Pos", kCentred});
  for (ReportColumn& column : report->columns) {
    columns_.push_back({column.name, column.hidden ? kHiddenColumn : column.alignment});
    if (column.field == "Interval") column.format = IntervalFormat(column.format);
  }
  for (const std::vector<engine::Value>& values : report->rows) {
    std::vector<std::string>& row = cells_.emplace_back();
    for (std::size_t i = 0; i < values.size(); ++i)
      row.push_back(CellText(report->columns[i], values[i], state_.decimalSeparator));
  }
  return true;
}

bool CExport::BuildRaceTable() {
  const bool fromPages =
      state_.simType >= common::kNascarRacing4 && state_.simType <= common::kNascarRacing2003;
  const bool withSpeed = !fromPages && state_.leagueType != common::kOnline;
  const bool bySpeed = state_.lapReportingMethod == common::kLapSpeed;
  const char decimal = state_.decimalSeparator;

  const auto race = database_->OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", reportId_));
  const float length = race["Length"].IsNull() ? 0 : race["Length"].ToSingle();
  extraBlock_ = RaceStatistics(race);

  columns_ = {{"Finish", kCentred}, {"Start", kCentred},  {"Driver", kLeft},  {"Laps", kCentred},
              {"Led", kCentred},    {"Points", kCentred}, {"Bonus", kCentred}};
  std::vector<std::string> formats = {"##", "", "####;;--",
                                      "",   "", ""};  // of the columns behind the position
  if (withSpeed) {
    columns_.push_back({"Avg Speed", kCentred});
    formats.emplace_back("##0.000");
  }
  const std::size_t qualifying = formats.size();
  columns_.push_back({"Qualify", kCentred});
  formats.emplace_back(bySpeed ? "##0.000 mph;;--" : "##0.000;;--");
  columns_.push_back({"Reason Out", kLeft});
  formats.emplace_back();

  auto results = database_->OpenRecordset(fmt::format(
      "SELECT Stats.Start, Driver.Name, Stats.LapsRun, Stats.LapsLed, Stats.Points, Stats.Bonus, "
      "{}Stats.Qualifying, Stats.Status FROM Stats INNER JOIN Driver ON Driver.DriverID=Stats.DriverID "
      "WHERE RaceID={} ORDER BY Finish",
      withSpeed ? "Stats.AvgSpeed, " : "", reportId_));
  for (; !results.AtEnd(); results.MoveNext()) {
    std::vector<std::string>& row = cells_.emplace_back();
    for (std::size_t i = 0; i < formats.size(); ++i) {
      const engine::Value& value = results.At(i);
      if (i == qualifying && value.IsNull()) {
        row.emplace_back("--");
      } else if (i == qualifying && !bySpeed) {
        row.push_back(common::FormatLapTime(common::SecondsPerLap(value.ToSingle(), length), decimal));
      } else {
        row.push_back(engine::FormatValue(value, formats[i], decimal));
      }
    }
  }
  return true;
}

std::string CExport::RaceStatistics(const engine::Recordset& race) const {
  constexpr std::pair<const char*, const char*> kStatistics[] = {
      {"RaceTime", "Race time"},     {"AvgSpeed", "Average speed"},   {"VictoryMargin", "Margin of victory"},
      {"Cautions", "Caution flags"}, {"LeadChanges", "Lead changes"}, {"Weather", "Weather"}};
  const std::string open = fontSize_ >= 1 ? fmt::format("<font size=\"{}\">", fontSize_) : "";
  const std::string_view close = fontSize_ >= 1 ? "</font>" : "";
  std::string block = "<TABLE align=\"center\">\r\n";
  for (const auto& [field, label] : kStatistics) {
    const engine::Value& value = race[field];
    AppendLine(block, "<TR>");
    AppendLine(block, "\t<TD align=right>{0}{2}{1}</TD><TD> - </TD><TD>{0}{3}{1}</TD>", open, close, label,
               value.IsNull() ? "n/a" : value.ToText(state_.decimalSeparator));
    AppendLine(block, "</TR>");
  }
  return block + "\r\n</TABLE>";
}

std::string CExport::SizeAttribute() const {
  return fontSize_ >= 1 ? fmt::format(" size=\"{}\"", fontSize_) : "";
}

std::string CExport::Page() const {
  using common::ColorToHTML;
  const std::string size = SizeAttribute();
  std::string page;

  AppendLine(page, "<HTML>");
  AppendLine(page, "<HEAD>");
  AppendLine(page, "<TITLE>{}</TITLE>", ReplaceAll(title_, "\r\n", " - "));
  AppendLine(page, "</HEAD>");
  page += "<BODY";
  if (useBGImage_) Append(page, " background=\"{}\"", bgImage_);
  AppendLine(page, R"( bgcolor="#{}" text="#{}" link="#{}" vlink="#{}" alink="#{}">)", ColorToHTML(bgColor_),
             ColorToHTML(textColor_), ColorToHTML(linkColor_), ColorToHTML(vLinkColor_),
             ColorToHTML(aLinkColor_));
  AppendLine(page, R"(<FONT face="{}"{}>)", font_, size);

  AppendLine(page, "<HR>");
  AppendLine(page, R"(<H1 align="center" style="color : #{}">{} </H1>)", ColorToHTML(titleColor_),
             WithBreaks(title_));
  AppendLine(page, "<HR>");
  AppendLine(page, R"(<H2 align="center" style="color : #{}">{}</H2>)", ColorToHTML(reportNameColor_),
             WithBreaks(reportName_));
  AppendLine(page, R"(<H3 align="center" style="color : #{}">{}</H3>)", ColorToHTML(captionColor_),
             WithBreaks(title2_));

  Append(page, R"(<TABLE align="center" border={} cellpadding={} cellspacing={})", layout_[0], layout_[1],
         layout_[2]);
  if (useTableColors_[kColorBorder]) {
    Append(page, R"( bordercolordark="#{}" bordercolorlight="#{}")", ColorToHTML(tableColors_[kBorderDark]),
           ColorToHTML(tableColors_[kBorderLight]));
  }
  if (useTableColors_[kColorTable])
    Append(page, " bgcolor=\"#{}\"", ColorToHTML(tableColors_[kTableBackground]));
  AppendLine(page, ">");

  AppendLine(page, "<TR>");
  for (const Column& column : columns_) {
    if (column.alignment == kHiddenColumn) continue;
    const std::string_view alignment = AlignmentName(column.alignment);
    Append(page, "\t<TH align=\"{}\"", alignment);
    if (useTableColors_[kColorHeading]) {
      Append(page, R"( BGCOLOR="#{}"><FONT color="#{}"{}>)", ColorToHTML(tableColors_[kHeadingBackground]),
             ColorToHTML(tableColors_[kHeadingText]), size);
    } else {
      Append(page, "><FONT {}>", size);
    }
    // The place for the alignment is filled last, also where a heading's own text holds one.
    AppendLine(page, "{}</FONT></TH>", ReplaceAll(column.heading, "<*ALIGN*>", alignment));
  }
  AppendLine(page, "</TR>");
  for (std::size_t row = 0; row < cells_.size(); ++row) AppendRow(page, row);
  AppendLine(page, "</TABLE>");

  if (exportType_ == kRaceResults && !extraBlock_.empty()) {
    AppendLine(page, "<p></p>");
    AppendLine(page, "{}", extraBlock_);
  }
  AppendLine(page, "<p></p>");
  AppendLine(page, "<HR>");
  AppendLine(page, "{}", footer_);
  AppendLine(page, "</FONT>");
  AppendLine(page, "</BODY>");
  AppendLine(page, "</HTML>");
  return page;
}

void CExport::AppendRow(std::string& page, std::size_t row) const {
  const std::string size = SizeAttribute();
  std::string cell;  // what stands before the alignment of a cell
  std::string font;  // and between it and the content
  if (useTableColors_[kColorRows]) {
    const bool alternating = useTableColors_[kAlternateRows];
    const bool even = alternating && row % 2 == 1;
    const std::string text = common::ColorToHTML(tableColors_[even ? kEvenRowText : kRowText]);
    const std::string background =
        common::ColorToHTML(tableColors_[even ? kEvenRowBackground : kRowBackground]);
    AppendLine(page, R"(<TR style = "color : #{}">)", text);
    AppendLine(page,
               "\t"
               R"(<TH align="center" bgcolor="#{}"><FONT {}>{}</FONT></TH>)",
               background, size, row + 1);
    cell = fmt::format(
        "\t"
        R"(<TD bgcolor="#{}" {}=")",
        background, alternating ? "align" : "ALIGN");
    font = fmt::format(R"("><FONT color="#{}"{}>)", text, size);
  } else {
    AppendLine(page, "<TR>");
    AppendLine(page,
               "\t"
               R"(<TH align="center"><FONT {}>{}</FONT></TH>)",
               size, row + 1);
    cell = "\t<TD align=\"";
    font = fmt::format("\"><FONT {}>", size);
  }
  for (std::size_t i = 0; i < cells_[row].size(); ++i) {
    const int alignment = columns_[i + 1].alignment;
    if (alignment == kHiddenColumn) continue;
    AppendLine(page, "{}{}{}{}</FONT></TD>", cell, AlignmentName(alignment), font, cells_[row][i]);
  }
  AppendLine(page, "</TR>");
}

}  // namespace scorvane::reports
