#!/usr/bin/env python3
"""scorvane-cli as a user runs it: cli_test.py PROGRAM SOURCE_FOLDER [unittest arguments]."""

import csv
import glob
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
from xml.etree import ElementTree

PROGRAM, SOURCE = sys.argv[1], sys.argv[2]
SEASON = sorted(glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")))
SIMULATION = os.path.join(SOURCE, "share/samples/nr2003")
EVENT = sorted(glob.glob(os.path.join(SIMULATION, "exports_imports/*.html")))
REAL_PAGES = os.path.join(SOURCE, "tests/data/exported-pages")
STANDINGS_DATA = os.path.join(SOURCE, "tests/data/standings")


def cli(*args, check=0, **options):
    result = subprocess.run([PROGRAM, *map(str, args)], capture_output=True, text=True,
                            stdin=subprocess.DEVNULL, timeout=120, **options)
    if check is not None and result.returncode != check:
        raise AssertionError(f"{args}: exit {result.returncode}, not {check}\n{result.stdout}{result.stderr}")
    return result


def rows(*args):
    return json.loads(cli(*args, "--format", "json", "--decimal", ".").stdout)


class CliTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="scorvane-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.league = self.path("league.lgx")

    def path(self, name):
        return os.path.join(self.folder, name)

    def create(self, *options):
        cli("create", self.league, "--sim", "nr3", *options)

    def sql(self, statement):
        return rows("sql", self.league, statement)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode("cp1252"))
        return self.path(name)

    def content(self, path):
        with open(path, "rb") as file:
            return file.read()

    def refused(self, *args, says):
        """The command fails with a message that names the matter, and prints nothing else."""
        result = cli(*args, check=1)
        self.assertIn(says.lower(), result.stderr.lower())
        self.assertEqual(result.stdout, "")
        return result.stderr

    def counts(self):
        return tuple(self.sql(f"SELECT Count(*) AS N FROM {table}")[0]["N"]
                     for table in ("Race", "Stats", "Driver", "STNRace", "STNStats"))

    def test_installed_program_keeps_its_template_in_the_users_folder(self):
        build = os.path.dirname(PROGRAM)
        subprocess.run(["cmake", "--install", build, "--prefix", self.path("usr")], check=True, capture_output=True)
        # The prefix is the user's own, so that both share a folder.
        environment = {**os.environ, "XDG_DATA_HOME": self.path("usr/share"), "HOME": self.folder}
        environment.pop("SCORVANE_HOME", None)
        program = self.path("usr/bin/scorvane-cli")
        for command in (["create", self.league, "--sim", "nr3"], ["import", self.league, SEASON[0]]):
            subprocess.run([program, *command], check=True, capture_output=True, env=environment)
        own = self.path("usr/share/scorvane/Kirrelon.dat")
        cli("sql", own, "UPDATE Settings SET SettingValue='/my/folder' WHERE SettingsID=14")
        subprocess.run(["cmake", "--install", build, "--prefix", self.path("usr")], check=True, capture_output=True)
        self.assertEqual(rows("sql", own, "SELECT SettingValue AS V FROM Settings WHERE SettingsID=14"), [{"V": "/my/folder"}])
        self.assertEqual(sorted(os.listdir(self.path("usr/share/scorvane"))),
                         ["Kirrelon.dat", "ReadMe", "ReadMe.htm", "template", "themes"])
        self.assertEqual(len(rows("races", self.league)), 1)
        os.mkdir(self.path("home"))
        subprocess.run([program, "reports"], check=True, capture_output=True,
                       env={**environment, "SCORVANE_HOME": self.path("home")})
        self.assertEqual(os.listdir(self.path("home")), ["Kirrelon.dat"])

    def test_leagues_closed_at_once_in_one_folder_stay_apart(self):
        for name in ("A", "B"):
            cli("create", self.path(f"{name}.lgx"), "--sim", "nr3")
            cli("import", self.path(f"{name}.lgx"), *SEASON[:4])
            cli("sql", self.path(f"{name}.lgx"), f"UPDATE Race SET Name='{name}'")
        for _ in range(25):
            for name in ("A", "B"):
                cli("import", self.path(f"{name}.lgx"), *SEASON[4:6])
            closing = [subprocess.Popen([PROGRAM, "sql", self.path(f"{name}.lgx"), "DELETE * FROM Race WHERE RaceID>4"],
                                        stdout=subprocess.DEVNULL) for name in ("A", "B")]
            for process in closing:
                self.assertEqual(process.wait(), 0)
            for name in ("A", "B"):
                self.assertEqual(rows("sql", self.path(f"{name}.lgx"), "SELECT DISTINCT Name FROM Race"), [{"Name": name}])

    # ---- the season

    def test_season_comes_out_as_published(self):
        self.create()
        cli("import", self.league, *SEASON)
        with open(os.path.join(SOURCE, "share/samples/season-1998/standings.csv"), encoding="utf-8") as file:
            published = {line["driver"]: line for line in csv.DictReader(file)}
        self.assertEqual(len(published), 68)
        for recalculated in (False, True):
            if recalculated:
                before = self.sql("SELECT StatsID, Points, Bonus, Finish, Start FROM Stats")
                cli("recalculate", self.league)
                self.assertEqual(self.sql("SELECT StatsID, Points, Bonus, Finish, Start FROM Stats"), before)
            report = rows("standings", self.league)
            self.assertEqual(report["report"], "Point Standings")
            self.assertEqual(report["caption"], "Results after 33 events:")
            shown = report["rows"]
            self.assertEqual([row["Pos"] for row in shown], list(range(1, 69)))
            self.assertEqual({row["Driver"] for row in shown}, set(published))
            points = [row["Points"] for row in shown]
            self.assertEqual(points, sorted(points, reverse=True))
            for row in shown:
                official = published[row["Driver"]]
                for column, field in (("Points", "points"), ("Starts", "starts"), ("Wins", "wins"), ("Top 5", "top5"),
                                      ("Top 10", "top10"), ("Laps", "laps"), ("Laps Led", "laps_led")):
                    self.assertEqual(row[column], int(official[field]), (row["Driver"], column))
                self.assertEqual(points.index(row["Points"]),
                                 sorted((int(d["points"]) for d in published.values()), reverse=True)
                                 .index(int(official["points"])))
        self.assertEqual(len(rows("races", self.league)), 33)
        daytona = rows("results", self.league, 1)
        self.assertEqual(list(daytona[0]), ["Finish", "Start", "Driver", "LapsRun", "LapsLed", "Points", "Bonus",
                                            "AvgSpeed", "Qualifying", "Status", "PrizeMoney", "Dropped"])
        self.assertEqual((daytona[0]["Driver"], daytona[0]["Points"], daytona[0]["Bonus"], daytona[0]["PrizeMoney"],
                          daytona[0]["Dropped"]), ("Dale Earnhardt", 185, 10, None, False))

    def test_worst_races_are_dropped(self):
        self.create("--drop", 1)
        cli("import", self.league, *SEASON[:4])
        self.sql("DELETE Stats.* FROM Driver INNER JOIN Stats ON Driver.DriverID=Stats.DriverID "
                 "WHERE Driver.Name='Jeff Gordon' AND Stats.RaceID>2")
        report = rows("standings", self.league)
        self.assertEqual(report["caption"], "Results based on each driver's best 3 finishes of 4 events:")
        marks = self.sql("SELECT Driver.Name AS Name, Points, Dropped FROM Driver INNER JOIN Stats "
                         "ON Driver.DriverID=Stats.DriverID ORDER BY Driver.Name, Points, Bonus, LapsLed")
        for name in {mark["Name"] for mark in marks}:
            own = [mark for mark in marks if mark["Name"] == name]
            dropped = [mark["Points"] for mark in own if mark["Dropped"]]
            self.assertEqual(dropped, [own[0]["Points"]] if len(own) == 4 else [], name)
        counted = sum(mark["Points"] for mark in marks if mark["Name"] == "Mark Martin" and not mark["Dropped"])
        self.assertIn(("Mark Martin", counted), [(row["Driver"], row["Points"]) for row in report["rows"]])
        cli("settings", self.league, 6, 0)
        self.assertEqual(rows("standings", self.league)["caption"], "Results after 4 events:")
        self.assertEqual(self.sql("SELECT Count(*) AS N FROM Stats WHERE Dropped=True"), [{"N": 0}])

    # ---- the newer simulations and off-line events

    def test_exported_pages_score_as_they_say(self):
        cli("create", self.league, "--sim", "nr2003")
        real = sorted(glob.glob(os.path.join(REAL_PAGES, "*.html")))
        for pages, folder in ((real, REAL_PAGES), (EVENT, SIMULATION)):
            imported = cli("import", self.league, "--sim-folder", folder, *pages)
            self.assertEqual(imported.stderr, "")
        races = rows("races", self.league)
        self.assertEqual(len(races), 9)
        self.assertEqual((races[0]["Name"], races[0]["Length"], races[0]["Weather"]),
                         ("Daytona International Speedway", 2.5, "Cloudy, 58 \u00b0F, East 5 mph"))
        for race in races:
            folder = os.path.join(SIMULATION, "exports_imports") if race["RaceID"] > 6 else REAL_PAGES
            with open(os.path.join(folder, race["FileName"]), encoding="cp1252") as file:
                page = file.read()
            page = page[page.index("OFFICIAL STANDINGS"):]
            page = page[:page.index("</TABLE>")]
            cells = [cell.strip() for cell in re.findall(r"<TD[^>]*>([^<]*)</TD>", page)]
            printed = [(cells[i], cells[i + 3], cells[i + 7]) for i in range(9, len(cells), 9)]
            results = rows("results", self.league, race["RaceID"])
            self.assertEqual([(str(r["Finish"]), r["Driver"], str(r["Points"])) for r in results], printed)

    def test_pages_that_fail_import_nothing(self):
        cli("create", self.league, "--sim", "nr2003")
        with open(EVENT[0], "rb") as file:
            page = file.read()
        practice = self.write("practice.html", page.replace(b"OFFICIAL", b"UNOFFICIAL"))
        cut = self.write("cut.html", page[:len(page) // 2])
        self.refused("import", self.league, EVENT[0], says="--sim-folder")
        self.refused("import", self.league, "--sim-folder", self.folder, EVENT[0], says="no folder")
        for bad, says in ((practice, "race final"), (cut, "cut off"), (self.path("none.html"), "opened")):
            message = self.refused("import", self.league, "--sim-folder", SIMULATION, EVENT[0], bad, says=says)
            self.assertIn(os.path.basename(bad), message)
            self.assertIn("1 of 2 files could not be read; nothing was imported", message)
            self.assertEqual(self.counts(), (0, 0, 0, 0, 0))
        quiet = self.refused("import", self.league, "--sim-folder", SIMULATION, "--no-alerts", practice, says="1 of 1")
        self.assertNotIn("practice.html", quiet)
        edited = self.write("edited.html", page.replace(b"<BODY", b"<BODY onload=''").replace(b"</BODY>", b"<P></BODY>"))
        self.assertIn("evidence of editing",
                      cli("import", self.league, "--sim-folder", SIMULATION, edited).stderr)
        self.refused("import", self.league, "--sim-folder", SIMULATION, "--no-alerts", edited, says="race 1")
        self.assertEqual(cli("import", self.league, "--sim-folder", SIMULATION, "--no-alerts", "--again", edited).stderr, "")
        self.assertEqual(self.counts()[:2], (2, 26))

    def test_the_template_knows_the_simulations_folder(self):
        template = self.path("Kirrelon.dat")
        shutil.copy(os.path.join(os.path.dirname(PROGRAM), "Kirrelon.dat"), template)
        cli("sql", template, f"UPDATE Settings SET SettingValue='{SIMULATION}/' WHERE SettingsID=14")
        cli("--template", template, "create", self.league, "--sim", "nr2003")
        cli("--template", template, "import", self.league, EVENT[0])
        self.assertEqual(self.counts()[:2], (1, 13))

    def test_offline_event_is_merged(self):
        for sim, files, options in (("nr3", sorted(glob.glob(os.path.join(STANDINGS_DATA, "offline-*.stn"))), ()),
                                    ("nr2003", EVENT, ("--sim-folder", SIMULATION))):
            cli("create", self.league, "--sim", sim, "--type", "offline", "--replace")
            merged = cli("import", self.league, *options, *files)
            self.assertIn("Merged 3 files into a race of 3 drivers", merged.stdout)
            self.assertEqual(rows("races", self.league)[0]["FileName"], "Merged")
            first = {result["Driver"]: result["Finish"] for result in rows("results", self.league, 1)}
            self.assertEqual(set(first), {"Ann Early", "Ben Middle", "Cy Late"})
            self.assertEqual(first["Cy Late"], 3)
            before = self.counts()
            self.refused("import", self.league, *options, files[0], files[0], says="twice")
            self.refused("import", self.league, *options, files[1], says="these results already")
            self.refused("import", self.league, *options, "--again", files[0], files[0], says="no unique drivers")
            self.assertEqual(self.counts(), before)
            # A ranking that cannot be done changes nothing.
            self.sql("INSERT INTO RankCriteria (Priority, Query, N4) VALUES (99, 'Nonsense(', True)")
            self.refused("import", self.league, *options, "--again", *files, says="syntax error")
            self.assertEqual(self.counts(), before)
            self.sql("DELETE * FROM RankCriteria WHERE Priority=99")
            # The laps led decide now.
            listed = rows("criteria", self.league, "--order", "4")
            self.assertEqual(listed, rows("criteria", self.league))
            self.assertEqual([listed[0][key] for key in ("Rank", "ID", "Name")], [1, 4, "Laps Led"])
            cli("import", self.league, *options, "--again", *files)
            led = [result["LapsLed"] for result in rows("results", self.league, 2)]
            self.assertEqual(led, sorted(led, reverse=True))
        self.refused("criteria", self.league, "--order", "1,3", says="no criterion 3")  # not of this simulation
        self.refused("criteria", self.league, "--order", "1,1", says="twice")

    def test_custom_points_pay_prize_money(self):
        self.create()
        self.sql("DELETE * FROM PointSystem WHERE Position>10")
        self.sql("UPDATE PointSystem SET Points=11-Position, PrizeMoney=Position*1000")
        cli("settings", self.league, 13, 1)
        cli("import", self.league, SEASON[0])
        for _ in range(2):
            results = rows("results", self.league, 1)
            self.assertEqual([(r["Points"] - r["Bonus"], r["PrizeMoney"]) for r in results[:11]],
                             [(10 - i, (i + 1) * 1000) for i in range(10)] + [(0, None)])
            cli("recalculate", self.league, 1)

    def test_custom_bonus_rules_score_staged_and_stored_races(self):
        self.create()
        cli("settings", self.league, 14, 1)
        self.sql("UPDATE Bonus SET Points=0")
        self.sql("UPDATE Bonus SET Points=3 WHERE Name='Win'")
        self.sql("UPDATE Bonus SET Points=7 WHERE Query Like '*SELECT Max(LapsLed)*'")
        cli("import", self.league, SEASON[0])
        expected = {"Dale Earnhardt": 10, "Bobby Labonte": 0}
        for _ in range(2):
            bonus = {r["Driver"]: r["Bonus"] for r in rows("results", self.league, 1)}
            self.assertEqual({name: bonus[name] for name in expected}, expected)
            self.assertEqual(sum(bonus.values()), 10)
            cli("recalculate", self.league, 1)

    def test_old_simulations(self):
        cli("create", self.league, "--sim", "legends")
        cli("import", self.league, os.path.join(STANDINGS_DATA, "legends.stn"), "--qualifying", "time")
        # Read as a time: 50.875 seconds for a lap of 0.2 miles.
        self.assertAlmostEqual(max(row["Qualifying"] for row in rows("results", self.league, 1)), 14.15233, 4)
        stated = self.sql("SELECT Finish, Points, Bonus FROM Stats ORDER BY Finish")
        cli("recalculate", self.league)
        self.assertEqual(len(self.sql("SELECT Finish FROM Stats")), len(stated))
        self.assertEqual({row["Bonus"] for row in stated}, {0})
        cli("create", self.league, "--sim", "nr2", "--replace")
        cli("import", self.league, os.path.join(STANDINGS_DATA, "nr2.stn"))
        self.assertIn("°", rows("races", self.league)[0]["Weather"])

    def test_folders_with_odd_names(self):
        folder = self.path("O'Brien & Zoë | x")
        os.mkdir(folder)
        self.league = os.path.join(folder, "my league.lgx")
        self.create()
        cli("import", self.league, shutil.copy(SEASON[0], os.path.join(folder, "a b.stn")))
        self.assertEqual(rows("races", self.league)[0]["FileName"], "a b.stn")

    def test_user_decimal_separator(self):
        self.create()
        cli("import", self.league, SEASON[1], "--decimal", ",")
        self.assertAlmostEqual(rows("races", self.league)[0]["Length"], 1.017)
        self.assertIn("1,017", cli("races", self.league, "--decimal", ",").stdout)
        page = self.path("race.htm")
        cli("export", self.league, "--race", 1, "-o", page, "--decimal", ",")
        with open(page, encoding="cp1252") as file:
            self.assertIn("156,361 mph", file.read())

    def workbook(self, path):
        """The cells of each sheet by its name: numbers as numbers, texts as texts, a formula as what it is not."""
        main = "{http://schemas.openxmlformats.org/spreadsheetml/2006/main}"
        with zipfile.ZipFile(path) as book:
            parse = lambda name: ElementTree.fromstring(book.read(name))
            texts = ["".join(t.text or "" for t in item.iter(main + "t")) for item in parse("xl/sharedStrings.xml")]
            names = [sheet.get("name") for sheet in parse("xl/workbook.xml").iter(main + "sheet")]
            sheets = {}
            for number, name in enumerate(names, 1):
                page = parse(f"xl/worksheets/sheet{number}.xml")
                self.assertIsNone(page.find(f".//{main}f"), "a formula")
                self.assertEqual(page.find(f".//{main}pane").get("ySplit"), "1")
                cells = lambda row: [texts[int(c.find(main + "v").text)] if c.get("t") == "s" else
                                     float(c.find(main + "v").text) for c in row if c.find(main + "v") is not None]
                sheets[name] = [cells(row) for row in page.iter(main + "row")]
            return sheets

    def test_help_fits_a_terminal(self):
        pages = {"": cli("--help").stdout}
        for command in re.findall(r"^  ([a-z][a-z-]+) ", pages[""].split("Subcommands:")[1], re.MULTILINE):
            pages[command] = cli(command, "--help").stdout
        self.assertGreater(len(pages), 30)
        long = [f"{command}: {line}" for command, page in pages.items() for line in page.splitlines() if len(line) > 80]
        self.assertEqual(long, [])

    def test_spreadsheets(self):
        self.create("--drop", "1")
        cli("import", self.league, *SEASON[:3])
        odd = "=1+1 <b>\u00dcn\u00ef & \"x\", " + "y" * 30
        cli("driver", self.league, "rename", "Jeff Gordon", odd)
        cli("export", self.league, "--season", self.path("season.xlsx"))
        cli("export", self.league, "--report", "wins", "-o", self.path("wins.XLSX"))
        cli("export", self.league, "--race", 2, "-o", self.path("race.csv"))
        season = self.workbook(self.path("season.xlsx"))
        names = [race["Name"] for race in rows("races", self.league)]
        self.assertEqual(list(season), ["Point Standings", "Finishes", "Points"] +
                         [f"{number} {name}"[:31].strip() for number, name in enumerate(names, 1)])
        for report, table in (("Point Standings", season["Point Standings"]),
                              ("Wins", self.workbook(self.path("wins.XLSX"))["Wins"])):
            told = rows("standings", self.league, "--report", report)["rows"]
            self.assertEqual(table[0], list(told[0]))
            self.assertEqual([row[:3] for row in table[1:]], [list(row.values())[:3] for row in told])
        race = rows("results", self.league, 2)
        with open(self.path("race.csv"), newline="", encoding="utf-8") as file:
            written = list(csv.DictReader(file))
        self.assertIn(odd, [row["Driver"] for row in written])
        self.assertEqual([(r["Finish"], r["Driver"], r["Points"], r["Dropped"]) for r in written],
                         [(str(r["Finish"]), r["Driver"], str(r["Points"]), "yes" if r["Dropped"] else "") for r in race])
        for options, says in ((("--season", self.path("season.csv")), ".xlsx"),
                              (("--season", self.path("none/season.xlsx")), "no such folder"),
                              (("--report", "Wins", "-o", self.path("none/wins.csv")), "no such folder"),
                              (("--race", 9, "-o", self.path("nine.xlsx")), "no race 9")):
            self.refused("export", self.league, *options, says=says)
        self.assertEqual([name for name in os.listdir(self.folder) if ".scorvane-" in name], [])

    def test_standard_input(self):
        def piped(content, *args, check=0):
            result = subprocess.run([PROGRAM, *args], input=content, capture_output=True, timeout=120)
            self.assertEqual(result.returncode, check, result.stderr)
            return result.stderr.decode()

        self.create()
        for path in SEASON[:2]:
            piped(self.content(path), "import", self.league, "-")
        before = self.counts()
        self.assertEqual(before[0], 2)
        for content, says in ((self.content(SEASON[1]), "already"), (b"", "empty"), (b"\r\n\x1a\0", "'-'"),
                              (bytes(17 << 20), "too large")):
            self.assertIn(says, piped(content, "import", self.league, "-", check=1))
        self.assertEqual(self.counts(), before)
        piped(b"Position,Points\r\n1,77\r\n2,66\r\n", "points", self.league, "--set", "-")
        self.assertIn("66", cli("points", self.league).stdout)
        piped(b'{"name": "B\xc3\xb6", "stages": [{"after": 1, "drivers": 2}]}', "playoff", self.league, "set", "-")
        self.assertIn("B\u00f6", cli("playoff", self.league, "show").stdout)
        self.assertIn("JSON", piped(b"", "playoff", self.league, "set", "-", check=1))

    def test_pages(self):
        self.create()
        cli("import", self.league, *SEASON[:2])
        page = self.path("standings.htm")
        cli("export", self.league, "--report", "point standings", "-o", page, "--heading", "Zoë's & Co",
            "--caption", "So far")
        with open(page, "rb") as file:
            content = file.read()
        self.assertIn(b"<TITLE>Zo\xeb's & Co</TITLE>\r\n", content)
        self.assertIn(b">So far</H3>\r\n", content)
        self.assertTrue(content.endswith(b"</HTML>\r\n"))
        self.refused("export", self.league, "--report", "Nothing", "-o", page, says="Point Standings")
        self.refused("export", self.league, "--race", 9, "-o", page, says="no race 9")
        self.refused("export", self.league, "--race", 1, "-o", self.path("no/folder.htm"), says="no such folder")
        self.refused("export", self.league, "--race", 1, "-o", self.path(""), says="it is a folder")
        self.refused("export", self.league, "--report", "Rookie Standings", "-o", page, says="nothing to show")
        # Neither a league nor the template is a page to replace.
        self.refused("export", self.league, "--race", 1, "-o", self.league, says="no page")
        self.assertEqual(len(rows("races", self.league)), 2)

    def test_look_columns_and_a_whole_site(self):
        self.create()
        cli("import", self.league, *SEASON[:3])
        template = shutil.copy(os.path.join(os.path.dirname(PROGRAM), "Kirrelon.dat"), self.path("own.dat"))
        own = ("--template", template)
        cli("look", self.league, "--set", "heading=A <League>", "--set", "row-colors=on", "--set", "border=7",
            "--set", "row-background=#AABBCC")
        look = {row["Name"]: row["Value"] for row in rows("look", self.league)}
        self.assertEqual((look["heading"], look["row-colors"], look["border"], look["row-background"], look["font"]),
                         ("A <League>", "on", "7", "#AABBCC", "Times New Roman"))
        self.refused("look", self.league, "--set", "border=250", says="border")
        self.refused("look", self.league, "--set", "sparkle=on", says="sparkle")
        cli("columns", "Point Standings", "--order", "Points,Driver", "--hide", "DNFs,Bonus", *own)
        shown = [row["Column"] for row in rows("columns", "Point Standings", *own) if row["Shown"]]
        self.assertEqual(shown[:3], ["Points", "Driver", "Interval"])
        self.assertNotIn("DNFs", shown)
        everything = ",".join(row["Column"] for row in rows("columns", "Wins", *own))
        self.refused("columns", "Wins", "--hide", everything, *own, says="needs a column")
        self.refused("columns", "Wins", "--hide", "Nothing", *own, says="no column 'Nothing'")

        site = self.path("site")
        cli("export", self.league, "--all", site, *own)
        with open(os.path.join(site, "index.htm"), encoding="utf-8") as file:
            index = file.read()
        self.assertIn("A &lt;League>", index)
        pages = {name for name in os.listdir(site) if name != "index.htm"}
        self.assertEqual(len([name for name in pages if name.startswith("event-")]), 3)
        for name in pages:
            self.assertIn(f'href="{name}"', index)
        cli("race", self.league, "remove", 1, "--yes")
        self.assertIn("3 older event-*.htm pages", cli("export", self.league, "--all", site, *own).stdout)
        with open(os.path.join(site, "point-standings.htm"), encoding="cp1252") as file:
            page = file.read()
        self.assertIn("border=7", page)
        self.assertIn('bgcolor="#AABBCC"', page)
        self.assertLess(page.index(">Points<"), page.index(">Driver<"))
        self.refused("export", self.league, "--all", "/dev/null/site", says="cannot be made")

    # ---- editing

    def points(self):
        return {row["Driver"]: row["Points"] for row in rows("standings", self.league)["rows"]}

    def test_drivers_are_edited(self):
        self.create()
        cli("import", self.league, *SEASON[:3])
        before = self.points()
        self.assertIn("Both took part in 3 races",
                      cli("driver", self.league, "merge", "mark martin", "Jeff Gordon").stdout)
        check = cli("check", self.league, check=1).stdout
        self.assertIn("Jeff Gordon has 2 results in race 1", check)
        after = self.points()
        self.assertEqual(after["Jeff Gordon"], before["Jeff Gordon"] + before["Mark Martin"])
        self.assertNotIn("Mark Martin", after)
        cli("driver", self.league, "add", "Pat O'Test", "--rookie", "--handicap", "-3")
        cli("driver", self.league, "rename", "Dale Jarrett", "Dale \"DJ\" Jarrett")
        cli("driver", self.league, "exclude", "Jeff Gordon", "Rusty Wallace")
        drivers = {row["Name"]: row for row in rows("drivers", self.league)}
        self.assertEqual((drivers["Pat O'Test"]["Rookie"], drivers["Pat O'Test"]["Handicap"]), (True, -3))
        self.assertIn('Dale "DJ" Jarrett', drivers)
        self.assertEqual([name for name in drivers if drivers[name]["Exclude"]], ["Jeff Gordon", "Rusty Wallace"])
        # Their results go, and the others move up in every race.
        self.assertIn("(9 of 129)", cli("remove-excluded-results", self.league).stdout)
        for race in (1, 2, 3):
            results = rows("results", self.league, race)
            self.assertEqual([row["Finish"] for row in results], list(range(1, len(results) + 1)))
            self.assertFalse({"Jeff Gordon", "Rusty Wallace"} & {row["Driver"] for row in results})
        cli("driver", self.league, "include", "Rusty Wallace")
        cli("import", self.league, SEASON[3])
        drivers_of_race = {row["Driver"] for row in rows("results", self.league, 4)}
        self.assertIn("Rusty Wallace", drivers_of_race)
        self.assertNotIn("Jeff Gordon", drivers_of_race)
        self.refused("driver", self.league, "add", "PAT o'test", says="already exists")
        self.refused("driver", self.league, "rename", "Pat O'Test", "Rusty Wallace", says="already exists")
        self.refused("driver", self.league, "remove", "Nobody", says="no driver 'Nobody'")
        self.refused("driver", self.league, "remove", "Pat O'Test", says="--yes")
        count = len(rows("drivers", self.league))
        cli("driver", self.league, "remove", "Pat O'Test", "Rusty Wallace", "--yes")
        self.assertEqual(len(rows("drivers", self.league)), count - 2)
        self.assertNotIn("Rusty Wallace", self.points())

    def test_points_bonuses_and_results_are_edited(self):
        self.create()
        cli("import", self.league, SEASON[0])
        cli("points", self.league, "--set", self.write("p.csv", "Position;Points;PrizeMoney\n1;10;5000\n2;6\n"),
            "--use", "on")
        cli("bonus", self.league, "--set", "1=0", "--set", "2=0", "--set", "3=4", "--use", "on")
        cli("recalculate", self.league)
        first = rows("results", self.league, 1)[:3]
        self.assertEqual([(row["Points"], row["Bonus"], row["PrizeMoney"]) for row in first],
                         [(14, 4, 5000), (6, 0, 0), (0, 0, None)])
        cli("points", self.league, "--set", self.write("p.csv", "1,10,5000\n2,6\n"))
        self.refused("points", self.league, "--set", self.write("q.csv", "1,10\n3,6\n"), says="q.csv:2")
        self.refused("points", self.league, "--set", self.write("q.csv", "1,ten\n"), says="ten")
        self.refused("points", self.league, "--set", self.write("q.csv", "1,99999\n"), says="overflow")
        self.refused("bonus", self.league, "--set", "99=1", says="no bonus rule 99")
        self.assertEqual([row["Points"] for row in rows("points", self.league)], [10, 6])

        cli("result", self.league, "add", 1, "New O'Driver", "--finish", 44, "--start", 44, "--qualifying", "180.5",
            "--reason", "won't run")
        cli("settings", self.league, 17, 1)
        cli("result", self.league, "edit", 1, "New O'Driver", "--points", 3, "--qualifying", "50,0",
            "--decimal", ",")
        added = rows("results", self.league, 1)[-1]
        self.assertEqual((added["Driver"], added["Points"], added["Status"], added["Qualifying"]),
                         ("New O'Driver", 3, "won't run", 180))  # 2.5 miles in 50 seconds
        self.refused("result", self.league, "add", 1, "X", "--finish", 45, says="--start")
        self.refused("result", self.league, "edit", 1, "New O'Driver", "--points", "1;2", says="1;2")
        self.refused("result", self.league, "edit", 1, "New O'Driver", "--winnings", "1000.50", says="whole number")
        self.refused("result", self.league, "edit", 1, "New O'Driver", says="Nothing to change")
        self.assertIn("2 results", cli("result", self.league, "add", 1, "Mark Martin", "--finish", 45, "--start",
                                       45).stdout)
        self.sql("DELETE * FROM Stats WHERE Finish=45")
        self.refused("result", self.league, "remove", 1, "New O'Driver", says="--yes")
        cli("result", self.league, "remove", 1, "New O'Driver", "--yes")
        self.assertEqual(len(rows("results", self.league, 1)), 43)
        before = self.counts()
        self.refused("import", self.league, SEASON[1], SEASON[0], says="01-daytona.stn: the league has a race from a file of")
        shutil.copy(SEASON[2], self.path("renamed.stn"))
        cli("import", self.league, SEASON[2], "-q")
        self.refused("import", self.league, self.path("renamed.stn"), says="these results already: race 2")
        cli("race", self.league, "remove", 2, "--yes")
        self.assertEqual(self.counts()[:2], before[:2])
        cli("import", self.league, SEASON[0], SEASON[1], "--again")
        self.refused("race", self.league, "remove", 3, says="--yes")
        self.refused("race", self.league, "remove", 3, 9, "--yes", says="no race 9")
        cli("race", self.league, "remove", 3, "--yes")
        self.assertEqual([row["RaceID"] for row in rows("races", self.league)], [1, 4])

    def test_penalties(self):
        self.create("--drop", "1")
        cli("import", self.league, *SEASON[:2])
        pages = [self.path(name) for name in ("before.htm", "after.htm")]

        def sheet():
            return [[(row["Driver"], row["Finish"], row["Points"], row["Bonus"], row["Status"])
                     for row in rows("results", self.league, race)] for race in (1, 2)]

        def give(race, driver, *what):
            return cli("penalty", self.league, "add", race, driver, *what)

        before = sheet()
        winner, second, third = (row[0] for row in before[0][:3])
        cli("export", self.league, "--race", 1, "-o", pages[0])
        raw = self.content(self.league)
        for wrong in (["--points", "-5"], ["--points", "1.5"], ["--points", "0"], ["--points", "99999999999"], [],
                      ["--points", "5", "--disqualify"], ["--position", "3rd"]):
            self.assertEqual(cli("penalty", self.league, "add", 1, winner, *wrong, "--reason", "x", check=2).stdout, "")
        for wrong in ([], ["--reason", " \t"]):
            self.assertIn("reason", cli("penalty", self.league, "add", 1, winner, "--points", 5, *wrong, check=2).stderr)
        for wrong in (["remove"], ["remove", "one"], ["list", "--points", "5"], ["add", "1", "--points", "5"], ["give"]):
            cli("penalty", self.league, *wrong, check=2)
        add = ("penalty", self.league, "add")
        self.refused(*add, 7, winner, "--points", 5, "--reason", "x", says="no race 7")
        self.refused(*add, 1, "Nobody", "--points", 5, "--reason", "x", says="no driver 'Nobody'")
        self.refused(*add, 1, winner, "--position", 44, "--reason", "x", says="its last one is 43")
        self.refused(*add, 1, third, "--position", 2, "--reason", "x", says="3rd already")
        self.refused("penalty", self.league, "remove", 1, says="no penalty 1")
        self.assertEqual(self.content(self.league), raw)
        self.assertNotIn("Penalty", rows("results", self.league, 1)[0])
        self.assertNotIn("penalties", rows("standings", self.league))

        # 2nd goes to 4th, then the winner out, which moves him up: who was 3rd wins, and the table of the next race knows nothing of it.
        reason = "<b>Rough</b> & \"late\" | Zoë's"
        give(1, second, "--position", 4, "--reason", f" {reason} ")
        give(1, winner, "--disqualify", "--reason", "Illegal car")
        give(1, winner, "--points", 500, "--reason", "Again")
        after = sheet()
        self.assertEqual(after[0][0][:3], (third, 1, before[0][2][2] + 10))
        self.assertEqual(after[0][2][:3], (second, 3, before[0][1][2] - 5))
        self.assertEqual(after[0][-1], (winner, 43, -500, 0, "Disqualified"))
        self.assertEqual(after[1], before[1])
        penalties = {row["Driver"]: row["Penalty"] for row in rows("results", self.league, 1) if row["Penalty"]}
        self.assertEqual(penalties, {second: f"{reason} (moved to 4th)",
                                     winner: "Illegal car (disqualified); Again (500 points off)"})
        self.assertEqual([row["Penalty"] for row in rows("penalty", self.league, "list")],
                         ["moved to 4th", "disqualified", "500 points off"])
        self.assertIn(",Penalty\n", cli("results", self.league, 1, "--format", "csv").stdout)
        cli("check", self.league)

        # Dropped, the result costs no more than its points; counted, the driver is in the table with fewer than none.
        def points(driver):
            return {row["Driver"]: row["Points"] for row in rows("standings", self.league)["rows"]}[driver]
        other = next(row[2] for row in after[1] if row[0] == winner)
        self.assertEqual(points(winner), other)
        cli("settings", self.league, 6, 0)
        self.assertEqual(points(winner), other - 500)
        self.assertEqual(len(rows("standings", self.league)["penalties"]), 3)

        # The page has one paragraph more, and the rows of the outcome.
        cli("export", self.league, "--race", 1, "-o", pages[1])
        text = self.content(pages[1]).decode("cp1252")
        line = next(line for line in text.split("\r\n") if line.startswith("<P align"))
        self.assertEqual(line, f'<P align="center">Penalties:<BR>{second}: moved to 4th (&lt;b&gt;Rough&lt;/b&gt; &amp; '
                               f'"late" | Zoë\'s)<BR>{winner}: disqualified (Illegal car)<BR>{winner}: 500 points off '
                               '(Again)</P>')

        # What happens to a race keeps them: scored anew, imported again, edited, merged, undone.
        cli("recalculate", self.league)
        self.assertEqual(sheet(), after)
        self.assertIn("Race 1", cli("import", self.league, SEASON[0], "--replace").stdout)
        self.assertEqual((sheet(), len(rows("races", self.league))), (after, 2))
        self.assertEqual(rows("history", self.league)[0]["Change"], "Import 1 file again")
        self.refused("import", self.league, SEASON[0], SEASON[0], "--replace", says="twice")
        cli("result", self.league, "edit", 1, third, "--points", after[0][0][2] + 7)
        self.assertEqual(sheet()[0][0][2], after[0][0][2] + 7)
        cli("undo", self.league)
        cli("driver", self.league, "rename", winner, "X" * 50)
        cli("driver", self.league, "add", "Иван")
        cli("driver", self.league, "merge", "X" * 50, "Иван")
        self.assertEqual(sheet()[0][-1], ("Иван", 43, -500, 0, "Disqualified"))
        cli("undo", self.league, 3)
        self.assertEqual(sheet(), after)
        cli("driver", self.league, "remove", third, "--yes")
        self.assertEqual(sheet()[0][-1], after[0][-1])
        cli("undo", self.league)
        cli("result", self.league, "remove", 1, winner, "--yes")
        self.assertIn("has no result", cli("check", self.league, check=1).stdout)
        cli("undo", self.league)
        for penalty in (1, 3, 2):
            cli("penalty", self.league, "remove", penalty)
        self.assertEqual(sheet(), before)
        cli("export", self.league, "--race", 1, "-o", pages[1])
        self.assertEqual(self.content(pages[1]), self.content(pages[0]))
        cli("undo", self.league, 3)
        self.assertEqual(sheet(), after)
        self.sql("DELETE * FROM PenaltyBase WHERE Finish=5")
        self.assertIn("not all of its results", cli("check", self.league, check=1).stdout)
        cli("undo", self.league)
        self.sql("DELETE * FROM Penalty")
        self.assertIn("has no penalty, and yet", cli("check", self.league, check=1).stdout)
        cli("undo", self.league)
        cli("race", self.league, "remove", 1, "--yes")
        self.assertEqual(rows("penalty", self.league, "list"), [])
        cli("check", self.league)

    def test_an_event_is_merged_again_in_its_place(self):
        files = sorted(glob.glob(os.path.join(STANDINGS_DATA, "offline-*.stn")))
        cli("create", self.league, "--sim", "nr3", "--type", "offline")
        cli("import", self.league, *files)
        first, second = (row["Driver"] for row in rows("results", self.league, 1)[:2])
        cli("penalty", self.league, "add", 1, first, "--disqualify", "--reason", "Cut the chicane")
        after = rows("results", self.league, 1)
        self.assertEqual((after[0]["Driver"], after[-1]["Driver"]), (second, first))
        cli("import", self.league, *files, "--replace")
        self.assertEqual((rows("results", self.league, 1), len(rows("races", self.league))), (after, 1))

    # ---- wrong use and bad input

    def test_wrong_use_is_told_from_failure(self):
        for args in ([], ["nonsense"], ["create", self.league], ["create", self.league, "--sim", "9"],
                     ["create", self.league, "--sim", "0", "--drop", "11"], ["races"],
                     ["export", self.league, "-o", "x"], ["races", self.league, "--format", "xml"]):
            self.assertTrue(cli(*args, check=2).stderr, args)
        self.assertIn("no command 'nonsense'", cli("--format", "csv", "nonsense", check=2).stderr)
        self.assertIn("standings", cli("--help").stdout)
        self.assertIn("--qualifying", cli("import", "--help").stdout)
        self.assertEqual(os.listdir(self.folder), [])

    def test_bad_result_files_stage_and_lose_nothing(self):
        self.create()
        cli("import", self.league, SEASON[0])
        before = self.counts()
        with open(SEASON[1], "rb") as file:
            good = file.read().decode("cp1252")
        lines = good.split("\r\n")
        first = next(i for i, line in enumerate(lines) if line.startswith(" 1 "))
        rules = [i for i, line in enumerate(lines) if line.startswith("----------")]
        bad = {
            "practice.stn": (good.replace("Race Final", "Practice  "), "does not seem to be a race final"),
            "cut-title.stn": ("\r\n".join(lines[:1]), "title"),
            "cut-track.stn": ("\r\n".join(lines[:3]), "track"),
            "cut-head.stn": ("\r\n".join(lines[:rules[0] + 1]), "drivers"),
            "cut-drivers.stn": ("\r\n".join(lines[:first + 3]), "drivers"),
            "empty.stn": ("", "empty"),
            "binary.stn": (bytes(range(256)) * 50, ""),
            "letters.stn": (good.replace(lines[first], lines[first][:41] + "abc" + lines[first][44:]), "abc"),
            "sql.stn": (good.replace(lines[first], lines[first][:4] + "1)" + lines[first][6:]), "1)"),
        }
        for name, (content, says) in bad.items():
            file = self.write(name, content)
            with self.subTest(name):
                message = self.refused("import", self.league, SEASON[2], file, says=says)
                self.assertIn(name, message)
        os.mkdir(self.path("inside"))
        self.refused("import", self.league, self.path("inside"), says="no result files")
        self.refused("import", self.league, self.path("missing.stn"), says="missing.stn")
        self.assertEqual(self.counts(), before)
        times = good.replace(lines[first], lines[first][:56] + "1:23.456" + lines[first][64:])
        message = self.refused("import", self.league, *[self.write(f"t{i}.stn", times) for i in range(30)],
                               says="--qualifying time reads")
        self.assertEqual((message.count("is not a number"), message.count("--qualifying time")), (20, 1))
        self.assertIn("10 more messages", message)
        # The column is 27 characters wide: a longer name is cut by the file, not refused.
        long_name = good.replace(lines[first], lines[first][:13] + "N" * 60)
        self.refused("import", self.league, self.write("long.stn", long_name), says="line")

    def test_bad_league_files(self):
        self.refused("races", self.path("missing.lgx"), says="does not exist")
        self.refused("races", self.write("text.lgx", "no database" * 1000), says="unrecognized database format")
        self.refused("races", self.write("empty.lgx", ""), says="unrecognized database format")
        self.refused("races", self.folder, says="unrecognized database format")
        self.create()
        self.refused("create", self.league, "--sim", "0", says="already exists")
        self.refused("create", self.path("no/where.lgx"), "--sim", "0", says="not a valid path")
        self.refused("races", self.league, "--template", self.path("nothing.dat"), says="nothing.dat")
        self.refused("results", self.league, 7, says="no race 7")
        self.refused("recalculate", self.league, 7, says="no race 7")
        self.refused("settings", self.league, 6, 99, says="0 to 10")
        self.refused("settings", self.league, 4711, says="no setting 4711")
        self.refused("sql", self.league, "SELECT Nam FROM Driver", says="'Nam'")

    def test_a_league_in_use_is_left_alone(self):
        self.create()
        holder = subprocess.Popen(["flock", "-x", self.league, "sleep", "60"])
        try:
            time.sleep(0.3)
            self.refused("import", self.league, SEASON[0], says=f"already in use by flock (process {holder.pid})")
            self.refused("create", self.league, "--sim", "1", "--replace", says="already in use")
        finally:
            holder.kill()
            subprocess.run(["pkill", "-f", "sleep 60"], check=False)
            holder.wait()

    @unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0, "mounting needs root")
    def test_full_and_read_only_disks(self):
        disk = self.path("disk")
        os.mkdir(disk)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=260k", "tmpfs", disk], capture_output=True).returncode:
            self.skipTest("no tmpfs here")
        try:
            self.league = os.path.join(disk, "league.lgx")
            self.create()
            cli("import", self.league, SEASON[0])
            before = self.counts()
            self.refused("import", self.league, "--again", *SEASON, says="not enough space")
            self.assertEqual(self.counts()[:3], before[:3])
            self.refused("export", self.league, "--report", "Wins", "-o", "/dev/full", says="could not be written")
            subprocess.run(["mount", "-o", "remount,ro", disk], check=True)
            self.refused("import", self.league, SEASON[1], says="cannot open the file")
            self.refused("export", self.league, "--race", 1, "-o", os.path.join(disk, "x.htm"), says="may not be written")
            self.assertEqual(len(rows("races", self.league)), 1)
        finally:
            subprocess.run(["umount", disk], check=True)

    def test_killed_imports_leave_all_or_nothing(self):
        self.create()
        cli("import", self.league, *SEASON[:3])
        base = self.path("base.lgx")
        shutil.copy(self.league, base)
        started = time.monotonic()
        cli("import", self.league, "--again", *SEASON)
        whole = time.monotonic() - started
        dice = random.Random(1998)
        outcomes = set()
        for turn in range(50):
            for name in os.listdir(self.folder):
                if name.startswith("league"):
                    os.remove(self.path(name))
            shutil.copy(base, self.league)
            process = subprocess.Popen([PROGRAM, "import", self.league, "--again", *SEASON], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            time.sleep(dice.uniform(0, whole * 1.1))
            process.send_signal(signal.SIGKILL)
            process.wait()
            races = len(rows("races", self.league))
            self.assertIn(races, (3, 36), f"turn {turn}")
            outcomes.add(races)
            self.assertEqual(self.sql("SELECT Count(*) AS N FROM Stats")[0]["N"],
                             sum(r["N"] for r in self.sql("SELECT Count(*) AS N FROM Stats GROUP BY RaceID")))
            self.assertEqual(len(rows("standings", self.league)["rows"]) > 40, True)
        self.assertIn(3, outcomes)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
