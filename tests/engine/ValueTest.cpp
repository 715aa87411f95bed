#include "engine/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "engine/EngineError.h"

namespace scorvane::engine {
namespace {

// The number of the error that a conversion throws; 0 when it throws none.
template <typename Conversion>
int ErrorOf(Conversion convert) {
  try {
    convert();
  } catch (const EngineError& error) {
    return error.Number();
  }
  return 0;
}

TEST(Value, WritesNumbersInTheirShortestPlainForm) {
  const struct {
    Value value;
    const char* text;
  } cases[] = {
      {Value(), ""},
      {Value(true), "True"},
      {Value(false), "False"},
      {Value(-2147483647 - 1), "-2147483648"},
      {Value(0.1F), "0.1"},
      {Value(2.5F), "2.5"},
      {Value(137.40458F), "137.4046"},
      {Value(16777216.0F), "16777220"},
      {Value(0.1), "0.1"},
      {Value(1.0 / 3), "0.333333333333333"},
      {Value(0.1 + 0.2), "0.3"},
      {Value(-0.0), "0"},
      {Value(100.0), "100"},
      {Value(-0.00025), "-0.00025"},
      {Value(123456789012345.0), "123456789012345"},
      {Value(1e15), "1E+15"},
      {Value(-1.25e-20), "-1.25E-20"},
      {Value("as it is "), "as it is "},
      {Value::FromDate(36526), "2000-01-01"},
      {Value::FromDate(36584.75), "2000-02-28 18:00:00"},
      {Value::FromDate(0), "1899-12-30"},
      {Value::FromDate(36525.9999999), "2000-01-01"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.value.ToText(), c.text);
  EXPECT_EQ(Value(1234.5).ToText(','), "1234,5");
  EXPECT_EQ(Value(1.5e20).ToText(','), "1,5E+20");
}

TEST(Value, ReadsWholeTextsAsNumbers) {
  const struct {
    const char* text;
    char decimal;
    bool readable;
    double number;
  } cases[] = {
      {"12", '.', true, 12},     {" -12.5 ", '.', true, -12.5}, {"+.5", '.', true, 0.5},
      {"5.", '.', true, 5},      {"1e3", '.', true, 1000},      {"1.5E-2", '.', true, 0.015},
      {"12,5", ',', true, 12.5}, {"-0,25", ',', true, -0.25},   {"12.5", ',', false, 0},
      {"12,5", '.', false, 0},   {"", '.', false, 0},           {"  ", '.', false, 0},
      {".", '.', false, 0},      {"-", '.', false, 0},          {"12 mph", '.', false, 0},
      {"1 2", '.', false, 0},    {"1e", '.', false, 0},         {"inf", '.', false, 0},
      {"nan", '.', false, 0},    {"0x10", '.', false, 0},       {"1.2.3", '.', false, 0},
      {"1e-400", '.', true, 0},  {"+-5", '.', false, 0},
  };
  for (const auto& c : cases) {
    double number = 0;
    EXPECT_EQ(ParseNumber(c.text, c.decimal, number), c.readable) << c.text;
    EXPECT_EQ(number, c.number) << c.text;
  }
  double number = 0;
  EXPECT_TRUE(ParseNumber(std::string(80, '1') + ",5", ',', number));
  EXPECT_DOUBLE_EQ(number, 1.1111111111111111e79);
  EXPECT_TRUE(ParseNumber("-1e400", '.', number));
  EXPECT_EQ(number, -std::numeric_limits<double>::infinity());
}

TEST(Value, TakesTheLeadingNumberOfAText) {
  const struct {
    const char* text;
    double number;
  } cases[] = {{"12 mph", 12},  {"165.4 mph", 165.4}, {"", 0},          {"DNQ", 0},
               {"-3.5x", -3.5}, {"1.2.3", 1.2},       {" 1 234", 1234}, {"3,5", 3},
               {"1e2e3", 100},  {"5 East", 5},        {"-", 0}};
  for (const auto& c : cases) EXPECT_EQ(LeadingNumber(c.text), c.number) << c.text;
}

TEST(Value, RoundsHalfToEvenOnTheWayToWholeNumbers) {
  const struct {
    Value value;
    std::int32_t number;
  } cases[] = {{Value(0.5), 0},
               {Value(1.5), 2},
               {Value(-2.5), -2},
               {Value("3.5"), 4},
               {Value(true), -1},
               {Value(false), 0},
               {Value(2147483647.4), 2147483647}};
  for (const auto& c : cases) EXPECT_EQ(c.value.ToLong(), c.number);
}

TEST(Value, KnowsTrueFromFalse) {
  for (const Value& value : {Value(true), Value(7), Value(0.1), Value("True"), Value("tRuE "), Value("-1")})
    EXPECT_TRUE(value.ToBoolean()) << value.ToText();
  for (const Value& value : {Value(false), Value(0), Value(0.0F), Value("False"), Value("0")})
    EXPECT_FALSE(value.ToBoolean()) << value.ToText();
}

TEST(Value, RefusesWhatCannotBeConverted) {
  EXPECT_EQ(ErrorOf([] { return Value().ToLong(); }), kInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([] { return Value().ToBoolean(); }), kInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([] { return Value().ToSingle(); }), kInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([] { return Value("twelve").ToLong(); }), kTypeMismatch);
  EXPECT_EQ(ErrorOf([] { return Value("yes").ToBoolean(); }), kTypeMismatch);
  EXPECT_EQ(ErrorOf([] { return Value("").ToDouble(); }), kTypeMismatch);
  EXPECT_EQ(ErrorOf([] { return Value(2147483647.5).ToLong(); }), kOverflow);
  EXPECT_EQ(ErrorOf([] { return Value(std::nan("")).ToLong(); }), kOverflow);
  EXPECT_EQ(ErrorOf([] { return Value(1e39).ToSingle(); }), kOverflow);
  EXPECT_EQ(ErrorOf([] { return Value("1e400").ToDouble(); }), kOverflow);
  EXPECT_EQ(Value("3,5").ToDouble(','), 3.5);
  // A message shows the beginning of what is long, and never half a character.
  std::string letters = "x";
  for (int i = 0; i < 1000; ++i) letters += "é";
  const std::string shown = EngineError(kTypeMismatch, letters, "a number").Description();
  EXPECT_NE(shown.find("é…' is not a number"), std::string::npos) << shown;
  // Where in the statement it was, if that is known.
  EXPECT_NE(EngineError(kSyntaxError, "x", "", 12).Description().find("character 12"), std::string::npos);
  EXPECT_EQ(EngineError(kSyntaxError, "x").Description().find("character"), std::string::npos);
}

TEST(Value, EqualsOnlyItsOwnType) {
  EXPECT_EQ(Value(1), Value(1));
  EXPECT_FALSE(Value(1) == Value(1.0));
  EXPECT_FALSE(Value() == Value(""));
  EXPECT_FALSE(Value("a") == Value("A"));
}

}  // namespace
}  // namespace scorvane::engine
