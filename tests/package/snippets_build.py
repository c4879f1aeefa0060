"""What README.md and the pages of docs/ show as C++ compiles, linked as README.md shows it, against the installed library; and
the recipe for installing, as README.md gives it, builds no tests. The tutorial and the style's example apart: the one is built
as it stands in examples/, the other belongs to no library.
Usage: snippets_build.py SOURCES STAGE FOLDER CXX"""

import pathlib
import re
import shutil
import subprocess
import sys

sources, stage, folder = (pathlib.Path(argument) for argument in sys.argv[1:4])
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)


def run(*command, cwd=folder):
    done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}")


def shown(page, language):
    return re.findall(rf"^```{language}\n(.*?)^```", page.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)


readme = sources / "README.md"
pages = [readme, *sorted(page for page in (sources / "docs").glob("*.md") if page.name != "plugin_tutorial.md")]
names = []
for page in pages:
    for number, block in enumerate(shown(page, "cpp")):
        names.append(f"{page.stem}{number}.cpp")
        (folder / names[-1]).write_text(block, encoding="utf-8")
(package,) = shown(readme, "cmake")
(folder / "CMakeLists.txt").write_text(
    "cmake_minimum_required(VERSION 3.25)\nproject(Snippets LANGUAGES CXX)\n"
    f"add_library(yours OBJECT {' '.join(names)})\n{package}"
    # The host of plug-ins isn't installed.
    f"target_link_libraries(yours PRIVATE KalventoIncludes::ProviderKit)\ntarget_include_directories(yours PRIVATE {sources}/libs)\n",
    encoding="utf-8")
run("cmake", "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={stage}", f"-DCMAKE_CXX_COMPILER={sys.argv[4]}")
run("cmake", "--build", "build")

(recipe,) = re.findall(r"^    cmake (--preset .*)$", readme.read_text(encoding="utf-8"), re.MULTILINE)
run("cmake", *recipe.split(), "-B", folder / "recipe", "-G", "Ninja", cwd=sources)
if "gtest" in (folder / "recipe" / "build.ninja").read_text(encoding="utf-8"):
    sys.exit(f"tests are built by: cmake {recipe}")
