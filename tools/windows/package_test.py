#!/usr/bin/env python3
"""What tools/windows/package made, as a user has it: package_test.py WINDOWS_FOLDER SOURCE_FOLDER.

The zip is unpacked and used where it lies; the installer is run silently, the program used from where it put it, then
uninstalled. All of it by a new user of Wine's, on paths with blanks and letters of other scripts.
"""

import glob
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

WINDOWS, SOURCE = map(os.path.abspath, sys.argv[1:3])
WINE = os.path.join(SOURCE, "tools/windows/wine")
SEASON = sorted(glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")))
KEYS = (r"HKCU\Software\Scorvane", r"HKCU\Software\Classes\.lgx", r"HKCU\Software\Classes\Scorvane.League",
        r"HKCU\Software\Classes\Applications\scorvane.exe",
        r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Scorvane")
PREFIX = tempfile.mkdtemp(prefix="scorvane-wine-")
ENVIRONMENT = {name: value for name, value in os.environ.items() if name not in ("SCORVANE_HOME", "WINEPATH")}
ENVIRONMENT["SCORVANE_WINEPREFIX"] = PREFIX


def wine(*args, cwd=None, check=0):
    # Into a file: Wine's desktop would hold a pipe open.
    with tempfile.TemporaryFile() as output:
        result = subprocess.run([WINE, *args], cwd=cwd, env=ENVIRONMENT, stdin=subprocess.DEVNULL, stdout=output,
                                stderr=subprocess.STDOUT, timeout=180)
        output.seek(0)
        text = output.read().decode("utf-8", "replace")
    if check is not None and result.returncode != check:
        raise AssertionError(f"{args}: exit {result.returncode}\n{text}")
    return text


def here(path):
    """A path of Wine's as this system knows it."""
    return wine("winepath.exe", "-u", path).strip()


def variable(name):
    return here(wine("cmd.exe", "/c", f"echo %{name}%").strip())


def files(folder):
    return {os.path.relpath(path, folder) for path in glob.glob(os.path.join(folder, "**"), recursive=True,
                                                                 include_hidden=True) if os.path.isfile(path)}


class PackageTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="Liga Süd – Лига 赛车 ")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        # Where a simulation is found, nothing is asked at the start.
        game = here(r"C:\Papyrus\NASCAR3")
        os.makedirs(game, exist_ok=True)
        with open(os.path.join(game, "NASCAR Racing 3.exe"), "w", encoding="ascii") as program:
            program.write("x")

    def use(self, program):
        """A season by the console program that lies there, and its window's own start."""
        wine(program, "create", "Größe Ж.lgx", "--sim", "nr3", cwd=self.folder)
        wine(program, "import", "Größe Ж.lgx", *SEASON, cwd=self.folder)
        self.assertIn("Jeff Gordon", wine(program, "standings", "Größe Ж.lgx", cwd=self.folder))
        wine(program, "export", "Größe Ж.lgx", "--season", "Сезон.xlsx", cwd=self.folder)
        with zipfile.ZipFile(os.path.join(self.folder, "Сезон.xlsx")) as book:
            self.assertIsNone(book.testzip())
            self.assertGreater(sum(name.startswith("xl/worksheets/sheet") for name in book.namelist()), 30)
        wine(program, "site", "Größe Ж.lgx", "Web", cwd=self.folder)
        self.assertTrue(os.path.exists(os.path.join(self.folder, "Web/index.html")))
        window = os.path.join(os.path.dirname(program), "scorvane.exe")
        self.assertRegex(wine(window, "--version"), r"^scorvane [0-9.]+\r?\n$")
        self.opens(window, "Größe Ж.lgx")

    def opens(self, window, league):
        """The window with a league given as argument, as the shell opens it."""
        show = ["sh", "-c",
                '"$0" "$1" "$2" & w=$!; timeout 60 xdotool search --sync --onlyvisible --name "$3"; found=$?; '
                'xdotool key ctrl+q; sleep 2; kill $w 2>/dev/null; exit $found',
                WINE, window, league, ". - Scorvane$"]
        result = subprocess.run(show, cwd=self.folder, env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=180)
        self.assertEqual(result.returncode, 0, "no window came up with the league")

    def test_the_zip_runs_where_it_is_unpacked(self):
        (archive,) = glob.glob(os.path.join(WINDOWS, "scorvane-*-windows.zip"))
        with zipfile.ZipFile(archive) as packed:
            packed.extractall(self.folder)
        program = os.path.join(self.folder, "Scorvane", "scorvane-cli.exe")
        before = files(os.path.dirname(program))
        roaming = os.path.join(variable("APPDATA"), "Scorvane")
        others = files(roaming)
        self.use(program)
        # What it keeps, it keeps beside itself.
        self.assertEqual(files(roaming), others)
        new = files(os.path.dirname(program)) - before
        self.assertEqual({name for name in new if not name.startswith("Backups")}, set())

    def test_an_installation_is_used_and_taken_away(self):
        (installer,) = glob.glob(os.path.join(WINDOWS, "scorvane-*-setup.exe"))
        place = os.path.join(variable("LOCALAPPDATA"), "Programs", "Scorvane")
        shortcut = glob.glob(os.path.join(variable("APPDATA"), "Microsoft/Windows/Start Menu/Programs")) or [""]
        shortcut = os.path.join(shortcut[0], "Scorvane.lnk")
        wine(installer, "/S")
        self.assertTrue(os.path.exists(shortcut))
        command = wine("reg.exe", "query", r"HKCU\Software\Classes\Scorvane.League\shell\open\command", "/ve")
        self.assertIn('scorvane.exe" "%1"', command)
        self.use(os.path.join(place, "scorvane-cli.exe"))
        # The user's own league in the program's folder, and his template, outlive it.
        shutil.copy(os.path.join(self.folder, "Größe Ж.lgx"), place)
        wine(os.path.join(place, "uninstall.exe"), "/S")
        for _ in range(100):  # it goes on as a copy of itself
            if files(place) == {"Größe Ж.lgx"}:
                break
            time.sleep(0.3)
        self.assertEqual(files(place), {"Größe Ж.lgx"})
        shutil.rmtree(place)
        self.assertFalse(os.path.exists(shortcut))
        for key in KEYS:
            wine("reg.exe", "query", key, check=1)
        self.assertIn("Kirrelon.dat", files(os.path.join(variable("APPDATA"), "Scorvane")))


if __name__ == "__main__":
    if os.environ.get("SCORVANE_DISPLAY") != "1":
        # One screen for all of it: Wine's desktop stays on the one, or none, that its first program had.
        shutil.rmtree(PREFIX)
        os.execvpe("xvfb-run", ["xvfb-run", "-a", sys.executable, *sys.argv], {**os.environ, "SCORVANE_DISPLAY": "1"})
    try:
        unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
    finally:
        subprocess.run(["wineserver", "--kill"], env={**os.environ, "WINEPREFIX": PREFIX}, check=False)
        shutil.rmtree(PREFIX, ignore_errors=True)
