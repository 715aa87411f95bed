// Qt's answer to the UserInterface port: real message boxes and dialogs, owned by the window that is in
// front.
#pragma once

#include <QString>

#include "common/UserInterface.h"

namespace scorvane::forms {

class QtUserInterface : public common::UserInterface {
 public:
  void ShowMessage(const common::Message& message) override;
  common::Answer Ask(const common::Message& message, common::Buttons buttons) override;
  std::vector<std::string> OpenFiles(common::FileRequest& request) override;
  std::string SaveFile(const common::FileRequest& request) override;
  std::string PickFolder(const std::string& title, const std::string& folder) override;
  bool PickColor(std::uint32_t& color) override;
  std::unique_ptr<common::Progress> StartProgress(const std::string& caption, int maximum) override;
  bool ShellOpen(const std::string& path) override;

 private:
  QString folder_;  // where the last file was chosen
};

// "Standings File (*.stn)|*.stn" as Qt writes filters; patterns match in either letter case.
QString QtFilter(const std::string& filter);

// A path to save at with the suffix of the chosen filter, "HTML File (*.htm *.HTM)", unless it has one of the
// filter's or its long form (.html). A filter of all files adds none.
QString WithSuffix(const QString& path, const QString& nameFilter);

}  // namespace scorvane::forms
