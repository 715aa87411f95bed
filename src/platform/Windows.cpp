// Windows: files, locks and folders. Every call is a wide one, so that names in any script are found.
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/Platform.h"
#include "platform/System.h"
#include "platform/SystemPath.h"
#include "platform/WindowsText.h"

// The system's header last, and without its macros that would rename our functions.
#include <windows.h>
#undef ReplaceFile

#include <restartmanager.h>
#include <shlobj.h>

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

// Locks of this system keep others from the bytes themselves: ours lies where no file has any.
constexpr DWORD kLockPlaceHigh = 0x40000000;
constexpr const wchar_t* kFolderLockName = L".scorvane-folder.lock";

// A virus scanner or an indexer opens what was just written, for some milliseconds.
constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kPause{20};

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// From this version of the system on a file that is open can be replaced, and the old one lives on for those
// who have it: SDKs of mingw do not know the names yet.
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
struct RenameInfoEx {
  DWORD flags;
  HANDLE folder;
  DWORD nameBytes;
  wchar_t name[1];
};
constexpr DWORD kReplaceIfExists = 1;
constexpr DWORD kPosixSemantics = 2;

// A handle that closes itself.
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(const fs::path& path, DWORD access, DWORD flags = 0, DWORD share = kShareAll)
      : handle_(::CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (IsOpen()) ::CloseHandle(handle_);
  }
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }
  HANDLE Get() const { return handle_; }
  HANDLE Release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

 private:
  HANDLE handle_;
};

// The system's number as the one that every system has, so that a user reads the same words everywhere.
std::error_code ErrorOf(DWORD number) {
  switch (number) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
      return make_error_code(std::errc::no_such_file_or_directory);
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
      return make_error_code(std::errc::permission_denied);
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
      return make_error_code(std::errc::device_or_resource_busy);
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return make_error_code(std::errc::no_space_on_device);
    case ERROR_FILENAME_EXCED_RANGE:
      return make_error_code(std::errc::filename_too_long);
    case ERROR_INVALID_NAME:
      return make_error_code(std::errc::invalid_argument);
    default:
      return make_error_code(std::errc::io_error);
  }
}

[[noreturn]] void Throw(DWORD number, const fs::path& path) {
  throw std::system_error(ErrorOf(number), PathText(path));
}

struct FileId {
  DWORD volume = 0;
  DWORD high = 0;
  DWORD low = 0;
  bool operator==(const FileId&) const = default;
};

// Which file a handle has open; false when the system does not say.
bool Identify(HANDLE handle, FileId& id) {
  BY_HANDLE_FILE_INFORMATION information{};
  if (::GetFileInformationByHandle(handle, &information) == 0) return false;
  id = {information.dwVolumeSerialNumber, information.nFileIndexHigh, information.nFileIndexLow};
  return true;
}

// The locks that this process holds. Older systems do not replace a file that anybody has open, the holder of
// its lock included, so a replacement must be able to let go of it.
struct Held {
  HANDLE handle;
  FileId file;
};
struct HeldLocks {
  std::mutex mutex;
  std::vector<Held*> locks;
};
HeldLocks& TheHeldLocks() {
  static HeldLocks held;
  return held;
}

void LetGoOfLocksOn(const fs::path& path) {
  FileId id;
  if (const Handle handle(path, 0); !handle.IsOpen() || !Identify(handle.Get(), id)) return;
  HeldLocks& held = TheHeldLocks();
  const std::lock_guard guard(held.mutex);
  for (Held* lock : held.locks)
    if (lock->file == id && lock->handle != INVALID_HANDLE_VALUE)
      ::CloseHandle(std::exchange(lock->handle, INVALID_HANDLE_VALUE));
}

// A folder has no bytes to lock: whoever made the file in it holds it, and with him it goes.
HANDLE LockFolder(const fs::path& folder) {
  return ::CreateFileW((folder / kFolderLockName).c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

// Where a link points; any other path as it is.
fs::path FollowLinks(const fs::path& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return path;
  const Handle handle(path, 0);
  std::array<wchar_t, 32768> name;
  const DWORD size =
      ::GetFinalPathNameByHandleW(handle.Get(), name.data(), static_cast<DWORD>(name.size()), 0);
  return size == 0 || size >= name.size() ? path : fs::path(std::wstring(name.data(), size));
}

// Gives `from` the attributes and the access rights that `to` has.
void CopyPermissions(const fs::path& from, const fs::path& to) {
  const DWORD attributes = ::GetFileAttributesW(to.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return;
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) Throw(ERROR_ACCESS_DENIED, to);
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  if ((attributes & kKept) != 0) ::SetFileAttributesW(from.c_str(), attributes & kKept);
  DWORD size = 0;
  ::GetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<std::byte> rights(size);
  // A disk without rights has none to keep.
  if (size > 0 && ::GetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, rights.data(), size, &size) != 0)
    ::SetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, rights.data());
}

// The new way; false where the system or the disk does not know it, or somebody stands against it.
bool ReplaceOpenFile(const fs::path& from, const fs::path& to, Flush flush) {
  const Handle handle(from, GENERIC_WRITE | DELETE | SYNCHRONIZE);
  if (!handle.IsOpen()) return false;
  std::error_code error;
  const std::wstring name = fs::absolute(to, error).wstring();
  if (error) return false;
  const std::size_t bytes = name.size() * sizeof(wchar_t);
  std::vector<std::byte> room(sizeof(RenameInfoEx) + bytes);
  RenameInfoEx information{kReplaceIfExists | kPosixSemantics, nullptr, static_cast<DWORD>(bytes), {}};
  std::memcpy(room.data(), &information, sizeof information);
  std::memcpy(room.data() + offsetof(RenameInfoEx, name), name.data(), bytes);
  if (::SetFileInformationByHandle(handle.Get(), kRenameInfoEx, room.data(),
                                   static_cast<DWORD>(room.size())) == 0)
    return false;
  if (flush == Flush::Yes) ::FlushFileBuffers(handle.Get());
  return true;
}

bool IsFolder(const fs::path& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

std::wstring Wide(std::string_view text) {
  const int size = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(std::max(size, 0)), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
  return wide;
}

std::string Narrow(std::wstring_view text) {
  const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                         nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(std::max(size, 0)), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(), size, nullptr,
                        nullptr);
  return narrow;
}

fs::path SystemPath(std::string_view path) {
  return Wide(path);
}

std::string PathText(const fs::path& path) {
  return Narrow(path.native());
}

std::string Environment(const char* name) {
  const std::wstring wide = Wide(name);
  std::wstring value(::GetEnvironmentVariableW(wide.c_str(), nullptr, 0), L'\0');
  if (value.empty()) return {};
  value.resize(::GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size())));
  return Narrow(value);
}

long ThisProcess() {
  return static_cast<long>(::GetCurrentProcessId());
}

bool IsRunning(long process) {
  const Handle handle(
      ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(process)));
  if (!handle.IsOpen()) return ::GetLastError() == ERROR_ACCESS_DENIED;
  return ::WaitForSingleObject(handle.Get(), 0) == WAIT_TIMEOUT;
}

std::unique_ptr<FileLock> FileLock::TryLock(const std::string& path, Mode mode) {
  const fs::path name = SystemPath(path.empty() ? "." : path);
  auto held = std::make_unique<Held>();
  if (IsFolder(name)) {
    held->handle = LockFolder(name);
    if (held->handle == INVALID_HANDLE_VALUE) return nullptr;
  } else {
    for (;;) {
      Handle handle(name, GENERIC_READ);
      OVERLAPPED place{};
      place.OffsetHigh = kLockPlaceHigh;
      const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (mode == Mode::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0);
      if (!handle.IsOpen() || ::LockFileEx(handle.Get(), flags, 0, 1, 0, &place) == 0) return nullptr;
      // Another file may have taken the name between the opening and the lock: then that one is meant.
      const Handle named(name, 0);
      FileId id;
      if (!named.IsOpen() || !Identify(handle.Get(), held->file) || !Identify(named.Get(), id))
        return nullptr;
      if (id != held->file) continue;
      held->handle = handle.Release();
      break;
    }
  }
  HeldLocks& all = TheHeldLocks();
  const std::lock_guard guard(all.mutex);
  all.locks.push_back(held.get());
  return std::unique_ptr<FileLock>(new FileLock(reinterpret_cast<std::intptr_t>(held.release())));
}

FileLock::~FileLock() {
  const std::unique_ptr<Held> held(reinterpret_cast<Held*>(handle_));
  HeldLocks& all = TheHeldLocks();
  const std::lock_guard guard(all.mutex);
  std::erase(all.locks, held.get());
  if (held->handle != INVALID_HANDLE_VALUE) ::CloseHandle(held->handle);
}

std::string LockHolder(const std::string& path) {
  DWORD session = 0;
  wchar_t key[CCH_RM_SESSION_KEY + 1] = {};
  if (::RmStartSession(&session, 0, key) != ERROR_SUCCESS) return {};
  std::error_code error;
  const std::wstring name = fs::absolute(SystemPath(path), error).wstring();
  const wchar_t* const names[] = {name.c_str()};
  std::array<RM_PROCESS_INFO, 8> programs;
  UINT known = static_cast<UINT>(programs.size());
  UINT all = 0;
  DWORD reasons = 0;
  std::string holder;
  if (::RmRegisterResources(session, 1, const_cast<const wchar_t**>(names), 0, nullptr, 0, nullptr) ==
          ERROR_SUCCESS &&
      ::RmGetList(session, &all, &known, programs.data(), &reasons) == ERROR_SUCCESS) {
    for (UINT i = 0; i < std::min<UINT>(known, static_cast<UINT>(programs.size())); ++i) {
      const DWORD process = programs[i].Process.dwProcessId;
      if (process == ::GetCurrentProcessId()) continue;
      holder = Narrow(programs[i].strAppName) + " (process " + std::to_string(process) + ")";
    }
  }
  ::RmEndSession(session);
  return holder;
}

bool HasRoomBeside(const std::string& path) {
  const auto isFull = [](DWORD error) { return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL; };
  const fs::path probe = SystemPath(TemporaryBeside(path));
  const HANDLE handle = ::CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return !isFull(::GetLastError());
  constexpr std::array<char, 4096> kBlock{};
  DWORD written = 0;
  const bool done =
      ::WriteFile(handle, kBlock.data(), static_cast<DWORD>(kBlock.size()), &written, nullptr) != 0 &&
      ::FlushFileBuffers(handle) != 0;
  const DWORD error = ::GetLastError();
  ::CloseHandle(handle);
  return done || !isFull(error);
}

bool FlushFile(const std::string& path) {
  const Handle handle(SystemPath(path), GENERIC_WRITE);
  return handle.IsOpen() && ::FlushFileBuffers(handle.Get()) != 0;
}

// The system's own call for this purpose takes two steps: a kill between them would leave a league without
// its name.
void ReplaceFile(const std::string& from, const std::string& to, Flush flush) {
  const fs::path source = SystemPath(from);
  const fs::path target = FollowLinks(SystemPath(to));
  CopyPermissions(source, target);
  if (flush == Flush::Yes && !FlushFile(from)) Throw(::GetLastError(), source);
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (flush == Flush::Yes ? MOVEFILE_WRITE_THROUGH : 0);
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    if (ReplaceOpenFile(source, target, flush)) return;
    LetGoOfLocksOn(target);
    if (::MoveFileExW(source.c_str(), target.c_str(), flags) != 0) return;
    const DWORD number = ::GetLastError();
    const bool held = number == ERROR_SHARING_VIOLATION || number == ERROR_ACCESS_DENIED;
    if (!held || std::chrono::steady_clock::now() >= deadline) Throw(number, target);
    std::this_thread::sleep_for(kPause);
  }
}

bool IsWritable(const std::string& path) {
  const fs::path name = SystemPath(path.empty() ? "." : path);
  // Asking for the right is what tells; nothing is written.
  return Handle(name, IsFolder(name) ? FILE_ADD_FILE : FILE_WRITE_DATA).IsOpen();
}

char LocaleDecimalSeparator() {
  wchar_t separator[8] = {};
  const int size = ::GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator, 8);
  return size == 2 && separator[0] < 128 ? static_cast<char>(separator[0]) : '.';
}

std::string ProgramFolder() {
  std::array<wchar_t, 32768> name;
  const DWORD size = ::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  return PathText(fs::path(std::wstring(name.data(), size)).parent_path());
}

std::string InstalledFolder() {
  return ProgramFolder();
}

std::string UserDataFolder() {
  fs::path data = SystemPath(Environment("APPDATA"));
  if (!data.is_absolute()) {
    wchar_t* known = nullptr;
    if (::SHGetKnownFolderPath(FOLDERID_RoamingAppData, 0, nullptr, &known) == S_OK) data = known;
    ::CoTaskMemFree(known);
  }
  return PathText(data / L"Scorvane");
}

std::vector<Drive> FixedDrives() {
  std::vector<Drive> drives;
  for (char letter = 'C'; letter <= 'Z'; ++letter) {
    const wchar_t root[] = {static_cast<wchar_t>(letter), L':', L'\\', L'\0'};
    if (::GetDriveTypeW(root) == DRIVE_FIXED) drives.push_back({letter, Narrow(root)});
  }
  return drives;
}

bool IsDiskFull(int systemError) {
  return systemError == ERROR_DISK_FULL || systemError == ERROR_HANDLE_DISK_FULL;
}

std::FILE* OpenToRead(const std::string& path) {
  return ::_wfopen(SystemPath(path).c_str(), L"rb");
}

}  // namespace scorvane::platform
