#include "import/ExportedStandings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExportedPage.h"
#include "common/ScriptedUserInterface.h"
#include "common/SettingsStore.h"
#include "db/LeagueFixture.h"
#include "db/Upgrade.h"
#include "import/FileContent.h"
#include "import/HTMLParser.h"
#include "import/ResultFile.h"
#include "scoring/PointSystem.h"

namespace scorvane::import {
namespace {

using Strings = std::vector<std::string>;
using test::ExportedPage;
using test::Heading;
using testing::HasSubstr;

const std::string kRealPages = SCORVANE_SOURCE_DIR "/tests/data/exported-pages";

constexpr const char* kRaceFields =
    "SELECT Name, FileName, Length, Laps, RaceTime, AvgSpeed, VictoryMargin, Cautions, LeadChanges, Weather "
    "FROM STNRace";
constexpr const char* kResultFields =
    "SELECT Finish, Start, DriverName, LapsRun, LapsLed, Points, Bonus, Qualifying, ReasonOut, PrizeMoney "
    "FROM STNStats ORDER BY Finish";

class ExportedStandings : public test::LeagueFixture {
 protected:
  ExportedStandings() : league_(NewLeague()) {
    db::UpgradeLeagueFile(*league_, *template_);
    state_.simType = common::kNascarRacing2003;
    state_.tracks = std::make_shared<CTracks>();
    state_.tracks->Add("TEST TRACK", 2.5F, "TEST TRACK");
    scoring::LoadPointSystem(*template_, *league_, state_);
  }

  std::int32_t Read(const ExportedPage& page) { return Read(page.Text()); }
  std::int32_t Read(const std::string& content) {
    std::ofstream(folder_.File("page.html"), std::ios::binary) << content;
    return ReadExportedStandingsFile(*template_, *league_, state_, ui_, folder_.File("page.html"));
  }
  std::string Count(const char* table) {
    return test::Single(*league_, fmt::format("SELECT Count(*) FROM {}", table));
  }

  std::unique_ptr<engine::Database> league_;
  common::ProcessState state_;
  common::ScriptedUserInterface ui_;
  ExportedPage page_;
};

TEST_F(ExportedStandings, StagesARace) {
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Rows(*league_, kRaceFields),
            Strings{"Test Track|page.html|2.5|200|3:31:57.972|141.532mph|0.245 sec|4|12|Clear, 72°F"});
  EXPECT_EQ(test::Rows(*league_, kResultFields),
            (Strings{"1|2|Winner|200|120|185|10|180.25|Running|Null",
                     "2|1|Second|200|80|175|5|144|Running|Null", "3|3|Third|198|0|165|0|0|Engine|Null"}));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ExportedStandings, AMarginTooLongForItsFieldLosesItsUnit) {
  page_.race[2][4] = "-1:02.345";
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Single(*league_, "SELECT VictoryMargin FROM STNRace"), "1:02.345");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ExportedStandings, RealPagesScoreAsTheySay) {
  state_.tracks.reset();
  state_.simFolders[4] = kRealPages;
  BuildTrackCatalogue(state_);
  const std::pair<const char*, Strings> pages[] = {
      {"2025daytona500.html",
       {"Daytona International Speedway|2.5|100|152.186mph|0.15 sec|4|46|Cloudy, 58 °F, East 5 mph"}},
      {"2025infineon350.html",
       {"Infineon Raceway|2|56|82.882mph|1.94 sec|2|3|Clear, 86 °F, Northwest 2 mph"}},
      {"2025martinsville500_1.html",
       {"Martinsville Speedway|0.526|250|72.629mph|6.76 sec|10|13|Cloudy, 70 °F, West 6 mph"}},
      {"2025nazareth400_1.html",
       {"Nazareth Speedway Wkc|0.946|212|110.994mph|0.12 sec|2|6|Cloudy, 76 °F, West 6 mph"}},
      {"2025texas500.html",
       {"Texas Motor Speedway|1.5|167|171.279mph|1.51 sec|1|10|Clear, 80 °F, Southwest 7 mph"}},
      {"interatlanta500.html",
       {"Atlanta Motor Speedway|1.54|163|165.921mph|0.08 sec|2|15|Clear, 60 °F, North 5 mph"}}};
  const char* times[] = {"1:38:33.816", "1:21:04.748", "1:48:38.058",
                         "1:48:24.741", "1:27:45.094", "1:30:46.399"};
  int number = 0;
  for (const auto& [page, race] : pages) {
    SCOPED_TRACE(page);
    const std::int32_t id =
        ReadExportedStandingsFile(*template_, *league_, state_, ui_, kRealPages + "/" + page);
    ASSERT_EQ(id, number + 1);
    EXPECT_EQ(
        test::Rows(*league_,
                   fmt::format("SELECT Name, Length, Laps, AvgSpeed, VictoryMargin, Cautions, LeadChanges, "
                               "Weather FROM STNRace WHERE STNRaceID={}",
                               id)),
        race);
    EXPECT_EQ(test::Single(*league_, fmt::format("SELECT RaceTime FROM STNRace WHERE STNRaceID={}", id)),
              times[number++]);
    CHTMLParser parser(ui_, '.');
    parser.InputFile(kRealPages + "/" + page);
    parser.TrackList(state_.tracks.get());
    ASSERT_TRUE(parser.Execute());
    Strings printed;
    for (const CDriverInfo& driver : parser.Drivers())
      printed.push_back(
          fmt::format("{}|{}|{}|{}", driver.Finish, driver.DriverName, driver.Points, driver.Qualifying > 0));
    EXPECT_GE(printed.size(), 42U);
    EXPECT_EQ(test::Rows(*league_,
                         fmt::format("SELECT Finish, DriverName, Points, IIf(Qualifying>0, 'true', 'false') "
                                     "FROM STNStats WHERE STNRaceID={} ORDER BY Finish",
                                     id)),
              printed);
  }
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ExportedStandings, LeavesOutExcludedDriversAndClosesTheOrder) {
  league_->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('WINNER', True)");
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Rows(*league_, "SELECT Finish, DriverName, Points-Bonus FROM STNStats ORDER BY Finish"),
            (Strings{"1|Second|175", "2|Third|170"}));
}

TEST_F(ExportedStandings, ScoresByTheLeaguesOwnPointSystem) {
  league_->Execute("DELETE * FROM PointSystem WHERE Position>2");
  league_->Execute("UPDATE PointSystem SET PrizeMoney=5000 WHERE Position=1");
  state_.useCustomPointSystem = true;
  scoring::LoadPointSystem(*template_, *league_, state_);
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Rows(*league_, "SELECT Points-Bonus, PrizeMoney FROM STNStats ORDER BY Finish"),
            (Strings{"175|5000", "170|Null", "0|Null"}));
}

TEST_F(ExportedStandings, WritesNumbersInTheUsersNotation) {
  engine_.DefaultWorkspace().SetDecimalSeparator(',');
  state_.decimalSeparator = ',';
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Rows(*league_, kRaceFields),
            Strings{"Test Track|page.html|2.5|200|3:31:57,972|141,532mph|0,245 sec|4|12|Clear, 72°F"});
  EXPECT_EQ(league_->OpenRecordset("SELECT Qualifying FROM STNStats WHERE Finish=1").At(0).ToSingle(),
            180.25F);
}

TEST_F(ExportedStandings, SaysWhichPageIsNoRaceFinalUnlessAlertsAreOff) {
  page_.official.clear();
  EXPECT_EQ(Read(page_), 0);
  ASSERT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(ui_.messages[0].title, "Failed to Read Import File");
  EXPECT_EQ(ui_.messages[0].icon, common::MessageIcon::Critical);
  EXPECT_TRUE(ui_.messages[0].text.starts_with(folder_.File("page.html") +
                                               "\r\nThis file does not seem to be a race final.  "));

  template_->Execute("UPDATE Settings SET SettingValue='0' WHERE SettingsID=18");
  EXPECT_EQ(Read(page_), 0);
  EXPECT_EQ(ui_.messages.size(), 1U);
  EXPECT_EQ(Count("STNRace"), "0");

  for (const char* on : {"1", "True", "-1"}) {
    common::SaveSettingValue(*template_, common::kShowImportAlerts, on);
    EXPECT_TRUE(ShowsImportAlerts(*template_)) << on;
  }
  common::SaveSettingValue(*template_, common::kShowImportAlerts, "False");
  EXPECT_FALSE(ShowsImportAlerts(*template_));
  template_->Execute("DELETE * FROM Settings WHERE SettingsID=18");
  EXPECT_TRUE(ShowsImportAlerts(*template_)) << "a template without the setting";
}

TEST_F(ExportedStandings, AFaultBeforeTheRaceIsStoredLeavesNothing) {
  const auto without = [](int finish) {
    ExportedPage page;
    page.race.erase(page.race.begin() + finish);
    return page.Text();
  };
  ExportedPage noStatistics;
  noStatistics.statistics.clear();
  ExportedPage noWeather;
  noWeather.statistics = Heading("Caution Flags: 4 (16 laps)") + Heading("Lead Changes: 12 (5 drivers)");
  ExportedPage strangeCautions;
  strangeCautions.behind = Heading("Caution Flags: 1,1) (16 laps)");
  ExportedPage longWeather;
  longWeather.behind = Heading("Weather: " + std::string(51, 'w'));
  ExportedPage unknownTrack;
  unknownTrack.track = Heading("Track: Nowhere");
  const std::string whole = page_.Text();
  const std::pair<std::string, std::string> pages[] = {{"", "empty"},
                                                       {std::string(20U << 20U, ' '), "too large"},
                                                       {"<HTML><BODY>Something else</BODY></HTML>", "track"},
                                                       {whole.substr(0, whole.find("Weather")), "cut off"},
                                                       {without(1), "winner was"},
                                                       {without(2), "winner won"},
                                                       {noStatistics.Text(), "caution flags"},
                                                       {noWeather.Text(), "weather"},
                                                       {strangeCautions.Text(), "\"1,1)\""},
                                                       {longWeather.Text(), "Weather"},
                                                       {unknownTrack.Text(), "\"Nowhere\""}};
  for (const auto& [content, fault] : pages) {
    std::ofstream(folder_.File("page.html"), std::ios::binary) << content;
    EXPECT_EQ(ReadResultFile(*league_, state_, ui_, folder_.File("page.html"), {}), 0);
    ASSERT_EQ(ui_.messages.size(), 1U) << fault;
    EXPECT_THAT(ui_.messages[0].text, HasSubstr(fault));
    EXPECT_EQ(ui_.messages[0].title, "Error Reading '" + folder_.File("page.html") + "'");
    EXPECT_EQ(Count("STNRace"), "0") << fault;
    ui_.messages.clear();
  }
}

// It would be imported with the others.
TEST_F(ExportedStandings, AFaultLeavesNothingStaged) {
  ASSERT_EQ(Read(page_), 1);
  const std::string results = Count("STNStats");
  page_.race[2][3] = std::string(51, 'n');
  EXPECT_THROW(Read(page_), FileFault);
  EXPECT_EQ(Count("STNRace"), "1");
  page_.race[2][3] = "Somebody";
  state_.useCustomBonusSystem = true;
  league_->Execute("UPDATE Bonus SET Query='no condition', Name='The odd one' WHERE BonusID=1");
  try {
    Read(page_);
    ADD_FAILURE() << "the rule was taken";
  } catch (const engine::EngineError& error) {
    EXPECT_THAT(error.Description(), HasSubstr("The bonus rule \"The odd one\": "));
  }
  EXPECT_EQ(Count("STNRace"), "1");
  EXPECT_EQ(Count("STNStats"), results);
}

TEST_F(ExportedStandings, TakesTextsAsTheyAre) {
  page_.race[1][3] = "Sean O'Brien";
  page_.race[2][3] = "J\xFCrgen | M\xFCller";
  page_.behind = Heading("Weather: It's '& raining");
  ASSERT_EQ(Read(page_), 1);
  EXPECT_EQ(test::Rows(*league_, "SELECT DriverName FROM STNStats WHERE Finish<3 ORDER BY Finish"),
            (Strings{"Sean O'Brien", "Jürgen | Müller"}));
  EXPECT_EQ(test::Single(*league_, "SELECT Weather FROM STNRace"), "It's '& raining");
}

}  // namespace
}  // namespace scorvane::import
