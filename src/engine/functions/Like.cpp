#include "engine/functions/Like.h"

#include <cstdint>

#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

// Characters looked at for one answer: a tenth of a second's work, and a thousand times what any name needs.
constexpr std::int64_t kMostSteps = 30'000'000;

// [a-z], [!a-z], [*]: the set that begins behind the bracket at `at`; moves `at` behind the closing bracket.
bool InSet(const std::u32string& pattern, std::size_t& at, char32_t c) {
  bool negated = false;
  bool found = false;
  if (at < pattern.size() && pattern[at] == U'!') {
    negated = true;
    ++at;
  }
  while (at < pattern.size() && pattern[at] != U']') {
    if (at + 2 < pattern.size() && pattern[at + 1] == U'-' && pattern[at + 2] != U']') {
      found = found || (c >= pattern[at] && c <= pattern[at + 2]);
      at += 3;
    } else {
      found = found || c == pattern[at];
      ++at;
    }
  }
  if (at < pattern.size()) ++at;
  return found != negated;
}

bool MatchesOne(const std::u32string& pattern, std::size_t& at, char32_t c) {
  const char32_t p = pattern[at++];
  if (p == U'?') return true;
  if (p == U'#') return c >= U'0' && c <= U'9';
  if (p == U'[') return InSet(pattern, at, c);
  return p == c;
}

// "[]" stands for nothing.
void SkipEmptySets(const std::u32string& pattern, std::size_t& at) {
  while (at + 1 < pattern.size() && pattern[at] == U'[' && pattern[at + 1] == U']') at += 2;
}

}  // namespace

bool MatchesPattern(const std::u32string& text, const std::u32string& pattern) {
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t starPattern = std::u32string::npos;
  std::size_t starText = 0;
  std::int64_t steps = 0;
  while (t < text.size()) {
    SkipEmptySets(pattern, p);
    if (p < pattern.size() && pattern[p] == U'*') {
      starPattern = ++p;
      starText = t;
      // Nothing can fail behind the last star.
      if (p == pattern.size()) return true;
      continue;
    }
    std::size_t next = p;
    const bool matches = p < pattern.size() && MatchesOne(pattern, next, text[t]);
    // A set counts for all of its characters.
    steps += 1 + static_cast<std::int64_t>(next - p);
    if (steps > kMostSteps) throw EngineError(kTooComplex, "a pattern of Like takes too long on a long text");
    if (matches) {
      p = next;
      ++t;
      continue;
    }
    if (starPattern == std::u32string::npos) return false;
    p = starPattern;
    t = ++starText;
  }
  SkipEmptySets(pattern, p);
  while (p < pattern.size() && pattern[p] == U'*') {
    ++p;
    SkipEmptySets(pattern, p);
  }
  return p == pattern.size();
}

}  // namespace scorvane::engine
