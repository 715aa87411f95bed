#include "scoring/RaceScoring.h"

#include "StagedRace.h"
#include "scoring/PointSystem.h"

namespace scorvane::scoring {
namespace {

using Strings = std::vector<std::string>;

// Every rule holds for staged and for stored races.
class RaceScoring : public ScoringFixture, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(, RaceScoring, testing::Bool(),
                         [](const auto& staged) { return std::string(staged.param ? "Staged" : "Stored"); });

TEST_P(RaceScoring, BuiltInBonusesForLapsLed) {
  const auto race = AddRace(GetParam(), {{1, 1, 50}, {2, 2, 1}, {3, 3, 50}, {4, 4, 0}});
  const auto other = AddRace(GetParam(), {{1, 1, 0}, {2, 2, 0}});
  ApplyBonusPoints(*league_, state_, race, GetParam());
  EXPECT_EQ(Results(GetParam(), race, "Points, Bonus"), (Strings{"10|11", "5|6", "10|11", "0|1"}));
  EXPECT_EQ(Results(GetParam(), other, "Points, Bonus"), (Strings{"0|1", "0|1"}));
  // Where nobody led a lap, all led the most.
  ApplyBonusPoints(*league_, state_, other, GetParam());
  EXPECT_EQ(Results(GetParam(), other, "Points, Bonus"), (Strings{"5|6", "5|6"}));

  state_.simType = common::kNascarLegends;
  ApplyBonusPoints(*league_, state_, race, GetParam());
  EXPECT_EQ(Results(GetParam(), race, "Bonus"), (Strings{"11", "6", "11", "1"}));
}

TEST_P(RaceScoring, TheLeaguesBonusRulesRunInTheirOrder) {
  state_.useCustomBonusSystem = true;
  state_.simType = common::kNascarLegends;
  league_->Execute("DELETE * FROM Bonus");
  const auto addRule = [&](const char* points, const char* query) {
    league_->Execute(fmt::format("INSERT INTO Bonus (Name, Points, Query) VALUES ('rule', {}, {})", points,
                                 common::QuoteSQL(query)));
  };
  addRule("3", "Finish=1");
  addRule("2", "Points>=3");  // sees the rule before it
  addRule("10", "LapsLed=(SELECT Max(LapsLed) FROM STNStats WHERE STNRaceID=<RACEID>)");
  addRule("Null", "Finish>0");
  addRule("0", "Finish>0");
  AddRace(GetParam(), {{1, 1, 99}});
  const auto race = AddRace(GetParam(), {{2, 1, 7}, {1, 2, 3}});
  ApplyBonusPoints(*league_, state_, race, GetParam());
  EXPECT_EQ(Results(GetParam(), race, "Points, Bonus"), (Strings{"10|11", "5|6"}));

  // The placeholder is spelled in capitals only; what ran before the bad rule stays.
  addRule("1", "STNRaceID=<raceid>");
  EXPECT_THROW(ApplyBonusPoints(*league_, state_, race, GetParam()), engine::EngineError);
  EXPECT_EQ(Results(GetParam(), race, "Points, Bonus"), (Strings{"22|23", "10|11"}));

  // Nor does a rule leave its brackets, and with them its race.
  for (const char* query : {"1=1) OR (1=1", "1=1, 2", "1=1;"}) {
    league_->Execute("DELETE * FROM Bonus");
    addRule("1", query);
    EXPECT_THROW(ApplyBonusPoints(*league_, state_, race, GetParam()), engine::EngineError) << query;
    EXPECT_EQ(Results(GetParam(), race, "Points, Bonus"), (Strings{"22|23", "10|11"})) << query;
  }
}

TEST_P(RaceScoring, ARecalculationNumbersAndScoresAnew) {
  const auto race = AddRace(GetParam(), {{9, 4, 0, 500, "150.5"},
                                         {1, 9, 20, 500, "0"},
                                         {5, 3, 1, 500, "150.5"},
                                         {2, 1, 0, 500, "Null"},
                                         {12, 30, 0, 500, "160.25"}});
  RecalculateRace(*template_, *league_, state_, race, GetParam());
  EXPECT_EQ(
      Results(GetParam(), race, "Finish, Start, Points, Bonus, PrizeMoney"),
      (Strings{"4|3|160|0|Null", "1|4|185|10|Null", "3|2|170|5|Null", "2|5|170|0|Null", "5|1|155|0|Null"}));
  EXPECT_EQ(state_.pointTable.Positions(), 43);
}

TEST_P(RaceScoring, ARecalculationKeepsToTheTableOfALegendsRace) {
  state_.simType = common::kNascarLegends;
  const auto threes = AddRace(GetParam(), {{1, 1, 0, 147}, {2, 2, 0, 150}, {3, 3, 0, 141}, {4, 4, 0, 144}});
  const auto none = AddRace(GetParam(), {{1, 1, 0, 150}});
  for (const auto race : {threes, none}) RecalculateRace(*template_, *league_, state_, race, GetParam());
  EXPECT_EQ(Results(GetParam(), threes, "Points"), (Strings{"150", "147", "144", "141"}));
  EXPECT_EQ(Results(GetParam(), none, "Points"), Strings{"175"});

  // The league's own table has no such columns.
  state_.useCustomPointSystem = true;
  league_->Execute("UPDATE PointSystem SET PrizeMoney=100");
  RecalculateRace(*template_, *league_, state_, threes, GetParam());
  EXPECT_EQ(Results(GetParam(), threes, "Points, PrizeMoney"),
            (Strings{"175|100", "170|100", "165|100", "160|100"}));
}

TEST_P(RaceScoring, AnErrorLeavesWhatWasDoneBeforeIt) {
  state_.useCustomBonusSystem = true;
  league_->Execute("DELETE * FROM Bonus");
  league_->Execute("INSERT INTO Bonus (Name, Points, Query) VALUES ('broken', 1, 'Finish=')");
  const auto race = AddRace(GetParam(), {{7, 1, 0, 1}});
  EXPECT_THROW(RecalculateRace(*template_, *league_, state_, race, GetParam()), engine::EngineError);
  EXPECT_EQ(Results(GetParam(), race, "Finish, Points"), Strings{"1|175"});
}

}  // namespace
}  // namespace scorvane::scoring
