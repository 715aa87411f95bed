// The program's help page.
#pragma once

#include "common/UserInterface.h"

namespace scorvane::forms {

// Opens it with the program that the system has for pages, from the application folder or from where the
// program is installed; a message where it is in neither, or does not open.
void ShowReadMe(common::UserInterface& ui);

}  // namespace scorvane::forms
