#include "engine/functions/Args.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cmath>

#include "engine/Database.h"
#include "engine/Date.h"
#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

using Type = Value::Type;

// The store knows no dates and no 32-bit numbers; a mark travels with a value from call to call.
enum Mark : unsigned { kNoMark = 0, kDateMark = 'D', kSingleMark = 'S' };

std::string_view StoredText(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text == nullptr ? std::string_view()
                         : std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

Value Marked(double number, unsigned mark) {
  if (mark == kDateMark) return Value::FromDate(number);
  if (mark == kSingleMark) return Value(static_cast<float>(number));
  return Value(number);
}

// 1,025 as 1025; false where the commas do not part thousands.
bool WithoutGroups(std::string_view text, std::string& plain) {
  std::size_t digits = 0;
  bool grouped = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      ++digits;
    } else if (c == ',') {
      if (digits == 0 || digits > 3 || (grouped && digits != 3)) return false;
      grouped = true;
      digits = 0;
      continue;
    } else if (digits > 0) {
      if (grouped && digits != 3) return false;
      plain.append(text.substr(i));
      return grouped && plain.find(',') == std::string::npos;
    }
    plain += c;
  }
  return grouped && digits == 3;
}

}  // namespace

bool ReadNumber(std::string_view text, char decimal, double& number) {
  if (ParseNumber(text, decimal, number)) return true;
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  std::size_t length = 0;
  if (RadixNumber(text, number, length)) return length == text.size();
  if (text.starts_with('$')) text.remove_prefix(1);
  if (ParseNumber(text, decimal, number)) return true;
  std::string plain;
  return decimal == '.' && WithoutGroups(text, plain) && ParseNumber(plain, decimal, number);
}

std::string ExpressionText(const Value& value, char decimal) {
  switch (value.GetType()) {
    case Type::Date:
      return GeneralDate(value.ToDouble());
    case Type::Boolean:
      return value.ToBoolean() ? "-1" : "0";
    default:
      return value.ToText(decimal);
  }
}

Args::Args(FunctionState& state, const char* function, int count, sqlite3_value** values)
    : decimal(state.workspace->DecimalSeparator()),
      state_(state),
      function_(function),
      count_(count),
      values_(values) {}

bool Args::AnyNull() const {
  return std::any_of(values_, values_ + count_,
                     [](sqlite3_value* v) { return sqlite3_value_type(v) == SQLITE_NULL; });
}

bool Args::IsNull(int i) const {
  return sqlite3_value_type(values_[i]) == SQLITE_NULL;
}
bool Args::IsText(int i) const {
  return sqlite3_value_type(values_[i]) == SQLITE_TEXT;
}

Value Args::At(int i) const {
  sqlite3_value* value = values_[i];
  const unsigned mark = sqlite3_value_subtype(value);
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER: {
      const sqlite3_int64 whole = sqlite3_value_int64(value);
      if (mark == kNoMark && whole >= INT32_MIN && whole <= INT32_MAX)
        return Value(static_cast<std::int32_t>(whole));
      return Marked(static_cast<double>(whole), mark);
    }
    case SQLITE_FLOAT:
      return Marked(sqlite3_value_double(value), mark);
    default:
      return Value(StoredText(value));
  }
}

double Args::Number(int i) const {
  if (!IsText(i)) return sqlite3_value_double(values_[i]);
  double number = 0;
  const std::string_view text = StoredText(values_[i]);
  if (!ReadNumber(text, decimal, number)) throw EngineError(kTypeMismatch, text, "a number");
  if (!std::isfinite(number)) throw EngineError(kOverflow, text, "Double");
  return number;
}

int Args::Whole(int i) const {
  return Value(Number(i)).ToLong(decimal);
}

int Args::WholeWithin(int i, int lowest, int highest) const {
  const int whole = Whole(i);
  if (whole < lowest || whole > highest) Refuse();
  return whole;
}

double Args::Days(int i) const {
  double days = 0;
  if (!IsText(i)) {
    days = sqlite3_value_double(values_[i]);
  } else if (const std::string_view text = StoredText(values_[i]); !ParseDate(text, days)) {
    // A text may also be the number of a day.
    if (!ReadNumber(text, decimal, days)) throw EngineError(kTypeMismatch, text, "a date");
  }
  if (!IsDateInRange(days)) throw EngineError(kOverflow, Text(i), "Date");
  return days;
}

std::string Args::Text(int i) const {
  return IsText(i) ? std::string(StoredText(values_[i])) : ExpressionText(At(i), decimal);
}

bool Args::ComparesBinary(int i) const {
  return i < count_ && WholeWithin(i, 0, 2) == 0;
}

void Args::Refuse() const {
  throw EngineError(kInvalidArgument, function_);
}

void Args::CheckLength(std::size_t bytes) const {
  if (bytes > kLongestText) throw EngineError(kOutOfStringSpace, function_, std::to_string(kLongestText));
}

Value Args::Bounded(std::string text) const {
  CheckLength(text.size());
  return Value(std::move(text));
}

void SetResult(sqlite3_context* context, const Value& value) {
  switch (value.GetType()) {
    case Type::Null:
      sqlite3_result_null(context);
      return;
    case Type::Boolean:
      sqlite3_result_int(context, value.ToBoolean() ? -1 : 0);
      return;
    case Type::Long:
      sqlite3_result_int(context, value.ToLong());
      return;
    case Type::Single:
    case Type::Double:
    case Type::Date: {
      const double number = value.ToDouble();
      if (!std::isfinite(number)) throw EngineError(kOverflow, "that was computed", "Double");
      sqlite3_result_double(context, number);
      if (value.GetType() == Type::Date) sqlite3_result_subtype(context, kDateMark);
      if (value.GetType() == Type::Single) sqlite3_result_subtype(context, kSingleMark);
      return;
    }
    case Type::Text:
      sqlite3_result_text64(context, value.Text().data(), value.Text().size(), SQLITE_TRANSIENT, SQLITE_UTF8);
      return;
  }
}

}  // namespace scorvane::engine
