// What the fuzz targets share. Each defines LLVMFuzzerTestOneInput; the fuzzer calls it with whatever it
// thinks of, an ordinary build with the files of fuzz/seeds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "common/SilentInterface.h"
#include "db/MDBBuild.h"
#include "db/TemplateBuild.h"
#include "db/Upgrade.h"
#include "engine/Database.h"
#include "import/Tracks.h"
#include "scoring/PointSystem.h"
#include "support/TempFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace scorvane::fuzz {

// What must hold of every input.
inline void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Counts what it is told.
class CountingInterface : public common::SilentInterface {
 public:
  int messages = 0;

  void ShowMessage(const common::Message& message) override {
    Check(!message.text.empty(), "a message says something");
    ++messages;
  }
};

// A league to stage files into. Its one transaction never ends, so nothing waits for the disk.
class StagingLeague {
 public:
  StagingLeague() {
    db::BuildTemplate(engine_, SCORVANE_SOURCE_DIR "/share/template", folder_.File("Kirrelon.dat"));
    templateDb_ = engine_.DefaultWorkspace().OpenDatabase(folder_.File("Kirrelon.dat"));
    db::CreateLeagueFile(engine_, folder_.File("league.lgx"), 0, 0, *templateDb_, 0, 0);
    league = engine_.DefaultWorkspace().OpenDatabase(folder_.File("league.lgx"));
    unit_ = std::make_unique<engine::UnitOfWork>(*league);
    db::UpgradeLeagueFile(*league, *templateDb_);
    league->Execute("INSERT INTO Driver (Name, Exclude) VALUES ('Excluded', True)");
    scoring::LoadPointSystem(*templateDb_, *league, state);
    state.tracks = std::make_shared<import::CTracks>();
    state.tracks->Add("Oak Ridge Speedway", 1.25F, "Oak Ridge Speedway");
  }

  std::string Write(std::string_view content) {
    std::ofstream(path_, std::ios::binary) << content;
    return path_;
  }
  std::int32_t Count(const char* table) {
    return league->OpenRecordset(std::string("SELECT Count(*) AS N FROM ") + table).At(0).ToLong();
  }

 private:
  test::TempFolder folder_;
  engine::DBEngine engine_;
  std::unique_ptr<engine::Database> templateDb_;
  const std::string path_ = folder_.File("input");

 public:
  std::unique_ptr<engine::Database> league;
  common::ProcessState state;
  CountingInterface ui;

 private:
  std::unique_ptr<engine::UnitOfWork> unit_;
};

}  // namespace scorvane::fuzz
