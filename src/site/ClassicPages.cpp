#include "site/ClassicPages.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "championship/Reports.h"
#include "common/NewFile.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "engine/Names.h"
#include "platform/Platform.h"
#include "reports/Export.h"
#include "reports/PageExport.h"
#include "reports/PageLook.h"

namespace scorvane::site {
namespace {

std::string WithoutColon(std::string caption) {
  caption.pop_back();
  return caption;
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

// These pages leave ">" as it is.
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

}  // namespace

std::optional<reports::ReportTable> PageTable(engine::Database& league, engine::Database& templateDb,
                                              const common::ProcessState& state, std::int32_t reportId) {
  auto table = championship::RunReport(league, templateDb, state, reportId);
  if (!table || table->rows.empty()) return std::nullopt;
  return championship::ForPage(std::move(*table));
}

std::string PageCaption(engine::Database& league, std::int32_t reportId, const reports::DroppedMarks& marks) {
  return WithoutColon(championship::ReportCaption(league, reportId, marks));
}

ClassicPages WriteClassicPages(engine::Database& league, engine::Database& templateDb,
                               const common::ProcessState& state, common::UserInterface& ui,
                               const std::string& folder) {
  std::error_code error;
  std::error_code ignored;
  std::filesystem::create_directories(common::SystemPath(folder), error);
  if (!std::filesystem::is_directory(common::SystemPath(folder), ignored))
    throw common::RuleError(common::FolderNotMade(folder, error));
  platform::RemoveTemporariesIn(folder);
  const reports::PageLook look = reports::ReadPageLook(league);
  const std::string footer = reports::StandingsFooter();
  reports::PageTexts texts = reports::StoredPageTexts(league);
  const auto marks = reports::MarkDroppedRaces(league, state.droppedRaces);
  const std::string caption = WithoutColon(reports::StandingsCaption(marks));
  auto write = [&](const reports::PageSubject& subject, const reports::PageTexts& pageTexts,
                   const std::string& file) {
    const std::string target = common::JoinPath(folder, file);
    const reports::PageResult result =
        reports::TryWritePage(league, templateDb, state, subject, pageTexts, look, footer, target);
    if (result == reports::PageResult::Failed)
      throw common::RuleError(fmt::format("Error creating HTML file... '{}' could not be written: {}.",
                                          target, reports::WhyNoPage(target)));
    return result == reports::PageResult::Written;
  };

  std::vector<Link> reportLinks;
  for (const reports::ReportInfo& info : championship::ListReports(league, templateDb)) {
    // What is worked out is at hand; the others' rows are written as they come.
    std::optional<reports::ReportTable> table;
    if (championship::IsComputed(league, templateDb, info.id)) {
      table = PageTable(league, templateDb, state, info.id);
      if (!table) continue;
    }
    texts.reportName = info.name;
    texts.caption = PageCaption(league, info.id, marks);
    const std::string file = FileNameFor(info.name) + ".htm";
    // A report with nothing to show, as Rookie Standings in most leagues, has no page.
    if (!write({reports::PageSubject::kReport, info.id, table ? &*table : nullptr}, texts, file)) continue;
    reportLinks.push_back({file, info.name, ""});
  }
  std::vector<Link> raceLinks;
  auto races = league.OpenRecordset("SELECT RaceID FROM Race");
  const auto progress = ui.StartProgress("Writing pages", static_cast<int>(races.RecordCount()));
  for (int done = 0; !races.AtEnd(); races.MoveNext()) {
    const std::int32_t id = races.At(0).ToLong();
    progress->SetValue(++done);
    const reports::PageTexts raceTexts = reports::RacePageTexts(league, id, state.decimalSeparator);
    const std::string file = fmt::format("event-{:02}-{}.htm", done, FileNameFor(raceTexts.reportName));
    if (!write({reports::PageSubject::kRace, id}, raceTexts, file)) continue;
    raceLinks.push_back({file, raceTexts.reportName, raceTexts.caption});
  }
  const std::string index = common::JoinPath(folder, "index.htm");
  if (!reports::WritePageFile(index, IndexPage(texts.heading, caption, reportLinks, raceLinks)))
    throw common::RuleError(fmt::format("'{}' could not be written: {}.", index, reports::WhyNoPage(index)));
  return {static_cast<int>(reportLinks.size()), static_cast<int>(raceLinks.size()),
          CountOldPages(folder, raceLinks)};
}

}  // namespace scorvane::site
