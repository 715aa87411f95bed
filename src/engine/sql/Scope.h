// The tables and subqueries that a part of a statement sees, under names of our own: what a statement calls
// its tables, fields and aliases never reaches the store, so that no name of an inner query can capture one
// of an outer query.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/sql/Piece.h"
#include "engine/sql/Translation.h"

namespace scorvane::engine::sql {

struct ScopeColumn {
  std::string name;
  std::string store;  // how the store finds it in its source
  SqlType type = SqlType::Unknown;
};

struct ScopeSource {
  std::string name;                 // the alias, or the table's name
  std::string store;                // our name for it
  std::string body;                 // what stands for it behind FROM
  const TableDef* table = nullptr;  // null for a subquery
  std::vector<ScopeColumn> columns;
  bool nested = false;  // in brackets on the right of a join, where the store knows no row keys
  bool keyed = false;   // its row key is asked for

  const ScopeColumn* FindColumn(std::string_view column) const;
  // The text of its row key. Ask before FromText writes the source.
  std::string KeyText();
};

// A join of two others, or one source.
struct FromNode {
  std::size_t source = 0;
  Source::JoinType join = Source::JoinType::Inner;
  std::unique_ptr<FromNode> left;
  std::unique_ptr<FromNode> right;
  std::string on;
};

struct Scope {
  Scope* parent = nullptr;
  std::vector<ScopeSource> sources;
  std::vector<FromNode> from;
  std::size_t visibleFrom = 0;           // brackets see only the sources in them
  const Select* select = nullptr;        // whose aliases may be named
  std::vector<std::string> openAliases;  // being resolved, to find circles
  bool grouped = false;                  // GROUP BY or an aggregate somewhere
  bool checksGroups = false;             // a field must be grouped where the translation stands
  bool inAggregate = false;
  bool allowsAggregates = false;  // in the columns, the HAVING and the ORDER BY
  std::set<std::size_t> used;     // sources whose fields were taken
  std::set<std::size_t> shown;    // those that the columns of the result were taken from

  // True when a field must be grouped here or in a query around.
  bool ChecksGroups() const { return checksGroups || (parent != nullptr && parent->ChecksGroups()); }
  // True when it is one table, whose rows have an order of their own.
  bool IsOneTable() const { return sources.size() == 1 && sources[0].table != nullptr; }
};

// What a column of the tree means: a field of a source, or the expression that an alias stands for.
struct Resolved {
  Scope* level = nullptr;
  std::size_t source = 0;
  std::size_t column = 0;
  const SelectItem* alias = nullptr;
};

void AddSources(Translation& t, const std::vector<SourcePtr>& sources, Scope& scope);
// The text behind FROM; empty without sources.
std::string FromText(const Scope& scope);

// Nothing when there is no such name. Throws EngineError 3079 for one that could be two fields.
std::optional<Resolved> Resolve(const Expr& column, Scope& scope);
// Unknown fields are noted in `t` and stand as Null.
Piece TranslateColumn(Translation& t, const Expr& column, Scope& scope);
Piece FieldPiece(const Translation& t, const ScopeSource& source, const ScopeColumn& column);

}  // namespace scorvane::engine::sql
