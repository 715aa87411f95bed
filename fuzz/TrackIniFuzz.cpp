// The reader of track.ini files: one file is at most one track.
#include <cmath>

#include "FuzzTarget.h"

using namespace scorvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  import::CTracks tracks;
  import::AddTrackFromIni(tracks, fuzz::Text(data, size));
  import::AddTrackFromIni(tracks, fuzz::Text(data, size));
  fuzz::Check(tracks.Count() >= 1, "a file is a track, if only one without a name");
  const import::CTrackInfo& track = tracks.Item(1);
  fuzz::Check(!std::isnan(track.Length), "a length is a number");
  fuzz::Check(track.TrackName.find('\n') == std::string::npos, "a name is one line");
  if (!track.TrackName.empty()) {
    fuzz::Check(tracks.Count() == 1, "the same file is the same track");
    fuzz::Check(tracks.Item(track.TrackName).Length == track.Length || std::isinf(track.Length),
                "a track is found by its name");
  }
  return 0;
}
