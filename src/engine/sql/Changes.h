// Statements that change data. Rows are chosen, and their new values worked out, before the first one
// changes.
#pragma once

#include "engine/sql/Translation.h"

namespace scorvane::engine::sql {

void TranslateInsert(Translation& t, const Statement& statement);
void TranslateUpdate(Translation& t, const Statement& statement);
void TranslateDelete(Translation& t, const Statement& statement);

}  // namespace scorvane::engine::sql
