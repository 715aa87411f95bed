// The command line's answer to the user interface port: messages go to the error stream, a progress bar too
// when that is a terminal, and there is nobody to ask.
#pragma once

#include "common/UserInterface.h"

namespace scorvane::cli {

class CliUserInterface : public common::UserInterface {
 public:
  void ShowMessage(const common::Message& message) override;
  // Where nobody is there: No, or Cancel where that can be answered.
  common::Answer Ask(const common::Message& message, common::Buttons buttons) override;
  std::vector<std::string> OpenFiles(common::FileRequest&) override { return {}; }
  std::string SaveFile(const common::FileRequest&) override { return {}; }
  std::string PickFolder(const std::string&, const std::string&) override { return {}; }
  bool PickColor(std::uint32_t&) override { return false; }
  std::unique_ptr<common::Progress> StartProgress(const std::string& caption, int maximum) override;
  bool ShellOpen(const std::string&) override { return false; }
};

}  // namespace scorvane::cli
