"""Changes one thing in the product at a time, and looks whether a test notices.

The lines are drawn at random, the same for the same --seed. Each change is built and tested in a copy
of the checkout, build/mutate. One line a change goes to standard output, and at the end how many were
noticed. The status is 1 if one was not noticed that tests/mutate/accepted.txt does not list.

usage: mutate.py ROOT [COUNT] [--seed N] [--only REGEX] [--headers] [--everywhere] [--list]
"""

import argparse
import os
import pathlib
import re
import signal
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "architecture"))

import accepted  # noqa: E402
import confinement  # noqa: E402
import mutants  # noqa: E402
import programs  # noqa: E402
import sources as project  # noqa: E402
import workspace as workspaces  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
LONGEST_SHOWN = 110  # characters of a line


def shown(text):
    return text if len(text) <= LONGEST_SHOWN else text[:LONGEST_SHOWN - 3] + "..."


def line_of(mutant, outcome):
    before, after = shown(mutant.before), shown(mutant.after)
    if before == after:  # the difference lies beyond what is shown
        before, after = mutant.before, mutant.after
    return f"{mutant.file}:{mutant.line}  {before}  =>  {after}\n    {outcome}"


def say(text):
    print(f"mutate: {text}", file=sys.stderr, flush=True)


class Run:
    """One run: its workspace and its outcomes."""

    def __init__(self, workspace, suite, everywhere):
        self.workspace = workspace
        self.suite = suite
        self.everywhere = everywhere
        self.noticed = []
        self.missed = []
        self.uncompiled = 0
        self.untested = 0

    def _usable(self, tests):
        """Those of the tests that work without a change."""
        missing = [target for test in tests if test.seconds is None for target in test.targets]
        if missing:
            built, messages = self.workspace.build(sorted(set(missing)))
            if not built:
                sys.exit(f"mutate: the checkout does not build:\n{messages}")
        for test in tests:
            first = test.seconds is None
            self.suite.measure(test)
            if first and not test.usable:
                say(f"{test.name} fails or takes over {programs.SLOWEST} s as it is: left out")
            elif first and test.failing:
                say(f"{test.name}: left out, since they fail as it is: {' '.join(test.failing)}")
        return [test for test in tests if test.usable]

    def _noticed_by(self, tests):
        """(compiled, the name of the test that fails or "")."""
        built, messages = self.workspace.build(sorted({target for test in tests
                                                       for target in test.targets}))
        if not built:
            # A build step may run what was built; then it is the step that noticed.
            compiler = re.search(r"^\S+?:\d+(:\d+)?: (fatal )?error", messages, re.M)
            return (False, "") if compiler else (True, "the build")
        for test in tests:
            noticed = self.suite.notices(test)
            if noticed:
                return True, noticed
        return True, ""

    def try_one(self, mutant):
        """Prints the outcome; False for a change that does not compile, or for whose file no test
        works as it is."""
        nearest = self._usable(self.suite.nearest(mutant.file))
        others = self._usable(self.suite.others(mutant.file, nearest)) if self.everywhere else []
        if not nearest and not others:
            self.untested += 1
            return False
        self.workspace.change(mutant)
        try:
            compiled, noticed = self._noticed_by(nearest)
            if compiled and not noticed and others:
                compiled, noticed = self._noticed_by(others)
        finally:
            self.workspace.restore(mutant)
        if not compiled:
            self.uncompiled += 1
            return False
        (self.noticed if noticed else self.missed).append(mutant)
        outcome = f"noticed by {noticed}" if noticed else "NOT NOTICED"
        print(line_of(mutant, outcome), flush=True)
        return True

    def summary(self):
        done = len(self.noticed) + len(self.missed)
        share = 100 * len(self.noticed) / done if done else 0
        text = (f"{len(self.noticed)} of {done} changes were noticed ({share:.0f} %); "
                f"{self.uncompiled} did not compile and were drawn again")
        if self.untested:
            text += f"; for {self.untested} more there is no test that works as it is"
        return text


def arguments():
    parser = argparse.ArgumentParser(prog="./run mutate")
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("count", nargs="?", type=int, default=20, help="how many changes (20)")
    parser.add_argument("--seed", type=int, default=None, help="the same seed draws the same changes")
    parser.add_argument("--only", default="", metavar="REGEX",
                        help="draw only where FILE:LINE matches, for instance ^interpreter/")
    parser.add_argument("--headers", action="store_true", help="change headers, too: long builds")
    parser.add_argument("--everywhere", action="store_true",
                        help="ask all test programs that link a source, where its folder's notice "
                             "nothing")
    parser.add_argument("--list", action="store_true", help="only list the changes")
    return parser.parse_args()


def drawn(options, sources, table):
    """The changes to try, endlessly enough; those of the table are left out."""
    place = re.compile(options.only)
    for mutant in mutants.draw(sources, options.seed):
        if place.search(f"{mutant.file}:{mutant.line}") and accepted.key(mutant) not in table:
            yield mutant


def main():
    options = arguments()
    root = options.root.resolve()
    if options.seed is None:
        options.seed = int(time.time()) % 100000
    suffixes = (".cpp", ".h") if options.headers else (".cpp",)
    files = project.files(root, project.PRODUCT, suffixes)
    sources = [mutants.Source(file, (root / file).read_text(encoding="utf-8")) for file in files]
    table, faults = accepted.read((HERE / "accepted.txt").read_text(encoding="utf-8"))
    faults += [f"nothing in the sources is like this any more: {entry[0]}: {entry[1]}"
               for entry in accepted.void(table, root, mutants.Source)]
    for fault in faults:
        say(f"accepted.txt: {fault}")
    if options.list:
        for _, mutant in zip(range(options.count), drawn(options, sources, table)):
            print(line_of(mutant, mutant.kind))
        sys.exit(0)

    # SIGTERM restores the changed source, too, and ends the running test.
    signal.signal(signal.SIGTERM, lambda number, frame: sys.exit(128 + number))
    os.nice(5)
    workspace = workspaces.Workspace(root, os.cpu_count() or 2)
    say(f"{options.count} changes, seed {options.seed}, in {workspace.copy}")
    workspace.prepare()
    try:
        confinement.require(workspace.copy)
    except confinement.Unavailable as reason:
        sys.exit(f"mutate: changed programs can't be confined here, so none is run: {reason}")
    run = Run(workspace, programs.Suite(workspace), options.everywhere)
    tried = 0
    for mutant in drawn(options, sources, table):
        if tried == options.count:
            break
        tried += run.try_one(mutant)
    print(run.summary())
    for mutant in run.missed:
        print(f"NOT NOTICED: {mutant.file}: {mutant.before}  =>  {mutant.after}")
    sys.exit(1 if run.missed or faults else 0)


if __name__ == "__main__":
    main()
