"""Loads an invented session into a database and watches it through the plug-in: the candles must be those of one fold of the
file, also of rows that are loaded while somebody watches. Usage: load_and_watch.py KALVENTO DATABASE"""

import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[3] / "testkit" / "support"))
from watched_candles import Tool, Watched

database = sys.argv[2]


def check(what, right):
    if not right:
        sys.exit(what)


with tempfile.TemporaryDirectory() as home:
    tool = Tool(sys.argv[1], home)
    whole = pathlib.Path(home) / "whole.csv"
    tool.run("generate", "--rows", 6000, "--seed", 11, "-o", whole)
    header, *rows = whole.read_text().splitlines(keepends=True)

    def second_of(row):
        return row.split(",")[0]

    def write(name, part):
        path = pathlib.Path(home) / name
        path.write_text(header + "".join(part))
        return path

    def load(file, symbol, *counts):  # added, there before, in all
        line = tool.run("load", file, "--symbol", symbol, "--database", database)[-1]
        check(f"load {file.name}: {line}",
              line.replace(" ", "") == symbol + "".join(str(count) for count in counts))

    # Half of the day, then the file as it has grown, then a piece of its own: from a new second on.
    half = 3000
    most = next(row for row in range(5000, len(rows)) if second_of(rows[row]) != second_of(rows[row - 1]))
    begun, grown, piece = write("begun.csv", rows[:half]), write("grown.csv", rows[:most]), write("piece.csv", rows[most:])

    for interval in ("1min", "1h", "7tick"):
        symbol = "SES" + interval.upper()
        load(begun, symbol, half, 0, half)
        load(begun, symbol, 0, half, half)
        expected = tool.candles(begun, interval)
        watch = tool.start("watch", symbol, "--provider", "Baza", "--database", database, "-i", interval, "--plain",
                           "--candles", 0, "--idle-exit", 4)
        seen = Watched()
        while len(seen.candles) < len(expected) or seen.candles != expected:
            line = watch.stdout.readline()
            check(f"{interval}: the watch ended before it had told the history", line)
            seen.follow(line)
        live = seen.live
        load(grown, symbol, most - half, half, most)
        load(piece, symbol, len(rows) - most, 0, len(rows))
        for line in watch.stdout:
            seen.follow(line)
        check(f"{interval}: nothing came live", seen.live > live)
        expected = tool.candles(whole, interval)
        check(f"{interval}: {len(seen.candles)} candles, expected {len(expected)}, or other values",
              watch.wait() == 0 and seen.candles == expected)

        again = Watched(tool.run("watch", symbol, "--provider", "Baza", "--database", database, "-i", interval,
                                 "--plain", "--candles", 0, "--idle-exit", 2))
        check(f"{interval}: the whole day, watched afterwards, differs", again.candles == expected)
