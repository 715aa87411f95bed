// A file that takes its place when it is complete, and is gone otherwise.
#pragma once

#include <string>

namespace scorvane::sheets {

class NewFile {
 public:
  // Throws common::RuleError where no file can be.
  explicit NewFile(const std::string& path);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // Where it is written meanwhile.
  const std::string& Name() const { return temporary_; }
  // Throws common::RuleError: it could not be written, and why.
  [[noreturn]] void Refused() const;
  // Puts it in its place. Throws as Refused does.
  void Finish();

 private:
  const std::string path_;
  std::string temporary_;
  bool done_ = false;
};

}  // namespace scorvane::sheets
