// A folder of its own for a test, removed with all it holds when the test is over.
#pragma once

#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

#include "platform/SystemPath.h"

namespace scorvane::test {

// Of what users call their files, the oddest that the system lets them: on Windows no name has "<" or quotes.
#ifdef _WIN32
inline constexpr const char* kOddName = "é & 'x' %1";
#else
inline constexpr const char* kOddName = "é & <b> \"x\"";
#endif

class TempFolder {
 public:
  TempFolder() {
    std::random_device chance;
    for (int i = 0; i < 100; ++i) {
      path_ = std::filesystem::temp_directory_path() / ("scorvane-" + std::to_string(chance()));
      if (std::filesystem::create_directory(path_)) return;
    }
    throw std::runtime_error("no temporary folder");
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  // A path in it, as the program knows paths, and as the standard library does.
  std::string File(const std::string& name) const { return platform::PathText(At(name)); }
  std::filesystem::path At(const std::string& name) const {
    return (path_ / platform::SystemPath(name)).make_preferred();
  }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace scorvane::test
