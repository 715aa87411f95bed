// Loaded before a program's libraries (LD_PRELOAD), this counts the calls that change files below a folder
// and makes one of them fail, or kills the program there. What it is told stands in the environment:
//
//   SCORVANE_FAULT_FOLDER  the folder
//   SCORVANE_FAULT_AT      which call, from 1; 0 only counts
//   SCORVANE_FAULT_HOW     once, on (that one and all behind it), kill (before it), torn (a write: half of it
//   is
//                          written, then the program is killed)
//   SCORVANE_FAULT_ERROR   ENOSPC or EIO. A full disk lets through what needs no room: removing, cutting
//   short,
//                          opening a file that is there, and writing over what a file has already.
//   SCORVANE_FAULT_LOG     a file that gets a line for each call: its number, name, whether it needs room,
//   path
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

enum class How { Once, On, Kill, Torn };

constexpr std::size_t kMostFiles = 1024;

struct Faults {
  std::string folder;
  long at = 0;
  How how = How::Once;
  int error = ENOSPC;
  int log = -1;
  long count = 0;
  std::array<std::string, kMostFiles> paths;  // of the open files that are watched, by their numbers
};

Faults* faults = nullptr;  // null: nothing is watched

std::string Setting(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

__attribute__((constructor)) void Begin() {
  if (Setting("SCORVANE_FAULT_FOLDER").empty()) return;
  auto* made = new Faults;
  made->folder = Setting("SCORVANE_FAULT_FOLDER");
  made->at = std::atol(Setting("SCORVANE_FAULT_AT").c_str());
  const std::string how = Setting("SCORVANE_FAULT_HOW");
  made->how = how == "on" ? How::On : how == "kill" ? How::Kill : how == "torn" ? How::Torn : How::Once;
  made->error = Setting("SCORVANE_FAULT_ERROR") == "EIO" ? EIO : ENOSPC;
  if (const std::string log = Setting("SCORVANE_FAULT_LOG"); !log.empty())
    made->log = static_cast<int>(
        ::syscall(SYS_openat, AT_FDCWD, log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  ::unsetenv("LD_PRELOAD");  // the programs that this one starts count for themselves
  faults = made;
}

template <typename Call>
Call* Next(const char* name) {
  return reinterpret_cast<Call*>(::dlsym(RTLD_NEXT, name));
}

// The path in full; empty when it is not below the folder.
std::string Watched(const char* path) {
  if (faults == nullptr || path == nullptr) return {};
  std::string full(path);
  if (full.empty() || full[0] != '/') {
    std::array<char, PATH_MAX> here{};
    if (::getcwd(here.data(), here.size()) == nullptr) return {};
    full = std::string(here.data()) + "/" + full;
  }
  const std::string& folder = faults->folder;
  const bool below = full.compare(0, folder.size(), folder) == 0 &&
                     (full.size() == folder.size() || full[folder.size()] == '/');
  return below ? full : std::string();
}

const std::string* WatchedFile(int file) {
  if (faults == nullptr || file < 0 || static_cast<std::size_t>(file) >= kMostFiles) return nullptr;
  const std::string& path = faults->paths[static_cast<std::size_t>(file)];
  return path.empty() ? nullptr : &path;
}

[[noreturn]] void Die() {
  ::kill(::getpid(), SIGKILL);
  for (;;) ::pause();
}

bool Exists(const char* path) {
  struct stat status{};
  return ::stat(path, &status) == 0;
}

// Counts a call, and tells whether it must fail: then errno is set. A torn write is told by `torn`.
bool MustFail(const char* call, const std::string& path, bool needsRoom, bool* torn = nullptr) {
  const int before = errno;
  const long number = ++faults->count;
  if (faults->log >= 0) {
    const std::string line =
        std::to_string(number) + " " + call + (needsRoom ? " room " : " none ") + path + "\n";
    ::syscall(SYS_write, faults->log, line.data(), line.size());
  }
  errno = before;
  if (faults->at == 0 || number < faults->at) return false;
  switch (faults->how) {
    case How::Kill:
      Die();
    case How::Torn:
      if (torn == nullptr) Die();
      *torn = true;
      return false;
    case How::Once:
      if (number != faults->at) return false;
      break;
    case How::On:
      break;
  }
  if (faults->error == ENOSPC && !needsRoom) return false;
  errno = faults->error;
  return true;
}

bool Grows(int file, off64_t end) {
  struct stat64 status{};
  return ::fstat64(file, &status) != 0 || end > status.st_size;
}

// Writing behind the place where the file stands; with O_APPEND that is its end.
bool GrowsFromHere(int file, std::size_t size) {
  const off64_t here =
      (::fcntl(file, F_GETFL) & O_APPEND) != 0 ? ::lseek64(file, 0, SEEK_END) : ::lseek64(file, 0, SEEK_CUR);
  return Grows(file, here + static_cast<off64_t>(size));
}

void Remember(int file, const std::string& path) {
  if (file >= 0 && static_cast<std::size_t>(file) < kMostFiles && faults != nullptr)
    faults->paths[static_cast<std::size_t>(file)] = path;
}

template <typename Open>
int OpenWatched(const char* call, const char* path, int flags, Open open) {
  const std::string full = Watched(path);
  const bool changes = (flags & (O_CREAT | O_TRUNC)) != 0 || (flags & O_ACCMODE) != O_RDONLY;
  if (!full.empty() && changes && MustFail(call, full, (flags & O_CREAT) != 0 && !Exists(path))) return -1;
  const int file = open();
  if (file >= 0) Remember(file, full);
  return file;
}

int FlagsOf(const char* mode) {
  const bool plus = std::strchr(mode, '+') != nullptr;
  if (mode[0] == 'w') return O_CREAT | O_TRUNC | (plus ? O_RDWR : O_WRONLY);
  if (mode[0] == 'a') return O_CREAT | O_APPEND | (plus ? O_RDWR : O_WRONLY);
  return plus ? O_RDWR : O_RDONLY;
}

FILE* OpenStream(const char* name, const char* path, const char* mode) {
  auto* next = Next<FILE*(const char*, const char*)>(name);
  FILE* stream = nullptr;
  OpenWatched(name, path, FlagsOf(mode), [&] {
    stream = next(path, mode);
    return stream == nullptr ? -1 : ::fileno(stream);
  });
  return stream;
}

// `write(size)` writes so many of the bytes; half of them when the program dies over it.
template <typename Write>
ssize_t WriteWatched(const char* call, int file, std::size_t size, bool grows, Write write) {
  const std::string* path = WatchedFile(file);
  if (path == nullptr) return write(size);
  bool torn = false;
  if (MustFail(call, *path, grows, &torn)) return -1;
  if (!torn) return write(size);
  write(size / 2);
  Die();
}

bool FileMustFail(const char* call, int file, bool needsRoom) {
  const std::string* path = WatchedFile(file);
  return path != nullptr && MustFail(call, *path, needsRoom);
}

bool PathMustFail(const char* call, const char* path, bool needsRoom) {
  const std::string full = Watched(path);
  return !full.empty() && MustFail(call, full, needsRoom);
}

}  // namespace

extern "C" {

#define OPEN_CALL(name)                                                                             \
  int name(const char* path, int flags, ...) {                                                      \
    va_list rest;                                                                                   \
    va_start(rest, flags);                                                                          \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;            \
    va_end(rest);                                                                                   \
    return OpenWatched(#name, path, flags,                                                          \
                       [&] { return Next<int(const char*, int, ...)>(#name)(path, flags, mode); }); \
  }
OPEN_CALL(open)
OPEN_CALL(open64)
#undef OPEN_CALL

// Paths below another folder than the current one are not known here; the programs name them in full.
#define OPENAT_CALL(name)                                                                \
  int name(int folder, const char* path, int flags, ...) {                               \
    va_list rest;                                                                        \
    va_start(rest, flags);                                                               \
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0; \
    va_end(rest);                                                                        \
    return OpenWatched(#name, path, flags, [&] {                                         \
      return Next<int(int, const char*, int, ...)>(#name)(folder, path, flags, mode);    \
    });                                                                                  \
  }
OPENAT_CALL(openat)
OPENAT_CALL(openat64)
#undef OPENAT_CALL

// What a library calls that was built with checks.
int __open_2(const char* path, int flags) {
  return open(path, flags);
}
int __open64_2(const char* path, int flags) {
  return open64(path, flags);
}

int creat(const char* path, mode_t mode) {
  return open(path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}
int creat64(const char* path, mode_t mode) {
  return open64(path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

FILE* fopen(const char* path, const char* mode) {
  return OpenStream("fopen", path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
  return OpenStream("fopen64", path, mode);
}

int close(int file) {
  if (WatchedFile(file) != nullptr) Remember(file, {});
  return Next<int(int)>("close")(file);
}

ssize_t write(int file, const void* bytes, size_t size) {
  return WriteWatched(
      "write", file, size, WatchedFile(file) != nullptr && GrowsFromHere(file, size),
      [&](std::size_t part) { return Next<ssize_t(int, const void*, size_t)>("write")(file, bytes, part); });
}

ssize_t writev(int file, const struct iovec* parts, int count) {
  std::size_t size = 0;
  for (int i = 0; i < count; ++i) size += parts[i].iov_len;
  return WriteWatched(
      "writev", file, size, WatchedFile(file) != nullptr && GrowsFromHere(file, size), [&](std::size_t part) {
        // Of a torn one the first piece is written.
        return Next<ssize_t(int, const struct iovec*, int)>("writev")(file, parts, part == size ? count : 1);
      });
}

#define PWRITE_CALL(name, offset_type)                                                                  \
  ssize_t name(int file, const void* bytes, size_t size, offset_type place) {                           \
    const bool grows = WatchedFile(file) != nullptr && Grows(file, place + static_cast<off64_t>(size)); \
    return WriteWatched(#name, file, size, grows, [&](std::size_t part) {                               \
      return Next<ssize_t(int, const void*, size_t, offset_type)>(#name)(file, bytes, part, place);     \
    });                                                                                                 \
  }
PWRITE_CALL(pwrite, off_t)
PWRITE_CALL(pwrite64, off64_t)
#undef PWRITE_CALL

ssize_t sendfile(int to, int from, off_t* place, size_t count) {
  return WriteWatched("sendfile", to, count, true, [&](std::size_t part) {
    return Next<ssize_t(int, int, off_t*, size_t)>("sendfile")(to, from, place, part);
  });
}

ssize_t copy_file_range(int from, off64_t* fromPlace, int to, off64_t* toPlace, size_t count,
                        unsigned int flags) {
  return WriteWatched("copy_file_range", to, count, true, [&](std::size_t part) {
    return Next<ssize_t(int, off64_t*, int, off64_t*, size_t, unsigned int)>("copy_file_range")(
        from, fromPlace, to, toPlace, part, flags);
  });
}

// A disk may find out that it is full only when it must keep what it took.
int fsync(int file) {
  if (FileMustFail("fsync", file, true)) return -1;
  return Next<int(int)>("fsync")(file);
}
int fdatasync(int file) {
  if (FileMustFail("fdatasync", file, true)) return -1;
  return Next<int(int)>("fdatasync")(file);
}

int ftruncate(int file, off_t size) {
  if (FileMustFail("ftruncate", file, WatchedFile(file) != nullptr && Grows(file, size))) return -1;
  return Next<int(int, off_t)>("ftruncate")(file, size);
}
int ftruncate64(int file, off64_t size) {
  if (FileMustFail("ftruncate64", file, WatchedFile(file) != nullptr && Grows(file, size))) return -1;
  return Next<int(int, off64_t)>("ftruncate64")(file, size);
}

int rename(const char* from, const char* to) {
  if (PathMustFail("rename", to, true)) return -1;
  return Next<int(const char*, const char*)>("rename")(from, to);
}

int unlink(const char* path) {
  if (PathMustFail("unlink", path, false)) return -1;
  return Next<int(const char*)>("unlink")(path);
}
int remove(const char* path) {
  if (PathMustFail("remove", path, false)) return -1;
  return Next<int(const char*)>("remove")(path);
}
int rmdir(const char* path) {
  if (PathMustFail("rmdir", path, false)) return -1;
  return Next<int(const char*)>("rmdir")(path);
}

int link(const char* from, const char* to) {
  if (PathMustFail("link", to, true)) return -1;
  return Next<int(const char*, const char*)>("link")(from, to);
}
int symlink(const char* from, const char* to) {
  if (PathMustFail("symlink", to, true)) return -1;
  return Next<int(const char*, const char*)>("symlink")(from, to);
}

int mkdir(const char* path, mode_t mode) {
  if (PathMustFail("mkdir", path, true)) return -1;
  return Next<int(const char*, mode_t)>("mkdir")(path, mode);
}

int chmod(const char* path, mode_t mode) {
  if (PathMustFail("chmod", path, false)) return -1;
  return Next<int(const char*, mode_t)>("chmod")(path, mode);
}

}  // extern "C"
