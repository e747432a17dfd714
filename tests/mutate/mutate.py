"""Changes one thing in the product at a time, and looks whether a test notices.

The lines are drawn at random, the same for the same --seed. Each change is built and tested in a copy
of the checkout, build/mutate. One line a change goes to standard output, and at the end how many were
noticed. The status is 1 if one was not noticed that tests/mutate/accepted.txt does not list.

From AT_ONCE_FROM changes on, all of them are built at once with switches (see switches.py), which takes the
time of one build for all; those that can't have a switch, or are not noticed with theirs, are then tried
one at a time like a few.

usage: mutate.py ROOT [COUNT] [--seed N] [--only REGEX] [--headers] [--everywhere] [--one-by-one] [--list]
"""

import argparse
import collections
import concurrent.futures
import itertools
import os
import pathlib
import re
import signal
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "architecture"))

import accepted  # noqa: E402
import confinement  # noqa: E402
import mutants  # noqa: E402
import programs  # noqa: E402
import sources as project  # noqa: E402
import switches  # noqa: E402
import workspace as workspaces  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
LONGEST_SHOWN = 110  # characters of a line
AT_ONCE_FROM = 15
BUILDS = 6  # with switches; each takes out what did not compile
COMPILER_ERROR = re.compile(r"^(\S+?):(\d+)(?::\d+)?: (?:fatal )?error", re.M)


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
        self.measuring = collections.defaultdict(threading.Lock)  # by a test's name

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
            compiler = COMPILER_ERROR.search(messages)
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
        self._count(mutant, noticed)
        return True

    def _count(self, mutant, noticed):
        (self.noticed if noticed else self.missed).append(mutant)
        outcome = f"noticed by {noticed}" if noticed else "NOT NOTICED"
        print(line_of(mutant, outcome), flush=True)

    def _build_switches(self, sources, numbered):
        """Builds everything with as many of the changes as compile; returns their numbers."""
        forms = collections.defaultdict(int)
        for _ in range(BUILDS):
            texts, put = switches.put_in(sources, numbered, forms)
            self.workspace.put_switches(texts)
            say(f"building {len(put)} changes at once, {len(numbered) - len(put)} are left for later")
            built, messages = self.workspace.build([], "-k", "0")
            if built:
                return set(put)
            faults = {(os.path.relpath(file, self.workspace.copy), int(line))
                      for file, line in COMPILER_ERROR.findall(messages)}
            blamed = {number for number, (file, first, last) in put.items()
                      if any(file == name and first <= line <= last for name, line in faults)}
            # An error far from its change: all changes of that source are blamed.
            files = {name for name, line in faults
                     if not any(put[number][0] == name and put[number][1] <= line <= put[number][2]
                                for number in blamed)}
            blamed |= {number for number, (file, _, _) in put.items() if file in files}
            if not blamed:
                sys.exit(f"mutate: the checkout does not build with switches:\n{messages[-4000:]}")
            for number in blamed:
                forms[number] += 1
        sys.exit("mutate: the changes can't be built at once; --one-by-one does without")

    def try_at_once(self, sources, candidates):
        """Tries the changes with switches, some at the same time. Returns those that have to be tried by
        themselves."""
        numbered = dict(enumerate(candidates, 1))
        built = self._build_switches(sources, numbered)
        asked = {}
        for number in sorted(built):
            file = numbered[number].file
            nearest = self.suite.nearest(file)
            asked[number] = nearest + (self.suite.others(file, nearest) if self.everywhere else [])
        # Many tests wait.
        with concurrent.futures.ThreadPoolExecutor(self.workspace.jobs * 2) as pool:
            for number, noticed in zip(asked, pool.map(self._noticed_with_switch, asked.items())):
                if noticed:
                    self._count(numbered[number], noticed)
                    del numbered[number]
                else:
                    say(f"with its switch not noticed: {numbered[number].file}:{numbered[number].line}")
        say(f"{len(numbered)} changes are to be tried by themselves")
        return list(numbered.values())

    def _noticed_with_switch(self, entry):
        number, tests = entry
        for test in tests:
            with self.measuring[test.name]:
                first = test.seconds is None
                self.suite.measure(test)
            if first and not test.usable:
                say(f"{test.name} fails or takes over {programs.SLOWEST} s as it is: left out")
            noticed = test.usable and self.suite.notices(test, number)
            if noticed:
                return noticed
        return ""

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
    parser.add_argument("--one-by-one", action="store_true",
                        help="build each change by itself, however many they are")
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
    # A shell starts work in the background with interrupts ignored, and tests of interrupts would inherit it.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    os.nice(5)
    at_once = options.count >= AT_ONCE_FROM and not options.one_by_one
    workspace = workspaces.Workspace(root, os.cpu_count() or 2,
                                     workspaces.AT_ONCE if at_once else workspaces.ONE_BY_ONE)
    say(f"{options.count} changes, seed {options.seed}, in {workspace.copy}")
    workspace.prepare()
    try:
        confinement.require(workspace.copy)
    except confinement.Unavailable as reason:
        sys.exit(f"mutate: changed programs can't be confined here, so none is run: {reason}")
    run = Run(workspace, programs.Suite(workspace), options.everywhere)
    order = drawn(options, sources, table)
    if at_once:
        by_file = {source.file: source for source in sources}
        left = run.try_at_once(by_file, list(itertools.islice(order, options.count)))
        order = itertools.chain(left, order)
    for mutant in order:
        if len(run.noticed) + len(run.missed) == options.count:
            break
        run.try_one(mutant)
    print(run.summary())
    for mutant in run.missed:
        print(f"NOT NOTICED: {mutant.file}: {mutant.before}  =>  {mutant.after}")
    sys.exit(1 if run.missed or faults else 0)


if __name__ == "__main__":
    main()
