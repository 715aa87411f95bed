// Charts as plain geometry, in units of no device, with the values that stand behind it: whoever paints a
// chart, as a vector picture or in a window, paints the same one, and finds the value under the pointer.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scorvane::charts {

struct Point {
  double x = 0;
  double y = 0;  // downwards
};

enum class Anchor { Start, Middle, End };

// A text whose baseline begins, has its middle or ends at a point. With a series it belongs to that.
struct Label {
  Point at;
  std::string text;
  Anchor anchor = Anchor::Start;
  std::optional<std::size_t> series;
};

struct Rule {
  Point from;
  Point to;
  bool axis = false;  // the line that bars stand on; others are the grid
};

// What a value is drawn as: a point of a line, or a bar.
struct Value {
  std::size_t series = 0;  // the column of the numbers behind the first
  std::size_t entry = 0;   // their row: its place along the axis
  double number = 0;
};

struct Mark {
  Point at;
  Value value;
};

struct Bar {
  Point at;  // its upper left corner
  double width = 0;
  double height = 0;
  bool stressed = false;  // a win, a gain: also told by its pattern, not by its colour alone
  Value value;
};

// A line of one series; where values are missing it is broken into several.
struct Curve {
  std::size_t series = 0;
  std::vector<Point> points;
};

// The numbers, for who does not see the picture.
struct NumberTable {
  std::vector<std::string> columns;
  std::vector<std::vector<std::string>> rows;
};

struct Chart {
  double width = 0;
  double height = 0;
  std::string title;
  std::string description;  // what it shows, in a sentence or two
  std::vector<Rule> rules;
  std::vector<Curve> curves;
  std::vector<Mark> marks;
  std::vector<Bar> bars;
  std::vector<Label> labels;
  NumberTable numbers;
};

struct Series {
  std::string name;
  std::vector<std::optional<double>> values;  // one for each entry
};

// Lines over the entries, their names at the right end.
struct LineInput {
  std::string title;
  std::string description;
  std::string entryHeading;          // of the table's first column
  std::vector<std::string> entries;  // full names; the axis shows their numbers
  std::vector<int> entryNumbers;     // the same in number as entries
  std::vector<Series> series;
};
Chart LineChart(const LineInput& input);

// One bar an entry, standing on the worst place: the longer, the better.
struct PlaceInput {
  std::string title;
  std::string description;
  std::string entryHeading;
  std::vector<std::string> entries;
  std::vector<int> entryNumbers;
  std::vector<std::optional<int>> places;  // 1 is the best; no bar for who did not start
};
Chart PlaceChart(const PlaceInput& input);

// A row an entry with a bar to the right for places gained, to the left for places lost.
struct ShiftInput {
  std::string title;
  std::string description;
  struct Row {
    std::string name;
    int from = 0;
    int to = 0;
  };
  std::vector<Row> rows;
};
Chart ShiftChart(const ShiftInput& input);

// The value under a point or, for lines, the nearest one within `reach`; null when there is none. It lives in
// the chart.
const Value* ValueAt(const Chart& chart, Point point, double reach);
// A value as one would say it: "1. Daytona, Jeff Gordon: 175".
std::string Describe(const Chart& chart, const Value& value);

// Lines are told apart without colour, too: the lengths of a series' dashes and gaps between blanks, in the
// chart's units; empty for one without gaps. After kLineStyles series they begin again.
inline constexpr std::size_t kLineStyles = 10;
std::string_view DashPattern(std::size_t series);

// Round steps that cover the numbers from `low` to `high`, at most `most` of them, ascending.
std::vector<double> Ticks(double low, double high, int most);

// A number as charts write it: whole ones without a point.
std::string NumberText(double number);

}  // namespace scorvane::charts
