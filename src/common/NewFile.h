// A file that takes its place when it is complete: written beside what is there, which it replaces in one
// step, and gone when it is not finished.
#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/Platform.h"

namespace scorvane::common {

class NewFile {
 public:
  explicit NewFile(std::string path, platform::Flush flush = platform::Flush::Yes);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // Where it is written meanwhile, for who writes it by other means.
  const std::string& Temporary() const { return temporary_; }
  // False when that fails.
  bool Write(std::string_view bytes);
  // Puts the file in its place; false when it cannot be, or was not written whole.
  bool Finish();
  // Why it failed, as the end of a sentence.
  std::string WhyNot() const;

 private:
  const std::string path_;
  const std::string temporary_;
  const platform::Flush flush_;
  std::ofstream stream_;
  bool done_ = false;
  bool full_ = false;  // the disk, when it was to take its place
};

// Why a file could not be written to a path, as the end of a sentence.
std::string WhyNotWritten(const std::string& path);

// A sentence for the user when a folder could not be made. `error` is what making it said.
std::string FolderNotMade(const std::string& path, std::error_code error);

}  // namespace scorvane::common
