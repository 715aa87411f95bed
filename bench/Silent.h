// A user interface that shows nothing, and stops the run when a message comes.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/UserInterface.h"

namespace scorvane::bench {

class Silent : public common::UserInterface {
 public:
  void ShowMessage(const common::Message& message) override { throw std::runtime_error(message.text); }
  common::Answer Ask(const common::Message& message, common::Buttons) override {
    throw std::runtime_error(message.text);
  }
  std::vector<std::string> OpenFiles(common::FileRequest&) override { return {}; }
  std::string SaveFile(const common::FileRequest&) override { return {}; }
  std::string PickFolder(const std::string&, const std::string&) override { return {}; }
  bool PickColor(std::uint32_t&) override { return false; }
  bool ShellOpen(const std::string&) override { return false; }
  std::unique_ptr<common::Progress> StartProgress(const std::string&, int) override {
    struct Nothing : common::Progress {
      void SetInfo(const std::string&) override {}
      void SetMaximum(int) override {}
      void SetValue(int) override {}
    };
    return std::make_unique<Nothing>();
  }
};

}  // namespace scorvane::bench
