#include "charts/Chart.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace scorvane::charts {
namespace {

constexpr double kWidth = 720;
constexpr double kHeight = 380;
constexpr double kLeft = 46;
constexpr double kTop = 14;
constexpr double kBottom = 30;
constexpr double kLineHeight = 15;
constexpr double kTextDrop = 4;  // from the middle of a line of text to its baseline

// Where the values of an axis lie between two edges.
struct Scale {
  double low = 0;
  double high = 1;
  double from = 0;
  double to = 1;
  double At(double value) const {
    return high == low ? from : from + (value - low) * (to - from) / (high - low);
  }
};

// Puts labels that would cover each other apart, in their order, between two edges.
void Spread(std::vector<Label*>& labels, double top, double bottom) {
  std::stable_sort(labels.begin(), labels.end(),
                   [](const Label* a, const Label* b) { return a->at.y < b->at.y; });
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const double least = i == 0 ? top : labels[i - 1]->at.y + kLineHeight;
    labels[i]->at.y = std::max(labels[i]->at.y, least);
  }
  for (std::size_t i = labels.size(); i-- > 0;) {
    const double most = i + 1 == labels.size() ? bottom : labels[i + 1]->at.y - kLineHeight;
    labels[i]->at.y = std::min(labels[i]->at.y, most);
  }
}

// Every so manieth entry gets its number on the axis, so that they do not touch.
std::size_t LabelStep(std::size_t entries, double width) {
  constexpr double kNumberWidth = 26;
  const auto room = static_cast<std::size_t>(std::max(1.0, width / kNumberWidth));
  return (entries + room - 1) / std::max<std::size_t>(room, 1);
}

void NumberEntries(Chart& chart, const std::vector<int>& numbers, const std::vector<double>& places,
                   double baseline) {
  if (places.empty()) return;
  const std::size_t step =
      std::max<std::size_t>(1, LabelStep(places.size(), places.back() - places.front() + 1));
  for (std::size_t i = 0; i < places.size(); i += step)
    chart.labels.push_back({{places[i], baseline}, std::to_string(numbers[i]), Anchor::Middle, {}});
}

std::string Cut(const std::string& text, std::size_t characters) {
  std::size_t seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool starts = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
    if (starts && seen++ == characters) return text.substr(0, i) + "…";
  }
  return text;
}

}  // namespace

std::string NumberText(double number) {
  std::string text = fmt::format("{:.2f}", number);
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text == "-0" ? "0" : text;
}

std::vector<double> Ticks(double low, double high, int most) {
  if (!(high > low) || most < 2) return {low};
  const double rough = (high - low) / (most - 1);
  const double size = std::pow(10, std::floor(std::log10(rough)));
  double step = 10 * size;
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * size >= rough) {
      step = factor * size;
      break;
    }
  }
  std::vector<double> ticks;
  const double first = std::ceil(low / step) * step;
  for (int i = 0; i < most && first + i * step <= high + step / 1000; ++i) ticks.push_back(first + i * step);
  return ticks;
}

std::string_view DashPattern(std::size_t series) {
  constexpr std::array<std::string_view, kLineStyles> kDashes = {
      "", "8 4", "2 3", "10 3 2 3", "5 2", "14 4", "3 5", "10 3 2 3 2 3", "1 2", "6 6"};
  return kDashes[series % kLineStyles];
}

Chart LineChart(const LineInput& input) {
  constexpr double kNames = 150;  // the room for the series' names
  constexpr std::size_t kNameLength = 20;
  Chart chart{kWidth, kHeight, input.title, input.description, {}, {}, {}, {}, {}, {}};
  double low = 0;
  double high = 0;
  for (const Series& series : input.series) {
    for (const auto& value : series.values) {
      low = std::min(low, value.value_or(low));
      high = std::max(high, value.value_or(high));
    }
  }
  const double right = kWidth - kNames;
  const double bottom = kHeight - kBottom;
  const Scale across{0, static_cast<double>(std::max<std::size_t>(input.entries.size(), 2) - 1), kLeft + 8,
                     right - 8};
  const Scale up{low, high == low ? low + 1 : high, bottom, kTop};
  for (const double tick : Ticks(up.low, up.high, 7)) {
    chart.rules.push_back({{kLeft, up.At(tick)}, {right, up.At(tick)}, tick == 0});
    chart.labels.push_back({{kLeft - 6, up.At(tick) + kTextDrop}, NumberText(tick), Anchor::End, {}});
  }
  std::vector<double> places(input.entries.size());
  for (std::size_t i = 0; i < places.size(); ++i) places[i] = across.At(static_cast<double>(i));
  NumberEntries(chart, input.entryNumbers, places, kHeight - 10);

  const std::size_t firstName = chart.labels.size();
  for (std::size_t s = 0; s < input.series.size(); ++s) {
    const Series& series = input.series[s];
    std::optional<Point> last;
    bool open = false;
    for (std::size_t i = 0; i < series.values.size() && i < places.size(); ++i) {
      const std::optional<double>& value = series.values[i];
      if (!value) {
        open = false;
        continue;
      }
      const Point at{places[i], up.At(*value)};
      if (!open) chart.curves.push_back({s, {}});
      open = true;
      chart.curves.back().points.push_back(at);
      chart.marks.push_back({at, {s, i, *value}});
      last = at;
    }
    if (last)
      chart.labels.push_back(
          {{right + 26, last->y + kTextDrop}, Cut(series.name, kNameLength), Anchor::Start, s});
  }
  std::vector<Label*> names;
  for (std::size_t i = firstName; i < chart.labels.size(); ++i) names.push_back(&chart.labels[i]);
  Spread(names, kTop + kTextDrop, bottom + kTextDrop);

  chart.numbers.columns.push_back(input.entryHeading);
  for (const Series& series : input.series) chart.numbers.columns.push_back(series.name);
  for (std::size_t i = 0; i < input.entries.size(); ++i) {
    std::vector<std::string> row = {fmt::format("{}. {}", input.entryNumbers[i], input.entries[i])};
    for (const Series& series : input.series) {
      const std::optional<double> value = i < series.values.size() ? series.values[i] : std::nullopt;
      row.push_back(value ? NumberText(*value) : "");
    }
    chart.numbers.rows.push_back(std::move(row));
  }
  return chart;
}

Chart PlaceChart(const PlaceInput& input) {
  constexpr double kPlaceHeight = 240;
  Chart chart{kWidth, kPlaceHeight, input.title, input.description, {}, {}, {}, {}, {}, {}};
  int worst = 10;
  for (const auto& place : input.places) worst = std::max(worst, place.value_or(1));
  const double bottom = kPlaceHeight - kBottom;
  const double right = kWidth - 8;
  // A bar of the worst place is still one to be seen.
  const Scale up{static_cast<double>(worst) + 1, 1, bottom, kTop};
  for (double tick : Ticks(1, worst, 6)) {
    tick = std::max(tick, 1.0);
    chart.rules.push_back({{kLeft, up.At(tick)}, {right, up.At(tick)}, false});
    chart.labels.push_back({{kLeft - 6, up.At(tick) + kTextDrop}, NumberText(tick), Anchor::End, {}});
  }
  chart.rules.push_back({{kLeft, bottom}, {right, bottom}, true});
  const double slot =
      (right - kLeft - 8) / static_cast<double>(std::max<std::size_t>(input.places.size(), 8));
  const double width = std::max(1.0, slot * 0.72);
  std::vector<double> places(input.places.size());
  chart.numbers.columns = {input.entryHeading, "Finish"};
  for (std::size_t i = 0; i < input.places.size(); ++i) {
    const double left = kLeft + 6 + slot * static_cast<double>(i);
    places[i] = left + width / 2;
    const std::string entry = fmt::format("{}. {}", input.entryNumbers[i], input.entries[i]);
    const std::optional<int> place = input.places[i];
    chart.numbers.rows.push_back({entry, place ? std::to_string(*place) : "--"});
    if (!place) continue;
    const double top = up.At(*place);
    chart.bars.push_back(
        {{left, top}, width, bottom - top, *place == 1, {0, i, static_cast<double>(*place)}});
  }
  NumberEntries(chart, input.entryNumbers, places, kPlaceHeight - 10);
  return chart;
}

Chart ShiftChart(const ShiftInput& input) {
  constexpr double kRow = 19;
  constexpr double kNames = 170;
  constexpr std::size_t kNameLength = 24;
  constexpr double kChange = 34;  // the room for the number at a bar's end
  Chart chart{kWidth,      2 * kTop + kRow * static_cast<double>(input.rows.size()),
              input.title, input.description,
              {},          {},
              {},          {},
              {},          {}};
  int gained = 0;
  int lost = 0;
  for (const auto& row : input.rows) {
    gained = std::max(gained, row.from - row.to);
    lost = std::max(lost, row.to - row.from);
  }
  const Scale across{static_cast<double>(-lost), static_cast<double>(std::max(gained, 1 - lost)),
                     kNames + kChange, kWidth - kChange};
  const double zero = across.At(0);
  chart.rules.push_back({{zero, kTop - 6}, {zero, chart.height - kTop + 6}, true});
  chart.numbers.columns = {"Driver", "Start", "Finish", "Places gained"};
  for (std::size_t i = 0; i < input.rows.size(); ++i) {
    const auto& row = input.rows[i];
    const int shift = row.from - row.to;
    const double top = kTop + kRow * static_cast<double>(i);
    const double end = across.At(shift);
    const double text = top + kRow / 2 + kTextDrop;
    const std::string change = shift > 0 ? fmt::format("+{}", shift) : std::to_string(shift);
    chart.labels.push_back({{kNames - 4, text}, Cut(row.name, kNameLength), Anchor::End, {}});
    chart.labels.push_back(
        {{shift < 0 ? end - 5 : end + 5, text}, change, shift < 0 ? Anchor::End : Anchor::Start, {}});
    chart.bars.push_back({{std::min(zero, end), top + 3},
                          std::abs(end - zero),
                          kRow - 6,
                          shift > 0,
                          {2, i, static_cast<double>(shift)}});
    chart.numbers.rows.push_back({row.name, std::to_string(row.from), std::to_string(row.to), change});
  }
  return chart;
}

std::string Describe(const Chart& chart, const Value& value) {
  const auto& row = chart.numbers.rows[value.entry];
  return fmt::format("{}, {}: {}", row.front(), chart.numbers.columns[value.series + 1],
                     row[value.series + 1]);
}

const Value* ValueAt(const Chart& chart, Point point, double reach) {
  for (const Bar& bar : chart.bars) {
    if (point.x >= bar.at.x && point.x <= bar.at.x + bar.width && point.y >= bar.at.y &&
        point.y <= bar.at.y + bar.height)
      return &bar.value;
  }
  const Value* nearest = nullptr;
  double least = reach;
  for (const Mark& mark : chart.marks) {
    const double distance = std::hypot(mark.at.x - point.x, mark.at.y - point.y);
    if (distance > least) continue;
    least = distance;
    nearest = &mark.value;
  }
  return nearest;
}

}  // namespace scorvane::charts
