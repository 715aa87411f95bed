// What the rooms of this folder ask of the system among themselves.
#pragma once

#include <string>

namespace scorvane::platform {

// A variable of the environment, in UTF-8; empty when it is not there.
std::string Environment(const char* name);

long ThisProcess();
bool IsRunning(long process);

// Where the program keeps the user's own files, which need not be there yet; without a separator at its end.
std::string UserDataFolder();

}  // namespace scorvane::platform
