#include "import/FileContent.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "common/Formats.h"
#include "common/Paths.h"
#include "platform/Platform.h"

namespace scorvane::import {
namespace {

constexpr const char* kTooLarge = "The file is far too large for a standings file.";

// A standings file has some thousand bytes, an exported page some ten thousand; nothing of this size is one.
constexpr std::uintmax_t kLargestFile = 16U << 20U;

std::string ReadToEnd(std::FILE* file) {
  std::string content;
  std::array<char, 16384> block;
  do {
    const std::size_t read = std::fread(block.data(), 1, block.size(), file);
    content.append(block.data(), read);
    if (content.size() > kLargestFile) throw FileFault(kTooLarge);
  } while (std::feof(file) == 0 && std::ferror(file) == 0);
  if (std::ferror(file) != 0)
    throw FileFault("The file cannot be read: " + std::generic_category().message(errno) + ".");
  if (content.empty()) throw FileFault("The file is empty.");
  return content;
}

}  // namespace

std::string ReadFileContent(const std::string& path) {
  if (path == common::kStandardInput) return ReadToEnd(stdin);
  std::error_code error;
  const auto status = std::filesystem::status(common::SystemPath(path), error);
  if (std::filesystem::is_directory(status)) throw FileFault("This is a folder, not a file.");
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    throw FileFault("This is no ordinary file.");

  errno = 0;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(platform::OpenToRead(path), &std::fclose);
  if (!file) throw FileFault("The file cannot be opened: " + std::generic_category().message(errno) + ".");
  const std::uintmax_t size = std::filesystem::file_size(common::SystemPath(path), error);
  if (!error && size > kLargestFile) throw FileFault(kTooLarge);
  return ReadToEnd(file.get());
}

std::string FileNameOfRace(std::string_view path) {
  std::string name = common::GetFileTitle(path);
  const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  auto characters = static_cast<std::size_t>(
      std::count_if(name.begin(), name.end(), [&](char c) { return !continues(c); }));
  std::size_t stem = common::GetFileTitle(path, true).size();
  for (; characters > kFileNameCharacters && stem > 1; --characters) {
    std::size_t last = stem - 1;
    while (last > 0 && continues(name[last])) --last;
    name.erase(last, stem - last);
    stem = last;
  }
  return name;
}

std::string FitStatistic(std::string text, std::size_t characters) {
  if (text.size() <= characters || text.empty() || text.front() < '0' || text.front() > '9') return text;
  const auto end = text.find_first_not_of("0123456789.,:");
  if (end == std::string::npos) return text;
  const std::string number = text.substr(0, end);
  const std::string unit(common::TrimBlanks(std::string_view(text).substr(end)));
  return number.size() + unit.size() <= characters ? number + unit : number;
}

}  // namespace scorvane::import
