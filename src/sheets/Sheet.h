// A table on its way into a spreadsheet: values as they are, numbers as numbers.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Value.h"

namespace scorvane::sheets {

struct Cell {
  enum class Mark : std::uint8_t { None, Dropped, Win };

  engine::Value value;
  Mark mark = Mark::None;  // a dropped result is struck out, a win is bold
};

struct Column {
  std::string name;
  std::string format;  // of numbers, in the spreadsheets' own language ("0.0"); empty: as they are
  bool right = false;
};

struct Sheet {
  std::string name;
  std::vector<Column> columns;
  std::vector<std::vector<Cell>> rows;
  std::size_t frozen = 0;  // columns that stay in sight, as the heading row always does
};

// What a spreadsheet's format says of a file: by its extension, small letters or not.
enum class FileKind : std::uint8_t { None, Csv, Xlsx };
FileKind KindOf(std::string_view path);

// Writes a file beside `path` and puts it in its place in one step. An .xlsx file takes any number of sheets;
// their names are made such that every spreadsheet takes them. `step` is called after each sheet. Throws
// common::RuleError with the reason; what was there is then as it was.
void WriteXlsx(const std::string& path, const std::vector<Sheet>& sheets,
               const std::function<void()>& step = {});
// The same for what could not be written: the reason as RuleError.
[[noreturn]] void Refuse(const std::string& path, const std::string& why);
// A database, of the present or the old kind, is a league whatever it is called: RuleError.
void RefuseDatabase(const std::string& path);
// A .csv file takes one sheet: UTF-8, a full stop as the decimal separator.
void WriteCsv(const std::string& path, const Sheet& sheet);

}  // namespace scorvane::sheets
