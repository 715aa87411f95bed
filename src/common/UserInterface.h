// The port through which operations and forms speak to the user. The window answers with real dialogs, the
// command line with its error stream, tests with a scripted one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace scorvane::common {

inline constexpr const char* kApplicationTitle = "Scorvane";

enum class MessageIcon { None, Information, Question, Exclamation, Critical };
enum class Buttons { OkOnly, YesNo, YesNoCancel };
enum class Answer { Ok, Yes, No, Cancel };

struct Message {
  std::string text;
  std::string title = kApplicationTitle;
  MessageIcon icon = MessageIcon::Exclamation;
};

// What a file dialog starts with.
struct FileRequest {
  std::string filter;    // "Standings File (*.stn)|*.stn|All Files (*.*)|*.*"
  std::string folder;    // empty for the dialog's own choice
  std::string name;      // preset file name
  std::string title;     // empty for the dialog's own
  int filterIndex = 0;   // the entry of the filter that is chosen at first, from 0
  bool several = false;  // several files may be chosen
};

// A progress dialog: it is there from StartProgress until it is destroyed. Every call repaints.
class Progress {
 public:
  virtual ~Progress() = default;
  virtual void SetInfo(const std::string& line) = 0;
  virtual void SetMaximum(int maximum) = 0;
  virtual void SetValue(int value) = 0;
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  virtual void ShowMessage(const Message& message) = 0;
  virtual Answer Ask(const Message& message, Buttons buttons) = 0;
  // The chosen paths, empty when cancelled. The request's folder becomes the one that the dialog opened in,
  // with a separator at its end.
  virtual std::vector<std::string> OpenFiles(FileRequest& request) = 0;
  // The chosen path, empty when cancelled. Whether a file of that name may be replaced is the caller's
  // question.
  virtual std::string SaveFile(const FileRequest& request) = 0;
  virtual std::string PickFolder(const std::string& title, const std::string& folder) = 0;
  // Red in the low byte; false when cancelled.
  virtual bool PickColor(std::uint32_t& color) = 0;
  virtual std::unique_ptr<Progress> StartProgress(const std::string& caption, int maximum) = 0;
  // Opens a file with the program that the system has for it; false when that fails.
  virtual bool ShellOpen(const std::string& path) = 0;
};

}  // namespace scorvane::common
