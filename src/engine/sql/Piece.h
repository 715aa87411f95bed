// A translated expression and its type; and the forms in which the store is given it.
#pragma once

#include <string>

#include "engine/Schema.h"
#include "engine/Value.h"
#include "engine/sql/Translator.h"

namespace scorvane::engine::sql {

struct Piece {
  std::string sql;
  SqlType type = SqlType::Unknown;
  bool condition = false;  // yields 1 and 0, not yet -1 and 0
  bool collated = false;   // a text that brings its collation: a field, or one that was given it
  bool leaf = false;       // a parameter, a field or a constant: short enough to stand twice
};

Piece ConditionPiece(std::string sql);
Piece ValuePiece(std::string sql, SqlType type);
Piece LeafPiece(std::string sql, SqlType type);

SqlType TypeOfField(FieldType type);
SqlType TypeOfValue(Value::Type type);
bool IsNumeric(SqlType type);  // dates are numbers, too
bool IsWhole(SqlType type);    // Boolean or Long
// What + - * give.
SqlType ArithmeticType(SqlType a, SqlType b);
// The type that two alternatives share.
SqlType CommonType(SqlType a, SqlType b);

std::string AsValue(Piece piece);
std::string AsCondition(Piece piece);
std::string AsNumber(Piece piece);
// For a function of ours, with the type that the store does not know.
std::string AsArgument(Piece piece);
// As the user writes it: a Single with the digits that it has, a date as a date.
std::string AsText(Piece piece);
// A value that sorts and compares as it should.
std::string AsCollated(Piece piece);

}  // namespace scorvane::engine::sql
