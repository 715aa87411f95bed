// Workbooks of spreadsheets, through the library that knows their format.
#include "common/RuleError.h"
#include "sheets/Sheet.h"

#ifndef SCORVANE_XLSX

namespace scorvane::sheets {

void WriteXlsx(const std::string& path, const std::vector<Sheet>&, const std::function<void()>&) {
  throw common::RuleError("'" + path + "' could not be written: this program was built without .xlsx files.");
}

}  // namespace scorvane::sheets

#else

#include <fmt/format.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "common/Formats.h"
#include "common/NewFile.h"
#include "platform/Platform.h"

namespace scorvane::sheets {
namespace {

constexpr std::size_t kLongestSheetName = 31;  // characters
constexpr double kNarrowest = 5;               // of a column, in characters
constexpr double kWidest = 40;

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < ' ';
}

bool BeginsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

// Without what no spreadsheet takes in the name of a sheet, at most so long, and unlike all others.
std::string SheetName(const std::string& wanted, std::set<std::string>& taken) {
  std::string name;
  for (const char c : wanted)
    name += IsControl(c) || std::string_view("[]:*?/\\").find(c) != std::string_view::npos ? ' ' : c;
  name.erase(0, name.find_first_not_of("' "));
  const auto cut = [&name](std::size_t length) {
    std::size_t end = 0;
    for (std::size_t count = 0; end < name.size(); ++end)
      if (BeginsCharacter(name[end]) && ++count > length) break;
    std::string text = name.substr(0, end);
    text.erase(text.find_last_not_of("' ") + 1);
    return text;
  };
  std::string candidate = cut(kLongestSheetName);
  if (candidate.empty()) candidate = "Sheet";
  for (int number = 2; !taken.insert(common::LowerCase(candidate)).second; ++number) {
    const std::string suffix = fmt::format(" ({})", number);
    candidate = cut(kLongestSheetName - suffix.size()) + suffix;
  }
  return candidate;
}

// Spreadsheets know no other control characters than these.
std::string Printable(std::string text) {
  for (char& c : text)
    if (IsControl(c) && c != '\n' && c != '\t') c = ' ';
  return text;
}

class Workbook {
 public:
  explicit Workbook(const std::string& file) : book_(workbook_new(file.c_str())) {
    heading_ = workbook_add_format(book_);
    format_set_bold(heading_);
    format_set_bottom(heading_, LXW_BORDER_THIN);
    headingRight_ = workbook_add_format(book_);
    format_set_bold(headingRight_);
    format_set_bottom(headingRight_, LXW_BORDER_THIN);
    format_set_align(headingRight_, LXW_ALIGN_RIGHT);
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;
  ~Workbook() {
    if (book_ != nullptr) lxw_workbook_free(book_);
  }

  void Add(const Sheet& sheet) {
    lxw_worksheet* page = workbook_add_worksheet(book_, SheetName(sheet.name, names_).c_str());
    if (page == nullptr) throw common::RuleError("A sheet named \"" + sheet.name + "\" cannot be made.");
    std::vector<double> widths;
    for (std::size_t c = 0; c < sheet.columns.size(); ++c) {
      const Column& column = sheet.columns[c];
      worksheet_write_string(page, 0, static_cast<lxw_col_t>(c), Printable(column.name).c_str(),
                             column.right ? headingRight_ : heading_);
      widths.push_back(Width(column.name));
    }
    for (std::size_t r = 0; r < sheet.rows.size(); ++r) {
      for (std::size_t c = 0; c < sheet.rows[r].size(); ++c) {
        Write(page, static_cast<lxw_row_t>(r + 1), static_cast<lxw_col_t>(c), sheet.rows[r][c],
              sheet.columns[c]);
        widths[c] = std::max(widths[c], Width(sheet.rows[r][c].value.ToText('.')));
      }
    }
    for (std::size_t c = 0; c < widths.size(); ++c) {
      worksheet_set_column(page, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c),
                           std::clamp(widths[c] + 1, kNarrowest, kWidest), nullptr);
    }
    worksheet_freeze_panes(page, 1, static_cast<lxw_col_t>(sheet.frozen));
    worksheet_repeat_rows(page, 0, 0);
    worksheet_set_landscape(page);
    worksheet_fit_to_pages(page, 1, 0);
  }

  bool Close() { return workbook_close(std::exchange(book_, nullptr)) == LXW_NO_ERROR; }

 private:
  static double Width(const std::string& text) {
    return static_cast<double>(std::count_if(text.begin(), text.end(), BeginsCharacter)) * 1.1;
  }

  void Write(lxw_worksheet* page, lxw_row_t row, lxw_col_t column, const Cell& cell, const Column& how) {
    lxw_format* format = FormatFor(how.format, cell.mark);
    switch (cell.value.GetType()) {
      case engine::Value::Type::Null:
        if (format != nullptr) worksheet_write_blank(page, row, column, format);
        break;
      case engine::Value::Type::Text:
      case engine::Value::Type::Date:
        // Never a formula, whatever a name begins with.
        worksheet_write_string(page, row, column, Printable(cell.value.ToText('.')).c_str(), format);
        break;
      case engine::Value::Type::Boolean:
        worksheet_write_boolean(page, row, column, cell.value.ToBoolean() ? 1 : 0, format);
        break;
      case engine::Value::Type::Single:
        // As many digits as it has.
        worksheet_write_number(page, row, column, std::strtod(cell.value.ToText('.').c_str(), nullptr),
                               format);
        break;
      default:
        worksheet_write_number(page, row, column, cell.value.ToDouble(), format);
    }
  }

  lxw_format* FormatFor(const std::string& numbers, Cell::Mark mark) {
    // What the reports' own language has beyond that of spreadsheets stays a plain number.
    const bool known = !numbers.empty() && numbers.find_first_not_of("0#.,;-%") == std::string::npos;
    if (!known && mark == Cell::Mark::None) return nullptr;
    lxw_format*& format = formats_[{known ? numbers : "", mark}];
    if (format == nullptr) {
      format = workbook_add_format(book_);
      if (known) format_set_num_format(format, numbers.c_str());
      if (mark == Cell::Mark::Dropped) format_set_font_strikeout(format);
      if (mark == Cell::Mark::Win) format_set_bold(format);
    }
    return format;
  }

  lxw_workbook* book_;
  lxw_format* heading_ = nullptr;
  lxw_format* headingRight_ = nullptr;
  std::map<std::tuple<std::string, Cell::Mark>, lxw_format*> formats_;
  std::set<std::string> names_;
};

}  // namespace

void WriteXlsx(const std::string& path, const std::vector<Sheet>& sheets, const std::function<void()>& step) {
  RefuseDatabase(path);
  platform::RemoveTemporariesBeside(path);
  common::NewFile file(path);
  Workbook book(file.Temporary());
  for (const Sheet& sheet : sheets) {
    book.Add(sheet);
    if (step) step();
  }
  if (!book.Close() || !file.Finish()) Refuse(path, file.WhyNot());
}

}  // namespace scorvane::sheets

#endif
