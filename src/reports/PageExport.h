// Pages of a league, from its settings: what the export dialogs and the command line write.
#pragma once

#include <cstdint>
#include <string>

#include "common/ProcessState.h"
#include "engine/Database.h"
#include "reports/PageLook.h"
#include "reports/Report.h"

namespace scorvane::reports {

// What is shown above the table.
struct PageTexts {
  std::string heading;
  std::string reportName;
  std::string caption;
};

// A report (kReport) or the results of a race.
struct PageSubject {
  enum Kind : std::int32_t { kReport = 0, kRace = 1 };
  Kind kind = kReport;
  std::int32_t id = 0;
  // Of a report what is shown, when it has been run already; it is not run again.
  const ReportTable* table = nullptr;
};

// The texts that are offered for a race: the league's heading, the track, its length and laps. Throws
// EngineError 3021 when there is no such race.
PageTexts RacePageTexts(engine::Database& league, std::int32_t raceId, char decimal);

// The league's own texts, empty where a setting is missing.
PageTexts StoredPageTexts(engine::Database& league);
// Stores texts and look in the league's settings: all of it or nothing. Throws EngineError.
void SavePageSettings(engine::Database& league, const PageTexts& texts, const PageLook& look);

enum class PageResult { Written, NothingToShow, Failed };
// Writes a page with the footer, in one run of its report.
PageResult TryWritePage(engine::Database& league, engine::Database& templateDb,
                        const common::ProcessState& state, const PageSubject& subject, const PageTexts& texts,
                        const PageLook& look, const std::string& footer, const std::string& path);
// Writes a page with the footer; false when the table cannot be built or the file cannot be written.
bool WritePage(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
               const PageSubject& subject, const PageTexts& texts, const PageLook& look,
               const std::string& footer, const std::string& path);

// Why a page could not be written to a path, as the end of a sentence.
std::string WhyNoPage(const std::string& path);

}  // namespace scorvane::reports
