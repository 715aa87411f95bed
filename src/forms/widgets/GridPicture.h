// A table as a picture, to be pasted where people talk about a race.
#pragma once

#include <QImage>
#include <QTableView>

namespace scorvane::forms {

// Headings and all rows in the columns' widths, as the view shows them but with nothing scrolled out of sight
// and nothing selected, at the scale of its screen. Null when that would be more than programs take.
QImage PictureOf(const QTableView& view);
// Whether it would not be.
bool FitsPicture(const QTableView& view);

}  // namespace scorvane::forms
