#!/usr/bin/env python3
"""Teams, playoffs and what-if as a user runs them: championship_test.py PROGRAM SOURCE_FOLDER [unittest arguments]."""

import glob
import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM, SOURCE = sys.argv[1], sys.argv[2]
SEASON = sorted(glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")))
NASTY = '<script>alert("1")</script> O\'Neil & Жé |'
HOME = tempfile.mkdtemp(prefix="scorvane-")
ENVIRONMENT = {**os.environ, "SCORVANE_HOME": HOME}


def cli(*args, check=0):
    result = subprocess.run([PROGRAM, *map(str, args)], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                            timeout=120, env=ENVIRONMENT)
    if check is not None and result.returncode != check:
        raise AssertionError(f"{args}: exit {result.returncode}, not {check}\n{result.stdout}{result.stderr}")
    return result


def rows(*args):
    return json.loads(cli(*args, "--format", "json", "--decimal", ".").stdout)


class ChampionshipTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.seasons = tempfile.mkdtemp(prefix="scorvane-")
        cls.addClassCleanup(shutil.rmtree, cls.seasons, ignore_errors=True)
        cls.whole = os.path.join(cls.seasons, "whole.lgx")
        cli("create", cls.whole, "--sim", "nr3")
        cli("import", cls.whole, *SEASON)
        cli("standings", cls.whole)

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="scorvane-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.league = self.path("league.lgx")
        shutil.copy(self.whole, self.league)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(content)
        return self.path(name)

    def refused(self, *args, says, exit_status=1):
        """Refused with a sentence; the file's bytes stay."""
        before = self.digest()
        result = cli(*args, check=exit_status)
        self.assertIn(says.lower(), result.stderr.lower() + result.stdout.lower())
        self.assertEqual(self.digest(), before)

    def digest(self):
        with open(self.league, "rb") as file:
            return hashlib.sha256(file.read()).hexdigest()

    def tables(self):
        return rows("standings", self.league)["rows"], rows("team", self.league, "list"), rows("make", self.league, "list")

    # ---- as it stands, and as it stood

    def test_computed_table_is_that_of_the_report(self):
        for dropped in (0, 3):
            cli("settings", self.league, 6, dropped)
            report = rows("standings", self.league)
            computed = rows("standings", self.league, "--after", 33)
            self.assertEqual(computed, report)
            # Columns of the report are chosen in the template and hold here, too.
            self.assertEqual(len(report["rows"]), 68)

    def test_as_it_stood_is_what_a_league_of_those_races_has(self):
        part = self.path("part.lgx")
        cli("create", part, "--sim", "nr3", "--drop", 2)
        cli("import", part, *SEASON[:11])
        cli("settings", self.league, 6, 2)
        self.assertEqual(rows("standings", self.league, "--after", 11), rows("standings", part))
        self.refused("standings", self.league, "--after", 99, says="no race 99")
        self.refused("standings", self.league, "--after", 5, "--report", "Wins", says="only standings")

    # ---- teams

    def test_teams_from_the_first_name_to_the_page(self):
        league = self.league
        shown = cli("reports", league).stdout
        self.assertEqual(shown, cli("reports").stdout)
        cli("team", league, "add", f"  {NASTY} ")
        cli("team", league, "add", "Hendrick")
        cli("team", league, "join", NASTY, "mark martin", "Jeff Burton")
        cli("team", league, "join", "HENDRICK", "Jeff Gordon", "Terry Labonte")
        cli("team", league, "join", "Hendrick", "Mark Martin", "--from", 20)
        self.assertEqual(rows("team", league)[-1], {"Team": "Hendrick", "Driver": "Terry Labonte", "From": None, "Until": None})
        self.assertIn({"Team": "Hendrick", "Driver": "Mark Martin", "From": 20, "Until": None}, rows("team", league, "list"))
        self.assertEqual(rows("reports", league)[-1], {"ReportID": None, "Name": "Team Standings"})

        # Each race's two best, added up by hand from the results.
        points = {}
        for result in rows("sql", league, "SELECT Stats.RaceID AS R, Driver.Name AS D, Stats.Points AS P FROM Stats INNER "
                           "JOIN Driver ON Driver.DriverID=Stats.DriverID"):
            team = {"Jeff Gordon": "H", "Terry Labonte": "H", "Jeff Burton": "N",
                    "Mark Martin": "H" if result["R"] >= 20 else "N"}.get(result["D"])
            if team:
                points.setdefault((team, result["R"]), []).append(result["P"])
        total = {team: sum(sum(sorted(best, reverse=True)[:2]) for (t, _), best in points.items() if t == team) for team in "HN"}
        report = rows("standings", league, "--report", "team standings")
        self.assertEqual([(row["Team"], row["Points"]) for row in report["rows"]], [("Hendrick", total["H"]), (NASTY, total["N"])])
        self.assertEqual(report["columns"], ["Team", "Points", "Interval", "Wins", "Top 5", "Top 10", "Starts", "Drivers"])
        self.assertIn("best 2 results of each team", report["caption"])

        # A dropped race counts for the team, and points may fall below zero.
        cli("settings", league, 6, 10)
        self.assertEqual(rows("standings", league, "--report", "Team Standings")["rows"], report["rows"])
        cli("result", league, "edit", 1, "Jeff Burton", "--name", "Nobody New", "--points", 5)
        cli("sql", league, "UPDATE Stats SET Points=-50 WHERE DriverID=(SELECT DriverID FROM Driver WHERE Name='Nobody New')")
        cli("make", league, "add", "Dodge")
        cli("make", league, "join", "Dodge", "Nobody New")
        makes = rows("standings", league, "--report", "Manufacturer Standings")
        self.assertEqual((makes["rows"][0]["Make"], makes["rows"][0]["Points"]), ("Dodge", -50))

        cli("export", league, "--all", self.path("site"))
        with open(self.path("site/team-standings.htm"), encoding="cp1252") as file:
            page = file.read()
        self.assertIn("&lt;script&gt;alert(&quot;1&quot;)", page)
        self.assertNotIn("<script>", page)
        cli("export", league, "--report", "Manufacturer Standings", "-o", self.path("make.htm"))
        with open(self.path("make.htm"), encoding="cp1252") as file:
            self.assertIn(">-50<", file.read())

    def test_team_commands_are_undone_and_redone(self):
        league = self.league
        steps = [("team", league, "add", "One"), ("team", league, "add", "Two"), ("make", league, "add", "Ford"),
                 ("team", league, "join", "One", "Jeff Gordon", "Mark Martin"), ("team", league, "best", 3),
                 ("team", league, "join", "Two", "Mark Martin", "--from", 9), ("make", league, "join", "Ford", "Mark Martin"),
                 ("team", league, "leave", "Jeff Gordon", "--from", 30), ("driver", league, "merge", "Mark Martin", "Dale Jarrett"),
                 ("team", league, "rename", "One", "Uno"), ("team", league, "remove", "Two"), ("team", league, "--best", 0),
                 ("driver", league, "remove", "Jeff Gordon", "--yes"), ("race", league, "remove", 9, "--yes"),
                 ("playoff", league, "preset", "2004"), ("playoff", league, "clear")]
        seen = []
        for step in steps:
            cli(*step)
            if step[0] == "team" and step[2] == "add" and step[3] == "One":
                start = self.tables()
            seen.append(self.tables())
        self.assertIn({"Team": "Two", "Driver": "Dale Jarrett", "From": 9, "Until": None}, seen[8][1])
        for state in reversed(seen[:-1]):
            cli("undo", league)
            self.assertEqual(self.tables(), state)
        self.assertEqual(self.tables(), start)
        for state in seen[1:]:
            cli("redo", league)
            self.assertEqual(self.tables(), state)
        self.assertNotIn("The database", cli("check", league, check=None).stdout)

    def test_what_cannot_be_is_said(self):
        league = self.league
        cli("team", league, "add", "One")
        for args, says in ((("team", league, "add", "one"), "already exists"), (("team", league, "add", " "), "needs a name"),
                           (("team", league, "add", "x" * 51), "at most 50"), (("team", league, "add"), "takes a NAME"),
                           (("team", league, "join", "One", "Jef Gordon"), "Did you mean Jeff Gordon"),
                           (("team", league, "join", "Onne", "Jeff Gordon"), "There are: One"),
                           (("team", league, "join", "One"), "takes a team and one driver"),
                           (("team", league, "join", "One", "Jeff Gordon", "--from", 77), "no race 77"),
                           (("team", league, "leave", "Jeff Gordon"), "is in no team"), (("team", league, "best", "x"), "whole number"),
                           (("team", league, "best", "-1"), "from 0 (all) to 1000"), (("make", league, "rename", "One", "Two"), "no makes"),
                           (("standings", league, "--report", "Manufacturer Standings"), "no report"),
                           (("playoff", league, "show"), "no playoff"), (("playoff", league, "clear"), "no playoff"),
                           (("playoff", league, "set"), "takes a file"), (("playoff", league, "preset", "1998"), "2004, 2007, 2011, 2014"),
                           (("playoff", league, "set", self.path("none.json")), "cannot be read"),
                           (("playoff", league, "set", self.folder), "cannot be read"),
                           (("playoff", league, "set", self.write("bad.json", "{\n\"stages\": 1}")), "is a list"),
                           (("playoff", league, "set", self.write("big.json", " " * 10_000_000)), "at most 65536")):
            self.refused(*args, says=says)
        for args in (("team", league, "jion", "One", "Jeff Gordon"), ("team", league, "join", "One", "Jeff Gordon", "--from", "1.5"),
                     ("team", league, "list", "--best", "-1"), ("playoff", league, "preset", "2004", "--after", "0")):
            self.refused(*args, says="", exit_status=2)

    # ---- playoffs

    def test_playoff_of_the_season(self):
        league = self.league
        plain = rows("standings", league)
        cli("playoff", league, "preset", "2007", "--after", 23)
        report = rows("standings", league)
        self.assertEqual(report["columns"], plain["columns"] + ["Playoff"])
        # Worked out by hand: the first twelve after 23 races, 5000 and 10 a win, and the points of ten races.
        before = {row["Driver"]: row for row in rows("standings", self.whole, "--after", 23)["rows"]}
        seeded = list(before)[:12]
        late = {row["Driver"]: row["Points"] - before[row["Driver"]]["Points"] for row in plain["rows"] if row["Driver"] in before}
        expected = {driver: 5000 + 10 * before[driver]["Wins"] + late[driver] for driver in seeded}
        chased = report["rows"][:12]
        self.assertEqual({row["Driver"]: row["Points"] for row in chased}, expected)
        self.assertEqual([row["Points"] for row in chased], sorted(expected.values(), reverse=True))
        self.assertTrue(all(row["Playoff"] == "Chase" for row in chased))
        # The others as they were.
        others = [row for row in plain["rows"] if row["Driver"] not in seeded]
        self.assertEqual([(row["Driver"], row["Points"]) for row in report["rows"][12:]], [(row["Driver"], row["Points"]) for row in others])
        self.assertTrue(all(row["Playoff"] == "Out" for row in report["rows"][12:]))
        self.assertEqual([row["Playoff"] for row in rows("standings", league, "--after", 22)["rows"]][:2], ["", ""])
        # The other columns, and the other reports, say what they said.
        same = {row["Driver"]: row for row in plain["rows"]}
        for row in report["rows"]:
            for column in ("Starts", "Wins", "Top 5", "Poles", "Laps Led", "Avg Finish", "DNFs", "Bonus"):
                self.assertEqual(row[column], same[row["Driver"]][column], (row["Driver"], column))
        self.assertEqual(rows("standings", league, "--report", "Wins"), rows("standings", self.whole, "--report", "Wins"))

        # A result edited before the cut changes who is in.
        cli("sql", league, f"UPDATE Stats SET Points=0 WHERE RaceID<5 AND DriverID=(SELECT DriverID FROM Driver WHERE Name='{seeded[11]}')")
        self.assertNotIn(seeded[11], [row["Driver"] for row in rows("standings", league)["rows"][:12]])
        cli("export", league, "--report", "Point Standings", "-o", self.path("page.htm"))
        with open(self.path("page.htm"), encoding="cp1252") as file:
            self.assertIn(">Playoff<", file.read())
        cli("playoff", league, "clear")
        self.assertEqual(rows("standings", league)["columns"], plain["columns"])

    def test_a_race_that_comes_late_changes_the_seeding(self):
        """The fifth race imported last, and said to be the fifth: the table is that of the season in its order."""
        stages = [{"after": 6, "drivers": 4, "points": 1000, "step": 10}]
        league, other = self.path("in-order.lgx"), self.path("late.lgx")
        for path, files in ((league, SEASON[:9]), (other, [*SEASON[:4], *SEASON[5:9], SEASON[4]])):
            cli("create", path, "--sim", "nr3")
            for file in files:
                cli("import", path, file)
        cli("playoff", league, "set", self.write("p.json", json.dumps({"stages": stages})))
        cli("playoff", other, "set", self.write("p.json", json.dumps({"stages": stages})))
        self.assertNotEqual(rows("standings", league), rows("standings", other))
        cli("playoff", other, "set", self.write("p.json", json.dumps({"stages": stages, "late": [{"race": 9, "before": 5}]})))
        self.assertEqual(rows("standings", league), rows("standings", other))

    # ---- what if

    def test_what_if_is_what_the_league_would_show(self):
        league, copy = self.league, self.path("copy.lgx")
        cli("sql", league, "DELETE * FROM Race WHERE RaceID>20")  # room that a compaction would take away
        presets = [row["Preset"] for row in rows("points", "--presets")]
        self.assertEqual(len(presets), 13)
        now = {row["Driver"]: row for row in rows("standings", league)["rows"]}
        file = self.write("points.csv", "Position,Points\n" + "".join(f"{p},{100 - 2 * p}\n" for p in range(1, 31)))
        rules = [f"{rule}={3 * rule + 1}" for rule in range(1, 11)]
        cases = [([f"points={preset}"], [("points", copy, "--preset", preset), ("recalculate", copy)]) for preset in presets]
        cases += [(["drop=4"], [("settings", copy, 6, 4)]),
                  ([f"points={file},drop=2"], [("points", copy, "--set", file, "--use", "on"), ("recalculate", copy),
                                               ("settings", copy, 6, 2)]),
                  (["points=f1-2003,without=Jeff Gordon", "without=mark martin"],
                   [("points", copy, "--preset", "f1-2003"), ("driver", copy, "remove", "Jeff Gordon", "Mark Martin", "--yes"),
                    ("recalculate", copy)]),
                  (["without=Jeff Gordon,playoff=2004"], [("driver", copy, "exclude", "Jeff Gordon"),
                                                          ("remove-excluded-results", copy), ("playoff", copy, "preset", "2004")])]
        for what, commands in cases:
            shutil.copy(league, copy)
            before = self.digest()
            options = [word for part in what for word in ("--what-if", part)]
            shown = rows("standings", league, *options)["rows"]
            self.assertEqual(self.digest(), before)
            for command in commands:
                cli(*command)
            expected = rows("standings", copy)["rows"]
            self.assertEqual([(row["Driver"], row["Points"]) for row in shown],
                             [(row["Driver"], row["Points"]) for row in expected], what)
            for row in shown:
                old = now[row["Driver"]]
                self.assertEqual((row["Pos Now"], row["Points Now"]), (old["Pos"], old["Points"]))
                self.assertEqual((row["Places"], row["Difference"]), (old["Pos"] - row["Pos"], row["Points"] - old["Points"]))

        # All bonus rules of the league's own, with another table and without a driver; then without any.
        shutil.copy(league, copy)
        for path in (league, copy):
            cli("bonus", path, *[word for rule in rules for word in ("--set", rule)], "--use", "on")
        shown = rows("standings", league, "--what-if", f"points={file},without=Dale Jarrett")["rows"]
        cli("points", copy, "--set", file, "--use", "on")
        cli("driver", copy, "remove", "Dale Jarrett", "--yes")
        cli("recalculate", copy)
        self.assertEqual([(row["Driver"], row["Points"]) for row in shown],
                         [(row["Driver"], row["Points"]) for row in rows("standings", copy)["rows"]])
        self.assertEqual(rows("standings", league, "--what-if", "bonus=off", "--after", 1)["rows"][0]["Points"], 175)

    def test_what_if_that_cannot_be(self):
        league = self.league
        cli("playoff", league, "preset", "2004")
        for what, says in (("points=f1", "f1-1991, f1-2003"), ("points=" + self.folder, "no point system"), ("drop=x", "whole number"),
                           ("drop=-1", "0 to 1000"), ("bonus=on", "takes off"), ("without=Jeff Gordan", "Did you mean Jeff Gordon"),
                           ("playoff=1998", "2004, 2007"), ("colour=red", "takes points="), ("", "takes points="),
                           ("points=" + self.write("bad.csv", "1,5\n3,4\n"), "position 2 is expected"),
                           ("playoff=" + self.write("bad.json", "[]"), "is an object")):
            self.refused("standings", league, "--what-if", what, says=says)
        for args in (("--what-if", "drop=1", "--report", "Wins"), ("--remaining", "1", "--what-if", "drop=1"),
                     ("--remaining", "-1"), ("--remaining", "1.5")):
            self.refused("standings", league, *args, says="", exit_status=2)
        plain = rows("standings", self.whole)["rows"]
        self.assertEqual([row["Points"] for row in rows("standings", league, "--what-if", "playoff=none")["rows"]],
                         [row["Points"] for row in plain])
        # A name with a comma is one name, and a rule of the league's own is not guessed at.
        self.assertEqual(len(rows("standings", league, "--what-if", "without=Johnny Benson, Jr.,drop=2")["rows"]), len(plain) - 1)
        cli("sql", league, "UPDATE Bonus SET BonusID=11, Query='LapsRun>7', Points=3 WHERE BonusID=10")
        cli("bonus", league, "--use", "on")
        self.refused("standings", league, "--what-if", "without=Jeff Gordon", says="the league's own")

    # ---- points

    def test_point_presets(self):
        league = self.league
        for row in rows("points", "--presets"):
            self.assertTrue(row["Source"], row)
        cli("points", league, check=0)
        cli("points", check=2)
        self.refused("points", league, "--preset", "1900", says="The presets are: 1975")
        cli("sql", league, "UPDATE PointSystem SET PrizeMoney=100*Position WHERE Position<15")
        said = cli("points", league, "--preset", "INDYCAR").stdout
        self.assertIn("43 positions and is on", said)
        self.assertIn("Led a Lap 1, Most Led 2, Pole 1", said)
        self.assertIn("recalculate", said)
        cli("points", league, "--preset", "f1-2010")
        table = rows("points", league)
        self.assertEqual(len(table), 14)  # those that pay stay
        self.assertEqual([table[0], table[9], table[13]], [{"Position": 1, "Points": 25, "PrizeMoney": 100},
                         {"Position": 10, "Points": 1, "PrizeMoney": 1000}, {"Position": 14, "Points": 0, "PrizeMoney": 1400}])
        cli("undo", league)
        self.assertEqual(rows("points", league)[24]["Points"], 5)

    def test_title_of_the_season(self):
        """Decided at Rockingham, one race before the end."""
        cli("standings", self.league)
        before = self.digest()
        for race, remaining, state in ((31, 2, "can win"), (32, 1, "champion"), (33, 0, "champion")):
            table = rows("standings", self.league, "--after", race, "--remaining", remaining)["rows"]
            self.assertEqual((table[0]["Driver"], table[0]["Title"]), ("Jeff Gordon", state))
            # The others: whoever is within what can be won, and nobody else.
            for row in table[1:]:
                self.assertEqual(row["Title"] == "can win", state == "can win" and row["Interval"] < 185 * remaining, row)
        self.assertEqual(self.digest(), before)

    def test_hostile_playoff_in_the_file(self):
        cli("playoff", self.league, "preset", "2004")
        cli("sql", self.league, "UPDATE Playoff SET Format='[[['")
        self.refused("standings", self.league, says="cannot be read")
        cli("playoff", self.league, "clear")
        cli("standings", self.league)

    def test_a_league_that_uses_none_of_it_has_none_of_its_tables(self):
        before = self.digest()
        for command in ("standings", "team", "make", "reports"):
            cli(command, self.league)
        cli("standings", self.league, "--after", 10)
        self.assertEqual(self.digest(), before)


if __name__ == "__main__":
    shutil.copy(os.path.join(os.path.dirname(PROGRAM), "Kirrelon.dat"), HOME)
    try:
        unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
    finally:
        shutil.rmtree(HOME, ignore_errors=True)
