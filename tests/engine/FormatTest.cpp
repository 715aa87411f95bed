#include "engine/Format.h"

#include <gtest/gtest.h>

namespace scorvane::engine {
namespace {

struct FormatCase {
  Value value;
  const char* format;
  const char* text;
  char decimal = '.';
};

void Check(std::initializer_list<FormatCase> cases) {
  for (const FormatCase& c : cases)
    EXPECT_EQ(FormatValue(c.value, c.format, c.decimal), c.text) << c.value.ToText() << " as " << c.format;
}

TEST(Format, WritesDigitsWhereTheFormatHasThem) {
  Check({
      {Value(0), "##", ""},
      {Value(0), "#0", "0"},
      {Value(7), "00", "07"},
      {Value(123), "#0", "123"},
      {Value(123), "0", "123"},
      {Value(5), "#0#", "05"},
      {Value(1.5), "0.000", "1.500"},
      {Value(0.5), "#.##", ".5"},
      {Value(5), "0.##", "5."},
      {Value(5), "0.#0", "5.00"},
      {Value(12.5), ".0", "12.5"},
      {Value(165.4), "0.0 mph", "165.4 mph"},
      {Value(1234567), "000-0000", "123-4567"},
      {Value(true), "0", "-1"},
      {Value(1e20), "0", "100000000000000000000"},
      {Value(1.5), "0.000", "1,500", ','},
  });
}

TEST(Format, RoundsTheNumberThatUsersSee) {
  Check({
      {Value(2.675), "0.00", "2.68"},
      {Value(-2.675), "0.00", "-2.68"},
      {Value(0.5), "0", "1"},
      {Value(2.5), "0", "3"},
      {Value(9.996), "0.00", "10.00"},
      {Value(99.5), "##", "100"},
      {Value(137.40458F), "##0.000;;--", "137.405"},
      {Value(0.1F), "0.000000000", "0.100000000"},
      {Value(0.004), "0.00", "0.00"},
      {Value(0.0004), "#.##", "."},
      {Value(-0.004), "0.00", "0.00"},
  });
}

TEST(Format, ChoosesTheSectionByTheNumberBeforeRounding) {
  Check({
      {Value(0), "##0.000;;--", "--"},
      {Value(0.0001), "##0.000;;--", "0.000"},
      {Value(-1.5), "##0.000;;--", "-1.500"},
      {Value(-5), "0;(0)", "(5)"},
      {Value(-0.001), "0.0;(0.0)", "(0.0)"},
      {Value(0), "0;(0)", "0"},
      {Value(0), "0.0;(0);", "0.0"},
      {Value(5), "0;(0);zero;more", "5"},
      {Value(5), ";;zero", "5"},
      {Value(-5), "up;down", "down"},
      {Value(-5), "up", "-up"},
  });
}

TEST(Format, GroupsDigitsByThousands) {
  Check({
      {Value(1234567), "#,##0", "1,234,567"},
      {Value(123), "#,##0", "123"},
      {Value(0), "#,##0", "0"},
      {Value(-1234.5), "$#,##0.00", "-$1,234.50"},
      {Value(1234), "#,##0", "1.234", ','},
      {Value(12), "0,000", "0,012"},
      {Value(5), "0, ok", "5, ok"},
  });
}

TEST(Format, WritesBooleansByName) {
  Check({
      {Value(true), "Yes/No", "Yes"},
      {Value(false), "yes/no", "No"},
      {Value(3), "True/False", "True"},
      {Value(0), "True/False", "False"},
      {Value("True"), "Yes/No", "Yes"},
      {Value("other"), "Yes/No", "other"},
  });
}

TEST(Format, LeavesAloneWhatIsNoNumber) {
  Check({
      {Value(), "0.00", ""},
      {Value(), "", ""},
      {Value("DNF"), "0.00", "DNF"},
      {Value("True"), "0", "True"},
      {Value("12.345"), "0.0", "12.3"},
      {Value("12,345"), "0.0", "12,3", ','},
      {Value("12,345"), "0.0", "12,345"},
      {Value("12.50"), "", "12.50"},
      {Value(1.5F), "", "1.5"},
      {Value(true), "", "True"},
  });
}

TEST(Format, TakesOddFormatsAsTheyAre) {
  Check({
      {Value(5), "\"#0;\" 0", "#0; 5"},
      {Value(5), "\\#0", "#5"},
      {Value(5), "0\\", "5"},
      {Value(5), "0\"open", "5open"},
      {Value(1.25), "0.0.0", "1.2.5"},
      {Value(5), ";", "5"},
      {Value(5), ".", "5."},
      {Value(5), ",", ","},
  });
}

}  // namespace
}  // namespace scorvane::engine
