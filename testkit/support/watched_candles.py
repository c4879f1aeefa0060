"""Candles as the tool folds them from a file, and as a reader of `kalvento watch --plain` ends up with them."""

import os
import subprocess


class Tool:
    """The program, with a home folder of its own."""

    def __init__(self, path, home):
        self.path = str(path)
        self.environment = {**os.environ, "HOME": str(home), "XDG_CACHE_HOME": str(home)}

    def start(self, *arguments):
        return subprocess.Popen([self.path, *map(str, arguments)], env=self.environment, stdout=subprocess.PIPE,
                                text=True)

    def run(self, *arguments):
        """The lines of standard output; a failure ends the test."""
        return subprocess.run([self.path, *map(str, arguments)], env=self.environment, stdout=subprocess.PIPE,
                              text=True, timeout=120, check=True).stdout.splitlines()

    def candles(self, file, interval, *arguments):
        lines = self.run("candles", file, "-i", interval, *arguments)[1:]
        return [numbers(line.split(",")[1:]) for line in lines]


class Watched:
    """What stands when the lines of a watch were followed: `changed` takes the last candle's place."""

    def __init__(self, lines=()):
        self.candles = []
        self.live = 0  # lines that came after the history
        for line in lines:
            self.follow(line)

    def follow(self, line):
        state, *values = line.split(";")[2:]
        if state == "changed":
            self.candles.pop()
        self.candles.append(numbers(values))
        self.live += state != "history"


def numbers(fields):
    return [float(field) for field in fields]
