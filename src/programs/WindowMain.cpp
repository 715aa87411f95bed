// scorvane: the window.
#include <QApplication>

#include "forms/Program.h"

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  return scorvane::forms::RunProgram(application);
}
