#!/usr/bin/env python3
"""Writes exported standings pages of an invented event, in the shape in which NASCAR Racing 2003 Season writes them.

usage: make_pages.py OUTPUT-FOLDER

Three members of a league each drive the same race against the same computer drivers and export their page. What the
members do is given below; what the computer drivers do is drawn with a fixed seed, so the pages come out the same
every time.
"""

import pathlib
import random
import sys

TRACK, MILES, LAPS, WEATHER = "OAK RIDGE SPEEDWAY", 1.25, 100, "Partly cloudy, 71 °F, Northwest 9 mph"
COMPUTER = ["C Alder", "D Birch", "E Cedar", "F Dogwood", "G Elm", "H Fir", "I Ginkgo", "J Hazel", "K Ironwood",
            "L Juniper", "M Katsura", "N Larch"]
# file, name, car number, qualifying speed, finishing position, laps led
MEMBERS = [("event-ann", "Ann Early", 7, 131.250, 2, 31), ("event-ben", "Ben Middle", 24, 132.500, 1, 0),
           ("event-cy", "Cy Late", 88, 129.875, 5, 4)]
POINTS = [175, 170, 165, 160, 155, 150, 146, 142, 138, 134, 130, 127, 124]


def heading(text):
    return ['<H3 style="color : #173D54">', "\t" + text, "</H3>"]


def table(head, rows):
    lines = ['<TABLE border="2"', '\tstyle="background : #173D54"', '\tcellpadding="3"', '\tcellspacing="2"',
             '\tsummary="">']
    for cells in [head] + rows:
        lines.append('<TR\tstyle="color : black">')
        for cell in cells:
            lines += ['<TD style="background : #CEDAEB">', "\t" + str(cell), "</TD>"]
        if cells is head:
            lines.append("</TR>")
    return lines + ["</TABLE>", "<BR>", "<BR>"]


def session(name, drivers, speeds):
    order = sorted(drivers, key=lambda driver: -speeds[driver[1]])
    rows = [[i + 1, number, driver, f"{speeds[driver]:.3f} mph"] for i, (number, driver) in enumerate(order)]
    return order, (heading("Session: " + name) + ["<BR>"] + table(["P", "#", "DRIVER", "TIME"], rows)
                   + heading("Weather: " + WEATHER) + ["<BR>", "<BR>"])


def race_rows(drivers, grid, member, finish, led, draw):
    field = [driver for driver in drivers if driver[1] != member]
    draw.shuffle(field)
    field.insert(finish - 1, next(driver for driver in drivers if driver[1] == member))
    laps_led = {driver: 0 for _, driver in field}
    laps_led[member] = led
    leaders = [driver for _, driver in field[:4] if driver != member][:3]
    for leader, share in zip(leaders, (45, 15, LAPS)):
        laps_led[leader] = min(share, LAPS - sum(laps_led.values()))
    most = max(laps_led.values())
    rows, behind = [], 0.0
    for i, (number, driver) in enumerate(field):
        behind += draw.uniform(0.2, 3.0)
        lapped = max(0, i - 7)
        interval = f"{draw.uniform(112, 118):.3f}" if i == 0 else f"-{lapped}L" if lapped else f"-{behind:.2f}"
        own = laps_led[driver]
        points = POINTS[i] + (5 if own else 0) + (5 if own == most else 0)
        start = [name for _, name in grid].index(driver) + 1
        rows.append([i + 1, start, number, driver, interval, LAPS - lapped, f"{own}*" if own == most else own, points,
                     "Accident" if i == len(field) - 1 else "Running"])
    return rows


def page(member, number, speed, finish, led, draw):
    drivers = [(i + 1 if i + 1 != number else 99, name) for i, name in enumerate(COMPUTER)] + [(number, member)]
    body = ['<H1 style="color : #173D54">', "\tNASCAR Racing 2003 Season EXPORTED STANDINGS", "</H1>"]
    body += heading("Track: " + TRACK) + heading("Date: 05/17/03") + ["<BR>"]
    grid = []
    for name in ("Practice", "Qualifying", "Happy Hour"):
        speeds = {driver: draw.uniform(127, 131) for _, driver in drivers}
        speeds[member] = speed if name == "Qualifying" else draw.uniform(127, 131)
        order, lines = session(name, drivers, speeds)
        body += lines
        if name == "Qualifying":
            grid = order
    body += heading("Session: Race") + heading("OFFICIAL STANDINGS") + ["<BR>"]
    body += table(["F", "S", "#", "DRIVER", "INTERVAL", "LAPS", "LED", "POINTS", "STATUS"],
                  race_rows(drivers, grid, member, finish, led, draw))
    body += heading("Caution Flags: 3 (12 laps)") + heading("Lead Changes: 9 (4 drivers)")
    body += heading("Weather: " + WEATHER) + heading("Pitstop Frequency: 1x") + heading("AI Strength: 95%")
    return ['<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.0//EN">', "<HTML>", "<HEAD>",
            "\t<TITLE>Race Standings</TITLE>", "</HEAD>", '<BODY style="background : white">', *body, "</BODY>",
            "</HTML>", ""]


def main():
    folder = pathlib.Path(sys.argv[1])
    draw = random.Random(2003)
    for name, *member in MEMBERS:
        (folder / (name + ".html")).write_bytes("\r\n".join(page(*member, draw)).encode("cp1252"))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
