#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"

namespace scorvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Result {
  int race;
  int driver;
  int start;
  int finish;
  int laps = 100;
  int led = 0;
  int points = 0;
  const char* status = "'Running'";
  bool dropped = false;
};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// A bonus rule's condition for a race of the import, and for one of the league.
std::string Staged(const std::string& condition, int race) {
  return Replaced(condition, "<RACEID>", std::to_string(race));
}
std::string Stored(const std::string& condition, int race) {
  return Replaced(Staged(condition, race), "STN", "");
}

std::string Joined(const std::vector<std::string>& texts) {
  return fmt::format("{}", fmt::join(texts, " "));
}

class TemplateTest : public LeagueFixture {
 protected:
  TemplateTest() : league_(NewLeague()) {}

  void AddDriver(const std::string& name) {
    league_->Execute(fmt::format("INSERT INTO Driver (Name) VALUES ('{}')", name));
  }
  void AddRace(const std::string& track) {
    league_->Execute(fmt::format("INSERT INTO Race (Name, Laps) VALUES ('{}',100)", track));
  }
  void Add(const Result& result) {
    league_->Execute(fmt::format(
        "INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, "
        "Bonus, Qualifying, Status, Dropped) VALUES ({},{},{},{},{},{},{},{},'{}',{},{})",
        result.race, result.driver, result.start, result.finish, result.laps, result.led, result.points,
        result.led > 0 ? 5 : 0, 200 - result.start, result.status, result.dropped ? "True" : "False"));
  }

  std::string Query(const std::string& report) {
    return Single(*template_, "SELECT Query FROM Report WHERE Name='" + report + "'");
  }
  // The named columns of a report on the league.
  std::vector<std::string> Report(const std::string& report, const std::vector<std::string>& columns) {
    std::vector<std::string> rows;
    for (auto set = league_->OpenRecordset(Query(report)); !set.AtEnd(); set.MoveNext()) {
      std::string row;
      for (const std::string& column : columns) {
        if (!row.empty()) row += '|';
        row += set[column].IsNull() ? "Null" : set[column].ToText();
      }
      rows.push_back(std::move(row));
    }
    return rows;
  }

  std::unique_ptr<engine::Database> league_;
};

TEST_F(TemplateTest, PointTablesAreComplete) {
  EXPECT_EQ(Single(*template_, "SELECT Count(*) FROM PointSystem"), "43");
  EXPECT_THAT(
      Rows(*template_, "SELECT * FROM PointSystem WHERE Position IN (1,2,6,7,11,12,43) ORDER BY Position"),
      ElementsAre("1|175|50|100|150", "2|170|49|98|147", "6|150|45|90|135", "7|146|44|88|132",
                  "11|130|40|80|120", "12|127|39|78|117", "43|34|8|16|24"));
  // The step between neighbours is what a race of NASCAR Legends is recognised by.
  for (int table = 1; table <= 3; ++table) {
    EXPECT_EQ(
        Single(*template_, fmt::format("SELECT Count(*) FROM PointSystem AS A INNER JOIN PointSystem AS B ON "
                                       "A.Position + 1 = B.Position WHERE A.LPoints{0} - B.LPoints{0} = {0}",
                                       table)),
        "42");
  }
}

TEST_F(TemplateTest, SettingsCoverEveryNumberTheProgramReads) {
  std::vector<int> ids = {0, 1, 7, 8, 9, 10, 11, 12, 13, 14, 18};
  for (int id = 100; id <= 109; ++id) ids.push_back(id);
  for (int id : ids) {
    std::string name;
    EXPECT_NE(common::GetSettingValue(*template_, id, &name), common::kMissingSetting) << id;
    // Names go into SQL text as they are.
    EXPECT_TRUE(!name.empty() && name.find('\'') == std::string::npos) << id;
  }
  for (int id = 102; id <= 109; ++id) {
    EXPECT_THAT(common::GetSettingValue(*template_, id), testing::MatchesRegex("&H00[0-9A-F]{6}")) << id;
  }
}

TEST_F(TemplateTest, BonusRulesGoToTheSameResultsStagedAndStored) {
  // Ten cars a lap apart from seventh on; another race must not disturb.
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Other')");
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('This')");
  AddRace("Other");
  AddRace("This");
  for (int race = 1; race <= 2; ++race) {
    for (int finish = 1; finish <= 11; ++finish) {
      const int start = race == 1      ? finish
                        : finish == 11 ? 11
                        : finish == 1  ? 4
                        : finish == 4  ? 10
                        : finish == 10 ? 1
                                       : finish;
      const int laps = (race == 1 ? 300 : 100) - (finish > 6 ? finish - 6 : 0);
      const int led = race == 1 ? 300 : finish == 2 ? 70 : finish == 1 ? 20 : finish == 10 ? 10 : 0;
      if (race == 1) AddDriver(fmt::format("Driver {}", finish));
      league_->Execute(
          fmt::format("INSERT INTO STNStats (STNRaceID, DriverName, Start, Finish, LapsRun, LapsLed, "
                      "Points, Bonus) VALUES ({},'Driver {}',{},{},{},{},0,0)",
                      race, finish, start, finish, laps, led));
      league_->Execute(
          fmt::format("INSERT INTO Stats (RaceID, DriverID, Start, Finish, LapsRun, LapsLed, Points, "
                      "Bonus) VALUES ({},{},{},{},{},{},0,0)",
                      race, finish, start, finish, laps, led));
    }
  }
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"Led a Lap", "1 2 10"},
      {"Most Led", "2"},
      {"Win", "1"},
      {"Pole", "10"},
      {"Top 5", "1 2 3 4 5"},
      {"Top 10", "1 2 3 4 5 6 7 8 9 10"},
      {"Lead Lap", "1 2 3 4 5 6"},
      {"Most Gained", "4"},
      {"Pole Win", ""},
      {"Starting", "1 2 3 4 5 6 7 8 9 10 11"},
  };
  auto rules = template_->OpenRecordset("SELECT * FROM Bonus ORDER BY BonusID");
  ASSERT_EQ(rules.RecordCount(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i, rules.MoveNext()) {
    const std::string name = rules["Name"].ToText();
    EXPECT_EQ(rules["BonusID"].ToLong(), static_cast<int>(i) + 1) << "keys run from 1 without gaps";
    EXPECT_EQ(name, expected[i].first);
    EXPECT_LE(rules["Points"].ToLong(), 5) << name;
    const std::string staged = "(STNRaceID=2) AND (" + Staged(rules["Query"].ToText(), 2) + ")";
    const std::string stored = "(RaceID=2) AND (" + Stored(rules["Query"].ToText(), 2) + ")";
    EXPECT_EQ(Joined(Rows(*league_, "SELECT Finish FROM STNStats WHERE " + staged + " ORDER BY Finish")),
              expected[i].second);
    EXPECT_EQ(Joined(Rows(*league_, "SELECT Finish FROM Stats WHERE " + stored + " ORDER BY Finish")),
              expected[i].second);
    // And in the statements that score a race.
    EXPECT_EQ(ErrorOf(*league_, "UPDATE STNStats SET Bonus=Bonus+1, Points=Points+1 WHERE " + staged), 0);
    EXPECT_EQ(ErrorOf(*league_, "UPDATE Stats SET Bonus=Bonus+1, Points=Points+1 WHERE " + stored), 0);
  }
}

TEST_F(TemplateTest, NobodyLedMostWhenNobodyLed) {
  AddRace("Washed out");
  AddDriver("Driver 1");
  Add({.race = 1, .driver = 1, .start = 1, .finish = 1, .laps = 0});
  for (const char* rule : {"Led a Lap", "Most Led", "Lead Lap", "Most Gained"}) {
    const std::string condition =
        Single(*template_, fmt::format("SELECT Query FROM Bonus WHERE Name='{}'", rule));
    EXPECT_THAT(Rows(*league_, "SELECT Finish FROM Stats WHERE " + Stored(condition, 1)), IsEmpty()) << rule;
  }
}

TEST_F(TemplateTest, RankCriteriaOrderTheStagedResults) {
  league_->Execute("INSERT INTO STNRace (Name) VALUES ('Milwaukee')");
  const auto stage = [this](const char* name, const char* rest) {
    league_->Execute(
        fmt::format("INSERT INTO STNStats (STNRaceID, DriverName, Finish, LapsRun, AvgSpeed, LapsLed, "
                    "Points, Qualifying, ReasonOut, Start) VALUES (1,'{}',{})",
                    name, rest));
  };
  stage("A", "2,100,120,0,170,190,'Engine',3");
  stage("B", "1,99,118,50,180,188,'Running',2");
  stage("C", "3,98,125,70,165,189,'Running',1");
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"Laps Completed", "A B C"},        {"Finish in Own Race", "B A C"},
      {"Average Speed", "C A B"},         {"Laps Led", "C B A"},
      {"Points in Own Race", "B A C"},    {"Qualifying Speed", "A C B"},
      {"Running at the Finish", "B C A"}, {"Starting Order", "C B A"},
  };
  std::string all;
  auto criteria = template_->OpenRecordset("SELECT * FROM RankCriteria ORDER BY Priority");
  ASSERT_EQ(criteria.RecordCount(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i, criteria.MoveNext()) {
    const std::string term = criteria["Query"].ToText();
    EXPECT_EQ(criteria["Name"].ToText(), expected[i].first);
    EXPECT_EQ(criteria["N4"].ToBoolean(), expected[i].first != "Average Speed");
    EXPECT_EQ(Joined(Rows(*league_, "SELECT DriverName FROM STNStats ORDER BY " + term + ", DriverName")),
              expected[i].second)
        << term;
    all += (i == 0 ? "" : ", ") + term;
  }
  auto merged =
      league_->OpenRecordset("SELECT STNRaceID, Finish, Points, PrizeMoney FROM STNStats  ORDER BY " + all,
                             engine::RecordsetType::Dynaset);
  EXPECT_EQ(merged.RecordCount(), 3U);
}

TEST_F(TemplateTest, EveryReportRunsAndShowsColumnsOfItsQuery) {
  std::vector<std::string> names;
  for (auto report = template_->OpenRecordset("SELECT * FROM Report ORDER BY Sequence"); !report.AtEnd();
       report.MoveNext()) {
    const std::string name = report["Name"].ToText();
    names.push_back(name);
    SCOPED_TRACE(name);
    const auto rows = league_->OpenRecordset(report["Query"].ToText());
    EXPECT_EQ(rows.RecordCount(), 0U) << "a league without races";

    auto columns = template_->OpenRecordset(
        "SELECT * FROM ReportField WHERE ReportID=" + report["ReportID"].ToText() + " ORDER BY Sequence");
    ASSERT_GT(columns.RecordCount(), 0U);
    std::set<std::string> fields;
    int shown = 0;
    for (int sequence = 1; !columns.AtEnd(); columns.MoveNext(), ++sequence) {
      const std::string field = columns["Field"].ToText();
      EXPECT_TRUE(rows.HasField(field)) << field;
      EXPECT_TRUE(fields.insert(field).second) << field << " stands there twice";
      EXPECT_EQ(columns["Sequence"].ToLong(), sequence);
      EXPECT_GT(columns["ColWidth"].ToLong(), 0);
      shown += columns["Hidden"].ToBoolean() ? 0 : 1;
    }
    EXPECT_GT(shown, 2);
  }
  EXPECT_THAT(names, ElementsAre("Point Standings", "Rookie Standings", "Wins", "Poles", "Laps Led",
                                 "Prize Money", "Race Winners", "Results by Driver"));

  template_->Execute("DELETE * FROM Report WHERE ReportID=1");
  EXPECT_EQ(Single(*template_, "SELECT Count(*) FROM ReportField WHERE ReportID=1"), "0");
}

TEST_F(TemplateTest, StandingsTotalWhatCounts) {
  for (const char* name : {"Ann", "Ben", "Out", "Idle"}) AddDriver(name);
  league_->Execute("UPDATE Driver SET Exclude=NULL, Rookie=NULL WHERE Name='Ben'");  // as in an old file
  league_->Execute("UPDATE Driver SET Exclude=True WHERE Name='Out'");
  for (const char* track : {"Daytona", "Bristol", "Dover"}) AddRace(track);
  Add({.race = 1, .driver = 1, .start = 2, .finish = 1, .led = 60, .points = 180});
  Add({.race = 1, .driver = 2, .start = 0, .finish = 7, .laps = 99, .points = 146});
  Add({.race = 1, .driver = 3, .start = 1, .finish = 2, .led = 40, .points = 900});
  Add({.race = 2, .driver = 1, .start = 1, .finish = 4, .points = 160, .status = "'Engine'"});
  Add({.race = 2, .driver = 2, .start = 5, .finish = 6, .points = 150, .status = "NULL"});
  Add({.race = 3,
       .driver = 1,
       .start = 1,
       .finish = 9,
       .laps = 3,
       .led = 2,
       .points = 143,
       .status = "'Crash'",
       .dropped = true});
  league_->Execute("UPDATE Stats SET PrizeMoney=1000 WHERE RaceID=1");

  const std::vector<std::string> columns = {"DriverName", "Points",    "Interval", "Starts", "Wins",
                                            "Top5",       "Top10",     "Poles",    "Laps",   "LapsLed",
                                            "AvgStart",   "AvgFinish", "DNFs",     "Bonus",  "PrizeMoney"};
  EXPECT_THAT(Report("Point Standings", columns), ElementsAre("Ann|340|0|2|1|2|2|1|200|60|1.5|2.5|1|5|1000",
                                                              "Ben|296|44|2|0|0|2|0|199|0|5|6.5|0|0|1000"));

  league_->Execute("UPDATE Driver SET Rookie=True WHERE Name IN ('Ben','Out')");
  EXPECT_THAT(Report("Rookie Standings", columns), ElementsAre("Ben|296|0|2|0|0|2|0|199|0|5|6.5|0|0|1000"));
}

TEST_F(TemplateTest, EqualPointsGoToTheBetterPlaces) {
  // Each driver beats the next by one place at one depth; the last two are level and come by name.
  const std::vector<std::vector<int>> finishes = {{1, 30}, {2, 2},   {2, 3},   {3, 3},  {5, 30},
                                                  {6, 6},  {10, 20}, {11, 11}, {11, 11}};
  const std::vector<std::string> names = {"I", "H", "G", "F", "E", "D", "C", "a", "B"};
  AddRace("Daytona");
  AddRace("Bristol");
  for (std::size_t i = 0; i < names.size(); ++i) {
    AddDriver(names[i]);
    for (int race = 1; race <= 2; ++race) {
      Add({.race = race,
           .driver = static_cast<int>(i) + 1,
           .start = 1,
           .finish = finishes[i][static_cast<std::size_t>(race) - 1],
           .points = 100});
    }
  }
  EXPECT_THAT(Report("Point Standings", {"DriverName", "Interval"}),
              ElementsAre("I|0", "H|0", "G|0", "F|0", "E|0", "D|0", "C|0", "a|0", "B|0"));
}

TEST_F(TemplateTest, OtherReportsTotalWhatCountsAndListTheRest) {
  for (const char* name : {"Ann", "Ben", "Out"}) AddDriver(name);
  league_->Execute("UPDATE Driver SET Exclude=True WHERE Name='Out'");
  for (const char* track : {"Daytona", "Bristol"}) AddRace(track);
  Add({.race = 1, .driver = 3, .start = 1, .finish = 1, .led = 90, .points = 185});
  Add({.race = 1, .driver = 1, .start = 3, .finish = 2, .led = 10, .points = 175});
  Add({.race = 1, .driver = 2, .start = 2, .finish = 3, .points = 165});
  Add({.race = 2, .driver = 2, .start = 1, .finish = 1, .led = 25, .points = 185, .dropped = true});
  league_->Execute("UPDATE Stats SET PrizeMoney=500*DriverID WHERE RaceID=1");

  EXPECT_THAT(Report("Wins", {"DriverName", "Wins", "Starts", "WinPercent", "Top5", "Top10"}), IsEmpty());
  EXPECT_THAT(Report("Poles", {"DriverName", "Poles", "Starts", "AvgStart", "BestSpeed"}), IsEmpty());
  EXPECT_THAT(Report("Laps Led", {"DriverName", "LapsLed", "Laps", "LedPercent", "RacesLed", "Starts"}),
              ElementsAre("Ann|10|100|10|1|1"));
  EXPECT_THAT(Report("Prize Money", {"DriverName", "PrizeMoney", "Starts", "PerStart", "BestPrize"}),
              ElementsAre("Ben|1000|1|1000|1000", "Ann|500|1|500|500"));
  EXPECT_THAT(Report("Race Winners", {"Track", "Laps", "Winner", "Start", "LapsLed", "Points", "Dropped"}),
              ElementsAre("Daytona|100|Ann|3|10|175|False", "Bristol|100|Ben|1|25|185|True"));
  EXPECT_THAT(Report("Results by Driver", {"DriverName", "Track", "Finish", "Points", "Dropped"}),
              ElementsAre("Ann|Daytona|2|175|False", "Ben|Daytona|3|165|False", "Ben|Bristol|1|185|True"));
}

// A wrong source file is named with the line.
TEST(TemplateBuildTest, MistakesAreReportedWhereTheyStand) {
  struct Mistake {
    const char* file;
    const char* from;
    const char* to;
    const char* message;
  };
  const std::vector<Mistake> mistakes = {
      {"PointSystem.csv", "\n5,155,", "\n5,lots,", "PointSystem.csv:8: \"lots\" is no whole number"},
      {"PointSystem.csv", "\n5,155,", "\n5,", "PointSystem.csv:8: 4 cells stand where 5 belong"},
      {"PointSystem.csv", "\n5,155,", "\n4,155,", "PointSystem.csv:8: The changes"},
      {"PointSystem.csv", "Position,Kirr", "Place,Kirr", "PointSystem.csv:3: the fields should be Position,"},
      {"RankCriteria.csv", "LapsRun DESC,True", "LapsRun DESC,Yes", "RankCriteria.csv:5: \"Yes\" is not"},
      {"RankCriteria.csv", "0, 1)\"", "0, 1)", "RankCriteria.csv:11: a double quote is not closed"},
      {"reports/03-wins.report", "report:", "name:", "03-wins.report:1: the first line should be"},
      {"reports/03-wins.report", "columns:", "", "here \"columns:\" belongs"},
      {"reports/03-wins.report", "| 800 ", "| wide", "03-wins.report:10: \"wide\" is no whole number"},
      {"reports/03-wins.report", "centre", "middle", "03-wins.report:8: the alignment \"middle\" is not"},
      {"reports/03-wins.report", "| WinPercent", "", "03-wins.report:10: a column is: heading"},
      {"reports/03-wins.report", "query:", "", "03-wins.report:"},
  };
  for (const Mistake& mistake : mistakes) {
    SCOPED_TRACE(std::string(mistake.file) + " with " + mistake.to);
    const TempFolder folder;
    std::filesystem::copy(SCORVANE_SOURCE_DIR "/share/template", folder.Path(),
                          std::filesystem::copy_options::recursive);
    std::ifstream in(folder.File(mistake.file));
    const std::string text(std::istreambuf_iterator<char>(in), {});
    ASSERT_THAT(text, HasSubstr(mistake.from));
    std::string changed = text;
    changed.replace(text.find(mistake.from), std::string(mistake.from).size(), mistake.to);
    std::ofstream(folder.File(mistake.file)) << changed;

    engine::DBEngine engine;
    try {
      db::BuildTemplate(engine, folder.Path().string(), folder.File("Kirrelon.dat"));
      ADD_FAILURE() << "it was taken";
    } catch (const db::TemplateError& error) {
      EXPECT_THAT(error.what(), HasSubstr(mistake.message));
    }
  }
  engine::DBEngine engine;
  const TempFolder empty;
  EXPECT_THROW(db::BuildTemplate(engine, empty.Path().string(), empty.File("Kirrelon.dat")),
               db::TemplateError);
}

}  // namespace
}  // namespace scorvane::test
