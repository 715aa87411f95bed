// Values on their way into SQL text, and small questions to a database.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/Database.h"

namespace scorvane::common {

// A text as an SQL literal: NULL when it is empty or blank, else between apostrophes with its own apostrophes
// doubled and every vertical bar taken out of the literal.
std::string QuoteSQL(std::string_view text);
// A text as it is between apostrophes, its own apostrophes doubled: an empty one stays a text.
void AppendLiteral(std::string& sql, std::string_view text);
// A whole number's digits.
void AppendNumber(std::string& sql, std::int64_t number);
// What QuoteSQL yields, written to the end of a statement.
void AppendQuoted(std::string& sql, std::string_view text);
// A value's text, numbers in the user's decimal notation; Null gives NULL.
std::string QuoteSQL(const engine::Value& value, char decimal);

// The highest value of a field, 0 in an empty table: the key of the row just inserted. Throws EngineError.
std::int32_t GetMaxID(engine::Database& database, std::string_view table, std::string_view field);

// Stores the points of a bonus rule; false on any error.
bool SetBonusPoints(engine::Database& database, std::int32_t bonusId, std::int32_t points);

bool FieldExists(const engine::Database& database, std::string_view table, std::string_view field);
bool TableExists(const engine::Database& database, std::string_view table);

std::string NullToText(const engine::Value& value, std::string_view fallback, char decimal);

}  // namespace scorvane::common
