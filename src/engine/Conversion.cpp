#include "engine/Conversion.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "engine/Date.h"
#include "engine/EngineError.h"
#include "engine/Names.h"

namespace scorvane::engine {
namespace {

double NumberFor(const Value& value, const StoreTarget& target, char decimal) {
  double number = 0;
  if (!value.IsText() || ParseNumber(value.Text(), decimal, number)) {
    if (!value.IsText()) number = value.ToDouble();
    if (!std::isfinite(number)) throw EngineError(kOverflow, value.ToText(decimal), target.label);
    return number;
  }
  if (target.field.Type == FieldType::Boolean) {
    if (SameName(value.Text(), "True") || SameName(value.Text(), "Yes")) return -1;
    if (SameName(value.Text(), "False") || SameName(value.Text(), "No")) return 0;
  }
  if (target.field.Type == FieldType::Date && ParseDate(value.Text(), number)) return number;
  throw EngineError(kConversionError, value.Text(), target.label);
}

std::int32_t WholeFor(const Value& value, const StoreTarget& target, char decimal, double lowest,
                      double highest) {
  const double number = RoundHalfEven(NumberFor(value, target, decimal));
  if (!(number >= lowest && number <= highest))
    throw EngineError(kOverflow, value.ToText(decimal), target.label);
  return static_cast<std::int32_t>(number);
}

Value TextFor(const Value& value, const StoreTarget& target, char decimal) {
  Value text = value.IsText()                            ? value
               : value.GetType() == Value::Type::Boolean ? Value(value.ToBoolean() ? "-1" : "0")
               : value.GetType() == Value::Type::Date    ? Value(GeneralDate(value.ToDouble()))
                                                         : Value(value.ToText(decimal));
  const std::string& content = text.Text();
  if (content.empty() && !target.field.AllowZeroLength)
    throw EngineError(kZeroLengthNotAllowed, target.label);
  if (target.field.Type == FieldType::Text && content.size() > static_cast<std::size_t>(target.field.Size)) {
    const int characters = CharacterCount(content);
    if (characters > target.field.Size) {
      throw EngineError(kFieldTooSmall, target.label,
                        fmt::format("{} characters, room for {}", characters, target.field.Size));
    }
  }
  return text;
}

}  // namespace

int CharacterCount(std::string_view text) {
  int count = 0;
  for (char c : text)
    if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80U) ++count;
  return count;
}

Value ConvertForField(const Value& value, const StoreTarget& target, char decimal) {
  if (value.IsNull()) {
    if (target.field.Type == FieldType::Boolean) return Value(false);
    if (target.field.Required) throw EngineError(kNullNotAllowed, target.label);
    if (target.nullForbidden) throw EngineError(kNullInIndex, target.label);
    return value;
  }
  switch (target.field.Type) {
    case FieldType::Boolean:
      return Value(NumberFor(value, target, decimal) != 0);
    case FieldType::Byte:
      return Value(WholeFor(value, target, decimal, 0, 255));
    case FieldType::Integer:
      return Value(WholeFor(value, target, decimal, -32768, 32767));
    case FieldType::Long:
      return Value(WholeFor(value, target, decimal, std::numeric_limits<std::int32_t>::min(),
                            std::numeric_limits<std::int32_t>::max()));
    case FieldType::Single: {
      const double number = NumberFor(value, target, decimal);
      if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        throw EngineError(kOverflow, value.ToText(decimal), target.label);
      return Value(static_cast<float>(number));
    }
    case FieldType::Double:
      return Value(NumberFor(value, target, decimal));
    case FieldType::Date: {
      const double days = NumberFor(value, target, decimal);
      if (!IsDateInRange(days)) throw EngineError(kOverflow, value.ToText(decimal), target.label);
      return Value::FromDate(days);
    }
    case FieldType::Text:
    case FieldType::Memo:
      return TextFor(value, target, decimal);
  }
  return value;
}

}  // namespace scorvane::engine
