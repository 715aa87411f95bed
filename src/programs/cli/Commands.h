// The commands of scorvane-cli, each a thin layer over the operations that the window, too, calls.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "championship/Teams.h"
#include "programs/cli/Output.h"

namespace scorvane::cli {

// A command that cannot be done: its text is shown and the exit status is 1.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A command that cannot be meant: its text is shown and the exit status is 2.
class WrongUse : public CommandError {
 public:
  using CommandError::CommandError;
};

// What every command takes.
struct CommonOptions {
  std::string templatePath;  // empty: Kirrelon.dat of the application folder
  char decimal = '.';
  OutputFormat format = OutputFormat::Table;
  bool quiet = false;  // what a command did is not said
};

struct CreateOptions {
  std::string path;
  std::int16_t simType = 0;
  std::int16_t leagueType = 0;
  std::int16_t droppedRaces = 0;
  std::int16_t lapReportingMethod = 0;
  bool replace = false;
  std::string heading;  // of its pages; empty: the one that every new league has
};
void Create(const CommonOptions& common, const CreateOptions& options);

struct ImportOptions {
  std::string path;
  std::vector<std::string> files;
  std::optional<int> qualifying;  // 0 speed, 1 time; the league's own way of reporting laps when not given
  std::string simFolder;          // the simulation's folder; empty: the one that the template knows
  bool noAlerts = false;
  bool again = false;    // also what the league has already
  bool replace = false;  // in the place of what the league has already
};
void Import(const CommonOptions& common, const ImportOptions& options);

// Lists the ranking criteria; with `order`, puts those first and the others behind them as they were.
void Criteria(const CommonOptions& common, const std::string& path, const std::vector<std::int32_t>& order);

void Races(const CommonOptions& common, const std::string& path);
void Results(const CommonOptions& common, const std::string& path, std::int32_t raceId);
void Drivers(const CommonOptions& common, const std::string& path);
// With a league its own reports, too, behind those of the template.
void Reports(const CommonOptions& common, const std::string& path);

struct StandingsOptions {
  std::string path;
  std::string report;  // its name; empty: the first one
  std::optional<std::int32_t> afterRace;
  std::vector<std::string> whatIf;  // KEY=VALUE,...
  std::optional<int> remaining;     // races that are still to come, for the arithmetic of the title
};
void Standings(const CommonOptions& common, const StandingsOptions& options);
// Without ids every race.
void Recalculate(const CommonOptions& common, const std::string& path,
                 const std::vector<std::int32_t>& raceIds);
void Settings(const CommonOptions& common, const std::string& path, std::optional<int> id,
              const std::optional<std::string>& value);

struct ExportOptions {
  std::string path;
  std::string report;  // a report's name, or
  std::optional<std::int32_t> raceId;
  std::string output;
  std::optional<std::string> heading;
  std::optional<std::string> name;
  std::optional<std::string> caption;
};
// A report or a race into an HTML page or, by its extension, a spreadsheet.
void Export(const CommonOptions& common, const ExportOptions& options);
// The whole season into a spreadsheet.
void ExportSeason(const CommonOptions& common, const std::string& path, const std::string& file);
// Every report that has rows, every race, and an index page that links them, into a folder.
void ExportAll(const CommonOptions& common, const std::string& path, const std::string& folder);

// Lists the league's page look, or changes it: NAME=VALUE.
void Look(const CommonOptions& common, const std::string& path, const std::vector<std::string>& sets);

struct ColumnOptions {
  std::string report;
  std::vector<std::string> order;  // headings; the others follow as they stand
  std::vector<std::string> show;
  std::vector<std::string> hide;
};
void Columns(const CommonOptions& common, const ColumnOptions& options);

struct DriverOptions {
  std::string path;
  std::string action;              // add, rename, exclude, include, rookie, handicap, merge, remove
  std::vector<std::string> names;  // what the action works on, as its help says
  bool rookie = false;
  bool exclude = false;
  std::int32_t handicap = 0;
  bool yes = false;
};
void EditDrivers(const CommonOptions& common, const DriverOptions& options);
void RemoveExcluded(const CommonOptions& common, const std::string& path);

struct PointOptions {
  std::string path;
  std::string file;               // of the new point system; empty: none
  std::string preset;             // the name of one that comes with the program
  std::vector<std::string> sets;  // ID=POINTS, of bonus rules
  std::optional<bool> use;
};
void Points(const CommonOptions& common, const PointOptions& options);
void PointPresets(const CommonOptions& common);
void Bonus(const CommonOptions& common, const PointOptions& options);

struct RaceOptions {
  std::string path;
  std::string action;  // remove
  std::vector<std::int32_t> ids;
  bool yes = false;
};
void EditRaces(const CommonOptions& common, const RaceOptions& options);

struct ResultOptions {
  std::string path;
  std::string action;  // add, edit, remove
  std::int32_t raceId = 0;
  std::vector<std::string> drivers;
  // By field of a result entry; not given: as it is, or empty for a new result.
  std::array<std::optional<std::string>, 10> fields;
  std::optional<std::string> reason;
  bool yes = false;
};
void EditResults(const CommonOptions& common, const ResultOptions& options);

struct PenaltyOptions {
  std::string path;
  std::string action;              // add, list, remove
  std::optional<std::int32_t> id;  // of the race, or of the penalty that goes
  std::string driver;
  std::optional<std::string> points;
  std::optional<std::string> position;
  bool disqualify = false;
  std::optional<std::string> reason;
};
void Penalties(const CommonOptions& common, const PenaltyOptions& options);

struct GroupOptions {
  std::string path;
  championship::GroupKind kind = championship::GroupKind::Team;
  std::string action;  // add, rename, remove, join, leave, list, best
  std::vector<std::string> names;
  std::optional<std::int32_t> from;
  std::optional<int> best;
};
void EditGroups(const CommonOptions& common, const GroupOptions& options);

struct PlayoffOptions {
  std::string path;
  std::string action;  // set, show, clear, preset
  std::string name;    // of the file or the preset
  std::optional<int> after;
};
void EditPlayoff(const CommonOptions& common, const PlayoffOptions& options);

struct SiteOptions {
  std::string path;
  std::string folder;  // empty: the one that the league remembers
  // What is given is remembered; an empty text forgets it.
  std::optional<std::string> theme;
  std::optional<std::string> baseUrl;
  std::optional<std::string> accent;
  std::optional<std::string> logo;  // a file
  std::vector<std::string> chart;   // drivers; one empty text: the first ten
  bool show = false;                // nothing is written
};
// Publishes the season as a site.
void Site(const CommonOptions& common, const SiteOptions& options);

// Brings a league file of the old database format over into a new file.
void Convert(const CommonOptions& common, const std::string& from, const std::string& to);
// Looks a league file over without changing it; throws CommandError when something is wrong.
void Check(const CommonOptions& common, const std::string& path);

// What commands changed, newest first; with `clear` it is forgotten.
void History(const CommonOptions& common, const std::string& path, bool clear);
// Takes the last `count` changes back, or does them again.
void Undo(const CommonOptions& common, const std::string& path, int count);
void Redo(const CommonOptions& common, const std::string& path, int count);
// Without a file into the backup folder, with league and time in its name.
void Backup(const CommonOptions& common, const std::string& path, const std::string& file);
void Restore(const CommonOptions& common, const std::string& path, const std::string& file, bool yes);

void Sql(const CommonOptions& common, const std::string& path, const std::string& statement);

}  // namespace scorvane::cli
