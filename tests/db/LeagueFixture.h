// A template compiled from the rows that ship, and a league file made with it.
#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/MDBBuild.h"
#include "db/TemplateBuild.h"
#include "engine/Database.h"
#include "support/Rows.h"
#include "support/TempFolder.h"

namespace scorvane::test {

class LeagueFixture : public testing::Test {
 protected:
  LeagueFixture() {
    db::BuildTemplate(engine_, SCORVANE_SOURCE_DIR "/share/template", folder_.File("Kirrelon.dat"));
    template_ = engine_.DefaultWorkspace().OpenDatabase(folder_.File("Kirrelon.dat"));
  }

  std::unique_ptr<engine::Database> NewLeague(const std::string& name = "league.lgx") {
    const std::string path = folder_.File(name);
    db::CreateLeagueFile(engine_, path, 3, 1, *template_, 2, 1);
    return engine_.DefaultWorkspace().OpenDatabase(path);
  }

  TempFolder folder_;
  engine::DBEngine engine_;
  std::unique_ptr<engine::Database> template_;
};

}  // namespace scorvane::test
