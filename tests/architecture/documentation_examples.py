"""Runs every example of the documents.

Each fenced block of shell or C++ in README.md, CONTRIBUTING.md and docs/ says on its opening fence
what becomes of it:

  ```sh example            run here: a fresh copy of the examples folder as working directory, a
                           fresh data root, `rastrel` on the path, and `./run` at hand
  ```sh by-hand: REASON    not run, for that reason
  ```cpp example           compiled against the public headers, and linked with the library

A block without one of these is a fault, and so is an example that fails.

usage: documentation_examples.py ROOT BUILD_TREE COMPILER [FLAG...]
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import sources

FENCE = re.compile(r"^```(\S*)[ \t]*(.*?)[ \t]*\n(.*?)^```[ \t]*$", re.S | re.M)
TIME_LIMIT = 300  # seconds for one block


def documents(root):
    root = pathlib.Path(root)
    found = [root / "README.md", root / "CONTRIBUTING.md", *sorted((root / "docs").rglob("*.md"))]
    return [path for path in found if path.is_file()]


def blocks(text):
    """(line, language, mark, body) of each fenced block of shell or C++."""
    for match in FENCE.finditer(text):
        language, mark, body = match.groups()
        if language in ("sh", "bash", "shell", "console", "cpp", "c++"):
            yield text.count("\n", 0, match.start()) + 1, language, mark, body


def run(command, body, place, environment):
    """None, or what a failing command said."""
    try:
        ended = subprocess.run(command, input=body, cwd=place, env=environment, text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                               timeout=TIME_LIMIT)
    except subprocess.TimeoutExpired:
        return f"not done after {TIME_LIMIT} s"
    return None if ended.returncode == 0 else f"status {ended.returncode}\n{ended.stdout}"


def try_shell(body, root, tree):
    with tempfile.TemporaryDirectory(prefix="rastrel-example-") as place:
        shutil.copytree(root / "examples", pathlib.Path(place) / "examples")
        script = pathlib.Path(place) / "run"
        script.write_text(f'#!/bin/sh\nexec "{root}/run" "$@"\n', encoding="utf-8")
        script.chmod(0o755)
        environment = dict(os.environ, RASTREL_HOME=f"{place}/home", RASTREL_BUILD_TREE=str(tree),
                           PATH=f"{tree}/bin:{os.environ['PATH']}", HOME=place)
        return run(["bash", "-euo", "pipefail", "-s"], body, place, environment)


def try_cpp(body, root, tree, compiler):
    with tempfile.TemporaryDirectory(prefix="rastrel-example-") as place:
        command = [*compiler, "-std=c++20", "-I", str(root), "-x", "c++", "-"]
        if re.search(r"\bmain\s*\(", body):
            command += ["-o", f"{place}/out", f"-L{tree}/lib", "-lrastrel"]
        else:
            command += ["-fsyntax-only"]
        return run(command, body, place, dict(os.environ))


def check(root, tree, compiler):
    faults, count = [], 0
    for document in documents(root):
        for line, language, mark, body in blocks(document.read_text(encoding="utf-8")):
            place = f"{document.relative_to(root)}:{line}"
            if mark == "example":
                count += 1
                fault = (try_cpp(body, root, tree, compiler) if language == "cpp"
                         else try_shell(body, root, tree))
                if fault:
                    faults.append(f"{place}: this example fails: {fault}")
            elif not re.match(r"by-hand: \S", mark):
                faults.append(f"{place}: neither marked `example` nor `by-hand: reason`")
    return faults, count


def main():
    root, tree = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    faults, count = check(root, tree, sys.argv[3:])
    sources.finish(faults, f"{count} examples of the documents work")


if __name__ == "__main__":
    main()
