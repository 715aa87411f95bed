// What the command line lists: tables for people, CSV for spreadsheets, JSON for programs.
#pragma once

#include <string>
#include <vector>

#include "engine/Recordset.h"
#include "engine/Value.h"

namespace scorvane::cli {

enum class OutputFormat { Table, Csv, Json };

struct OutputColumn {
  std::string name;
  bool right = false;  // numbers stand to the right in a table
};

struct OutputTable {
  std::vector<OutputColumn> columns;
  // As they are, for JSON and CSV.
  std::vector<std::vector<engine::Value>> rows;
  // As people read them, for a table; empty: the values' own texts.
  std::vector<std::vector<std::string>> texts;
};

// All rows of a recordset under its own column names.
OutputTable TableOf(engine::Recordset& rows);

// Writes to the standard output; JSON as an array of objects. `decimal` is for tables; CSV and JSON are for
// programs and always have a full stop.
void Print(const OutputTable& table, OutputFormat format, char decimal);

// The same JSON as text: an array of objects, one a row.
std::string JsonRows(const OutputTable& table, int indent);
// A text as a JSON literal.
std::string JsonText(const std::string& text);

// How many columns of a terminal a text takes.
std::size_t DisplayWidth(const std::string& text);

}  // namespace scorvane::cli
