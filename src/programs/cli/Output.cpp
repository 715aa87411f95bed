#include "programs/cli/Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "common/Csv.h"

namespace scorvane::cli {
namespace {

using engine::Value;
using Json = nlohmann::ordered_json;

// A file may hold bytes that are no UTF-8; they are shown as replacement characters, not refused.
constexpr auto kLenient = Json::error_handler_t::replace;

Json ToJson(const Value& value) {
  switch (value.GetType()) {
    case Value::Type::Null:
      return nullptr;
    case Value::Type::Boolean:
      return value.ToBoolean();
    case Value::Type::Long:
      return value.ToLong();
    case Value::Type::Single:
      // The digits that the number holds, not the ones that its conversion to a longer one brings.
      return Json::parse(value.ToText('.'), nullptr, false);
    case Value::Type::Double: {
      const double number = value.ToDouble();
      if (std::trunc(number) == number && std::fabs(number) < 9e15) return static_cast<std::int64_t>(number);
      return number;
    }
    case Value::Type::Date:
    case Value::Type::Text:
      return value.ToText('.');
  }
  return nullptr;
}

// Line ends and other control characters would break a table.
std::string OneLine(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  return text;
}

std::string Padded(const std::string& text, std::size_t width, bool right) {
  const std::string blanks(width - std::min(width, DisplayWidth(text)), ' ');
  return right ? blanks + text : text + blanks;
}

std::string TrimRight(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

void PrintTable(const OutputTable& table, char decimal) {
  std::vector<std::vector<std::string>> cells;
  for (std::size_t r = 0; r < table.rows.size(); ++r) {
    std::vector<std::string> line;
    line.reserve(table.columns.size());
    for (std::size_t c = 0; c < table.columns.size(); ++c)
      line.push_back(OneLine(table.texts.empty() ? table.rows[r][c].ToText(decimal) : table.texts[r][c]));
    cells.push_back(std::move(line));
  }
  std::vector<std::size_t> widths;
  for (std::size_t c = 0; c < table.columns.size(); ++c) {
    std::size_t width = DisplayWidth(table.columns[c].name);
    for (const auto& line : cells) width = std::max(width, DisplayWidth(line[c]));
    widths.push_back(width);
  }
  std::string head;
  std::string rule;
  for (std::size_t c = 0; c < table.columns.size(); ++c) {
    head += Padded(table.columns[c].name, widths[c], table.columns[c].right) + "  ";
    rule += std::string(widths[c], '-') + "  ";
  }
  fmt::print("{}\n{}\n", TrimRight(head), TrimRight(rule));
  for (const auto& line : cells) {
    std::string text;
    for (std::size_t c = 0; c < line.size(); ++c)
      text += Padded(line[c], widths[c], table.columns[c].right) + "  ";
    fmt::print("{}\n", TrimRight(text));
  }
}

void PrintCsv(const OutputTable& table) {
  std::string line;
  for (const OutputColumn& column : table.columns)
    line += (line.empty() ? "" : ",") + common::CsvCell(column.name);
  fmt::print("{}\n", line);
  for (const auto& row : table.rows) {
    line.clear();
    for (std::size_t c = 0; c < row.size(); ++c) {
      if (c > 0) line += ',';
      line += common::CsvCell(row[c].ToText('.'));
    }
    fmt::print("{}\n", line);
  }
}

}  // namespace

OutputTable TableOf(engine::Recordset& rows) {
  OutputTable table;
  for (std::size_t i = 0; i < rows.FieldCount(); ++i) table.columns.push_back({rows.FieldName(i), true});
  for (; !rows.AtEnd(); rows.MoveNext()) {
    std::vector<Value> row;
    for (std::size_t i = 0; i < rows.FieldCount(); ++i) {
      row.push_back(rows.At(i));
      if (row.back().IsText() || row.back().GetType() == Value::Type::Boolean) table.columns[i].right = false;
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

std::string JsonRows(const OutputTable& table, int indent) {
  Json array = Json::array();
  for (const auto& row : table.rows) {
    Json object = Json::object();
    for (std::size_t c = 0; c < row.size(); ++c) object[table.columns[c].name] = ToJson(row[c]);
    array.push_back(std::move(object));
  }
  return array.dump(indent, ' ', false, kLenient);
}

std::string JsonText(const std::string& text) {
  return Json(text).dump(-1, ' ', false, kLenient);
}

std::size_t DisplayWidth(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

void Print(const OutputTable& table, OutputFormat format, char decimal) {
  switch (format) {
    case OutputFormat::Table:
      PrintTable(table, decimal);
      break;
    case OutputFormat::Csv:
      PrintCsv(table);
      break;
    case OutputFormat::Json:
      fmt::print("{}\n", JsonRows(table, 2));
      break;
  }
}

}  // namespace scorvane::cli
