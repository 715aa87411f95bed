#include "charts/Chart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "charts/Svg.h"

namespace scorvane::charts {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TEST(Chart, TicksAreRoundAndCoverTheNumbers) {
  EXPECT_THAT(Ticks(0, 5000, 7), ElementsAre(0, 1000, 2000, 3000, 4000, 5000));
  EXPECT_THAT(Ticks(-30, 145, 7), ElementsAre(0, 50, 100));
  EXPECT_THAT(Ticks(1, 43, 6), ElementsAre(10, 20, 30, 40));
  EXPECT_THAT(Ticks(7, 7, 5), ElementsAre(7));
  EXPECT_EQ(NumberText(-0.001), "0");
  EXPECT_EQ(NumberText(3.50), "3.5");
}

LineInput TwoDrivers() {
  LineInput input;
  input.title = "Points";
  input.entryHeading = "After";
  input.entries = {"Daytona", "Rockingham", "Las Vegas"};
  input.entryNumbers = {1, 2, 3};
  input.series = {{"One", {175, 340, 515}}, {"Two", {170, std::nullopt, 500}}};
  return input;
}

TEST(Chart, LineBreaksWhereAValueIsMissingAndNamesDoNotCover) {
  const Chart chart = LineChart(TwoDrivers());
  ASSERT_EQ(chart.curves.size(), 3U);
  EXPECT_EQ(chart.curves[0].points.size(), 3U);
  EXPECT_LT(chart.curves[0].points[2].y, chart.curves[0].points[0].y) << "more is higher";
  EXPECT_THAT(chart.numbers.rows,
              ElementsAre(ElementsAre("1. Daytona", "175", "170"), ElementsAre("2. Rockingham", "340", ""),
                          ElementsAre("3. Las Vegas", "515", "500")));
  const auto& one = chart.labels[chart.labels.size() - 2];
  const auto& two = chart.labels.back();
  EXPECT_EQ(one.text, "One");
  EXPECT_GE(two.at.y - one.at.y, 14);
  for (const Label& label : chart.labels) {
    EXPECT_GE(label.at.y, 0);
    EXPECT_LE(label.at.y, chart.height);
  }
}

TEST(Chart, FindsTheValueUnderThePointer) {
  const Chart lines = LineChart(TwoDrivers());
  const Point at = lines.curves[0].points[1];
  const Value* value = ValueAt(lines, {at.x + 3, at.y - 3}, 8);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(Describe(lines, *value), "2. Rockingham, One: 340");
  EXPECT_EQ(ValueAt(lines, {at.x + 30, at.y + 30}, 8), nullptr);

  const Chart bars =
      PlaceChart({"Finishes", "", "Race", {"Daytona", "Rockingham"}, {1, 2}, {1, std::nullopt}});
  ASSERT_EQ(bars.bars.size(), 1U);
  EXPECT_TRUE(bars.bars[0].stressed);
  EXPECT_EQ(Describe(bars, *ValueAt(bars, {bars.bars[0].at.x + 1, bars.bars[0].at.y + 1}, 0)),
            "1. Daytona, Finish: 1");
  EXPECT_THAT(bars.numbers.rows[1], ElementsAre("2. Rockingham", "--"));
}

TEST(Chart, ShiftsStandOnEitherSideOfTheirAxis) {
  const Chart chart = ShiftChart({"Places", "", {{"Up", 20, 5}, {"Down", 3, 10}, {"Still", 4, 4}}});
  const double zero = chart.rules[0].from.x;
  EXPECT_DOUBLE_EQ(chart.bars[0].at.x, zero);
  EXPECT_DOUBLE_EQ(chart.bars[1].at.x + chart.bars[1].width, zero);
  EXPECT_EQ(chart.bars[2].width, 0);
  EXPECT_EQ(Describe(chart, chart.bars[0].value), "Up, Places gained: +15");
  for (const ShiftInput& input : {ShiftInput{}, ShiftInput{"", "", {{"Alone", 2, 1}}}})
    EXPECT_EQ(ShiftChart(input).bars.size(), input.rows.size());
}

TEST(Svg, HoldsTextsAsTextsAndStylesOfItsOwn) {
  LineInput input = TwoDrivers();
  input.title = "<script>\x01\xC2\x81\"&";
  input.series[0].name = "</text><b>";
  const std::string svg = WriteSvg(LineChart(input), "c");
  EXPECT_THAT(svg,
              HasSubstr("<title id=\"c-title\">&lt;script&gt;\xEF\xBF\xBD\xEF\xBF\xBD&quot;&amp;</title>"));
  EXPECT_THAT(svg, HasSubstr("&lt;/text&gt;&lt;b&gt;"));
  EXPECT_THAT(svg, Not(HasSubstr("<b>")));
  // The second series is told from the first without colour.
  EXPECT_THAT(svg, HasSubstr("class=\"line s0\" d="));
  EXPECT_THAT(svg, HasSubstr("class=\"line s1\" stroke-dasharray="));
}

TEST(Chart, NothingToShowIsNoFault) {
  EXPECT_TRUE(LineChart({}).curves.empty());
  EXPECT_TRUE(PlaceChart({}).bars.empty());
  EXPECT_TRUE(WriteSvg(LineChart({}), "x").ends_with("</svg>"));
}

}  // namespace
}  // namespace scorvane::charts
