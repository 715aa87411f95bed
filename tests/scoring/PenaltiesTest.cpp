#include "scoring/Penalties.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "StagedRace.h"
#include "drivers/Roster.h"
#include "scoring/RaceResults.h"
#include "scoring/RaceScoring.h"

namespace scorvane::scoring {
namespace {

using Strings = std::vector<std::string>;
using testing::HasSubstr;
constexpr auto kOff = PenaltyKind::Points;
constexpr auto kPlace = PenaltyKind::Position;
constexpr auto kOut = PenaltyKind::Disqualification;

// Six results on the places 1 to 5 and 8, each with a bonus of 1 and money of 1 given by hand. The template's
// table: 175, 170, 165, 160, 155, 150, 146, 142.
class Penalties : public ScoringFixture {
 protected:
  Penalties()
      : race_(AddRace(false, {{1, 1, 30, 175},
                              {2, 2, 9, 170},
                              {3, 3, 0, 165},
                              {4, 4, 0, 160},
                              {5, 5, 0, 155},
                              {8, 6, 0, 142}})) {
    league_->Execute("UPDATE Stats SET Status='Running'");
  }

  std::int32_t Give(int driver, PenaltyKind kind, int amount = 0, const std::string& reason = "Contact") {
    Penalty penalty;
    penalty.raceId = race_;
    penalty.driverId = driver;
    penalty.kind = kind;
    penalty.amount = amount;
    penalty.reason = reason;
    return AddPenalty(*template_, *league_, state_, penalty);
  }
  void TakeBack(std::int32_t id) { RemovePenalty(*template_, *league_, state_, id); }
  // Place and points of each driver's result in turn.
  Strings Outcome(const std::string& fields = "Finish, Points") { return Results(false, race_, fields); }
  Strings Everything() { return Outcome("StatsID, DriverID, Finish, Points, Bonus, PrizeMoney, Status"); }
  std::string WhyNot(int driver, PenaltyKind kind, int amount = 0, const std::string& reason = "Contact") {
    try {
      Give(driver, kind, amount, reason);
    } catch (const PenaltyError& error) {
      return error.what();
    }
    return {};
  }
  void Edit(int driver, ResultEntry::Field field, const std::string& text) {
    const RaceKey key{race_, false};
    ResultEntry entry = ReadResultEntry(*league_, state_, key, driver, 1);
    entry.fields[field] = text;
    EditWithPenalties(*template_, *league_, state_, race_,
                      [&] { UpdateResult(*league_, state_, key, driver, entry, 1); });
  }

  const std::int32_t race_;
};

TEST_F(Penalties, EachKindAlone) {
  const Strings before = Everything();
  const auto points = Give(2, kOff, 25);
  EXPECT_EQ(Outcome(), (Strings{"1|175", "2|145", "3|165", "4|160", "5|155", "8|142"}));
  TakeBack(points);
  EXPECT_EQ(Everything(), before);

  // The places stay the ones that the race has: the next behind 5th is 8th.
  const auto place = Give(3, kPlace, 8);
  EXPECT_EQ(Outcome(), (Strings{"1|175", "2|170", "8|142", "3|165", "4|160", "5|155"}));
  TakeBack(place);
  EXPECT_EQ(Everything(), before);

  const auto out = Give(1, kOut);
  EXPECT_EQ(Outcome("Finish, Points, Bonus, PrizeMoney, Status"),
            (Strings{"8|0|0|0|Disqualified", "1|175|1|1|Running", "2|170|1|1|Running", "3|165|1|1|Running",
                     "4|160|1|1|Running", "5|155|1|1|Running"}));
  TakeBack(out);
  EXPECT_EQ(Everything(), before);
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM PenaltyBase"), "0");
}

TEST_F(Penalties, TogetherInTheOrderInWhichTheyWereGiven) {
  const Strings before = Everything();
  std::vector<std::int32_t> given = {Give(1, kOff, 40)};
  EXPECT_EQ(Outcome()[0], "1|135");
  given.push_back(Give(1, kOut));  // what was taken off before is gone with the rest
  EXPECT_EQ(Outcome()[0], "8|0");
  given.push_back(Give(1, kOff, 20));
  given.push_back(Give(2, kPlace, 8));  // not behind who is disqualified
  given.push_back(Give(2, kOff, 200));
  // Order 3, 4, 5, 6, 2, 1. The fifth place is worth 155.
  const Strings all = {"8|-20", "5|-45", "1|175", "2|170", "3|165", "4|160"};
  EXPECT_EQ(Outcome(), all);
  given.push_back(Give(3, kOut));  // last of all
  EXPECT_EQ(Outcome(), (Strings{"5|-20", "4|-40", "8|0", "1|175", "2|170", "3|165"}));
  EXPECT_EQ(PenaltyTexts(*league_, race_).at(1),
            "Contact (40 points off); Contact (disqualified); Contact (20 points off)");

  // In any order they leave nothing behind.
  std::vector<std::size_t> order = {3, 0, 5, 1, 4, 2};
  TakeBack(given[5]);
  EXPECT_EQ(Outcome(), all);
  for (const std::size_t i : order)
    if (i != 5) TakeBack(given[i]);
  EXPECT_EQ(Everything(), before);
}

TEST_F(Penalties, BonusesAndMoneyFollowThePlacesByTheirDifference) {
  state_.useCustomPointSystem = state_.useCustomBonusSystem = true;
  league_->Execute("UPDATE PointSystem SET PrizeMoney=1000-100*Position");
  league_->Execute("DELETE * FROM Bonus");
  league_->Execute("INSERT INTO Bonus (Name, Points, Query) VALUES ('Win', 10, 'Finish=1')");
  league_->Execute("INSERT INTO Bonus (Name, Points, Query) VALUES ('Podium', 2, 'Finish<=3')");
  league_->Execute(
      "INSERT INTO Bonus (Name, Points, Query) VALUES ('High', 1, 'Points>=180')");  // sees those before
  const Strings before = Everything();
  Give(1, kPlace, 4);
  // Rules before: 13, 2, 2, 0; after: 2 wins with 13, 3 and 4 have 2, 1 none.
  EXPECT_EQ(
      Outcome("Finish, Points, Bonus, PrizeMoney"),
      (Strings{"4|147|-12|-299", "1|186|12|101", "2|170|1|101", "3|167|3|101", "5|155|1|1", "8|142|1|1"}));
  Give(1, kOut);
  EXPECT_EQ(Outcome("Points, Bonus, PrizeMoney")[0], "0|0|0");
  TakeBack(1);
  TakeBack(2);
  EXPECT_EQ(Everything(), before);
}

TEST_F(Penalties, HandEditsSurvive) {
  Give(1, kPlace, 3);
  EXPECT_EQ(Outcome(), (Strings{"3|165", "1|175", "2|170", "4|160", "5|155", "8|142"}));
  Edit(1, ResultEntry::kPoints, "168");     // 3 more
  Edit(2, ResultEntry::kBonus, "6");        // 5 more, the points as they are
  Edit(3, ResultEntry::kWinnings, "5001");  // of a result that moved up
  EXPECT_EQ(Outcome("Finish, Points, Bonus, PrizeMoney"),
            (Strings{"3|168|1|1", "1|175|6|1", "2|170|1|5001", "4|160|1|1", "5|155|1|1", "8|142|1|1"}));
  const auto more = Give(4, kOut);
  EXPECT_EQ(Outcome("Finish, Points, Bonus")[0], "3|168|1");
  Edit(4, ResultEntry::kLapsRun, "77");
  TakeBack(more);
  TakeBack(1);
  EXPECT_EQ(Outcome("Finish, Points, Bonus, PrizeMoney"),
            (Strings{"1|178|1|1", "2|170|6|1", "3|165|1|5001", "4|160|1|1", "5|155|1|1", "8|142|1|1"}));
}

TEST_F(Penalties, ResultsComeAndGo) {
  const Strings before = Everything();
  const RaceKey key{race_, false};
  Give(1, kOut);
  Give(2, kPlace, 4);
  const auto edit = [&](const std::function<void()>& body) {
    EditWithPenalties(*template_, *league_, state_, race_, body);
  };
  // The penalty waits for its result; the others have their places without it.
  edit([&] { RemoveResults(*league_, key, {1}); });
  EXPECT_EQ(Outcome(), (Strings{"4|160", "2|170", "3|165", "5|155", "8|142"}));
  ResultEntry entry;
  entry.fields = {"1", "1", "Driver 1", "10", "0", "175", "1", "0", "0", "1"};
  edit([&] { AddResult(*league_, state_, key, entry, 1); });
  EXPECT_EQ(Outcome(), (Strings{"4|160", "1|175", "2|170", "3|165", "5|155", "8|0"}));
  // Of two results of a driver the better one bears it.
  entry.fields[ResultEntry::kFinish] = "9";
  entry.fields[ResultEntry::kPoints] = "138";
  edit([&] { AddResult(*league_, state_, key, entry, 1); });
  // Order 3, 4, 5, 2, 6, the second one, and who is disqualified behind.
  EXPECT_EQ(Outcome(), (Strings{"4|160", "1|175", "2|170", "3|165", "5|155", "9|0", "8|142"}));

  drivers::RemoveDrivers(*league_, {1});
  ApplyPenalties(*template_, *league_, state_, race_);
  drivers::RemoveDrivers(*league_, {2});
  ApplyPenalties(*template_, *league_, state_, race_);
  EXPECT_EQ(Everything(), Strings(before.begin() + 2, before.end()));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM PenaltyBase"), "0");
}

TEST_F(Penalties, ARecalculationAndAMergeKeepThem) {
  Give(1, kPlace, 3);
  Give(2, kOff, 10);
  Edit(3, ResultEntry::kPoints, "999");
  RecalculateRace(*template_, *league_, state_, race_, false);
  // Without penalties 185, 175, 165, 160, 155 and 150 by places 1 to 6, bonuses for laps led with them.
  const Strings scored = {"3|175", "1|170", "2|170", "4|160", "5|155", "6|150"};
  EXPECT_EQ(Outcome(), scored);
  RecalculateRace(*template_, *league_, state_, race_, false);
  EXPECT_EQ(Outcome(), scored);

  const std::vector<std::int32_t> races = PenalisedRacesOf(*league_, {1, 2});
  drivers::MergeDrivers(*league_, 1, 2);
  for (const std::int32_t race : races) ApplyPenalties(*template_, *league_, state_, race);
  // Both are borne by the better of the two results now.
  EXPECT_EQ(Outcome(), (Strings{"3|165", "1|180", "2|170", "4|160", "5|155", "6|150"}));
  EXPECT_EQ(ListPenalties(*league_).at(0).driver, "Driver 2");
}

TEST_F(Penalties, WhatCannotBeGivenLeavesNothing) {
  const Strings before = Everything();
  EXPECT_THAT(WhyNot(1, kPlace, 6), HasSubstr("no place 6"));
  EXPECT_THAT(WhyNot(1, kPlace, 9), HasSubstr("its last one is 8"));
  EXPECT_THAT(WhyNot(1, kPlace, 0), HasSubstr("no place 0"));
  EXPECT_THAT(WhyNot(3, kPlace, 3), HasSubstr("3rd already"));
  EXPECT_THAT(WhyNot(1, kOff, 0), HasSubstr("from 1 on"));
  EXPECT_THAT(WhyNot(1, kOff, -5), HasSubstr("from 1 on"));
  EXPECT_THAT(WhyNot(1, kOut, 0, " \t "), HasSubstr("reason"));
  EXPECT_THAT(WhyNot(1, kOut, 0, std::string(256, 'x')), HasSubstr("255"));
  EXPECT_THAT(WhyNot(99, kOut), HasSubstr("no driver 99"));
  league_->Execute("INSERT INTO Driver (Name) VALUES ('Absent')");
  EXPECT_THAT(WhyNot(7, kOut), HasSubstr("no result"));
  EXPECT_EQ(league_->FindTableDef("Penalty"), nullptr);
  EXPECT_EQ(Everything(), before);

  const std::string reason = " <b>Zoë's | \"push\"</b> ";
  EXPECT_EQ(WhyNot(1, kOut, 0, reason), "");
  EXPECT_EQ(ListPenalties(*league_).at(0).reason, "<b>Zoë's | \"push\"</b>");
  EXPECT_THAT(WhyNot(1, kOut), HasSubstr("already"));
  EXPECT_THAT(WhyNot(1, kPlace, 8), HasSubstr("already"));
  EXPECT_THAT(WhyNot(6, kPlace, 8), HasSubstr("only who is disqualified"));
  // A rule that does not work takes the penalty back, too.
  const Strings penalised = Everything();
  state_.useCustomBonusSystem = true;
  league_->Execute("UPDATE Bonus SET Query='Finish='");
  EXPECT_THROW(Give(2, kPlace, 4), engine::EngineError);
  EXPECT_EQ(Everything(), penalised);
  EXPECT_EQ(ListPenalties(*league_).size(), 1U);
}

}  // namespace
}  // namespace scorvane::scoring
