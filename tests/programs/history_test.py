#!/usr/bin/env python3
"""What commands changed is taken back and done again: history_test.py PROGRAM SOURCE_FOLDER [--steps N] [--seed N]

Random commands on a league; every table is dumped after each. Undone to the start and redone to the end, every dump
must be the same as it was, keys included."""

import argparse
import glob
import json
import os
import random
import shutil
import sqlite3
import subprocess
import sys
import tempfile

TABLES = ("Race", "Stats", "Driver", "Settings", "PointSystem", "Bonus", "RankCriteria", "STNRace", "STNStats")
# Made with the first one; without rows they are as if not there.
WITH_PENALTIES = ("Penalty", "PenaltyBase", "Team", "TeamMember", "TeamScoring", "Playoff")
KEPT = 100  # changes between two walks to the start, no more than a league keeps


class Failure(Exception):
    pass


class Walker:
    def __init__(self, program, source, seed):
        self.program, self.dice = program, random.Random(seed)
        self.folder = tempfile.mkdtemp(prefix="scorvane-")
        self.league = os.path.join(self.folder, "league.lgx")
        self.season = sorted(glob.glob(os.path.join(source, "share/samples/season-1998/*.stn")))
        self.event = sorted(glob.glob(os.path.join(source, "tests/data/standings/offline-*.stn")))
        self.environment = {**os.environ, "SCORVANE_HOME": os.path.join(self.folder, "home")}
        os.mkdir(self.environment["SCORVANE_HOME"])

    def run(self, *args):
        return subprocess.run([self.program, *map(str, args)], capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, env=self.environment, timeout=120)

    def rows(self, *args):
        result = self.run(*args, "--format", "json")
        if result.returncode:
            raise Failure(f"{args}: {result.stderr}")
        return json.loads(result.stdout)

    def sql(self, statement):
        # Read from the store itself: a program's start for each table would be most of the time.
        store = sqlite3.connect(f"file:{self.league}?mode=ro", uri=True)
        try:
            store.row_factory = sqlite3.Row
            return [dict(row) for row in store.execute(statement)]
        finally:
            store.close()

    def dump(self):
        there = {row["name"] for row in self.sql("SELECT name FROM sqlite_master WHERE type='table'")}
        dump = {}
        for table in TABLES + WITH_PENALTIES:
            rows = self.sql(f"SELECT * FROM {table}") if table in TABLES or table in there else []
            for row in rows:
                row.pop("Dropped", None)  # The mark of dropped results is derived.
            dump[table] = sorted(repr(row) for row in rows)
        return dump

    def length(self):
        return sum(1 for change in self.rows("history", self.league) if change["State"] != "undone")

    def driver(self):
        drivers = self.sql("SELECT Name FROM Driver")
        return self.dice.choice(drivers)["Name"] if drivers else "Nobody"

    def race(self):
        races = self.sql("SELECT RaceID FROM Race")
        return self.dice.choice(races)["RaceID"] if races else 1

    def penalty(self):
        penalties = self.rows("penalty", self.league, "list")
        return self.dice.choice(penalties)["ID"] if penalties else 1

    def in_race(self, race):
        drivers = self.sql("SELECT Driver.Name AS N FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID "
                           f"WHERE Stats.RaceID={race}")
        return self.dice.choice(drivers)["N"] if drivers else "Nobody"

    def command(self):
        dice, league, race = self.dice, self.league, self.race()
        name = dice.choice(["Zoë O'Brien", " Blank Both ", "<script>alert(1)</script>", "Иван", "x" * 50, "Max \"Q\""])
        number = dice.randint(0, 300)
        return dice.choice([
            lambda: ("import", league, "--again", *dice.sample(self.files, min(len(self.files), dice.randint(1, 3)))),
            lambda: ("import", league, "--again", *dice.sample(self.files, min(len(self.files), dice.randint(2, 3)))),
            lambda: ("race", league, "remove", race, "--yes"),
            lambda: ("recalculate", league, race),
            lambda: ("recalculate", league),
            lambda: ("driver", league, "add", f"{name[:40]}{number}", "--rookie"),
            lambda: ("driver", league, "rename", self.driver(), f"{name[:40]}{number}"),
            lambda: ("driver", league, "merge", self.driver(), self.driver()),
            lambda: ("driver", league, "remove", self.driver(), "--yes"),
            lambda: ("driver", league, dice.choice(["exclude", "include"]), self.driver()),
            lambda: ("driver", league, "handicap", self.driver(), number),
            lambda: ("remove-excluded-results", league),
            lambda: ("result", league, "add", race, name, "--finish", number, "--start", 3, "--points", 50),
            lambda: ("result", league, "edit", race, self.in_race(race), "--points", number),
            lambda: ("result", league, "edit", race, self.in_race(race), "--name", f"New {number}", "--laps", 7),
            lambda: ("result", league, "remove", race, self.in_race(race), "--yes"),
            lambda: ("penalty", league, "add", race, self.in_race(race), "--points", number + 1, "--reason", name),
            lambda: ("penalty", league, "add", race, self.in_race(race), "--position", number % 43 + 1, "--reason", name),
            lambda: ("penalty", league, "add", race, self.in_race(race), "--disqualify", "--reason", name),
            lambda: ("penalty", league, "remove", self.penalty()),
            lambda: ("import", league, "--replace", *dice.sample(self.files, 1)),
            lambda: ("points", league, "--use", dice.choice(["on", "off"])),
            lambda: ("points", league, "--set", self.points()),
            lambda: ("bonus", league, "--set", f"{dice.randint(1, 4)}={dice.randint(0, 9)}"),
            lambda: ("settings", league, dice.choice([2, 4, 6, 17, 101]), dice.randint(0, 1)),
            lambda: ("look", league, "--set", f"heading={name}"),
            lambda: ("criteria", league, "--order", dice.choice(["4,1", "2", "1,2"])),
            lambda: ("standings", league),
            lambda: (dice.choice(["team", "make"]), league, "add", f"{name[:40]}{number}"),
            lambda: ("team", league, "join", "One", self.driver(), *dice.choice([(), ("--from", race)])),
            lambda: ("team", league, "leave", self.driver()),
            lambda: (dice.choice(["team", "make"]), league, *dice.choice([("best", number), ("remove", "One")])),
            lambda: ("playoff", league, *dice.choice([("preset", "2014", "--after", 2), ("clear",)])),
            lambda: ("sql", league, f"UPDATE Stats SET Points=Points+{number} WHERE RaceID={race}"),
            lambda: ("sql", league, "DELETE * FROM PointSystem WHERE Position>40"),
        ])()

    def points(self):
        path = os.path.join(self.folder, "points.csv")
        with open(path, "w", encoding="utf-8") as file:
            for position in range(1, self.dice.randint(2, 50)):
                file.write(f"{position},{100 - position},{position * 10}\n")
        return path

    def season_of_steps(self, steps):
        offline = self.dice.random() < 0.3
        self.files = self.event if offline else self.season
        self.run("create", self.league, "--sim", "nr3", "--replace", "--type", "offline" if offline else "online",
                 "--drop", 2)
        self.rows("races", self.league)  # opened once, it is up to date
        # The tables of teams and playoffs, which are made when the first is, are there from the start.
        self.run("team", self.league, "add", "One")
        self.run("playoff", self.league, "preset", "2004")
        self.run("history", self.league, "--clear")
        dumps, commands = [self.dump()], []
        for _ in range(steps):
            command = self.command()
            before = self.length()
            result = self.run(*command)
            if result.returncode not in (0, 1):
                raise Failure(f"{command}: exit {result.returncode} {result.stderr}")
            after, dump = self.length(), self.dump()
            if after == before:
                if dump != dumps[-1]:
                    raise Failure(f"{command} changed the league, and the history says nothing\n{differ(dumps[-1], dump)}")
                continue
            if result.returncode != 0 or after != before + 1:
                raise Failure(f"{command}: {after - before} changes, exit {result.returncode}")
            dumps.append(dump)
            commands.append(command)
        for walk in ("undo", "redo", "undo"):
            backwards = walk == "undo"
            for step in range(len(commands)):
                result = self.run(walk, self.league)
                place = len(commands) - 1 - step if backwards else step + 1
                if result.returncode != 0 or self.dump() != dumps[place]:
                    what = commands[place if backwards else place - 1]
                    raise Failure(f"{walk} of {what}: {result.stderr}{differ(dumps[place], self.dump())}")
            if self.run(walk, self.league).returncode != 1:
                raise Failure(f"{walk} goes on beyond the end")
        if self.run("check", self.league).returncode not in (0, 1):
            raise Failure("the league is damaged")
        return len(commands)


def differ(expected, found):
    lines = []
    for table in TABLES + WITH_PENALTIES:
        for sign, rows in (("-", set(expected[table]) - set(found[table])), ("+", set(found[table]) - set(expected[table]))):
            lines += [f"{sign} {table} {row}" for row in sorted(rows)[:3]]
    return "\n" + "\n".join(lines)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("source")
    parser.add_argument("--steps", type=int, default=40)
    parser.add_argument("--seed", type=int, default=1998)
    options = parser.parse_args()
    walker = Walker(options.program, options.source, options.seed)
    done = changes = 0
    try:
        while done < options.steps:
            steps = min(KEPT, options.steps - done)
            changes += walker.season_of_steps(steps)
            done += steps
            print(f"{done} commands, {changes} changes undone, redone and undone", flush=True)
        shutil.rmtree(walker.folder)
    except Failure as failure:
        sys.exit(f"seed {options.seed}, within {walker.folder}: {failure}")


if __name__ == "__main__":
    main()
