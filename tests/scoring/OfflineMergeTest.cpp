#include "scoring/OfflineMerge.h"

#include "StagedRace.h"
#include "common/ScriptedUserInterface.h"
#include "scoring/PointSystem.h"

namespace scorvane::scoring {
namespace {

using Strings = std::vector<std::string>;

class OfflineMerge : public ScoringFixture {
 protected:
  OfflineMerge() { LoadPointSystem(*template_, *league_, state_); }

  // A file of the event.
  void Stage(const std::string& file, const std::string& avgSpeed = "120.5mph") {
    league_->Execute(
        fmt::format("INSERT INTO STNRace (Name, FileName, Length, Laps, RaceTime, AvgSpeed, Weather) VALUES "
                    "('Pat''s Oval', '{}', '2.5', 100, '1:00:00', '{}', 'Clear')",
                    file, avgSpeed));
  }
  // A result of the file staged last; `rest` are finish, laps, laps led and qualifying speed.
  void Add(const std::string& driver, const std::string& rest, int points = 0) {
    league_->Execute(
        fmt::format("INSERT INTO STNStats (STNRaceID, DriverName, ReasonOut, Start, Bonus, Points, Finish, "
                    "LapsRun, LapsLed, Qualifying) VALUES ({}, '{}', 'Running', 9, 7, {}, {})",
                    common::GetMaxID(*league_, "STNRace", "STNRaceID"), driver, points, rest));
  }
  void StageEvent() {
    Stage("ann.stn", "118.25mph");
    Add("Ann Early", "1, 100, 60, '125.5'");
    for (const char* car : {"Ace Auto", "Bot Two", "Cpu Three"}) Add(car, "2, 100, 20, '123'");
    Stage("ben.stn", "117.5mph");
    Add("BOT TWO", "1, 100, 0, '140'");
    Add("Ace Auto", "2, 100, 99, '140'");
    Add("Ben Middle", "3, 100, 1, '126.75'");
    Stage("cy.stn", "121mph");
    Add("Ace Auto", "1, 100, 0, '140'");
    Add("Cy Late", "2, 98, 0, '124'");
    Add("Cpu Three", "3, 97, 0, '140'");
  }
  Strings Merged() {
    return test::Rows(
        *league_,
        "SELECT RaceID, Name, Start, Finish, LapsRun, LapsLed, Status, Points, Bonus, PrizeMoney, "
        "Qualifying, "
        "AvgSpeed FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID ORDER BY Finish");
  }
  Strings Order() {
    return test::Rows(
        *league_,
        "SELECT Name FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID ORDER BY Finish");
  }

  common::ScriptedUserInterface ui_;
};

TEST_F(OfflineMerge, MakesOneRaceOfTheMembersFiles) {
  StageEvent();
  league_->Execute("INSERT INTO Driver (Name, Handicap) VALUES ('CY LATE', 3)");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(test::Rows(*league_, "SELECT * FROM Race"),
            Strings{"1|Pat's Oval|Merged|2.5|100|Null|Null|Null|Null|Null|Clear"});
  EXPECT_EQ(Merged(), (Strings{"1|Ann Early|2|1|100|60|Running|185|10|Null|125.5|118.25",
                               "1|Ben Middle|1|2|100|1|Running|175|5|Null|126.75|117.5",
                               "1|CY LATE|3|3|98|0|Running|165|0|Null|124|121"}));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Driver"), "3");
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNRace"), "3") << "what is staged stays";

  ASSERT_EQ(ui_.progress.size(), 1U);
  const auto& progress = *ui_.progress[0];
  EXPECT_EQ(progress.caption, "Importing Results");
  EXPECT_EQ(progress.lines, Strings{"Merging..."});
  EXPECT_EQ(progress.maximum, 9);
  EXPECT_EQ(progress.value, 9);
  EXPECT_TRUE(progress.closed);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(OfflineMerge, DropsAMemberWhoIsInTwoFiles) {
  StageEvent();
  Add("ben middle", "4, 90, 0, '120'");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(Order(), (Strings{"Ann Early", "Cy Late"}));
}

TEST_F(OfflineMerge, TakesEveryDriverOfASingleFile) {
  Stage("only.stn");
  for (const char* name : {"A", "B", "C"}) Add(name, "1, 100, 0, '120'");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(test::Rows(*league_, "SELECT Start, Finish FROM STNStats ORDER BY Finish").size(), 3U);
  EXPECT_EQ(Strings({"A", "B", "C"}), test::Rows(*league_, "SELECT Name FROM Driver ORDER BY Name"));
}

TEST_F(OfflineMerge, NeedsADriverWhoIsInOneFileOnly) {
  for (const bool staged : {false, true}) {
    if (staged) {
      for (const char* file : {"a.stn", "b.stn"}) {
        Stage(file);
        Add("Ace Auto", "1, 100, 0, '120'");
      }
    }
    EXPECT_FALSE(MergeOfflineEvent(*league_, state_, ui_));
    EXPECT_EQ(ui_.messages,
              (std::vector<common::Message>{{"There are no unique drivers!  All duplicate drivers\r\nare "
                                             "assumed to be AI drivers and are ignored!",
                                             "Warning", common::MessageIcon::Exclamation}}));
    EXPECT_TRUE(ui_.progress.back()->closed);
    EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNStats"), staged ? "2" : "0");
    EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Race"), "0");
    ui_.messages.clear();
  }
}

TEST_F(OfflineMerge, TheOrderOfTheCriteriaDecidesTheFinish) {
  const std::pair<std::vector<std::int32_t>, Strings> orders[] = {
      {{2, 1}, {"Ann Early", "Cy Late", "Ben Middle"}},      // own finish
      {{3}, {"Cy Late", "Ann Early", "Ben Middle"}},         // average speed
      {{4}, {"Ann Early", "Ben Middle", "Cy Late"}},         // laps led
      {{6}, {"Ben Middle", "Ann Early", "Cy Late"}},         // qualifying
      {{7, 1, 6}, {"Ben Middle", "Ann Early", "Cy Late"}}};  // all were running; laps, then qualifying
  for (const auto& [ids, expected] : orders) {
    league_->Execute("DELETE * FROM STNRace");
    league_->Execute("DELETE * FROM Race");
    league_->Execute("UPDATE RankCriteria SET Priority=Priority+100");
    StoreRankCriteria(*league_, common::kNascarRacing3, ids);
    StageEvent();
    ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
    EXPECT_EQ(Order(), expected) << ids[0];
  }
}

TEST_F(OfflineMerge, NewSimulationsUseTheirCriteriaAlone) {
  state_.simType = common::kNascarRacing2003;
  league_->Execute("UPDATE RankCriteria SET N4=(RankCriteriaID=4)");
  league_->Execute("UPDATE RankCriteria SET Priority=99 WHERE RankCriteriaID=4");
  StageEvent();
  league_->Execute("UPDATE STNStats SET LapsLed=2 WHERE DriverName='Cy Late'");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(Order(), (Strings{"Ann Early", "Cy Late", "Ben Middle"}));
}

TEST_F(OfflineMerge, WithoutCriteriaTheOwnFinishDecides) {
  league_->Execute("DELETE * FROM RankCriteria");
  StageEvent();
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(Order(), (Strings{"Ann Early", "Cy Late", "Ben Middle"}));
}

TEST_F(OfflineMerge, KeepsToTheTableOfALegendsEvent) {
  state_.simType = common::kNascarLegends;
  Stage("a.stn");
  Add("Ann", "1, 100, 0, '120'", 100);
  Add("Car", "2, 100, 0, '120'", 98);
  Add("Cpu", "3, 100, 0, '120'", 96);
  Stage("b.stn");
  Add("Ben", "2, 100, 0, '121'", 50);
  Add("Car", "1, 100, 0, '120'", 51);
  Add("Cpu", "3, 100, 0, '120'", 49);
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(test::Rows(*league_, "SELECT Points, Bonus FROM Stats ORDER BY Finish"),
            (Strings{"100|0", "98|0"}));
}

TEST_F(OfflineMerge, PaysTheMoneyOfTheLeaguesOwnPointSystem) {
  league_->Execute("DELETE * FROM PointSystem WHERE Position>2");
  league_->Execute("UPDATE PointSystem SET Points=20-Position, PrizeMoney=1000*Position");
  state_.useCustomPointSystem = true;
  LoadPointSystem(*template_, *league_, state_);
  StageEvent();
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(test::Rows(*league_, "SELECT Points-Bonus, PrizeMoney FROM Stats ORDER BY Finish"),
            (Strings{"19|1000", "18|2000", "0|Null"}));
}

TEST_F(OfflineMerge, NumbersTravelInTheUsersNotation) {
  engine_.DefaultWorkspace().SetDecimalSeparator(',');
  state_.decimalSeparator = ',';
  league_->Execute(
      "INSERT INTO STNRace (Name, Length, Laps, AvgSpeed) VALUES ('Track', '1,533', 10, '118,25mph')");
  Add("Ann", "1, 100, 0, '125,5'");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(league_->OpenRecordset("SELECT Length FROM Race").At(0).ToSingle(), 1.533F);
  EXPECT_EQ(league_->OpenRecordset("SELECT Qualifying FROM Stats").At(0).ToSingle(), 125.5F);
  EXPECT_EQ(test::Single(*league_, "SELECT AvgSpeed FROM Stats"), "118,25");
}

TEST_F(OfflineMerge, ACriterionThatIsNoneLeavesTheLeagueAlone) {
  league_->Execute("UPDATE RankCriteria SET Query='Nonsense(' WHERE RankCriteriaID=1");
  StageEvent();
  EXPECT_THROW(MergeOfflineEvent(*league_, state_, ui_), engine::EngineError);
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Race"), "0");
  EXPECT_TRUE(ui_.progress[0]->closed);
}

TEST_F(OfflineMerge, FilesMayNotSayHowFastTheyWere) {
  Stage("a.stn");
  league_->Execute("UPDATE STNRace SET AvgSpeed=Null");
  Add("Ann", "1, 100, 0, '120'");
  ASSERT_TRUE(MergeOfflineEvent(*league_, state_, ui_));
  EXPECT_EQ(Order(), Strings{"Ann"});
}

TEST_F(OfflineMerge, CriteriaAreListedAndStored) {
  const auto names = [&](std::int16_t simType) {
    Strings all;
    for (const RankCriterion& criterion : ListRankCriteria(*league_, simType))
      all.push_back(fmt::format("{} {}", criterion.id, criterion.name));
    return all;
  };
  ASSERT_EQ(names(common::kNascarRacing3).size(), 8U);
  EXPECT_EQ(names(common::kNascarRacing3)[2], "3 Average Speed");
  ASSERT_EQ(names(common::kNascarRacing4).size(), 7U);
  EXPECT_EQ(names(common::kNascarRacing4)[2], "4 Laps Led");

  StoreRankCriteria(*league_, common::kNascarRacing4, {4, 1, 2, 5, 6, 7, 8});
  EXPECT_EQ(names(common::kNascarRacing4)[0], "4 Laps Led");
  EXPECT_EQ(test::Rows(*league_, "SELECT RankCriteriaID, Priority FROM RankCriteria ORDER BY RankCriteriaID"),
            (Strings{"1|2", "2|3", "3|9999", "4|1", "5|4", "6|5", "7|6", "8|7"}));
  StoreRankCriteria(*league_, common::kNascarRacing3, {3, 4, 1, 2, 5, 6, 7, 8});
  EXPECT_EQ(names(common::kNascarRacing3)[0], "3 Average Speed");
}

}  // namespace
}  // namespace scorvane::scoring
