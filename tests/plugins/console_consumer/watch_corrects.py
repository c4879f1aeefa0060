"""Shares with corporate operations through the plug-ins: candles of every interval are those of `candles --operations`.
What can't be read beside them is told, and the listing stores nothing. Usage: watch_corrects.py KALVENTO DAILY_FOLDER"""

import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[3] / "testkit" / "support"))
from watched_candles import Tool, Watched

daily = pathlib.Path(sys.argv[2])

with tempfile.TemporaryDirectory() as home:
    folder = pathlib.Path(home) / "market"
    folder.mkdir()
    tool = Tool(sys.argv[1], home)

    def watch(*arguments):
        return subprocess.run([tool.path, "watch", "--folder", folder, *arguments], env=tool.environment,
                              capture_output=True, text=True, timeout=120)

    shares = []
    for operations in sorted(daily.glob("operations_*.txt")):
        share = operations.stem.removeprefix("operations_")
        rows = next(daily.glob(share + "_*.csv")).read_text().splitlines()
        (folder / f"{share}.csv").write_text("".join(",".join(row.split(",")[:6]) + "\n" for row in rows))
        (folder / operations.name).write_bytes(operations.read_bytes())
        shares.append(share)
    for interval in ("1d", "1w", "1mo", "1y"):
        run = watch(*shares, "-i", interval, "--plain", "--idle-exit", "1")
        for share in shares:
            seen = Watched(line for line in run.stdout.splitlines() if line.startswith(share + ";"))
            expected = tool.candles(folder / f"{share}.csv", interval, "--operations", folder / f"operations_{share}.txt")
            if run.returncode != 0 or not expected or seen.candles != expected:
                sys.exit(f"{share} {interval}: other candles, or an end with {run.returncode}: {run.stderr}")

    (folder / "bad.csv").write_text("time,price\n2024-08-08 10:00:00,1.5\n2024-08-08 10:00:01,abc\n")
    run = watch(shares[0], "-i", "1w", "--plain", "--idle-exit", "1")
    if run.returncode != 3 or "bad.csv:3" not in run.stderr:
        sys.exit(f"a file that can't be read: an end with {run.returncode}, told: {run.stderr}")
    for store in pathlib.Path(home).rglob("Rows-*"):
        store.unlink()
    (folder / "new.csv").write_text("time,price\n2024-08-08 10:00:00,1.5\n")
    run = watch("--list")
    if run.returncode != 0 or "bad.csv:3" not in run.stdout or "new\tnew" not in run.stdout:
        sys.exit(f"the listing ended with {run.returncode}: {run.stdout}{run.stderr}")
    if stored := list(pathlib.Path(home).rglob("Rows-*")):
        sys.exit(f"the listing stored rows: {stored}")
