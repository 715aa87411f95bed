#include "common/Formats.h"

#include <gtest/gtest.h>

namespace scorvane::common {
namespace {

TEST(Formats, LapTimes) {
  const struct {
    float seconds;
    const char* text;
  } cases[] = {{83.5F, "1:23.500"}, {3723.25F, "1:02:03.250"}, {9.1F, "09.100"},        {0, "--"},
               {60, "1:00.000"},    {3600, "1:00:00.000"},     {36000, "10:00:00.000"}, {0.05F, "00.050"}};
  for (const auto& c : cases) EXPECT_EQ(FormatLapTime(c.seconds, '.'), c.text);
  EXPECT_EQ(FormatLapTime(83.5F, ','), "1:23,500");
}

TEST(Formats, QualifyingFollowsTheLapReportingMethod) {
  using engine::Value;
  const Value speed(180.0F);
  EXPECT_EQ(FormatQualifying(speed, 2.5F, kLapSpeed, '.'), "180.000");
  EXPECT_EQ(FormatQualifying(speed, 2.5F, kLapSpeed, ','), "180,000");
  EXPECT_EQ(FormatQualifying(speed, 2.5F, kLapTime, '.'), "50.000");
  EXPECT_EQ(FormatQualifying(Value(100.0F), 2.5F, kLapTime, '.'), "1:30.000");
  EXPECT_EQ(FormatQualifying(speed, 2.5F, 2, '.'), "");
  for (const int method : {kLapSpeed, kLapTime}) {
    EXPECT_EQ(FormatQualifying(Value(0.0F), 2.5F, method, '.'), "--");
    EXPECT_EQ(FormatQualifying(Value(), 2.5F, method, '.'), "--");
  }
}

TEST(Formats, Colors) {
  EXPECT_EQ(ColorToHTML(255), "FF0000");
  EXPECT_EQ(ColorToHTML(16711680), "0000FF");
  EXPECT_EQ(ColorToHTML(0x0A0B0C), "0C0B0A");
  EXPECT_EQ(ColorToHTML(-1), "FFFFFF");
  EXPECT_EQ(ColorToHTML(0x1000000), "FFFFFF");
  EXPECT_EQ(ColorByte(0x030201, 3), 3);
  EXPECT_EQ(ColorByte(0x030201, 0), -1);
  EXPECT_EQ(ColorByte(0x030201, 4), -1);
  EXPECT_EQ(ColorText(0xFFFF), "&H0000FFFF");
  EXPECT_EQ(ParseColor("&H0000FFFF"), 0xFFFF);
  EXPECT_EQ(ParseColor("&H8000000F"), static_cast<std::int32_t>(0x8000000F));
  EXPECT_EQ(ParseColor("16711680"), 0xFF0000);
  for (const char* text : {"", "&H", "red", "&H12G4", "&H123456789", "-"})
    EXPECT_FALSE(ParseColor(text)) << text;
}

TEST(Formats, LowerCase) {
  EXPECT_EQ(LowerCase("ABC xyz ÄÖÜ Š Œ Ž Ÿ À Þ × ß 日本"), "abc xyz äöü š œ ž ÿ à þ × ß 日本");
}

TEST(Formats, ProperCase) {
  const struct {
    const char* text;
    const char* proper;
  } cases[] = {{"daytona int'l speedway", "Daytona Int'l Speedway"},
               {"two\r\nlines\nhere", "Two\r\nLines\nhere"},
               {"", ""},
               {"éclair šampion ÷ ÿ 7up", "Éclair Šampion ÷ Ÿ 7up"}};
  for (const auto& c : cases) EXPECT_EQ(ProperCase(c.text), c.proper);
}

TEST(Formats, PadLeft) {
  EXPECT_EQ(PadLeft("FF", 8, '0'), "000000FF");
  EXPECT_EQ(PadLeft("12345", 3, ' '), "345");
  EXPECT_EQ(PadLeft("abc", -1, ' '), "");
  EXPECT_EQ(PadLeft("é", 2, '.'), ".é");
  EXPECT_EQ(PadLeft("éàü", 2, '.'), "àü");
}

TEST(Formats, CountOccurrences) {
  EXPECT_EQ(CountOccurrences("aaaa", "aa"), 2);
  EXPECT_EQ(CountOccurrences("abc", ""), 0);
  EXPECT_EQ(CountOccurrences("", "a"), 0);
}

TEST(Formats, NewestKnownSimulationIsTheDefault) {
  ProcessState state;
  EXPECT_EQ(DefaultSimType(state), -1);
  const int expected[] = {0, 1, 3, 4, 5};
  for (std::size_t i = 0; i < state.simFolders.size(); ++i) {
    state.simFolders[i] = "folder\\";
    EXPECT_EQ(DefaultSimType(state), expected[i]);
  }
  state.simFolders[4] = "  ";
  EXPECT_EQ(DefaultSimType(state), 4);
}

}  // namespace
}  // namespace scorvane::common
