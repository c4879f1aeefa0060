"""Plays a recorded day through the plug-ins and compares the candles that a reader of the plain lines ends up with
with those of one fold of the file. Usage: watch_equals_candles.py KALVENTO TICKS.csv DAY"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

tool, ticks, day = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
if not ticks.exists():
    print("no real market data at", ticks)
    sys.exit(77)

with tempfile.TemporaryDirectory() as home:
    folder = pathlib.Path(home) / "ticks"
    folder.mkdir()
    shutil.copyfile(ticks, folder / ticks.name)

    def run(*arguments):
        environment = {**os.environ, "HOME": home, "XDG_CACHE_HOME": home}
        return subprocess.run([tool, *arguments], env=environment, stdout=subprocess.PIPE, text=True,
                              timeout=120, check=True).stdout.splitlines()

    changes = 0
    for interval in ("1min", "1h", "7tick"):
        expected = [line.split(",") for line in run("candles", str(ticks), "-i", interval)][1:]
        seen = []
        for line in run("watch", ticks.stem.upper(), "--folder", str(folder), "--day", day, "--start", "09:00",
                        "--speed", "20000", "-i", interval, "--plain", "--idle-exit", "3"):
            fields = line.split(";")
            if fields[2] == "changed":
                seen.pop()
            seen.append(fields)
        changes += sum(fields[2] != "history" for fields in seen)
        numbers = lambda fields: [float(field) for field in fields]
        if [numbers(f[3:]) for f in seen] != [numbers(f[1:]) for f in expected]:
            print(f"{interval}: {len(seen)} candles, expected {len(expected)}, or other values")
            sys.exit(1)
    if changes == 0:
        print("nothing came live, so only the history was compared")
        sys.exit(1)
