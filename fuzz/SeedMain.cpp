// Runs a fuzz target over the files and folders that it is given, as an ordinary test.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) {
    std::fputs("there are no seeds\n", stderr);
    return 1;
  }
  for (const auto& path : files) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
      std::fprintf(stderr, "cannot read %s\n", path.c_str());
      return 1;
    }
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    // A buffer of just this size: a read beyond it is seen by the sanitizers.
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  std::printf("%zu seeds\n", files.size());
  return 0;
}
