// scorvane-cli: the league without a window.
#include <fmt/format.h>

#include <cstdio>
#include <exception>

#include "platform/Platform.h"
#include "programs/cli/CommandLine.h"

int main(int argc, char** argv) {
  try {
    return scorvane::cli::CommandLine().Run(scorvane::platform::StartConsoleProgram(argc, argv));
  } catch (const std::exception& e) {
    fmt::print(stderr, "scorvane-cli: {}\n", e.what());
    return 1;
  }
}
