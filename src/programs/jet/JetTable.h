// A table of a database file of the old format: what it is made of, and its rows.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "programs/jet/JetFile.h"

namespace scorvane::jet {

enum ColumnType : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kMoney = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kText = 10,
  kObject = 11,
  kMemo = 12,
  kNumeric = 16,
};

struct Column {
  std::string name;
  std::uint8_t type = 0;
  std::uint32_t number = 0;  // its bit in the row that tells whether it has a value
  std::uint32_t variable = 0;
  std::uint32_t fixed = 0;
  std::uint32_t size = 0;
  std::uint32_t scale = 0;
  bool isFixed = false;
  bool counter = false;
};

struct TableIndex {
  std::string name;
  bool primary = false;
  bool unique = false;
  bool required = false;
  bool ofRelation = false;
  std::vector<std::string> columns;
};

// A field's bytes in a row; of a Boolean its value alone.
struct Cell {
  bool set = false;
  Bytes bytes;
};

class JetTable {
 public:
  // Reads the definition that begins at a page.
  JetTable(const JetFile& file, std::uint32_t page);

  const std::vector<Column>& Columns() const { return columns_; }
  const std::vector<TableIndex>& Indexes() const { return indexes_; }
  std::uint32_t NextCounter() const { return counter_; }
  // The cells of each row in the order of the columns.
  void ForEachRow(const std::function<void(const std::vector<Cell>&)>& visit) const;

 private:
  struct Places;
  void ReadColumns(Bytes definition, const Places& at, std::size_t& place);
  void ReadIndexes(Bytes definition, const Places& at, std::size_t place);
  std::string ReadName(Bytes definition, std::size_t& place) const;
  std::vector<Cell> Split(Bytes row) const;

  const JetFile& file_;
  std::uint32_t page_;
  std::uint32_t usage_ = 0;
  std::uint32_t counter_ = 0;
  bool hasVariable_ = false;
  std::vector<Column> columns_;
  std::vector<TableIndex> indexes_;
};

// What the file says of a table's columns beyond their definition: column, property, value.
std::map<std::string, std::map<std::string, std::string>> ReadProperties(const JetFile& file, Bytes blob);

}  // namespace scorvane::jet
