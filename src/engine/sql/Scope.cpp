#include "engine/sql/Scope.h"

#include <fmt/format.h>

#include <algorithm>

#include "engine/EngineError.h"
#include "engine/Names.h"
#include "engine/sql/Expressions.h"
#include "engine/sql/Queries.h"

namespace scorvane::engine::sql {
namespace {

constexpr const char* kKeyName = "sv_key";

void AddScopeSource(Translation& t, ScopeSource added, Scope& scope, int position) {
  for (const ScopeSource& source : scope.sources)
    if (SameName(source.name, added.name))
      throw EngineError(kSyntaxError, fmt::format("'{}' stands twice after FROM", added.name), {}, position);
  if (scope.sources.size() >= kMaxSources)
    throw EngineError(kTooComplex, "FROM names too many tables", {}, position);
  added.store = t.NextSourceName();
  scope.sources.push_back(std::move(added));
}

FromNode AddTable(Translation& t, const Source& source, Scope& scope, bool nested) {
  const TableDef& table = t.NeedTable(source.name, source.position);
  ScopeSource added;
  added.name = source.alias.empty() ? table.Name : source.alias;
  added.table = &table;
  added.body = StoreName(table.Name);
  added.nested = nested;
  for (const Field& field : table.Fields)
    added.columns.push_back({field.Name, StoreName(field.Name), TypeOfField(field.Type)});
  AddScopeSource(t, std::move(added), scope, source.position);
  FromNode node;
  node.source = scope.sources.size() - 1;
  return node;
}

FromNode AddSubquery(Translation& t, const Source& source, Scope& scope, bool nested) {
  if (source.alias.empty())
    throw EngineError(kSyntaxError, "a subquery after FROM needs a name", {}, source.position);
  std::vector<Output> outputs;
  ScopeSource added;
  added.name = source.alias;
  added.nested = nested;
  // A derived table sees nothing of the query around it.
  added.body = "(" + QuerySql(t, *source.query, nullptr, outputs, true) + ")";
  for (std::size_t i = 0; i < outputs.size(); ++i)
    added.columns.push_back({outputs[i].column.name, OutputName(i), outputs[i].column.type});
  AddScopeSource(t, std::move(added), scope, source.position);
  FromNode node;
  node.source = scope.sources.size() - 1;
  return node;
}

FromNode AddSource(Translation& t, const Source& source, Scope& scope, bool nested) {
  const Translation::Deeper deeper(t, source.position);
  if (source.kind == Source::Kind::Table) return AddTable(t, source, scope, nested);
  if (source.kind == Source::Kind::Subquery) return AddSubquery(t, source, scope, nested);
  FromNode node;
  node.join = source.join;
  node.left = std::make_unique<FromNode>(AddSource(t, *source.left, scope, nested));
  {
    const bool bracketed = source.right->kind == Source::Kind::Join;
    const Temporarily visible(scope.visibleFrom, bracketed ? scope.sources.size() : scope.visibleFrom);
    node.right = std::make_unique<FromNode>(AddSource(t, *source.right, scope, nested || bracketed));
  }
  node.on = AsCondition(TranslateExpr(t, *source.on, scope));
  return node;
}

void WriteFrom(const Scope& scope, const FromNode& node, std::string& text) {
  if (node.left) {
    text += "(";
    WriteFrom(scope, *node.left, text);
    text += node.join == Source::JoinType::Inner  ? " INNER JOIN "
            : node.join == Source::JoinType::Left ? " LEFT JOIN "
                                                  : " RIGHT JOIN ";
    WriteFrom(scope, *node.right, text);
    text += " ON " + node.on + ")";
    return;
  }
  const ScopeSource& source = scope.sources[node.source];
  if (source.keyed && source.table == nullptr) {
    text += fmt::format("(SELECT *, row_number() OVER () AS {} FROM {})", kKeyName, source.body);
  } else if (source.keyed && source.nested) {
    text += fmt::format("(SELECT *, _rowid_ AS {} FROM {})", kKeyName, source.body);
  } else {
    text += source.body;
  }
  text += " AS " + source.store;
}

}  // namespace

const ScopeColumn* ScopeSource::FindColumn(std::string_view column) const {
  auto found = std::find_if(columns.begin(), columns.end(),
                            [&](const ScopeColumn& candidate) { return SameName(candidate.name, column); });
  return found == columns.end() ? nullptr : &*found;
}

std::string ScopeSource::KeyText() {
  keyed = true;
  return store + "." + (nested || table == nullptr ? kKeyName : "_rowid_");
}

void AddSources(Translation& t, const std::vector<SourcePtr>& sources, Scope& scope) {
  for (const SourcePtr& source : sources) {
    // Behind a comma the brackets of a join count for the store.
    const bool bracketed = source->kind == Source::Kind::Join && !scope.from.empty();
    const Temporarily visible(scope.visibleFrom, bracketed ? scope.sources.size() : scope.visibleFrom);
    scope.from.push_back(AddSource(t, *source, scope, bracketed));
  }
}

std::string FromText(const Scope& scope) {
  std::string text;
  for (const FromNode& node : scope.from) {
    text += text.empty() ? " FROM " : ", ";
    WriteFrom(scope, node, text);
  }
  return text;
}

std::optional<Resolved> Resolve(const Expr& column, Scope& scope) {
  for (Scope* level = &scope; level != nullptr; level = level->parent) {
    std::optional<Resolved> found;
    for (std::size_t i = level->visibleFrom; i < level->sources.size(); ++i) {
      const ScopeSource& source = level->sources[i];
      if (!column.qualifier.empty() && !SameName(source.name, column.qualifier)) continue;
      const ScopeColumn* candidate = source.FindColumn(column.name);
      if (candidate == nullptr) continue;
      if (found) throw EngineError(kAmbiguousField, column.name, {}, column.position);
      found = Resolved{level, i, static_cast<std::size_t>(candidate - source.columns.data()), nullptr};
    }
    if (found) return found;
    if (!column.qualifier.empty() || level->select == nullptr) continue;
    for (const SelectItem& item : level->select->items)
      if (!item.alias.empty() && SameName(item.alias, column.name)) return Resolved{level, 0, 0, &item};
  }
  return std::nullopt;
}

Piece FieldPiece(const Translation& t, const ScopeSource& source, const ScopeColumn& column) {
  Piece piece = LeafPiece(source.store + "." + column.store, column.type);
  piece.collated = column.type == SqlType::Text;
  // The + keeps the store from walking or asking an index.
  if (piece.collated && t.GetCatalog().HasOutdatedIndexes()) piece.sql = "(+" + piece.sql + ")";
  return piece;
}

Piece TranslateColumn(Translation& t, const Expr& column, Scope& scope) {
  const std::optional<Resolved> found = Resolve(column, scope);
  if (!found) {
    if (column.qualifier.empty()) {
      if (SameName(column.name, "Yes") || SameName(column.name, "On"))
        return LeafPiece("(-1)", SqlType::Boolean);
      if (SameName(column.name, "No") || SameName(column.name, "Off"))
        return LeafPiece("0", SqlType::Boolean);
    }
    t.AddUnknown(column);
    return LeafPiece("NULL", SqlType::Unknown);
  }
  Scope& level = *found->level;
  if (found->alias == nullptr) {
    if (level.checksGroups) throw EngineError(kNotAggregate, Print(column), {}, column.position);
    level.used.insert(found->source);
    const ScopeSource& source = level.sources[found->source];
    return FieldPiece(t, source, source.columns[found->column]);
  }
  for (const std::string& open : level.openAliases)
    if (SameName(open, column.name)) throw EngineError(kCircularAlias, column.name, {}, column.position);
  level.openAliases.push_back(column.name);
  Piece piece = TranslateExpr(t, *found->alias->expr, level);
  level.openAliases.pop_back();
  if (!piece.leaf) piece.sql = "(" + piece.sql + ")";
  return piece;
}

}  // namespace scorvane::engine::sql
