"""Finds the tests of a source, and runs them.

Nothing here knows the folders: test programs are those targets of the build whose names begin with
tests/tests_, and the tests that are commands are read from the files that CMake leaves for ctest.
"""

import pathlib
import re
import shlex

import confinement
import switches

PROGRAM = re.compile(r"^tests/tests_(\w+): CXX_EXECUTABLE_LINKER")
ADD_TEST = re.compile(r"^add_test\(\[=\[(.+?)\]=\] (.*)\)$")
PROPERTIES = re.compile(r"^set_tests_properties\(\[=\[(.+?)\]=\] PROPERTIES (.*)\)$")
SKIPPED = 77
SHORTEST_LIMIT = 30  # seconds
SLOWEST = 480  # seconds; a test that takes longer without a change is left out


class Test:
    """A test program, or one command of ctest. `targets` have to be built for it."""

    def __init__(self, name, folder, command, targets, is_program):
        self.name = name
        self.folder = folder
        self.command = command
        self.targets = targets
        self.is_program = is_program
        self.environment = {}
        self.seconds = None  # without a change
        self.failing = []  # without a change
        self.usable = True


def test_folders(tests):
    """The folders below tests/ that hold tests."""
    return sorted({path.parent.relative_to(tests).as_posix() for path in tests.rglob("*_test.cpp")} |
                  {path.parent.relative_to(tests).as_posix() for path in tests.rglob("CMakeLists.txt")}
                  - {"."})


def folders_for(file, folders):
    """The folders of tests that mirror a source's folder: the one of its name, else those below it,
    else the same of the folder above. Empty if there is none."""
    parts = pathlib.PurePosixPath(file).parent.parts
    if parts and parts[0] == "rastrel":
        parts = parts[1:]
    while parts:
        name = "/".join(parts)
        if name in folders:
            return [name]
        below = [folder for folder in folders if folder.startswith(name + "/")]
        if below:
            return below
        parts = parts[:-1]
    return []


def programs_of(target_lines, folders, tree):
    """The programs of test folders, from the lines of `ninja -t targets all`."""
    by_name = {folder.replace("/", "_"): folder for folder in folders}
    found = []
    for line in target_lines:
        match = PROGRAM.match(line)
        if match and match[1] in by_name:
            target = f"tests/tests_{match[1]}"
            found.append(Test(f"tests_{match[1]}", by_name[match[1]], [str(tree / target)],
                              [target], True))
    return found


def commands_of(folder, text, tree, outputs):
    """The tests of one CTestTestfile.cmake. `outputs`: the build's outputs, which a command that
    names one of them needs."""
    found = {}
    for line in text.splitlines():
        match = ADD_TEST.match(line)
        if match:
            command = shlex.split(match[2])
            named = [argument.removeprefix(f"{tree}/") for argument in command]
            targets = [name for name in named if name in outputs] or ["all"]
            found[match[1]] = Test(match[1], folder, command, targets, False)
        match = PROPERTIES.match(line)
        if match and match[1] in found:
            words = shlex.split(match[2])
            for name, value in zip(words[::2], words[1::2]):
                if name == "ENVIRONMENT":
                    pairs = value.split(";")
                    found[match[1]].environment = dict(pair.split("=", 1) for pair in pairs)
    return list(found.values())


def time_limit(seconds):
    """How long a test may take that took so long without a change; other work may slow it down, and a
    slow one has a mean of more."""
    return max(SHORTEST_LIMIT, seconds * (4 if seconds < 60 else 2))


def first_failure(output):
    """The test of a program of GoogleTest that failed, or that ran when the program ended; "" if
    none did."""
    failed = re.search(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.M)
    if failed:
        return failed[1]
    begun = re.findall(r"^\[ RUN      \] ([\w/]+\.[\w/]+)", output, re.M)
    ended = set(re.findall(r"^\[       OK \] ([\w/]+\.[\w/]+)", output, re.M))
    ended |= set(re.findall(r"^\[  SKIPPED \] ([\w/]+\.[\w/]+)", output, re.M))
    open_ones = [name for name in begun if name not in ended]
    return open_ones[-1] if open_ones else ""


def all_failures(output):
    return sorted(set(re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)(?=[ ,]|$)", output, re.M)))


def sources_joined_in(path):
    """The sources that are compiled as one in a file of the build."""
    if "/Unity/" not in path or not path.endswith(".cxx"):
        return []
    return re.findall(r'^#include "(.+)"', pathlib.Path(path).read_text(encoding="utf-8"), re.M)


class Suite:
    """All tests of a workspace."""

    def __init__(self, workspace):
        self.workspace = workspace
        tests = workspace.copy / "tests"
        self.folders = test_folders(tests)
        lines = workspace.ninja_lists("targets", "all")
        outputs = {line.split(":", 1)[0] for line in lines}
        self.tests = programs_of(lines, self.folders, workspace.tree)
        for folder in self.folders:
            file = workspace.tree / "tests" / folder / "CTestTestfile.cmake"
            if file.exists():
                self.tests += commands_of(folder, file.read_text(encoding="utf-8"), workspace.tree,
                                          outputs)
        self._inputs = {}

    def _is_linked(self, test, file):
        """Whether the source is part of a test program, or of a target that is built with it."""
        target = test.targets[0]
        if target not in self._inputs:
            inputs = self.workspace.ninja_lists("inputs", target)
            self._inputs[target] = set(inputs).union(*map(sources_joined_in, inputs))
        return str(self.workspace.copy / file) in self._inputs[target]

    def nearest(self, file):
        """The tests of the source's folder, programs first; all programs that link it if its folder
        has none."""
        folders = folders_for(file, self.folders)
        found = [test for test in self.tests if test.folder in folders]
        if not any(test.is_program for test in found):
            found += [test for test in self.tests if test.is_program and self._is_linked(test, file)]
        return sorted(found, key=lambda test: not test.is_program)

    def others(self, file, nearest):
        """The other test programs that link the source."""
        return [test for test in self.tests if test.is_program and test not in nearest and
                self._is_linked(test, file)]

    def measure(self, test):
        """Runs a test without any change: its time, and the tests that fail anyway, which are then
        not asked. Nothing if that was done before."""
        if test.seconds is not None:
            return
        ended = self._run(test, [], SLOWEST)
        test.seconds = ended.seconds
        if test.is_program:
            test.failing = all_failures(ended.output)
        known = bool(test.failing) and "[==========]" in ended.output.rsplit("[ RUN", 1)[-1]
        test.usable = ended.status in (0, SKIPPED) or ended.status is not None and known

    def notices(self, test, switch=None):
        """The name of the test that fails now, or with the change of a number switched on; "" if none does."""
        limit = time_limit(test.seconds)
        options = ["--gtest_fail_fast"] if test.is_program else []
        if test.failing:
            options.append("--gtest_filter=-" + ":".join(test.failing))
        ended = self._run(test, options, limit, switch)
        if ended.status in (0, SKIPPED):
            return ""
        name = first_failure(ended.output) if test.is_program else ""
        late = f" (not done after {limit:.0f} s)" if ended.status is None else ""
        return f"{test.name}{': ' if name else ''}{name}{late}"

    def _run(self, test, options, limit, switch=None):
        environment = dict(self.workspace.environment, **test.environment)
        if switch is not None:
            environment[switches.VARIABLE] = str(switch)
        return confinement.run(self.workspace.copy, [*test.command, *options], limit, environment)
