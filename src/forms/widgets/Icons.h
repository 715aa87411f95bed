// The pictures of commands: those of the desktop's theme and, where it has none, simple ones drawn here in
// the colours that the palette has just then.
#pragma once

#include <QIcon>

namespace scorvane::forms {

// By a name of the freedesktop icon naming, which is looked up when the icon is painted: start-up does not
// wait for the theme, and another theme is shown at once. A name that has no drawing here gives none in its
// place.
QIcon CommandIcon(const char* name);

}  // namespace scorvane::forms
