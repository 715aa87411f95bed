// The program behind the window: start-up with its splash, the event loop, the end.
#pragma once

#include <QApplication>
#include <functional>

#include "forms/frmRaces.h"

namespace scorvane::forms {

// Runs the program until its window closes and yields its exit status; the league file to open is the first
// of the application's arguments, if any. Without its template the program says so and yields 1. `started` is
// called once start-up is over and the window can be used.
int RunProgram(const QApplication& application, const std::function<void(frmRaces&)>& started = {});

}  // namespace scorvane::forms
