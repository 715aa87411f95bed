// Commands that list, compare and publish.
#include "programs/cli/CommandLine.h"

#include <fmt/format.h>

#include <utility>

#include "championship/Title.h"
#include "programs/cli/Choices.h"

namespace scorvane::cli {

namespace {

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

}  // namespace

void CommandLine::AddGroupCommand(const char* name, const char* help, championship::GroupKind kind) {
  CLI::App* command = AddForLeague(name, help, [this, kind] {
    group_.path = league_;
    group_.kind = kind;
    EditGroups(common_, group_);
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

void CommandLine::AddChampionshipCommands() {
  AddGroupCommand("team", "Keep the league's teams and who drives for them", championship::GroupKind::Team);
  AddGroupCommand("make", "Keep the league's makes and who drives them", championship::GroupKind::Make);
  CLI::App* playoff = AddForLeague("playoff", "Keep the league's playoff", [this] {
    playoff_.path = league_;
    EditPlayoff(common_, playoff_);
  });
  playoff->add_option("ACTION", playoff_.action, "What to do")
      ->required()
      ->check(CLI::IsMember({"set", "show", "clear", "preset"}))
      ->type_name("");
  playoff->add_option("NAME", playoff_.name,
                      "set: the file, - for standard input; preset: its name, without one they are listed");
  playoff->add_option("--after", playoff_.after, "preset: after how many races it begins")
      ->check(CLI::Range(1, 10000))
      ->type_name("N");
  playoff->footer(std::string(kPlayoffHelp) + kCommonOptions);
}

void CommandLine::AddQueryCommands() {
  AddForLeague("races", "List the races", [this] { Races(common_, league_); });
  CLI::App* results = AddForLeague("results", "List the results of a race in finishing order",
                                   [this] { Results(common_, league_, raceId_); });
  results->add_option("RACEID", raceId_, "The race's number, as `races` lists it")->required();
  AddForLeague("drivers", "List the drivers", [this] { Drivers(common_, league_); });
  CLI::App* reports = Add("reports", "List the reports", [this] { Reports(common_, league_); });
  reports->add_option("LEAGUE", league_, "A league file: its own reports, too");
  CLI::App* standings = AddForLeague("standings", "Show the standings, or another report", [this] {
    standings_.path = league_;
    Standings(common_, standings_);
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
  CLI::Option* remaining = standings
                               ->add_option("--remaining", standings_.remaining,
                                            "Who can still win the title in so many races, and what it takes")
                               ->check(CLI::Range(0, championship::kMostRemaining))
                               ->type_name("N");
  standings->get_option("--report")->excludes(whatIf)->excludes(remaining);
  whatIf->excludes(remaining);
  AddPageCommands();

  CLI::App* convert = Add("convert", "Bring a league file of the old database format over into a new one",
                          [this] { Convert(common_, league_, folder_); });
  convert->add_option("OLD", league_, "The old file; it is only read")->required();
  convert->add_option("NEW", folder_, "The new league file")->required();
  AddForLeague("check", "Look a league file over, without changing it", [this] { Check(common_, league_); });

  CLI::App* sql = Add("sql", "Run one SQL statement on a league file or the template",
                      [this] { Sql(common_, league_, statement_); });
  sql->add_option("DATABASE", league_, "The file")->required();
  sql->add_option("STATEMENT", statement_, "SELECT, INSERT, UPDATE or DELETE")->required();
}

void CommandLine::AddPageCommands() {
  CLI::App* page =
      AddForLeague("export", "Write a report or a race's results as an HTML page or a spreadsheet", [this] {
        export_.path = league_;
        if (!folder_.empty()) return ExportAll(common_, league_, folder_);
        if (!season_.empty()) return ExportSeason(common_, league_, season_);
        Export(common_, export_);
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
                                [this] { Look(common_, league_, sets_); });
  look->add_option("--set", sets_, "Change a part of it, by the name that the list shows")
      ->type_name("NAME=VALUE");
  CLI::App* columns = Add("columns", "List, order, show and hide the columns of a report (in every league)",
                          [this] { Columns(common_, columns_); });
  columns->add_option("REPORT", columns_.report, "The report's name")->required();
  columns->add_option("--order", columns_.order, "These columns first, in this order")
      ->delimiter(',')
      ->type_name("NAME,...");
  columns->add_option("--show", columns_.show, "Show these columns")->delimiter(',')->type_name("NAME,...");
  columns->add_option("--hide", columns_.hide, "Hide these columns")->delimiter(',')->type_name("NAME,...");

  AddSiteCommand();
}

void CommandLine::AddSiteCommand() {
  CLI::App* site =
      AddForLeague("site", "Publish the season as a site: pages, charts, data and a feed", [this] {
        site_.path = league_;
        Site(common_, site_);
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
  site->add_option("--chart", site_.chart,
                   "Whose points are drawn race by race, at most 20 (default: the first ten)")
      ->type_name("DRIVER");
  site->add_flag("--show", site_.show, "List what the league remembers of its site; write nothing");
  site->footer(std::string("What differs is written, what is there stays. Files of others in the folder are\n"
                           "left alone. Folder, theme, address, colour, logo and chart are kept in the\n"
                           "league; \"\" takes one of them back.\n") +
               kCommonOptions);
}

}  // namespace scorvane::cli
