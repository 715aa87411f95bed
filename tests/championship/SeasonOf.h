// Seasons written down by hand.
#pragma once

#include <fmt/format.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "championship/Standings.h"

namespace scorvane::championship {

// A driver's results, race by race: finish and points, and the bonus within the points. Finish 0: not there.
struct Line {
  std::string name;
  struct Cell {
    int finish = 0;
    int points = 0;
    int bonus = 0;
  };
  std::vector<Cell> cells;
};

// Drivers have the keys 1, 2, 3 ... in the order given, which must be that of their names; races likewise.
inline Season SeasonOf(std::initializer_list<Line> lines) {
  Season season;
  std::int32_t id = 0;
  for (const Line& line : lines) {
    SeasonDriver driver{static_cast<std::int32_t>(season.drivers.size()) + 1, line.name, false, {}};
    for (std::size_t race = 0; race < line.cells.size(); ++race) {
      while (season.races.size() <= race)
        season.races.push_back(static_cast<std::int32_t>(season.races.size()) + 1);
      if (line.cells[race].finish == 0) continue;
      SeasonResult result;
      result.id = ++id;
      result.race = race;
      result.finish = line.cells[race].finish;
      result.points = line.cells[race].points;
      result.bonus = line.cells[race].bonus;
      driver.results.push_back(result);
    }
    season.drivers.push_back(std::move(driver));
  }
  season.SortResults();
  return season;
}

// "Avery 50 Chase", a line a driver; without a stage only name and points.
inline std::vector<std::string> Texts(const Season& season, const std::vector<Standing>& standings) {
  std::vector<std::string> texts;
  for (const Standing& standing : standings) {
    texts.push_back(fmt::format("{} {}{}{}", season.drivers[standing.driver].name, standing.points,
                                standing.stage.empty() ? "" : " ", standing.stage));
  }
  return texts;
}

}  // namespace scorvane::championship
