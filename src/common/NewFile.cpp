#include "common/NewFile.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "common/Paths.h"

namespace scorvane::common {

namespace fs = std::filesystem;

namespace {
constexpr const char* kFull = "there is not enough space on the disk";
}  // namespace

NewFile::NewFile(std::string path, platform::Flush flush)
    : path_(std::move(path)), temporary_(platform::TemporaryBeside(path_)), flush_(flush) {}

NewFile::~NewFile() {
  if (done_) return;
  stream_.close();
  std::error_code error;
  fs::remove(SystemPath(temporary_), error);
}

bool NewFile::Write(std::string_view bytes) {
  if (!stream_.is_open()) stream_.open(SystemPath(temporary_), std::ios::binary | std::ios::trunc);
  stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return stream_.good();
}

bool NewFile::Finish() {
  if (stream_.is_open()) stream_.close();
  if (!stream_.good()) return false;
  try {
    platform::ReplaceFile(temporary_, path_, flush_);
    return done_ = true;
  } catch (const std::system_error& error) {
    full_ = error.code() == std::errc::no_space_on_device;
    return false;
  }
}

std::string NewFile::WhyNot() const {
  return full_ ? kFull : WhyNotWritten(path_);
}

std::string WhyNotWritten(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(SystemPath(path), error)) return "it is a folder";
  const std::string folder = GetFolder(path);
  if (!folder.empty() && !fs::is_directory(SystemPath(folder), error)) return "there is no such folder";
  return platform::HasRoomBeside(path) ? "the folder or the file may not be written to" : kFull;
}

std::string FolderNotMade(const std::string& path, std::error_code error) {
  const bool full = error == std::errc::no_space_on_device;
  return "The folder '" + path + "' cannot be made" + (full ? std::string(": ") + kFull : "") + ".";
}

}  // namespace scorvane::common
