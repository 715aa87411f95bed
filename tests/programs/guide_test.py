#!/usr/bin/env python3
"""Every command of the guide works, in its order: guide_test.py PROGRAM SOURCE_FOLDER"""

import glob
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

PROGRAM, SOURCE = map(os.path.abspath, sys.argv[1:3])


def main():
    with open(os.path.join(SOURCE, "docs/guide.md"), encoding="utf-8") as file:
        blocks = re.findall(r"^```\n(.*?)\n```$", file.read(), re.MULTILINE | re.DOTALL)
    commands = [line for block in blocks for line in block.split("\n")]
    if len(commands) < 30:
        sys.exit(f"only {len(commands)} commands were found")
    with tempfile.TemporaryDirectory() as folder:
        for path in (glob.glob(os.path.join(SOURCE, "share/samples/season-1998/*.stn")) +
                     glob.glob(os.path.join(SOURCE, "share/samples/nr2003/exports_imports/*")) +
                     glob.glob(os.path.join(SOURCE, "tests/data/standings/offline-*.stn"))):
            shutil.copy(path, folder)
        shutil.copytree(os.path.join(SOURCE, "share/samples/nr2003"), os.path.join(folder, "nr2003"))
        shutil.copy(os.path.join(SOURCE, "tests/data/legacy/league-2000.lgx"), os.path.join(folder, "old.lgx"))
        home = os.path.join(folder, "home")
        os.mkdir(home)
        for line in commands:
            program, *arguments = shlex.split(line)
            if program != "scorvane-cli":
                sys.exit(f"no command: {line}")
            done = subprocess.run([PROGRAM, *arguments], cwd=folder, capture_output=True, text=True,
                                  stdin=subprocess.DEVNULL, env={**os.environ, "SCORVANE_HOME": home, "LC_ALL": "C.UTF-8"})
            if done.returncode != 0:
                sys.exit(f"{line}\nexit status {done.returncode}: {done.stderr}{done.stdout}")
        missing = [name for name in ("standings.htm", "pages/index.htm", "public_html/index.html", "season.xlsx", "wins.csv",
                                     "before-the-final.lgx", "new.lgx") if not os.path.exists(os.path.join(folder, name))]
        if missing:
            sys.exit(f"not written: {missing}")
    subprocess.run([sys.executable, os.path.join(SOURCE, "tools/make_guide.py"), "--check"], check=True)


if __name__ == "__main__":
    main()
