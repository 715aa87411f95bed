// What the command line takes: its commands and their options, each bound to what carries it out.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "programs/cli/Commands.h"

namespace scorvane::cli {

inline const std::map<std::string, std::int16_t> kSimTypes = {
    {"0", 0}, {"nr3", 0}, {"1", 1}, {"legends", 1}, {"2", 2}, {"nr2", 2},
    {"3", 3}, {"nr4", 3}, {"4", 4}, {"nr2002", 4},  {"5", 5}, {"nr2003", 5}};
inline const std::map<std::string, int> kLeagueTypes = {{"online", 0}, {"offline", 1}};
inline const std::map<std::string, int> kLapMethods = {{"speed", 0}, {"time", 1}};
inline const std::map<std::string, bool> kSwitches = {{"on", true}, {"off", false}};
inline const std::map<std::string, OutputFormat> kFormats = {
    {"table", OutputFormat::Table}, {"csv", OutputFormat::Csv}, {"json", OutputFormat::Json}};

inline constexpr const char* kCommonOptions =
    "Every command takes --template, --decimal, --format and -q (see --help).";

class CommandLine {
 public:
  CommandLine();

  // Carries out a command and yields the program's exit status. The first argument is the program's name.
  int Run(std::vector<std::string> arguments);

 private:
  void CheckCommand(const std::vector<std::string>& arguments) const;

  CLI::App* Add(const char* name, const char* help, std::function<void()> run);
  CLI::App* AddForLeague(const char* name, const char* help, std::function<void()> run);
  void AddLeagueCommands();
  void AddEditCommands();
  void AddPenaltyCommand();
  void AddHistoryCommands();
  void AddGroupCommand(const char* name, const char* help, championship::GroupKind kind);
  void AddChampionshipCommands();
  void AddQueryCommands();
  void AddPageCommands();
  void AddSiteCommand();

  CLI::App app_{"", "scorvane-cli"};
  std::function<void()> run_;
  CommonOptions common_;
  std::string league_;
  CreateOptions create_;
  ImportOptions import_;
  ExportOptions export_;
  std::string season_;
  DriverOptions driver_;
  PointOptions points_;
  RaceOptions race_;
  ResultOptions result_;
  PenaltyOptions penalty_;
  std::vector<std::int32_t> raceIds_;
  std::vector<std::int32_t> criteria_;
  std::int32_t raceId_ = 0;
  std::optional<int> settingId_;
  std::optional<std::string> settingValue_;
  StandingsOptions standings_;
  GroupOptions group_;
  PlayoffOptions playoff_;
  std::string folder_;
  std::vector<std::string> sets_;
  ColumnOptions columns_;
  SiteOptions site_;
  std::string statement_;
  bool presets_ = false;
  bool clear_ = false;
  bool yes_ = false;
  int count_ = 1;
};

}  // namespace scorvane::cli
