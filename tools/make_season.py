#!/usr/bin/env python3
"""Writes a season's standings files from its facts.

usage: make_season.py FACTS-FOLDER OUTPUT-FOLDER

The facts are two CSV files: races.csv (race, date, race_name, track, track_length_mi, laps, cautions, avg_speed_mph,
lead_changes, pole_speed_mph) and results.csv (race, finish, start, car_number, driver, laps, laps_led, status, money,
official_points). Every race becomes one standings file in the layout of NASCAR Racing 3. Only the race time is
worked out here, from distance and average speed; what the facts do not tell stays empty.
"""

import csv
import datetime
import pathlib
import sys
import urllib.parse

# Words that do not tell one track from another.
GENERIC_WORDS = {"international", "motor", "speedway", "superspeedway", "raceway", "downs"}

# Driver lines: heading, first column (from 1), width, alignment.
COLUMNS = [
    ("Fin", 1, 2, ">"),
    ("St", 5, 2, ">"),
    ("Car", 9, 3, ">"),
    ("Driver", 14, 27, "<"),
    ("Lap", 42, 3, ">"),
    ("Led", 47, 3, ">"),
    ("Pts", 53, 3, ">"),
    ("Qualify", 57, 8, ">"),
    ("Reason Out", 66, 12, "<"),
]
LAST_COLUMN = 77


def read_rows(path):
    with open(path, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def set_line(texts):
    """One line with each text in its column; a text that does not fit is an error, never cut."""
    line = [" "] * LAST_COLUMN
    for text, (heading, first, width, alignment) in zip(texts, COLUMNS):
        if len(text) > width:
            raise ValueError(f'"{text}" is wider than the column {heading}')
        line[first - 1 : first - 1 + width] = f"{text:{alignment}{width}}"
    return "".join(line).rstrip()


def head_line():
    line = ""
    for heading, first, width, alignment in COLUMNS:
        if alignment == ">" and width > len(heading):
            first += width - len(heading)
        line = line.ljust(first - 1) + heading
    return line


def race_time(miles, mph):
    seconds = round(miles / mph * 3600)
    return f"{seconds // 3600}:{seconds // 60 % 60:02}:{seconds % 60:02}"


def file_name(race):
    words = [word for word in race["track"].lower().split() if word not in GENERIC_WORDS]
    return f"{int(race['race']):02}-{'-'.join(words)}.stn"


def standings_file(race, results):
    length = float(race["track_length_mi"])
    date = datetime.datetime.strptime(race["date"], "%m/%d/%y").date()
    hyphens = "-" * LAST_COLUMN
    lines = [
        f"* {urllib.parse.unquote(race['race_name'])}, {date.isoformat()}",
        "",
        f"Race Final {race['track']}",
        f"{'Track length in miles:':<25}{length:<5.3f}{'Laps:':>9} {race['laps']:<3}".rstrip(),
        "",
        hyphens,
        head_line(),
        hyphens,
    ]
    for result in sorted(results, key=lambda row: int(row["finish"])):
        on_pole = result["start"] == "1"
        lines.append(
            set_line(
                [
                    result["finish"],
                    result["start"],
                    result["car_number"],
                    result["driver"],
                    result["laps"],
                    result["laps_led"],
                    result["official_points"],
                    race["pole_speed_mph"] if on_pole else "",
                    result["status"],
                ]
            )
        )
    lines += [
        "",
        f"Race time - {race_time(length * int(race['laps']), float(race['avg_speed_mph']))}",
        f"Average speed - {race['avg_speed_mph']}",
        f"Caution flags - {race['cautions']}",
        f"# of lead changes - {race['lead_changes']}",
        "",
        # A statistic on the last line of a file is not read.
        "* End of the standings",
    ]
    return "".join(line + "\r\n" for line in lines)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    facts, output = map(pathlib.Path, sys.argv[1:])
    results = {}
    for row in read_rows(facts / "results.csv"):
        results.setdefault(row["race"], []).append(row)
    output.mkdir(parents=True, exist_ok=True)
    for race in read_rows(facts / "races.csv"):
        content = standings_file(race, results[race["race"]])
        (output / file_name(race)).write_bytes(content.encode("cp1252"))


if __name__ == "__main__":
    main()
