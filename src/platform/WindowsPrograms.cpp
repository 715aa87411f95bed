// Windows: how a program begins, speaks to its console, and runs another one.
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/Platform.h"
#include "platform/SystemPath.h"
#include "platform/WindowsText.h"

#include <windows.h>

namespace scorvane::platform {
namespace {

namespace fs = std::filesystem;

// ---- The command line

struct Argument {
  std::wstring text;
  bool quoted = false;  // some of it
};

// Takes the command line apart as this system's programs do: blanks separate, quotes hold together, and
// backslashes only count before a quote.
std::vector<Argument> Split(std::wstring_view line) {
  std::vector<Argument> arguments;
  std::size_t i = 0;
  const auto isBlank = [](wchar_t c) { return c == L' ' || c == L'\t'; };
  // The program's own name knows no backslashes before quotes.
  Argument name;
  for (bool inside = false; i < line.size() && (inside || !isBlank(line[i])); ++i) {
    if (line[i] == L'"') {
      inside = !inside;
    } else {
      name.text += line[i];
    }
  }
  arguments.push_back(std::move(name));
  while (true) {
    while (i < line.size() && isBlank(line[i])) ++i;
    if (i == line.size()) return arguments;
    Argument argument;
    for (bool inside = false; i < line.size() && (inside || !isBlank(line[i]));) {
      std::size_t slashes = 0;
      while (i < line.size() && line[i] == L'\\') ++slashes, ++i;
      if (i == line.size() || line[i] != L'"') {
        argument.text.append(slashes, L'\\');
        if (slashes == 0) argument.text += line[i++];
        continue;
      }
      argument.text.append(slashes / 2, L'\\');
      if (slashes % 2 == 1) {
        argument.text += L'"';
      } else if (inside && i + 1 < line.size() && line[i + 1] == L'"') {
        argument.text += line[++i];
      } else {
        inside = !inside;
        argument.quoted = true;
      }
      ++i;
    }
    arguments.push_back(std::move(argument));
  }
}

bool SameLetter(wchar_t a, wchar_t b) {
  return ::CompareStringOrdinal(&a, 1, &b, 1, TRUE) == CSTR_EQUAL;
}

// Whether a name fits a pattern of "*" and "?". The system's own search would also look at the short names
// of old, so that "*.htm" found "page.html".
bool Fits(std::wstring_view name, std::wstring_view pattern) {
  std::size_t at = 0;
  std::size_t in = 0;
  std::size_t star = std::wstring_view::npos;
  std::size_t from = 0;
  while (at < name.size()) {
    if (in < pattern.size() && pattern[in] == L'*') {
      star = in++;
      from = at;
    } else if (in < pattern.size() && (pattern[in] == L'?' || SameLetter(pattern[in], name[at]))) {
      ++in;
      ++at;
    } else if (star != std::wstring_view::npos) {
      in = star + 1;
      at = ++from;
    } else {
      return false;
    }
  }
  while (in < pattern.size() && pattern[in] == L'*') ++in;
  return in == pattern.size();
}

// The files that a pattern names; none when it is no pattern of files. Between quotes, which a path with
// blanks needs here, only what has a folder is one: everything else may be a statement.
std::vector<std::wstring> FilesOf(const Argument& argument) {
  constexpr const wchar_t* kSeparators = L"\\/:";
  const std::wstring& text = argument.text;
  const std::size_t separator = text.find_last_of(kSeparators);
  const std::size_t name = separator == std::wstring::npos ? 0 : separator + 1;
  if (text.find_first_of(L"*?") == std::wstring::npos || text.find_first_of(L"*?") < name) return {};
  if (argument.quoted && name == 0) return {};
  const std::wstring folder = text.substr(0, name);
  std::vector<std::wstring> files;
  WIN32_FIND_DATAW found;
  const HANDLE search = ::FindFirstFileW((folder + L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return {};
  do {
    const std::wstring entry = found.cFileName;
    if (entry != L"." && entry != L".." && Fits(entry, std::wstring_view(text).substr(name)))
      files.push_back(folder + entry);
  } while (::FindNextFileW(search, &found) != 0);
  ::FindClose(search);
  std::sort(files.begin(), files.end(), [](const std::wstring& a, const std::wstring& b) {
    const int order = ::CompareStringOrdinal(a.c_str(), -1, b.c_str(), -1, TRUE);
    return order == CSTR_EQUAL ? a < b : order == CSTR_LESS_THAN;
  });
  return files;
}

// ---- The console

// What the console took its output for before; it outlives the program.
std::atomic<UINT> formerCodePage = 0;

void GiveConsoleBack() {
  if (const UINT former = formerCodePage.exchange(0); former != 0) ::SetConsoleOutputCP(former);
}

// Ctrl+C ends the program at once, as ever: what it had begun is taken back by who opens the league next.
BOOL WINAPI OnCtrl(DWORD) {
  GiveConsoleBack();
  return FALSE;
}

bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

// ---- Children

// A handle that closes itself.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) { Reset(handle); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { Close(); }
  void Reset(HANDLE handle) {
    Close();
    handle_ = handle == INVALID_HANDLE_VALUE ? nullptr : handle;
  }
  void Close() {
    if (handle_ != nullptr) ::CloseHandle(std::exchange(handle_, nullptr));
  }
  explicit operator bool() const { return handle_ != nullptr; }
  HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_ = nullptr;
};

// One word of a command line, so that Split yields it again.
void AppendQuoted(std::wstring& line, std::wstring_view word) {
  line += line.empty() ? L"\"" : L" \"";
  std::size_t slashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') line.append(slashes + 1, L'\\');
    slashes = c == L'\\' ? slashes + 1 : 0;
    line += c;
  }
  line.append(slashes, L'\\');
  line += L'"';
}

// Everything that belongs to a child goes when the job goes, and dies when it is beyond its limits.
HANDLE MakeJob(const ChildLimits& limits) {
  const HANDLE job = ::CreateJobObjectW(nullptr, nullptr);
  if (job == nullptr) return nullptr;
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION information{};
  auto& basic = information.BasicLimitInformation;
  basic.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_PROCESS_TIME |
                     JOB_OBJECT_LIMIT_PROCESS_MEMORY | JOB_OBJECT_LIMIT_ACTIVE_PROCESS |
                     JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
  basic.ActiveProcessLimit = 1;
  basic.PerProcessUserTimeLimit.QuadPart = limits.seconds * 10'000'000LL;  // in units of 100 ns
  information.ProcessMemoryLimit = static_cast<SIZE_T>(limits.megabytes) << 20U;
  ::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &information, sizeof information);
  return job;
}

// A pipe whose reading end can be waited for; the child inherits the other one.
struct Pipe {
  Handle ours;
  Handle theirs;
};
bool Open(Pipe& pipe) {
  static std::atomic<int> number = 0;
  const std::wstring name = L"\\\\.\\pipe\\scorvane-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                            std::to_wstring(::GetTickCount64()) + L"-" + std::to_wstring(++number);
  constexpr DWORD kRoom = 65536;
  pipe.ours.Reset(::CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
      PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kRoom, kRoom, 0, nullptr));
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  pipe.theirs.Reset(::CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inherited, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
  return pipe.ours && pipe.theirs;
}

// Starts a program that has nothing of ours but the two handles, inside the job from its first moment:
// whoever kills us between two steps would leave it behind.
HANDLE Start(const fs::path& program, std::wstring line, HANDLE output, HANDLE silence, HANDLE job) {
  constexpr DWORD kAttributes = 2;
  SIZE_T size = 0;
  ::InitializeProcThreadAttributeList(nullptr, kAttributes, 0, &size);
  std::vector<std::byte> room(size);
  auto* attributes = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
  if (::InitializeProcThreadAttributeList(attributes, kAttributes, 0, &size) == 0) return nullptr;
  HANDLE inherited[] = {output, silence};
  const bool limited = ::UpdateProcThreadAttribute(attributes, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                                   inherited, sizeof inherited, nullptr, nullptr) != 0 &&
                       ::UpdateProcThreadAttribute(attributes, 0, PROC_THREAD_ATTRIBUTE_JOB_LIST, &job,
                                                   sizeof job, nullptr, nullptr) != 0;
  STARTUPINFOEXW startup{};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  startup.StartupInfo.hStdInput = silence;
  startup.StartupInfo.hStdOutput = output;
  startup.StartupInfo.hStdError = silence;
  startup.lpAttributeList = attributes;
  PROCESS_INFORMATION child{};
  // A child that crashes says so to us, and to nobody in a box.
  const UINT former = ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  const bool started = limited && ::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                                                   CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT, nullptr,
                                                   nullptr, &startup.StartupInfo, &child) != 0;
  ::SetErrorMode(former);
  ::DeleteProcThreadAttributeList(attributes);
  if (!started) return nullptr;
  ::CloseHandle(child.hThread);
  return child.hProcess;
}

// Reads what comes next, and waits for it until the deadline: its bytes, none at the end, or -1 for too late.
long Read(HANDLE pipe, HANDLE event, char* buffer, DWORD room, std::chrono::milliseconds patience) {
  OVERLAPPED reading{};
  reading.hEvent = event;
  DWORD size = 0;
  if (::ReadFile(pipe, buffer, room, nullptr, &reading) == 0) {
    if (::GetLastError() != ERROR_IO_PENDING) return 0;
    if (patience.count() <= 0 ||
        ::WaitForSingleObject(event, static_cast<DWORD>(patience.count())) != WAIT_OBJECT_0) {
      ::CancelIo(pipe);
      ::GetOverlappedResult(pipe, &reading, &size, TRUE);
      return -1;
    }
  }
  return ::GetOverlappedResult(pipe, &reading, &size, TRUE) == 0 ? 0 : static_cast<long>(size);
}

}  // namespace

std::vector<std::string> StartConsoleProgram(int, char**) {
  // A program with windows has no console of its own, but may have been called from one.
  if (::GetStdHandle(STD_OUTPUT_HANDLE) == nullptr && ::AttachConsole(ATTACH_PARENT_PROCESS) != 0) {
    std::freopen("CONOUT$", "w", stdout);
    std::freopen("CONOUT$", "w", stderr);
  }
  for (std::FILE* stream : {stdin, stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
  if (IsConsole(STD_OUTPUT_HANDLE) || IsConsole(STD_ERROR_HANDLE)) {
    formerCodePage = ::GetConsoleOutputCP();
    ::SetConsoleOutputCP(CP_UTF8);
    std::atexit(GiveConsoleBack);
    ::SetConsoleCtrlHandler(OnCtrl, TRUE);
  }
  std::vector<std::string> arguments;
  for (const Argument& argument : Split(::GetCommandLineW())) {
    const std::vector<std::wstring> files =
        arguments.empty() ? std::vector<std::wstring>() : FilesOf(argument);
    if (files.empty()) arguments.push_back(Narrow(argument.text));
    for (const std::wstring& file : files) arguments.push_back(Narrow(file));
  }
  return arguments;
}

bool ErrorIsTerminal() {
  return IsConsole(STD_ERROR_HANDLE);
}

bool InputIsTerminal() {
  return IsConsole(STD_INPUT_HANDLE);
}

ChildEnd RunChild(const std::string& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits, const std::function<bool(std::string_view)>& line) {
  fs::path file = SystemPath(program);
  if (file.extension() != L".exe") file += L".exe";
  std::wstring words;
  AppendQuoted(words, file.native());
  for (const std::string& argument : arguments) AppendQuoted(words, Wide(argument));
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const Handle silence(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inherited, OPEN_EXISTING, 0, nullptr));
  const Handle event(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  const Handle job(MakeJob(limits));
  Pipe pipe;
  if (!silence || !event || !job || !Open(pipe)) return ChildEnd::NotStarted;
  const Handle child(Start(file, std::move(words), pipe.theirs.Get(), silence.Get(), job.Get()));
  pipe.theirs.Close();
  if (!child) return ChildEnd::NotStarted;

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limits.seconds);
  const auto left = [&deadline] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  };
  ChildEnd end = ChildEnd::Done;
  std::string rest;
  std::vector<char> buffer(65536);
  while (end == ChildEnd::Done) {
    const long size =
        Read(pipe.ours.Get(), event.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), left());
    if (size < 0) end = ChildEnd::TimedOut;
    if (size <= 0) break;
    rest.append(buffer.data(), static_cast<std::size_t>(size));
    std::size_t from = 0;
    for (std::size_t to; (to = rest.find('\n', from)) != std::string::npos; from = to + 1) {
      if (line(std::string_view(rest).substr(from, to - from))) continue;
      end = ChildEnd::Failed;
      break;
    }
    rest.erase(0, from);
  }
  if (end == ChildEnd::Done &&
      ::WaitForSingleObject(child.Get(), static_cast<DWORD>(std::max(left().count(), 0LL))) != WAIT_OBJECT_0)
    end = ChildEnd::TimedOut;
  if (end != ChildEnd::Done) {
    ::TerminateJobObject(job.Get(), 1);
    ::WaitForSingleObject(child.Get(), INFINITE);
    return end;
  }
  DWORD code = 1;
  ::GetExitCodeProcess(child.Get(), &code);
  // The codes of the system's own errors; the run-time library aborts with 3.
  constexpr DWORD kCrashes = 0xC0000000;
  constexpr DWORD kAborted = 3;
  if (code == ERROR_NOT_ENOUGH_QUOTA) return ChildEnd::TimedOut;
  return code == 0                              ? ChildEnd::Done
         : code >= kCrashes || code == kAborted ? ChildEnd::Crashed
                                                : ChildEnd::Failed;
}

}  // namespace scorvane::platform
