// Staged and stored races for the tests of scoring, each result given by what scoring reads.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "common/ProcessState.h"
#include "common/SqlText.h"
#include "db/LeagueFixture.h"

namespace scorvane::scoring {

struct Result {
  int finish;
  int start = 1;
  int lapsLed = 0;
  int points = 0;
  std::string qualifying = "0";
};

class ScoringFixture : public test::LeagueFixture {
 protected:
  ScoringFixture() : league_(NewLeague()) {}

  // A race with these results; the drivers are named "Driver 1" and so on.
  std::int32_t AddRace(bool staged, const std::vector<Result>& results) {
    league_->Execute(staged ? "INSERT INTO STNRace (Name) VALUES ('Track')"
                            : "INSERT INTO Race (Name) VALUES ('Track')");
    const std::int32_t race = staged ? common::GetMaxID(*league_, "STNRace", "STNRaceID")
                                     : common::GetMaxID(*league_, "Race", "RaceID");
    int number = 0;
    for (const Result& result : results) {
      std::string driver = fmt::format("'Driver {}'", ++number);
      if (!staged) {
        league_->Execute("INSERT INTO Driver (Name) VALUES (" + driver + ")");
        driver = std::to_string(common::GetMaxID(*league_, "Driver", "DriverID"));
      }
      league_->Execute(fmt::format(
          "INSERT INTO {0}Stats ({0}RaceID, {1}, Finish, Start, LapsLed, Points, Bonus, PrizeMoney, "
          "Qualifying) VALUES ({2}, {3}, {4}, {5}, {6}, {7}, 1, 1, {8})",
          staged ? "STN" : "", staged ? "DriverName" : "DriverID", race, driver, result.finish, result.start,
          result.lapsLed, result.points, result.qualifying));
    }
    return race;
  }

  // The named fields of a race's results in the order in which they were added.
  std::vector<std::string> Results(bool staged, std::int32_t race, const std::string& fields) {
    const std::string prefix = staged ? "STN" : "";
    return test::Rows(*league_,
                      fmt::format("SELECT {1} FROM {0}Stats WHERE {0}RaceID={2} ORDER BY {0}StatsID", prefix,
                                  fields, race));
  }

  std::unique_ptr<engine::Database> league_;
  common::ProcessState state_;
};

}  // namespace scorvane::scoring
