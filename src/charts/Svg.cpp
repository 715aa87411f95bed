#include "charts/Svg.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iterator>

namespace scorvane::charts {
namespace {

constexpr std::size_t kStyles = 10;
// Told apart without colour: a dash pattern each.
constexpr std::array<const char*, kStyles> kDashes = {"",     "8 4", "2 3",          "10 3 2 3", "5 2",
                                                      "14 4", "3 5", "10 3 2 3 2 3", "1 2",      "6 6"};

// What a page may hold: markup escaped, and no character that is none there.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
          escaped += "\xEF\xBF\xBD";  // one of the second set of control characters
          ++i;
        } else if (byte < ' ' || byte == 0x7F) {
          escaped += c == '\t' || c == '\n' ? " " : "\xEF\xBF\xBD";
        } else {
          escaped += c;
        }
    }
  }
  return escaped;
}

template <typename... Args>
void Append(std::string& text, fmt::format_string<Args...> format, Args&&... args) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
}

// To a tenth: nobody sees less.
std::string Number(double number) {
  const long tenths = std::lround(number * 10);
  if (tenths % 10 == 0) return std::to_string(tenths / 10);
  return fmt::format("{}{}.{}", tenths < 0 ? "-" : "", std::abs(tenths) / 10, std::abs(tenths) % 10);
}

const char* AnchorName(Anchor anchor) {
  switch (anchor) {
    case Anchor::Start:
      return "start";
    case Anchor::Middle:
      return "middle";
    default:
      return "end";
  }
}

std::string Dash(std::size_t series) {
  const std::string dash = kDashes[series % kStyles];
  return dash.empty() ? dash : fmt::format(" stroke-dasharray=\"{}\"", dash);
}

}  // namespace

std::string WriteSvg(const Chart& chart, std::string_view id) {
  std::string svg;
  Append(svg,
         "<svg class=\"chart\" viewBox=\"0 0 {} {}\" role=\"img\" aria-labelledby=\"{}-title {}-text\">"
         "<title id=\"{}-title\">{}</title><desc id=\"{}-text\">{}</desc>\n",
         Number(chart.width), Number(chart.height), id, id, id, Escaped(chart.title), id,
         Escaped(chart.description));
  svg += "<g class=\"grid\">";
  for (const Rule& rule : chart.rules)
    Append(svg, "<path{} d=\"M{} {}L{} {}\"/>", rule.axis ? " class=\"axis\"" : "", Number(rule.from.x),
           Number(rule.from.y), Number(rule.to.x), Number(rule.to.y));
  svg += "</g>\n";
  for (const Bar& bar : chart.bars)
    Append(svg, "<rect class=\"{}\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"><title>{}</title></rect>\n",
           bar.stressed ? "bar good" : "bar", Number(bar.at.x), Number(bar.at.y), Number(bar.width),
           Number(bar.height), Escaped(Describe(chart, bar.value)));
  for (const Curve& curve : chart.curves) {
    Append(svg, "<path class=\"line s{}\"{} d=\"", curve.series % kStyles, Dash(curve.series));
    for (std::size_t i = 0; i < curve.points.size(); ++i)
      Append(svg, "{}{} {}", i == 0 ? "M" : "L", Number(curve.points[i].x), Number(curve.points[i].y));
    // A line of one point is a dot.
    svg += curve.points.size() == 1 ? "h0\"/>\n" : "\"/>\n";
  }
  for (const Label& label : chart.labels) {
    if (label.series) {
      Append(svg, "<path class=\"line s{}\"{} d=\"M{} {}h20\"/>", *label.series % kStyles,
             Dash(*label.series), Number(label.at.x - 24), Number(label.at.y - 4));
    }
    Append(svg, "<text x=\"{}\" y=\"{}\" text-anchor=\"{}\">{}</text>\n", Number(label.at.x),
           Number(label.at.y), AnchorName(label.anchor), Escaped(label.text));
  }
  svg += "</svg>";
  return svg;
}

}  // namespace scorvane::charts
