#include "championship/Title.h"

#include <gmock/gmock.h>

#include "SeasonOf.h"

namespace scorvane::championship {
namespace {

using testing::ElementsAre;

// "Avery 50 most 80 can win, needs 12".
std::vector<std::string> Title(const Season& season, int remaining, int dropped = 0,
                               const PlayoffFormat* playoff = nullptr, RaceMost most = {30, 5}) {
  constexpr const char* kStates[] = {"champion", "can win", "out"};
  std::vector<std::string> texts;
  for (const TitleChance& chance : ComputeTitle(season, dropped, playoff, remaining, most)) {
    texts.push_back(fmt::format("{} {} most {} {}{}", season.drivers[chance.driver].name, chance.points,
                                chance.most, kStates[chance.state],
                                chance.needs ? fmt::format(", needs {}", *chance.needs) : ""));
  }
  return texts;
}

TEST(Title, WhoCanStillWinItAndWhatThatTakes) {
  const Season season = SeasonOf({{"Avery", {{1, 30}, {1, 30}, {2, 25}}},
                                  {"Brook", {{2, 25}, {3, 20}, {3, 20}}},
                                  {"Crane", {{3, 20}, {2, 25}, {5, -45}}},
                                  {"Dover", {{0}, {0}, {1, 30}}}});
  // 85, 65, 30, 0. One race of 30: Brook can still have 95, Crane only 30, Dover 60. Avery has two wins, so
  // that with ten more he is level with Brook's 95 and one win, and in front.
  EXPECT_THAT(Title(season, 1),
              ElementsAre("Avery 85 most 115 can win, needs 10", "Brook 65 most 95 can win, needs 21",
                          "Dover 30 most 60 out", "Crane 0 most 30 out"));
  // Two races: Dover's 90 are five more, and three wins beat two.
  EXPECT_THAT(Title(season, 2),
              ElementsAre("Avery 85 most 145 can win, needs 41", "Brook 65 most 125 can win, needs 21",
                          "Dover 30 most 90 can win, needs 56", "Crane 0 most 60 out"));
  EXPECT_THAT(Title(season, 0).front(), "Avery 85 most 85 champion, needs 0");
  // Level at the end: wins decide who is ahead, and nobody else can be.
  EXPECT_THAT(Title(season, 1, 0, nullptr, {20, 0}).front(), "Avery 85 most 105 champion, needs 0");
  EXPECT_THAT(Title({}, 3), ElementsAre());
}

TEST(Title, DroppedRacesComeBackAndGo) {
  const Season season =
      SeasonOf({{"Avery", {{1, 30}, {1, 30}, {9, 10}}}, {"Brook", {{2, 25}, {2, 25}, {2, 25}}}});
  // The best two of three are 60 and 50. With a fourth race three count: without it Avery has 70 and Brook
  // 75; with all that it can bring Avery has 90, Brook 80.
  EXPECT_THAT(Title(season, 1, 1),
              ElementsAre("Avery 60 most 90 can win, needs 10", "Brook 50 most 80 can win, needs 0"));
}

TEST(Title, APlayoffLetsInWhoIsInItAndNobodyElse) {
  PlayoffFormat playoff;
  PlayoffStage stage;
  stage.name = "Final";
  stage.after = 2;
  stage.drivers = 2;
  stage.points = 100;
  playoff.stages.push_back(stage);
  Season season = SeasonOf({{"Avery", {{1, 30}, {1, 30}, {2, 25}}},
                            {"Brook", {{2, 25}, {3, 20}, {3, 10}}},
                            {"Crane", {{3, 20}, {2, 24}, {1, 30}}}});
  EXPECT_THAT(Title(season, 1, 0, &playoff),
              ElementsAre("Avery 125 most 155 can win, needs 15", "Brook 110 most 140 can win, needs 16",
                          "Crane 74 most 104 out"));
  EXPECT_THAT(Title(season, 0, 0, &playoff).front(), "Avery 125 most 125 champion, needs 0");
  // Before the cut nobody is champion, however far ahead, and points say little.
  season.Truncate(1);
  EXPECT_THAT(
      Title(season, 3, 0, &playoff),
      ElementsAre("Avery 30 most 160 can win", "Brook 25 most 160 can win", "Crane 20 most 160 can win"));
}

}  // namespace
}  // namespace scorvane::championship
