"""Names with the letters of Poland, names that would act on a terminal, and ends by the machine, as a user of the program
meets them. Usage: borders.py KALVENTO [SANITIZERS]"""

import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unicodedata

program, sanitized = sys.argv[1], len(sys.argv) > 2 and sys.argv[2] != ""
TICKS = "time,price,volume\n" + "".join(f"2024-01-02 09:{minute:02}:00,{minute}.5,1\n" for minute in range(60))
faults = []


def expect(holds, what, run):
    if not holds:
        faults.append(f"{what}: exit {run.returncode}\n{run.stdout!r}\n{run.stderr!r}")


def run(home, *arguments, **options):
    environment = {**os.environ, "HOME": str(home), "XDG_DATA_HOME": str(home / "data"), "LC_ALL": "C.UTF-8"}
    options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "timeout": 120, **options}
    return subprocess.run([program, *map(str, arguments)], env=environment, **options)


def is_plain(text):
    """UTF-8 without controls but line feeds and tabs."""
    return all(letter in "\n\t" or unicodedata.category(letter) not in ("Cc", "Cf", "Zl", "Zp")
               for letter in text.decode("utf-8"))


def names(home):
    folder = home / "notowania"
    folder.mkdir()
    #        file                    asked for           shown
    table = [("ŻÓŁĆ.csv", "żółć", "ŻÓŁĆ"),
             ("żółw.csv", "Żółw", "żółw"),
             ("czerwony\x1b[31m.csv", "czerwony__31m", "czerwony"),
             ("linia\nnowa.csv", "linia_nowa", "linia"),
             ("日本.csv", "__", "__"),
             ("odwrotny\u202e.csv", "odwrotny_", "odwrotny")]
    for file, asked, shown in table:
        (folder / file).write_text(TICKS)
    (folder / "pusty\x1b]0;x\x07.csv").write_text("\x1b[2J\u202e,b\n1,2\n")
    for file, asked, shown in table:
        one = run(home, "candles", folder / file, "-i", "1h", "--format", "jsonl")
        expect(one.returncode == 0 and is_plain(one.stdout + one.stderr), f"candles {file!r}", one)
        one = run(home, "watch", asked, "ŻÓŁĆ", "--folder", folder, "--day", "2024-01-02", "--speed", "0", "-i", "1h",
                  "--plain", "--idle-exit", "1")
        text = one.stdout.decode("utf-8", "replace")
        expect(one.returncode == 3 and is_plain(one.stdout) and f"{shown}" in text and "ŻÓŁĆ;" in text,
               f"watch {asked!r}", one)
    one = run(home, "watch", "ŻÓŁW", "nie ma", "--folder", folder, "--day", "2024-01-02", "--speed", "0", "-i", "1h",
              "--plain", "--idle-exit", "1")
    expect(one.returncode == 4 and "żółw;".encode() in one.stdout and b"nie ma" in one.stderr, "an unknown one", one)
    one = run(home, "watch", "--list", "--folder", folder)
    expect(is_plain(one.stdout + one.stderr) and "żółw".encode() in one.stdout, "watch --list", one)
    for arguments in (["candles", folder / "pusty\x1b]0;x\x07.csv", "-i", "1h"], ["check", "nie ma\x1b[31m\n"],
                      ["candles", "x.csv", "-i", "1\x1b[31m"], ["--\x1b[31m"], ["watch", "\x1b[31m", "--plain"]):
        one = run(home, *arguments)
        expect(one.returncode not in (0, 1) and is_plain(one.stderr), f"{arguments!r}", one)


def ends(home):
    file = home / "ticks.csv"
    file.write_text(TICKS)
    fold = ("candles", file, "-i", "1min")
    with open("/dev/full", "wb") as full:
        for arguments in (fold, ("--help",), ("series",), ("show", file), ("live", file, "-i", "1h", "--no-follow")):
            one = run(home, *arguments, stdout=full)
            if arguments[0] != "show":
                expect(one.returncode == 1 and b"standard output" in one.stderr, f"full disk: {arguments}", one)
    reader, writer = os.pipe()
    os.close(reader)
    one = run(home, *fold, stdout=writer)
    os.close(writer)
    expect(one.returncode == 0 and one.stderr == b"", "a reader that left", one)
    one = run(home, *fold, stdout=None, preexec_fn=lambda: os.close(1))
    expect(one.returncode == 1 and b"standard output" in one.stderr, "no standard output", one)
    one = run(home, *fold, "-o", home / "limited.csv",
              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
    expect(one.returncode == 1 and b"limited.csv" in one.stderr and not (home / "limited.csv").exists(), "SIGXFSZ", one)

    # The pipe's other end opens when the tool reads: by then it has its handlers.
    pipe = home / "pipe"
    os.mkfifo(pipe)
    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
        with subprocess.Popen([program, "candles", str(pipe), "-i", "1min", "-o", str(home / "out.csv")],
                              stderr=subprocess.PIPE) as process, open(pipe, "w") as feed:
            feed.write(TICKS)
            feed.flush()
            process.send_signal(number)
            err = process.stderr.read()
            process.wait(timeout=60)
            if process.returncode != -number or number.name.encode() not in err or (home / "out.csv").exists():
                faults.append(f"{number.name}: exit {process.returncode}, {err!r}")
    # Sanitizers reserve more addresses than any limit leaves.
    if sanitized:
        return
    big = home / "big.csv"
    run(home, "generate", "--rows", "50000", "-o", big)
    for limit in range(30 << 20, 54 << 20, 4 << 20):
        one = run(home, "candles", big, "-i", "1tick", "--format", "table",
                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)), stdout=subprocess.DEVNULL)
        expect(one.returncode >= 0 and one.returncode in (0, 1, 127), f"{limit >> 20} MB of memory", one)


with tempfile.TemporaryDirectory() as home:
    for check in (names, ends):
        place = pathlib.Path(home) / check.__name__
        place.mkdir()
        check(place)
if faults:
    sys.exit("\n".join(faults))
