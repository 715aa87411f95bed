// Functions of texts. Places and lengths count characters, from 1.
#include <algorithm>
#include <vector>

#include "engine/Collation.h"
#include "engine/EngineError.h"
#include "engine/Windows1252.h"
#include "engine/functions/Characters.h"
#include "engine/functions/Table.h"

namespace scorvane::engine {
namespace {

constexpr std::size_t kNowhere = std::u32string::npos;

// Finds one text in another in time proportional to their lengths together.
class Searcher {
 public:
  explicit Searcher(std::u32string_view part) : part_(part), fallback_(part.size() + 1) {
    std::size_t matched = 0;
    for (std::size_t i = 1; i < part_.size(); ++i) {
      while (matched > 0 && part_[i] != part_[matched]) matched = fallback_[matched];
      if (part_[i] == part_[matched]) ++matched;
      fallback_[i + 1] = matched;
    }
  }

  // The first place at or behind `from`; kNowhere when there is none.
  std::size_t Find(std::u32string_view text, std::size_t from) const {
    std::size_t matched = 0;
    for (std::size_t i = from; i < text.size(); ++i) {
      while (matched > 0 && text[i] != part_[matched]) matched = fallback_[matched];
      if (text[i] == part_[matched]) ++matched;
      if (matched == part_.size()) return i + 1 - matched;
    }
    return kNowhere;
  }

 private:
  std::u32string_view part_;
  std::vector<std::size_t> fallback_;  // by matched length: the longest shorter one that still matches
};

std::u32string Comparable(const std::string& text, bool binary) {
  return binary ? Characters(text) : FoldCase(text);
}

Value Left(const Args& args) {
  const std::string text = args.Text(0);
  return Value(text.substr(0, Advance(text, 0, args.WholeWithin(1, 0, INT32_MAX))));
}

Value Right(const Args& args) {
  const std::string text = args.Text(0);
  const int skipped = CharacterCount(text) - args.WholeWithin(1, 0, INT32_MAX);
  return Value(text.substr(Advance(text, 0, skipped)));
}

Value Mid(const Args& args) {
  const std::string text = args.Text(0);
  const std::size_t from = Advance(text, 0, args.WholeWithin(1, 1, INT32_MAX) - 1);
  const int length = args.Count() > 2 ? args.WholeWithin(2, 0, INT32_MAX) : INT32_MAX;
  return Value(text.substr(from, Advance(text, from, length) - from));
}

template <bool kLeft, bool kRight>
Value Trimmed(const Args& args) {
  const std::string whole = args.Text(0);
  std::string_view text = whole;
  while (kLeft && !text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (kRight && !text.empty() && text.back() == ' ') text.remove_suffix(1);
  return Value(text);
}

Value InStr(const Args& args) {
  const int first = args.Count() > 2 ? 1 : 0;
  const auto start = static_cast<std::size_t>(first == 1 ? args.WholeWithin(0, 1, INT32_MAX) : 1);
  const bool binary = args.ComparesBinary(3);
  const std::u32string text = Comparable(args.Text(first), binary);
  const std::u32string part = Comparable(args.Text(first + 1), binary);
  if (start > text.size()) return Value(0);
  const std::size_t found = part.empty() ? start - 1 : Searcher(part).Find(text, start - 1);
  return Value(found == kNowhere ? 0 : static_cast<std::int32_t>(found) + 1);
}

// The last place that ends at or before `start`.
Value InStrRev(const Args& args) {
  const int start = args.Whole(2, -1);
  if (start < -1 || start == 0) args.Refuse();
  const bool binary = args.ComparesBinary(3);
  std::u32string text = Comparable(args.Text(0), binary);
  std::u32string part = Comparable(args.Text(1), binary);
  if (text.empty()) return Value(0);
  if (start != -1 && static_cast<std::size_t>(start) > text.size()) return Value(0);
  if (start != -1) text.resize(static_cast<std::size_t>(start));
  if (part.empty()) return Value(static_cast<std::int32_t>(text.size()));
  std::reverse(text.begin(), text.end());
  std::reverse(part.begin(), part.end());
  const std::size_t found = Searcher(part).Find(text, 0);
  return Value(found == kNowhere ? 0 : static_cast<std::int32_t>(text.size() - found - part.size()) + 1);
}

// Replace(text, part, with, start, count, compare); the result begins at `start`.
Value Replace(const Args& args) {
  const int start = args.Count() > 3 ? args.WholeWithin(3, 1, INT32_MAX) : 1;
  int left = args.Count() > 4 ? args.WholeWithin(4, -1, INT32_MAX) : -1;
  const bool binary = args.ComparesBinary(5);
  std::string whole = args.Text(0);
  whole.erase(0, Advance(whole, 0, start - 1));
  const std::u32string part = Comparable(args.Text(1), binary);
  if (part.empty()) return Value(std::move(whole));
  const std::u32string text = Characters(whole);
  const std::u32string comparable = Comparable(whole, binary);
  const std::string with = args.Text(2);
  const Searcher searcher(part);
  std::string result;
  std::size_t from = 0;
  while (left != 0) {
    const std::size_t at = searcher.Find(comparable, from);
    if (at == kNowhere) break;
    result.append(TextOf(std::u32string_view(text).substr(from, at - from))).append(with);
    args.CheckLength(result.size());
    from = at + part.size();
    if (left > 0) --left;
  }
  return args.Bounded(result.append(TextOf(std::u32string_view(text).substr(from))));
}

Value Repeated(const Args& args, int count, std::string_view text) {
  if (count < 0) args.Refuse();
  args.CheckLength(static_cast<std::size_t>(count) * text.size());
  std::string result;
  result.reserve(static_cast<std::size_t>(count) * text.size());
  for (int i = 0; i < count; ++i) result += text;
  return Value(std::move(result));
}

std::string CharacterOfCode(int code) {
  const bool control = code >= 0x80 && code <= 0x9F;
  return TextOf(std::u32string(1, control ? kWindows1252UpperControls[static_cast<std::size_t>(code - 0x80)]
                                          : static_cast<char32_t>(code)));
}

Value String(const Args& args) {
  std::string character;
  if (args.IsText(1)) {
    character = args.Text(1);
    if (character.empty()) args.Refuse();
    character.resize(Advance(character, 0, 1));
  } else {
    character = CharacterOfCode(args.Whole(1) & 0xFF);
  }
  return Repeated(args, args.Whole(0), character);
}

Value Chr(const Args& args) {
  return Value(CharacterOfCode(args.WholeWithin(0, 0, 255)));
}

Value ChrW(const Args& args) {
  int code = args.WholeWithin(0, -32768, 0x10FFFF);
  if (code < 0) code += 0x10000;
  if (code >= 0xD800 && code <= 0xDFFF) args.Refuse();
  return Value(TextOf(std::u32string(1, static_cast<char32_t>(code))));
}

char32_t FirstCharacter(const Args& args) {
  const std::u32string text = Characters(args.Text(0));
  if (text.empty()) args.Refuse();
  return text.front();
}

// What the code page has no byte for counts as "?".
Value Asc(const Args& args) {
  const char32_t character = FirstCharacter(args);
  const auto& controls = kWindows1252UpperControls;
  const auto found = std::find(controls.begin(), controls.end(), character);
  if (found != controls.end()) return Value(static_cast<std::int32_t>(found - controls.begin()) + 0x80);
  const bool own = character < 0x80 || (character >= 0xA0 && character <= 0xFF);
  return Value(own ? static_cast<std::int32_t>(character) : 63);
}

Value AscW(const Args& args) {
  return Value(static_cast<std::int32_t>(FirstCharacter(args)));
}

Value StrComp(const Args& args) {
  const std::string a = args.Text(0);
  const std::string b = args.Text(1);
  const int order = args.ComparesBinary(2) ? a.compare(b) : CompareTexts(a, b);
  return Value(order < 0 ? -1 : order > 0 ? 1 : 0);
}

Value StrConv(const Args& args) {
  switch (args.WholeWithin(1, 1, 3)) {
    case 1:
      return Value(UpperCase(args.Text(0)));
    case 2:
      return Value(LowerCase(args.Text(0)));
    default:
      return Value(ProperCase(args.Text(0)));
  }
}

Value StrReverse(const Args& args) {
  std::u32string text = Characters(args.Text(0));
  std::reverse(text.begin(), text.end());
  return Value(TextOf(text));
}

}  // namespace

std::span<const FunctionInfo> TextFunctions() {
  static constexpr FunctionInfo kTable[] = {
      Function("Len", 1, 1, Type::Long, [](const Args& a) { return Value(CharacterCount(a.Text(0))); }),
      Function("Left", 2, 2, Type::Text, Left),
      Function("Right", 2, 2, Type::Text, Right),
      Function("Mid", 2, 3, Type::Text, Mid),
      Function("Trim", 1, 1, Type::Text, Trimmed<true, true>),
      Function("LTrim", 1, 1, Type::Text, Trimmed<true, false>),
      Function("RTrim", 1, 1, Type::Text, Trimmed<false, true>),
      Function("UCase", 1, 1, Type::Text, [](const Args& a) { return Value(UpperCase(a.Text(0))); }),
      Function("LCase", 1, 1, Type::Text, [](const Args& a) { return Value(LowerCase(a.Text(0))); }),
      Function("InStr", 2, 4, Type::Long, InStr),
      Function("InStrRev", 2, 4, Type::Long, InStrRev),
      Function("Replace", 3, 6, Type::Text, Replace),
      Function("Space", 1, 1, Type::Text, [](const Args& a) { return Repeated(a, a.Whole(0), " "); }),
      Function("String", 2, 2, Type::Text, String),
      Function("StrComp", 2, 3, Type::Long, StrComp),
      Function("StrConv", 2, 3, Type::Text, StrConv),
      Function("StrReverse", 1, 1, Type::Text, StrReverse),
      Function("Chr", 1, 1, Type::Text, Chr),
      Function("ChrW", 1, 1, Type::Text, ChrW),
      Function("Asc", 1, 1, Type::Long, Asc),
      Function("AscW", 1, 1, Type::Long, AscW),
  };
  return kTable;
}

}  // namespace scorvane::engine
