#include "site/Folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>
#include <utility>

#include "common/NewFile.h"
#include "common/Paths.h"
#include "common/RuleError.h"
#include "site/Hash.h"

namespace scorvane::site {
namespace {

namespace fs = std::filesystem;
using common::RuleError;
using common::SystemPath;
using Json = nlohmann::json;

constexpr int kManifestVersion = 1;
constexpr std::size_t kMostManifestBytes = 64U << 20U;

std::string ReadAll(const std::string& path) {
  std::ifstream file(SystemPath(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// As the system counts it; 0 when there is no such file.
std::int64_t TimeOf(const fs::path& path) {
  std::error_code error;
  const auto time = fs::last_write_time(path, error);
  return error ? 0 : static_cast<std::int64_t>(time.time_since_epoch().count());
}

bool IsPlainFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(path, error));
}

}  // namespace

bool IsSitePath(std::string_view path) {
  const auto letter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '/';
  };
  return !path.empty() && path.front() != '/' && path.front() != '.' && path.back() != '/' &&
         std::all_of(path.begin(), path.end(), letter) && path.find("//") == std::string_view::npos &&
         path.find("/.") == std::string_view::npos;
}

SiteFolder::SiteFolder(std::string path, std::string league)
    : path_(std::move(path)), league_(std::move(league)) {
  std::error_code error;
  std::error_code ignored;
  fs::create_directories(SystemPath(path_), error);
  if (!fs::is_directory(SystemPath(path_), ignored)) throw RuleError(common::FolderNotMade(path_, error));
  if (!platform::IsWritable(path_))
    throw RuleError(fmt::format("The folder '{}' may not be written to.", path_));
  lock_ = platform::FileLock::TryLock(path_);
  if (lock_ == nullptr) {
    const std::string holder = platform::LockHolder(path_);
    throw RuleError(fmt::format("{} is writing into the folder '{}' at this moment.",
                                holder.empty() ? "Another program" : holder, path_));
  }
  ReadManifest();
}

std::string SiteFolder::FullPath(const std::string& path) const {
  return common::JoinPath(path_, path);
}

void SiteFolder::ReadManifest() {
  const std::string path = FullPath(kManifestName);
  std::error_code error;
  if (!fs::exists(SystemPath(path), error)) return;
  const auto size = fs::file_size(SystemPath(path), error);
  const Json json = error || size > kMostManifestBytes ? Json() : Json::parse(ReadAll(path), nullptr, false);
  try {
    if (json.at("version").get<int>() != kManifestVersion)
      throw RuleError(fmt::format("The site in '{}' was written by a newer version of the program.", path_));
    fingerprint_ = json.value("fingerprint", "");
    sameLeague_ = json.value("league", "") == league_;
    since_ = json.value("since", std::int64_t{0});
    for (const auto& [name, entry] : json.at("files").items()) {
      if (!IsSitePath(name)) continue;
      files_[name] = {entry.value("size", std::uint64_t{0}), entry.value("time", std::int64_t{0}),
                      entry.value("hash", ""), entry.value("changed", std::int64_t{0}), false};
      const std::size_t slash = name.rfind('/');
      const std::size_t number = name.find_first_not_of("0123456789", slash + 1);
      if (slash == std::string::npos || !name.ends_with(".html") || number == std::string::npos) continue;
      names_[name.substr(0, number)] = name.substr(slash + 1, name.size() - slash - 6);
    }
  } catch (const Json::exception&) {
    throw RuleError(fmt::format(
        "'{}' cannot be read: it says which files of the folder are the site's. Without it they count as "
        "somebody else's: remove it together with the old site, or choose another folder.",
        path));
  }
}

bool SiteFolder::IsAsWritten(const std::string& path, const File& file) const {
  const fs::path full = SystemPath(FullPath(path));
  std::error_code error;
  return !file.hash.empty() && fs::file_size(full, error) == file.size && !error &&
         TimeOf(full) == file.time && IsPlainFile(full);
}

bool SiteFolder::IsUpToDate(const std::string& fingerprint) const {
  return !fingerprint_.empty() && fingerprint == fingerprint_ && !files_.empty() &&
         std::all_of(files_.begin(), files_.end(),
                     [this](const auto& file) { return IsAsWritten(file.first, file.second); });
}

std::string SiteFolder::KnownName(const std::string& part, std::int32_t id) const {
  if (!sameLeague_) return {};
  const auto known = names_.find(fmt::format("{}/{}", part, id));
  return known == names_.end() ? std::string() : known->second;
}

void SiteFolder::Begin(const std::vector<std::string>& paths) {
  bool announce = false;
  for (const std::string& path : paths) {
    if (files_.contains(path)) continue;
    announce = true;
    std::error_code error;
    if (fs::exists(fs::symlink_status(SystemPath(FullPath(path)), error)))
      throw RuleError(fmt::format(
          "'{}' is there already and no part of the site. Move it away, or choose another folder.",
          FullPath(path)));
  }
  for (const std::string& path : paths) MakeFoldersFor(path);
  platform::RemoveTemporariesIn(path_);
  for (const std::string& folder : folders_) platform::RemoveTemporariesIn(FullPath(folder));
  if (since_ == 0) since_ = now_;
  for (const std::string& path : paths) files_[path].seen = true;
  // What is announced counts as the site's from here on, also when this run is stopped half way.
  if (announce || !sameLeague_) WriteManifest("");
}

void SiteFolder::MakeFoldersFor(const std::string& path) {
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (std::find(folders_.begin(), folders_.end(), folder) != folders_.end()) continue;
    std::error_code error;
    std::error_code ignored;
    const fs::path full = SystemPath(FullPath(folder));
    fs::create_directory(full, error);
    // A link would lead out of the folder.
    if (!fs::is_directory(fs::symlink_status(full, ignored)))
      throw RuleError(common::FolderNotMade(FullPath(folder), error));
    folders_.push_back(folder);
  }
}

void SiteFolder::Replace(const std::string& path, std::string_view content) {
  const std::string target = FullPath(path);
  // A page can be written again: nobody waits for the disk.
  common::NewFile file(target, platform::Flush::No);
  if (!file.Write(content) || !file.Finish())
    throw RuleError(fmt::format("'{}' could not be written: {}.", target, file.WhyNot()));
}

void SiteFolder::Write(const std::string& path, std::string_view content) {
  const auto place = files_.find(path);
  if (place == files_.end() || !place->second.seen)
    throw RuleError(fmt::format("'{}' was not announced as a part of the site.", path));
  File& file = place->second;
  std::string hash = HashOf(content);
  if (hash == file.hash && content.size() == file.size && IsAsWritten(path, file)) {
    ++unchanged_;
    return;
  }
  const fs::path full = SystemPath(FullPath(path));
  const bool same = IsPlainFile(full) && ReadAll(FullPath(path)) == content;
  if (same) {
    ++unchanged_;
  } else {
    std::error_code error;
    // A link in a page's place goes: what it leads to is not the site's.
    if (fs::is_symlink(fs::symlink_status(full, error))) fs::remove(full, error);
    Replace(path, content);
    ++written_;
  }
  if (hash != file.hash || file.changed == 0) file.changed = now_;
  file = {content.size(), TimeOf(full), std::move(hash), file.changed, true};
}

std::int64_t SiteFolder::ChangedAt(const std::string& path) const {
  const auto file = files_.find(path);
  return file == files_.end() ? now_ : file->second.changed;
}

void SiteFolder::RemoveFile(const std::string& path) {
  std::error_code error;
  // Below a link there are no files of ours.
  for (std::size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1))
    if (!fs::is_directory(fs::symlink_status(SystemPath(FullPath(path.substr(0, slash))), error))) return;
  if (!fs::is_directory(fs::symlink_status(SystemPath(FullPath(path)), error)) &&
      fs::remove(SystemPath(FullPath(path)), error))
    ++removed_;
  if (error) throw RuleError(fmt::format("'{}' could not be removed: {}.", FullPath(path), error.message()));
}

void SiteFolder::Finish(const std::string& fingerprint) {
  std::set<std::string> folders;
  for (auto file = files_.begin(); file != files_.end();) {
    if (file->second.seen) {
      ++file;
      continue;
    }
    RemoveFile(file->first);
    for (std::size_t slash = file->first.rfind('/'); slash != std::string::npos && slash > 0;
         slash = file->first.rfind('/', slash - 1))
      folders.insert(file->first.substr(0, slash));
    file = files_.erase(file);
  }
  // The deepest first; a folder in which something is left stays.
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    std::error_code error;
    if (fs::is_directory(fs::symlink_status(SystemPath(FullPath(*folder)), error)))
      fs::remove(SystemPath(FullPath(*folder)), error);
  }
  WriteManifest(fingerprint);
}

void SiteFolder::WriteManifest(const std::string& fingerprint) {
  Json files = Json::object();
  for (const auto& [name, file] : files_) {
    files[name] = {{"size", file.size}, {"time", file.time}, {"hash", file.hash}, {"changed", file.changed}};
  }
  const Json json = {{"format", "scorvane-site-manifest"},
                     {"version", kManifestVersion},
                     {"league", league_},
                     {"since", since_},
                     {"fingerprint", fingerprint},
                     {"files", std::move(files)}};
  Replace(kManifestName, json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
  fingerprint_ = fingerprint;
}

}  // namespace scorvane::site
