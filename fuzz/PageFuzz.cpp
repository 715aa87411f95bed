// The reader of exported pages: whatever the page, it is refused in words or staged whole.
#include "FuzzTarget.h"
#include "import/ExportedStandings.h"
#include "import/FileContent.h"
#include "import/HTMLParser.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::StagingLeague staging;
  import::CHTMLParser parser(staging.ui, '.');
  parser.TrackList(staging.state.tracks.get());
  try {
    if (!parser.ExecuteOn(fuzz::Text(data, size))) {
      fuzz::Check(parser.ErrNum() != import::kPageAccepted && !parser.ErrMsg().empty(),
                  "a refusal has its reason");
      return 0;
    }
  } catch (const import::FileFault& fault) {
    fuzz::Check(*fault.what() != 0, "a fault is told");
    return 0;
  }
  fuzz::Check(parser.ErrNum() == import::kPageAccepted, "no reason to refuse what is accepted");
  staging.state.simType = common::kNascarRacing2003;
  staging.state.decimalSeparator = '.';
  try {
    const std::string path = staging.Write(fuzz::Text(data, size));
    const std::int32_t race =
        import::ReadExportedStandingsFile(*staging.league, staging.state, staging.ui, path, size % 2 == 0);
    fuzz::Check(race > 0, "what the parser accepts is staged");
    fuzz::Check(staging.Count("STNRace") == 1, "a page is one race");
    fuzz::Check(staging.Count("STNStats") <= parser.Drivers().Count(), "a driver is one result");
  } catch (const import::FileFault&) {  // what the tables do not take
  } catch (const engine::EngineError&) {
  }
  staging.league->Execute("DELETE * FROM STNRace");
  return 0;
}
