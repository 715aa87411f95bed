#include "championship/Teams.h"

#include <gmock/gmock.h>

#include "SeasonOf.h"
#include "championship/TeamStandings.h"
#include "common/RuleError.h"
#include "common/SqlText.h"
#include "db/LeagueFixture.h"
#include "drivers/Roster.h"

namespace scorvane::championship {
namespace {

using common::RuleError;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Table(const Season& season, const std::vector<Membership>& memberships, int best) {
  std::vector<std::string> texts;
  for (const GroupStanding& standing : ComputeGroupStandings(
           season, {{1, "Blue"}, {2, "Green"}, {3, "Nobody"}, {4, "Red"}}, memberships, best)) {
    texts.push_back(fmt::format("{} {} wins {} starts {} drivers {}", standing.name, standing.points,
                                standing.totals.Wins(), standing.totals.starts, standing.drivers));
  }
  return texts;
}

TEST(TeamStandings, CountTheBestOfEachRaceByWhoDroveForWhomThen) {
  Season season = SeasonOf({{"Avery", {{1, 25}, {1, 25}, {6, 5}}},
                            {"Brook", {{2, 18}, {2, 18}, {1, 25}}},
                            {"Crane", {{3, 15}, {3, 15}, {2, 18}}},
                            {"Dover", {{4, -30}, {4, -30}, {3, -30}}}});
  // Avery drives for Blue, from race 3 on for Red; Brook and Crane for Blue, Crane only from race 2 on; Dover
  // for Green.
  std::vector<Membership> members = {{1, 1, 0}, {1, 4, 3}, {2, 1, 0}, {3, 1, 2}, {4, 2, 0}};
  // The best of each race: Blue 25, 25, 25; with two: 43, 43, 43; all: 43, 58, 43. Green is there with less
  // than none.
  EXPECT_THAT(Table(season, members, 1),
              ElementsAre("Blue 75 wins 3 starts 7 drivers 3", "Red 5 wins 0 starts 1 drivers 1",
                          "Green -90 wins 0 starts 3 drivers 1"));
  EXPECT_THAT(Table(season, members, 2).front(), "Blue 129 wins 3 starts 7 drivers 3");
  EXPECT_THAT(Table(season, members, 0).front(), "Blue 144 wins 3 starts 7 drivers 3");
  // Leaving keeps what was scored before.
  members.push_back({2, std::nullopt, 2});
  EXPECT_THAT(Table(season, members, 0).front(), "Blue 101 wins 2 starts 5 drivers 3");
  // A race that was driven before race 3 though it came later belongs to Blue still.
  season.late = {{4, 3}};
  EXPECT_EQ(season.RacesBefore(3), 2U);
  season.races = {1, 2, 4, 3};
  EXPECT_EQ(season.RacesBefore(3), 3U);
  EXPECT_EQ(season.RacesBefore(4), 2U);
  // Who is excluded counts for nobody.
  season.drivers[3].excluded = true;
  EXPECT_EQ(Table(season, members, 0).size(), 1U);
}

TEST(TeamStandings, LevelOnesByTheirDriversPlaces) {
  const Season season = SeasonOf({{"Avery", {{2, 20}, {2, 20}}}, {"Brook", {{3, 10}, {1, 30}}}});
  EXPECT_THAT(Table(season, {{1, 1, 0}, {2, 4, 0}}, 0),
              ElementsAre("Red 40 wins 1 starts 2 drivers 1", "Blue 40 wins 0 starts 2 drivers 1"));
}

class Teams : public test::LeagueFixture {
 protected:
  Teams() : league_(NewLeague()) {
    for (const char* name : {"Avery", "Brook", "Crane"}) drivers::AddDriver(*league_, {0, name});
  }
  void AddRaces(int count) {
    for (int i = 0; i < count; ++i) league_->Execute("INSERT INTO Race (Name) VALUES ('Track')");
  }
  std::vector<std::string> Members() {
    return test::Rows(
        *league_,
        "SELECT DriverID, TeamID, FromRace FROM TeamMember WHERE Kind=0 ORDER BY DriverID, FromRace");
  }
  std::string Refusal(const std::function<void()>& what) {
    try {
      what();
    } catch (const RuleError& error) {
      return error.what();
    }
    return "";
  }

  std::unique_ptr<engine::Database> league_;
};

TEST_F(Teams, ALeagueWithoutAnyHasNoTablesForThem) {
  const std::size_t tables = league_->TableDefs().size();
  EXPECT_THAT(ListGroups(*league_, GroupKind::Team), IsEmpty());
  EXPECT_FALSE(FindGroup(*league_, GroupKind::Make, "Ford"));
  EXPECT_EQ(BestResults(*league_, GroupKind::Team), 2);
  EXPECT_EQ(BestResults(*league_, GroupKind::Make), 1);
  MergeMemberships(*league_, 1, 2);
  EXPECT_EQ(league_->TableDefs().size(), tables);
}

TEST_F(Teams, NamesAreOfOneKindAndFitTheirField) {
  EnsureTeamTables(*league_);
  EnsureTeamTables(*league_);
  std::string fifty;
  for (int i = 0; i < 25; ++i) fifty += "Ж'";
  const std::int32_t id = AddGroup(*league_, GroupKind::Team, "  " + fifty + " ");
  AddGroup(*league_, GroupKind::Make, fifty);
  EXPECT_EQ(FindGroup(*league_, GroupKind::Team, fifty)->id, id);
  EXPECT_EQ(Refusal([&] { AddGroup(*league_, GroupKind::Team, fifty + "x"); }),
            "The name of a team has at most 50 characters.");
  EXPECT_EQ(Refusal([&] { AddGroup(*league_, GroupKind::Team, "   "); }), "A team needs a name.");
  EXPECT_EQ(Refusal([&] { AddGroup(*league_, GroupKind::Team, "a\nb"); }),
            "The name of a team is one line of text.");
  const std::int32_t cafe = AddGroup(*league_, GroupKind::Team, "<script>Café</script> | \"Q\"");
  EXPECT_EQ(Refusal([&] { AddGroup(*league_, GroupKind::Team, " <SCRIPT>CAFÉ</script> | \"Q\""); }),
            "\"<script>Café</script> | \"Q\"\" already exists!");
  RenameGroup(*league_, GroupKind::Team, cafe,
              "<SCRIPT>Café</script> | \"Q\"");  // its own name in other letters
  EXPECT_NE(Refusal([&] { RenameGroup(*league_, GroupKind::Team, cafe, fifty); }), "");
  SetBestResults(*league_, GroupKind::Team, 0);
  SetBestResults(*league_, GroupKind::Team, 7);
  EXPECT_EQ(BestResults(*league_, GroupKind::Team), 7);
  EXPECT_EQ(BestResults(*league_, GroupKind::Make), 1);
  EXPECT_NE(Refusal([&] { SetBestResults(*league_, GroupKind::Team, -1); }), "");
}

TEST_F(Teams, DriversComeAndGoFromARaceOn) {
  EnsureTeamTables(*league_);
  const std::int32_t blue = AddGroup(*league_, GroupKind::Team, "Blue");
  const std::int32_t red = AddGroup(*league_, GroupKind::Team, "Red");
  Join(*league_, GroupKind::Team, red, {1, 2}, std::nullopt);
  // Before the first race nothing has been scored for the first team.
  Join(*league_, GroupKind::Team, blue, {1, 2}, std::nullopt);
  EXPECT_THAT(Members(), ElementsAre("1|1|0", "2|1|0"));
  AddRaces(3);
  Join(*league_, GroupKind::Team, red, {1}, std::nullopt);  // from the next race on
  Join(*league_, GroupKind::Team, red, {2}, 2);
  EXPECT_THAT(Members(), ElementsAre("1|1|0", "1|2|4", "2|1|0", "2|2|2"));
  Join(*league_, GroupKind::Team, blue, {2}, 2);  // what began there is replaced
  Leave(*league_, GroupKind::Team, {1}, 3);
  EXPECT_THAT(Members(), ElementsAre("1|1|0", "1|Null|3", "1|2|4", "2|1|0", "2|1|2"));
  EXPECT_EQ(Refusal([&] { Leave(*league_, GroupKind::Team, {2, 3}, 1); }), "Crane is in no team then.");
  EXPECT_EQ(Refusal([&] { Leave(*league_, GroupKind::Make, {1}, 1); }), "Avery is in no make then.");
  EXPECT_EQ(Members().size(), 5U);
  RemoveGroup(*league_, red);  // takes its memberships along
  EXPECT_THAT(Members(), ElementsAre("1|1|0", "1|Null|3", "2|1|0", "2|1|2"));
  drivers::RemoveDrivers(*league_, {2});
  EXPECT_THAT(Members(), ElementsAre("1|1|0", "1|Null|3"));
}

TEST_F(Teams, MergedDriversKeepWhatTheOtherLacks) {
  EnsureTeamTables(*league_);
  const std::int32_t blue = AddGroup(*league_, GroupKind::Team, "Blue");
  const std::int32_t red = AddGroup(*league_, GroupKind::Team, "Red");
  // Avery: Red from the start. Brook: Blue for races 3 and 4.
  Join(*league_, GroupKind::Team, red, {1}, 0);
  Join(*league_, GroupKind::Team, blue, {2}, 3);
  Leave(*league_, GroupKind::Team, {2}, 5);
  MergeMemberships(*league_, 1, 2);
  drivers::MergeDrivers(*league_, 1, 2);
  EXPECT_THAT(Members(), ElementsAre("2|2|0", "2|1|3", "2|2|5"));
  MergeMemberships(*league_, 3, 2);  // who was never in a team brings nothing
  EXPECT_EQ(Members().size(), 3U);
}

}  // namespace
}  // namespace scorvane::championship
