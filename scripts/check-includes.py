#!/usr/bin/env python3
"""Checks the floors of the source folders: which folder may include which, and that no includes run in a circle.

    scripts/check-includes.py [TREE]

Every include of every folder is resolved: to a file of the tree, by the include roots that the folder is built with, or to
the standard library or a package that the folder may use (PACKAGES). A folder may include its own headers and those of
lower floors (FLOORS), and no other. No header reaches itself through includes, and within a folder no room does: a header
with the source of its name. Every source stands in its folder's CMakeLists.txt, or the nearest above.
What is allowed all the same stands in
EXCEPTIONS with its reason, and goes from there when nothing needs it any more.

Prints each breach as `file:line: what` and ends with 1 if there are any.
"""
import os
import re
import sys
from pathlib import Path

# From the ground up; what stands together on a floor doesn't know of each other. A folder that isn't named is its parent's.
FLOORS = [
    ["src/platform"],
    ["src/velo"],
    ["src/settings"],
    ["src/time"],
    ["src/aggregation"],
    ["src/series"],
    ["src/history_operations"],
    ["src/folding"],
    ["src/modules", "src/assets"],
    ["src/alerts", "src/orders", "src/dragdrop", "src/styles"],
    ["src/platform/qt"],
    ["src/windows"],
    ["src/skins", "src/grids", "src/controls"],
    ["libs/host", "libs/text_rows", "libs/provider_kit"],
    ["libs/sql_store", "libs/nats_store", "libs/window_host", "testkit/contract_kit"],
    ["plugins/*", "apps/*", "testkit/support"],
    ["tests", "bench", "fuzz", "examples/*"],
]
# What the sources below a folder are built with, as -I would name it.
ROOTS = {
    "src": ["src"],
    "libs": ["src", "libs"],
    "testkit": ["src", "libs", "testkit"],
    "plugins": ["src", "libs", "plugins"],
    "apps": ["src", "libs", "apps"],
    "tests": ["src", "libs", "testkit", "plugins", "apps", "tests"],
    "bench": ["src", "libs", "testkit", "."],
    "fuzz": ["src", "libs", "testkit", "apps", "plugins", "tests"],
    "examples": ["src", "libs", "testkit"],
}
# All that an outside project finds installed.
INSTALLED = ("src/", "libs/provider_kit/", "testkit/contract_kit/")

# (file or folder that includes, file or folder that is included): why. None of them may close a circle of headers.
EXCEPTIONS = {
    ("src/modules", "src/assets"): "a mediator hands out assets, and an asset names the modules that serve it",
    ("src/assets", "src/modules"): "see above; forward declarations keep the headers free of circles",
    ("src/modules/IAppMediator.cpp", "src/dragdrop/DragDropManager.h"): "the mediator's constructor makes the one manager",
    ("src/aggregation/AggregatorWrapper.h", "src/folding/AggregatorWrapper.h"): "forwards the include of older plug-ins",
    ("src/aggregation/AggregatorTools.h", "src/folding/AggregatorTools.h"): "forwards the include of older plug-ins",
    ("src/settings/SettingsChildren.h", "src/settings/Settings.h"): "the inside of Settings, which its written form reads, too",
}

STANDARD = set("""
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits clocale
    cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib
    cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream functional future
    initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex
    new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex
    source_location span sstream stack stdexcept stop_token streambuf string string_view strstream syncstream system_error
    thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
""".split())
# Headers from outside by the beginning of their names, and who may know them.
TOOLS_OF_TESTS = ["testkit", "tests"]
PACKAGES = [
    # The operating system's own.
    (r"(unistd|poll|sched|spawn|fcntl|dlfcn|link|signal|pwd|grp)\.h$|(sys|linux|netinet|arpa)/",
     ["src/platform", "fuzz", *TOOLS_OF_TESTS]),
    (r"(ncurses|term|langinfo)\.h$", ["plugins/console_consumer"]),
    # The compiler's.
    (r"cxxabi\.h$", ["src/velo"]),
    (r"emmintrin\.h$", ["src/aggregation"]),
    (r"malloc\.h$", ["bench"]),
    # Packages.
    (r"date/", ["src/platform"]),
    (r"pugixml\.hpp$", ["src/settings"]),
    (r"spdlog/", ["src/velo"]),
    (r"fmt/", ["src", "libs", "plugins", "apps", "tests"]),
    (r"boost/date_time/", ["src/time", "tests/time"]),
    (r"boost/json", ["src/velo", "src/assets", "apps/kalvento", "tests", "fuzz"]),
    (r"tbb/", ["src/assets"]),
    (r"fast_float/", ["libs/text_rows"]),
    (r"(pqxx/|libpq-fe\.h$)", ["libs/sql_store", *TOOLS_OF_TESTS]),
    (r"CLI/", ["apps/kalvento/CommandLine.cpp"]),
    (r"(gtest|gmock)/", TOOLS_OF_TESTS),
    (r"benchmark/", ["bench"]),
    # The window toolkit comes with the windows.
    (r"Q[A-Z]\w*$|Qt\w+/", ["src/platform/qt", "src/windows", "src/skins", "src/grids", "src/controls", "libs/window_host"]),
]

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def below(name, folders):
    """Whether a file, or a folder, is one of `folders` or lies below one of them."""
    return any(name == folder or name.startswith(folder + "/") for folder in folders)


def place_of(name):
    """The folder of FLOORS in which a file stands, and the number of its floor; nothing where it has none."""
    places = {}
    for number, floor in enumerate(FLOORS):
        for folder in floor:
            found = re.match(re.escape(folder).replace(r"\*", "[^/]+") + "/", name)
            if found:
                places[found.group()[:-1]] = number
    folder = max(places, key=len, default=None)
    return folder, places.get(folder)


def room_of(name):
    return name.rsplit(".", 1)[0]


class Tree:
    """The sources of a tree, their includes, and what is wrong with them."""

    def __init__(self, top):
        self.top = top
        self.breaches = []
        self.needed = set()  # the exceptions that something needs
        paths = sorted(path for folder in top.iterdir() if folder.name != "build" and not folder.name.startswith(".")
                       for path in folder.rglob("*") if path.suffix in (".h", ".cpp"))
        # For each file the files of the tree that it includes.
        self.includes = {path.relative_to(top).as_posix(): set() for path in paths}
        for name in self.includes:
            self.read(name)

    def breach(self, name, line, what):
        self.breaches.append(f"{name}:{line}: {what}")

    def read(self, name):
        if place_of(name)[0] is None:
            self.breach(name, 1, f"the folder has no floor; give it one in {Path(__file__).name}")
            return
        for number, line in enumerate((self.top / name).read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            found = self.resolve(name, match[2]) if match[1] == '"' else None
            if found:
                self.includes[name].add(found)
                self.check_arrow(name, number, found)
            elif match[1] == '"':
                self.breach(name, number, f'"{match[2]}" is nowhere to be found; the roots: {", ".join(self.roots(name))}')
            else:
                self.check_outside(name, number, match[2])

    def roots(self, name):
        return ROOTS[name.split("/", 1)[0]]

    def resolve(self, name, target):
        """The file of the tree that an include in quotes means, or nothing."""
        for folder in [str(Path(name).parent), *self.roots(name)]:
            found = os.path.normpath(f"{folder}/{target}")
            if found in self.includes:
                return found
        return None

    def check_outside(self, name, number, target):
        if target in STANDARD:
            return
        users = next((users for pattern, users in PACKAGES if re.match(pattern, target)), None)
        if users is None:
            self.breach(name, number, f"<{target}> is neither of the standard library nor of a package that we know")
        elif not below(name, users):
            self.breach(name, number, f"<{target}> is for {', '.join(users)} only")

    def check_arrow(self, name, number, target):
        folder, floor = place_of(name)
        other, other_floor = place_of(target)
        if other is None or folder == other:
            return
        if name.startswith("examples/") and not target.startswith(INSTALLED):
            self.breach(name, number, f"{target} is not installed")
        elif other_floor >= floor and not self.excepted(name, target):
            where = "stands above it" if other_floor > floor else "stands beside it"
            self.breach(name, number, f"'{folder}' may not include {target}: '{other}' {where}")

    def excepted(self, name, target):
        pairs = [pair for pair in EXCEPTIONS if below(name, pair[:1]) and below(target, pair[1:])]
        self.needed.update(pairs)
        return bool(pairs)

    def check_exceptions(self):
        for pair, reason in EXCEPTIONS.items():
            if pair not in self.needed and (self.top / pair[0]).exists():
                self.breach(pair[0], 1, f"nothing there includes {pair[1]}: take it out of EXCEPTIONS ('{reason}')")

    def check_circles(self):
        headers = {name: {other for other in others if other.endswith(".h")}
                   for name, others in self.includes.items() if name.endswith(".h")}
        for circle in circles(headers):
            self.breaches.append("headers in a circle: " + " -> ".join(circle))
        rooms = {}
        for name, others in self.includes.items():
            room = room_of(name)
            known = rooms.setdefault(room, set())
            for other in others:
                beside = place_of(other)[0] == place_of(name)[0] and room_of(other) != room
                if beside and not self.excepted(name, other):
                    known.add(room_of(other))
        for circle in circles(rooms):
            self.breaches.append("rooms in a circle: " + " -> ".join(circle))

    def check_listings(self):
        for name in self.includes:
            if not name.endswith(".cpp"):
                continue
            # Its folder's, or the nearest above it.
            listing = next(folder / "CMakeLists.txt" for folder in (self.top / name).parents
                           if folder == self.top or (folder / "CMakeLists.txt").exists())
            text = listing.read_text(encoding="utf-8") if listing.exists() else ""
            if not re.search(rf"(?<![\w.]){re.escape(Path(name).name)}\b", text):
                self.breach(name, 1, f"not named in {listing.relative_to(self.top)}")


def circles(arrows):
    """Ways in `arrows` (a name, and the names that it leads to) that end where they begin: one, at least, for every knot."""
    found, done = [], set()

    def visit(name, way):
        if name in way:
            if not any(name in circle for circle in found):
                found.append(way[way.index(name):] + [name])
        elif name not in done:
            for other in sorted(arrows.get(name, ())):
                visit(other, way + [name])
            done.add(name)

    for name in sorted(arrows):
        visit(name, [])
    return found


def main():
    tree = Tree(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent)
    tree.check_circles()
    tree.check_listings()
    tree.check_exceptions()
    for breach in tree.breaches:
        print(breach)
    return 1 if tree.breaches else 0


if __name__ == "__main__":
    sys.exit(main())
