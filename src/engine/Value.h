// One value of a database: what a field holds, a query yields or a parameter carries.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace scorvane::engine {

class Value {
 public:
  enum class Type : std::uint8_t { Null, Boolean, Long, Single, Double, Date, Text };

  Value() = default;  // Null
  Value(bool value) : type_(Type::Boolean), integer_(value ? -1 : 0) {}
  Value(std::int32_t value) : type_(Type::Long), integer_(value) {}
  Value(float value) : type_(Type::Single), real_(static_cast<double>(value)) {}
  Value(double value) : type_(Type::Double), real_(value) {}
  Value(std::string value) : type_(Type::Text), text_(std::move(value)) {}
  Value(std::string_view value) : type_(Type::Text), text_(value) {}
  Value(const char* value) : type_(Type::Text), text_(value) {}
  // Days since 1899-12-30, the fraction being the time of day.
  static Value FromDate(double days);

  Type GetType() const { return type_; }
  bool IsNull() const { return type_ == Type::Null; }
  bool IsText() const { return type_ == Type::Text; }
  bool IsNumber() const { return type_ != Type::Null && type_ != Type::Text; }

  // Any number other than 0 and the texts "True" and numbers other than 0 are true; Null throws
  // EngineError 94.
  bool ToBoolean(char decimal = '.') const;
  // Rounded half to even. Throws EngineError: 94 for Null, 6 outside 32 bits, 13 for a text that is no
  // number.
  std::int32_t ToLong(char decimal = '.') const;
  double ToDouble(char decimal = '.') const;
  float ToSingle(char decimal = '.') const;
  // Null gives the empty text, Booleans "True"/"False", numbers their shortest plain form (a Single up to 7,
  // a Double up to 15 significant digits) with `decimal` as the decimal separator.
  std::string ToText(char decimal = '.') const;
  // The text of a Text value, without a copy; the empty text for every other type.
  const std::string& Text() const { return text_; }

  // Same type and same content; texts are compared byte by byte.
  bool operator==(const Value& other) const = default;

 private:
  Type type_ = Type::Null;
  std::int64_t integer_ = 0;  // Boolean (-1 or 0) and Long
  double real_ = 0;           // Single, Double, Date
  std::string text_;
};

// The shortest plain form of a number with at most `digits` significant digits (1 to 17).
std::string NumberText(double number, int digits, char decimal = '.');

// Reads the whole of `text` (blanks around it allowed) as a number with `decimal` as the decimal separator;
// false when it is none.
bool ParseNumber(std::string_view text, char decimal, double& number);

// Reads what begins with &H as hexadecimal and &O as octal, up to 32 bits; false when it is neither. `length`
// is that of what was read.
bool RadixNumber(std::string_view text, double& number, std::size_t& length);

// The leading numeric part of a text, "." as the decimal point; 0 when there is none. "12 mph" gives 12,
// "&H1F" gives 31.
double LeadingNumber(std::string_view text);

// Rounds half to even, as every conversion to a whole number does here.
double RoundHalfEven(double number);

}  // namespace scorvane::engine
