// A user interface that shows nothing and asks nobody: for work whose messages have no reader.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/UserInterface.h"

namespace scorvane::common {

class SilentInterface : public UserInterface {
 public:
  void ShowMessage(const Message&) override {}
  Answer Ask(const Message&, Buttons) override { return Answer::Cancel; }
  std::vector<std::string> OpenFiles(FileRequest&) override { return {}; }
  std::string SaveFile(const FileRequest&) override { return {}; }
  std::string PickFolder(const std::string&, const std::string&) override { return {}; }
  bool PickColor(std::uint32_t&) override { return false; }
  std::unique_ptr<Progress> StartProgress(const std::string&, int) override { return nullptr; }
  bool ShellOpen(const std::string&) override { return false; }
};

}  // namespace scorvane::common
