// How large a statement may be. A statement may come out of a stranger's file, so that whatever grows with it
// - the stack, the text for the store, the store's own work on that text - has its bound here.
#pragma once

#include <cstddef>

namespace scorvane::engine::sql {

// Words, literals and symbols of a statement.
inline constexpr std::size_t kMaxTokens = 60'000;
// How deep expressions, joins and subqueries may nest.
inline constexpr int kMaxDepth = 120;
// How many terms a chain of operators of one strength may have: printed with all its brackets it still
// parses.
inline constexpr int kMaxTerms = 100;
// Values behind an IN, and SELECTs of a UNION.
inline constexpr std::size_t kMaxListItems = 10'000;
inline constexpr std::size_t kMaxUnionSelects = 50;
// Columns of a result, terms of a GROUP BY or an ORDER BY; tables and subqueries of one FROM.
inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxSources = 32;
// How deep the translation may go, which follows an alias into the expression that it stands for.
inline constexpr int kMaxTranslationDepth = 250;
// Characters that the translation may write, with all that it writes again on the way.
inline constexpr std::size_t kMaxWritten = 4'000'000;

}  // namespace scorvane::engine::sql
