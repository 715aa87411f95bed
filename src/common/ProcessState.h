// What one run of the program shares. The main window owns one, the command line owns one, a test makes one.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/Value.h"

namespace scorvane::import {
class CTracks;  // the track catalogue
}

namespace scorvane::common {

enum SimType : std::int16_t {
  kNascarRacing3 = 0,
  kNascarLegends = 1,
  kNascarRacing2 = 2,
  kNascarRacing4 = 3,
  kNascarRacing2002 = 4,
  kNascarRacing2003 = 5,
};
enum LeagueType : std::int32_t { kOnline = 0, kOffline = 1 };
enum LapReportingMethod : std::int16_t { kLapSpeed = 0, kLapTime = 1 };

// The place of a simulation's folder among the five; none for NASCAR Racing 2, which has no folder here.
inline std::optional<std::size_t> SimFolderIndex(std::int16_t simType) {
  if (simType == kNascarRacing3 || simType == kNascarLegends) return simType;
  if (simType >= kNascarRacing4 && simType <= kNascarRacing2003) return simType - 1;
  return std::nullopt;
}

// Points (and prize money) by finishing position; positions count from 1, columns from 0.
class PointTable {
 public:
  PointTable() = default;
  PointTable(int positions, int columns)
      : columns_(columns), cells_(static_cast<std::size_t>(positions) * static_cast<std::size_t>(columns)) {}

  int Positions() const { return columns_ == 0 ? 0 : static_cast<int>(cells_.size()) / columns_; }
  engine::Value& Cell(int position, int column) { return cells_[Place(position, column)]; }
  const engine::Value& Cell(int position, int column) const { return cells_[Place(position, column)]; }

 private:
  std::size_t Place(int position, int column) const {
    return static_cast<std::size_t>(position - 1) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(column);
  }
  int columns_ = 0;
  std::vector<engine::Value> cells_;
};

struct ProcessState {
  // Of the open league.
  std::int16_t simType = kNascarRacing3;
  std::int32_t leagueType = kOnline;
  std::int16_t droppedRaces = 0;
  bool useCustomPointSystem = false;
  bool useCustomBonusSystem = false;
  std::int16_t lapReportingMethod = kLapSpeed;
  PointTable pointTable;

  // Of the run.
  std::array<std::string, 5> simFolders;  // by folder index; blank when not known
  char decimalSeparator = '.';
  std::shared_ptr<import::CTracks> tracks;  // null until built
  std::string tracksFolder;                 // of the simulation that they were read from
};

}  // namespace scorvane::common
