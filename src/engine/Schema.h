// What a database says of itself: tables, fields, indexes, relations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace scorvane::engine {

// The codes are the ones that league files carry.
enum class FieldType : std::uint8_t {
  Boolean = 1,
  Byte = 2,
  Integer = 3,  // 16 bits
  Long = 4,     // 32 bits
  Single = 6,
  Double = 7,
  Date = 8,
  Text = 10,
  Memo = 12,
};

enum FieldAttribute : int { kFixedField = 1, kVariableField = 2, kAutoIncrField = 16 };
enum RelationAttribute : int { kUpdateCascade = 256, kDeleteCascade = 4096 };

struct Field {
  std::string Name;
  FieldType Type = FieldType::Text;
  int Size = 0;        // characters of a Text, bytes of a number; 0 takes the type's own
  int Attributes = 0;  // FieldAttribute; 0 takes the type's own
  bool Required = false;
  bool AllowZeroLength = false;
  std::string DefaultValue;  // a literal, empty for none

  bool IsCounter() const { return (Attributes & kAutoIncrField) != 0; }
};

struct Index {
  std::string Name;
  std::vector<std::string> Fields;  // ascending
  bool Primary = false;
  bool Unique = false;
  bool Required = false;
};

struct TableDef {
  std::string Name;
  std::vector<Field> Fields;
  std::vector<Index> Indexes;

  // By name, without regard to case; null when there is none.
  const Field* FindField(std::string_view name) const;
  const Index* FindIndex(std::string_view name) const;
};

struct Relation {
  std::string Name;
  std::string Table;         // the one side
  std::string ForeignTable;  // the many side
  int Attributes = 0;        // RelationAttribute
  std::string FieldName;
  std::string ForeignName;
};

}  // namespace scorvane::engine
