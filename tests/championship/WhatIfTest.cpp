#include "championship/WhatIf.h"

#include <gmock/gmock.h>

#include "SeasonOf.h"
#include "championship/RaceRules.h"
#include "db/LeagueFixture.h"
#include "db/Tables.h"

namespace scorvane::championship {
namespace {

using testing::ElementsAre;

class WhatIfTest : public test::LeagueFixture {
 protected:
  WhatIfTest() : league_(NewLeague()) {
    for (const char* name : {"Avery", "Brook", "Crane"})
      league_->Execute(std::string("INSERT INTO Driver (Name) VALUES ('") + name + "')");
    league_->Execute("INSERT INTO Race (Name) VALUES ('Daytona')");
    league_->Execute("INSERT INTO Race (Name) VALUES ('Pocono')");
    // Brook won on the road, was disqualified and stands last; ten points were taken off Avery.
    for (const char* values :
         {"1,1,1,2,50,170,5,'Running'", "1,2,3,1,90,0,0,'Disqualified'", "1,3,2,3,0,170,0,'Running'",
          "2,1,1,1,0,175,0,'Running'", "2,3,2,2,60,180,10,'Running'"}) {
      league_->Execute(
          std::string(
              "INSERT INTO Stats (RaceID,DriverID,Finish,Start,LapsLed,Points,Bonus,Status) VALUES (") +
          values + ")");
    }
  }
  void Penalise(const char* values) {
    if (league_->FindTableDef("Penalty") == nullptr) {
      using engine::FieldType;
      league_->AppendTableDef(
          {"Penalty",
           {db::Column("PenaltyID", FieldType::Long, 0, engine::kAutoIncrField),
            db::Column("RaceID", FieldType::Long), db::Column("DriverID", FieldType::Long),
            db::Column("Kind", FieldType::Long), db::Column("Amount", FieldType::Long)},
           {db::PrimaryKey("PenaltyID")}});
    }
    league_->Execute(std::string("INSERT INTO Penalty (RaceID,DriverID,Kind,Amount) VALUES (") + values +
                     ")");
  }
  std::vector<std::string> Points(const WhatIf& whatIf) {
    const Season season = ApplyWhatIf(*league_, *template_, state_, ReadSeason(*league_, {}), whatIf);
    return Texts(season, ComputeStandings(season, 0, nullptr));
  }

  std::unique_ptr<engine::Database> league_;
  common::ProcessState state_;
};

TEST_F(WhatIfTest, PenaltiesStay) {
  Penalise("1,1,0,10");
  Penalise("1,2,0,40");  // settled with the disqualification behind it
  Penalise("1,2,2,0");
  Penalise("1,2,0,3");
  EXPECT_THAT(Points({}), ElementsAre("Crane 350", "Avery 345", "Brook 0"));
  // 25 - 10 + 25, 18 + 18, and three points less than nothing.
  WhatIf whatIf;
  whatIf.points = {25, 18, 15};
  whatIf.noBonus = true;
  EXPECT_THAT(Points(whatIf), ElementsAre("Avery 40", "Crane 36", "Brook -3"));
  // With the built-in bonuses: Avery led in the first race, the most laps were Brook's; Crane led the most in
  // the second.
  whatIf.noBonus = false;
  EXPECT_THAT(Points(whatIf), ElementsAre("Crane 46", "Avery 45", "Brook -3"));
  // Without Crane Avery loses nothing, and without Avery Crane wins twice.
  whatIf.without = {3};
  EXPECT_THAT(Points(whatIf), ElementsAre("Avery 50", "Brook -3"));
  whatIf.without = {1};
  EXPECT_THAT(Points(whatIf), ElementsAre("Crane 60", "Brook -3"));
}

TEST(RaceRules, TheMostOfARace) {
  RaceRules rules;
  rules.tables = {{25, 18}, {40}, {99}};
  EXPECT_EQ(MostOfARace(rules).points, 25);
  rules.tableOf = {0, 1, 1};  // the third table is nobody's
  EXPECT_EQ(MostOfARace(rules).points, 40);
  // Who starts first gains no places: five and two for the pole, or six.
  rules.bonuses = {{"Led", Condition::LedALap, 3},  {"Pole", Condition::Pole, 5},
                   {"Both", Condition::PoleWin, 2}, {"Gained", Condition::MostGained, 6},
                   {"Late", Condition::Other, 1},   {"Fined", Condition::Win, -9}};
  EXPECT_EQ(MostOfARace(rules).bonus, 11);
  EXPECT_EQ(MostOfARace(rules).points, 51);
  EXPECT_EQ(MostOfARace({}).points, 0);
}

}  // namespace
}  // namespace scorvane::championship
