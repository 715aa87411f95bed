#include "programs/jet/JetTable.h"

#include <algorithm>

namespace scorvane::jet {
namespace {

constexpr std::uint8_t kDefinitionPage = 2;
constexpr std::size_t kIndexColumns = 10;
constexpr std::size_t kLargestDefinition = 8U << 20U;  // bytes

// A definition that is longer than a page goes on in others.
Buffer Definition(const JetFile& file, std::uint32_t page) {
  Buffer definition;
  for (std::uint32_t next = page; next != 0;) {
    const Bytes bytes = file.Page(next);
    if (bytes[0] != kDefinitionPage || definition.size() > kLargestDefinition) throw Damaged();
    next = Number(bytes, 4, 4);
    definition += definition.empty() ? bytes : bytes.substr(8);
  }
  return definition;
}

}  // namespace

// Where a definition keeps its parts; the versions differ.
struct JetTable::Places {
  std::size_t counter, variableColumns, columns, indexes, realIndexes, usage, start, realIndexSize;
  std::size_t columnSize, number, variable, scale, flags, fixed, size;
  std::size_t keysSize, keysLead, keysFlags, indexSize, indexKeys, indexType;
};

JetTable::JetTable(const JetFile& file, std::uint32_t page) : file_(file), page_(page) {
  static constexpr Places kVersion3 = {16, 23, 25, 27, 31, 35, 43, 8,  18, 1, 3,
                                       10, 13, 14, 16, 39, 0,  38, 20, 4,  19};
  static constexpr Places kVersion4 = {20, 43, 45, 47, 51, 55, 63, 12, 25, 5, 7,
                                       12, 15, 21, 23, 52, 4,  46, 28, 8,  23};
  const Places& at = file.IsVersion3() ? kVersion3 : kVersion4;
  const Buffer definition = Definition(file, page);
  counter_ = Number(definition, at.counter, 4);
  usage_ = Number(definition, at.usage, 4);
  hasVariable_ = Number(definition, at.variableColumns, 2) > 0;
  std::size_t place = at.start + Number(definition, at.realIndexes, 4) * at.realIndexSize;
  ReadColumns(definition, at, place);
  ReadIndexes(definition, at, place);
}

std::string JetTable::ReadName(Bytes definition, std::size_t& place) const {
  const std::size_t lead = file_.IsVersion3() ? 1 : 2;
  const std::size_t size = Number(definition, place, lead);
  std::string name = file_.Text(Part(definition, place + lead, size));
  place += lead + size;
  return name;
}

void JetTable::ReadColumns(Bytes definition, const Places& at, std::size_t& place) {
  constexpr std::uint32_t kFixed = 1;
  constexpr std::uint32_t kCounter = 4;
  columns_.resize(Number(definition, at.columns, 2));
  for (Column& column : columns_) {
    const Bytes entry = Part(definition, place, at.columnSize);
    column.type = entry[0];
    column.number = Number(entry, at.number, 2);
    column.variable = Number(entry, at.variable, 2);
    column.fixed = Number(entry, at.fixed, 2);
    column.size = Number(entry, at.size, 2);
    column.scale = Number(entry, at.scale, 1);
    column.isFixed = (Number(entry, at.flags, 1) & kFixed) != 0;
    column.counter = (Number(entry, at.flags, 1) & kCounter) != 0;
    place += at.columnSize;
  }
  for (Column& column : columns_) column.name = ReadName(definition, place);
  std::stable_sort(columns_.begin(), columns_.end(),
                   [](const Column& a, const Column& b) { return a.number < b.number; });
}

void JetTable::ReadIndexes(Bytes definition, const Places& at, std::size_t place) {
  constexpr std::uint32_t kNone = 0xFFFF;
  struct Keys {
    std::vector<std::string> columns;
    std::uint32_t flags = 0;
  };
  const std::size_t realIndexes = Number(definition, at.realIndexes, 4);
  std::vector<Keys> keys;
  for (std::size_t i = 0; i < realIndexes; ++i, place += at.keysSize) {
    const Bytes entry = Part(definition, place, at.keysSize);
    Keys& last = keys.emplace_back();
    last.flags = Number(entry, at.keysFlags, 1);
    for (std::size_t k = 0; k < kIndexColumns; ++k) {
      const std::uint32_t number = Number(entry, at.keysLead + k * 3, 2);
      const auto column = std::find_if(columns_.begin(), columns_.end(),
                                       [number](const Column& c) { return c.number == number; });
      if (number != kNone && column != columns_.end()) last.columns.push_back(column->name);
    }
  }
  const std::size_t count = Number(definition, at.indexes, 4);
  for (std::size_t i = 0; i < count; ++i, place += at.indexSize) {
    const Bytes entry = Part(definition, place, at.indexSize);
    const std::uint32_t real = Number(entry, at.indexKeys, 4);
    const std::uint32_t type = Number(entry, at.indexType, 1);
    TableIndex& index = indexes_.emplace_back();
    index.primary = type == 1;
    index.ofRelation = type == 2;
    if (real >= keys.size()) continue;
    index.columns = keys[real].columns;
    index.unique = (keys[real].flags & 1U) != 0;
    index.required = (keys[real].flags & 8U) != 0;
  }
  for (TableIndex& index : indexes_) index.name = ReadName(definition, place);
}

// A row is its number of columns, the columns of fixed size, the others, where these end, from behind, and a
// bit for each column that has a value.
std::vector<Cell> JetTable::Split(Bytes row) const {
  const bool version3 = file_.IsVersion3();
  const std::size_t lead = version3 ? 1 : 2;
  const std::size_t count = Number(row, 0, lead);
  const std::size_t bits = (count + 7) / 8;
  const Bytes mask = Part(row, row.size() - std::min(row.size(), bits), bits);
  std::vector<std::size_t> ends;
  if (hasVariable_ || version3) {
    const std::size_t variable = Number(row, row.size() - bits - lead, lead);
    if (version3) {
      // One byte each, and where a row is longer, the numbers of the columns behind which 256 more begin.
      std::size_t jumps = (row.size() - 1) / 256;
      const std::size_t last = row.size() - bits - 1;
      if (last < jumps + 1 + variable) throw Damaged();
      const std::size_t first = last - jumps - 1;
      if (jumps > 0 && (first - variable) / 256 < jumps) --jumps;
      std::size_t used = 0;
      for (std::size_t i = 0; i <= variable; ++i) {
        while (used < jumps && Number(row, last - used - 1, 1) == i) ++used;
        ends.push_back(Number(row, first - i, 1) + used * 256);
      }
    } else {
      if (row.size() < bits + 2 + (variable + 1) * 2) throw Damaged();
      for (std::size_t i = 0; i <= variable; ++i)
        ends.push_back(Number(row, row.size() - bits - 4 - i * 2, 2));
    }
  }
  std::vector<Cell> cells;
  for (const Column& column : columns_) {
    Cell& cell = cells.emplace_back();
    cell.set = column.number < count && (mask[column.number / 8] >> (column.number % 8) & 1U) != 0;
    if (!cell.set || column.type == kBoolean) continue;
    if (column.isFixed) {
      cell.bytes = Part(row, lead + column.fixed, column.size);
    } else if (column.variable + 1 < ends.size() && ends[column.variable] <= ends[column.variable + 1]) {
      cell.bytes = Part(row, ends[column.variable], ends[column.variable + 1] - ends[column.variable]);
    } else {
      cell.set = false;
    }
  }
  return cells;
}

void JetTable::ForEachRow(const std::function<void(const std::vector<Cell>&)>& visit) const {
  file_.ForEachRow(page_, usage_, [&](Bytes row) { visit(Split(row)); });
}

std::map<std::string, std::map<std::string, std::string>> ReadProperties(const JetFile& file, Bytes blob) {
  constexpr std::uint32_t kNames = 0x80;
  std::map<std::string, std::map<std::string, std::string>> properties;
  std::vector<std::string> names;
  for (std::size_t place = 4; place + 6 <= blob.size();) {
    const std::size_t size = Number(blob, place, 4);
    if (size < 6) throw Damaged();
    const Bytes block = Part(blob, place, size).substr(6);
    if (Number(blob, place + 4, 2) == kNames) {
      for (std::size_t at = 0; at + 2 <= block.size();) {
        const std::size_t length = Number(block, at, 2);
        names.push_back(file.Text(Part(block, at + 2, length)));
        at += 2 + length;
      }
    } else {
      const std::size_t length = Number(block, 4, 2);
      auto& of = properties[file.Text(Part(block, 6, length))];
      for (std::size_t at = 6 + length; at + 8 <= block.size();) {
        const std::size_t record = Number(block, at, 2);
        const std::size_t name = Number(block, at + 4, 2);
        const Bytes value = Part(block, at + 8, Number(block, at + 6, 2));
        if (record < 8 || name >= names.size()) throw Damaged();
        const bool flag = block[at + 3] == kBoolean;
        of[names[name]] = flag ? (!value.empty() && value[0] != 0 ? "yes" : "no") : file.Text(value);
        at += record;
      }
    }
    place += size;
  }
  return properties;
}

}  // namespace scorvane::jet
