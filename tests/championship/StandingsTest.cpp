#include "championship/Standings.h"

#include <gmock/gmock.h>

#include "SeasonOf.h"

namespace scorvane::championship {
namespace {

using testing::ElementsAre;

std::vector<std::string> Table(const Season& season, int dropped = 0,
                               const PlayoffFormat* playoff = nullptr) {
  return Texts(season, ComputeStandings(season, dropped, playoff));
}

PlayoffStage Stage(const char* name, int after, int drivers) {
  PlayoffStage stage;
  stage.name = name;
  stage.after = after;
  stage.drivers = drivers;
  return stage;
}

TEST(Standings, DropTheWorstAndBreakTiesByPlaces) {
  Season season = SeasonOf({{"Avery", {{1, 25}, {3, 15}, {3, 15}}},
                            {"Brook", {{2, 18}, {2, 18}, {2, 18}}},
                            {"Crane", {{3, 15}, {1, 25}, {4, 12}}},
                            {"Dover", {{0}, {0}, {5, -10}}},
                            {"Eaton", {{4, 500}}}});
  season.drivers[4].excluded = true;
  EXPECT_THAT(Table(season), ElementsAre("Avery 55", "Brook 54", "Crane 52", "Dover -10"));
  // The best two of three: Avery 25+15, Crane 25+15, Brook 18+18. The first two have a win each; a third
  // place is dropped of Avery's, a fourth of Crane's, so that both keep a win and a third: the name decides.
  EXPECT_THAT(Table(season, 1), ElementsAre("Avery 40", "Crane 40", "Brook 36", "Dover -10"));
  season.drivers[0].results[1].finish = 4;
  EXPECT_THAT(Table(season, 1), ElementsAre("Crane 40", "Avery 40", "Brook 36", "Dover -10"));
  // One result always counts.
  EXPECT_THAT(Table(season, 9), ElementsAre("Avery 25", "Crane 25", "Brook 18", "Dover -10"));
}

// Two races decide who is in: Avery 35, Brook 33, Crane 27, Dover 12.
Season FourRaces() {
  return SeasonOf({{"Avery", {{1, 25}, {4, 10}, {4, 10}, {4, 10}}},
                   {"Brook", {{3, 15}, {2, 18}, {2, 18}, {3, 15}}},
                   {"Crane", {{4, 12}, {3, 15}, {1, 25}, {1, 25}}},
                   {"Dover", {{5, 2}, {1, 10}, {3, 15}, {2, 18}}}});
}

TEST(Standings, APlayoffStartsAnewAndTheOthersGoOnBelow) {
  PlayoffFormat playoff{"P", {Stage("Chase", 2, 2)}, {}};
  playoff.stages[0].points = 100;
  playoff.stages[0].step = 5;
  Season season = FourRaces();
  // Avery 100+10+10, Brook 95+18+15; Crane 12+15+25+25 and Dover 45 stay below.
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Brook 128 Chase", "Avery 120 Chase", "Crane 77 Out", "Dover 45 Out"));
  Season cut = season;
  cut.Truncate(2);
  EXPECT_THAT(Table(cut, 0, &playoff),
              ElementsAre("Avery 100 Chase", "Brook 95 Chase", "Crane 27 Out", "Dover 12 Out"));
  cut.Truncate(1);
  EXPECT_THAT(Table(cut, 0, &playoff), ElementsAre("Avery 25", "Brook 15", "Crane 12", "Dover 2"));

  // A bonus for each win of the season so far instead of the step: Dover has one, but is not in.
  playoff.stages[0].step = 0;
  playoff.stages[0].winBonus = 10;
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Brook 133 Chase", "Avery 130 Chase", "Crane 77 Out", "Dover 45 Out"));

  // Twenty points taken off Avery's win in the first race: another seeding, and all that follows from it.
  season.drivers[0].results[0].points = 5;
  season.SortResults();
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Crane 150 Chase", "Brook 133 Chase", "Dover 45 Out", "Avery 35 Out"));

  // The third race turns out to have been driven first: Crane wins it, and the second race lies behind the
  // cut.
  season = FourRaces();
  for (SeasonDriver& driver : season.drivers) {
    for (SeasonResult& result : driver.results) {
      if (result.race < 3) result.race = (result.race + 1) % 3;
    }
  }
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Crane 150 Chase", "Avery 130 Chase", "Brook 66 Out", "Dover 45 Out"));
}

TEST(Standings, RacesAreDroppedBeforeTheCutAndNotBehindIt) {
  PlayoffFormat playoff{"P", {Stage("Chase", 2, 2)}, {}};
  // With the worse of two dropped: Avery 25, Brook 18, Crane 15, Dover 10. Without a new start they keep
  // that. Avery 25+10+10, Brook 18+18+15; Crane's best three of four are 65, Dover's 43.
  EXPECT_THAT(Table(FourRaces(), 1, &playoff),
              ElementsAre("Brook 51 Chase", "Avery 45 Chase", "Crane 65 Out", "Dover 43 Out"));
}

TEST(Standings, WhoIsLevelAtTheCutGoesOnAsWell) {
  PlayoffFormat playoff{"P", {Stage("Chase", 2, 2)}, {}};
  playoff.stages[0].points = 100;
  Season season = SeasonOf({{"Avery", {{1, 25}, {2, 18}}},
                            {"Brook", {{2, 18}, {3, 15}}},
                            {"Crane", {{3, 15}, {2, 18}}},
                            {"Dover", {{4, 10}, {1, 10}}}});
  season.drivers[0].results[1].finish = 3;
  // Brook and Crane have 33 each, a second and a third place.
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Avery 100 Chase", "Brook 100 Chase", "Crane 100 Chase", "Dover 20 Out"));
  // With a better place on one side there is a difference, and the alphabet does not count.
  season.drivers[1].results[1].finish = 4;
  EXPECT_THAT(Table(season, 0, &playoff),
              ElementsAre("Avery 100 Chase", "Crane 100 Chase", "Brook 33 Out", "Dover 20 Out"));
}

TEST(Standings, WildCardsAndWhoIsNear) {
  Season season = SeasonOf({{"Avery", {{2, 40}, {2, 40}}},
                            {"Brook", {{3, 30}, {3, 30}}},
                            {"Crane", {{4, 20}, {4, 20}}},
                            {"Dover", {{5, 10}, {1, 20}}},
                            {"Eaton", {{1, 20}, {6, 1}}},
                            {"Foley", {{0}, {0}}}});
  PlayoffFormat playoff{"P", {Stage("Chase", 2, 1)}, {}};
  PlayoffStage& stage = playoff.stages[0];
  stage.points = 1000;
  stage.winBonus = 7;
  stage.wildCards = 1;
  // Dover (30) and Eaton (21) have a win each; among the first four it is Dover, and a wild card gets no
  // bonus.
  stage.wildCardsWithin = 4;
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Dover 1000 Chase", "Avery 1000 Chase", "Brook 60 Out",
                                                      "Crane 40 Out", "Eaton 21 Out"));
  stage.wildCards = 0;
  stage.within = 40;  // Brook and Crane are 20 and 40 behind
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Avery 1000 Chase", "Brook 1000 Chase",
                                                      "Crane 1000 Chase", "Dover 30 Out", "Eaton 21 Out"));
  stage.within = 0;
  stage.drivers = 2;
  stage.byWins = true;  // the two winners, the leader without a win stays out ...
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Dover 1007 Chase", "Eaton 1007 Chase", "Avery 80 Out",
                                                      "Brook 60 Out", "Crane 40 Out"));
  stage.leaderIsWinner = true;  // ... unless he counts as one
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Dover 1007 Chase", "Avery 1000 Chase", "Brook 60 Out",
                                                      "Crane 40 Out", "Eaton 21 Out"));
  stage.leaderIsWinner = false;
  stage.winnersWithin = 4;  // Eaton's win does not help him
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Dover 1007 Chase", "Avery 1000 Chase", "Brook 60 Out",
                                                      "Crane 40 Out", "Eaton 21 Out"));
}

TEST(Standings, StagesSendDriversHome) {
  // Race 1 brings three in, race 2 sends one home, races 3 and 4 decide between two.
  PlayoffFormat playoff{"P", {Stage("Round", 1, 3), Stage("Final", 2, 2)}, {}};
  playoff.stages[0].points = 100;
  playoff.stages[1].points = 200;
  playoff.stages[1].byWins = true;
  playoff.stages[1].bonusCounts = false;
  const Season season = SeasonOf({{"Avery", {{1, 30}, {4, 9}, {1, 30}, {1, 30}}},
                                  {"Brook", {{2, 20}, {2, 20}, {2, 25, 5}, {3, 15}}},
                                  {"Crane", {{3, 15}, {1, 10}, {3, 15}, {2, 20}}},
                                  {"Dover", {{4, 12}, {3, 15}, {4, 100}, {4, 12}}}});
  Season cut = season;
  cut.Truncate(2);
  // 109, 120 and 110: Crane goes on by his win, Brook by his points, Avery goes home with what he has. Level
  // on 200, the one with the win stands in front.
  EXPECT_THAT(Table(cut, 0, &playoff),
              ElementsAre("Crane 200 Final", "Brook 200 Final", "Avery 109 Out after Round", "Dover 27 Out"));
  // Brook 200+20+15 without the bonus, Crane 200+15+20; Crane's win puts him in front.
  // Avery has 100+9+30+30, Dover more points than he, but was never in.
  EXPECT_THAT(Table(season, 0, &playoff), ElementsAre("Crane 235 Final", "Brook 235 Final",
                                                      "Avery 169 Out after Round", "Dover 139 Out"));
}

}  // namespace
}  // namespace scorvane::championship
