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
