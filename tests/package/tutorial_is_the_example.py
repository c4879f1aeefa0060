"""What the tutorial shows of a file by its name stands, letter by letter, in the example that the tests build, and no file
of the example is left out. Usage: tutorial_is_the_example.py TUTORIAL.md FOLDER"""

import pathlib
import re
import sys

tutorial, folder = (pathlib.Path(argument) for argument in sys.argv[1:])
shown = re.findall(r"`(\w+\.\w+)`[^\n]*:\n\n```\w+\n(.*?)^```", tutorial.read_text(), re.MULTILINE | re.DOTALL)
strangers = [f"{name}:\n{block}" for name, block in shown if block not in (folder / name).read_text()]
hidden = {path.name for path in folder.iterdir()} - {name for name, block in shown}
if strangers or hidden:
    print("not shown:", hidden, "\nshown, but not there:", *strangers, sep="\n")
    sys.exit(1)
