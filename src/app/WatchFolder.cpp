#include "app/WatchFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>

#include "app/ImportFiles.h"
#include "common/Formats.h"
#include "common/Paths.h"
#include "common/SettingsStore.h"
#include "common/SilentInterface.h"
#include "platform/Platform.h"

namespace scorvane::app {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostLeagues = 200;  // that a folder is kept for; those that were chosen last
constexpr std::size_t kFields = 4;         // of a line: league, folder, switch, time

// A line of the setting has fields with tabs between them; a path may hold any character.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '%' || c == '\t' || c == '\n' || c == '\r') {
      escaped += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%' || i + 2 >= text.size()) {
      plain += text[i];
      continue;
    }
    const std::string_view code = text.substr(i + 1, 2);
    plain += code == "25" ? '%' : code == "09" ? '\t' : code == "0A" ? '\n' : '\r';
    i += 2;
  }
  return plain;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t to = std::min(text.find(separator, from), text.size());
    parts.push_back(text.substr(from, to - from));
    from = to + 1;
  }
  return parts;
}

std::vector<std::string> Lines(engine::Database& templateDb) {
  const std::string setting = common::GetSettingValue(templateDb, common::kWatchedFolders);
  std::vector<std::string> lines;
  if (setting == common::kMissingSetting) return lines;
  for (const std::string_view line : Split(setting, '\n'))
    if (Split(line, '\t').size() == kFields) lines.emplace_back(line);
  return lines;
}

bool IsOf(const std::string& line, const std::string& league) {
  return Split(line, '\t')[0] == Escaped(league);
}

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::int64_t InSeconds(std::int64_t fileTime) {
  const fs::file_time_type time{fs::file_time_type::duration(fileTime)};
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::file_clock::to_sys(time).time_since_epoch())
      .count();
}

}  // namespace

WatchChoice ReadWatchChoice(engine::Database& templateDb, const std::string& league) {
  WatchChoice choice;
  for (const std::string& line : Lines(templateDb)) {
    if (!IsOf(line, league)) continue;
    const auto fields = Split(line, '\t');
    choice.folder = Unescaped(fields[1]);
    choice.on = fields[2] == "1";
    choice.since = static_cast<std::int64_t>(engine::LeadingNumber(fields[3]));
  }
  return choice;
}

void StoreWatchChoice(engine::Database& templateDb, const std::string& league, WatchChoice choice) {
  choice.folder = common::TrimBlanks(choice.folder);
  if (!choice.folder.empty() && !common::SystemPath(choice.folder).is_absolute())
    choice.folder = common::JoinPath(platform::ApplicationFolder(), choice.folder);
  const WatchChoice before = ReadWatchChoice(templateDb, league);
  if (choice.folder == before.folder && choice.on == before.on) return;
  std::vector<std::string> lines = Lines(templateDb);
  std::erase_if(lines, [&](const std::string& line) { return IsOf(line, league); });
  lines.push_back(
      fmt::format("{}\t{}\t{}\t{}", Escaped(league), Escaped(choice.folder), choice.on ? 1 : 0, Now()));
  std::string setting;
  for (std::size_t i = lines.size() > kMostLeagues ? lines.size() - kMostLeagues : 0; i < lines.size(); ++i)
    setting += (setting.empty() ? "" : "\n") + lines[i];
  common::StoreSetting(templateDb, common::kWatchedFolders, setting);
}

std::optional<std::vector<FolderFile>> ListResultFiles(const std::string& folder, std::int16_t simType) {
  const auto isResult = [simType](const std::string& extension) {
    return simType <= common::kNascarRacing2 ? extension == "stn" : extension == "html" || extension == "htm";
  };
  std::vector<FolderFile> files;
  std::error_code error;
  fs::directory_iterator entry(common::SystemPath(folder), error);
  for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
    FolderFile file{common::PathText(entry->path()), 0, 0};
    // One that goes, or is taken away, while it is looked at is not there.
    std::error_code gone;
    if (!isResult(common::LowerCase(common::GetExtension(file.path))) || !entry->is_regular_file(gone))
      continue;
    file.size = entry->file_size(gone);
    if (!gone) file.modified = entry->last_write_time(gone).time_since_epoch().count();
    if (!gone) files.push_back(std::move(file));
  }
  if (error) return std::nullopt;
  std::sort(files.begin(), files.end(),
            [](const FolderFile& a, const FolderFile& b) { return NaturallyBefore(a.path, b.path); });
  return files;
}

void FolderLooks::Take(const std::vector<FolderFile>& found, std::int64_t since) {
  const bool first = std::exchange(first_, false);
  if (first) {
    for (const FolderFile& file : found)
      if (InSeconds(file.modified) < since) putOff_.insert(file);
  }
  ready_.clear();
  for (const FolderFile& file : found)
    if (file.size > 0 && files_.contains(file)) ready_.push_back(file);
  std::set<FolderFile> files(found.begin(), found.end());
  settled_ = !first && files == files_;
  files_ = std::move(files);
}

std::vector<std::string> FolderLooks::Ready() const {
  std::vector<std::string> paths;
  for (const FolderFile& file : ready_)
    if (!putOff_.contains(file)) paths.push_back(file.path);
  return paths;
}

void FolderLooks::PutOff() {
  putOff_.insert(ready_.begin(), ready_.end());
}

std::vector<std::string> NewResultFiles(LeagueSession& session, const std::vector<std::string>& paths) {
  if (paths.empty()) return {};
  engine::Database& league = session.League();
  common::ProcessState& state = session.State();
  // Nobody hears of a file that is only looked at.
  common::SilentInterface unheard;
  // The league's own tables for staged races are borrowed, and as they were afterwards.
  engine::UnitOfWork borrowed(league, engine::UnitOfWork::OnError::TakeBack,
                              engine::UnitOfWork::Begin::Reading);
  PrepareImport(league, session.Template(), state);
  std::vector<StagedFile> staged;
  for (const std::string& path : paths) {
    const StagedFiles one = StageFiles(league, state, unheard, {path}, {state.lapReportingMethod, false});
    staged.insert(staged.end(), one.files.begin(), one.files.end());
  }
  std::vector<std::string> fresh;
  const std::vector<Duplicate> there = FindDuplicates(league, state, staged);
  for (const StagedFile& file : staged) {
    const bool known = std::any_of(there.begin(), there.end(), [&](const Duplicate& duplicate) {
      return duplicate.file.raceId == file.raceId;
    });
    if (!known) fresh.push_back(file.path);
  }
  borrowed.TakeBack();
  return fresh;
}

}  // namespace scorvane::app
