// A chart as a vector picture for a page: its colours are the page's style sheet's (classes `s0` to `s9` for
// the series), its line styles its own.
#pragma once

#include <string>
#include <string_view>

#include "charts/Chart.h"

namespace scorvane::charts {

// An <svg> element with a title and a description; `id` makes its ids unique on the page. Texts are escaped.
std::string WriteSvg(const Chart& chart, std::string_view id);

}  // namespace scorvane::charts
