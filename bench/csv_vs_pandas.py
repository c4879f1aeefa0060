#!/usr/bin/python3
"""How much faster `kalvento candles` folds a CSV file of ticks into minute candles than pandas does.

Both are whole processes that read the same file from the page cache and write a CSV file; the ratio is of the best of
several runs, taken in turn on one machine. Needs python3-pandas.

    bench/csv_vs_pandas.py build/release/apps/kalvento/kalvento [rows] [rounds]
"""

import csv
import os
import random
import resource
import subprocess
import sys
import tempfile
import time

PANDAS = """
import sys
import pandas
ticks = pandas.read_csv(sys.argv[1], parse_dates=["time"], index_col="time")
candles = ticks["price"].resample("1min").ohlc()
candles["volume"] = ticks["volume"].resample("1min").sum()
candles.dropna().to_csv(sys.argv[2])
"""


def write_ticks(path, rows):
    """Ticks of a busy market: milliseconds, many of them equal, about ten in a second."""
    rng = random.Random(7)
    steps = (0, 0, 1, 3, 20, 40, 150, 173)
    moves = (-0.5, -0.01, 0, 0, 0.01, 0.5)
    now, price, second, text = 1722816000 * 1000, 61837.63, None, ""
    with open(path, "w", buffering=1 << 20) as out:
        out.write("time,price,volume\n")
        for _ in range(rows):
            now += rng.choice(steps)
            price += rng.choice(moves)
            if now // 1000 != second:
                second = now // 1000
                text = time.strftime("%Y-%m-%d %H:%M:%S", time.gmtime(second))
            out.write("%s.%03d,%.2f,%.4f\n" % (text, now % 1000, price, rng.random() * 2))


def run(command):
    """Seconds and peak memory in bytes of a whole process."""
    begin = time.perf_counter()
    process = subprocess.Popen(command)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - begin
    if status != 0:
        sys.exit("failed: " + " ".join(command))
    return seconds, usage.ru_maxrss * 1024


def check(ours, theirs):
    """The two must have made the same candles before their times mean anything."""
    with open(ours, newline="") as left, open(theirs, newline="") as right:
        left, right = list(csv.reader(left))[1:], list(csv.reader(right))[1:]
    if len(left) != len(right):
        sys.exit("%d candles here, %d from pandas" % (len(left), len(right)))
    for a, b in zip(left, right):
        same = a[0] == b[0] and all(float(x) == float(y) for x, y in zip(a[1:5], b[1:5]))
        if not same or abs(float(a[5]) - float(b[5])) > 1e-6 * max(1.0, abs(float(b[5]))):
            sys.exit("different candles: %s and %s" % (a, b))
    return len(left)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__ or "usage: csv_vs_pandas.py KALVENTO [ROWS [ROUNDS]]")
    tool = sys.argv[1]
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 5_000_000
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    with tempfile.TemporaryDirectory() as folder:
        ticks = os.path.join(folder, "ticks.csv")
        ours = os.path.join(folder, "ours.csv")
        theirs = os.path.join(folder, "theirs.csv")
        write_ticks(ticks, rows)
        results = {"kalvento": [], "pandas": []}
        for _ in range(rounds):
            results["kalvento"].append(run([tool, "candles", ticks, "-i", "1min", "-o", ours, "-q"]))
            results["pandas"].append(run([sys.executable, "-c", PANDAS, ticks, theirs]))
        candles = check(ours, theirs)
        size = os.path.getsize(ticks)
    print("%d rows, %.0f MB, %d candles, best of %d" % (rows, size / 1e6, candles, rounds))
    best = {}
    for name, runs in results.items():
        best[name] = min(seconds for seconds, _ in runs)
        memory = min(peak for _, peak in runs)
        print("%-9s %7.3f s  %6.1f MB at most  %6.1f MB/s" % (name, best[name], memory / 1e6, size / 1e6 / best[name]))
    print("ratio     %7.1f" % (best["pandas"] / best["kalvento"]))


if __name__ == "__main__":
    main()
