// Patterns: "*" any characters, "?" one, "#" a digit, [a-z] one of a set, [!a-z] one outside it.
#pragma once

#include <string>

namespace scorvane::engine {

// Whether the whole text is what the pattern describes; both with their letters' case folded. Throws
// EngineError 3360 when the answer takes too long.
bool MatchesPattern(const std::u32string& text, const std::u32string& pattern);

}  // namespace scorvane::engine
