#!/usr/bin/env python3
"""Writes the manual page and the shell completions of scorvane-cli from its own help:

    make_man.py PROGRAM VERSION DATE FOLDER    FOLDER/scorvane-cli.1, scorvane-cli.bash, _scorvane-cli
"""

import os
import re
import subprocess
import sys

EXAMPLES = (
    ("A season from the first file to its pages and its site:",
     ("scorvane-cli create season.lgx --sim nr3 --drop 2 --heading \"Thursday Night League\"",
      "scorvane-cli import season.lgx daytona.stn rockingham.stn",
      "scorvane-cli standings season.lgx",
      "scorvane-cli export season.lgx --report \"Point Standings\" -o standings.htm",
      "scorvane-cli site season.lgx public_html")),
    ("Taking back a mistake:",
     ("scorvane-cli history season.lgx", "scorvane-cli undo season.lgx")),
    ("A penalty, and the table under another point system:",
     ("scorvane-cli penalty season.lgx add 3 \"Jeff Gordon\" --points 25 --reason \"Rough driving\"",
      "scorvane-cli standings season.lgx --what-if points=2004,drop=0")),
)
RESULT_FILES = ("stn", "htm", "html")


class Word:
    """An option or a positional as the help shows it: "--sim nr2|nr3 REQUIRED", "ACTION :{add,list} REQUIRED"."""

    def __init__(self, words, text):
        words, _, others = re.sub(" (Excludes|Needs): ", r"\0\1 ", words).partition("\0")
        relation, *self.others = others.split() or [""]
        self.excluded = self.others if relation == "Excludes" else []
        words, needed = re.subn(" REQUIRED$", "", words)
        words, self.repeated = re.subn(r" \.\.\.$", "", words)
        listed = re.search(r":\{([^}]*)\}", words)
        name, _, self.value = re.sub(r" ?:(\{.*\}|INT in .*)$", "", words).partition(" ")
        self.flags = name.split(",") if name.startswith("-") else []
        self.name = name
        self.choices = listed[1].split(",") if listed else []
        if re.fullmatch(r"[a-z0-9]+(\|[a-z0-9]+)+", self.value):
            self.choices = self.value.split("|")
        self.summary = text
        self.text = text + (f": {', '.join(self.choices)}" if self.choices and not self.flags else "") + ("; needed" if needed and self.flags else "") + (
            f"; {'not' if self.excluded else 'only'} together with {', '.join(self.others)}" if self.others else "")

    def term(self):
        """For the manual page."""
        value = "|".join(self.choices) or self.value
        parts = [f"\\fB{roff(', '.join(self.flags))}\\fR"] if self.flags else [f"\\fI{roff(self.name)}\\fR"]
        if self.flags and value:
            parts.append(f"\\fI{roff(value)}\\fR")
        return " ".join(parts) + (" ..." if self.repeated else "")

    def extensions(self):
        """Of the files that it takes; None when it takes none, empty for any."""
        kind = self.value if self.flags else self.name
        if kind in ("LEAGUE", "OLD"):
            return ["lgx"]
        if kind.startswith("FILE."):
            return [kind.split(".")[1]]
        return [] if kind in ("FILE", "NEW", "DATABASE") else None

    def is_folder(self):
        return (self.value if self.flags else self.name).split("|")[-1] in ("FOLDER", "DIR")

    def is_report(self):
        return "--report" in self.flags or self.name == "REPORT"


class Command:
    """What the help of a command says: positionals and options as (words, description), and the text behind them."""

    def __init__(self, help_text):
        summary, _, rest = help_text.partition("Usage: ")
        lines = ["", *("Usage: " + rest).splitlines()]
        self.summary, self.usage = " ".join(summary.split()), ""
        self.positionals, self.options, self.notes = [], [], []
        section = None
        for line in lines[1:]:
            if line.startswith("Usage: "):
                self.usage = line[len("Usage: "):]
            elif line in ("Positionals:", "Options:"):
                section = self.positionals if line == "Positionals:" else self.options
            elif line and not line.startswith(" "):
                section = None
                self.notes.append(line)
            elif section is not None and line.strip():
                words, _, text = line.strip().partition("  ")
                if line.startswith(" " * 20) and section:
                    section[-1][1] = (section[-1][1] + " " + line.strip()).strip()
                else:
                    section.append([words, text.strip()])
            elif section is None and line.strip():
                self.notes.append(line)
        self.positionals = [Word(*pair) for pair in self.positionals]
        self.options = [Word(*pair) for pair in self.options]


def run(program, *arguments):
    return subprocess.run([program, *arguments], capture_output=True, text=True, check=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8", "COLUMNS": "80"}).stdout


def read(program):
    """The help of all, the options that stand beside every command, and the commands by their names."""
    top = run(program, "--help")
    common = [o for o in Command("\n" + top[top.index("Usage: "):top.index("Subcommands:")]).options
              if not {"--help", "--version"} & set(o.flags)]
    names = re.findall(r"^  ([a-z][a-z-]*) {2,}\S", top.split("Subcommands:")[1], re.MULTILINE)
    return top, common, {name: Command(run(program, name, "--help")) for name in names}


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def items(words):
    return "".join(f".TP\n{word.term()}\n{roff(word.text) or '.br'}\n" for word in words)


def man(top, commands, version, date):
    every = Command("\n" + top[top.index("Usage: "):top.index("Subcommands:")]).options
    page = [f'.TH SCORVANE\\-CLI 1 "{date}" "Scorvane {version}" "User Commands"\n',
            ".SH NAME\nscorvane\\-cli \\- keep the championship of a racing league, by commands\n",
            ".SH SYNOPSIS\n.B scorvane\\-cli\n.RI [ OPTIONS ]\n.I COMMAND\n.RI [ ARGUMENTS ]\n",
            ".SH DESCRIPTION\n", roff(" ".join(top[:top.index("\n\n")].split())), "\n",
            ".SH OPTIONS\nThey stand before or behind the command.\n", items(every), ".SH COMMANDS\n"]
    for name, command in commands.items():
        page.append(f".SS {roff(command.usage.removeprefix('scorvane-cli '))}\n{roff(command.summary)}.\n")
        page.append(items(command.positionals + [o for o in command.options if "--help" not in o.flags]))
        notes = [note for note in command.notes if not note.startswith(("Every command takes", "-q."))]
        if notes:
            page.append(".PP\n.nf\n" + "\n".join(map(roff, notes)) + "\n.fi\n")
    page.append(".SH EXIT STATUS\n.TP\n.B 0\nDone.\n.TP\n.B 1\nThe operation failed; a message says why, and nothing "
                "was changed.\n.TP\n.B 2\nWrong use.\n.SH EXAMPLES\n")
    for text, lines in EXAMPLES:
        page.append(f"{roff(text)}\n.PP\n.nf\n.RS\n" + "\n".join(map(roff, lines)) + "\n.RE\n.fi\n.PP\n")
    page.append(".SH SEE ALSO\n.BR scorvane (1)\n")
    return "".join(page)


def bash_words(word):
    """What completes the word, as a command of the shell; empty when nothing does."""
    if word.choices:
        return f'COMPREPLY=($(compgen -W "{" ".join(word.choices)}" -- "$cur"))'
    if word.is_report():
        return "_scorvane_cli_reports"
    if word.is_folder():
        return "_filedir -d"
    extensions = word.extensions()
    if extensions is None:
        return ""
    return f"_filedir '@({'|'.join(extensions)})'" if extensions else "_filedir"


def bash(common, commands):
    options = lambda words: " ".join(flag for word in words for flag in word.flags)
    cases = "".join(f"    {name}) options=\"{options(command.options)}\" ;;\n" for name, command in commands.items())
    values = "".join(f"    {'|'.join(f'{scope}:{flag}' for flag in word.flags)}) {bash_words(word) or ':'}; return ;;\n"
                     for scope, words in [*((n, c.options) for n, c in commands.items()), ("*", common)] for word in words
                     if word.value or word.choices)
    valued = "|".join(f"{scope}:{flag}" for scope, words in [*((n, c.options) for n, c in commands.items()), ("*", common)]
                      for word in words if word.value or word.choices for flag in word.flags)
    places = ""
    for name, command in commands.items():
        for place, word in enumerate(command.positionals, 1):
            shell = bash_words(word) or ":"
            if name == "import" and word.name == "FILE":
                shell = f"_filedir '@({'|'.join(RESULT_FILES)})'"
            if name == "playoff" and word.name == "NAME":
                shell = "_filedir json"
            places += f"    {name}:{'*' if word.repeated else place}) {shell} ;;\n"
    return f"""# Completions of scorvane-cli for bash: commands, options and their values, leagues and result files, names of reports.
_scorvane_cli_reports() {{
  local IFS=$'\\n' name word league=""
  # What is typed may have quotes around it or backslashes before its blanks.
  for word in "${{words[@]}}"; do
    word=${{word//[\\\\\\"\\']/}}
    [[ $word == *.lgx && -f $word ]] && league=$word
  done
  local typed=${{cur//[\\\\\\"\\']/}}
  while read -r name; do
    [[ ${{name,,}} == "${{typed,,}}"* ]] || continue
    if [[ $cur == [\\"\\']* ]]; then COMPREPLY+=("$name"); else COMPREPLY+=("$(printf %q "$name")"); fi
  done < <(scorvane-cli reports ${{league:+"$league"}} --format csv 2>/dev/null | tail -n +2 | cut -d, -f2-)
}}
_scorvane_cli() {{
  local cur prev words cword
  _init_completion || return
  local command="" word before="" options="" place=0
  for word in "${{words[@]:1:cword-1}}"; do
    case $command:$before in
      {valued}) before=""; continue ;;
    esac
    before=$word
    [[ $word == -* ]] && continue
    if [[ -z $command ]]; then command=$word; else place=$((place + 1)); fi
  done
  case $command in
{cases}  esac
  case $command:$prev in
{values}  esac
  if [[ -z $command && $cur != -* ]]; then
    COMPREPLY=($(compgen -W "{' '.join(commands)}" -- "$cur"))
    return
  fi
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$options {options(common)}" -- "$cur"))
    return
  fi
  case $command:$((place + 1)) in
{places}  esac
}}
complete -F _scorvane_cli scorvane-cli
"""


def zsh_action(word):
    if word.choices:
        return f"({' '.join(word.choices)})"
    if word.is_report():
        return "_scorvane_cli_reports"
    if word.is_folder():
        return "_files -/"
    extensions = word.extensions()
    if extensions is None:
        return " "
    return f'_files -g "*.{extensions[0]}(-.)"' if extensions else "_files"


def zsh(common, commands):
    quoted = lambda text: text.replace("'", "'\\''").replace("[", "\\[").replace("]", "\\]").replace(":", "\\:")
    listed = "".join(f"    '{name}:{quoted(command.summary)}'\n" for name, command in commands.items())

    def zsh_spec(word):
        value = f":{quoted(word.value or word.name)}:{zsh_action(word)}" if word.value or word.choices else ""
        excluded = " ".join([*word.excluded, *([] if word.repeated else word.flags)])
        return "".join(f" '{'*' if word.repeated else f'({excluded})'}{flag}"
                       f"{'=' if value and flag.startswith('--') else ''}[{quoted(word.summary)}]{value}'"
                       for flag in word.flags)

    cases = ""
    for name, command in commands.items():
        positionals = ""
        for place, word in enumerate(command.positionals, 1):
            action = zsh_action(word)
            if name == "import" and word.name == "FILE":
                action = f'_files -g "(#i)*.({"|".join(RESULT_FILES)})(-.)"'
            if name == "playoff" and word.name == "NAME":
                action = '_files -g "*.json(-.)"'
            positionals += f" '{'*' if word.repeated else place}:{word.name.lower()}:{action}'"
        cases += f"    {name}) _arguments{''.join(map(zsh_spec, command.options))} $common{positionals} ;;\n"
    return f"""#compdef scorvane-cli
# Completions of scorvane-cli for zsh: commands, options and their values, leagues and result files, names of reports.
_scorvane_cli_reports() {{
  local -a names league
  league=(${{(M)${{(Q)words}}:#*.lgx}})
  [[ -f $league[1] ]] || league=()
  names=(${{(f)"$(scorvane-cli reports $league --format csv 2>/dev/null | tail -n +2 | cut -d, -f2-)"}})
  compadd -a names
}}
_scorvane_cli() {{
  local -a commands common
  commands=(
{listed}  )
  common=({''.join(map(zsh_spec, common))[1:]})
  if (( CURRENT == 2 )); then
    _describe command commands
    return
  fi
  local command=$words[2]
  shift words
  (( CURRENT-- ))
  case $command in
{cases}  esac
}}
_scorvane_cli "$@"
"""


def main():
    program, version, date, folder = sys.argv[1:]
    top, common, commands = read(os.path.abspath(program))
    os.makedirs(folder, exist_ok=True)
    for name, text in (("scorvane-cli.1", man(top, commands, version, date)), ("scorvane-cli.bash", bash(common, commands)),
                       ("_scorvane-cli", zsh(common, commands))):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main()
