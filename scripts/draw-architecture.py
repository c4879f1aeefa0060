#!/usr/bin/env python3
"""Draws the source folders on their floors, with an arrow from each to what it includes, into docs/architecture.md.

    scripts/draw-architecture.py            writes the drawing, and below it what is allowed all the same
    scripts/draw-architecture.py --check    ends with 1, and says so, where they no longer show the sources

The floors are those of check-includes.py, from the top down. An arrow that follows from others (a folder includes what
another one of its own includes) is left out.
"""
import runpy
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
PAGE = HERE.parent / "docs" / "architecture.md"
BEGIN, END = "<!-- drawn by scripts/draw-architecture.py -->\n", "<!-- end of the drawing -->\n"
checked = runpy.run_path(str(HERE / "check-includes.py"))
place_of = checked["place_of"]


def read_arrows():
    """For each folder its floor, and the folders of lower floors that it includes."""
    floors, arrows = {}, {}
    for name, others in checked["Tree"](HERE.parent).includes.items():
        folder, floor = place_of(name)
        floors[folder] = floor
        arrows.setdefault(folder, set()).update(place_of(other)[0] for other in others if place_of(other)[1] < floor)
    return floors, arrows


def shorten(arrows):
    """`arrows` without those that a longer way stands for."""
    def reach(folder):
        return set().union(*({other} | reach(other) for other in arrows[folder]))

    return {folder: {other for other in others if not any(other in reach(third) for third in others)}
            for folder, others in arrows.items()}


def node_of(folder):
    return folder.replace("/", "_")


def draw(floors, arrows):
    lines = ["```mermaid", "flowchart TB"]
    order = sorted(set(floors.values()), reverse=True)
    for floor in order:
        lines.append(f'    subgraph floor{floor}[" "]')
        lines += [f'        {node_of(folder)}["{folder}"]' for folder in sorted(floors) if floors[folder] == floor]
        lines.append("    end")
    # Keeps the floors one below the other where no arrow does.
    lines.append("    " + " ~~~ ".join(f"floor{floor}" for floor in order))
    for folder in sorted(floors, key=lambda name: (-floors[name], name)):
        lines += [f"    {node_of(folder)} --> {node_of(other)}" for other in sorted(arrows[folder])]
    return "\n".join(lines) + "\n```\n"


def tell_exceptions():
    lines = [f"- `{one}` includes `{other}`: {why}." for (one, other), why in checked["EXCEPTIONS"].items()]
    return "Allowed beside or against the order:\n\n" + "\n".join(lines) + "\n"


def main():
    floors, arrows = read_arrows()
    drawing = "\n".join([draw(floors, shorten(arrows)), tell_exceptions()])
    text = PAGE.read_text(encoding="utf-8")
    before, rest = text.split(BEGIN)
    drawn = before + BEGIN + "\n" + drawing + "\n" + END + rest.split(END)[1]
    if sys.argv[1:] == ["--check"]:
        if drawn != text:
            print(f"{PAGE}: the drawing is out of date: run scripts/{Path(__file__).name}")
        return int(drawn != text)
    PAGE.write_text(drawn, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
