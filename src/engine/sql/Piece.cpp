#include "engine/sql/Piece.h"

#include <fmt/format.h>

#include "engine/Collation.h"

namespace scorvane::engine::sql {

Piece ConditionPiece(std::string sql) {
  return {std::move(sql), SqlType::Boolean, true, false, false};
}
Piece ValuePiece(std::string sql, SqlType type) {
  return {std::move(sql), type, false, false, false};
}
Piece LeafPiece(std::string sql, SqlType type) {
  return {std::move(sql), type, false, false, true};
}

SqlType TypeOfField(FieldType type) {
  switch (type) {
    case FieldType::Boolean:
      return SqlType::Boolean;
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
      return SqlType::Long;
    case FieldType::Single:
      return SqlType::Single;
    case FieldType::Double:
      return SqlType::Double;
    case FieldType::Date:
      return SqlType::Date;
    case FieldType::Text:
    case FieldType::Memo:
      return SqlType::Text;
  }
  return SqlType::Unknown;
}

SqlType TypeOfValue(Value::Type type) {
  switch (type) {
    case Value::Type::Null:
      return SqlType::Unknown;
    case Value::Type::Boolean:
      return SqlType::Boolean;
    case Value::Type::Long:
      return SqlType::Long;
    case Value::Type::Single:
      return SqlType::Single;
    case Value::Type::Double:
      return SqlType::Double;
    case Value::Type::Date:
      return SqlType::Date;
    case Value::Type::Text:
      return SqlType::Text;
  }
  return SqlType::Unknown;
}

bool IsNumeric(SqlType type) {
  return IsWhole(type) || type == SqlType::Single || type == SqlType::Double || type == SqlType::Date;
}

bool IsWhole(SqlType type) {
  return type == SqlType::Boolean || type == SqlType::Long;
}

SqlType ArithmeticType(SqlType a, SqlType b) {
  if (a == SqlType::Date || b == SqlType::Date) return a == b ? SqlType::Double : SqlType::Date;
  if (IsWhole(a) && IsWhole(b)) return SqlType::Long;
  return a == SqlType::Single && b == SqlType::Single ? SqlType::Single : SqlType::Double;
}

SqlType CommonType(SqlType a, SqlType b) {
  if (a == b || b == SqlType::Null) return a;
  if (a == SqlType::Null) return b;
  if (IsNumeric(a) && IsNumeric(b)) return ArithmeticType(a, b);
  return SqlType::Unknown;
}

std::string AsValue(Piece piece) {
  // A condition brings its brackets.
  return piece.condition ? "(-" + piece.sql + ")" : std::move(piece.sql);
}

std::string AsCondition(Piece piece) {
  if (piece.type == SqlType::Text || piece.type == SqlType::Unknown) return "sv_cbool(" + piece.sql + ")";
  return std::move(piece.sql);
}

std::string AsNumber(Piece piece) {
  if (IsNumeric(piece.type)) return AsValue(std::move(piece));
  return "sv_number(" + piece.sql + ")";
}

std::string AsArgument(Piece piece) {
  if (piece.type == SqlType::Date) return "sv_as_date(" + piece.sql + ")";
  if (piece.type == SqlType::Single) return "sv_as_single(" + piece.sql + ")";
  return AsValue(std::move(piece));
}

std::string AsText(Piece piece) {
  if (piece.type == SqlType::Text) return std::move(piece.sql);
  return "sv_cstr(" + AsArgument(std::move(piece)) + ")";
}

std::string AsCollated(Piece piece) {
  const bool needed = (piece.type == SqlType::Text || piece.type == SqlType::Unknown) && !piece.collated;
  std::string sql = AsValue(std::move(piece));
  return needed ? fmt::format("({} COLLATE {})", sql, kCollationName) : sql;
}

}  // namespace scorvane::engine::sql
