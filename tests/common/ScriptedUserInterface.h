// A user interface for tests: it records what the program says, and fails the test when it is asked something
// that the test has not answered in advance.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "common/UserInterface.h"

namespace scorvane::common {

inline bool operator==(const Message& a, const Message& b) {
  return a.text == b.text && a.title == b.title && a.icon == b.icon;
}

inline std::ostream& operator<<(std::ostream& out, const Message& message) {
  return out << '"' << message.text << "\" titled \"" << message.title << "\" icon "
             << static_cast<int>(message.icon);
}

class ScriptedUserInterface : public UserInterface {
 public:
  // What a progress dialog went through.
  struct ProgressRecord {
    std::string caption;
    std::vector<std::string> lines;
    int maximum = 0;
    int value = 0;
    bool closed = false;
  };
  // Answers, taken from the front. A cancelled dialog is an empty path, or no colour.
  std::deque<Answer> answers;
  std::deque<std::vector<std::string>> filesToOpen;
  std::string opensIn;  // where the dialogs for files to open begin; empty for where they are asked to
  std::deque<std::string> filesToSave;
  std::deque<std::string> foldersToPick;
  std::deque<std::pair<bool, std::uint32_t>> colorsToPick;
  bool shellOpens = true;

  // What happened, in order.
  std::vector<Message> messages;     // plain messages and questions alike
  std::vector<Buttons> questions;    // the buttons of the questions
  std::vector<FileRequest> dialogs;  // of a folder picker: its title and folder
  std::vector<std::shared_ptr<ProgressRecord>> progress;
  std::vector<std::string> shellOpened;

  ~ScriptedUserInterface() override {
    EXPECT_TRUE(answers.empty() && filesToOpen.empty() && filesToSave.empty() && foldersToPick.empty() &&
                colorsToPick.empty())
        << "an answer that the test prepared was never asked for";
  }

  void ShowMessage(const Message& message) override { messages.push_back(message); }

  Answer Ask(const Message& message, Buttons buttons) override {
    messages.push_back(message);
    questions.push_back(buttons);
    const Answer answer = Take(answers, buttons == Buttons::OkOnly ? Answer::Ok : Answer::No, message.text);
    EXPECT_TRUE(Offers(buttons, answer)) << "no button gives that answer: " << message.text;
    return answer;
  }

  std::vector<std::string> OpenFiles(FileRequest& request) override {
    dialogs.push_back(request);
    if (!opensIn.empty()) request.folder = opensIn;
    return Take(filesToOpen, {}, request.filter);
  }

  std::string SaveFile(const FileRequest& request) override {
    dialogs.push_back(request);
    return Take(filesToSave, {}, request.filter);
  }

  std::string PickFolder(const std::string& title, const std::string& folder) override {
    FileRequest request;
    request.title = title;
    request.folder = folder;
    dialogs.push_back(request);
    return Take(foldersToPick, {}, title);
  }

  bool PickColor(std::uint32_t& color) override {
    const auto [chosen, picked] = Take(colorsToPick, {false, 0}, "a colour");
    if (chosen) color = picked;
    return chosen;
  }

  std::unique_ptr<Progress> StartProgress(const std::string& caption, int maximum) override {
    progress.push_back(std::make_shared<ProgressRecord>(ProgressRecord{caption, {}, maximum}));
    return std::make_unique<RecordingProgress>(progress.back());
  }

  bool ShellOpen(const std::string& path) override {
    shellOpened.push_back(path);
    return shellOpens;
  }

 private:
  class RecordingProgress : public Progress {
   public:
    explicit RecordingProgress(std::shared_ptr<ProgressRecord> record) : record_(std::move(record)) {}
    ~RecordingProgress() override { record_->closed = true; }
    void SetInfo(const std::string& line) override { record_->lines.push_back(line); }
    void SetMaximum(int maximum) override { record_->maximum = maximum; }
    void SetValue(int value) override { record_->value = value; }

   private:
    std::shared_ptr<ProgressRecord> record_;
  };

  // A real box gives only the answers of its buttons.
  static bool Offers(Buttons buttons, Answer answer) {
    if (buttons == Buttons::OkOnly) return answer == Answer::Ok;
    return answer == Answer::Yes || answer == Answer::No ||
           (answer == Answer::Cancel && buttons == Buttons::YesNoCancel);
  }

  template <typename T>
  static T Take(std::deque<T>& prepared, T otherwise, const std::string& what) {
    if (prepared.empty()) {
      ADD_FAILURE() << "nobody expected to be asked: " << what;
      return otherwise;
    }
    T answer = std::move(prepared.front());
    prepared.pop_front();
    return answer;
  }
};

}  // namespace scorvane::common
