// The end of both page exports: where to, and writing the page with the look that the league has stored.
#pragma once

#include <string>

#include "common/UserInterface.h"
#include "forms/FormContext.h"
#include "reports/PageExport.h"

namespace scorvane::forms {

// Asks for the file and, when it exists, whether it may go; says so when the page cannot be written. A name
// that ends in .xlsx or .csv becomes a spreadsheet. Throws common::RuleError when that cannot be written, and
// EngineError.
void SavePage(FormContext& context, const reports::PageSubject& subject, const reports::PageTexts& texts,
              const common::FileRequest& request);

// Asks for a file of the whole season, named after the league and beside it at first, and writes it; yields
// its path, empty when the user thinks better of it. Throws as sheets::WriteSeason does.
std::string SaveSeason(FormContext& context);

}  // namespace scorvane::forms
