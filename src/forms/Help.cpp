#include "forms/Help.h"

#include <string>

#include "common/Paths.h"
#include "platform/Platform.h"

namespace scorvane::forms {

void ShowReadMe(common::UserInterface& ui) {
  std::string path = common::JoinPath(platform::ApplicationFolder(), "ReadMe.htm");
  if (!common::FileExists(path)) path = common::JoinPath(platform::InstalledFolder(), "ReadMe.htm");
  if (!common::FileExists(path) || !ui.ShellOpen(path))
    ui.ShowMessage({"The ReadMe.htm file is missing.", "Error", common::MessageIcon::Exclamation});
}

}  // namespace scorvane::forms
