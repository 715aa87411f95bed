// The reader of standings files: a file is staged whole, or it leaves one message and nothing else. The last
// byte chooses the simulation, how qualifying is read and whether the points are the league's own.
#include "FuzzTarget.h"
#include "import/StandingsFile.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::StagingLeague staging;
  const unsigned choice = size == 0 ? 0 : data[size - 1];
  staging.state.simType = static_cast<std::int16_t>(choice % 3);
  staging.state.useCustomBonusSystem = (choice & 16U) != 0;
  staging.ui.messages = 0;
  const std::string path = staging.Write(fuzz::Text(data, size));
  const std::int32_t race = import::ReadStandingsFile(*staging.league, staging.state, staging.ui, path,
                                                      (choice & 32U) != 0 ? 1 : 0);
  fuzz::Check(staging.Count("STNRace") == (race > 0 ? 1 : 0), "a file that fails leaves no race");
  if (race < 1) fuzz::Check(staging.Count("STNStats") == 0, "a file that fails leaves no results");
  fuzz::Check(staging.ui.messages == (race > 0 ? 0 : 1),
              "one message for a file that fails, none for a good one");
  staging.league->Execute("DELETE * FROM STNRace");
  return 0;
}
