#include "reports/PageExport.h"

#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "common/Paths.h"
#include "common/SettingsStore.h"

namespace scorvane::reports {
namespace {

std::string TextSetting(engine::Database& league, int id) {
  std::string value = common::GetSettingValue(league, id);
  return value == common::kMissingSetting ? std::string() : value;
}

}  // namespace

PageTexts RacePageTexts(engine::Database& league, std::int32_t raceId, char decimal) {
  const auto race = league.OpenRecordset(fmt::format("SELECT * FROM Race WHERE RaceID={}", raceId));
  PageTexts texts;
  texts.reportName = race["Name"].ToText();
  texts.caption =
      fmt::format("{} miles - {} laps", race["Length"].ToText(decimal), race["Laps"].ToText(decimal));
  texts.heading = TextSetting(league, common::kPageHeading);
  return texts;
}

PageTexts StoredPageTexts(engine::Database& league) {
  return {TextSetting(league, common::kPageHeading), TextSetting(league, common::kReportName),
          TextSetting(league, common::kCaption)};
}

void SavePageSettings(engine::Database& league, const PageTexts& texts, const PageLook& look) {
  engine::UnitOfWork unit(league, engine::UnitOfWork::OnError::TakeBack);
  common::StoreSetting(league, common::kPageHeading, texts.heading);
  common::StoreSetting(league, common::kReportName, texts.reportName);
  common::StoreSetting(league, common::kCaption, texts.caption);
  SavePageLook(league, look);
  unit.Commit();
}

PageResult TryWritePage(engine::Database& league, engine::Database& templateDb,
                        const common::ProcessState& state, const PageSubject& subject, const PageTexts& texts,
                        const PageLook& look, const std::string& footer, const std::string& path) {
  CExport page(state);
  page.Database(&league);
  page.LGDatabase(&templateDb);
  page.ExportType(subject.kind);
  page.ReportID(subject.id);
  page.Table(subject.table);
  page.Title(texts.heading);
  page.Title2(texts.caption);
  page.ReportName(texts.reportName);
  page.Footer(footer);
  page.Look(look);
  if (page.HTML(path)) return PageResult::Written;
  return page.HadRows() ? PageResult::Failed : PageResult::NothingToShow;
}

bool WritePage(engine::Database& league, engine::Database& templateDb, const common::ProcessState& state,
               const PageSubject& subject, const PageTexts& texts, const PageLook& look,
               const std::string& footer, const std::string& path) {
  return TryWritePage(league, templateDb, state, subject, texts, look, footer, path) == PageResult::Written;
}

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

}  // namespace scorvane::reports
