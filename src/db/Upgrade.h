// Bringing league files of earlier releases up to date.
#pragma once

#include "engine/Database.h"

namespace scorvane::db {

// Gives the league, and the template, the fields and tables that earlier releases did not have; on files that
// have them all it changes nothing. What fails is skipped: the file is then as far up to date as it let
// itself be brought, and a template that is open only for reading stays as it is.
void UpgradeLeagueFile(engine::Database& league, engine::Database& templateDb);

}  // namespace scorvane::db
