#include "common/SqlText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <exception>

#include <fmt/format.h>

namespace scorvane::common {

void AppendNumber(std::string& sql, std::int64_t number) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  sql.append(digits.data(), end.ptr);
}

void AppendLiteral(std::string& sql, std::string_view text) {
  sql += '\'';
  for (const char c : text) sql.append(c == '\'' ? 2 : 1, c);
  sql += '\'';
}

void AppendQuoted(std::string& sql, std::string_view text) {
  if (text.find_first_not_of(' ') == std::string_view::npos) {
    sql += "NULL";
    return;
  }
  sql += '\'';
  while (true) {
    const auto special = std::min(text.find_first_of("'|"), text.size());
    sql.append(text, 0, special);
    if (special == text.size()) break;
    sql += text[special] == '\'' ? "''" : "' & Chr(124) & '";
    text.remove_prefix(special + 1);
  }
  sql += '\'';
}

std::string QuoteSQL(std::string_view text) {
  std::string quoted;
  quoted.reserve(text.size() + 2);
  AppendQuoted(quoted, text);
  return quoted;
}

std::string QuoteSQL(const engine::Value& value, char decimal) {
  return value.IsText() ? QuoteSQL(std::string_view(value.Text()))
                        : QuoteSQL(std::string_view(value.ToText(decimal)));
}

std::int32_t GetMaxID(engine::Database& database, std::string_view table, std::string_view field) {
  const auto rows = database.OpenRecordset(fmt::format("SELECT Max([{}]) As MaxID FROM [{}]", field, table),
                                           engine::RecordsetType::ForwardOnly);
  const engine::Value& highest = rows["MaxID"];
  return highest.IsNull() ? 0 : highest.ToLong();
}

bool SetBonusPoints(engine::Database& database, std::int32_t bonusId, std::int32_t points) {
  try {
    database.Execute(fmt::format("UPDATE Bonus SET Points={} WHERE BonusID={}", points, bonusId));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool FieldExists(const engine::Database& database, std::string_view table, std::string_view field) {
  const engine::TableDef* found = database.FindTableDef(table);
  return found != nullptr && found->FindField(field) != nullptr;
}

bool TableExists(const engine::Database& database, std::string_view table) {
  return database.FindTableDef(table) != nullptr;
}

std::string NullToText(const engine::Value& value, std::string_view fallback, char decimal) {
  return value.IsNull() ? std::string(fallback) : value.ToText(decimal);
}

}  // namespace scorvane::common
