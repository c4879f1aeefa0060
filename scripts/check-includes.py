#!/usr/bin/env python3
"""Checks the floors of the source folders: which folder may include which, and that no includes run in a circle.

A folder may include its own headers and those of the floors above it in FLOORS, and no other; folders of one line
may name each other. A file never reaches itself through includes. Every source stands in its folder's CMakeLists.txt,
and folders of data include no window toolkit. Prints each breach as `file:line: what` and ends with 1 if there are any.
"""
import re
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent

# From the ground up. `aggregation` stands on two floors: the data store is folded by the Aggregator, and the wrapper
# folds the data store. Its upper half is named by file.
FLOORS = [
    ["platform"],
    ["velo"],
    ["settings"],
    ["time"],
    ["aggregation"],
    ["series"],
    ["aggregation (wrapper)", "history_operations"],
    ["modules", "assets"],
    ["alerts", "orders", "dragdrop"],
    ["platform/qt", "styles", "windows"],
    ["grids", "controls"],
    ["apps", "plugins"],
]
# What a source, never a header, takes from above, with the reason.
EXCEPTIONS = {
    ("modules/IAppMediator.cpp", "dragdrop/DragDropManager.h"): "constructing the mediator creates the one manager",
}
FLOOR_OF = {folder: number for number, floor in enumerate(FLOORS) for folder in floor}
WRAPPER_FILES = re.compile(r"aggregation/Aggregator(Wrapper|Tools)\.(h|cpp)$")
WINDOW_FLOOR = FLOOR_OF["styles"]
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
TOOLKIT = re.compile(r"^(Q[A-Z]\w*|Qt\w+/\w+)$")


def folder_of(path):
    """The folder of FLOORS in which a file stands; `path` is relative to src/ or begins with apps/ or plugins/."""
    text = path.as_posix()
    if WRAPPER_FILES.search(text):
        return "aggregation (wrapper)"
    if text.startswith("platform/qt/"):
        return "platform/qt"
    return text.split("/", 1)[0]


def sources():
    """Every file that is checked, as (path relative to the include root, absolute path)."""
    for root, base in (("src", TOP / "src"), ("apps", TOP), ("plugins", TOP)):
        for path in sorted((TOP / root).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(base), path


def find_circle(includes):
    """A list of files in which each includes the next and the last is the first, or nothing."""
    done, on_way = set(), []

    def visit(name):
        if name in on_way:
            return on_way[on_way.index(name):] + [name]
        if name in done:
            return None
        on_way.append(name)
        for other in includes.get(name, ()):
            circle = visit(other)
            if circle:
                return circle
        on_way.pop()
        done.add(name)
        return None

    for name in includes:
        circle = visit(name)
        if circle:
            return circle
    return None


def main():
    breaches, includes = [], {}
    files = list(sources())
    known = {relative.as_posix() for relative, _ in files}
    for relative, path in files:
        shown, folder = path.relative_to(TOP), folder_of(relative)
        if folder not in FLOOR_OF:
            breaches.append(f"{shown}:1: the folder '{folder}' has no floor; give it one in {Path(__file__).name}")
            continue
        name = relative.as_posix()
        includes[name] = []
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            quote, target = match.groups()
            if TOOLKIT.match(target) and FLOOR_OF[folder] < WINDOW_FLOOR:
                breaches.append(f"{shown}:{number}: {target} is of the window toolkit, which '{folder}' may not know")
            if quote == "<":
                continue
            # The sources of an application may name their own headers without a folder.
            beside = (relative.parent / target).as_posix()
            target = target if target in known else beside if beside in known else target
            if target not in known:
                continue
            includes[name].append(target)
            other = folder_of(Path(target))
            if FLOOR_OF.get(other, 0) > FLOOR_OF[folder] and (name, target) not in EXCEPTIONS:
                breaches.append(f"{shown}:{number}: '{folder}' may not include {target}: '{other}' stands above it")
        if path.suffix == ".cpp":
            listing = path.parent / "CMakeLists.txt"
            if not listing.exists() or not re.search(rf"\b{re.escape(path.name)}\b", listing.read_text(encoding="utf-8")):
                breaches.append(f"{shown}:1: not named in {listing.relative_to(TOP)}")
    circle = find_circle(includes)
    if circle:
        breaches.append("includes in a circle: " + " -> ".join(circle))
    for breach in breaches:
        print(breach)
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
