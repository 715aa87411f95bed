#!/usr/bin/env python3
"""Goes through every window of the program with the keyboard and lists what a screen reader would miss.

usage: walk.py [--only-main] LEAGUE OFFLINE-LEAGUE RESULT-FILE...

Runs beside the program on a display of its own; `run` starts both. Exit status 1 when there are findings, 2 when the
walk could not be finished. --only-main looks at the main window alone.
"""

import sys
import time

import pyatspi

import checks
from desk import Desk, Stuck, children, nodes


class Walk:
    def __init__(self, desk):
        self.desk = desk
        self.findings = []
        self.main = "Scorvane"  # how the main window's title begins
        self.windows = 0
        self.stops = 0

    def look(self, title, name=None):
        window = self.desk.window(title)
        name = name or title
        self.windows += 1
        self.stops += len(checks.stops(window))
        start = time.monotonic()
        for finding in checks.look(self.desk, window):
            self.findings.append(f"{name}: {finding}")
            print(f"  {name}: {finding}", flush=True)
        print(f"{name}: {len(checks.stops(window))} stops, {time.monotonic() - start:.1f} s", flush=True)
        return window

    def look_at_tabs(self, title):
        """Every page of a window with tabs."""
        window = self.desk.window(title)
        tabs = next(n for n in nodes(window) if n.getRole() == pyatspi.ROLE_PAGE_TAB_LIST)
        pages = [t.name for t in children(tabs) if t.getRole() == pyatspi.ROLE_PAGE_TAB]
        for index, page in enumerate(pages):
            if index > 0:
                self.desk.focus(tabs)
                self.desk.keys("Right")
                self.desk.pump(0.2)
            self.look(title, f"{title}, {page}")
        return window

    def leave(self, title):
        self.desk.window(title)
        self.desk.keys("Escape")
        self.desk.gone(title)

    def visit(self, title, name=None):
        self.look(title, name)
        self.leave(title)

    def visit_tabs(self, title):
        self.look_at_tabs(title)
        self.leave(title)

    def press(self, title, button):
        self.desk.press(self.desk.window(title), button)

    def choose(self, menu_key, item):
        self.desk.choose(self.main, menu_key, item)

    def take(self, title):
        """The keyboard to the window's first stop: behind the system's file dialog it may be at none."""
        window = self.desk.window(title)
        self.desk.focus(next(iter(checks.stops(window).values())))

    def open(self, *paths):
        """Files, in the system's dialog, which is not the program's own."""
        self.desk.pump(0.4)
        self.desk.type(" ".join(f'"{p}"' for p in paths) if len(paths) > 1 else paths[0])
        self.desk.keys("Return")


def main_window(walk, league):
    desk = walk.desk
    walk.visit("Notice")
    walk.visit_tabs("Options")
    walk.look("Scorvane", "Main window without a league")
    walk.choose("alt+f", "New")
    walk.visit("New Scorvane File")
    walk.choose("alt+f", "Open...")
    walk.open(league)
    walk.main = "season"
    walk.choose("alt+f", "Properties")
    walk.visit("Properties")
    walk.look("season", "Main window")
    desk.keys("ctrl+f")
    desk.pump(0.2)
    walk.look("season", "Main window, filter")
    desk.keys("Escape")


def race_menu(walk, files):
    walk.choose("alt+r", "Import...")
    walk.look("Import", "Import, empty")
    walk.press("Import", "Add")
    walk.open(*files)
    walk.take("Import")
    walk.look("Import")
    walk.press("Import", "Edit")
    walk.visit("Race Results", "Race Results, not imported")
    walk.leave("Import")
    walk.choose("alt+r", "Remove")
    walk.visit("Confirmation")
    walk.choose("alt+r", "Edit...")
    walk.look("Race Results")
    walk.press("Race Results", "Edit")
    walk.look("Edit Driver Race Result")
    walk.press("Edit Driver Race Result", "Drivers...")
    walk.visit("Select a Driver")
    walk.leave("Edit Driver Race Result")
    walk.press("Race Results", "Penalty...")
    walk.visit("Penalty")
    walk.leave("Race Results")
    walk.choose("alt+r", "HTML")
    walk.visit_tabs("Export Race Results")
    walk.choose("alt+r", "Calculate...")
    walk.look("Points and Stats")
    walk.press("Points and Stats", "Columns...")
    walk.visit("Columns for")
    walk.press("Points and Stats", "HTML...")
    walk.leave("Export to HTML")
    walk.leave("Points and Stats")


def tools_and_season_menus(walk):
    walk.choose("alt+t", "Driver List")
    walk.look("Driver List")
    walk.press("Driver List", "Edit")
    walk.visit_tabs("Edit Driver")
    walk.leave("Driver List")
    walk.choose("alt+t", "Point System")
    walk.visit("Point System")
    walk.choose("alt+s", "History...")
    walk.visit("History")
    walk.choose("alt+s", "Penalties...")
    walk.visit("Penalties")
    walk.choose("alt+s", "Teams...")
    walk.look("Teams and Makes")
    walk.press("Teams and Makes", "Join...")
    walk.visit("Join")
    walk.look_at_tabs("Teams and Makes")
    walk.leave("Teams and Makes")
    walk.choose("alt+s", "Playoff...")
    walk.visit("Playoff")
    walk.choose("alt+s", "What If...")
    walk.visit_tabs("What If")
    walk.choose("alt+s", "Season View")
    walk.visit_tabs("Season")
    walk.choose("alt+s", "Publish Site...")
    walk.visit("Publish Site")
    walk.choose("alt+h", "About")
    walk.visit("Scorvane", "About")


def offline_league(walk, league):
    walk.choose("alt+f", "Open...")
    walk.open(league)
    walk.main = "offline"
    walk.choose("alt+t", "Offline Settings")
    walk.visit("Offline League Settings")
    walk.desk.window(walk.main)
    walk.desk.keys("ctrl+i")
    walk.visit("Import", "Import, off-line league")


def main():
    arguments = sys.argv[1:]
    only_main = arguments[:1] == ["--only-main"]
    league, offline, *files = arguments[1:] if only_main else arguments
    walk = Walk(Desk("scorvane"))
    start = time.monotonic()
    try:
        walk.desk.bring("Notice")
        walk.desk.listen()
        if only_main:
            walk.leave("Notice")
            walk.leave("Options")
            walk.look("Scorvane", "Main window without a league")
        else:
            main_window(walk, league)
            race_menu(walk, files)
            tools_and_season_menus(walk)
            offline_league(walk, offline)
    except Stuck as stuck:
        print(f"accessibility: the walk is stuck: {stuck}")
        return 2
    print(f"{walk.windows} windows and pages, {walk.stops} stops of the keyboard, {len(walk.findings)} findings, "
          f"{time.monotonic() - start:.0f} s")
    return 1 if walk.findings else 0


if __name__ == "__main__":
    sys.exit(main())
