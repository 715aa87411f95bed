#include "reports/Export.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "common/Encoding.h"
#include "common/Formats.h"
#include "common/NewFile.h"
#include "common/Paths.h"
#include "engine/Format.h"
#include "platform/Platform.h"
#include "reports/Report.h"
#include "scoring/Penalties.h"

namespace scorvane::reports {
namespace {

enum ExportKind : std::int32_t { kReport = 0, kRaceResults = 1 };

constexpr int kLeft = 0;
constexpr int kHiddenColumn = 999;  // an alignment

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
enum TableSwitch : std::size_t { kColorHeading, kColorRows, kAlternateRows, kColorBorder, kColorTable };

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

// A page on its way to its place. What is no file, as a printer's port or a pipe, takes it as it comes.
class PageFile {
 public:
  explicit PageFile(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(common::SystemPath(path), error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
      device_.emplace(common::SystemPath(path), std::ios::binary);
    } else if (!IsNoText(path)) {
      // A page can be written again: nobody waits for the disk.
      file_.emplace(path, platform::Flush::No);
    }
  }

  bool Write(std::string_view bytes) {
    if (file_) return file_->Write(bytes);
    return device_ && device_->write(bytes.data(), static_cast<std::streamsize>(bytes.size())).good();
  }
  bool Finish() {
    if (file_) return file_->Finish();
    if (!device_) return false;
    device_->close();
    return device_->good();
  }

 private:
  std::optional<common::NewFile> file_;
  std::optional<std::ofstream> device_;
};

}  // namespace

bool WritePageFile(const std::string& path, std::string_view bytes) {
  PageFile file(path);
  return file.Write(bytes) && file.Finish();
}

// Takes a page row by row. Nothing is touched before the first row.
class CExport::Writer {
 public:
  Writer(const CExport& page, std::string path) : page_(page), path_(std::move(path)) {}

  void Columns(std::vector<Column> columns) { columns_ = std::move(columns); }
  bool HasRows() const { return rows_ > 0; }
  void Row(const std::vector<std::string>& cells) {
    if (rows_ == 0) {
      file_.emplace(path_);
      text_ = page_.Head(columns_);
    }
    page_.AppendRow(text_, columns_, rows_++, cells);
    if (text_.size() >= kBlock) Flush();
  }
  // False when there was no row, or it cannot be written.
  bool Finish() {
    if (rows_ == 0) return false;
    text_ += page_.Tail();
    Flush();
    return good_ && file_ && file_->Finish();
  }

 private:
  static constexpr std::size_t kBlock = 1 << 16;

  void Flush() {
    good_ = good_ && file_ && file_->Write(common::ToWindows1252(text_));
    text_.clear();
  }

  const CExport& page_;
  const std::string path_;
  std::vector<Column> columns_;
  std::optional<PageFile> file_;
  std::string text_;
  std::size_t rows_ = 0;
  bool good_ = true;
};

bool CExport::HTML(const std::string& path) {
  hadRows_ = true;  // until it is known
  try {
    if (std::find(complete_.begin(), complete_.end(), false) != complete_.end()) return false;
    Writer writer(*this, path);
    const bool table = WriteTable(writer);
    hadRows_ = writer.HasRows();
    return table && writer.Finish();
  } catch (const std::exception&) {
    return false;
  }
}

bool CExport::WriteTable(Writer& writer) {
  extraBlock_.clear();
  penaltyBlock_.clear();
  if (database_ == nullptr) return false;
  switch (exportType_) {
    case kReport:
      return WriteReport(writer);
    case kRaceResults:
      return WriteRace(writer);
    default:
      return false;
  }
}

bool CExport::WriteReport(Writer& writer) {
  if (table_ == nullptr && templateDb_ == nullptr) return false;
  std::vector<ReportColumn> shown;
  std::vector<std::string> cells;
  const auto start = [&](const std::vector<ReportColumn>& columns) {
    shown = columns;
    std::vector<Column> headed = {{"Pos", kCentred}};
    for (ReportColumn& column : shown) {
      headed.push_back({column.name, column.hidden ? kHiddenColumn : column.alignment});
      if (column.field == "Interval") column.format = IntervalFormat(column.format);
    }
    writer.Columns(std::move(headed));
    cells.resize(shown.size());
  };
  const auto row = [&](const std::vector<engine::Value>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
      cells[i] = CellText(shown[i], values[i], state_.decimalSeparator);
    writer.Row(cells);
  };
  if (table_ == nullptr) return StreamReport(*database_, *templateDb_, reportId_, start, row);
  start(table_->columns);
  for (const std::vector<engine::Value>& values : table_->rows) row(values);
  return true;
}

bool CExport::WriteRace(Writer& writer) {
  const bool fromPages =
      state_.simType >= common::kNascarRacing4 && state_.simType <= common::kNascarRacing2003;
  const bool withSpeed = !fromPages && state_.leagueType != common::kOnline;
  const bool bySpeed = state_.lapReportingMethod == common::kLapSpeed;
  const char decimal = state_.decimalSeparator;

  const auto race = database_->OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", reportId_));
  const float length = race["Length"].IsNull() ? 0 : race["Length"].ToSingle();
  extraBlock_ = RaceStatistics(race);
  penaltyBlock_ = RacePenalties();

  std::vector<Column> columns = {{"Finish", kCentred}, {"Start", kCentred}, {"Driver", kLeft},
                                 {"Laps", kCentred},   {"Led", kCentred},   {"Points", kCentred},
                                 {"Bonus", kCentred}};
  std::vector<std::string> formats = {"##", "", "####;;--",
                                      "",   "", ""};  // of the columns behind the position
  if (withSpeed) {
    columns.push_back({"Avg Speed", kCentred});
    formats.emplace_back("##0.000");
  }
  const std::size_t qualifying = formats.size();
  columns.push_back({"Qualify", kCentred});
  formats.emplace_back(bySpeed ? "##0.000 mph;;--" : "##0.000;;--");
  columns.push_back({"Reason Out", kLeft});
  formats.emplace_back();
  writer.Columns(std::move(columns));

  auto results = database_->OpenRecordset(fmt::format(
      "SELECT Stats.Start, Driver.Name, Stats.LapsRun, Stats.LapsLed, Stats.Points, Stats.Bonus, "
      "{}Stats.Qualifying, Stats.Status FROM Stats INNER JOIN Driver ON Driver.DriverID=Stats.DriverID "
      "WHERE RaceID={} ORDER BY Finish",
      withSpeed ? "Stats.AvgSpeed, " : "", reportId_));
  for (; !results.AtEnd(); results.MoveNext()) {
    std::vector<std::string> row;
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
    writer.Row(row);
  }
  return true;
}

std::string CExport::RaceStatistics(const engine::Recordset& race) const {
  constexpr std::pair<const char*, const char*> kStatistics[] = {
      {"RaceTime", "Race time"},     {"AvgSpeed", "Average speed"},   {"VictoryMargin", "Margin of victory"},
      {"Cautions", "Caution flags"}, {"LeadChanges", "Lead changes"}, {"Weather", "Weather"}};
  const std::string open = look_.fontSize >= 1 ? fmt::format("<font size=\"{}\">", look_.fontSize) : "";
  const std::string_view close = look_.fontSize >= 1 ? "</font>" : "";
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

// One line a penalty; empty without any. Unlike what the pages have always written as it is, reasons are
// text.
std::string CExport::RacePenalties() const {
  std::string lines;
  for (const scoring::Penalty& penalty : scoring::ListPenalties(*database_, reportId_)) {
    if (!penalty.resultId) continue;
    const std::string line =
        fmt::format("{}: {} ({})", penalty.driver, scoring::Describe(penalty), penalty.reason);
    lines +=
        "<BR>" + WithBreaks(ReplaceAll(ReplaceAll(ReplaceAll(line, "&", "&amp;"), "<", "&lt;"), ">", "&gt;"));
  }
  return lines.empty() ? lines : fmt::format("<P align=\"center\">Penalties:{}</P>", lines);
}

std::string CExport::SizeAttribute() const {
  return look_.fontSize >= 1 ? fmt::format(" size=\"{}\"", look_.fontSize) : "";
}

std::string CExport::Head(const std::vector<Column>& columns) const {
  using common::ColorToHTML;
  const std::string size = SizeAttribute();
  std::string page;

  AppendLine(page, "<HTML>");
  AppendLine(page, "<HEAD>");
  AppendLine(page, "<TITLE>{}</TITLE>", ReplaceAll(title_, "\r\n", " - "));
  AppendLine(page, "</HEAD>");
  page += "<BODY";
  if (look_.useBGImage) Append(page, " background=\"{}\"", look_.bgImage);
  AppendLine(page, R"( bgcolor="#{}" text="#{}" link="#{}" vlink="#{}" alink="#{}">)",
             ColorToHTML(look_.colors[0]), ColorToHTML(look_.colors[1]), ColorToHTML(look_.colors[2]),
             ColorToHTML(look_.colors[3]), ColorToHTML(look_.colors[4]));
  AppendLine(page, R"(<FONT face="{}"{}>)", look_.font, size);

  AppendLine(page, "<HR>");
  AppendLine(page, R"(<H1 align="center" style="color : #{}">{} </H1>)", ColorToHTML(look_.colors[5]),
             WithBreaks(title_));
  AppendLine(page, "<HR>");
  AppendLine(page, R"(<H2 align="center" style="color : #{}">{}</H2>)", ColorToHTML(look_.colors[6]),
             WithBreaks(reportName_));
  AppendLine(page, R"(<H3 align="center" style="color : #{}">{}</H3>)", ColorToHTML(look_.colors[7]),
             WithBreaks(title2_));

  Append(page, R"(<TABLE align="center" border={} cellpadding={} cellspacing={})", look_.layout[0],
         look_.layout[1], look_.layout[2]);
  if (look_.switches[kColorBorder]) {
    Append(page, R"( bordercolordark="#{}" bordercolorlight="#{}")",
           ColorToHTML(look_.colors[kPageColors + kBorderDark]),
           ColorToHTML(look_.colors[kPageColors + kBorderLight]));
  }
  if (look_.switches[kColorTable])
    Append(page, " bgcolor=\"#{}\"", ColorToHTML(look_.colors[kPageColors + kTableBackground]));
  AppendLine(page, ">");

  AppendLine(page, "<TR>");
  for (const Column& column : columns) {
    if (column.alignment == kHiddenColumn) continue;
    const std::string_view alignment = AlignmentName(column.alignment);
    Append(page, "\t<TH align=\"{}\"", alignment);
    if (look_.switches[kColorHeading]) {
      Append(page, R"( BGCOLOR="#{}"><FONT color="#{}"{}>)",
             ColorToHTML(look_.colors[kPageColors + kHeadingBackground]),
             ColorToHTML(look_.colors[kPageColors + kHeadingText]), size);
    } else {
      Append(page, "><FONT {}>", size);
    }
    // The place for the alignment is filled last, also where a heading's own text holds one.
    AppendLine(page, "{}</FONT></TH>", ReplaceAll(column.heading, "<*ALIGN*>", alignment));
  }
  AppendLine(page, "</TR>");
  return page;
}

std::string CExport::Tail() const {
  std::string page;
  AppendLine(page, "</TABLE>");

  if (exportType_ == kRaceResults && !extraBlock_.empty()) {
    AppendLine(page, "<p></p>");
    AppendLine(page, "{}", extraBlock_);
  }
  if (!penaltyBlock_.empty()) AppendLine(page, "{}", penaltyBlock_);
  AppendLine(page, "<p></p>");
  AppendLine(page, "<HR>");
  AppendLine(page, "{}", footer_);
  AppendLine(page, "</FONT>");
  AppendLine(page, "</BODY>");
  AppendLine(page, "</HTML>");
  return page;
}

void CExport::AppendRow(std::string& page, const std::vector<Column>& columns, std::size_t row,
                        const std::vector<std::string>& cells) const {
  const std::string size = SizeAttribute();
  std::string cell;  // what stands before the alignment of a cell
  std::string font;  // and between it and the content
  if (look_.switches[kColorRows]) {
    const bool alternating = look_.switches[kAlternateRows];
    const bool even = alternating && row % 2 == 1;
    const std::string text =
        common::ColorToHTML(look_.colors[kPageColors + (even ? kEvenRowText : kRowText)]);
    const std::string background =
        common::ColorToHTML(look_.colors[kPageColors + (even ? kEvenRowBackground : kRowBackground)]);
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
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const int alignment = columns[i + 1].alignment;
    if (alignment == kHiddenColumn) continue;
    AppendLine(page, "{}{}{}{}</FONT></TD>", cell, AlignmentName(alignment), font, cells[i]);
  }
  AppendLine(page, "</TR>");
}

}  // namespace scorvane::reports
