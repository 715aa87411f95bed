// What the windows of one run share. The main program makes it; every form is handed it.
#pragma once

#include "app/LeagueSession.h"
#include "common/ProcessState.h"
#include "common/UserInterface.h"
#include "engine/Database.h"

namespace scorvane::forms {

struct FormContext {
  engine::DBEngine& engine;
  engine::Database& templateDb;
  common::ProcessState& state;
  common::UserInterface& ui;
  app::LeagueSession& session;  // the league file, when one is open
};

}  // namespace scorvane::forms
