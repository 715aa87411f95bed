#!/usr/bin/env python3
"""The Windows command line beside the Linux one: season_test.py WINDOWS_FOLDER LINUX_FOLDER SOURCE_FOLDER.

The same season is kept by both, on a path with blanks, umlauts and letters of other scripts; what they print and write
must be the same to the byte, and what one has made the other goes on with. SCORVANE_KILLS sets how many imports are
killed in the middle, SCORVANE_DAMAGED how many damaged copies of old files are tried.
"""

import glob
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

WINDOWS, LINUX, SOURCE = map(os.path.abspath, sys.argv[1:4])
WINE = os.path.join(SOURCE, "tools/windows/wine")
KILLS = int(os.environ.get("SCORVANE_KILLS", "12"))
DAMAGED = int(os.environ.get("SCORVANE_DAMAGED", "6"))
SEASON = sorted(glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")))
LEGACY = sorted(glob.glob(os.path.join(SOURCE, "tests/data/legacy/*.lgx")))
EVENT = sorted(glob.glob(os.path.join(SOURCE, "share/samples/nr2003/exports_imports/*.html")))
PLATFORMS = ("windows", "linux")


def command(platform, *args):
    program = [WINE, os.path.join(WINDOWS, "scorvane-cli.exe")] if platform == "windows" else [
        os.path.join(LINUX, "scorvane-cli")]
    return [*program, *map(str, args)]


def run(platform, *args, check=0, cwd=None, text=True):
    result = subprocess.run(command(platform, *args, "--decimal", "."), capture_output=True, cwd=cwd,
                            stdin=subprocess.DEVNULL, timeout=180)
    if check is not None and result.returncode != check:
        raise AssertionError(f"{platform} {args}: exit {result.returncode}, not {check}\n"
                             f"{result.stdout.decode(errors='replace')}{result.stderr.decode(errors='replace')}")
    if text:
        result.stdout, result.stderr = result.stdout.decode("utf-8"), result.stderr.decode("utf-8")
    return result


def content(path):
    with open(path, "rb") as file:
        return file.read()


def tree(folder):
    return {os.path.relpath(path, folder): content(path)
            for path in glob.glob(os.path.join(folder, "**"), recursive=True) if os.path.isfile(path)}


def workbook(path):
    # All of it but when it was made.
    with zipfile.ZipFile(path) as book:
        return {name: book.read(name) for name in book.namelist() if name != "docProps/core.xml"}


class SeasonTest(unittest.TestCase):
    maxDiff = 4000

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="Liga Süd – Лига 赛车 ")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        homes = {platform: os.path.join(self.folder, f"home {platform}") for platform in PLATFORMS}
        for platform, home in homes.items():
            os.makedirs(home)
            os.makedirs(os.path.join(self.folder, platform))
        self.homes = homes  # the template and the backups of each

    def run_in(self, platform, *args, **options):
        home = self.homes[platform]
        os.environ["SCORVANE_HOME"] = "Z:" + home.replace("/", "\\") if platform == "windows" else home
        return run(platform, *args, cwd=os.path.join(self.folder, platform), **options)

    def both(self, *args, check=0):
        results = [self.run_in(platform, *args, check=check) for platform in PLATFORMS]
        self.assertEqual(results[0].stdout, results[1].stdout, args)
        return results[0]

    def test_the_same_season_on_both(self):
        league = "Größe Ω 2026.lgx"
        self.both("create", league, "--sim", "nr3")
        self.both("look", league, "--set", "heading=Münster <Cup> Ωμέγα")
        # Names as a shell here would expand them, and as the program itself does there.
        season = os.path.join(self.folder, "windows", "Сезон 1998")
        shutil.copytree(os.path.dirname(SEASON[0]), season)
        self.run_in("windows", "import", league, r"Сезон 1998\*.stn")
        self.run_in("linux", "import", league, *SEASON)
        self.both("driver", league, "add", "Jürgen Ångström Жуков 李")
        for format in ("table", "csv", "json"):
            for query in (["standings"], ["races"], ["results", "1"], ["drivers"]):
                self.both(query[0], league, *query[1:], "--format", format)
        for report in ("Rookie Standings", "Race Winners", "Prize Money"):
            self.both("standings", league, "--report", report)
        self.both("undo", league)
        self.both("redo", league)
        self.both("check", league)
        for platform in PLATFORMS:
            self.run_in(platform, "export", league, "--all", "Seite Ж")
        pages = [tree(os.path.join(self.folder, platform, "Seite Ж")) for platform in PLATFORMS]
        self.assertGreater(len(pages[0]), 39)
        self.assertEqual(pages[0], pages[1])
        for platform in PLATFORMS:
            self.run_in(platform, "export", league, "--season", "Сезон – 赛车.xlsx")
        books = [workbook(os.path.join(self.folder, platform, "Сезон – 赛车.xlsx")) for platform in PLATFORMS]
        self.assertGreater(len(books[0]), 36)
        self.assertEqual(books[0], books[1])
        for platform in PLATFORMS:
            self.run_in(platform, "site", league, "Web Ж")
        # The feed and the list of files hold the moment at which they were written.
        sites = [{name: bytes for name, bytes in tree(os.path.join(self.folder, platform, "Web Ж")).items()
                  if not name.endswith((".xml", "manifest.json")) and not os.path.basename(name).startswith(".")}
                 for platform in PLATFORMS]
        self.assertGreater(len(sites[0]), 150)
        self.assertEqual(sorted(sites[0]), sorted(sites[1]))
        self.assertEqual([name for name in sites[0] if sites[0][name] != sites[1][name]], [])
        # Each goes on with the league of the other, and leaves its bytes alone while it only looks.
        leagues = {p: os.path.join(self.folder, p, league) for p in PLATFORMS}
        for here, there in zip(PLATFORMS, reversed(PLATFORMS)):
            before = content(leagues[there])
            path = os.path.join("..", there, league)
            self.run_in(here, "check", path)
            self.assertEqual(self.run_in(here, "standings", path).stdout,
                             self.run_in(there, "standings", league).stdout)
            self.assertEqual(content(leagues[there]), before)
            self.run_in(here, "undo", path)
            self.run_in(there, "redo", league)
            self.run_in(here, "driver", path, "rename", "Jeff Gordon", "Jeff Gördön")
            self.assertIn("Jeff Gördön", self.run_in(there, "standings", league).stdout)
            self.run_in(there, "check", league)

    def test_what_is_wrong_is_said_in_the_same_words(self):
        league = os.path.join(self.folder, "windows", "Liga.lgx")
        for platform in PLATFORMS:
            self.run_in(platform, "create", "Liga.lgx", "--sim", "nr3")
        for args, code in ((("standings", "nicht da.lgx"), 1), (("import", "Liga.lgx", "keine Ж.stn"), 1),
                           (("nonsense",), 2), (("results", "Liga.lgx", "9"), 1),
                           (("export", "Liga.lgx", "--race", "9", "-o", "x.htm"), 1),
                           (("sql", "Liga.lgx", "SELECT * FROM [Größe]"), 1)):
            results = [self.run_in(platform, *args, check=code) for platform in PLATFORMS]
            self.assertEqual(results[0].stderr, results[1].stderr, args)
        whole = content(league)
        # Between quotes an asterisk without a folder is no pattern.
        self.assertEqual(self.run_in("windows", "sql", "Liga.lgx", "SELECT * FROM Race").returncode, 0)
        self.assertEqual(content(league), whole)

    def test_newer_simulations_pages(self):
        if not EVENT:
            self.skipTest("there are no exported pages here")
        for platform in PLATFORMS:
            self.run_in(platform, "create", "Event.lgx", "--sim", "nr2003")
            home = os.path.join(SOURCE, "share/samples/nr2003")
            self.run_in(platform, "import", "Event.lgx", "--sim-folder", home, *EVENT, check=None)
        self.both("standings", "Event.lgx")
        self.both("races", "Event.lgx", "--format", "json")

    def test_old_leagues_come_over_alike(self):
        reader = os.path.join(WINDOWS, "scorvane-mdbread.exe")
        for number, old in enumerate(LEGACY):
            lines = [subprocess.run(words, capture_output=True, timeout=60, check=True).stdout
                     for words in ([WINE, reader, old], [os.path.join(LINUX, "scorvane-mdbread"), old])]
            self.assertEqual(*lines)
            self.both("convert", old, f"Neu {number} ä.lgx")
            for table in ("Driver", "Race", "Stats", "Settings"):
                self.both("sql", f"Neu {number} ä.lgx", f"SELECT * FROM [{table}]", "--format", "json")
            self.both("standings", f"Neu {number} ä.lgx")

    def test_damaged_old_leagues_are_refused(self):
        chance = random.Random(1998)
        for number in range(DAMAGED):
            bytes_ = bytearray(content(chance.choice(LEGACY)))
            for _ in range(200):
                bytes_[chance.randrange(20, len(bytes_))] = chance.randrange(256)
            damaged = os.path.join(self.folder, "windows", f"kaputt {number}.lgx")
            with open(damaged, "wb") as file:
                file.write(bytes_)
            begun = time.monotonic()
            result = self.run_in("windows", "convert", damaged, f"neu {number}.lgx", check=None)
            self.assertLess(time.monotonic() - begun, 90)
            self.assertEqual(content(damaged), bytes(bytes_))
            there = os.path.exists(os.path.join(self.folder, "windows", f"neu {number}.lgx"))
            self.assertEqual(there, result.returncode == 0, result.stderr)

    def test_killed_imports_lose_nothing(self):
        chance = random.Random(7)
        league = os.path.join(self.folder, "windows", "Liga.lgx")
        self.run_in("windows", "create", "Liga.lgx", "--sim", "nr3")
        self.run_in("windows", "import", "Liga.lgx", *SEASON[:3])
        before = content(league)
        standings = self.run_in("windows", "standings", "Liga.lgx").stdout
        wholes = []
        for _ in range(3):
            with open(league, "wb") as file:
                file.write(before)
            begun = time.monotonic()
            self.run_in("windows", "import", "Liga.lgx", *SEASON[3:])
            wholes.append(time.monotonic() - begun)
        # Of three, because one may have waited for Wine's services.
        whole = min(wholes)
        counts = {3: 0, 33: 0}
        for number in range(KILLS):
            with open(league, "wb") as file:
                file.write(before)
            process = subprocess.Popen(command("windows", "import", "Liga.lgx", *SEASON[3:]),
                                       cwd=os.path.dirname(league), stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            if number % 2:
                time.sleep(chance.uniform(0.2 * whole, 1.1 * whole))
            else:
                # However long the start takes: while the change is being written.
                while not os.path.exists(league + "-journal") and process.poll() is None:
                    time.sleep(0.0005)
                time.sleep(chance.uniform(0, 0.02 * whole))
            # Some are killed, the others told to stop as Ctrl+C does.
            process.send_signal(signal.SIGKILL if number % 3 else signal.SIGINT)
            process.wait(60)
            races = len(self.run_in("windows", "races", "Liga.lgx", "--format", "csv").stdout.splitlines()) - 1
            self.assertIn(races, counts)
            counts[races] += 1
            if races == 3:
                self.assertEqual(self.run_in("windows", "standings", "Liga.lgx").stdout, standings)
            self.run_in("linux", "check", league)
            self.run_in("windows", "driver", "Liga.lgx", "add", f"Fahrer {number}")
            left = [name for name in os.listdir(os.path.dirname(league)) if name != "Liga.lgx"]
            self.assertEqual(left, [])
        if KILLS >= 10:
            self.assertGreater(counts[3], 0, "none was stopped before its end")
        print(f"\n{KILLS} imports stopped: {counts[3]} taken back, {counts[33]} complete", flush=True)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=1)
