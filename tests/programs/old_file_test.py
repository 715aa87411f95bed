#!/usr/bin/env python3
"""Old league files, converted as a user does it: old_file_test.py PROGRAM SOURCE_FOLDER [unittest arguments].

What came over is compared with what mdb-export, a tool of the format's own, prints. SCORVANE_DAMAGED sets how many
damaged copies of each file are tried.
"""

import csv
import io
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM, SOURCE = sys.argv[1], sys.argv[2]
LEGACY = os.path.join(SOURCE, "tests/data/legacy")
FILES = sorted(os.listdir(LEGACY))
DAMAGED = int(os.environ.get("SCORVANE_DAMAGED", "40"))


def cli(*args, check=0):
    result = subprocess.run([PROGRAM, *map(str, args), "--decimal", "."], capture_output=True, text=True,
                            stdin=subprocess.DEVNULL, timeout=150)
    if check is not None and result.returncode != check:
        raise AssertionError(f"{args}: exit {result.returncode}\n{result.stdout}{result.stderr}")
    return result


def rows(league, table):
    return json.loads(cli("sql", league, f"SELECT * FROM [{table}]", "--format", "json").stdout)


def exported(path, table):
    text = subprocess.run(["mdb-export", path, table], capture_output=True, text=True, check=True).stdout
    return list(csv.DictReader(io.StringIO(text)))


def same(old, new):
    """A text of the old file's tool, and our value."""
    if new is None:
        return old in ("", None)
    if isinstance(new, bool):
        return old == str(int(new))
    if isinstance(new, (int, float)):
        return old != "" and abs(float(old) - new) <= 1e-6 * max(1, abs(new))
    return old == new


class OldFileTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="scorvane-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.new = os.path.join(self.folder, "new.lgx")

    def test_every_row_comes_over(self):
        for name in FILES:
            with self.subTest(name):
                old = os.path.join(LEGACY, name)
                if os.path.exists(self.new):
                    os.remove(self.new)
                cli("convert", old, self.new)
                tables = subprocess.run(["mdb-tables", "-1", old], capture_output=True, text=True,
                                        check=True).stdout.split()
                self.assertIn("Stats", tables)
                for table in tables:
                    before, after = exported(old, table), rows(self.new, table)
                    # Opening adds settings that are missing, and refreshes the rules' queries.
                    if table == "Settings":
                        known = {row["SettingsID"] for row in before}
                        after = [row for row in after if str(row["SettingsID"]) in known]
                    key = next(iter(before[0])) if before else None
                    before.sort(key=lambda row: float(row[key]))
                    after.sort(key=lambda row: row[key])
                    self.assertEqual(len(after), len(before), table)
                    for one, other in zip(before, after):
                        for field, value in one.items():
                            if field == "CarNumber" or (table == "Bonus" and field == "Query"):
                                continue
                            self.assertTrue(same(value, other[field]), (table, field, value, other[field]))
                names = {row["Name"] for row in rows(self.new, "Driver")}
                self.assertLessEqual({"Pat O'Test", "Jürgen Müller", "Zoë €", "Ann|Bar"}, names)
                cli("check", self.new)
                cli("recalculate", self.new)
                standings = json.loads(cli("standings", self.new, "--format", "json").stdout)["rows"]
                self.assertGreater(len(standings), 3)
                # A key that was given out before is not given out again.
                highest = max(row["DriverID"] for row in rows(self.new, "Driver"))
                cli("driver", self.new, "add", "Next")
                self.assertGreater(max(row["DriverID"] for row in rows(self.new, "Driver")), highest)

    def test_a_second_open_changes_nothing(self):
        cli("convert", os.path.join(LEGACY, FILES[0]), self.new)
        with open(self.new, "rb") as file:
            before = file.read()
        cli("races", self.new)
        with open(self.new, "rb") as file:
            self.assertEqual(file.read(), before)

    def test_refusals(self):
        old = shutil.copy(os.path.join(LEGACY, FILES[0]), os.path.join(self.folder, "old.txt"))
        self.assertIn("old database format", cli("races", old, check=1).stderr)
        self.assertIn("convert", cli("check", old, check=1).stderr)
        with open(self.new, "w", encoding="ascii") as file:
            file.write("here already")
        self.assertIn("already exists", cli("convert", old, self.new, check=1).stderr)
        self.assertIn("old format", cli("convert", self.new, self.new + "2", check=1).stderr)
        self.assertIn("does not exist", cli("convert", old + "x", self.new + "2", check=1).stderr)

    def test_without_its_reader(self):
        old = os.path.join(LEGACY, FILES[0])
        lonely = os.path.join(self.folder, "bin")
        os.mkdir(lonely)
        for name in ("scorvane-cli", "Kirrelon.dat"):
            shutil.copy(os.path.join(os.path.dirname(PROGRAM), name), lonely)
        result = subprocess.run([os.path.join(lonely, "scorvane-cli"), "convert", old, self.new + "2"],
                                capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("scorvane-mdbread", result.stderr)
        self.assertFalse(os.path.exists(self.new + "2"))

    def test_locked_foreign_and_huge_files(self):
        old = shutil.copy(os.path.join(LEGACY, FILES[0]), os.path.join(self.folder, "old.lgx"))
        with open(old, "rb") as file:
            whole = bytearray(file.read())
        # Encrypted: everything behind the header is noise.
        noise = random.Random(7)
        encrypted = whole[:24] + bytes(noise.randrange(256) for _ in range(len(whole) - 24))
        for content in (encrypted, whole[:4096], whole + bytes(100 << 20)):
            with open(old, "wb") as file:
                file.write(content)
            if os.path.exists(self.new):
                os.remove(self.new)
            result = cli("convert", old, self.new, check=None)
            self.assertIn(result.returncode, (0, 1))
            self.assertEqual(os.path.exists(self.new), result.returncode == 0)
            with open(old, "rb") as file:
                self.assertEqual(file.read(), content)

    def test_killed_conversions_leave_the_original(self):
        old = shutil.copy(os.path.join(LEGACY, FILES[0]), os.path.join(self.folder, "old.lgx"))
        with open(old, "rb") as file:
            whole = file.read()
        dice = random.Random(9)
        for _ in range(20):
            for name in os.listdir(self.folder):
                if name.startswith("new"):
                    os.remove(os.path.join(self.folder, name))
            process = subprocess.Popen([PROGRAM, "convert", old, self.new], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            time.sleep(dice.uniform(0, 0.08))
            process.kill()
            process.wait()
            with open(old, "rb") as file:
                self.assertEqual(file.read(), whole)
            # What is there is a whole league or is refused as none; a second try is not in its way.
            if os.path.exists(self.new) and cli("check", self.new, check=None).returncode != 0:
                os.remove(self.new)
                if os.path.exists(self.new + "-journal"):
                    os.remove(self.new + "-journal")
            if not os.path.exists(self.new):
                cli("convert", old, self.new)

    @unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0, "mounting needs root")
    def test_full_disk(self):
        disk = os.path.join(self.folder, "disk")
        os.mkdir(disk)
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=48k", "tmpfs", disk], capture_output=True).returncode:
            self.skipTest("no tmpfs here")
        try:
            result = cli("convert", os.path.join(LEGACY, FILES[0]), os.path.join(disk, "new.lgx"), check=1)
            self.assertIn("space", result.stderr)
            self.assertEqual(os.listdir(disk), [])
        finally:
            subprocess.run(["umount", disk], check=True)

    def test_damaged_files_never_endanger_anything(self):
        dice = random.Random(2000)
        outcomes = {0: 0, 1: 0}
        for name in FILES:
            with open(os.path.join(LEGACY, name), "rb") as file:
                whole = file.read()
            for turn in range(DAMAGED):
                damaged = bytearray(whole)
                kind = turn % 3
                if kind == 0:
                    for _ in range(dice.choice((1, 4, 32, 256))):
                        damaged[dice.randrange(20, len(damaged))] = dice.randrange(256)
                elif kind == 1:
                    del damaged[dice.randrange(100, len(damaged)):]
                else:
                    start = dice.randrange(20, len(damaged))
                    end = min(len(damaged), start + dice.choice((16, 512, 4096)))
                    damaged[start:end] = bytes(end - start)
                old = os.path.join(self.folder, "damaged.lgx")
                with open(old, "wb") as file:
                    file.write(damaged)
                if os.path.exists(self.new):
                    os.remove(self.new)
                result = cli("convert", old, self.new, check=None)
                self.assertIn(result.returncode, (0, 1), (name, turn, result.stderr))
                outcomes[result.returncode] += 1
                with open(old, "rb") as file:
                    self.assertEqual(file.read(), bytes(damaged))
                if result.returncode == 0:
                    cli("races", self.new)
                else:
                    self.assertTrue(result.stderr.strip(), (name, turn))
                    self.assertFalse(os.path.exists(self.new), (name, turn, result.stderr))
        self.assertGreater(outcomes[0], 0)
        self.assertGreater(outcomes[1], 0)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
