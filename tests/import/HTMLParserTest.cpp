#include "import/HTMLParser.h"

#include <chrono>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExportedPage.h"
#include "common/ScriptedUserInterface.h"
#include "import/FileContent.h"

namespace scorvane::import {
namespace {

using test::ExportedPage;
using test::Heading;
using testing::HasSubstr;

class Page : public testing::Test {
 protected:
  Page() { tracks_.Add("Test Track", 2.5F, "TEST TRACK"); }

  CHTMLParser& Parser() {
    parser_ = std::make_unique<CHTMLParser>(ui_, '.');
    parser_->InputFile("C:\\exports\\page.html");
    parser_->TrackList(&tracks_);
    return *parser_;
  }
  bool Accepts(const std::string& content) { return Parser().ExecuteOn(content); }
  std::string FaultOf(const std::string& content) {
    try {
      Parser().ExecuteOn(content);
    } catch (const FileFault& fault) {
      return fault.what();
    }
    return "no fault";
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const CDriverInfo& driver : parser_->Drivers()) names.push_back(driver.DriverName);
    return names;
  }

  common::ScriptedUserInterface ui_;
  CTracks tracks_;
  std::unique_ptr<CHTMLParser> parser_;
  ExportedPage page_;
};

TEST_F(Page, GivesTheRaceAndItsDrivers) {
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(parser_->ErrNum(), kPageAccepted);
  const CRaceInfo& race = parser_->Race();
  EXPECT_EQ(race.Track, "Test Track");
  EXPECT_EQ(race.FileName, "page.html");
  EXPECT_EQ(race.Laps, 200);
  EXPECT_EQ(race.Length, 2.5F);
  EXPECT_EQ(race.AvgSpeed, "141.532mph");
  EXPECT_EQ(race.RaceTime, "3:31:57.972");  // 500 miles at 141.532 mph
  EXPECT_EQ(race.VictoryMargin, "0.245 sec");
  EXPECT_EQ(race.Cautions, "4");
  EXPECT_EQ(race.LeadChanges, 12);
  EXPECT_EQ(race.Weather, "Clear, 72°F");

  ASSERT_EQ(Names(), (std::vector<std::string>{"Winner", "Second", "Third"}));
  const CDriverInfo& winner = parser_->Drivers().Item("24\tWINNER");
  EXPECT_EQ(
      std::make_tuple(winner.Start, winner.Finish, winner.Laps, winner.Led, winner.Points, winner.Status),
      std::make_tuple(2, 1, 200, 120, 1, "Running"));
  EXPECT_EQ(winner.Qualifying, 180.25F);
  EXPECT_EQ(parser_->Drivers().Item(2).Qualifying, 144) << "2.5 miles in 62.5 seconds";
  EXPECT_EQ(parser_->Drivers().Item(3).Qualifying, 0);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(Page, RaceTimeOfShortAndStrangeRaces) {
  const struct {
    const char* speed;
    const char* laps;
    const char* time;
  } cases[] = {{"150", "2", "2:00.000"}, {"150", "1", "1:00.000"},    {"180", "1", "50.000"},
               {"0", "200", "--"},       {"-5", "200", "--"},         {"nothing", "200", "--"},
               {"150", "0", "--"},       {".0000000001", "200", "--"}};
  for (const auto& c : cases) {
    page_.race[1][4] = c.speed;
    page_.race[1][5] = c.laps;
    ASSERT_TRUE(Accepts(page_.Text()));
    EXPECT_EQ(parser_->Race().RaceTime, c.time) << c.speed << " mph, " << c.laps << " laps";
  }
  page_ = ExportedPage();
  page_.race[2][4] = "-2L";
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(parser_->Race().VictoryMargin, "2 lap(s)");
}

TEST_F(Page, IsRefusedWithAReason) {
  page_.title = "<H1>NASCAR Racing 4 Exported Standings</H1>";  // the case counts
  EXPECT_FALSE(Accepts(page_.Text()));
  EXPECT_EQ(parser_->ErrNum(), kNotExported);
  EXPECT_EQ(
      parser_->ErrMsg(),
      "This file does not seem to have been exported by\r\nNASCAR Racing or else it has been modified.");
  EXPECT_EQ(parser_->Drivers().Count(), 0);

  page_ = ExportedPage();
  page_.official.clear();
  EXPECT_FALSE(Accepts(page_.Text()));
  EXPECT_EQ(parser_->ErrNum(), kNotRaceFinal);
  EXPECT_EQ(parser_->ErrMsg(),
            "This file does not seem to be a race final.  Scorvane\r\nis not designed to calculate the "
            "points based\r\n"
            "on anything less than the final races results.");
}

TEST_F(Page, LacksWhatMustBeKnown) {
  EXPECT_THAT(FaultOf(" \r\n\t"), HasSubstr("does not name a track"));
  EXPECT_THAT(FaultOf("<html><body><h2>Another program</h2></body></html>"),
              HasSubstr("does not name a track"));
  EXPECT_THAT(FaultOf(page_.Text() + '\0'), HasSubstr("no text file"));
  page_.track = Heading("Track: Nowhere");
  EXPECT_THAT(FaultOf(page_.Text()), HasSubstr("\"Nowhere\""));
  page_ = ExportedPage();
  page_.race.push_back(page_.race[1]);
  EXPECT_EQ(FaultOf(page_.Text()), "The page lists Winner with the number \"24\" twice.");
  for (const std::size_t column : {0, 1, 5, 6, 7}) {
    page_ = ExportedPage();
    page_.race[1][column] = "40000";
    EXPECT_THAT(FaultOf(page_.Text()), HasSubstr("out of bounds: \"40000\"")) << column;
  }
  const std::pair<const char*, const char*> headings[] = {{"Caution Flags: 4", "CAUTION FLAGS"},
                                                          {"Lead Changes: 12", "LEAD CHANGES"},
                                                          {"Lead Changes: many (5 drivers)", "\"many\""},
                                                          {"Weather", "WEATHER"},
                                                          {"Session", "SESSION"}};
  for (const auto& [heading, what] : headings) {
    page_ = ExportedPage();
    page_.behind = Heading(heading);
    EXPECT_THAT(FaultOf(page_.Text()), HasSubstr(what));
  }
  // A page that was cut off has lost its headings or its winner, or it has not lost what counts.
  const std::string whole = ExportedPage().Text();
  for (std::size_t size = 0; size < whole.size(); size += 7) {
    try {
      Parser().ExecuteOn(whole.substr(0, size));
    } catch (const FileFault& fault) {
      EXPECT_STRNE(fault.what(), "");
    }
  }
}

TEST_F(Page, ThatWasEditedIsReadWithAWarning) {
  const std::string warning =
      "Possible evidence of editing has been discovered in the following file:\r\n\r\n"
      "C:\\exports\\page.html\r\n\r\n"
      "Scorvane has found HTML tags in this file not used by NASCAR Racing 4\r\n"
      "as of the v1.3.0.6 patch.  This may be an indication that the file has been edited by\r\n"
      "an HTML editor such as Microsoft FrontPage.  It's also possible that this file was\r\n"
      "created by a later patch of NASCAR Racing 4 that uses the detected tags.";
  page_.behind = "<P>";
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(ui_.messages,
            (std::vector<common::Message>{{warning, "Warning", common::MessageIcon::Exclamation}}));
  EXPECT_EQ(parser_->Drivers().Count(), 3);

  page_.behind = "<font size=\"2\">An editor was here</font></font>";
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(ui_.messages.size(), 2U);

  Parser().ShowAlerts(false);
  EXPECT_TRUE(parser_->ExecuteOn(page_.Text()));
  EXPECT_EQ(ui_.messages.size(), 2U) << "not when alerts are off";

  // A page that is refused is not warned of as well.
  page_.official.clear();
  EXPECT_FALSE(Accepts(page_.Text()));
  EXPECT_EQ(ui_.messages.size(), 2U);
}

TEST_F(Page, ReadsWhatEditorsMakeOfTags) {
  std::string text = page_.Text();
  const auto replace = [&text](const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
      text.replace(at, from.size(), to);
  };
  replace("<TABLE border=\"2\"\r\n\tsummary=\"\">", "<table><tbody class=x>");
  replace("</TABLE>", "</tbody></table>");
  replace("<TR\tstyle=\"color : black\">", "<tr id=1>");
  replace("<TD style=\"x\">", "<td align=\"left\"><b>");
  replace("</TD>", "</b></td>");
  replace("</TR>", "</tr>");
  replace("<H3 style=\"color : #173D54\">", "<h3>");
  replace("</H3>", "</h3>");
  ASSERT_TRUE(Accepts(text));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Winner", "Second", "Third"}));
  EXPECT_EQ(parser_->Drivers().Item(1).Qualifying, 180.25F);
  EXPECT_TRUE(ui_.messages.empty());

  replace("</b></td>\r\n<tr id=1>", "</b></td></tr><tr id=1>");
  ASSERT_TRUE(Accepts(text));
  EXPECT_EQ(Names().size(), 3U) << "every row has its end tag now";
}

// How far an element goes.
TEST_F(Page, ElementsEndWhereTheyAlwaysDid) {
  // An end tag right behind the start tag does not close the cell: the next one does.
  page_.race = {page_.race[0]};
  std::string text = page_.Text();
  const std::string cells =
      "<TR><TD>1</TD><TD>2</TD><TD></TD><TD>24</TD><TD>Winner</TD><TD>141.5</TD><TD>9</TD></TABLE>";
  text.insert(text.rfind("</TABLE>"), cells);
  ASSERT_TRUE(Accepts(text));
  ASSERT_EQ(Names(), std::vector<std::string>{"Winner"});
  EXPECT_EQ(parser_->Race().AvgSpeed, "141.5mph");
  EXPECT_NO_THROW(parser_->Drivers().Item("24\tWinner"));

  // What is not closed ends the scan; what follows the BODY is not looked at.
  page_ = ExportedPage();
  page_.practice = "<DIV>" + page_.practice;
  EXPECT_FALSE(Accepts(page_.Text()));
  EXPECT_EQ(parser_->ErrNum(), kNotRaceFinal);
  page_ = ExportedPage();
  std::string moved = page_.Text();
  moved.insert(moved.find("</BODY>") + 7, Heading("Weather: Fog"));
  ASSERT_TRUE(Accepts(moved));
  EXPECT_EQ(parser_->Race().Weather, "Clear, 72°F");
  // A page without HTML and BODY is one, too.
  ASSERT_TRUE(Accepts(page_.Body()));
  EXPECT_EQ(Names().size(), 3U);
}

TEST_F(Page, OnlyTheTableBehindASessionCounts) {
  page_.behind =
      test::PageTable({{"1", "1", "1", "Impostor", "1", "1", "1", "1", "1"}}) + Heading("Session: Warmup") +
      test::PageTable({{"1", "1", "1", "Impostor", "1", "1", "1", "1", "1"}}) + Heading("Session: Tea") +
      test::PageTable({{"1", "1", "1", "Impostor", "1", "1", "1", "1", "1"}});
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Winner", "Second", "Third"}));
}

// The table of qualifying speeds has 43 places.
TEST_F(Page, PositionsAndCellsBeyondTheTables) {
  page_.qualifying = {{"P", "#", "DRIVER", "TIME"},
                      {"0", "1", "A", "100 mph"},
                      {"44", "1", "B", "101 mph"},
                      {"-1", "1", "C", "102 mph"},
                      {"43", "1", "D", "103 mph", "more", "and more"},
                      {"x", "1", "E", "104 mph"},
                      {"1"}};
  page_.race = {{"1", "43", "1", "A", "150", "10", "0", "0", "Running", "more", "and more"},
                {"2", "44", "2", "B", "-1", "10", "0", "0", "Running"},
                {"3", "0", "3", "C", "-1", "10", "0", "0", "Running"},
                {"4", "-7", "4", "D", "-1"},
                {"5", "1", "5", ""},
                {}};
  ASSERT_TRUE(Accepts(page_.Text()));
  EXPECT_EQ(Names(), (std::vector<std::string>{"A", "B", "C", "D"}));
  EXPECT_EQ(parser_->Drivers().Item(1).Qualifying, 103);
  for (const int place : {2, 3, 4}) EXPECT_EQ(parser_->Drivers().Item(place).Qualifying, 0) << place;
  EXPECT_EQ(parser_->Drivers().Item(4).Status, "");
}

// A hostile page is read, or refused, in time that grows with its size.
TEST_F(Page, LargePagesTakeNoLongTime) {
  const std::size_t size = 8U << 20U;
  const auto repeat = [size](const std::string& piece) {
    std::string text;
    text.reserve(size + piece.size());
    while (text.size() < size) text += piece;
    return text;
  };
  page_.race.clear();
  const std::string open = page_.Text().substr(0, page_.Text().rfind("</TABLE>"));
  const std::string hostile[] = {open + repeat("<TR><TD>"),
                                 open + repeat("<TR "),
                                 open + repeat("<TR></TD>"),
                                 open + repeat("<TR><TD>1</TD></TR>") + "</TABLE>",
                                 open + repeat("<TR><TR><TD>1</TD>") + "</TABLE>",
                                 repeat("<HTML>") + "</HTML>",
                                 repeat("<BODY><HTML>"),
                                 repeat("<"),
                                 repeat("<X>"),
                                 repeat("<X></X>"),
                                 repeat("<!"),
                                 "<" + repeat("</") + ">" + repeat("</"),
                                 "<H3>" + repeat(":") + "</H3>",
                                 repeat("<H3>Track: x</H3>"),
                                 repeat(">")};
  for (const std::string& text : hostile) {
    const auto start = std::chrono::steady_clock::now();
    try {
      Accepts(text);
    } catch (const FileFault& fault) {
      EXPECT_LT(std::string(fault.what()).size(), 500U);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << text.substr(0, 40);
  }
}

}  // namespace
}  // namespace scorvane::import
