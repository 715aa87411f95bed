// A folder of its own for a test, removed with all it holds when the test is over.
#pragma once

#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>

namespace scorvane::test {

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

  std::string File(const std::string& name) const { return (path_ / name).string(); }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace scorvane::test
