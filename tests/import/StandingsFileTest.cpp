#include "import/StandingsFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/ScriptedUserInterface.h"
#include "db/LeagueFixture.h"
#include "import/FileContent.h"
#include "scoring/OnlineImport.h"
#include "scoring/PointSystem.h"

namespace scorvane::import {
namespace {

using testing::HasSubstr;

constexpr const char* kRaceFields =
    "SELECT Name, FileName, Length, Laps, RaceTime, AvgSpeed, VictoryMargin, Cautions, LeadChanges, Weather "
    "FROM STNRace";
constexpr const char* kResultFields =
    "SELECT Finish, Start, DriverName, LapsRun, LapsLed, Points, Bonus, Qualifying, ReasonOut, PrizeMoney "
    "FROM STNStats "
    "ORDER BY Finish";

// The lines of a good file; tests break what they are about.
const std::string kTitle = "Race Finalbristol\r\n";
const std::string kTrack = "Track length in miles:   0.533    Laps: 500\r\n";
const std::string kHead =
    "----------\r\nFin St  Car  Driver                      Lap  Led   Pts  Qualify Reason\r\n----------\r\n";
const std::string kDriver = " 1   2   24  Jeff Gordon                 500  123   185  123.554 Running\r\n";
const std::string kStatistics = "\r\nRace time - 3:01:10\r\n* End\r\n";

class StandingsFile : public test::LeagueFixture {
 protected:
  StandingsFile() : league_(NewLeague()) { scoring::LoadPointSystem(*template_, *league_, state_); }

  // A file with this content, read.
  std::int32_t Read(const std::string& content, int qualifying = 0, const std::string& name = "race.stn") {
    std::ofstream(folder_.File(name), std::ios::binary) << content;
    return ReadStandingsFile(*league_, state_, ui_, folder_.File(name), qualifying);
  }
  std::int32_t ReadSample(const std::string& name, int qualifying) {
    return ReadStandingsFile(*league_, state_, ui_, SCORVANE_SOURCE_DIR "/tests/data/standings/" + name,
                             qualifying);
  }
  std::vector<std::string> Results() { return test::Rows(*league_, kResultFields); }

  std::unique_ptr<engine::Database> league_;
  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
};

TEST(FitStatistic, DropsWhatTheFieldHasNoRoomFor) {
  const std::pair<const char*, const char*> cases[] = {{"144.735mph", "144.735mph"},
                                                       {"144.735 mph", "144.735mph"},
                                                       {"102.345 seconds", "102.345"},
                                                       {"1:02,345 sec", "1:02,345"},
                                                       {"far too long a text", "far too long a text"},
                                                       {"", ""}};
  for (const auto& [text, fitted] : cases) EXPECT_EQ(FitStatistic(text, 10), fitted);
}

TEST(FileNameOfRace, FitsItsField) {
  const std::string stem = "1998-05-17 Thursday Night Thunder Round 12 Caf";
  EXPECT_EQ(FileNameOfRace("a folder/" + stem + ".stn"), stem + ".stn");
  EXPECT_EQ(FileNameOfRace("/" + stem + "\u00E9\u00E9, final.stn"), stem + ".stn");
  EXPECT_EQ(FileNameOfRace(stem.substr(1) + "\u00E9\u00E9.stn"), stem.substr(1) + "\u00E9.stn");
  EXPECT_EQ(FileNameOfRace(std::string(60, 'x')), std::string(50, 'x'));
}

TEST_F(StandingsFile, StagesARaceWithQualifyingTimes) {
  EXPECT_EQ(ReadSample("nr3.stn", 1), 1);
  EXPECT_EQ(test::Rows(*league_, kRaceFields),
            std::vector<std::string>{
                "Oval \"Süd\" | West|nr3.stn|2.5|60|1:02:11.25|144.735mph|0.42 sec|2|5|Clear, 72°F"});
  EXPECT_EQ(Results(), (std::vector<std::string>{"1|3|Sean O'Brien|60|31|185|10|137.4046|Running|Null",
                                                 "2|1|Jürgen Müller|60|29|175|5|138.6749|Running|Null",
                                                 "3|2|Pat | Smith|60|0|165|0|137.931|Running|Null",
                                                 "4|5|* Star Driver|57|0|160|0|0|Running|Null",
                                                 "5|6|Kenny Irwin, Jr.|12|0|155|0|133.829|Engine|Null"}));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(StandingsFile, KeepsThePointsThatALegendsFileStates) {
  state_.simType = common::kNascarLegends;
  EXPECT_EQ(ReadSample("legends.stn", 0), 1);
  const auto results = Results();
  ASSERT_EQ(results.size(), 7U);
  EXPECT_EQ(results[0], "1|2|Bobby Isaac|150|98|150|0|53.11|Running|Null");
  EXPECT_EQ(results[4], "5|6|Elmo Langley|140|0|136|0|0|Running|Null");

  state_.useCustomPointSystem = true;
  scoring::LoadPointSystem(*template_, *league_, state_);
  EXPECT_EQ(ReadSample("legends.stn", 0), 2);
  EXPECT_EQ(test::Single(*league_, "SELECT Points FROM STNStats WHERE STNRaceID=2 AND Finish=2"), "170");
}

TEST_F(StandingsFile, KnowsTheColumnsOfTheOldestSimulation) {
  state_.simType = common::kNascarRacing2;
  EXPECT_EQ(ReadSample("nr2.stn", 0), 1);
  // The seventh line of the statistics is not read.
  EXPECT_EQ(
      test::Rows(*league_, kRaceFields),
      std::vector<std::string>{"Lime Rock|nr2.stn|1.53|90|1:25:30.5|96.63|Null|0|Null|Partly cloudy, 72°F"});
  EXPECT_EQ(Results(),
            (std::vector<std::string>{"1|1|Alexandra Featherstonehaug|90|88|185|10|102.345|Running|Null",
                                      "2|3|Bob Sixpack|90|2|175|5|101.9|Running|Null",
                                      "3|2|Carl Third|89|0|165|0|102|Overheating|Null"}));
}

TEST_F(StandingsFile, LeavesOutExcludedDriversAndClosesTheOrder) {
  league_->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('SEAN O''BRIEN', True)");
  league_->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('Pat ' & Chr(124) & ' Smith', False)");
  ASSERT_EQ(ReadSample("nr3.stn", 1), 1);
  EXPECT_EQ(test::Rows(*league_, "SELECT Finish, DriverName, Points-Bonus FROM STNStats ORDER BY Finish"),
            (std::vector<std::string>{"1|Jürgen Müller|175", "2|Pat | Smith|170", "3|* Star Driver|165",
                                      "4|Kenny Irwin, Jr.|160"}));
}

TEST_F(StandingsFile, ScoresByTheLeaguesOwnPointSystem) {
  league_->Execute("DELETE * FROM PointSystem WHERE Position>2");
  league_->Execute("UPDATE PointSystem SET PrizeMoney=1000*Position WHERE Position=2");
  state_.useCustomPointSystem = true;
  scoring::LoadPointSystem(*template_, *league_, state_);
  ASSERT_EQ(ReadSample("nr3.stn", 1), 1);
  EXPECT_EQ(test::Rows(*league_, "SELECT Points-Bonus, PrizeMoney FROM STNStats ORDER BY Finish"),
            (std::vector<std::string>{"175|Null", "170|2000", "0|Null", "0|Null", "0|Null"}));
}

TEST_F(StandingsFile, WritesNumbersInTheUsersNotation) {
  engine_.DefaultWorkspace().SetDecimalSeparator(',');
  state_.decimalSeparator = ',';
  ASSERT_EQ(ReadSample("nr3.stn", 1), 1);
  const auto race = league_->OpenRecordset("SELECT Length, RaceTime, AvgSpeed FROM STNRace");
  EXPECT_EQ(race["Length"].ToSingle(), 2.5F);
  EXPECT_EQ(race["RaceTime"].ToText(), "1:02:11,25");
  EXPECT_EQ(race["AvgSpeed"].ToText(), "144,735mph");
  const auto winner = league_->OpenRecordset("SELECT Qualifying FROM STNStats WHERE Finish=1");
  EXPECT_NEAR(winner["Qualifying"].ToSingle(), 137.4046F, 0.0001F);
}

TEST_F(StandingsFile, ASeasonScoresAsItWasPublished) {
  std::vector<std::string> files;
  for (const auto& entry :
       std::filesystem::directory_iterator(SCORVANE_SOURCE_DIR "/share/samples/season-1998"))
    if (entry.path().extension() == ".stn") files.push_back(entry.path().string());
  std::sort(files.begin(), files.end());
  ASSERT_EQ(files.size(), 33U);
  for (const std::string& file : files)
    EXPECT_GT(ReadStandingsFile(*league_, state_, ui_, file, 0), 0) << file;
  scoring::ImportStagedRaces(*league_, state_, ui_);
  EXPECT_EQ(
      test::Rows(*league_,
                 "SELECT TOP 6 Name, Sum(Points), Count(*), -Sum(Finish=1) FROM Driver INNER JOIN Stats ON "
                 "Driver.DriverID=Stats.DriverID GROUP BY Name ORDER BY Sum(Points) DESC"),
      (std::vector<std::string>{"Jeff Gordon|5328|33|13", "Mark Martin|4964|33|7", "Dale Jarrett|4619|33|3",
                                "Rusty Wallace|4501|33|1", "Jeff Burton|4415|33|2",
                                "Bobby Labonte|4180|33|2"}));
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM Driver"), "68");
}

TEST_F(StandingsFile, DoesNotReadAStatisticOnTheLastLine) {
  ASSERT_EQ(ReadSample("last-line.stn", 0), 1);
  EXPECT_NE(test::Single(*league_, "SELECT RaceTime FROM STNRace"), "Null");
  EXPECT_EQ(test::Single(*league_, "SELECT Weather FROM STNRace"), "Null");
}

TEST_F(StandingsFile, TakesEitherLineEndAndAnyFileName) {
  std::string content = kTitle + kTrack + kHead + kDriver + kStatistics;
  EXPECT_EQ(Read(content, 0, "O'Brien's | race.stn"), 1);
  std::erase(content, '\r');
  EXPECT_EQ(Read(content + '\x1A', 0, "unix.stn"), 2);
  EXPECT_EQ(test::Rows(*league_, "SELECT FileName, Laps, RaceTime FROM STNRace"),
            (std::vector<std::string>{"O'Brien's | race.stn|500|3:01:10", "unix.stn|500|3:01:10"}));
}

TEST_F(StandingsFile, AnEditorMayHaveSavedItAsUtf8) {
  const auto file = [](const std::string& name) {
    std::string driver = kDriver;
    return kTitle + kTrack + kHead + driver.replace(driver.find("Jeff Gordon"), 11, name) + kStatistics;
  };
  EXPECT_EQ(Read(file("J\xE9rg \xC4rdon ")), 1);
  EXPECT_EQ(Read("\xEF\xBB\xBF" + file("Jérg Ärdon ")), 2);
  const std::string row = "1|2|Jérg Ärdon|500|123|185|10|123.554|Running|Null";
  EXPECT_EQ(Results(), (std::vector<std::string>{row, row}));
}

TEST_F(StandingsFile, RefusesWhatIsNoRaceFinal) {
  EXPECT_EQ(ReadSample("practice.stn", 0), 0);
  const std::string path = SCORVANE_SOURCE_DIR "/tests/data/standings/practice.stn";
  const common::Message expected{"\"" + path + " does not seem to be a race final!",
                                 "Error Reading '" + path + "'", common::MessageIcon::Exclamation};
  EXPECT_EQ(ui_.messages, std::vector<common::Message>{expected});
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNRace"), "0");
}

TEST_F(StandingsFile, SaysWhatIsWrongWithAFileAndKeepsNothingOfIt) {
  const auto with = [](std::string line, std::size_t column, const std::string& text) {
    return line.replace(column - 1, text.size(), text);
  };
  const std::string upToHead = kTitle + kTrack + kHead;
  const struct {
    std::string content;
    const char* message;
  } cases[] = {
      {"", "The file is empty."},
      {" \r\n", "The file ends before the track line."},
      {kTitle, "The file ends before the track line."},
      {kTitle + kTrack, "The file ends before the table of drivers."},
      {kTitle + kTrack + "----------\r\n", "The file ends before the table of drivers."},
      {upToHead, "The file ends within the table of drivers."},
      {upToHead + kDriver, "The file ends within the table of drivers."},
      {upToHead + kDriver + "\r\n", "The file ends before the race statistics."},
      {kTitle + std::string("\0\1\2", 3) + kTrack, "This is no text file."},
      {kTitle + with(kTrack, 26, "short") + kHead, "Line 2: the track length is not a number: \"short\"."},
      {kTitle + with(kTrack, 26, "     ") + kHead, "Line 2: the track length is missing."},
      {kTitle + with(kTrack, 41, " 50") + kHead, "Line 2: the number of laps is missing."},
      {kTitle + with(kTrack, 41, "1;D") + kHead, "Line 2: the number of laps is not a number: \"1;D\"."},
      {upToHead + kDriver + with(kDriver, 5, "DQ"), "Line 7: the start position is not a number: \"DQ\"."},
      {upToHead + with(kDriver, 42, "   "), "Line 6: the number of laps run is missing."},
      {upToHead + with(kDriver, 47, "1-2"), "Line 6: the number of laps led is not a number: \"1-2\"."},
      {upToHead + with(kDriver, 57, "--------"),
       "Line 6: the qualifying speed is not a number: \"--------\"."},
      {"Race Final" + std::string(60, 'x') + "\r\n" + kTrack + kHead,
       "Track and file name (lines 1 and 2): "},
      {upToHead + kDriver + "\r\nCaution flags - many\r\n*\r\n", "Race statistics (up to line 9): "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    ui_.messages.clear();
    EXPECT_EQ(Read(c.content), 0);
    ASSERT_EQ(ui_.messages.size(), 1U);
    EXPECT_THAT(ui_.messages[0].text, HasSubstr(c.message));
    EXPECT_EQ(ui_.messages[0].title, "Error Reading '" + folder_.File("race.stn") + "'");
    EXPECT_EQ(ui_.messages[0].icon, common::MessageIcon::Exclamation);
    EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNRace"), "0");
    EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNStats"), "0");
  }
  EXPECT_GT(Read(upToHead + kDriver + kStatistics), 0) << "the next file is read all the same";
}

TEST_F(StandingsFile, SaysWhyAFileCannotBeRead) {
  namespace fs = std::filesystem;
  EXPECT_EQ(ReadStandingsFile(*league_, state_, ui_, folder_.File("none.stn"), 0), 0);
  EXPECT_EQ(ReadStandingsFile(*league_, state_, ui_, folder_.Path().string(), 0), 0);
  std::ofstream(folder_.File("large.stn")) << kTitle;
  fs::resize_file(folder_.File("large.stn"), 17 << 20);
  EXPECT_EQ(ReadStandingsFile(*league_, state_, ui_, folder_.File("large.stn"), 0), 0);
  ASSERT_EQ(ui_.messages.size(), 3U);
  EXPECT_EQ(ui_.messages[0].text, "The file cannot be opened: No such file or directory.");
  EXPECT_EQ(ui_.messages[1].text, "This is a folder, not a file.");
  EXPECT_EQ(ui_.messages[2].text, "The file is far too large for a standings file.");

  std::ofstream(folder_.File("locked.stn")) << kTitle;
  fs::permissions(folder_.File("locked.stn"), fs::perms::none);
  if (std::ifstream(folder_.File("locked.stn")).is_open())
    return;  // the administrator of the machine may read all
  EXPECT_EQ(ReadStandingsFile(*league_, state_, ui_, folder_.File("locked.stn"), 0), 0);
  EXPECT_EQ(ui_.messages[3].text, "The file cannot be opened: Permission denied.");
}

TEST_F(StandingsFile, AFailingBonusRuleStopsTheFile) {
  state_.useCustomBonusSystem = true;
  league_->Execute("UPDATE Bonus SET Query='(no rule' WHERE BonusID=1");
  EXPECT_EQ(ReadSample("nr3.stn", 1), 0);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_THAT(ui_.messages[0].text, testing::StartsWith("The bonus rule"))
      << "no line of the file is to blame";
  EXPECT_EQ(test::Single(*league_, "SELECT Count(*) FROM STNStats"), "0");
}

TEST(StandingsLines, SkipBlankLinesAndCommentsButTakeTheLastLineAsItIs) {
  TextLines lines("\r\n  * comment\n  title \r\nplain\n * last");
  EXPECT_EQ(ReadDataLine(lines), "  title ");
  EXPECT_EQ(lines.LineNumber(), 3);
  EXPECT_EQ(lines.ReadLine(), "plain");
  EXPECT_EQ(ReadDataLine(lines), " * last");
  EXPECT_TRUE(lines.AtEnd());
  EXPECT_THROW(ReadDataLine(lines), EndOfText);
  EXPECT_TRUE(TextLines("").AtEnd());
}

TEST(StandingsLines, QualifyingAsItIsStored) {
  const struct {
    const char* text;
    int qualifying;
    float length;
    char decimal;
    const char* literal;
  } cases[] = {{"", 0, 2.5F, '.', "'0.00'"},
               {"", 1, 2.5F, ',', "'0,00'"},
               {"180.25", 0, 2.5F, '.', "'180.25'"},
               {"180.25", 0, 2.5F, ',', "'180,25'"},
               {"1:05.5", 1, 2.5F, '.', "'137.4046'"},
               {"65.5 s", 1, 2.5F, ',', "'137,4046'"},
               {"--", 1, 2.5F, '.', "'0'"},
               {"50", 2, 2.5F, '.', "'180'"},
               {"1:0.0", 1, 1, '.', "'60'"}};
  for (const auto& c : cases)
    EXPECT_EQ(QualifyingSpeedText(c.text, c.qualifying, c.length, c.decimal), c.literal);
}

}  // namespace
}  // namespace scorvane::import
