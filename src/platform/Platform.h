// What the program asks of the operating system. One header, one .cpp a system: no other file includes a
// system's own headers. Paths are UTF-8.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace scorvane::platform {

// A hold on a file (or a folder) that the processes of this program respect, for as long as it lives. Many
// may share a file; who holds it exclusively is alone with it.
class FileLock {
 public:
  enum class Mode { Shared, Exclusive };
  // Null when another holder stands against it, or when the file cannot be opened.
  static std::unique_ptr<FileLock> TryLock(const std::string& path, Mode mode = Mode::Exclusive);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

 private:
  explicit FileLock(std::intptr_t handle) : handle_(handle) {}
  const std::intptr_t handle_;
};

// Which other program keeps a file locked at this moment, as a user may know it ("scorvane (process 4711)");
// empty when none does, or the system does not say.
std::string LockHolder(const std::string& path);

// A path beside `path` that no file has, for what is to take its place: "NAME.scorvane-1234-1.tmp". Whatever
// has such a name is the program's own.
std::string TemporaryBeside(const std::string& path);

// Removes what programs that were stopped left under such names beside `path`, with their journals. What a
// running program has made stays.
void RemoveTemporariesBeside(const std::string& path);
// The same for whatever they were made for in a folder.
void RemoveTemporariesIn(const std::string& folder);

// Whether the disk of a file takes another file of a few bytes; true where that fails for any other reason
// than a full disk. Leaves nothing behind.
bool HasRoomBeside(const std::string& path);

// Waits until the file's content is on the disk; false when that fails.
bool FlushFile(const std::string& path);

enum class Flush { Yes, No };

// Puts `from` in the place of `to` in one step, and unless told not to waits until it is on the disk; the
// permissions of `to` are kept.
// Where `to` is a link, what it points at is replaced. Throws std::system_error; `to` is then as it was.
void ReplaceFile(const std::string& from, const std::string& to, Flush flush = Flush::Yes);

// True when the process may write to the file or folder.
bool IsWritable(const std::string& path);

// The decimal separator of the user's locale.
char LocaleDecimalSeparator();

// The folder of the running program, without a separator at its end.
std::string ProgramFolder();

// The program's own folder: SCORVANE_HOME when set; else the program's folder when it holds a writable
// Kirrelon.dat; else the user's data folder, made when it is not there. Without a separator at its end.
std::string ApplicationFolder();

// The folder of what comes with the program and is only read (the template and the help page of an
// installation). Without a separator at its end.
std::string InstalledFolder();

// A drive as the simulations know it: its letter, C to Z, and the folder that it is here, without a separator
// at its end unless it is a root.
struct Drive {
  char letter;
  std::string folder;
};

// The fixed drives in the order of their letters; on Linux those of the user's Wine prefix ($WINEPREFIX, else
// ~/.wine), which is where these simulations run there. A drive whose folder is not there is left out.
std::vector<Drive> FixedDrives();

// Whether an error number of the system's, as the store hands it on, means that the disk is full.
bool IsDiskFull(int systemError);

// Opens a file to read its bytes; null when that fails, and errno says why.
std::FILE* OpenToRead(const std::string& path);

// What a program of the command line begins with: hands over its arguments in UTF-8, its own name first, and
// sees to it that the standard streams carry UTF-8 and the bytes as they are written. Where the shell leaves
// names with "*" and "?" to the programs, those that are not quoted become the files that they fit, in the
// order of their names.
std::vector<std::string> StartConsoleProgram(int argc, char** argv);

// True when the standard error stream is a terminal; the same for standard input.
bool ErrorIsTerminal();
bool InputIsTerminal();

// How a program that was run under limits came to its end.
enum class ChildEnd { Done, Failed, Crashed, TimedOut, NotStarted };

struct ChildLimits {
  int seconds = 60;
  int megabytes = 1024;  // of memory
};

// Runs a program, whose file's ending ".exe" may be left out, and hands over its standard output line by
// line, without the line ends. The program is stopped when it overruns its limits, or when `line` returns
// false, which counts as Failed.
ChildEnd RunChild(const std::string& program, const std::vector<std::string>& arguments,
                  const ChildLimits& limits, const std::function<bool(std::string_view)>& line);

}  // namespace scorvane::platform
