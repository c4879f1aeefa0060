"""A small tree that keeps the rules of includes passes their check, and each breach that is planted in it is named.
Usage: breaches_are_found.py CHECK_INCLUDES.PY"""

import pathlib
import subprocess
import sys
import tempfile

CLEAN = {
    "src/time/Moment.h": '#include "velo/Text.h"\n#include <cstdint>\n',
    "src/time/Moment.cpp": '#include "time/Moment.h"\n',
    "src/time/CMakeLists.txt": "target_sources(core PRIVATE\n    Moment.cpp\n)\n",
    "src/velo/Text.h": '#include "platform/Export.h"\n',
    "src/platform/Export.h": "#include <unistd.h>\n",
    "plugins/one/One.h": '#include "time/Moment.h"\n',
    "plugins/two/Two.h": '#include "Inner.h"\n',
    "plugins/two/Inner.h": "#pragma once\n",
    "tests/time/MomentTools.h": '#include "time/Moment.h"\n#include "two/Two.h"\n#include <gtest/gtest.h>\n',
}
# What is planted, in place of or beside what stands in CLEAN, and what must be said about it, all of it.
BREACHES = [
    ({"src/time/Zone.h": '#include "time/Nowhere.h"\n'}, ["src/time/Zone.h:1:"]),
    ({"src/time/Zone.h": "#include <nowhere/Zone.h>\n"}, ["src/time/Zone.h:1:"]),
    ({"src/time/Zone.h": "#include <unistd.h>\n"}, ["src/time/Zone.h:1:"]),
    ({"src/velo/Text.h": '#pragma once\n#include "time/Moment.h"\n', "src/time/Moment.h": "#pragma once\n"}, ["src/velo/Text.h:2:"]),
    ({"plugins/one/One.h": '#include "two/Two.h"\n'}, ["plugins/one/One.h:1:"]),
    ({"plugins/two/Inner.h": '#include "two/Two.h"\n'}, ["headers in a circle: plugins/two/Inner.h", "rooms in a circle:"]),
    # Each header alone is innocent; the source leads back.
    ({"src/time/Moment.cpp": '#include "time/Zone.h"\n', "src/time/Zone.h": '#include "time/Moment.h"\n'},
     ["rooms in a circle: src/time/Moment -> src/time/Zone -> src/time/Moment"]),
    ({"src/time/Zone.cpp": "\n"}, ["src/time/Zone.cpp:1:"]),
    ({"lonely/A.h": "\n", "src/lonely/A.h": "\n"}, ["lonely/A.h:1:", "src/lonely/A.h:1:"]),
]


def check(files):
    """What the check says of a tree of these files, a line each."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        done = subprocess.run([sys.executable, sys.argv[1], folder], capture_output=True, text=True, check=False)
        if done.stderr or (done.returncode == 1) != bool(done.stdout):
            sys.exit(f"ended with {done.returncode}: {done.stdout}{done.stderr}")
        return done.stdout.splitlines()


failed = [f"a clean tree: {line}" for line in check(CLEAN)]
for planted, expected in BREACHES:
    said = check(CLEAN | planted)
    if len(said) != len(expected) or not all(line.startswith(begin) for line, begin in zip(said, expected)):
        failed.append(f"{planted}: expected {expected}, was told {said}")
print("\n".join(failed))
sys.exit(1 if failed else 0)
