"""Plays a recorded day through the plug-ins and compares the candles that a reader of the plain lines ends up with
with those of one fold of the file. Usage: watch_equals_candles.py KALVENTO TICKS.csv DAY"""

import pathlib
import shutil
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[3] / "testkit" / "support"))
from watched_candles import Tool, Watched

ticks, day = pathlib.Path(sys.argv[2]), sys.argv[3]

with tempfile.TemporaryDirectory() as home:
    folder = pathlib.Path(home) / "ticks"
    folder.mkdir()
    shutil.copyfile(ticks, folder / ticks.name)
    tool = Tool(sys.argv[1], home)
    live = 0
    for interval in ("1min", "1h", "7tick"):
        expected = tool.candles(ticks, interval)
        seen = Watched(tool.run("watch", ticks.stem.upper(), "--folder", folder, "--day", day, "--start", "09:00",
                                "--speed", "20000", "-i", interval, "--plain", "--idle-exit", "3"))
        live += seen.live
        if seen.candles != expected:
            sys.exit(f"{interval}: {len(seen.candles)} candles, expected {len(expected)}, or other values")
    if live == 0:
        sys.exit("nothing came live, so only the history was compared")
