// What a function of the dialect sees of its call.
#pragma once

#include <string>
#include <string_view>

#include "engine/Functions.h"
#include "engine/Value.h"

struct sqlite3_context;
struct sqlite3_value;

namespace scorvane::engine {

// The longest text that a function makes, in bytes; a longer one is error 14.
inline constexpr std::size_t kLongestText = 1'000'000;

class Args {
 public:
  Args(FunctionState& state, const char* function, int count, sqlite3_value** values);

  int Count() const { return count_; }
  bool AnyNull() const;
  bool IsNull(int i) const;
  bool IsText(int i) const;
  // Dates and Singles keep their type where the translator or another function has marked them.
  Value At(int i) const;
  // Throws EngineError 13 for a text that is no number.
  double Number(int i) const;
  // The number, rounded half to even. Throws EngineError 6 outside 32 bits.
  int Whole(int i) const;
  // The same, or `fallback` where the argument was left out.
  int Whole(int i, int fallback) const { return i < count_ ? Whole(i) : fallback; }
  // Throws EngineError 5 outside the bounds.
  int WholeWithin(int i, int lowest, int highest) const;
  // Days since 1899-12-30, of a date, a number or a text. Throws EngineError 13 for a text that is no date, 6
  // outside the years 100 to 9999.
  double Days(int i) const;
  // A text as it is, a number in the user's notation, a date as a date.
  std::string Text(int i) const;
  // Whether texts are compared as they stand: the argument is 0; left out, letter case does not count.
  bool ComparesBinary(int i) const;

  // The error that the call cannot be answered with these arguments.
  [[noreturn]] void Refuse() const;
  // `text`, unless it is too long.
  Value Bounded(std::string text) const;
  void CheckLength(std::size_t bytes) const;

  FunctionState& State() const { return state_; }
  const char* FunctionName() const { return function_; }

  const char decimal;

 private:
  FunctionState& state_;
  const char* function_;
  int count_;
  sqlite3_value** values_;
};

// The result of a call. Throws EngineError 6 for what is infinite.
void SetResult(sqlite3_context* context, const Value& value);

// A text as a number in an expression: as the user writes it, with groups of thousands ("1,025") where the
// decimal separator is a point, and with the radix marks &H and &O.
bool ReadNumber(std::string_view text, char decimal, double& number);

// A value as `&` and CStr write it.
std::string ExpressionText(const Value& value, char decimal);

}  // namespace scorvane::engine
