#include "charts/Svg.h"

#include <array>
#include <charconv>
#include <cmath>

#include "common/Markup.h"

namespace scorvane::charts {
namespace {

// Pieces of text, and numbers to a tenth: nobody sees less. A season's site has thousands of bars.
void Append(std::string& svg, std::string_view text) {
  svg += text;
}

void Append(std::string& svg, double number) {
  std::array<char, 24> digits{};
  const long long tenths = std::llround(number * 10);
  if (tenths < 0) svg += '-';
  const long long whole = tenths < 0 ? -tenths : tenths;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), whole / 10).ptr;
  svg.append(digits.data(), end);
  if (whole % 10 == 0) return;
  svg += '.';
  svg += static_cast<char>('0' + whole % 10);
}

template <typename... Parts>
void Put(std::string& svg, const Parts&... parts) {
  (Append(svg, parts), ...);
}

std::string_view AnchorName(Anchor anchor) {
  switch (anchor) {
    case Anchor::Start:
      return "start";
    case Anchor::Middle:
      return "middle";
    default:
      return "end";
  }
}

void PutDash(std::string& svg, std::size_t series) {
  const std::string_view dash = DashPattern(series);
  if (!dash.empty()) Put(svg, " stroke-dasharray=\"", dash, "\"");
}

void PutLine(std::string& svg, std::size_t series) {
  Put(svg, "<path class=\"line s", static_cast<double>(series % kLineStyles), "\"");
  PutDash(svg, series);
  Put(svg, " d=\"");
}

}  // namespace

std::string WriteSvg(const Chart& chart, std::string_view id) {
  std::string svg;
  Put(svg, "<svg class=\"chart\" viewBox=\"0 0 ", chart.width, " ", chart.height,
      "\" role=\"img\" aria-labelledby=\"", id, "-title ", id, "-text\"><title id=\"", id, "-title\">",
      common::EscapeLine(chart.title), "</title><desc id=\"", id, "-text\">",
      common::EscapeLine(chart.description), "</desc>\n");
  svg += "<g class=\"grid\">";
  for (const Rule& rule : chart.rules)
    Put(svg, rule.axis ? "<path class=\"axis\" d=\"M" : "<path d=\"M", rule.from.x, " ", rule.from.y, "L",
        rule.to.x, " ", rule.to.y, "\"/>");
  svg += "</g>\n";
  for (const Bar& bar : chart.bars)
    Put(svg, bar.stressed ? "<rect class=\"bar good\" x=\"" : "<rect class=\"bar\" x=\"", bar.at.x, "\" y=\"",
        bar.at.y, "\" width=\"", bar.width, "\" height=\"", bar.height, "\"><title>",
        common::EscapeLine(Describe(chart, bar.value)), "</title></rect>\n");
  for (const Curve& curve : chart.curves) {
    PutLine(svg, curve.series);
    for (std::size_t i = 0; i < curve.points.size(); ++i)
      Put(svg, i == 0 ? "M" : "L", curve.points[i].x, " ", curve.points[i].y);
    // A line of one point is a dot.
    svg += curve.points.size() == 1 ? "h0\"/>\n" : "\"/>\n";
  }
  for (const Label& label : chart.labels) {
    if (label.series) {
      PutLine(svg, *label.series);
      Put(svg, "M", label.at.x - 24, " ", label.at.y - 4, "h20\"/>\n");
    }
    Put(svg, "<text x=\"", label.at.x, "\" y=\"", label.at.y, "\" text-anchor=\"", AnchorName(label.anchor),
        "\">", common::EscapeLine(label.text), "</text>\n");
  }
  svg += "</svg>";
  return svg;
}

}  // namespace scorvane::charts
