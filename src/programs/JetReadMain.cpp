// scorvane-mdbread FILE, where there is no library for files of the old format: writes the same lines as
// MdbReadMain.cpp does, which says what they are.
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "programs/jet/JetFile.h"
#include "programs/jet/JetTable.h"

namespace {

using namespace scorvane;
using jet::Bytes;
using Json = nlohmann::ordered_json;

constexpr std::uint32_t kCatalogPage = 2;
constexpr std::size_t kLargest = 512U << 20U;  // bytes

void WriteLine(const Json& value) {
  const std::string line = value.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

template <typename T>
T As(Bytes bytes) {
  std::array<std::uint8_t, sizeof(T)> exact;
  jet::Part(bytes, 0, sizeof(T)).copy(exact.data(), exact.size());
  T value;
  std::memcpy(&value, exact.data(), sizeof(T));
  return value;
}

Json Finite(double number) {
  return std::isfinite(number) ? Json(number) : Json();
}

// A sign, and four words of a whole number, the highest first.
double Numeric(Bytes bytes, std::uint32_t scale) {
  double number = 0;
  for (std::size_t word = 0; word < 4; ++word)
    number = number * 4294967296.0 + jet::Number(bytes, 1 + word * 4, 4);
  return (jet::Number(bytes, 0, 1) != 0 ? -number : number) / std::pow(10.0, scale);
}

Json TextOrNull(std::string text) {
  // The text ends where a reader in C would see its end.
  text.resize(std::strlen(text.c_str()));
  return text;
}

Json ToJson(const jet::JetFile& file, const jet::Column& column, const jet::Cell& cell) {
  if (column.type == jet::kBoolean) return cell.set;
  if (!cell.set || cell.bytes.empty()) return nullptr;
  switch (column.type) {
    case jet::kByte:
      return As<std::uint8_t>(cell.bytes);
    case jet::kInteger:
      return As<std::int16_t>(cell.bytes);
    case jet::kLong:
      return As<std::int32_t>(cell.bytes);
    case jet::kMoney:
      return static_cast<double>(As<std::int64_t>(cell.bytes)) / 10000;
    case jet::kSingle:
      return Finite(static_cast<double>(As<float>(cell.bytes)));
    case jet::kDouble:
    case jet::kDate:
      return Finite(As<double>(cell.bytes));
    case jet::kText:
      return TextOrNull(file.Text(cell.bytes));
    case jet::kMemo:
      return TextOrNull(file.Text(file.LongValue(cell.bytes)));
    case jet::kNumeric:
      return Numeric(cell.bytes, column.scale);
    default:
      return nullptr;  // pictures and replication keys, which a league has none of
  }
}

// A row of one of the file's own tables, by the names of its columns.
class NamedRow {
 public:
  NamedRow(const jet::JetFile& file, const jet::JetTable& table, const std::vector<jet::Cell>& cells)
      : file_(file), table_(table), cells_(cells) {}

  Json operator[](std::string_view name) const {
    const auto place = Find(name);
    return place ? ToJson(file_, table_.Columns()[*place], cells_[*place]) : Json();
  }
  jet::Buffer Object(std::string_view name) const {
    const auto place = Find(name);
    if (!place || !cells_[*place].set || cells_[*place].bytes.empty()) return {};
    return file_.LongValue(cells_[*place].bytes);
  }

 private:
  std::optional<std::size_t> Find(std::string_view name) const {
    for (std::size_t i = 0; i < cells_.size(); ++i)
      if (table_.Columns()[i].name == name) return i;
    return std::nullopt;
  }

  const jet::JetFile& file_;
  const jet::JetTable& table_;
  const std::vector<jet::Cell>& cells_;
};

struct Entry {
  std::string name;
  std::uint32_t page = 0;
  bool system = false;
  jet::Buffer properties;
};

std::vector<Entry> ReadCatalog(const jet::JetFile& file) {
  constexpr int kTable = 1;
  constexpr std::uint32_t kSystem = 0x80000002;
  std::vector<Entry> entries;
  const jet::JetTable catalog(file, kCatalogPage);
  catalog.ForEachRow([&](const std::vector<jet::Cell>& cells) {
    const NamedRow row(file, catalog, cells);
    if (!row["Type"].is_number() || (row["Type"].get<int>() & 0x7F) != kTable) return;
    const auto flags = static_cast<std::uint32_t>(row["Flags"].is_number() ? row["Flags"].get<int>() : 0);
    entries.push_back({row["Name"].get<std::string>(), row["Id"].get<std::uint32_t>() & 0xFFFFFFU,
                       (flags & kSystem) != 0, row.Object("LvProp")});
  });
  return entries;
}

Json Describe(const jet::JetFile& file, const Entry& entry, const jet::JetTable& table) {
  auto properties = jet::ReadProperties(file, entry.properties);
  Json fields = Json::array();
  for (const jet::Column& column : table.Columns()) {
    auto& of = properties[column.name];
    const bool text = column.type == jet::kText;
    fields.push_back({{"name", column.name},
                      {"type", column.type},
                      // Files of version 4 keep two bytes a character.
                      {"size", text ? column.size / (file.IsVersion3() ? 1 : 2) : 0},
                      {"counter", column.counter},
                      {"required", of["Required"] == "yes"},
                      {"zeroLength", of["AllowZeroLength"] == "yes"},
                      {"default", of["DefaultValue"]}});
  }
  Json indexes = Json::array();
  for (const jet::TableIndex& index : table.Indexes()) {
    if (index.ofRelation) continue;
    indexes.push_back({{"name", index.name},
                       {"primary", index.primary},
                       {"unique", index.unique},
                       {"required", index.required},
                       {"fields", index.columns}});
  }
  return {{"table", entry.name},
          {"counter", static_cast<std::int32_t>(table.NextCounter())},
          {"fields", std::move(fields)},
          {"indexes", std::move(indexes)}};
}

void WriteRelations(const jet::JetFile& file, std::uint32_t page) {
  const jet::JetTable table(file, page);
  table.ForEachRow([&](const std::vector<jet::Cell>& cells) {
    const NamedRow row(file, table, cells);
    WriteLine({{"relation", row["szRelationship"]},
               {"attributes", row["grbit"]},
               {"columns", row["ccolumn"]},
               {"foreignTable", row["szObject"]},
               {"foreignField", row["szColumn"]},
               {"table", row["szReferencedObject"]},
               {"field", row["szReferencedColumn"]}});
  });
}

void WriteFile(const jet::JetFile& file) {
  long rows = 0;
  const std::vector<Entry> catalog = ReadCatalog(file);
  for (const Entry& entry : catalog) {
    if (entry.system) continue;
    const jet::JetTable table(file, entry.page);
    if (table.Columns().empty()) continue;
    WriteLine(Describe(file, entry, table));
    table.ForEachRow([&](const std::vector<jet::Cell>& cells) {
      Json row = Json::array();
      for (std::size_t i = 0; i < cells.size(); ++i)
        row.push_back(ToJson(file, table.Columns()[i], cells[i]));
      WriteLine(row);
      ++rows;
    });
  }
  for (const Entry& entry : catalog)
    if (entry.name == "MSysRelationships") WriteRelations(file, entry.page);
  WriteLine({{"end", rows}});
}

std::optional<jet::Buffer> ReadWhole(const std::string& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(platform::OpenToRead(path), &std::fclose);
  if (!file) return std::nullopt;
  jet::Buffer content;
  std::vector<std::uint8_t> block(1U << 20U);
  for (std::size_t size; (size = std::fread(block.data(), 1, block.size(), file.get())) > 0;) {
    if (content.size() + size > kLargest) return std::nullopt;
    content.append(block.data(), size);
  }
  return content;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments = platform::StartConsoleProgram(argc, argv);
  if (arguments.size() != 2) {
    std::fprintf(stderr, "usage: scorvane-mdbread FILE\n");
    return 2;
  }
  try {
    std::optional<jet::Buffer> content = ReadWhole(arguments[1]);
    if (!content) return 1;
    WriteFile(jet::JetFile(std::move(*content)));
    return std::fflush(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "scorvane-mdbread: %s\n", error.what());
    return 1;
  }
}
