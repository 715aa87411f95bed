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
FILES_OF = {"import": "@(stn|htm|html)", "convert": "lgx", "restore": "lgx"}


class Command:
    """What the help of a command says: positionals and options as (words, description), and the text behind them."""

    def __init__(self, help_text):
        lines = help_text.splitlines()
        self.summary, self.usage = lines[0], ""
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

    def flags(self):
        return [word for words, _ in self.options for word in re.findall(r"(?<![\w-])--?[a-z][a-z-]*", words.split(" ")[0])]


def run(program, *arguments):
    return subprocess.run([program, *arguments], capture_output=True, text=True, check=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8", "COLUMNS": "80"}).stdout


def read(program):
    top = run(program, "--help")
    names = re.findall(r"^  ([a-z][a-z-]*) {2,}\S", top.split("Subcommands:")[1], re.MULTILINE)
    return top, {name: Command(run(program, name, "--help")) for name in names}


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def items(pairs):
    return "".join(f".TP\n.B {roff(words)}\n{roff(text) or '.br'}\n" for words, text in pairs)


def man(top, commands, version, date):
    common = Command("\n" + top[top.index("Usage: "):top.index("Subcommands:")])
    page = [f'.TH SCORVANE\\-CLI 1 "{date}" "Scorvane {version}" "User Commands"\n',
            ".SH NAME\nscorvane\\-cli \\- keep the championship of a racing league, by commands\n",
            ".SH SYNOPSIS\n.B scorvane\\-cli\n.RI [ OPTIONS ]\n.I COMMAND\n.RI [ ARGUMENTS ]\n",
            ".SH DESCRIPTION\n", roff(" ".join(top[:top.index("\n\n")].split())), "\n",
            ".SH OPTIONS\nThey stand before or behind the command.\n", items(common.options), ".SH COMMANDS\n"]
    for name, command in commands.items():
        page.append(f".SS {roff(command.usage.removeprefix('scorvane-cli '))}\n{roff(command.summary)}.\n")
        page.append(items(command.positionals + [o for o in command.options if not o[0].startswith("-h,")]))
        notes = [note for note in command.notes if not note.startswith(("Every command takes", "-q."))]
        if notes:
            page.append(".PP\n.nf\n" + "\n".join(map(roff, notes)) + "\n.fi\n")
    page.append(".SH EXIT STATUS\n.TP\n.B 0\nDone.\n.TP\n.B 1\nThe operation failed; a message says why, and nothing "
                "was changed.\n.TP\n.B 2\nWrong use.\n.SH EXAMPLES\n")
    for text, lines in EXAMPLES:
        page.append(f"{roff(text)}\n.PP\n.nf\n.RS\n" + "\n".join(map(roff, lines)) + "\n.RE\n.fi\n.PP\n")
    page.append(".SH SEE ALSO\n.BR scorvane (1)\n")
    return "".join(page)


def bash(commands):
    cases = "".join(f"    {name}) options=\"{' '.join(command.flags())}\" ;;\n" for name, command in commands.items())
    files = "".join(f"    {name}) files='{pattern}' ;;\n" for name, pattern in FILES_OF.items())
    return f"""# Completions of scorvane-cli for bash: commands, options, leagues and result files, names of reports.
_scorvane_cli() {{
  local cur prev words cword
  _init_completion || return
  local command="" word options="" files="lgx"
  for word in "${{words[@]:1:cword-1}}"; do
    [[ $word == -* ]] || {{ command=$word; break; }}
  done
  case $command in
{cases}    "") COMPREPLY=($(compgen -W "{' '.join(commands)}" -- "$cur")); return ;;
  esac
  case $prev in
    --format) COMPREPLY=($(compgen -W "table csv json" -- "$cur")); return ;;
    --report)
      local IFS=$'\\n' name league=""
      for word in "${{words[@]}}"; do [[ $word == *.lgx ]] && league=$word; done
      while read -r name; do
        [[ ${{name,,}} == "${{cur,,}}"* ]] && COMPREPLY+=("$(printf %q "$name")")
      done < <(scorvane-cli reports $league --format csv 2>/dev/null | tail -n +2 | cut -d, -f2-)
      return ;;
  esac
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
    return
  fi
  case $command in
{files}  esac
  [[ $cword -eq 2 && $command != convert ]] && files="lgx"
  case $prev in
    -o|--output|--set|--template) _filedir ;;
    --all|--sim-folder) _filedir -d ;;
    *) _filedir "$files" ;;
  esac
}}
complete -F _scorvane_cli scorvane-cli
"""


def zsh(commands):
    quoted = lambda text: text.replace("'", "'\\''").replace("[", "\\[").replace("]", "\\]").replace(":", "\\:")
    listed = "".join(f"    '{name}:{quoted(command.summary)}'\n" for name, command in commands.items())
    cases = ""
    for name, command in commands.items():
        options = "".join(f" '{flag}[{quoted(text)}]'" for words, text in command.options
                          for flag in re.findall(r"(?<![\w-])--[a-z][a-z-]*", words.split(" ")[0]))
        pattern = {"import": "*.(stn|htm|html)"}.get(name, "*.lgx")
        cases += f"    {name}) _arguments{options} '1:league:_files -g \"*.lgx\"' '*:file:_files -g \"{pattern}\"' ;;\n"
    return f"""#compdef scorvane-cli
# Completions of scorvane-cli for zsh: commands, options, leagues and result files, names of reports.
_scorvane_cli() {{
  local -a commands
  commands=(
{listed}  )
  if (( CURRENT == 2 )); then
    _describe command commands
    return
  fi
  if [[ $words[CURRENT-1] == --report ]]; then
    local -a names
    names=(${{(f)"$(scorvane-cli reports ${{(M)words:#*.lgx}} --format csv 2>/dev/null | tail -n +2 | cut -d, -f2-)"}})
    compadd -a names
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
    top, commands = read(os.path.abspath(program))
    os.makedirs(folder, exist_ok=True)
    for name, text in (("scorvane-cli.1", man(top, commands, version, date)), ("scorvane-cli.bash", bash(commands)),
                       ("_scorvane-cli", zsh(commands))):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main()
