#include "forms/SavePage.h"

#include "championship/Reports.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "forms/widgets/Filters.h"
#include "forms/widgets/Guard.h"
#include "sheets/SeasonSheets.h"

namespace scorvane::forms {
namespace {

// "daytona" becomes "daytona.htm": a page without the extension opens in no browser. What names a spreadsheet
// stays.
std::string WithPageExtension(const std::string& path) {
  if (sheets::KindOf(path) != sheets::FileKind::None) return path;
  const std::string extension = common::LowerCase(common::GetExtension(common::GetFileTitle(path)));
  return extension == "htm" || extension == "html" ? path : path + ".htm";
}

// Asks when there is such a file.
bool MayReplace(common::UserInterface& ui, const std::string& path) {
  const common::Message question{"The file \"" + path + "\" already exists!  Overwrite it?", "File Exists",
                                 common::MessageIcon::None};
  return !common::FileExists(path) || ui.Ask(question, common::Buttons::YesNo) == common::Answer::Yes;
}

// What the command line writes under the same name; the texts above the table belong to pages.
void SaveSheet(FormContext& context, const reports::PageSubject& subject, const std::string& path) {
  engine::Database& league = context.session.League();
  if (subject.kind == reports::PageSubject::kRace)
    return sheets::WriteRace(league, context.state, subject.id, path);
  for (const reports::ReportInfo& report : championship::ListReports(league, context.templateDb))
    if (report.id == subject.id)
      return sheets::WriteReport(league, context.templateDb, context.state, report, path);
}

}  // namespace

std::string SaveSeason(FormContext& context) {
  const std::string league = context.session.League().Name();
  common::FileRequest request;
  request.title = "Season as Spreadsheet";
  request.filter = kSeasonFilter;
  request.folder = common::GetFolder(league);
  request.name = common::GetFileTitle(league, true) + ".xlsx";
  std::string path = context.ui.SaveFile(request);
  if (path.empty()) return path;
  if (sheets::KindOf(path) != sheets::FileKind::Xlsx) path += ".xlsx";
  if (!MayReplace(context.ui, path)) return {};
  const WaitCursor wait;
  sheets::WriteSeason(context.session.League(), context.templateDb, context.state, context.ui, path);
  return path;
}

void SavePage(FormContext& context, const reports::PageSubject& subject, const reports::PageTexts& texts,
              const common::FileRequest& request) {
  const std::string chosen = context.ui.SaveFile(request);
  if (chosen.empty()) return;
  const std::string path = WithPageExtension(chosen);
  if (!MayReplace(context.ui, path)) return;
  engine::Database& league = context.session.League();
  const WaitCursor wait;
  if (sheets::KindOf(path) != sheets::FileKind::None) return SaveSheet(context, subject, path);
  if (!reports::WritePage(league, context.templateDb, context.state, subject, texts,
                          reports::ReadPageLook(league), reports::StandingsFooter(), path)) {
    context.ui.ShowMessage(
        {"Error creating HTML file...", common::kApplicationTitle, common::MessageIcon::None});
  }
}

}  // namespace scorvane::forms
