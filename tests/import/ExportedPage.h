// Exported pages for tests, built from their parts.
#pragma once

#include <string>
#include <vector>

namespace scorvane::test {

inline std::string Heading(const std::string& text) {
  return "<H3 style=\"color : #173D54\">\r\n\t" + text + "\r\n</H3>\r\n";
}

// A table as the simulations write it: the first row with an end tag, the others without.
inline std::string PageTable(const std::vector<std::vector<std::string>>& rows) {
  std::string table = "<TABLE border=\"2\"\r\n\tsummary=\"\">\r\n";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    table += "<TR\tstyle=\"color : black\">\r\n";
    for (const std::string& cell : rows[i]) table += "<TD style=\"x\">\r\n\t" + cell + "\r\n</TD>\r\n";
    if (i == 0) table += "</TR>\r\n";
  }
  return table + "</TABLE>\r\n<BR>\r\n";
}

// A page in parts; tests change what they are about.
struct ExportedPage {
  std::string title = "<H1 style=\"x\">\r\n\tNASCAR Racing 4 EXPORTED STANDINGS\r\n</H1>\r\n";
  std::string track = Heading("Track: TEST TRACK\xAE");
  std::string practice = Heading("Session: Practice") +
                         PageTable({{"P", "#", "DRIVER", "TIME"}, {"1", "9", "Nobody", "99.9 mph"}});
  std::vector<std::vector<std::string>> qualifying = {{"P", "#", "DRIVER", "TIME"},
                                                      {"1", "3", "Second", "1:02.500"},
                                                      {"2", "24", "Winner", "180.250 mph"},
                                                      {"3", "8", "Third", "--"}};
  std::vector<std::vector<std::string>> race = {
      {"F", "S", "#", "DRIVER", "INTERVAL", "LAPS", "LED", "POINTS", "STATUS"},
      {"1", "2", "24", "Winner", "141.532", "200", "120*", "1", "Running"},
      {"2", "1", "3", "Second", "-0.245", "200", "80", "1", "Running"},
      {"3", "3", "8", "Third", "-2L", "198", "0", "1", "Engine"}};
  std::string official = Heading("OFFICIAL STANDINGS");
  std::string statistics = Heading("Caution Flags: 4 (16 laps)") + Heading("Lead Changes: 12 (5 drivers)") +
                           Heading(
                               "Weather: Clear, 72\xB0"
                               "F");
  std::string behind;

  std::string Body() const {
    return title + track + Heading("Date: 01/02/03") + practice + Heading("Session: Qualifying") +
           PageTable(qualifying) + Heading("Session: Race") + official + PageTable(race) + statistics +
           behind;
  }
  std::string Text() const {
    return "<!DOCTYPE HTML>\r\n<HTML>\r\n<HEAD><TITLE>x</TITLE></HEAD>\r\n<BODY style=\"background : "
           "white\">\r\n" +
           Body() + "<!--\r\n#@#Signature\r\n//-->\r\n</BODY>\r\n</HTML>\r\n";
  }
};

}  // namespace scorvane::test
