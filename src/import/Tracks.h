// The track catalogue: how long the tracks are that the newer simulations race on, as their own track folders
// say.
#pragma once

#include <string>
#include <string_view>

#include "common/ProcessState.h"
#include "import/KeyedCollection.h"

namespace scorvane::import {

struct CTrackInfo {
  std::string TrackName;
  float Length = 0;  // miles
};

class CTracks : public KeyedCollection<CTrackInfo> {
 public:
  // Throws CollectionError when the key is there already.
  CTrackInfo& Add(std::string trackName, float length, std::string_view sKey) {
    return AddItem({std::move(trackName), length}, sKey);
  }
};

// Fills the state's track catalogue from the `tracks` folder of a simulation's folder; does nothing when the
// catalogue is of that folder already. The track folders are taken in the order of their names: of two tracks
// with one name the first counts. Without a folder the catalogue is empty.
void BuildTrackCatalogue(common::ProcessState& state, const std::string& simulationFolder);
// The same for the simulation that the league races.
void BuildTrackCatalogue(common::ProcessState& state);

// Adds the track that the file at `path`, a track.ini, describes. Nothing is added when the file cannot be
// read or the catalogue has a track of that name.
void ReadTrackIni(CTracks& tracks, const std::string& path);

// The same for the file's content.
void AddTrackFromIni(CTracks& tracks, std::string_view bytes);

// A track's name without the signs of registered and unregistered trademarks, which pages and track.ini files
// do not agree on.
std::string WithoutTrademarks(std::string_view name);

}  // namespace scorvane::import
