#include <fcntl.h>
#include <langinfo.h>
#include <locale.h>
#include <poll.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/Platform.h"
#include "platform/System.h"
#include "platform/SystemPath.h"

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMaximumLinks = 40;

// A file descriptor that closes itself.
class Handle {
 public:
  Handle(const fs::path& path, int flags) : handle_(::open(path.c_str(), flags | O_CLOEXEC)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (handle_ >= 0) ::close(handle_);
  }
  bool IsOpen() const { return handle_ >= 0; }
  int Get() const { return handle_; }
  int Release() { return std::exchange(handle_, -1); }

 private:
  int handle_;
};

bool FlushPath(const fs::path& path, int flags) {
  const Handle handle(path, flags);
  return handle.IsOpen() && ::fsync(handle.Get()) == 0;
}

[[noreturn]] void ThrowLast(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

// The file that a path means when its last part is a link, or a link to one; the target need not be there.
fs::path FollowLinks(fs::path path) {
  std::error_code error;
  for (int i = 0; i < kMaximumLinks && fs::is_symlink(path, error); ++i)
    path = path.parent_path() / fs::read_symlink(path);
  return path;
}

fs::path HomeFolder() {
  std::string home = Environment("HOME");
  if (home.empty()) {
    if (const passwd* user = ::getpwuid(::getuid()); user != nullptr) home = user->pw_dir;
  }
  return home;
}

}  // namespace

std::filesystem::path SystemPath(std::string_view path) {
  return {std::u8string(path.begin(), path.end())};
}

std::string PathText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

long ThisProcess() {
  return ::getpid();
}

bool IsRunning(long process) {
  return ::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

std::string UserDataFolder() {
  const fs::path data = Environment("XDG_DATA_HOME");
  return ((data.is_absolute() ? data : HomeFolder() / ".local" / "share") / "scorvane").string();
}

std::unique_ptr<FileLock> FileLock::TryLock(const std::string& path, Mode mode) {
  const int operation = (mode == Mode::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  for (;;) {
    Handle handle(path, O_RDONLY);
    if (!handle.IsOpen() || ::flock(handle.Get(), operation) != 0) return nullptr;
    // Another file may have taken the name between the opening and the lock: then that one is meant.
    struct stat held{};
    struct stat named{};
    if (::fstat(handle.Get(), &held) != 0 || ::stat(path.c_str(), &named) != 0) return nullptr;
    if (held.st_dev == named.st_dev && held.st_ino == named.st_ino)
      return std::unique_ptr<FileLock>(new FileLock(handle.Release()));
  }
}

FileLock::~FileLock() {
  ::close(static_cast<int>(handle_));
}

// The system's list of locks is read rather than the file asked: to close a handle of the file would drop the
// locks that this process has on it.
std::string LockHolder(const std::string& path) {
  struct stat file{};
  if (::stat(path.c_str(), &file) != 0) return {};
  std::ifstream locks("/proc/locks");
  std::string holder;
  // "1: POSIX  ADVISORY  WRITE 4711 fe:00:123456 1073741824 1073742335"
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number;
    std::string kind;
    std::string advice;
    std::string access;
    std::string place;
    long process = 0;
    if (!(words >> number >> kind >> advice >> access >> process >> place) || process <= 0) continue;
    const auto colon = place.rfind(':');
    if (colon == std::string::npos || place.substr(colon + 1) != std::to_string(file.st_ino)) continue;
    if (process == ::getpid() || (!holder.empty() && access != "WRITE")) continue;
    std::ifstream named("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    if (!std::getline(named, name)) continue;
    holder = name + " (process " + std::to_string(process) + ")";
  }
  return holder;
}

bool HasRoomBeside(const std::string& path) {
  const std::string probe = TemporaryBeside(path);
  const int handle = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (handle < 0) return errno != ENOSPC && errno != EDQUOT;
  constexpr std::array<char, 4096> kBlock{};
  errno = 0;
  const bool written =
      ::write(handle, kBlock.data(), kBlock.size()) == ssize_t{kBlock.size()} && ::fdatasync(handle) == 0;
  const bool full = !written && (errno == ENOSPC || errno == EDQUOT || errno == 0);
  ::close(handle);
  ::unlink(probe.c_str());
  return !full;
}

bool FlushFile(const std::string& path) {
  return FlushPath(path, O_RDONLY);
}

void ReplaceFile(const std::string& from, const std::string& to, Flush flush) {
  const fs::path target = FollowLinks(to);
  struct stat status{};
  if (::stat(target.c_str(), &status) == 0) {
    if (::chmod(from.c_str(), status.st_mode & 07777U) != 0) ThrowLast(from);
  }
  if (flush == Flush::Yes && !FlushFile(from)) ThrowLast(from);
  if (::rename(from.c_str(), target.c_str()) != 0) ThrowLast(target.string());
  if (flush == Flush::No) return;
  // The rename stands; a folder that cannot be flushed only risks that a power cut brings the old file back.
  const fs::path folder = target.parent_path();
  FlushPath(folder.empty() ? fs::path(".") : folder, O_RDONLY | O_DIRECTORY);
}

bool IsWritable(const std::string& path) {
  std::error_code error;
  return ::access(path.c_str(), fs::is_directory(path, error) ? W_OK | X_OK : W_OK) == 0;
}

char LocaleDecimalSeparator() {
  const locale_t locale = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
  if (locale == nullptr) return '.';
  const std::string separator = ::nl_langinfo_l(RADIXCHAR, locale);
  ::freelocale(locale);
  return separator.size() == 1 ? separator.front() : '.';
}

std::string ProgramFolder() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string InstalledFolder() {
  return (fs::path(ProgramFolder()).parent_path() / "share" / "scorvane").string();
}

std::vector<Drive> FixedDrives() {
  const std::string chosen = Environment("WINEPREFIX");
  const fs::path prefix = chosen.empty() ? HomeFolder() / ".wine" : fs::path(chosen);
  std::vector<Drive> drives;
  for (char letter = 'C'; letter <= 'Z'; ++letter) {
    const char name[] = {static_cast<char>(letter - 'A' + 'a'), ':', '\0'};
    std::error_code error;
    const fs::path folder = fs::canonical(prefix / "dosdevices" / name, error);
    if (!error && fs::is_directory(folder, error)) drives.push_back({letter, folder.string()});
  }
  return drives;
}

bool IsDiskFull(int systemError) {
  return systemError == ENOSPC;
}

std::FILE* OpenToRead(const std::string& path) {
  return std::fopen(path.c_str(), "rb");
}

std::vector<std::string> StartConsoleProgram(int argc, char** argv) {
  return {argv, argv + argc};
}

bool ErrorIsTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

bool InputIsTerminal() {
  return ::isatty(STDIN_FILENO) == 1;
}

ChildEnd RunChild(const std::string& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits, const std::function<bool(std::string_view)>& line) {
  int ends[2];
  if (::access(program.c_str(), X_OK) != 0 || ::pipe2(ends, O_CLOEXEC) != 0) return ChildEnd::NotStarted;
  std::vector<char*> words = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  const pid_t child = ::fork();
  if (child < 0) {
    ::close(ends[0]);
    ::close(ends[1]);
    return ChildEnd::NotStarted;
  }
  if (child == 0) {
    const auto seconds = static_cast<rlim_t>(limits.seconds);
    const rlimit time{seconds, seconds + 1};
    const auto bytes = static_cast<rlim_t>(limits.megabytes) << 20U;
    const rlimit memory{bytes, bytes};
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CPU, &time);
    ::setrlimit(RLIMIT_AS, &memory);
    ::setrlimit(RLIMIT_CORE, &none);
    const int silence = ::open("/dev/null", O_RDWR);
    if (silence < 0) ::_exit(127);
    ::dup2(silence, STDIN_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    ::dup2(silence, STDERR_FILENO);
    ::execv(program.c_str(), words.data());
    ::_exit(127);
  }
  ::close(ends[1]);

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limits.seconds);
  ChildEnd end = ChildEnd::Done;
  std::string rest;
  char buffer[65536];
  while (end == ChildEnd::Done) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waiting{ends[0], POLLIN, 0};
    if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
      end = ChildEnd::TimedOut;
      break;
    }
    const ssize_t size = ::read(ends[0], buffer, sizeof buffer);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
    rest.append(buffer, static_cast<std::size_t>(size));
    std::size_t from = 0;
    for (std::size_t to; (to = rest.find('\n', from)) != std::string::npos; from = to + 1) {
      if (line(std::string_view(rest).substr(from, to - from))) continue;
      end = ChildEnd::Failed;
      break;
    }
    rest.erase(0, from);
  }
  ::close(ends[0]);
  if (end != ChildEnd::Done) ::kill(child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (end != ChildEnd::Done) return end;
  if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGXCPU ? ChildEnd::TimedOut : ChildEnd::Crashed;
  return WEXITSTATUS(status) == 0 ? ChildEnd::Done : ChildEnd::Failed;
}

}  // namespace scorvane::platform
