// What is dragged from the desktop onto a window: a league file to open, or result files to import.
#pragma once

#include <string>
#include <vector>

class QMimeData;

namespace scorvane::forms {

// The league file that is dragged; empty when it is something else, or several files.
std::string DraggedLeague(const QMimeData* data);

// The result files of any simulation, and the folders, among what is dragged.
std::vector<std::string> DraggedResults(const QMimeData* data);

}  // namespace scorvane::forms
