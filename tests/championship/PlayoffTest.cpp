#include "championship/Playoff.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "common/RuleError.h"
#include "db/LeagueFixture.h"

namespace scorvane::championship {
namespace {

using testing::HasSubstr;

std::string FaultOf(const std::string& json) {
  try {
    ParsePlayoff(json);
  } catch (const common::RuleError& error) {
    return error.what();
  }
  return "";
}

std::string OneStage(const std::string& members) {
  return "{\"stages\": [{\"after\": 5, \"drivers\": 3" + members + "}]}";
}

TEST(Playoff, WhatIsWrongWithADescriptionIsSaid) {
  const struct {
    std::string json;
    const char* says;
  } cases[] = {
      {"", "in line 1"},
      {"{\n\"stages\": [\n{,}]}", "in line 3"},
      {"[]", "is an object"},
      {"{}", "\"stages\" is a list of at most 20"},
      {"{\"stages\": []}", "one stage or more"},
      {"{\"stages\": [1]}", "Stage 1 is an object"},
      {"{\"stages\": [{\"after\": 1}]}", "Stage 1 needs \"drivers\""},
      {"{\"stages\": [{\"after\": 0, \"drivers\": 1}]}", "\"after\" is a whole number from 1"},
      {OneStage(", \"points\": 1.5"), "\"points\" is a whole number"},
      {OneStage(", \"points\": 18446744073709551615"), "\"points\" is a whole number"},
      {OneStage(", \"points\": -9223372036854775808"), "\"points\" is a whole number"},
      {OneStage(", \"points\": 1e400"), "in line 1"},
      {OneStage(", \"points\": \"5\""), "\"points\" is a whole number"},
      {OneStage(", \"step\": 5"), "need \"points\""},
      {OneStage(", \"by\": \"luck\""), "\"by\" is"},
      {OneStage(", \"bonusCounts\": 1"), "true or false"},
      {OneStage(", \"drvers\": 1"), "\"drvers\", which is none of"},
      {OneStage(", \"name\": \"a\\nb\""), "\"name\" is a text"},
      {OneStage(", \"name\": \"" + std::string(51, 'x') + "\""), "\"name\" is a text"},
      {OneStage(", \"name\": \"\xff\""), "this is none"},
      {"{\"stages\": [{\"after\": 5, \"drivers\": 3}, {\"after\": 5, \"drivers\": 2}]}", "after more races"},
      {"{\"stages\": [{\"after\": 5, \"drivers\": 3}, {\"after\": 6, \"drivers\": 4}]}", "no more drivers"},
      {"{\"stages\": [{\"after\": 5, \"drivers\": 3}], \"late\": [{\"race\": 9}]}", "needs \"before\""},
      {std::string(100000, '['), "at most 65536 bytes"},
      {std::string(60000, '['), "not nested"},
      {"{\"a\":" + std::string(60000, '[') + std::string(2, ']'), "not nested"},
  };
  for (const auto& c : cases) EXPECT_THAT(FaultOf(c.json), HasSubstr(c.says)) << c.json.substr(0, 100);
  std::string many = "{\"stages\": [";
  for (int i = 1; i <= 21; ++i)
    many += fmt::format("{}{{\"after\": {}, \"drivers\": 1}}", i > 1 ? "," : "", i);
  EXPECT_THAT(FaultOf(many + "]}"), HasSubstr("a list of at most 20"));
}

TEST(Playoff, APresetIsReadWrittenAndMoved) {
  EXPECT_EQ(ListPlayoffPresets().size(), 4U);
  for (const PlayoffPreset& preset : ListPlayoffPresets()) {
    EXPECT_FALSE(preset.source.empty()) << preset.name;
    const std::string text = PlayoffText(PresetPlayoff(preset.name));
    EXPECT_EQ(PlayoffText(ParsePlayoff(text)), text) << preset.name;
  }
  const PlayoffFormat moved = PresetPlayoff(" 2014", 20);
  ASSERT_EQ(moved.stages.size(), 4U);
  EXPECT_EQ(moved.stages[0].after, 20);
  EXPECT_EQ(moved.stages[3].after, 29);
  EXPECT_THROW(PresetPlayoff("1998"), common::RuleError);
  // What is beyond the last race that a stage may have could be stored, but not read again.
  EXPECT_EQ(FaultOf(PlayoffText(PresetPlayoff("2014", 9991))), "");
  EXPECT_THROW(PresetPlayoff("2014", 9992), common::RuleError);
}

class StoredPlayoff : public test::LeagueFixture {};

TEST_F(StoredPlayoff, IsKeptAndCleared) {
  const auto league = NewLeague();
  EXPECT_FALSE(ReadPlayoff(*league));
  EnsurePlayoffTable(*league);
  EXPECT_FALSE(HasPlayoff(*league));
  PlayoffFormat format = PresetPlayoff("2011");
  format.name = "Max \"Q\" O'Brien | <b>Жé";
  format.late = {{34, 27}};
  StorePlayoff(*league, PresetPlayoff("2014"));
  StorePlayoff(*league, format);
  EXPECT_EQ(PlayoffText(*ReadPlayoff(*league)), PlayoffText(format));
  league->Execute("UPDATE Playoff SET Format='{}'");
  EXPECT_THROW(ReadPlayoff(*league), common::RuleError);
  ClearPlayoff(*league);
  EXPECT_FALSE(ReadPlayoff(*league));
}

}  // namespace
}  // namespace scorvane::championship
