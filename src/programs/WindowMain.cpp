// scorvane: the window. What is asked of it on the command line alone is answered there, without a display.
#include <QApplication>
#include <QPalette>
#include <cstdio>
#include <string_view>

#include "forms/Program.h"
#include "platform/Platform.h"

namespace {

constexpr const char* kUsage =
    "Usage: scorvane [LEAGUE]\n"
    "Keeps the championship of a league that races the NASCAR Racing simulations.\n"
    "\n"
    "  LEAGUE      the league file (.lgx) to open; a name without a folder is also looked for in the "
    "program's\n"
    "              own folder. Without it the league of the last time is opened, if the Options say so.\n"
    "  -h,--help   Print this help message and exit\n"
    "  --version   Display program version information and exit\n"
    "\n"
    "scorvane-cli does the same work without the window; `scorvane-cli --help` lists its commands.\n";

int Say(const char* text) {
  return std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
}

#ifdef Q_OS_WIN
// The system's own style knows light colours alone; where the user wants dark ones, Qt's does.
void UseDarkColors() {
  if (QApplication::palette().color(QPalette::Window).lightness() < 128)
    QApplication::setStyle(QStringLiteral("Fusion"));
}
#endif

}  // namespace

int main(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == "--help" || first == "-h" || first == "--version")
    scorvane::platform::StartConsoleProgram(argc, argv);
  if (first == "--help" || first == "-h") return Say(kUsage);
  if (first == "--version") return Say("scorvane " SCORVANE_VERSION "\n");
#ifdef Q_OS_WIN
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "windows:darkmode=2");
#endif
  const QApplication application(argc, argv);
#ifdef Q_OS_WIN
  UseDarkColors();
#endif
  return scorvane::forms::RunProgram(application);
}
