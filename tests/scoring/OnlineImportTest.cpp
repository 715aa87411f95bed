#include "scoring/OnlineImport.h"

#include "StagedRace.h"
#include "common/ScriptedUserInterface.h"

namespace scorvane::scoring {
namespace {

using Strings = std::vector<std::string>;

class OnlineImport : public ScoringFixture {
 protected:
  // A staged result of the race staged last; the values behind the driver's name as in the table.
  void AddResult(const std::string& name, const std::string& values) {
    league_->Execute(
        fmt::format("INSERT INTO STNStats (STNRaceID, DriverName, Start, Finish, LapsRun, LapsLed, Points, "
                    "Bonus, Qualifying, ReasonOut, PrizeMoney) VALUES ({}, '{}', {})",
                    common::GetMaxID(*league_, "STNRace", "STNRaceID"), name, values));
  }
  Strings Stored() {
    return test::Rows(
        *league_,
        "SELECT RaceID, Name, Start, Finish, LapsRun, LapsLed, Points, Bonus, Qualifying, Status, "
        "PrizeMoney, Dropped, AvgSpeed FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID "
        "ORDER BY StatsID");
  }

  common::ScriptedUserInterface ui_;
};

TEST_F(OnlineImport, EveryStagedRaceBecomesARace) {
  league_->Execute("INSERT INTO Driver (Name, Handicap) VALUES ('DALE JARRETT', 7)");
  league_->Execute(
      "INSERT INTO STNRace (Name, FileName, Length, Laps, RaceTime, AvgSpeed, VictoryMargin, Cautions, "
      "LeadChanges, "
      "Weather) VALUES ('Pat''s ' & Chr(124) & ' Oval', 'a.stn', '2.5', 200, '3:00:00', '165.4', '1 lap', 3, "
      "12, "
      "'Clear, 72°F')");
  AddResult("Dale Jarrett", "3, 1, 200, 150, 185, 10, '180.25', 'Running', 5000");
  AddResult("Jürgen O''Brien", "1, 2, 199, 0, 170, 0, '0', Null, Null");
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Empty')");
  AddResult("jürgen o''brien", "1, 1, 10, 0, 175, 0, '0', 'Running', Null");

  ImportStagedRaces(*league_, state_, ui_);
  EXPECT_EQ(test::Rows(*league_, "SELECT * FROM Race ORDER BY RaceID"),
            (Strings{"1|Pat's | Oval|a.stn|2.5|200|3:00:00|165.4|1 lap|3|12|Clear, 72°F",
                     "2|Empty|Null|Null|Null|Null|Null|Null|Null|Null|Null"}));
  EXPECT_EQ(Stored(), (Strings{"1|DALE JARRETT|3|1|200|150|185|10|180.25|Running|5000|False|Null",
                               "1|Jürgen O'Brien|1|2|199|0|170|0|0|Null|Null|False|Null",
                               "2|Jürgen O'Brien|1|1|10|0|175|0|0|Running|Null|False|Null"}));
  EXPECT_EQ(test::Rows(*league_, "SELECT Name, Handicap FROM Driver ORDER BY DriverID"),
            (Strings{"DALE JARRETT|7", "Jürgen O'Brien|0"}));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNStats"), "3") << "what is staged stays";

  ASSERT_EQ(ui_.progress.size(), 1U);
  const auto& progress = *ui_.progress[0];
  EXPECT_EQ(progress.caption, "Importing Results");
  EXPECT_EQ(progress.lines, Strings{"Progress..."});
  EXPECT_EQ(progress.maximum, 3);
  EXPECT_EQ(progress.value, 3);
  EXPECT_TRUE(progress.closed);
}

TEST_F(OnlineImport, NumbersTravelInTheUsersNotation) {
  engine_.DefaultWorkspace().SetDecimalSeparator(',');
  state_.decimalSeparator = ',';
  league_->Execute("INSERT INTO STNRace (Name, Length) VALUES ('Track', '1,533')");
  AddResult("A", "1, 1, 1, 1, 1, 0, '151,123', Null, Null");
  ImportStagedRaces(*league_, state_, ui_);
  EXPECT_EQ(league_->OpenRecordset("SELECT Length FROM Race")["Length"].ToSingle(), 1.533F);
  EXPECT_EQ(league_->OpenRecordset("SELECT Qualifying FROM Stats")["Qualifying"].ToSingle(), 151.123F);
}

TEST_F(OnlineImport, AResultWithoutANameIsLeftOut) {
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Track')");
  AddResult("  ", "1, 1, 1, 1, 1, 0, '0', Null, Null");
  AddResult("A", "2, 2, 1, 1, 1, 0, '0', Null, Null");
  ImportStagedRaces(*league_, state_, ui_);
  EXPECT_EQ(test::Rows(*league_, "SELECT Start FROM Stats"), Strings{"2"});
}

TEST_F(OnlineImport, AnErrorLeavesTheRacesBeforeIt) {
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Good')");
  AddResult("A", "1, 1, 1, 1, 1, 0, '0', Null, Null");
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Bad')");
  AddResult("B", "1, 1, 1, 1, 1, 0, '0', Null, Null");
  // The comma is no decimal separator of this user.
  state_.decimalSeparator = ',';
  league_->Execute("UPDATE STNStats SET Qualifying=1.5 WHERE DriverName='B'");
  EXPECT_THROW(ImportStagedRaces(*league_, state_, ui_), engine::EngineError);
  EXPECT_EQ(test::Rows(*league_, "SELECT Name FROM Race ORDER BY RaceID"), (Strings{"Good", "Bad"}));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Stats"), "1");
  EXPECT_TRUE(ui_.progress[0]->closed);
}

TEST_F(OnlineImport, NothingStagedAddsNothing) {
  ImportStagedRaces(*league_, state_, ui_);
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Race"), "0");
}

}  // namespace
}  // namespace scorvane::scoring
