// From a statement's tree to the text that the store runs. Names are resolved against the schema, every
// expression is given a type, and where the store alone would answer differently the text says so in full:
// True is -1, texts compare by the league's collation, values are converted to the fields that they go into.
//
// The rooms behind this door work on one Translation: Scope (tables and names), Piece (types and their
// conversions), Expressions, Calls, Grouping, Queries, Changes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/Conversion.h"
#include "engine/Schema.h"
#include "engine/sql/Tree.h"

namespace scorvane::engine::sql {

// The schema as the translator sees it.
class Catalog {
 public:
  virtual ~Catalog() = default;
  virtual const TableDef* FindTable(std::string_view name) const = 0;
  // The number under which an sv_store call finds a target.
  virtual int AddTarget(std::shared_ptr<const StoreTarget> target) = 0;
  // True when the file's indexes were made under other rules of order and cannot be made anew.
  virtual bool HasOutdatedIndexes() const { return false; }
};

// A value of a result column. Unknown: as the store returns it.
enum class SqlType : std::uint8_t { Unknown, Null, Boolean, Long, Single, Double, Date, Text };

struct PlanColumn {
  std::string name;
  SqlType type = SqlType::Unknown;
  std::string field;  // of a dynaset: the table's field that it shows; empty for a computed column
};

// A parameter of the prepared statement, in the order of its number.
struct PlanParam {
  int literal = -1;  // of the statement; -1: `fixed`
  bool negate = false;
  Value fixed;
  std::shared_ptr<const StoreTarget>
      target;  // converted for this field when it is bound; null: bound as it is
};

struct Plan {
  Statement::Kind kind = Statement::Kind::Query;
  std::string sql;
  std::vector<PlanParam> params;
  std::vector<PlanColumn> columns;  // of a query

  // Of a dynaset: the table whose row key is the last result column, and the text that reads one of its rows
  // again. Its last parameter is the key.
  std::string keyTable;
  std::string rowSql;
  int rowKeyParam = 0;

  std::string table;         // of an Insert, Update or Delete: whose rows change
  bool usesCounter = false;  // an Insert that lets the table count
  bool setsCounter = false;  // an Update that changes a counter
  bool totals = false;       // has a Sum or an Abs, which can overflow in the store

  // An INSERT into another database: `sql` and `columns` are its SELECT.
  std::string inPath;
  std::string inTable;
  std::vector<std::string> inColumns;

  bool needsLiterals = false;  // holds for this text only, not for every statement of its shape
};

// How a field takes its values.
std::shared_ptr<const StoreTarget> TargetFor(const TableDef& table, const Field& field);

// `dynaset` asks for a query whose rows can be edited. Throws EngineError.
Plan Translate(const Statement& statement, Catalog& catalog, bool dynaset);

}  // namespace scorvane::engine::sql
