// The engine's own tables in a file, which TableDefs does not show.
#pragma once

struct sqlite3_stmt;

#include "engine/DatabaseImpl.h"

namespace scorvane::engine {

inline constexpr const char* kSystemTables =
    "CREATE TABLE sv_info (name TEXT PRIMARY KEY, value TEXT);"
    "CREATE TABLE sv_field (table_name TEXT, place INTEGER, name TEXT, type INTEGER, size INTEGER, "
    "attributes INTEGER,"
    " required INTEGER, zero_length INTEGER, default_value TEXT, PRIMARY KEY (table_name, place));"
    "CREATE TABLE sv_index (table_name TEXT, place INTEGER, name TEXT, is_primary INTEGER, is_unique INTEGER,"
    " required INTEGER, fields TEXT, PRIMARY KEY (table_name, place));"
    "CREATE TABLE sv_relation (name TEXT PRIMARY KEY, table_name TEXT, foreign_table TEXT, attributes "
    "INTEGER,"
    " field TEXT, foreign_field TEXT);";

inline constexpr char kFieldSeparator = '\n';  // between the fields of an index in sv_index
inline constexpr int kMostFields = 255;

// Steps a statement that yields no rows that anybody wants.
void StepToEnd(Database::Impl& impl, sqlite3_stmt* statement);

}  // namespace scorvane::engine
