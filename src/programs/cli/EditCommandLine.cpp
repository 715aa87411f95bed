// Commands that change a league.
#include "programs/cli/CommandLine.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "championship/Title.h"
#include "programs/cli/Choices.h"

namespace scorvane::cli {

void CommandLine::AddLeagueCommands() {
  CLI::App* create = Add("create", "Make a new league file", [this] {
    create_.path = league_;
    Create(common_, create_);
  });
  create->add_option("LEAGUE", league_, "The new file; .lgx is added when it is missing")->required();
  AddChoice(create, "--sim", create_.simType, kSimTypes,
            "The simulation: 0 to 5, or nr3, legends, nr2, nr4, nr2002, nr2003")
      ->required();
  AddChoice(create, "--type", create_.leagueType, kLeagueTypes,
            "online: each file is a race; offline: the files of an import are one event");
  create
      ->add_option("--drop", create_.droppedRaces, "How many of a driver's worst races do not count, 0 to 10")
      ->check(CLI::Range(0, 10))
      ->type_name("N");
  AddChoice(create, "--laps", create_.lapReportingMethod, kLapMethods, "Show qualifying as speed or time");
  create->add_option("--heading", create_.heading, "The league's name, as its pages are headed")
      ->type_name("TEXT");
  create->add_flag("--replace", create_.replace, "Replace a file of that name");

  CLI::App* import =
      AddForLeague("import", "Import result files; all of them or, when one fails, none", [this] {
        import_.path = league_;
        Import(common_, import_);
      });
  import
      ->add_option(
          "FILE", import_.files,
          "Result files that the simulation wrote, standings files (*.stn) or exported pages (*.html), or "
          "folders with such files; - is a file that comes through standard input")
      ->required();
  AddChoice(
      import, "--qualifying", import_.qualifying, kLapMethods,
      "What the qualifying column of standings files holds (default: the league's lap reporting method)");
  import
      ->add_option(
          "--sim-folder", import_.simFolder,
          "Where the simulation that exported the pages is installed; its tracks are read from there "
          "(default: the folder that the template knows)")
      ->type_name("DIR");
  CLI::Option* again =
      import->add_flag("--again", import_.again, "Import files, too, that the league has already");
  import
      ->add_flag("--replace", import_.replace,
                 "Let files that the league has already take the place of their races' results; the races' "
                 "penalties count anew")
      ->excludes(again);
  import->add_flag("--no-alerts", import_.noAlerts, "Do not say which page is no race final or was edited");

  CLI::App* recalculate =
      AddForLeague("recalculate", "Number and score races anew (hand edits of points are lost)",
                   [this] { Recalculate(common_, league_, raceIds_); });
  recalculate->add_option("RACEID", raceIds_, "Which races (default: all)");

  CLI::App* settings = AddForLeague("settings", "List, show or change the league's settings",
                                    [this] { Settings(common_, league_, settingId_, settingValue_); });
  CLI::Option* id = settings->add_option("ID", settingId_, "The setting's number");
  settings->add_option("VALUE", settingValue_, "Its new value")->needs(id);
}

void CommandLine::AddEditCommands() {
  CLI::App* criteria = AddForLeague("criteria", "List or order what ranks the drivers of an off-line event",
                                    [this] { Criteria(common_, league_, criteria_); });
  criteria
      ->add_option("--order", criteria_,
                   "The criteria that decide first, in their order; the others stay behind")
      ->type_name("ID,ID,...")
      ->delimiter(',');

  CLI::App* driver = AddForLeague("driver", "Add, change, merge and remove drivers", [this] {
    driver_.path = league_;
    EditDrivers(common_, driver_);
  });
  driver->add_option("ACTION", driver_.action, "What to do")
      ->required()
      ->check(CLI::IsMember({"add", "rename", "exclude", "include", "rookie", "handicap", "merge", "remove"}))
      ->type_name("");
  driver->add_option("NAME", driver_.names, "The driver; see below for what follows")->required();
  driver->add_flag("--rookie", driver_.rookie, "add: the driver is a rookie");
  driver->add_flag("--exclude", driver_.exclude, "add: the driver is excluded from imports");
  driver->add_option("--handicap", driver_.handicap, "add: the driver's handicap")->type_name("N");
  driver->add_flag("--yes", driver_.yes, "remove: do not ask");
  driver->footer(
      std::string("add NAME, rename NAME NEW, exclude NAME..., include NAME..., rookie NAME on|off,\n"
                  "handicap NAME N (kept for you: the scoring does not use it),\n"
                  "merge NAME INTO (NAME's results go to INTO), remove NAME...\n") +
      kCommonOptions);
  AddForLeague("remove-excluded-results",
               "Remove the results of excluded drivers and recalculate every race (hand edits of points are "
               "lost)",
               [this] { RemoveExcluded(common_, league_); });

  CLI::App* points = Add("points", "List or replace the league's own point system", [this] {
    points_.path = league_;
    if (presets_) return PointPresets(common_);
    Points(common_, points_);
  });
  CLI::Option* league = points->add_option("LEAGUE", league_, "The league file");
  CLI::Option* set = points
                         ->add_option("--set", points_.file,
                                      "A file of lines Position,Points,PrizeMoney; - for standard input")
                         ->type_name("FILE.csv");
  points
      ->add_option("--preset", points_.preset,
                   "A point system that comes with the program, with its bonus points")
      ->excludes(set)
      ->type_name("NAME");
  CLI::Option* presets = points->add_flag("--presets", presets_, "List these, without a league");
  points->parse_complete_callback([league, presets] {
    if (league->count() + presets->count() == 0) throw CLI::RequiredError("LEAGUE");
  });
  AddChoice(points, "--use", points_.use, kSwitches, "Score with it: on or off");
  CLI::App* bonus = AddForLeague("bonus", "List the bonus rules, or set their points", [this] {
    points_.path = league_;
    Bonus(common_, points_);
  });
  bonus->add_option("--set", points_.sets, "Points of a rule")->type_name("ID=POINTS");
  AddChoice(bonus, "--use", points_.use, kSwitches, "Score with these rules: on or off");

  CLI::App* race = AddForLeague("race", "Remove races with their results", [this] {
    race_.path = league_;
    EditRaces(common_, race_);
  });
  race->add_option("ACTION", race_.action, "What to do")
      ->required()
      ->check(CLI::IsMember({"remove"}))
      ->type_name("");
  race->add_option("RACEID", race_.ids, "The races' numbers, as `races` lists them")->required();
  race->add_flag("--yes", race_.yes, "remove: do not ask");

  CLI::App* result = AddForLeague("result", "Add, edit or remove a driver's result in a race", [this] {
    result_.path = league_;
    EditResults(common_, result_);
  });
  result->add_option("ACTION", result_.action, "What to do")
      ->required()
      ->check(CLI::IsMember({"add", "edit", "remove"}))
      ->type_name("");
  result->add_option("RACEID", result_.raceId, "The race's number, as `races` lists it")->required();
  result->add_option("DRIVER", result_.drivers, "Whose result")->required();
  static constexpr const char* kFields[] = {"--finish",     "--start",   "--name",  "--laps",
                                            "--led",        "--points",  "--bonus", "--avg-speed",
                                            "--qualifying", "--winnings"};
  static constexpr const char* kHelp[] = {"Finishing position",
                                          "Starting position",
                                          "edit: another driver's name",
                                          "Laps run",
                                          "Laps led",
                                          "Points, bonus included",
                                          "Bonus points",
                                          "Average speed (off-line leagues)",
                                          "Speed in mph or, where the league reports times, seconds",
                                          "Prize money"};
  for (std::size_t i = 0; i < result_.fields.size(); ++i) {
    result
        ->add_option_function<std::string>(
            kFields[i], [this, i](const std::string& text) { result_.fields[i] = text; }, kHelp[i])
        ->type_name(std::string_view(kFields[i]) == "--name" ? "TEXT" : "N");
  }
  result->add_option("--reason", result_.reason, "Reason out")->type_name("TEXT");
  result->add_flag("--yes", result_.yes, "remove: do not ask");
  AddPenaltyCommand();
}

void CommandLine::AddPenaltyCommand() {
  CLI::App* penalty = AddForLeague("penalty", "Give, list and take back penalties", [this] {
    penalty_.path = league_;
    Penalties(common_, penalty_);
  });
  penalty->add_option("ACTION", penalty_.action, "What to do")
      ->required()
      ->check(CLI::IsMember({"add", "list", "remove"}))
      ->type_name("");
  penalty->add_option("ID", penalty_.id, "add: the race's number; remove: the penalty's, as `list` shows it");
  penalty->add_option("DRIVER", penalty_.driver, "add: whose result");
  const auto text = [penalty](const char* flag, std::optional<std::string>& target, const char* help) {
    return penalty->add_option_function<std::string>(
        flag, [&target](const std::string& typed) { target = typed; }, help);
  };
  text("--points", penalty_.points, "Take points off the result")->type_name("N");
  text("--position", penalty_.position, "Move the result back to a place; the others move up")
      ->type_name("P");
  penalty->add_flag("--disqualify", penalty_.disqualify,
                    "Put the result last, without points, bonus or money; the others move up");
  text("--reason", penalty_.reason, "Why; it is shown with the result")->type_name("TEXT");
  penalty->footer(
      std::string(
          "add RACEID DRIVER (--points N | --position P | --disqualify) --reason TEXT, list, remove ID.\n"
          "Several penalties of a result count in the order in which they were given; a recalculation\n"
          "keeps them.\n") +
      kCommonOptions);
}

void CommandLine::AddHistoryCommands() {
  CLI::App* history = AddForLeague("history", "List what commands changed, the newest first",
                                   [this] { History(common_, league_, clear_); });
  history->add_flag("--clear", clear_, "Forget it all, before the league is given to somebody");
  CLI::App* undo =
      AddForLeague("undo", "Take the last change back", [this] { Undo(common_, league_, count_); });
  CLI::App* redo =
      AddForLeague("redo", "Do again what was taken back last", [this] { Redo(common_, league_, count_); });
  for (CLI::App* command : {undo, redo}) {
    command->add_option("N", count_, "How many changes (default: 1)")
        ->check(CLI::Range(1, 1000000))
        ->type_name("");
  }
  CLI::App* backup = AddForLeague("backup", "Write a whole and checked copy of a league, which may be open",
                                  [this] { Backup(common_, league_, folder_); });
  backup->add_option("FILE", folder_,
                     "The copy (default: in the backup folder, with league and time in its name)");
  CLI::App* restore =
      AddForLeague("restore", "Put a backup in the league's place; what is there is backed up first",
                   [this] { Restore(common_, league_, folder_, yes_); });
  restore->add_option("FILE", folder_, "The backup")->required();
  restore->add_flag("--yes", yes_, "Do not ask");
}

}  // namespace scorvane::cli
