"""Fails if a test source is not part of the build, and so would never run.

usage: tests_are_built.py ROOT BUILD_TREE
"""

import json
import pathlib
import sys

import sources


def check(root, compiled):
    """`compiled`: full paths of the sources that the build compiles."""
    root = pathlib.Path(root).resolve()
    return [f"{file}: not built" for file in sources.files(root, ("tests",), (".cpp",))
            if file.endswith("_test.cpp") and str(root / file) not in compiled]


def compiled_sources(commands):
    """Full paths of what the build compiles, with the sources that a joining one includes."""
    compiled = {str(pathlib.Path(command["directory"], command["file"]).resolve())
                for command in commands}
    for joining in [file for file in compiled if pathlib.Path(file).parent.name == "Unity"]:
        file = pathlib.Path(joining)
        compiled |= {str(pathlib.Path(name).resolve()) for _, _, name in
                     sources.includes(file.parent, file.name)}
    return compiled


def main():
    commands = json.loads((pathlib.Path(sys.argv[2]) / "compile_commands.json").read_text())
    compiled = compiled_sources(commands)
    sources.finish(check(sys.argv[1], compiled), "every test source is built")


if __name__ == "__main__":
    main()
