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
  // `filter` as "Standings File (*.stn)|*.stn"; the chosen paths, empty when cancelled.
  virtual std::vector<std::string> OpenFiles(const std::string& filter, const std::string& folder,
                                             bool several) = 0;
  // The chosen path, empty when cancelled.
  virtual std::string SaveFile(const std::string& filter, const std::string& name,
                               const std::string& folder) = 0;
  virtual std::string PickFolder(const std::string& title, const std::string& folder) = 0;
  // Red in the low byte; false when cancelled.
  virtual bool PickColor(std::uint32_t& color) = 0;
  virtual std::unique_ptr<Progress> StartProgress(const std::string& caption, int maximum) = 0;
  // Opens a file with the program that the system has for it; false when that fails.
  virtual bool ShellOpen(const std::string& path) = 0;
};

}  // namespace scorvane::common
