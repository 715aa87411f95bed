#include "engine/Functions.h"

#include <fmt/format.h>
#include <sqlite3.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "engine/Collation.h"
#include "engine/Database.h"
#include "engine/EngineError.h"
#include "engine/Format.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

using Type = Value::Type;

constexpr FunctionInfo kFunctions[] = {
    // name, fewest, most arguments, result, aggregate, native, text argument
    {"Count", 1, 1, Type::Long, true, true, false},      {"Sum", 1, 1, Type::Double, true, true, false},
    {"Avg", 1, 1, Type::Double, true, true, false},      {"Min", 1, 1, Type::Null, true, true, false},
    {"Max", 1, 1, Type::Null, true, true, false},        {"First", 1, 1, Type::Null, true, false, false},
    {"Last", 1, 1, Type::Null, true, false, false},      {"StDev", 1, 1, Type::Double, true, false, false},
    {"StDevP", 1, 1, Type::Double, true, false, false},  {"Var", 1, 1, Type::Double, true, false, false},
    {"VarP", 1, 1, Type::Double, true, false, false},    {"IIf", 3, 3, Type::Null, false, true, false},
    {"Nz", 1, 2, Type::Null, false, true, false},        {"IsNull", 1, 1, Type::Boolean, false, true, false},
    {"Switch", 2, 60, Type::Null, false, true, false},   {"Choose", 2, 60, Type::Null, false, true, false},
    {"Abs", 1, 1, Type::Null, false, true, false},       {"Val", 1, 1, Type::Double, false, false, true},
    {"Str", 1, 1, Type::Text, false, false, false},      {"CStr", 1, 1, Type::Text, false, false, false},
    {"CInt", 1, 1, Type::Long, false, false, false},     {"CLng", 1, 1, Type::Long, false, false, false},
    {"CSng", 1, 1, Type::Single, false, false, false},   {"CDbl", 1, 1, Type::Double, false, false, false},
    {"CBool", 1, 1, Type::Boolean, false, false, false}, {"Chr", 1, 1, Type::Text, false, false, false},
    {"Asc", 1, 1, Type::Long, false, false, true},       {"Len", 1, 1, Type::Long, false, false, true},
    {"Left", 2, 2, Type::Text, false, false, true},      {"Right", 2, 2, Type::Text, false, false, true},
    {"Mid", 2, 3, Type::Text, false, false, true},       {"Trim", 1, 1, Type::Text, false, false, true},
    {"LTrim", 1, 1, Type::Text, false, false, true},     {"RTrim", 1, 1, Type::Text, false, false, true},
    {"UCase", 1, 1, Type::Text, false, false, true},     {"LCase", 1, 1, Type::Text, false, false, true},
    {"InStr", 2, 3, Type::Long, false, false, false},    {"Replace", 3, 3, Type::Text, false, false, true},
    {"Space", 1, 1, Type::Text, false, false, false},    {"String", 2, 2, Type::Text, false, false, false},
    {"StrComp", 2, 3, Type::Long, false, false, true},   {"Int", 1, 1, Type::Double, false, false, false},
    {"Fix", 1, 1, Type::Double, false, false, false},    {"Sgn", 1, 1, Type::Long, false, false, false},
    {"Sqr", 1, 1, Type::Double, false, false, false},    {"Round", 1, 2, Type::Double, false, false, false},
    {"Format", 1, 2, Type::Text, false, false, false},
};

constexpr int kLongestText = 1'000'000;  // a Space or String beyond it is refused

// ---- values in and out

std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text == nullptr ? std::string_view()
                         : std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

Value Read(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER: {
      const sqlite3_int64 whole = sqlite3_value_int64(value);
      if (whole >= INT32_MIN && whole <= INT32_MAX) return Value(static_cast<std::int32_t>(whole));
      return Value(static_cast<double>(whole));
    }
    case SQLITE_FLOAT:
      return Value(sqlite3_value_double(value));
    default:
      return Value(TextOf(value));
  }
}

void Result(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void Result(sqlite3_context* context, const Value& value) {
  switch (value.GetType()) {
    case Type::Null:
      sqlite3_result_null(context);
      break;
    case Type::Boolean:
      sqlite3_result_int(context, value.ToBoolean() ? -1 : 0);
      break;
    case Type::Long:
      sqlite3_result_int(context, value.ToLong());
      break;
    case Type::Single:
    case Type::Double:
    case Type::Date: {
      const double number = value.ToDouble();
      if (std::isnan(number)) throw EngineError(kOverflow, "that is no number", "Double");
      sqlite3_result_double(context, number);
      break;
    }
    case Type::Text:
      Result(context, std::string_view(value.Text()));
      break;
  }
}

// The arguments of one call.
class Args {
 public:
  Args(FunctionState& state, int count, sqlite3_value** values)
      : decimal(state.workspace->DecimalSeparator()), state_(state), count_(count), values_(values) {}

  int Count() const { return count_; }
  bool AnyNull() const {
    return std::any_of(values_, values_ + count_,
                       [](sqlite3_value* v) { return sqlite3_value_type(v) == SQLITE_NULL; });
  }
  bool IsText(int i) const { return sqlite3_value_type(values_[i]) == SQLITE_TEXT; }
  Value At(int i) const { return Read(values_[i]); }
  std::string_view View(int i) const { return TextOf(values_[i]); }
  double Number(int i) const {
    return IsText(i) ? At(i).ToDouble(decimal) : sqlite3_value_double(values_[i]);
  }
  int Whole(int i) const { return At(i).ToLong(decimal); }
  // A text as it is, a number in the user's notation.
  std::string Text(int i) const { return IsText(i) ? std::string(View(i)) : At(i).ToText(decimal); }
  FunctionState& State() const { return state_; }

  const char decimal;

 private:
  FunctionState& state_;
  int count_;
  sqlite3_value** values_;
};

// Byte places of characters.
std::size_t Advance(std::string_view text, std::size_t place, int characters) {
  while (characters > 0 && place < text.size()) {
    ++place;
    while (place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U) ++place;
    --characters;
  }
  return place;
}

Value Left(const Args& args) {
  const std::string_view text = args.View(0);
  if (args.Whole(1) < 0) throw EngineError(kInvalidArgument, "Left");
  return Value(text.substr(0, Advance(text, 0, args.Whole(1))));
}

Value Right(const Args& args) {
  const std::string_view text = args.View(0);
  if (args.Whole(1) < 0) throw EngineError(kInvalidArgument, "Right");
  const int skipped = CharacterCount(text) - args.Whole(1);
  return Value(text.substr(Advance(text, 0, skipped)));
}

Value Mid(const Args& args) {
  const std::string_view text = args.View(0);
  const int start = args.Whole(1);
  const int length = args.Count() > 2 ? args.Whole(2) : INT32_MAX;
  if (start < 1 || length < 0) throw EngineError(kInvalidArgument, "Mid");
  const std::size_t from = Advance(text, 0, start - 1);
  return Value(text.substr(from, Advance(text, from, length) - from));
}

Value Trimmed(std::string_view text, bool left, bool right) {
  while (left && !text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (right && !text.empty() && text.back() == ' ') text.remove_suffix(1);
  return Value(text);
}

Value Cased(std::string_view text, bool upper) {
  icu::UnicodeString unicode =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int>(text.size())));
  if (upper) {
    unicode.toUpper(icu::Locale::getRoot());
  } else {
    unicode.toLower(icu::Locale::getRoot());
  }
  std::string result;
  unicode.toUTF8String(result);
  return Value(std::move(result));
}

Value InStr(const Args& args) {
  const int first = args.Count() > 2 ? 1 : 0;
  const int start = args.Count() > 2 ? args.Whole(0) : 1;
  if (start < 1) throw EngineError(kInvalidArgument, "InStr");
  const std::u32string text = FoldCase(args.Text(first));
  const std::u32string part = FoldCase(args.Text(first + 1));
  if (static_cast<std::size_t>(start) > text.size() + (part.empty() ? 0 : 1)) return Value(0);
  const std::size_t found = text.find(part, static_cast<std::size_t>(start) - 1);
  return Value(found == std::u32string::npos ? 0 : static_cast<std::int32_t>(found) + 1);
}

Value Replace(const Args& args) {
  std::string text(args.View(0));
  const std::string part = args.Text(1);
  const std::string with = args.Text(2);
  if (part.empty()) return Value(std::move(text));
  std::string result;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(part, from)) != std::string::npos; from = at + part.size()) {
    result.append(text, from, at - from).append(with);
    if (result.size() > kLongestText) throw EngineError(kInvalidArgument, "Replace");
  }
  return Value(result.append(text, from));
}

Value Repeated(int count, std::string_view text, const char* function) {
  if (count < 0 || count > kLongestText) throw EngineError(kInvalidArgument, function);
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return Value(std::move(result));
}

Value Chr(const Args& args) {
  const int code = args.Whole(0);
  if (code < 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
    throw EngineError(kInvalidArgument, "Chr");
  std::string result;
  icu::UnicodeString(static_cast<UChar32>(code)).toUTF8String(result);
  return Value(std::move(result));
}

Value Asc(const Args& args) {
  if (args.View(0).empty()) throw EngineError(kInvalidArgument, "Asc");
  const std::string_view text = args.View(0);
  return Value(static_cast<std::int32_t>(
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int>(text.size())))
          .char32At(0)));
}

Value Rounded(const Args& args) {
  const int digits = args.Count() > 1 ? args.Whole(1) : 0;
  if (digits < 0 || digits > 15) throw EngineError(kInvalidArgument, "Round");
  const double scale = std::pow(10.0, digits);
  const double number = args.Number(0);
  const double scaled = number * scale;
  return std::fabs(scaled) < 1e15 ? Value(RoundHalfEven(scaled) / scale) : Value(number);
}

Value Formatted(const Args& args) {
  return Value(FormatValue(args.At(0), args.Count() > 1 ? args.Text(1) : std::string(), args.decimal));
}

Value WholeWithin(const Args& args, double lowest, double highest, const char* type) {
  const double number = RoundHalfEven(args.Number(0));
  if (!(number >= lowest && number <= highest)) throw EngineError(kOverflow, args.Text(0), type);
  return Value(static_cast<std::int32_t>(number));
}

Value Single(const Args& args) {
  const double number = args.Number(0);
  if (std::fabs(number) > 3.4028234663852886e38) throw EngineError(kOverflow, args.Text(0), "Single");
  return Value(static_cast<float>(number));
}

Value SquareRoot(const Args& args) {
  if (args.Number(0) < 0) throw EngineError(kInvalidArgument, "Sqr");
  return Value(std::sqrt(args.Number(0)));
}

Value StrOf(const Args& args) {
  const std::string text = args.At(0).ToText('.');
  return Value(args.Number(0) < 0 ? text : " " + text);
}

Value Divide(const Args& args) {
  const double divisor = args.Number(1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(args.Number(0) / divisor);
}

double WholeOperand(const Args& args, int i) {
  const double number = RoundHalfEven(args.Number(i));
  if (std::fabs(number) > 2147483648.0) throw EngineError(kOverflow, args.Text(i), "Long");
  return number;
}

Value IntegerDivide(const Args& args) {
  const double divisor = WholeOperand(args, 1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(std::trunc(WholeOperand(args, 0) / divisor));
}

Value Modulo(const Args& args) {
  const double divisor = WholeOperand(args, 1);
  if (divisor == 0) throw EngineError(kDivisionByZero);
  return Value(static_cast<std::int32_t>(std::fmod(WholeOperand(args, 0), divisor)));
}

Value Power(const Args& args) {
  const double result = std::pow(args.Number(0), args.Number(1));
  if (!std::isfinite(result))
    throw EngineError(kOverflow, fmt::format("{}^{}", args.Text(0), args.Text(1)), "Double");
  return Value(result);
}

// Texts join, numbers add.
Value Add(const Args& args) {
  if (args.IsText(0) && args.IsText(1)) return Value(std::string(args.View(0)).append(args.View(1)));
  return Value(args.Number(0) + args.Number(1));
}

// ---- Like

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

bool Matches(const std::u32string& text, const std::u32string& pattern) {
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t starPattern = std::u32string::npos;
  std::size_t starText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == U'*') {
      starPattern = ++p;
      starText = t;
      continue;
    }
    std::size_t next = p;
    if (p < pattern.size() && MatchesOne(pattern, next, text[t])) {
      p = next;
      ++t;
      continue;
    }
    if (starPattern == std::u32string::npos) return false;
    p = starPattern;
    t = ++starText;
  }
  while (p < pattern.size() && pattern[p] == U'*') ++p;
  return p == pattern.size();
}

Value Like(const Args& args) {
  return Value(Matches(FoldCase(args.Text(0)), FoldCase(args.Text(1))));
}

// ---- calling them

using Function = Value (*)(const Args&);

struct Call {
  FunctionState* state;
  Function function;
};

template <typename Body>
void Guarded(FunctionState& state, sqlite3_context* context, Body body) {
  try {
    body();
  } catch (...) {
    if (!state.pending) state.pending = std::current_exception();
    sqlite3_result_error(context, "function", -1);
  }
}

// Every function hands Null on.
void Invoke(sqlite3_context* context, int count, sqlite3_value** values) {
  auto* call = static_cast<Call*>(sqlite3_user_data(context));
  Guarded(*call->state, context, [&] {
    const Args args(*call->state, count, values);
    if (args.AnyNull()) {
      sqlite3_result_null(context);
    } else {
      Result(context, call->function(args));
    }
  });
}

void InvokeStore(sqlite3_context* context, int, sqlite3_value** values) {
  auto* state = static_cast<FunctionState*>(sqlite3_user_data(context));
  Guarded(*state, context, [&] {
    const auto target = static_cast<std::size_t>(sqlite3_value_int(values[1]));
    Result(context, ConvertForField(Read(values[0]), *state->targets.at(target),
                                    state->workspace->DecimalSeparator()));
  });
}

struct NamedFunction {
  const char* name;
  int args;  // -1: any number
  Function function;
};

const NamedFunction kScalars[] = {
    {"sv_val", 1, [](const Args& a) { return Value(LeadingNumber(a.Text(0))); }},
    {"sv_str", 1, StrOf},
    {"sv_cstr", 1, [](const Args& a) { return Value(a.Text(0)); }},
    // The text of a Single: no more digits than it holds.
    {"sv_single_text", 1,
     [](const Args& a) { return Value(Value(static_cast<float>(a.Number(0))).ToText(a.decimal)); }},
    {"sv_number", 1, [](const Args& a) { return a.IsText(0) ? Value(a.Number(0)) : a.At(0); }},
    {"sv_cint", 1, [](const Args& a) { return WholeWithin(a, -32768, 32767, "Integer"); }},
    {"sv_clng", 1, [](const Args& a) { return WholeWithin(a, INT32_MIN, INT32_MAX, "Long"); }},
    {"sv_csng", 1, Single},
    {"sv_cdbl", 1, [](const Args& a) { return Value(a.Number(0)); }},
    {"sv_cbool", 1, [](const Args& a) { return Value(a.At(0).ToBoolean(a.decimal)); }},
    {"sv_chr", 1, Chr},
    {"sv_asc", 1, Asc},
    {"sv_len", 1, [](const Args& a) { return Value(CharacterCount(a.View(0))); }},
    {"sv_left", 2, Left},
    {"sv_right", 2, Right},
    {"sv_mid", -1, Mid},
    {"sv_trim", 1, [](const Args& a) { return Trimmed(a.View(0), true, true); }},
    {"sv_ltrim", 1, [](const Args& a) { return Trimmed(a.View(0), true, false); }},
    {"sv_rtrim", 1, [](const Args& a) { return Trimmed(a.View(0), false, true); }},
    {"sv_ucase", 1, [](const Args& a) { return Cased(a.View(0), true); }},
    {"sv_lcase", 1, [](const Args& a) { return Cased(a.View(0), false); }},
    {"sv_instr", -1, InStr},
    {"sv_replace", 3, Replace},
    {"sv_space", 1, [](const Args& a) { return Repeated(a.Whole(0), " ", "Space"); }},
    {"sv_string", 2,
     [](const Args& a) {
       const std::string text =
           a.IsText(1) ? a.Text(1) : std::string(1, static_cast<char>(a.Whole(1) & 0x7F));
       return Repeated(a.Whole(0), std::string_view(text).substr(0, Advance(text, 0, 1)), "String");
     }},
    {"sv_strcomp", -1, [](const Args& a) { return Value(CompareTexts(a.View(0), a.Text(1))); }},
    {"sv_int", 1, [](const Args& a) { return Value(std::floor(a.Number(0))); }},
    {"sv_fix", 1, [](const Args& a) { return Value(std::trunc(a.Number(0))); }},
    {"sv_sgn", 1, [](const Args& a) { return Value(a.Number(0) > 0   ? 1
                                                   : a.Number(0) < 0 ? -1
                                                                     : 0); }},
    {"sv_sqr", 1, SquareRoot},
    {"sv_round", -1, Rounded},
    {"sv_format", -1, Formatted},
    {"sv_div", 2, Divide},
    {"sv_idiv", 2, IntegerDivide},
    {"sv_mod", 2, Modulo},
    {"sv_pow", 2, Power},
    {"sv_add", 2, Add},
    {"sv_like", 2, Like},
};

// ---- aggregates

// First and Last keep a value, StDev and its kin the running mean and sum of squared distances.
struct Moments {
  sqlite3_int64 count = 0;
  double mean = 0;
  double squares = 0;
  Value* kept = nullptr;
};

enum class Aggregate { First, Last, StDev, StDevP, Var, VarP };

struct AggregateCall {
  FunctionState* state;
  Aggregate kind;
};

void StepAggregate(sqlite3_context* context, int, sqlite3_value** values) {
  auto* call = static_cast<AggregateCall*>(sqlite3_user_data(context));
  auto* moments = static_cast<Moments*>(sqlite3_aggregate_context(context, sizeof(Moments)));
  if (moments == nullptr) return;
  Guarded(*call->state, context, [&] {
    if (call->kind == Aggregate::First || call->kind == Aggregate::Last) {
      if (moments->kept == nullptr) {
        moments->kept = new Value(Read(values[0]));
      } else if (call->kind == Aggregate::Last) {
        *moments->kept = Read(values[0]);
      }
      return;
    }
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    const double number = Args(*call->state, 1, values).Number(0);
    ++moments->count;
    const double distance = number - moments->mean;
    moments->mean += distance / static_cast<double>(moments->count);
    moments->squares += distance * (number - moments->mean);
  });
}

void FinishAggregate(sqlite3_context* context) {
  auto* call = static_cast<AggregateCall*>(sqlite3_user_data(context));
  auto* moments = static_cast<Moments*>(sqlite3_aggregate_context(context, 0));
  if (moments == nullptr) return sqlite3_result_null(context);
  const std::unique_ptr<Value> kept(moments->kept);
  Guarded(*call->state, context, [&] {
    if (call->kind == Aggregate::First || call->kind == Aggregate::Last)
      return Result(context, kept ? *kept : Value());
    const bool sample = call->kind == Aggregate::StDev || call->kind == Aggregate::Var;
    const sqlite3_int64 divisor = moments->count - (sample ? 1 : 0);
    if (divisor < 1) return sqlite3_result_null(context);
    const double variance = moments->squares / static_cast<double>(divisor);
    const bool root = call->kind == Aggregate::StDev || call->kind == Aggregate::StDevP;
    sqlite3_result_double(context, root ? std::sqrt(variance) : variance);
  });
}

constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY;

}  // namespace

const FunctionInfo* FindFunction(std::string_view name) {
  for (const FunctionInfo& info : kFunctions)
    if (SameName(info.name, name)) return &info;
  return nullptr;
}

void RegisterFunctions(sqlite3* connection, FunctionState& state) {
  for (const NamedFunction& scalar : kScalars) {
    auto* call = new Call{&state, scalar.function};
    sqlite3_create_function_v2(connection, scalar.name, scalar.args, kFlags, call, Invoke, nullptr, nullptr,
                               [](void* data) { delete static_cast<Call*>(data); });
  }
  sqlite3_create_function_v2(connection, "sv_store", 2, kFlags & ~SQLITE_DETERMINISTIC, &state, InvokeStore,
                             nullptr, nullptr, nullptr);
  const std::pair<const char*, Aggregate> aggregates[] = {
      {"sv_first", Aggregate::First},   {"sv_last", Aggregate::Last}, {"sv_stdev", Aggregate::StDev},
      {"sv_stdevp", Aggregate::StDevP}, {"sv_var", Aggregate::Var},   {"sv_varp", Aggregate::VarP}};
  for (const auto& [name, kind] : aggregates) {
    auto* call = new AggregateCall{&state, kind};
    sqlite3_create_function_v2(connection, name, 1, kFlags, call, nullptr, StepAggregate, FinishAggregate,
                               [](void* data) { delete static_cast<AggregateCall*>(data); });
  }
}

}  // namespace scorvane::engine
