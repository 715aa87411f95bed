#include "engine/ChangeRecord.h"

#include <sqlite3.h>

#include <cstring>

#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

constexpr std::uint64_t kVersion = 1;
enum Tag : char { kNull, kInteger, kReal, kText, kBlob };

void PackNumber(std::string& packed, std::uint64_t number) {
  while (number >= 0x80U) {
    packed += static_cast<char>((number & 0x7FU) | 0x80U);
    number >>= 7U;
  }
  packed += static_cast<char>(number);
}

// Small numbers of either sign take few bytes.
void PackSigned(std::string& packed, std::int64_t number) {
  PackNumber(packed, static_cast<std::uint64_t>(number) << 1U ^ static_cast<std::uint64_t>(number >> 63));
}

void PackFixed(std::string& packed, std::uint64_t bits) {
  char bytes[sizeof bits];
  std::memcpy(bytes, &bits, sizeof bits);
  packed.append(bytes, sizeof bits);
}

void PackText(std::string& packed, std::string_view text) {
  PackNumber(packed, text.size());
  packed += text;
}

// Reads what was packed; a damaged file must not lead it beyond the end.
class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : rest_(bytes) {}

  bool AtEnd() const { return rest_.empty(); }
  std::uint64_t Number() {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const auto byte = static_cast<unsigned char>(Take(1)[0]);
      number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
      if ((byte & 0x80U) == 0) return number;
    }
    Fail();
  }
  std::int64_t Signed() {
    const std::uint64_t number = Number();
    return static_cast<std::int64_t>(number >> 1U) ^ -static_cast<std::int64_t>(number & 1U);
  }
  std::uint64_t Fixed() {
    std::uint64_t bits = 0;
    std::memcpy(&bits, Take(sizeof bits).data(), sizeof bits);
    return bits;
  }
  std::string_view Text() { return Take(Number()); }
  char Byte() { return Take(1)[0]; }
  // A number of things, each of which takes at least a byte.
  std::size_t Count() {
    const std::uint64_t count = Number();
    if (count > rest_.size()) Fail();
    return static_cast<std::size_t>(count);
  }
  [[noreturn]] static void Fail() { throw EngineError(kDatabaseDamaged, "the history"); }

 private:
  std::string_view Take(std::uint64_t size) {
    if (size > rest_.size()) Fail();
    const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(size));
    rest_.remove_prefix(static_cast<std::size_t>(size));
    return taken;
  }

  std::string_view rest_;
};

}  // namespace

std::string PackRecord(const std::vector<TableRecord>& tables) {
  std::string packed;
  PackNumber(packed, kVersion);
  PackNumber(packed, tables.size());
  for (const TableRecord& table : tables) {
    PackText(packed, table.name);
    PackNumber(packed, table.columns.size());
    for (const std::string& column : table.columns) PackText(packed, column);
    packed += table.checked ? '\1' : '\0';
    PackFixed(packed, table.checksum);
    PackNumber(packed, table.inserted.size());
    for (const KeyRange& range : table.inserted) {
      PackSigned(packed, range.first);
      PackNumber(packed, static_cast<std::uint64_t>(range.last - range.first));
    }
    PackNumber(packed, table.old.size());
    for (const OldRow& row : table.old) {
      PackSigned(packed, row.key);
      packed += row.existsNow ? '\1' : '\0';
      PackText(packed, row.values);
    }
  }
  return packed;
}

std::vector<TableRecord> UnpackRecord(std::string_view record) {
  Unpacker bytes(record);
  if (bytes.Number() != kVersion) Unpacker::Fail();
  std::vector<TableRecord> tables(bytes.Count());
  for (TableRecord& table : tables) {
    table.name = bytes.Text();
    table.columns.resize(bytes.Count());
    for (std::string& column : table.columns) column = bytes.Text();
    table.checked = bytes.Byte() != 0;
    table.checksum = bytes.Fixed();
    table.inserted.resize(bytes.Count());
    for (KeyRange& range : table.inserted) {
      range.first = bytes.Signed();
      range.last = static_cast<std::int64_t>(static_cast<std::uint64_t>(range.first) + bytes.Number());
    }
    table.old.resize(bytes.Count());
    for (OldRow& row : table.old) {
      row.key = bytes.Signed();
      row.existsNow = bytes.Byte() != 0;
      row.values = bytes.Text();
    }
  }
  if (!bytes.AtEnd()) Unpacker::Fail();
  return tables;
}

void PackValue(std::string& packed, sqlite3_value* value) {
  switch (value == nullptr ? SQLITE_NULL : sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      packed.push_back(kInteger);
      PackSigned(packed, sqlite3_value_int64(value));
      break;
    case SQLITE_FLOAT: {
      const double number = sqlite3_value_double(value);
      std::uint64_t bits = 0;
      std::memcpy(&bits, &number, sizeof bits);
      packed.push_back(kReal);
      PackFixed(packed, bits);
      break;
    }
    case SQLITE_TEXT:
    case SQLITE_BLOB: {
      packed.push_back(sqlite3_value_type(value) == SQLITE_TEXT ? kText : kBlob);
      const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
      const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
      PackText(packed, bytes == nullptr ? std::string_view() : std::string_view(bytes, size));
      break;
    }
    default:
      packed.push_back(kNull);
  }
}

void BindPacked(sqlite3_stmt* statement, int first, std::string_view values) {
  Unpacker bytes(values);
  for (int place = first; !bytes.AtEnd(); ++place) {
    int code = SQLITE_OK;
    switch (bytes.Byte()) {
      case kNull:
        code = sqlite3_bind_null(statement, place);
        break;
      case kInteger:
        code = sqlite3_bind_int64(statement, place, bytes.Signed());
        break;
      case kReal: {
        const std::uint64_t bits = bytes.Fixed();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        code = sqlite3_bind_double(statement, place, number);
        break;
      }
      case kText: {
        const std::string_view text = bytes.Text();
        code = sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        break;
      }
      case kBlob: {
        const std::string_view blob = bytes.Text();
        code = sqlite3_bind_blob(statement, place, blob.data(), static_cast<int>(blob.size()), SQLITE_STATIC);
        break;
      }
      default:
        Unpacker::Fail();
    }
    // The statement may leave the last columns out.
    if (code != SQLITE_OK && code != SQLITE_RANGE) Unpacker::Fail();
  }
}

}  // namespace scorvane::engine
