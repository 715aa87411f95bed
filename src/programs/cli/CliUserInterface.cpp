#include "programs/cli/CliUserInterface.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "platform/Platform.h"

namespace scorvane::cli {
namespace {

constexpr int kBarWidth = 30;

class ProgressBar : public common::Progress {
 public:
  ProgressBar(std::string caption, int maximum)
      : caption_(std::move(caption)), maximum_(maximum), visible_(platform::ErrorIsTerminal()) {}
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() override {
    if (visible_ && drawn_ >= 0) fmt::print(stderr, "\r{:{}}\r", "", caption_.size() + kBarWidth + 10);
  }

  void SetInfo(const std::string&) override {}
  void SetMaximum(int maximum) override { maximum_ = maximum; }
  void SetValue(int value) override {
    if (!visible_ || maximum_ <= 0) return;
    const int percent = static_cast<int>(100LL * std::clamp(value, 0, maximum_) / maximum_);
    if (percent == drawn_) return;
    drawn_ = percent;
    const int full = percent * kBarWidth / 100;
    fmt::print(stderr, "\r{} [{}{}] {:3}%", caption_, std::string(static_cast<std::size_t>(full), '#'),
               std::string(static_cast<std::size_t>(kBarWidth - full), '.'), percent);
    std::fflush(stderr);
  }

 private:
  std::string caption_;
  int maximum_;
  bool visible_;
  int drawn_ = -1;
};

}  // namespace

void CliUserInterface::ShowMessage(const common::Message& message) {
  const bool titled = !message.title.empty() && message.title != common::kApplicationTitle;
  fmt::print(stderr, "scorvane-cli: {}{}\n", titled ? message.title + ": " : "", message.text);
}

common::Answer CliUserInterface::Ask(const common::Message& message, common::Buttons buttons) {
  const bool yesOrNo = buttons != common::Buttons::OkOnly;
  if (yesOrNo && platform::InputIsTerminal()) {
    fmt::print(stderr, "{} [y/N] ", message.text);
    std::fflush(stderr);
    const int answer = std::getchar();
    return answer == 'y' || answer == 'Y' ? common::Answer::Yes : common::Answer::No;
  }
  ShowMessage(message);
  if (!yesOrNo) return common::Answer::Ok;
  return buttons == common::Buttons::YesNo ? common::Answer::No : common::Answer::Cancel;
}

std::unique_ptr<common::Progress> CliUserInterface::StartProgress(const std::string& caption, int maximum) {
  return std::make_unique<ProgressBar>(caption, maximum);
}

}  // namespace scorvane::cli
