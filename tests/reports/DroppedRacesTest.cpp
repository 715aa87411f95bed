#include "reports/DroppedRaces.h"

#include "reports/ReportsFixture.h"

namespace scorvane::reports {
namespace {

using testing::ElementsAre;

class DroppedRacesTest : public ReportsFixture {
 protected:
  void AddEvents(int count) {
    for (int i = 0; i < count; ++i) league_->Execute("INSERT INTO Race (Name) VALUES ('Track')");
  }
  // A driver with a result in each of the first races, given as points, bonus, laps led.
  void AddDriver(const std::vector<std::array<int, 3>>& results, bool excluded = false) {
    league_->Execute(
        fmt::format("INSERT INTO Driver (Name,Exclude) VALUES ('D',{})", excluded ? "True" : "False"));
    const std::int32_t driver = common::GetMaxID(*league_, "Driver", "DriverID");
    int race = 0;
    for (const auto& [points, bonus, led] : results) {
      league_->Execute(
          fmt::format("INSERT INTO Stats (RaceID,DriverID,Points,Bonus,LapsLed) VALUES ({},{},{},{},{})",
                      ++race, driver, points, bonus, led));
    }
  }
  // The races that a driver drops.
  std::vector<std::string> Dropped(int driver) {
    return test::Rows(
        *league_,
        fmt::format("SELECT RaceID FROM Stats WHERE Dropped=True AND DriverID={} ORDER BY RaceID", driver));
  }
};

TEST_F(DroppedRacesTest, EachDriverDropsTheWorstOfAFullSeason) {
  AddEvents(4);
  AddDriver({{170, 0, 0}, {150, 0, 0}, {180, 5, 9}, {160, 0, 0}});
  AddDriver({{10, 0, 0}, {20, 0, 0}});
  AddDriver({{150, 5, 0}, {150, 0, 99}, {150, 5, 0}, {150, 5, 0}});  // the bonus decides
  AddDriver({{150, 5, 3}, {150, 5, 4}, {150, 5, 5}, {150, 5, 1}});   // laps led decide
  AddDriver({{170, 0, 0}, {160, 0, 0}, {150, 0, 0}, {-5, 0, 0}}, /*excluded=*/true);
  league_->Execute("UPDATE Stats SET Dropped=True WHERE DriverID=2");  // left by another setting

  const DroppedMarks marks = MarkDroppedRaces(*league_, 1);
  EXPECT_EQ(marks.events, 4);
  EXPECT_EQ(marks.best, 3);
  EXPECT_THAT(Dropped(1), ElementsAre("2"));
  EXPECT_THAT(Dropped(2), ElementsAre());
  EXPECT_THAT(Dropped(3), ElementsAre("2"));
  EXPECT_THAT(Dropped(4), ElementsAre("4"));
  EXPECT_THAT(Dropped(5), ElementsAre("4"));

  MarkDroppedRaces(*league_, 0);
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Stats WHERE Dropped=False"), "18");
}

TEST_F(DroppedRacesTest, OneResultAlwaysCounts) {
  AddEvents(5);
  AddDriver({{1, 0, 0}, {3, 0, 0}, {2, 0, 0}});
  AddDriver({{5, 1, 1}, {5, 1, 1}});  // level: either, but only one
  MarkDroppedRaces(*league_, 9);
  EXPECT_THAT(Dropped(1), ElementsAre("1", "3"));
  EXPECT_EQ(Dropped(2).size(), 1U);
}

TEST_F(DroppedRacesTest, AResultWithoutADriverNeverCounts) {
  AddEvents(2);
  AddDriver({{9, 0, 0}, {8, 0, 0}});
  league_->Execute("INSERT INTO Stats (RaceID,Points) VALUES (1,500)");
  MarkDroppedRaces(*league_, 1);
  EXPECT_THAT(test::Rows(*league_, "SELECT Points FROM Stats WHERE Dropped=True ORDER BY Points"),
              ElementsAre("8", "500"));
}

TEST_F(DroppedRacesTest, TheCaptionSaysHowManyCount) {
  const auto caption = [&](int dropped) { return StandingsCaption(MarkDroppedRaces(*league_, dropped)); };
  EXPECT_EQ(caption(2), "Results after 0 events:");
  AddEvents(1);
  EXPECT_EQ(caption(2), "Results after 1 events:");
  AddEvents(3);
  EXPECT_EQ(caption(0), "Results after 4 events:");
  EXPECT_EQ(caption(-3), "Results after 4 events:");
  EXPECT_EQ(caption(1), "Results based on each driver's best 3 finishes of 4 events:");
  AddEvents(1);
  EXPECT_EQ(caption(6), "Results based on each driver's best 1 finishes of 5 events:");
}

}  // namespace
}  // namespace scorvane::reports
