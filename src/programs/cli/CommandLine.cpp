#include "programs/cli/CommandLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <utility>

#include "platform/Platform.h"
#include "programs/cli/Choices.h"

namespace scorvane::cli {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

constexpr const char* kDescription =
    "Scorvane keeps the championship of a racing league: it imports the result files of the NASCAR Racing\n"
    "simulations, scores them, and shows and publishes the standings.\n\n"
    "A season from the first file to the page:\n"
    "  scorvane-cli create season.lgx --sim nr3 --drop 2\n"
    "  scorvane-cli import season.lgx daytona.stn rockingham.stn\n"
    "  scorvane-cli standings season.lgx\n"
    "  scorvane-cli export season.lgx --report \"Point Standings\" -o standings.htm";

constexpr const char* kFooter =
    "Exit status: 0 done, 1 the operation failed, 2 wrong use.\n"
    "`scorvane-cli COMMAND --help` explains a command.";

constexpr std::size_t kTextColumn = 34;
constexpr std::size_t kTerminalWidth = 80;

// Help that fits a terminal: an option's text goes on in its column.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option(const CLI::Option* option, bool isPositional) const override {
    return Entry(make_option_name(option, isPositional) + make_option_opts(option), make_option_desc(option));
  }
  std::string make_description(const CLI::App* app) const override {
    return WrappedLines(CLI::Formatter::make_description(app));
  }
  std::string make_footer(const CLI::App* app) const override {
    return WrappedLines(CLI::Formatter::make_footer(app));
  }
  std::string make_subcommand(const CLI::App* command) const override {
    return Entry(command->get_name(), command->get_description());
  }

 private:
  static std::string Entry(const std::string& name, const std::string& text) {
    std::string entry = "  " + name;
    if (entry.size() + 1 >= kTextColumn) {
      entry += '\n';
      entry.append(kTextColumn, ' ');
    } else {
      entry.resize(kTextColumn, ' ');
    }
    return entry + Wrapped(text, kTextColumn) + '\n';
  }

  // Broken at blanks; what goes on stands under `indent` blanks.
  static std::string Wrapped(const std::string& text, std::size_t indent) {
    std::string wrapped;
    std::size_t column = indent;
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find(' ', begin), text.size());
      if (column > indent && column + 1 + end - begin > kTerminalWidth) {
        wrapped += '\n';
        wrapped.append(indent, ' ');
        column = indent;
      } else if (begin > 0) {
        wrapped += ' ';
        ++column;
      }
      wrapped.append(text, begin, end - begin);
      column += end - begin;
      begin = end + 1;
    }
    return wrapped;
  }

  static std::string WrappedLines(const std::string& text) {
    std::string wrapped;
    for (std::size_t begin = 0; begin <= text.size();) {
      const std::size_t end = std::min(text.find('\n', begin), text.size());
      if (begin > 0) wrapped += '\n';
      wrapped += Wrapped(text.substr(begin, end - begin), 0);
      begin = end + 1;
    }
    return wrapped;
  }
};

}  // namespace

CommandLine::CommandLine() {
  app_.description(kDescription);
  app_.footer(kFooter);
  app_.require_subcommand(1);
  app_.set_version_flag("--version", "scorvane-cli " SCORVANE_VERSION);
  app_.fallthrough();
  app_.formatter(std::make_shared<HelpFormatter>());
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

int CommandLine::Run(std::vector<std::string> arguments) {
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
  } catch (const WrongUse& e) {
    fmt::print(stderr, "scorvane-cli: {}\n", e.what());
    return kWrongUse;
  } catch (const std::exception& e) {
    std::fflush(stdout);
    if (*e.what() != 0) fmt::print(stderr, "scorvane-cli: {}\n", e.what());
    return kFailed;
  }
}

// The first word that is no option must be a command; the parser would only say that one is missing.
void CommandLine::CheckCommand(const std::vector<std::string>& arguments) const {
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

CLI::App* CommandLine::Add(const char* name, const char* help, std::function<void()> run) {
  CLI::App* command = app_.add_subcommand(name, help);
  command->callback([this, run = std::move(run)] { run_ = run; });
  command->footer(kCommonOptions);
  return command;
}

CLI::App* CommandLine::AddForLeague(const char* name, const char* help, std::function<void()> run) {
  CLI::App* command = Add(name, help, std::move(run));
  command->add_option("LEAGUE", league_, "The league file")->required();
  return command;
}

}  // namespace scorvane::cli
