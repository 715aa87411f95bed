// Commands that write a league's pages: one of them, or a whole site.
#include <fmt/format.h>

#include <optional>
#include <utility>

#include "championship/Reports.h"
#include "platform/Platform.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/ReportNames.h"
#include "reports/DroppedRaces.h"
#include "reports/Export.h"
#include "reports/PageExport.h"
#include "reports/Report.h"
#include "sheets/SeasonSheets.h"
#include "site/ClassicPages.h"

namespace scorvane::cli {
namespace {

void ExportSpreadsheet(Context& context, const ExportOptions& options) {
  if (options.heading || options.name || options.caption)
    throw CommandError("--heading, --name and --caption belong to pages; a spreadsheet has none of them.");
  engine::Database& league = context.League();
  if (options.raceId) {
    sheets::WriteRace(league, context.state, *options.raceId, options.output);
  } else {
    sheets::WriteReport(league, context.Template(), context.state,
                        NeedReport(championship::ListReports(league, context.Template()), options.report),
                        options.output);
  }
  fmt::print("Wrote {}.\n", options.output);
}

}  // namespace

void ExportSeason(const CommonOptions& common, const std::string& path, const std::string& file) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  sheets::WriteSeason(context.League(), context.Template(), context.state, context.ui, file);
  fmt::print("Wrote {}.\n", file);
}

void Export(const CommonOptions& common, const ExportOptions& options) {
  Context context(common, options.path, app::LeagueSession::Use::Looking);
  if (sheets::KindOf(options.output) != sheets::FileKind::None) return ExportSpreadsheet(context, options);
  engine::Database& league = context.League();
  reports::PageSubject subject;
  reports::PageTexts texts;
  std::optional<reports::ReportTable> table;
  if (options.raceId) {
    NeedRace(league, *options.raceId);
    subject = {reports::PageSubject::kRace, *options.raceId};
    texts = reports::RacePageTexts(league, *options.raceId, common.decimal);
  } else {
    const reports::ReportInfo info =
        NeedReport(championship::ListReports(league, context.Template()), options.report);
    const auto marks = reports::MarkDroppedRaces(league, context.state.droppedRaces);
    table = site::PageTable(league, context.Template(), context.state, info.id);
    subject = {reports::PageSubject::kReport, info.id, table ? &*table : nullptr};
    texts = reports::StoredPageTexts(league);
    texts.caption = site::PageCaption(league, info.id, marks);
    texts.reportName = info.name;
  }
  texts.heading = options.heading.value_or(texts.heading);
  texts.reportName = options.name.value_or(texts.reportName);
  texts.caption = options.caption.value_or(texts.caption);
  const bool empty = !options.raceId && !table;
  platform::RemoveTemporariesBeside(options.output);
  if (empty ||
      !reports::WritePage(league, context.Template(), context.state, subject, texts,
                          reports::ReadPageLook(league), reports::StandingsFooter(), options.output)) {
    throw CommandError(
        fmt::format("Error creating HTML file... '{}' could not be written: {}.", options.output,
                    empty ? "the report has nothing to show" : reports::WhyNoPage(options.output)));
  }
  fmt::print("Wrote {}.\n", options.output);
}

void ExportAll(const CommonOptions& common, const std::string& path, const std::string& folder) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  const site::ClassicPages pages =
      site::WriteClassicPages(context.League(), context.Template(), context.state, context.ui, folder);
  fmt::print("Wrote {} report pages, {} race pages and index.htm into {}.\n", pages.reports, pages.races,
             folder);
  if (pages.older > 0) {
    fmt::print("{} older event-*.htm page{} there {} no longer linked.\n", pages.older,
               pages.older == 1 ? "" : "s", pages.older == 1 ? "is" : "are");
  }
}

}  // namespace scorvane::cli
