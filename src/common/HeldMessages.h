// Holds messages back while a transaction is open, and shows them when it is over: nobody keeps the league
// from others while he reads.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/UserInterface.h"

namespace scorvane::common {

class HeldMessages : public UserInterface {
 public:
  // `ui` must outlive this one.
  explicit HeldMessages(UserInterface& ui) : ui_(ui) {}

  void ShowMessage(const Message& message) override { held_.push_back(message); }
  // Questions cannot wait for their answer; the others belong to windows.
  Answer Ask(const Message& message, Buttons buttons) override { return ui_.Ask(message, buttons); }
  std::vector<std::string> OpenFiles(FileRequest& request) override { return ui_.OpenFiles(request); }
  std::string SaveFile(const FileRequest& request) override { return ui_.SaveFile(request); }
  std::string PickFolder(const std::string& title, const std::string& folder) override {
    return ui_.PickFolder(title, folder);
  }
  bool PickColor(std::uint32_t& color) override { return ui_.PickColor(color); }
  std::unique_ptr<Progress> StartProgress(const std::string& caption, int maximum) override {
    return ui_.StartProgress(caption, maximum);
  }
  bool ShellOpen(const std::string& path) override { return ui_.ShellOpen(path); }

  const std::vector<Message>& Held() const { return held_; }
  // Shows what was held back.
  void Release() {
    for (const Message& message : held_) ui_.ShowMessage(message);
    held_.clear();
  }

 private:
  UserInterface& ui_;
  std::vector<Message> held_;
};

}  // namespace scorvane::common
