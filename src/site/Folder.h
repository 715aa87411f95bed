// The folder that a site is written into. A list in it (the manifest) says which of its files are the site's:
// only those are ever replaced or removed. Each file is written beside its place and put there in one step,
// and only when its content differs, so that a full disk or a kill leaves every page whole, and the next run
// mends what is missing.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Platform.h"

namespace scorvane::site {

inline constexpr const char* kManifestName = ".scorvane-site.json";

class SiteFolder {
 public:
  // Makes the folder when it is not there, and keeps it to itself. Throws common::RuleError with a sentence
  // for the user when it cannot be made or written to, or another program is writing into it. `league` is the
  // file's name: files of another league's site do not keep their names.
  SiteFolder(std::string path, std::string league);
  SiteFolder(const SiteFolder&) = delete;
  SiteFolder& operator=(const SiteFolder&) = delete;

  // Whether everything was written with this fingerprint and is still there as it was.
  bool IsUpToDate(const std::string& fingerprint) const;

  // The name that the page with this number had in a part of the site ("drivers", 12: "12-jeff-gordon");
  // empty when it has had none.
  std::string KnownName(const std::string& part, std::int32_t id) const;

  // What is about to be written, as paths below the folder with "/". A file of somebody else's in such a
  // place is a common::RuleError that names it; then nothing has been written.
  void Begin(const std::vector<std::string>& paths);
  // Throws common::RuleError when the file cannot be written; what was there is then as it was.
  void Write(const std::string& path, std::string_view content);
  // When the content of a file of this run last changed, in seconds since 1970.
  std::int64_t ChangedAt(const std::string& path) const;
  // Removes what is the site's no longer, and says in the manifest what is there.
  void Finish(const std::string& fingerprint);

  void Now(std::int64_t seconds) { now_ = seconds; }
  std::size_t Written() const { return written_; }
  std::size_t Unchanged() const { return unchanged_; }
  std::size_t Removed() const { return removed_; }
  std::size_t Files() const { return files_.size(); }
  // When the first page was written, in seconds since 1970.
  std::int64_t Since() const { return since_; }

 private:
  struct File {
    std::uint64_t size = 0;
    std::int64_t time = 0;  // of its last change, as the system counts it
    std::string hash;       // empty: announced, and perhaps not written
    std::int64_t changed = 0;
    bool seen = false;  // in this run
  };

  std::string FullPath(const std::string& path) const;
  void ReadManifest();
  void WriteManifest(const std::string& fingerprint);
  bool IsAsWritten(const std::string& path, const File& file) const;
  void MakeFoldersFor(const std::string& path);
  void RemoveFile(const std::string& path);
  void Replace(const std::string& path, std::string_view content);

  const std::string path_;
  const std::string league_;
  std::unique_ptr<platform::FileLock> lock_;
  std::map<std::string, File> files_;
  std::map<std::string, std::string> names_;  // by "drivers/12"
  std::string fingerprint_;
  bool sameLeague_ = true;
  std::int64_t since_ = 0;
  std::int64_t now_ = 0;
  std::size_t written_ = 0;
  std::size_t unchanged_ = 0;
  std::size_t removed_ = 0;
  std::vector<std::string> folders_;  // that this run has looked at
};

// Whether a path may stand in a manifest: below the folder, in small letters, digits, "-" and ".".
bool IsSitePath(std::string_view path);

}  // namespace scorvane::site
