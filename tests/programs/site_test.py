#!/usr/bin/env python3
"""The season's site as a user publishes it: site_test.py PROGRAM SOURCE_FOLDER [unittest arguments].

What is written is read back, pages and data, and must say what the command line says.
"""

import csv
import fcntl
import glob
import html.parser
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
import xml.etree.ElementTree

PROGRAM, SOURCE = sys.argv[1], sys.argv[2]
SEASON = sorted(glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")))
OFFLINE = sorted(glob.glob(os.path.join(SOURCE, "tests/data/standings/offline-*.stn")))
SHIM = os.path.join(os.path.dirname(PROGRAM), "tools/scorvane_faults.so")
HOME = tempfile.mkdtemp(prefix="scorvane-")
ENVIRONMENT = {**os.environ, "SCORVANE_HOME": HOME}
HOSTILE = ['<script>alert("1")</script>', "</title></table><b>", "O\"Neil & 'O'Hara", "\u202eevil\u202c", "عبد الله", "José Núñez",
           "Jose Nunez", "W" * 50, "{{league}}", "control\u0081\u0007"]


def cli(*args, check=0, **environment):
    result = subprocess.run([PROGRAM, *map(str, args)], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                            timeout=120, env={**ENVIRONMENT, **environment})
    if check is not None and result.returncode != check:
        raise AssertionError(f"{args}: exit {result.returncode}, not {check}\n{result.stdout}{result.stderr}")
    return result


def rows(*args):
    return json.loads(cli(*args, "--format", "json", "--decimal", ".").stdout)


class Page(html.parser.HTMLParser):
    """A page's tables as texts, its links, ids and texts."""

    def __init__(self, path):
        super().__init__()
        self.tables, self.links, self.ids, self.elements, self.text = [], [], [], [], ""
        self.cell = None
        with open(path, encoding="utf-8") as file:
            self.source = file.read()
        self.feed(self.source)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.elements.append((tag, attributes))
        if "id" in attributes:
            self.ids.append(attributes["id"])
        self.links += [attributes[name] for name in ("href", "src") if name in attributes]
        if tag == "table":
            self.tables.append([])
        elif tag == "tr":
            self.tables[-1].append([])
        elif tag in ("td", "th"):
            self.tables[-1][-1].append("")
            self.cell = self.tables[-1][-1]

    def handle_endtag(self, tag):
        if tag in ("td", "th"):
            self.cell = None

    def handle_data(self, data):
        self.text += data
        if self.cell is not None:
            self.cell[-1] += data


def fits(value, schema, root, where=""):
    """Whether data fits a schema, for what our schemas say."""
    if "$ref" in schema:
        schema = root["$defs"][schema["$ref"].rsplit("/", 1)[1]]
    kinds = {"object": dict, "array": list, "string": str, "integer": int, "number": (int, float), "boolean": bool, "null": type(None)}
    if "type" in schema:
        wanted = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        assert any(isinstance(value, kinds[kind]) and (kind == "boolean" or not isinstance(value, bool)) for kind in wanted), \
            f"{where}: {value!r} is no {wanted}"
    assert value == schema.get("const", value), where
    assert value in schema.get("enum", [value]), where
    if isinstance(value, (int, float)):
        assert value >= schema.get("minimum", value), where
    if isinstance(value, dict) and "properties" in schema | {"additionalProperties": 0}:
        assert set(schema.get("required", ())) <= set(value), f"{where}: lacks {set(schema['required']) - set(value)}"
        for key, item in value.items():
            inner = schema.get("properties", {}).get(key, schema.get("additionalProperties"))
            assert inner is not False, f"{where}: {key} is none of it"
            if isinstance(inner, dict):
                fits(item, inner, root, f"{where}/{key}")
    if isinstance(value, list):
        for place, item in enumerate(value):
            fits(item, schema.get("items", {}), root, f"{where}/{place}")


class SiteTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.leagues = tempfile.mkdtemp(prefix="scorvane-")
        cls.addClassCleanup(shutil.rmtree, cls.leagues, ignore_errors=True)
        cls.season = os.path.join(cls.leagues, "season.lgx")
        cli("create", cls.season, "--sim", "nr3", "--drop", 3, "--heading", "Cup <1998> & more")
        cli("import", cls.season, *SEASON)
        cls.short = os.path.join(cls.leagues, "short.lgx")
        cli("create", cls.short, "--sim", "nr3")
        cli("import", cls.short, *SEASON[:3])
        for league in (cls.season, cls.short):
            cli("standings", league)

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="scorvane-")
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.league = os.path.join(self.folder, "league.lgx")
        self.site = os.path.join(self.folder, "site")

    def use(self, league):
        shutil.copy(league, self.league)

    def publish(self, *options, **more):
        return cli("site", self.league, self.site, "--decimal", ".", *options, **more).stdout

    def page(self, name):
        return Page(os.path.join(self.site, name))

    def data(self, name="season"):
        with open(os.path.join(self.site, "data", name + ".json"), encoding="utf-8") as file:
            return json.load(file)

    def contents(self):
        """By their names; when the feed was written does not count."""
        found = {}
        for base, _, names in os.walk(self.site):
            for name in names:
                if name != ".scorvane-site.json":
                    path = os.path.join(base, name)
                    with open(path, "rb") as file:
                        found[os.path.relpath(path, self.site)] = re.sub(b"<updated>.*?</updated>", b"<updated/>", file.read())
        return found

    # ---- what every site must keep, and its numbers

    def check_whole(self):
        """Links lead somewhere, ids are there once, data fits its schema, nothing comes from elsewhere."""
        pages = {name: self.page(name) for name in self.contents() if name.endswith(".html")}
        self.assertIn("index.html", pages)
        for name, page in pages.items():
            self.assertEqual(len(page.ids), len(set(page.ids)), name)
            self.assertLessEqual({source for tag, attributes in page.elements if tag == "script"
                                  for source in [attributes.get("src")]}, {"assets/site.js", "../assets/site.js"}, name)
            for link in page.links:
                if link.startswith("data:image/"):
                    continue
                parts = urllib.parse.urlsplit(link)
                if parts.scheme:
                    self.assertTrue(link.startswith("https://league.example/"), link)
                    continue
                target = os.path.normpath(os.path.join(os.path.dirname(name), parts.path)) if parts.path else name
                self.assertTrue(os.path.isfile(os.path.join(self.site, target)), f"{name} leads to {link}")
                if parts.fragment:
                    self.assertIn(parts.fragment, pages[target].ids, f"{name} leads to {link}")
        schemas = {kind: self.data(f"{kind}.schema") for kind in ("season", "race")}
        fits(self.data(), schemas["season"], schemas["season"])
        for race in self.data()["races"]:
            fits(self.data(f"races/{race['id']}"), schemas["race"], schemas["race"])
        for name in ("feed.xml", "sitemap.xml"):
            if os.path.exists(os.path.join(self.site, name)):
                xml.etree.ElementTree.parse(os.path.join(self.site, name))
        return pages

    def check_numbers(self):
        """Reports, races and drivers say what the command line says."""
        season = self.data()
        for report in season["reports"]:
            told = rows("standings", self.league, "--report", report["name"])
            self.assertEqual([list(row.values())[1:] for row in told["rows"]][:1000], report["rows"], report["name"])
            self.assertEqual(told["caption"], report["caption"] + ":")
            # The page shows them as the table of the command line does.
            shown, number = [], 0
            while os.path.exists(os.path.join(self.site, name := report["page"].replace(".html", f"-{number + 1}.html" if number else ".html"))):
                shown += self.page(name).tables[0][1:]
                number += 1
            text = csv.reader(cli("standings", self.league, "--report", report["name"], "--format", "csv", "--decimal", ".").stdout.splitlines())
            names = next(text)
            self.assertEqual(len(shown), report["rowCount"], report["name"])
            for mine, theirs in zip(shown, text, strict=True):
                for cell, value, name in zip(mine, theirs, names, strict=True):
                    self.same(cell, value, f"{report['name']}, {name}")
        races = rows("races", self.league)
        self.assertEqual(sorted(race["id"] for race in season["races"]), sorted(race["RaceID"] for race in races))
        for race in season["races"]:
            told = rows("results", self.league, race["id"])
            data = self.data(f"races/{race['id']}")["results"]
            keys = {"finish": "Finish", "start": "Start", "laps": "LapsRun", "lapsLed": "LapsLed", "points": "Points", "bonus": "Bonus",
                    "qualifying": "Qualifying", "status": "Status", "prizeMoney": "PrizeMoney", "averageSpeed": "AvgSpeed"}
            self.assertEqual([{key: result[key] for key in keys} | {"driver": result["driver"]["name"]} for result in data],
                             [{key: result[name] for key, name in keys.items()} | {"driver": result["Driver"]} for result in told])
            page = self.page(race["page"])
            if not told:
                continue
            heads, *lines = page.tables[0]
            for line, result in zip(lines, told, strict=True):
                line = dict(zip(heads, line))
                for head, name in (("Finish", "Finish"), ("Laps", "LapsRun"), ("Led", "LapsLed"), ("Points", "Points"), ("Bonus", "Bonus")):
                    self.assertEqual(line[head], str(result[name]))
                self.assertEqual(line["Driver"], re.sub("[\u0080-\u009f\u0007]", "\ufffd", result["Driver"]))
                if result["Start"]:
                    self.assertEqual(int(line["Gained"]), result["Start"] - result["Finish"])
        standings = {row["Driver"]: (place, row) for place, row in enumerate(rows("standings", self.league)["rows"], 1)}
        dropped = {}
        for race in races:
            for result in rows("results", self.league, race["RaceID"]):
                dropped.setdefault(result["Driver"], set()).update([race["RaceID"]] if result["Dropped"] else [])
        for driver in season["drivers"]:
            place, row = standings.get(driver["name"], (None, None))
            self.assertEqual(driver["position"], place)
            if season["playoff"] is None:
                self.assertEqual(set(driver["droppedRaces"]), dropped[driver["name"]], driver["name"])
            if row is None:
                continue
            for key, name in (("points", "Points"), ("starts", "Starts"), ("wins", "Wins"), ("top5", "Top 5"), ("top10", "Top 10"),
                              ("poles", "Poles"), ("laps", "Laps"), ("lapsLed", "Laps Led"), ("dnfs", "DNFs"), ("bonus", "Bonus")):
                self.assertEqual(driver[key], row[name], f"{driver['name']}, {name}")
            self.assertAlmostEqual(driver["averageFinish"] or 0, row["Avg Finish"] or 0, 6)
            page = self.page(driver["page"])
            facts = dict(re.findall(r"<dt>([^<]*)</dt><dd>([^<]*)</dd>", page.source))
            self.assertEqual((facts["Position"], facts["Points"], facts["Wins"]), (str(place), str(row["Points"]), str(row["Wins"])))

    def same(self, cell, told, where):
        """A page's cell, formatted, beside a number as it is."""
        told = re.sub("[\u0080-\u009f\u0007]", "\ufffd", told)
        if cell == told or (cell, told) in {("--", ""), ("--", "0"), ("Yes", "True"), ("No", "False")}:
            return
        number = re.sub(r"[^0-9.-]", "", cell)
        self.assertTrue(number, f"{where}: {cell!r} beside {told!r}")
        places = len(number.split(".")[1]) if "." in number else 0
        self.assertLessEqual(abs(float(number) - float(told)), 0.5 * 10 ** -places + 1e-9, f"{where}: {cell} beside {told}")

    def test_season_says_what_the_command_line_says(self):
        self.use(self.season)
        cli("team", self.league, "add", "Hendrick & <Sons>")
        cli("team", self.league, "join", "Hendrick & <Sons>", "Jeff Gordon", "Terry Labonte")
        cli("penalty", self.league, "add", 33, "Dale Jarrett", "--points", 25, "--reason", "Late </li><script> & more")
        cli("driver", self.league, "exclude", "Rick Mast")
        for theme in ("classic", "paddock"):
            self.publish("--theme", theme)
        pages = self.check_whole()
        self.check_numbers()
        self.assertIn("reports/team-standings.html", pages)
        self.assertIn("(Late </li><script> & more)", pages["races/33-atlanta-motor-speedway.html"].text)
        self.assertEqual(self.data("races/33")["penalties"][0]["penalty"], "25 points off")
        history = {moment["races"]: moment["points"] for moment in self.data()["history"]}
        names = {driver["name"]: str(driver["id"]) for driver in self.data()["drivers"]}
        for after in (1, 7, 20, 33):
            told = rows("standings", self.league, "--after", after)["rows"]
            self.assertEqual({names[row["Driver"]]: row["Points"] for row in told}, history[after])
        with open(os.path.join(self.site, "standings.csv"), encoding="utf-8", newline="") as file:
            lines = list(csv.DictReader(file))
        self.assertEqual([(line["Driver"], line["Points"]) for line in lines],
                         [(row["Driver"], str(row["Points"])) for row in rows("standings", self.league)["rows"]])
        # What the front needs, all in all.
        files = self.contents()
        self.assertLess(sum(len(files[name]) for name in ("index.html", "assets/style.css", "assets/site.js", "assets/search.js")), 60000)
        # Points by race of the first ten, in numbers.
        chart = pages["reports/point-standings.html"].tables[1]
        self.assertEqual((len(chart), len(chart[0])), (34, 11))
        self.assertEqual(int(chart[-1][1]), rows("standings", self.league)["rows"][0]["Points"])

    def test_playoff_off_line_and_empty_leagues(self):
        self.use(self.season)
        cli("playoff", self.league, "preset", "2014", "--after", 26)
        self.publish()
        self.check_whole()
        self.check_numbers()
        front = self.page("index.html").text
        stage = rows("standings", self.league)["rows"][0]["Playoff"]
        self.assertIn(stage, front)

        cli("create", self.league, "--sim", "nr3", "--type", "offline", "--replace")
        cli("import", self.league, *OFFLINE)
        self.publish()
        self.check_whole()
        self.check_numbers()
        heads, *lines = self.page(self.data()["races"][0]["page"]).tables[0]
        told = rows("results", self.league, 1)
        self.assertEqual([line[heads.index("Speed")] for line in lines], [result["AvgSpeed"] or "" for result in told])

        cli("create", self.league, "--sim", "nr3", "--replace")
        self.publish()
        pages = self.check_whole()
        self.assertIn("No race has been run yet.", pages["index.html"].text)
        self.assertNotIn("matrix.html", pages)
        self.assertEqual(self.data()["drivers"], [])

    def test_hostile_texts_stay_texts(self):
        self.use(self.short)
        names = [row["Driver"] for row in rows("results", self.league, 1)]
        for old, new in zip(names, HOSTILE):
            cli("driver", self.league, "rename", old, new)
        heading = "<b>League</b> & </title><script>alert(1)</script>"
        cli("settings", self.league, 2, heading)
        cli("sql", self.league, "UPDATE Race SET Name='</script><img src=x onerror=alert(1)>' WHERE RaceID=2")
        for theme in ("classic", "paddock"):
            self.publish("--theme", theme, "--base-url", "https://league.example/a&b")
        pages = self.check_whole()
        self.check_numbers()
        data = self.data()
        self.assertEqual(data["league"]["name"], heading)
        self.assertLessEqual(set(HOSTILE), {driver["name"] for driver in data["drivers"]})
        self.assertEqual(data["races"][1]["name"], "</script><img src=x onerror=alert(1)>")
        for name, page in pages.items():
            self.assertFalse([attributes for tag, attributes in page.elements if tag == "img" or "onerror" in attributes], name)
            self.assertEqual(sum(tag == "script" for tag, _ in page.elements), 1, name)
            self.assertNotRegex(page.source, "[\u0000-\u0008\u007f-\u009f]", name)
        described = [attributes["content"] for tag, attributes in pages["races/1-daytona-international-speedway.html"].elements
                     if attributes.get("property") == "og:description"]
        self.assertIn(HOSTILE[0], described[0])
        # Names that look alike have a page each, and every name is one that servers take.
        self.assertEqual(len({driver["page"] for driver in data["drivers"]}), len(data["drivers"]))
        for name in self.contents():
            self.assertRegex(name, r"\A[a-z0-9./-]+\Z")
        search = self.contents()["assets/search.js"].decode()
        self.assertNotIn("<", search)
        entries = json.loads(search[search.index("=") + 1:search.rindex(";")])
        self.assertIn(HOSTILE[1], [entry[0] for entry in entries])
        feed = xml.etree.ElementTree.parse(os.path.join(self.site, "feed.xml")).getroot()
        self.assertEqual(feed.find("{http://www.w3.org/2005/Atom}title").text, heading)

    # ---- writing

    def times(self):
        return {name: os.stat(os.path.join(self.site, name)).st_mtime_ns for name in self.contents()}

    def test_only_what_differs_is_written(self):
        self.use(self.short)
        os.mkdir(self.site)
        notes = os.path.join(self.site, "notes.html")
        with open(notes, "w", encoding="utf-8") as file:
            file.write("mine")
        self.publish()
        first, times = self.contents(), self.times()
        with open(self.league, "rb") as file:
            league = file.read()
        self.assertIn("up to date", cli("site", self.league, "--decimal", ".").stdout)
        with open(self.league, "rb") as file:
            self.assertEqual(file.read(), league)
        self.assertEqual(self.times(), times)
        # What somebody removed, changed or put a link in the place of is mended; the link's target stays.
        os.remove(os.path.join(self.site, "races.html"))
        with open(os.path.join(self.site, "drivers.html"), "a", encoding="utf-8") as file:
            file.write("x")
        os.remove(os.path.join(self.site, "matrix.html"))
        os.symlink(notes, os.path.join(self.site, "matrix.html"))
        self.assertIn("3 files written", self.publish())
        self.assertEqual(self.contents(), first)
        # A rename keeps the address; a race that goes takes its pages with it.
        driver = self.data()["drivers"][0]
        cli("driver", self.league, "rename", driver["name"], "Somebody Else")
        cli("race", self.league, "remove", 3, "--yes")
        self.publish()
        self.assertEqual([entry["page"] for entry in self.data()["drivers"] if entry["name"] == "Somebody Else"], [driver["page"]])
        self.assertNotIn("data/races/3.json", self.contents())
        self.assertFalse(glob.glob(os.path.join(self.site, "races/3-*")))
        self.assertEqual(self.contents()["notes.html"], b"mine")
        self.check_whole_but("notes.html")
        # Taken back, the site is what it was.
        for change in ("undo", "undo"):
            cli(change, self.league)
        self.publish()
        self.assertEqual(self.contents(), first | {"notes.html": b"mine"})

    def check_whole_but(self, name):
        os.rename(os.path.join(self.site, name), os.path.join(self.folder, name))
        self.check_whole()
        os.rename(os.path.join(self.folder, name), os.path.join(self.site, name))

    def refused(self, *options, says):
        result = cli("site", self.league, *options, check=1)
        self.assertIn(says.lower(), result.stderr.lower())
        self.assertEqual(result.stdout, "")

    def test_files_of_others_are_left_alone(self):
        self.use(self.short)
        os.mkdir(self.site)
        for name in ("records.html", "other.html"):
            with open(os.path.join(self.site, name), "w", encoding="utf-8") as file:
                file.write("mine")
        self.refused(self.site, says="records.html' is there already and no part of the site")
        self.assertEqual(self.contents(), {"records.html": b"mine", "other.html": b"mine"})
        os.remove(os.path.join(self.site, "records.html"))
        self.publish()
        # A list from somewhere else removes nothing outside, and nothing behind a link.
        outside = os.path.join(self.folder, "precious.txt")
        linked = os.path.join(self.folder, "elsewhere")
        os.mkdir(linked)
        for path in (outside, os.path.join(linked, "page.html")):
            with open(path, "w", encoding="utf-8") as file:
                file.write("precious")
        os.symlink(linked, os.path.join(self.site, "linked"))
        manifest = os.path.join(self.site, ".scorvane-site.json")
        with open(manifest, encoding="utf-8") as file:
            listed = json.load(file)
        for name in ("../precious.txt", outside, "linked/page.html", "races/../../precious.txt"):
            listed["files"][name] = {"size": 8, "time": 0, "hash": "0", "changed": 0}
        with open(manifest, "w", encoding="utf-8") as file:
            json.dump(listed, file)
        self.publish("--accent", "#00ff00")
        for path in (outside, os.path.join(linked, "page.html")):
            self.assertTrue(os.path.exists(path))
        with open(manifest, "w", encoding="utf-8") as file:
            file.write("{]")
        self.refused(says="cannot be read")
        # Two programs at once.
        os.remove(manifest)
        handle = os.open(self.site, os.O_RDONLY)
        fcntl.flock(handle, fcntl.LOCK_EX)
        self.refused(says="is writing into the folder")
        os.close(handle)

    def test_the_chart_draws_whom_the_league_chooses(self):
        self.use(self.short)

        def drawn():
            with open(os.path.join(self.site, "reports/point-standings.html"), encoding="utf-8") as file:
                head = re.search(r'<table class="numbers">\s*<thead>(.*?)</thead>', file.read(), re.S).group(1)
            return re.findall(r"<bdi>(.*?)</bdi>", head)[1:]

        self.publish()
        first = drawn()
        self.assertEqual(len(first), 10)
        chosen = [first[7], first[2]]
        self.refused("--chart", "nobody at all", says="nobody at all")
        self.publish("--chart", chosen[0].upper(), "--chart", chosen[1], "--chart", chosen[1])
        self.assertEqual(drawn(), [first[2], first[7]], "as they stand in the championship")
        shown = {row["Setting"]: row["Value"] for row in rows("site", self.league, "--show")}
        self.assertEqual(set(shown["chart"].split(", ")), set(chosen))
        cli("site", self.league, "--chart", "")
        self.assertEqual(drawn(), first)
        every = [row["Name"] for row in rows("drivers", self.league)]
        self.refused(*(word for name in every[:21] for word in ("--chart", name)), says="20 drivers at most")

    def test_settings_are_remembered_and_checked(self):
        self.use(self.short)
        tables = "SELECT Count(*) AS N FROM SiteSetting"
        self.refused(says="takes a FOLDER")
        for options, says in ((["--theme", "nonesuch"], "There is no theme"), (["--base-url", "league.example"], "https://"),
                              (["--base-url", 'https://a.example/"x'], "https://"), (["--accent", "red"], "#RRGGBB"),
                              (["--logo", SEASON[0]], "PNG"), (["--logo", self.folder], "cannot be read")):
            self.refused(self.site, *options, says=says)
        self.assertFalse(os.path.exists(self.site))
        self.refused(SEASON[0], says="cannot be made")
        self.assertIn("cannot find", cli("sql", self.league, tables, check=1).stderr.lower())
        logo = os.path.join(SOURCE, "share/icons/scorvane-64.png")
        self.publish("--theme", "Paddock", "--accent", "AABBCC", "--logo", logo, "--base-url", " https://league.example/1998 ")
        with open(logo, "rb") as file:
            self.assertEqual(self.contents()["assets/logo.png"], file.read())
        shown = {row["Setting"]: row["Value"] for row in rows("site", self.league, "--show")}
        self.assertEqual((shown["folder"], shown["theme"], shown["accent"], shown["base-url"]),
                         (self.site, "paddock", "#aabbcc", "https://league.example/1998/"))
        sitemap = {element.text for element in xml.etree.ElementTree.parse(os.path.join(self.site, "sitemap.xml")).iter() if (element.text or "").strip()}
        self.assertEqual(sitemap, {"https://league.example/1998/" + ("" if name == "index.html" else name)
                                   for name in self.contents() if name.endswith(".html")})
        self.assertIn("https://league.example/1998/assets/logo.png", self.page("index.html").source)
        cli("site", self.league, "--logo", "", "--base-url", "", "--accent", "")
        self.assertFalse({"assets/logo.png", "sitemap.xml"} & set(self.contents()))
        self.assertEqual(rows("history", self.league)[0]["Change"], "Settings of the site")
        cli("undo", self.league)
        self.assertEqual(rows("site", self.league, "--show")[3]["Value"], "#aabbcc")
        self.assertIn("is in order", cli("check", self.league).stdout)

        # A theme of one's own takes from the program's what it does not have.
        theme = os.path.join(self.folder, "My Theme")
        os.makedirs(os.path.join(theme, "templates"))
        os.mkdir(os.path.join(theme, "pictures"))
        shutil.copy(logo, os.path.join(theme, "pictures/flag.png"))
        with open(os.path.join(theme, "theme.css"), "w", encoding="utf-8") as file:
            file.write("body { color: teal; }")
        with open(os.path.join(theme, "templates/records.mustache"), "w", encoding="utf-8") as file:
            file.write("{{> head}}<h1>Mine</h1>{{> foot}}")
        self.publish("--theme", theme)
        self.assertIn(b"color: teal", self.contents()["assets/style.css"])
        self.assertIn("assets/flag.png", self.contents())
        self.assertIn("Mine", self.page("records.html").text)
        for broken, says in (("{{#open}}", "cannot be filled"), ("{{> nonesuch}}", "cannot be read"), ("{{> records}}", "in a circle")):
            with open(os.path.join(theme, "templates/records.mustache"), "w", encoding="utf-8") as file:
                file.write(broken)
            before = self.contents()["records.html"]
            self.refused(says=says)
            self.assertEqual(self.contents()["records.html"], before)

    @unittest.skipUnless(os.path.exists(SHIM), "the program under test has no way to let its calls fail")
    def test_a_full_disk_and_a_kill_leave_whole_pages(self):
        self.use(self.short)
        self.publish()
        before = self.contents()
        cli("driver", self.league, "rename", "Dale Earnhardt", "Somebody Else")
        keep = os.path.join(self.folder, "keep")
        shutil.copytree(self.site, keep)
        log = os.path.join(self.folder, "calls")
        faults = {"LD_PRELOAD": SHIM, "SCORVANE_FAULT_FOLDER": self.site, "SCORVANE_FAULT_LOG": log}
        self.publish(**faults, SCORVANE_FAULT_AT="0")
        after = self.contents()
        self.assertNotEqual(before, after)
        with open(log, encoding="utf-8") as file:
            calls = len(file.readlines())
        self.assertGreater(calls, 50)
        for how in ("once", "on", "kill", "torn"):
            for call in range(1, calls + 1, 31):
                shutil.rmtree(self.site)
                shutil.copytree(keep, self.site)
                result = cli("site", self.league, "--decimal", ".", check=None, **faults, SCORVANE_FAULT_AT=str(call), SCORVANE_FAULT_HOW=how,
                             SCORVANE_FAULT_ERROR="ENOSPC")
                if result.returncode > 0:
                    self.assertIn("could not be written", result.stderr)
                for name, content in self.contents().items():
                    if not name.endswith(".tmp"):
                        self.assertIn(content, (before.get(name), after.get(name)), f"{name} after {how} at {call}")
                self.publish()
                self.assertEqual(self.contents(), after, f"after {how} at {call}")
        # From nothing: what a killed first run left is its own.
        shutil.rmtree(self.site)
        result = cli("site", self.league, "--decimal", ".", check=None, **faults, SCORVANE_FAULT_AT="60", SCORVANE_FAULT_HOW="kill")
        self.assertEqual(result.returncode, -signal.SIGKILL)
        self.publish()
        self.check_whole()
        self.assertEqual(len(self.contents()), len(after))


if __name__ == "__main__":
    try:
        unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=1)
    finally:
        shutil.rmtree(HOME, ignore_errors=True)
