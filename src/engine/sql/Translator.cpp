#include "engine/sql/Translator.h"

#include <algorithm>

#include "engine/Names.h"
#include "engine/sql/Changes.h"
#include "engine/sql/Queries.h"

namespace scorvane::engine::sql {

std::shared_ptr<const StoreTarget> TargetFor(const TableDef& table, const Field& field) {
  auto target = std::make_shared<StoreTarget>();
  target->field = field;
  target->label = table.Name + "." + field.Name;
  for (const Index& index : table.Indexes) {
    const bool named = std::any_of(index.Fields.begin(), index.Fields.end(),
                                   [&](const std::string& name) { return SameName(name, field.Name); });
    if (named && (index.Required || index.Primary)) target->nullForbidden = true;
  }
  return target;
}

Plan Translate(const Statement& statement, Catalog& catalog, bool dynaset) {
  Translation t(catalog);
  t.plan.kind = statement.kind;
  t.plan.needsLiterals = statement.needsLiterals;
  switch (statement.kind) {
    case Statement::Kind::Query:
      TranslateQuery(t, *statement.query, dynaset);
      break;
    case Statement::Kind::Insert:
      TranslateInsert(t, statement);
      break;
    case Statement::Kind::Update:
      TranslateUpdate(t, statement);
      break;
    case Statement::Kind::Delete:
      TranslateDelete(t, statement);
      break;
  }
  t.ThrowUnknown();
  return std::move(t.plan);
}

}  // namespace scorvane::engine::sql
