// Commands that write a league's pages: one of them, or a whole site.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "championship/Reports.h"
#include "common/Paths.h"
#include "engine/Names.h"
#include "platform/Platform.h"
#include "programs/cli/Commands.h"
#include "programs/cli/Context.h"
#include "programs/cli/ReportNames.h"
#include "reports/DroppedRaces.h"
#include "reports/Export.h"
#include "reports/PageExport.h"
#include "reports/Report.h"
#include "sheets/SeasonSheets.h"

namespace scorvane::cli {
namespace {

std::string WithoutColon(std::string caption) {
  caption.pop_back();
  return caption;
}

// What a page of a report shows; nothing without columns or rows.
std::optional<reports::ReportTable> PageTable(Context& context, std::int32_t reportId) {
  auto table = championship::RunReport(context.League(), context.Template(), context.state, reportId);
  if (!table || table->rows.empty()) return std::nullopt;
  return championship::ForPage(std::move(*table));
}

// A file name that every web server takes: small letters, digits and hyphens.
std::string FileNameFor(const std::string& name) {
  std::string file;
  for (const char c : name) {
    const char small = engine::LowerAscii(c);
    const bool plain = (small >= 'a' && small <= 'z') || (small >= '0' && small <= '9');
    if (plain) {
      file += small;
    } else if (!file.empty() && file.back() != '-') {
      file += '-';
    }
  }
  while (!file.empty() && file.back() == '-') file.pop_back();
  return file.empty() ? "page" : file;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '"') {
      escaped += "&quot;";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

struct Link {
  std::string file;
  std::string text;
  std::string note;
};

std::string LinkList(const std::vector<Link>& links) {
  std::string html;
  for (const Link& link : links) {
    html += fmt::format("<li><a href=\"{}\">{}</a>{}</li>\n", link.file, Escaped(link.text),
                        link.note.empty() ? "" : " <small>" + Escaped(link.note) + "</small>");
  }
  return html;
}

std::string IndexPage(const std::string& heading, const std::string& caption,
                      const std::vector<Link>& reports, const std::vector<Link>& races) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, "
      "initial-scale=1\">\n<title>{0}</title>\n<style>\n"
      ":root {{ color-scheme: light dark; }}\n"
      "body {{ font: 16px/1.5 system-ui, sans-serif; max-width: 46rem; margin: 2rem auto; padding: 0 1rem; "
      "}}\n"
      "h1 {{ margin-bottom: 0; }} p {{ margin-top: 0; opacity: .75; }} small {{ opacity: .75; display: "
      "inline-block; }}\n"
      "ul, ol {{ columns: 18rem auto; column-gap: 3rem; }} li {{ break-inside: avoid; }}\n"
      "</style>\n</head>\n<body>\n<h1>{0}</h1>\n<p>{1}</p>\n<h2>Standings</h2>\n<ul>\n{2}</ul>\n"
      "<h2>Races</h2>\n<ol>\n{3}</ol>\n{4}\n</body>\n</html>\n",
      Escaped(heading), Escaped(caption), LinkList(reports), LinkList(races), reports::StandingsFooter());
}

// Why a page that was asked for is not there.
std::string WhyNoPage(const std::string& output) {
  namespace fs = std::filesystem;
  const fs::path path = common::SystemPath(output);
  std::error_code error;
  if (fs::is_directory(path, error)) return "it is a folder";
  const fs::path folder = path.parent_path();
  if (!folder.empty() && !fs::is_directory(folder, error)) return "there is no such folder";
  if (fs::exists(path, error)) return "what is there is no page or may not be changed, or the disk is full";
  return "the folder may not be written to, the disk is full, or the race has no results";
}

// Pages of races that an earlier export left and this one has not written.
int CountOldPages(const std::string& folder, const std::vector<Link>& links) {
  int old = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(common::SystemPath(folder), error)) {
    const std::string name = common::PathText(entry.path().filename());
    const bool ours = name.starts_with("event-") && name.ends_with(".htm");
    if (ours && std::none_of(links.begin(), links.end(), [&](const Link& link) { return link.file == name; }))
      ++old;
  }
  return old;
}

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
    table = PageTable(context, info.id);
    subject = {reports::PageSubject::kReport, info.id, table ? &*table : nullptr};
    texts = reports::StoredPageTexts(league);
    texts.caption = WithoutColon(championship::ReportCaption(league, info.id, marks));
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
    throw CommandError(fmt::format("Error creating HTML file... '{}' could not be written: {}.",
                                   options.output,
                                   empty ? "the report has nothing to show" : WhyNoPage(options.output)));
  }
  fmt::print("Wrote {}.\n", options.output);
}

void ExportAll(const CommonOptions& common, const std::string& path, const std::string& folder) {
  Context context(common, path, app::LeagueSession::Use::Looking);
  engine::Database& league = context.League();
  std::error_code error;
  std::filesystem::create_directories(common::SystemPath(folder), error);
  if (!std::filesystem::is_directory(common::SystemPath(folder), error))
    throw CommandError(fmt::format("The folder '{}' cannot be made.", folder));
  platform::RemoveTemporariesIn(folder);
  const reports::PageLook look = reports::ReadPageLook(league);
  const std::string footer = reports::StandingsFooter();
  reports::PageTexts texts = reports::StoredPageTexts(league);
  const auto marks = reports::MarkDroppedRaces(league, context.state.droppedRaces);
  const std::string caption = WithoutColon(reports::StandingsCaption(marks));
  auto write = [&](const reports::PageSubject& subject, const reports::PageTexts& pageTexts,
                   const std::string& file) {
    const std::string target = common::JoinPath(folder, file);
    const reports::PageResult result = reports::TryWritePage(league, context.Template(), context.state,
                                                             subject, pageTexts, look, footer, target);
    if (result == reports::PageResult::Failed)
      throw CommandError(fmt::format("Error creating HTML file... '{}' could not be written: {}.", target,
                                     WhyNoPage(target)));
    return result == reports::PageResult::Written;
  };

  std::vector<Link> reportLinks;
  for (const reports::ReportInfo& info : championship::ListReports(league, context.Template())) {
    // What is worked out is at hand; the others' rows are written as they come.
    std::optional<reports::ReportTable> table;
    if (championship::IsComputed(league, context.Template(), info.id)) {
      table = PageTable(context, info.id);
      if (!table) continue;
    }
    texts.reportName = info.name;
    texts.caption = WithoutColon(championship::ReportCaption(league, info.id, marks));
    const std::string file = FileNameFor(info.name) + ".htm";
    // A report with nothing to show, as Rookie Standings in most leagues, has no page.
    if (!write({reports::PageSubject::kReport, info.id, table ? &*table : nullptr}, texts, file)) continue;
    reportLinks.push_back({file, info.name, ""});
  }
  std::vector<Link> raceLinks;
  auto races = league.OpenRecordset("SELECT RaceID FROM Race");
  const auto progress = context.ui.StartProgress("Writing pages", static_cast<int>(races.RecordCount()));
  for (int done = 0; !races.AtEnd(); races.MoveNext()) {
    const std::int32_t id = races.At(0).ToLong();
    progress->SetValue(++done);
    const reports::PageTexts raceTexts = reports::RacePageTexts(league, id, common.decimal);
    const std::string file = fmt::format("event-{:02}-{}.htm", done, FileNameFor(raceTexts.reportName));
    if (!write({reports::PageSubject::kRace, id}, raceTexts, file)) continue;
    raceLinks.push_back({file, raceTexts.reportName, raceTexts.caption});
  }
  if (!reports::WritePageFile(common::JoinPath(folder, "index.htm"),
                              IndexPage(texts.heading, caption, reportLinks, raceLinks)))
    throw CommandError(fmt::format("'{}' could not be written.", common::JoinPath(folder, "index.htm")));
  fmt::print("Wrote {} report pages, {} race pages and index.htm into {}.\n", reportLinks.size(),
             raceLinks.size(), folder);
  if (const int old = CountOldPages(folder, raceLinks); old > 0) {
    fmt::print("{} older event-*.htm page{} there {} no longer linked.\n", old, old == 1 ? "" : "s",
               old == 1 ? "is" : "are");
  }
}

}  // namespace scorvane::cli
