#!/usr/bin/env python3
"""Prints benchmark results as a table, and the ratios that a list names.

usage: bench-report.py RATIOS RESULT.json...

RATIOS holds one claim a line, `what it says = NUMERATOR / DENOMINATOR`, where both sides are full benchmark names
(as in the table); blank lines and lines that begin with # are skipped. A ratio above 1 says that the numerator took
longer. Only ratios of one run on one machine mean anything, which is why nothing here is compared with stored numbers.
"""
import json
import sys
from pathlib import Path

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


# Benchmarks that time two ways in turn say the ratio themselves, and the bar that they are held against.
PAIRED = {
    "times_faster": "{:8.2f} times faster   (bar: at least {:g})",
    "of_the_time": "{:8.2f} of the time    (bar: at most {:g})",
}


def readable(number, unit):
    for factor, prefix in ((1e9, "G"), (1e6, "M"), (1e3, "k")):
        if number >= factor:
            return f"{number / factor:.3g} {prefix}{unit}"
    return f"{number:.3g} {unit}"


def readable_time(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def load(paths):
    """Time of one iteration in seconds by benchmark name, the rows of the table, and the ratios of paired benchmarks."""
    times, rows, pairs = {}, [], []
    for path in paths:
        if not path.exists() or path.stat().st_size == 0:
            continue
        for run in json.loads(path.read_text(encoding="utf-8")).get("benchmarks", []):
            if run.get("error_occurred"):
                sys.exit(f"{path.stem}: {run['name']} failed: {run.get('error_message', '')}")
            if run.get("run_type") == "aggregate":
                continue
            seconds = run["real_time"] * SECONDS[run["time_unit"]]
            times[run["name"]] = seconds
            rate = ""
            if "items_per_second" in run:
                rate = readable(run["items_per_second"], "rows/s")
            elif "bytes_per_second" in run:
                rate = readable(run["bytes_per_second"], "B/s")
            rows.append((path.stem, run["name"], readable_time(seconds), rate))
            for counter, text in PAIRED.items():
                if counter in run:
                    pairs.append((run["name"].split("/iterations")[0], text.format(run[counter], run["bar"])))
    return times, rows, pairs


def main(arguments):
    if len(arguments) < 2:
        sys.exit(__doc__)
    ratios, reports = Path(arguments[0]), [Path(name) for name in arguments[1:]]
    times, rows, pairs = load(reports)
    if not rows:
        sys.exit("no benchmark matched")

    width = max(len(row[1]) for row in rows)
    program = None
    for row in rows:
        if row[0] != program:
            program = row[0]
            print(f"\n{program}")
        print(f"  {row[1]:<{width}}  {row[2]:>10}  {row[3]:>14}")

    if pairs:
        print("\nratios of two ways timed in turn in one process")
        width = max(len(name) for name, _ in pairs)
        for name, text in pairs:
            print(f"  {name:<{width}}  {text}")

    claims = []
    for number, line in enumerate(ratios.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.lstrip().startswith("#"):
            continue
        try:
            text, sides = (part.strip() for part in line.split("=", 1))
            above, below = (part.strip() for part in sides.split(" / ", 1))
        except ValueError:
            sys.exit(f"{ratios}:{number}: expected `what it says = NUMERATOR / DENOMINATOR`")
        if above in times and below in times:
            claims.append((text, times[above] / times[below]))
        elif len(reports) and (above in times) != (below in times):
            print(f"{ratios}:{number}: only one side was run: {sides}", file=sys.stderr)
    if claims:
        print("\nratios of this run")
        width = max(len(text) for text, _ in claims)
        for text, ratio in claims:
            print(f"  {text:<{width}}  {ratio:8.2f} x")


if __name__ == "__main__":
    main(sys.argv[1:])
