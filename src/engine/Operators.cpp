#include "engine/Operators.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <cmath>
#include <optional>
#include <string_view>

#include "engine/Collation.h"
#include "engine/Database.h"
#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return text == nullptr ? std::string_view()
                         : std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

bool IsNull(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_NULL;
}
bool IsText(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_TEXT;
}

FunctionState& StateOf(sqlite3_context* context) {
  return *static_cast<FunctionState*>(sqlite3_user_data(context));
}

double NumberOf(sqlite3_context* context, sqlite3_value* value) {
  if (!IsText(value)) return sqlite3_value_double(value);
  return Value(TextOf(value)).ToDouble(StateOf(context).workspace->DecimalSeparator());
}

using Body = void (*)(sqlite3_context* context, sqlite3_value** values);

// An error is carried past the store's C code.
template <Body body>
void Guarded(sqlite3_context* context, int, sqlite3_value** values) {
  try {
    body(context, values);
  } catch (...) {
    FunctionState& state = StateOf(context);
    if (!state.pending) state.pending = std::current_exception();
    sqlite3_result_error(context, "operator", -1);
  }
}

// ---- sums and products that do not become infinite

enum class Arithmetic { Plus, Minus, Times };

template <Arithmetic op>
void Calculate(sqlite3_context* context, sqlite3_value** values) {
  if (IsNull(values[0]) || IsNull(values[1])) return sqlite3_result_null(context);
  if (sqlite3_value_type(values[0]) == SQLITE_INTEGER && sqlite3_value_type(values[1]) == SQLITE_INTEGER) {
    const sqlite3_int64 a = sqlite3_value_int64(values[0]);
    const sqlite3_int64 b = sqlite3_value_int64(values[1]);
    sqlite3_int64 whole = 0;
    const bool over = op == Arithmetic::Plus    ? __builtin_add_overflow(a, b, &whole)
                      : op == Arithmetic::Minus ? __builtin_sub_overflow(a, b, &whole)
                                                : __builtin_mul_overflow(a, b, &whole);
    if (!over) return sqlite3_result_int64(context, whole);
  }
  const double a = NumberOf(context, values[0]);
  const double b = NumberOf(context, values[1]);
  const double number = op == Arithmetic::Plus ? a + b : op == Arithmetic::Minus ? a - b : a * b;
  if (!std::isfinite(number)) throw EngineError(kOverflow, "of a calculation", "Double");
  sqlite3_result_double(context, number);
}

// ---- the bits of whole numbers

std::optional<std::int32_t> Bits(sqlite3_context* context, sqlite3_value* value) {
  if (IsNull(value)) return std::nullopt;
  const double number = RoundHalfEven(NumberOf(context, value));
  if (!(number >= INT32_MIN && number <= INT32_MAX))
    throw EngineError(kOverflow, Value(number).ToText(), "Long");
  return static_cast<std::int32_t>(number);
}

enum class BitOp { And, Or, Xor, Eqv, Imp };

// Null is what is not known: 0 And Null is 0 all the same, -1 Or Null is -1.
template <BitOp op>
void Combine(sqlite3_context* context, sqlite3_value** values) {
  const std::optional<std::int32_t> a = Bits(context, values[0]);
  const std::optional<std::int32_t> b = Bits(context, values[1]);
  if (a && b) {
    const std::int32_t bits = op == BitOp::And   ? *a & *b
                              : op == BitOp::Or  ? *a | *b
                              : op == BitOp::Xor ? *a ^ *b
                              : op == BitOp::Eqv ? ~(*a ^ *b)
                                                 : ~*a | *b;
    return sqlite3_result_int(context, bits);
  }
  if (op == BitOp::And && (a == 0 || b == 0)) return sqlite3_result_int(context, 0);
  if ((op == BitOp::Or && (a == -1 || b == -1)) || (op == BitOp::Imp && (a == 0 || b == -1)))
    return sqlite3_result_int(context, -1);
  sqlite3_result_null(context);
}

void Invert(sqlite3_context* context, sqlite3_value** values) {
  const std::optional<std::int32_t> bits = Bits(context, values[0]);
  if (bits) return sqlite3_result_int(context, ~*bits);
  sqlite3_result_null(context);
}

// ---- Between

int Compare(sqlite3_context* context, sqlite3_value* a, sqlite3_value* b) {
  if (IsText(a) && IsText(b)) return CompareTexts(TextOf(a), TextOf(b));
  const double left = NumberOf(context, a);
  const double right = NumberOf(context, b);
  return left < right ? -1 : left > right ? 1 : 0;
}

// The bounds may come in either order.
void Between(sqlite3_context* context, sqlite3_value** values) {
  if (IsNull(values[0]) || IsNull(values[1]) || IsNull(values[2])) return sqlite3_result_null(context);
  const int low = Compare(context, values[0], values[1]);
  const int high = Compare(context, values[0], values[2]);
  sqlite3_result_int(context, (low >= 0 && high <= 0) || (low <= 0 && high >= 0) ? 1 : 0);
}

struct Operator {
  const char* name;
  int args;
  void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr Operator kOperators[] = {
    {"sv_plus", 2, Guarded<Calculate<Arithmetic::Plus>>},
    {"sv_minus", 2, Guarded<Calculate<Arithmetic::Minus>>},
    {"sv_times", 2, Guarded<Calculate<Arithmetic::Times>>},
    {"sv_bits_and", 2, Guarded<Combine<BitOp::And>>},
    {"sv_bits_or", 2, Guarded<Combine<BitOp::Or>>},
    {"sv_bits_xor", 2, Guarded<Combine<BitOp::Xor>>},
    {"sv_bits_eqv", 2, Guarded<Combine<BitOp::Eqv>>},
    {"sv_bits_imp", 2, Guarded<Combine<BitOp::Imp>>},
    {"sv_bits_not", 1, Guarded<Invert>},
    {"sv_between", 3, Guarded<Between>},
};

}  // namespace

void RegisterOperators(sqlite3* connection, FunctionState& state) {
  for (const Operator& op : kOperators) {
    sqlite3_create_function_v2(connection, op.name, op.args,
                               SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, &state, op.call,
                               nullptr, nullptr, nullptr);
  }
}

}  // namespace scorvane::engine
