// scorvane-cli: the league without a window.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "championship/Title.h"
#include "engine/EngineError.h"
#include "platform/Platform.h"
#include "programs/cli/Choices.h"
#include "programs/cli/Commands.h"

namespace {

using namespace scorvane;
using cli::AddChoice;

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

const std::map<std::string, std::int16_t> kSimTypes = {{"0", 0}, {"nr3", 0},    {"1", 1}, {"legends", 1},
                                                       {"2", 2}, {"nr2", 2},    {"3", 3}, {"nr4", 3},
                                                       {"4", 4}, {"nr2002", 4}, {"5", 5}, {"nr2003", 5}};
const std::map<std::string, int> kLeagueTypes = {{"online", 0}, {"offline", 1}};
const std::map<std::string, int> kLapMethods = {{"speed", 0}, {"time", 1}};
const std::map<std::string, bool> kSwitches = {{"on", true}, {"off", false}};
const std::map<std::string, cli::OutputFormat> kFormats = {
    {"table", cli::OutputFormat::Table}, {"csv", cli::OutputFormat::Csv}, {"json", cli::OutputFormat::Json}};

constexpr const char* kDescription =
    "Scorvane keeps the championship of a racing league: it imports the result files of the NASCAR Racing\n"
    "simulations, scores them, and shows and publishes the standings.\n\n"
    "A season from the first file to the page:\n"
    "  scorvane-cli create season.lgx --sim nr3 --drop 2\n"
    "  scorvane-cli import season.lgx daytona.stn rockingham.stn\n"
    "  scorvane-cli standings season.lgx\n"
    "  scorvane-cli export season.lgx --report \"Point Standings\" -o standings.htm";

constexpr const char* kCommonOptions =
    "Every command takes --template FILE, --decimal CHAR, --format table|csv|json and -q.";

constexpr const char* kPlayoffHelp =
    "set FILE.json, show, clear, preset [NAME]\n\n"
    "A file is {\"name\": TEXT, \"stages\": [{...}, ...]}. Of a stage:\n"
    "  after            races that are driven before it; needed\n"
    "  drivers          how many go on; needed. Who is level with the last goes on, too\n"
    "  name             as the standings show it\n"
    "  by               points, or wins: winners of the races before come first\n"
    "  winnersWithin    only those that high up in points count as winners\n"
    "  leaderIsWinner   true: the leader in points goes on in any case\n"
    "  within           besides, who is so few points behind the leader\n"
    "  wildCards, wildCardsWithin   besides, so many with the most wins among so many\n"
    "  points           what the first starts with; without it everybody keeps his\n"
    "  step, winBonus   so many fewer for each place, so many more for each win\n"
    "  bonusCounts      false: bonus points do not count in this stage\n"
    "\"late\": [{\"race\": RACEID, \"before\": RACEID}] puts a race that was imported late in its place.\n";

constexpr const char* kFooter =
    "Exit status: 0 done, 1 the operation failed, 2 wrong use.\n"
    "`scorvane-cli COMMAND --help` explains a command.";

class CommandLine {
 public:
  CommandLine() {
    app_.description(kDescription);
    app_.footer(kFooter);
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "scorvane-cli " SCORVANE_VERSION);
    app_.fallthrough();
    app_.get_formatter()->column_width(34);
    app_.add_option("--template", common_.templatePath,
                    "The template database (default: the application's own)")
        ->type_name("FILE");
    app_.add_option_function<std::string>(
            "--decimal",
            [this](const std::string& text) {
              if (text != "." && text != ",") throw CLI::ValidationError("--decimal", "it takes . or ,");
              common_.decimal = text[0];
            },
            "The decimal separator (default: the user's locale)")
        ->type_name("CHAR");
    AddChoice(&app_, "--format", common_.format, kFormats, "How lists are printed: table, csv or json");
    app_.add_flag("-q,--quiet", common_.quiet, "Do not say what was done");
    common_.decimal = platform::LocaleDecimalSeparator();
    app_.allow_windows_style_options(false);  // a path may begin with "/" on every system
    AddLeagueCommands();
    AddEditCommands();
    AddQueryCommands();
    AddChampionshipCommands();
    AddHistoryCommands();
  }

  int Run(std::vector<std::string> arguments) {
    arguments.erase(arguments.begin());
    try {
      CheckCommand(arguments);
      // The parser takes them from the end.
      std::reverse(arguments.begin(), arguments.end());
      app_.parse(std::move(arguments));
    } catch (const CLI::ParseError& e) {
      return app_.exit(e) == 0 ? 0 : kWrongUse;
    }
    try {
      run_();
      return std::fflush(stdout) == 0 ? 0 : kFailed;
    } catch (const cli::WrongUse& e) {
      fmt::print(stderr, "scorvane-cli: {}\n", e.what());
      return kWrongUse;
    } catch (const std::exception& e) {
      std::fflush(stdout);
      if (*e.what() != 0) fmt::print(stderr, "scorvane-cli: {}\n", e.what());
      return kFailed;
    }
  }

 private:
  // The first word that is no option must be a command; the parser would only say that one is missing.
  void CheckCommand(const std::vector<std::string>& arguments) const {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const std::string_view word = arguments[i];
      if (word == "--template" || word == "--decimal" || word == "--format") {
        ++i;
      } else if (!word.starts_with('-')) {
        std::string known;
        for (const CLI::App* command : app_.get_subcommands({})) {
          if (command->check_name(std::string(word))) return;
          known += (known.empty() ? "" : ", ") + command->get_name();
        }
        throw CLI::ParseError(fmt::format("There is no command '{}'. The commands are: {}.", word, known),
                              kWrongUse);
      }
    }
  }

  CLI::App* Add(const char* name, const char* help, std::function<void()> run) {
    CLI::App* command = app_.add_subcommand(name, help);
    command->callback([this, run = std::move(run)] { run_ = run; });
    command->footer(kCommonOptions);
    return command;
  }

  CLI::App* AddForLeague(const char* name, const char* help, std::function<void()> run) {
    CLI::App* command = Add(name, help, std::move(run));
    command->add_option("LEAGUE", league_, "The league file")->required();
    return command;
  }

  void AddLeagueCommands() {
    CLI::App* create = Add("create", "Make a new league file", [this] {
      create_.path = league_;
      cli::Create(common_, create_);
    });
    create->add_option("LEAGUE", league_, "The new file; .lgx is added when it is missing")->required();
    AddChoice(create, "--sim", create_.simType, kSimTypes,
              "The simulation: 0 to 5, or nr3, legends, nr2, nr4, nr2002, nr2003")
        ->required();
    AddChoice(create, "--type", create_.leagueType, kLeagueTypes,
              "online: each file is a race; offline: the files of an import are one event");
    create
        ->add_option("--drop", create_.droppedRaces,
                     "How many of a driver's worst races do not count, 0 to 10")
        ->check(CLI::Range(0, 10))
        ->type_name("");
    AddChoice(create, "--laps", create_.lapReportingMethod, kLapMethods, "Show qualifying as speed or time");
    create->add_option("--heading", create_.heading, "The league's name, as its pages are headed")
        ->type_name("TEXT");
    create->add_flag("--replace", create_.replace, "Replace a file of that name");

    CLI::App* import =
        AddForLeague("import", "Import result files; all of them or, when one fails, none", [this] {
          import_.path = league_;
          cli::Import(common_, import_);
        });
    import
        ->add_option(
            "FILE", import_.files,
            "Result files that the simulation wrote, standings files (*.stn) or exported pages (*.html), or "
            "folders with such files")
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
                     [this] { cli::Recalculate(common_, league_, raceIds_); });
    recalculate->add_option("RACEID", raceIds_, "Which races (default: all)");

    CLI::App* settings = AddForLeague("settings", "List, show or change the league's settings",
                                      [this] { cli::Settings(common_, league_, settingId_, settingValue_); });
    CLI::Option* id = settings->add_option("ID", settingId_, "The setting's number");
    settings->add_option("VALUE", settingValue_, "Its new value")->needs(id);
  }

  void AddEditCommands() {
    CLI::App* criteria = AddForLeague("criteria", "List or order what ranks the drivers of an off-line event",
                                      [this] { cli::Criteria(common_, league_, criteria_); });
    criteria
        ->add_option("--order", criteria_,
                     "The criteria that decide first, in their order; the others stay behind")
        ->type_name("ID,ID,...")
        ->delimiter(',');

    CLI::App* driver = AddForLeague("driver", "Add, change, merge and remove drivers", [this] {
      driver_.path = league_;
      cli::EditDrivers(common_, driver_);
    });
    driver->add_option("ACTION", driver_.action, "What to do")
        ->required()
        ->check(
            CLI::IsMember({"add", "rename", "exclude", "include", "rookie", "handicap", "merge", "remove"}))
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
    AddForLeague(
        "remove-excluded-results",
        "Remove the results of excluded drivers and recalculate every race (hand edits of points are "
        "lost)",
        [this] { cli::RemoveExcluded(common_, league_); });

    CLI::App* points = Add("points", "List or replace the league's own point system", [this] {
      points_.path = league_;
      if (presets_) return cli::PointPresets(common_);
      cli::Points(common_, points_);
    });
    CLI::Option* league = points->add_option("LEAGUE", league_, "The league file");
    CLI::Option* set = points->add_option("--set", points_.file, "A file of lines Position,Points,PrizeMoney")
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
      cli::Bonus(common_, points_);
    });
    bonus->add_option("--set", points_.sets, "Points of a rule")->type_name("ID=POINTS");
    AddChoice(bonus, "--use", points_.use, kSwitches, "Score with these rules: on or off");

    CLI::App* race = AddForLeague("race", "Remove races with their results", [this] {
      race_.path = league_;
      cli::EditRaces(common_, race_);
    });
    race->add_option("ACTION", race_.action, "What to do")
        ->required()
        ->check(CLI::IsMember({"remove"}))
        ->type_name("");
    race->add_option("RACEID", race_.ids, "The races' numbers, as `races` lists them")->required();
    race->add_flag("--yes", race_.yes, "remove: do not ask");

    CLI::App* result = AddForLeague("result", "Add, edit or remove a driver's result in a race", [this] {
      result_.path = league_;
      cli::EditResults(common_, result_);
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
          ->type_name("");
    }
    result->add_option("--reason", result_.reason, "Reason out")->type_name("TEXT");
    result->add_flag("--yes", result_.yes, "remove: do not ask");
    AddPenaltyCommand();
  }

  void AddPenaltyCommand() {
    CLI::App* penalty = AddForLeague("penalty", "Give, list and take back penalties", [this] {
      penalty_.path = league_;
      cli::Penalties(common_, penalty_);
    });
    penalty->add_option("ACTION", penalty_.action, "What to do")
        ->required()
        ->check(CLI::IsMember({"add", "list", "remove"}))
        ->type_name("");
    penalty->add_option("ID", penalty_.id,
                        "add: the race's number; remove: the penalty's, as `list` shows it");
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

  void AddHistoryCommands() {
    CLI::App* history = AddForLeague("history", "List what commands changed, the newest first",
                                     [this] { cli::History(common_, league_, clear_); });
    history->add_flag("--clear", clear_, "Forget it all, before the league is given to somebody");
    CLI::App* undo =
        AddForLeague("undo", "Take the last change back", [this] { cli::Undo(common_, league_, count_); });
    CLI::App* redo = AddForLeague("redo", "Do again what was taken back last",
                                  [this] { cli::Redo(common_, league_, count_); });
    for (CLI::App* command : {undo, redo}) {
      command->add_option("N", count_, "How many changes (default: 1)")
          ->check(CLI::Range(1, 1000000))
          ->type_name("");
    }
    CLI::App* backup = AddForLeague("backup", "Write a whole and checked copy of a league, which may be open",
                                    [this] { cli::Backup(common_, league_, folder_); });
    backup->add_option("FILE", folder_,
                       "The copy (default: in the backup folder, with league and time in its name)");
    CLI::App* restore =
        AddForLeague("restore", "Put a backup in the league's place; what is there is backed up first",
                     [this] { cli::Restore(common_, league_, folder_, yes_); });
    restore->add_option("FILE", folder_, "The backup")->required();
    restore->add_flag("--yes", yes_, "Do not ask");
  }

  void AddGroupCommand(const char* name, const char* help, championship::GroupKind kind) {
    CLI::App* command = AddForLeague(name, help, [this, kind] {
      group_.path = league_;
      group_.kind = kind;
      cli::EditGroups(common_, group_);
    });
    command->add_option("ACTION", group_.action, "What to do (default: list)")
        ->check(CLI::IsMember({"add", "rename", "remove", "join", "leave", "list", "best"}))
        ->type_name("");
    command->add_option("NAME", group_.names, "See below for what follows an action");
    command
        ->add_option(
            "--from", group_.from,
            "join, leave: the first race for which it holds, 0 for the start (default: the start for who "
            "comes new, the next race for who changes)")
        ->check(CLI::Range(0, 2147483647))
        ->type_name("RACEID");
    command->add_option("--best", group_.best, "The same as best N")
        ->check(CLI::Range(0, championship::kMostBest))
        ->type_name("N");
    command->footer(
        fmt::format("add NAME, rename NAME NEW, remove NAME, join {} DRIVER..., leave DRIVER..., list,\n"
                    "best N (how many results count in each race, 0 for all)\n{}",
                    kind == championship::GroupKind::Team ? "TEAM" : "MAKE", kCommonOptions));
  }

  void AddChampionshipCommands() {
    AddGroupCommand("team", "Keep the league's teams and who drives for them", championship::GroupKind::Team);
    AddGroupCommand("make", "Keep the league's makes and who drives them", championship::GroupKind::Make);
    CLI::App* playoff = AddForLeague("playoff", "Keep the league's playoff", [this] {
      playoff_.path = league_;
      cli::EditPlayoff(common_, playoff_);
    });
    playoff->add_option("ACTION", playoff_.action, "What to do")
        ->required()
        ->check(CLI::IsMember({"set", "show", "clear", "preset"}))
        ->type_name("");
    playoff->add_option("NAME", playoff_.name,
                        "set: the file; preset: its name, without one they are listed");
    playoff->add_option("--after", playoff_.after, "preset: after how many races it begins")
        ->check(CLI::Range(1, 10000))
        ->type_name("N");
    playoff->footer(std::string(kPlayoffHelp) + kCommonOptions);
  }

  void AddQueryCommands() {
    AddForLeague("races", "List the races", [this] { cli::Races(common_, league_); });
    CLI::App* results = AddForLeague("results", "List the results of a race in finishing order",
                                     [this] { cli::Results(common_, league_, raceId_); });
    results->add_option("RACEID", raceId_, "The race's number, as `races` lists it")->required();
    AddForLeague("drivers", "List the drivers", [this] { cli::Drivers(common_, league_); });
    CLI::App* reports = Add("reports", "List the reports", [this] { cli::Reports(common_, league_); });
    reports->add_option("LEAGUE", league_, "A league file: its own reports, too");
    CLI::App* standings = AddForLeague("standings", "Show the standings, or another report", [this] {
      standings_.path = league_;
      cli::Standings(common_, standings_);
    });
    standings->add_option("--report", standings_.report, "The report's name (default: the first)")
        ->type_name("NAME");
    standings->add_option("--after", standings_.afterRace, "As they stood after this race")
        ->type_name("RACEID");
    CLI::Option* whatIf =
        standings
            ->add_option("--what-if", standings_.whatIf,
                         "Under other rules beside the present ones: points=FILE|PRESET, drop=N, bonus=off, "
                         "without=DRIVER, playoff=FILE|PRESET|none; the league stays as it is")
            ->type_name("KEY=VALUE,...");
    CLI::Option* remaining =
        standings
            ->add_option("--remaining", standings_.remaining,
                         "Who can still win the title in so many races, and what it takes")
            ->check(CLI::Range(0, championship::kMostRemaining))
            ->type_name("N");
    standings->get_option("--report")->excludes(whatIf)->excludes(remaining);
    whatIf->excludes(remaining);

    CLI::App* page =
        AddForLeague("export", "Write a report or a race's results as an HTML page or a spreadsheet", [this] {
          export_.path = league_;
          if (!folder_.empty()) return cli::ExportAll(common_, league_, folder_);
          if (!season_.empty()) return cli::ExportSeason(common_, league_, season_);
          cli::Export(common_, export_);
        });
    CLI::Option* report =
        page->add_option("--report", export_.report, "The report to write")->type_name("NAME");
    CLI::Option* race = page->add_option("--race", export_.raceId, "The race to write")->type_name("RACEID");
    CLI::Option* all =
        page->add_option("--all", folder_, "Every report, every race and an index page, into a folder")
            ->type_name("FOLDER");
    CLI::Option* season =
        page->add_option("--season", season_, "Standings, all finishes and every race as one spreadsheet")
            ->type_name("FILE.xlsx");
    CLI::Option* output =
        page->add_option(
                "-o,--output", export_.output,
                "The page or, when it ends in .xlsx or .csv, the spreadsheet; an older one is replaced")
            ->type_name("FILE");
    output->excludes(all)->excludes(season);
    report->excludes(race)->excludes(all)->excludes(season);
    race->excludes(report)->excludes(all)->excludes(season);
    all->excludes(season);
    page->parse_complete_callback([report, race, all, season, output] {
      if (report->count() + race->count() + all->count() + season->count() == 0)
        throw CLI::ValidationError("export",
                                   "--report NAME, --race RACEID, --all FOLDER or --season FILE is required");
      if (all->count() + season->count() == 0 && output->count() == 0)
        throw CLI::ValidationError("export", "-o FILE is required");
    });
    page->add_option("--heading", export_.heading, "Page heading (default: the league's)")->type_name("TEXT");
    page->add_option("--name", export_.name, "Report name (default: the report's, or the race's track)")
        ->type_name("TEXT");
    page->add_option("--caption", export_.caption,
                     "Table caption (default: how many events count, or length and laps)")
        ->type_name("TEXT");
    CLI::App* look = AddForLeague("look", "List or change how the league's pages look",
                                  [this] { cli::Look(common_, league_, sets_); });
    look->add_option("--set", sets_, "Change a part of it, by the name that the list shows")
        ->type_name("NAME=VALUE");
    CLI::App* columns = Add("columns", "List, order, show and hide the columns of a report (in every league)",
                            [this] { cli::Columns(common_, columns_); });
    columns->add_option("REPORT", columns_.report, "The report's name")->required();
    columns->add_option("--order", columns_.order, "These columns first, in this order")
        ->delimiter(',')
        ->type_name("NAME,...");
    columns->add_option("--show", columns_.show, "Show these columns")->delimiter(',')->type_name("NAME,...");
    columns->add_option("--hide", columns_.hide, "Hide these columns")->delimiter(',')->type_name("NAME,...");

    AddSiteCommand();

    CLI::App* convert = Add("convert", "Bring a league file of the old database format over into a new one",
                            [this] { cli::Convert(common_, league_, folder_); });
    convert->add_option("OLD", league_, "The old file; it is only read")->required();
    convert->add_option("NEW", folder_, "The new league file")->required();
    AddForLeague("check", "Look a league file over, without changing it",
                 [this] { cli::Check(common_, league_); });

    CLI::App* sql = Add("sql", "Run one SQL statement on a league file or the template",
                        [this] { cli::Sql(common_, league_, statement_); });
    sql->add_option("DATABASE", league_, "The file")->required();
    sql->add_option("STATEMENT", statement_, "SELECT, INSERT, UPDATE or DELETE")->required();
  }

  void AddSiteCommand() {
    CLI::App* site =
        AddForLeague("site", "Publish the season as a site: pages, charts, data and a feed", [this] {
          site_.path = league_;
          cli::Site(common_, site_);
        });
    site->add_option("FOLDER", site_.folder, "Where it is written (default: where it was written last)");
    site->add_option("--theme", site_.theme, "classic, paddock, or the folder of a theme of your own")
        ->type_name("NAME|FOLDER");
    site->add_option("--base-url", site_.baseUrl,
                     "The address at which it will be read, for links in chats, the feed and search engines")
        ->type_name("URL");
    site->add_option("--accent", site_.accent, "The league's colour, #RRGGBB")->type_name("COLOUR");
    site->add_option("--logo", site_.logo, "The league's picture: PNG, JPEG, GIF or WebP, at most 200 kB")
        ->type_name("FILE");
    site->add_flag("--show", site_.show, "List what the league remembers of its site; write nothing");
    site->footer(
        std::string(
            "What differs is written, what is there stays. Folder, theme, address, colour and logo are kept "
            "in\n"
            "the league; \"\" takes one of them back. Files of others in the folder are left alone.\n") +
        kCommonOptions);
  }

  CLI::App app_{"", "scorvane-cli"};
  std::function<void()> run_;
  cli::CommonOptions common_;
  std::string league_;
  cli::CreateOptions create_;
  cli::ImportOptions import_;
  cli::ExportOptions export_;
  std::string season_;
  cli::DriverOptions driver_;
  cli::PointOptions points_;
  cli::RaceOptions race_;
  cli::ResultOptions result_;
  cli::PenaltyOptions penalty_;
  std::vector<std::int32_t> raceIds_;
  std::vector<std::int32_t> criteria_;
  std::int32_t raceId_ = 0;
  std::optional<int> settingId_;
  std::optional<std::string> settingValue_;
  cli::StandingsOptions standings_;
  cli::GroupOptions group_;
  cli::PlayoffOptions playoff_;
  std::string folder_;
  std::vector<std::string> sets_;
  cli::ColumnOptions columns_;
  cli::SiteOptions site_;
  std::string statement_;
  bool presets_ = false;
  bool clear_ = false;
  bool yes_ = false;
  int count_ = 1;
};

}  // namespace

int main(int argc, char** argv) {
  try {
    return CommandLine().Run(platform::StartConsoleProgram(argc, argv));
  } catch (const std::exception& e) {
    fmt::print(stderr, "scorvane-cli: {}\n", e.what());
    return kFailed;
  }
}
