"""Disturbs whole commands, and sees that each ends well or says clearly that it did not.

In one run after the other, a single system call fails; and the power is cut after each change of a
file. Programs are looked at from outside only: their end, their messages, the files on the disk.

usage: faults.py BUILD_TREE SOURCE_TREE [OPTION...]
"""

import argparse
import collections
import concurrent.futures
import itertools
import os
import pathlib
import queue
import random
import shutil
import sys
import tempfile
import time

import injections
import known_faults
import power_cuts
import scenes

SKIPPED = 77
SEED = 4  # of the sample: the same cases on each machine whose calls are the same
SAMPLED_CALLS, SAMPLED_CUTS = 4, 2  # of each scene


class Slots:
    """Directories for the runs that go on at the same time."""

    def __init__(self, place, count):
        self.free = queue.Queue()
        for number in range(1, count + 1):
            self.free.put(place / f"slot-{number}")

    def use(self, work, *arguments):
        slot = self.free.get()
        try:
            return work(*arguments, slot)
        finally:
            self.free.put(slot)


class Table:
    """The results, a line a scene."""

    COLUMNS = ("calls", "runs", "success", "clear error", "not reached", "cuts", "known", "faults")

    def __init__(self):
        self.rows = collections.defaultdict(collections.Counter)

    def text(self):
        lines = [f"{'command':<12}" + "".join(f"{name:>13}" for name in self.COLUMNS)]
        lines += [f"{scene:<12}" + "".join(f"{row[name]:>13}" for name in self.COLUMNS)
                  for scene, row in self.rows.items()]
        return "\n".join(lines)


def in_short(findings, at_most=4):
    """The findings on one line, at most so many of them."""
    more = len(findings) - at_most
    return "; ".join(findings[:at_most]) + (f"; and {more} more" if more > 0 else "")


class Session:
    def __init__(self, options, product, place):
        self.options, self.product, self.place = options, product, place
        self.slots = Slots(place, options.jobs)
        self.pool = concurrent.futures.ThreadPoolExecutor(options.jobs)
        self.known = known_faults.read()
        self.table = Table()
        self.random = random.Random(SEED)
        self.last_line = time.monotonic()
        self.faults = 0

    def run(self):
        for scene in scenes.SCENES:
            if self.options.only and scene.name not in self.options.only:
                continue
            subject = injections.Subject(scene, self.product, self.place)
            self.table.rows[scene.name]["calls"] = len(subject.report.calls)
            if not self.options.cuts_only:
                self.calls(subject)
            if not self.options.calls_only:
                self.cuts(subject)
            if not subject.template_is_untouched():
                self.complain(scene, f"{scene}: a run wrote into a program of the data root")
            shutil.rmtree(subject.template)
        return self.end()

    def calls(self, subject):
        cases = subject.cases()
        if self.options.sample:
            self.look_for_known(cases, subject.judge, self.take_outcome,
                                lambda outcome: outcome.findings)
            cases = self.random.sample(cases, min(SAMPLED_CALLS, len(cases)))
        work = (self.pool.submit(self.slots.use, subject.judge, case) for case in cases)
        for number, (case, future) in enumerate(self.in_turn(cases, work), 1):
            self.take_outcome(case, future.result())
            self.progress(f"{subject.scene}: {number} of {len(cases)} failing calls")

    def look_for_known(self, cases, judge, take, findings_of):
        """Shows each known fault that was not seen yet by a case or two, if one does show it."""
        def look_for(fault):
            judged = []
            for case in known_faults.candidates(fault, cases):
                judged.append((case, self.slots.use(judge, case)))
                if any(fault.has(finding) for finding in findings_of(judged[-1][1])):
                    break
            return judged

        waiting = [fault for fault in self.known
                   if not fault.seen and known_faults.can_be_sampled(fault)]
        for judged in self.pool.map(look_for, waiting):
            for case, result in judged:
                take(case, result)

    def in_turn(self, cases, work):
        """Keeps a few futures ahead, so that a state on the disk does not wait for long."""
        ahead = collections.deque()
        for case, future in zip(cases, work):
            ahead.append((case, future))
            if len(ahead) > 2 * self.options.jobs:
                yield ahead.popleft()
        yield from ahead

    def take_outcome(self, case, outcome):
        row = self.table.rows[case.scene.name]
        row["runs"] += 1
        if not outcome.reached:
            row["not reached"] += 1
        new = [finding for finding in outcome.findings
               if not known_faults.covers(self.known, case, finding)]
        if new:
            self.complain(case.scene, f"{case}: {in_short(new)}")
            if self.options.show:
                print(outcome.error)
        elif outcome.findings:
            row["known"] += 1
        elif outcome.reached:
            row["success" if outcome.succeeded else "clear error"] += 1

    def cuts(self, subject):
        recording = power_cuts.Recording(subject, self.place / "slot-0")
        states = recording.states()
        if self.options.sample:
            every = dict(states)
            self.look_for_known(list(every), lambda cut, slot: recording.judge(every[cut], slot),
                                self.take_cut, lambda findings: findings)
            states = self.random.sample(list(every.items()), min(SAMPLED_CUTS, len(every)))
        cuts, disks = itertools.tee(states)
        work = (self.pool.submit(self.slots.use, recording.judge, disk) for _, disk in disks)
        for cut, future in self.in_turn((cut for cut, _ in cuts), work):
            self.take_cut(cut, future.result())
            self.progress(f"{subject.scene}: power cut after change {cut.step} of "
                          f"{len(recording.changes)}")

    def take_cut(self, cut, findings):
        row = self.table.rows[cut.scene.name]
        row["cuts"] += 1
        new = [finding for finding in findings
               if not known_faults.covers(self.known, cut, finding)]
        if new:
            self.complain(cut.scene, f"{cut}: {in_short(new)}")
        elif findings:
            row["known"] += 1

    def complain(self, scene, words):
        self.faults += 1
        self.table.rows[scene.name]["faults"] += 1
        print(f"FAULT {words}", flush=True)

    def progress(self, words):
        if time.monotonic() - self.last_line >= self.options.every:
            self.last_line = time.monotonic()
            print(f"  {words}", file=sys.stderr, flush=True)

    def end(self):
        print(self.table.text())
        mended = [] if self.options.only or self.options.calls_only or self.options.cuts_only \
            else [fault for fault in self.known if not fault.seen and
                  (not self.options.sample or known_faults.can_be_sampled(fault))]
        for fault in mended:
            print(f"MENDED {fault}: it no longer happens, so remove its line from known_faults.txt")
        if self.faults or mended:
            print(f"{self.faults} fault(s), {len(mended)} line(s) of known faults to remove")
            return 1
        print("no fault beside the known ones")
        return 0


def one_case(options, product, place):
    """Repeats one case, and shows all of it."""
    name, task, call, number, error = options.case
    scene = next(scene for scene in scenes.SCENES if scene.name == name)
    subject = injections.Subject(scene, product, place)
    case = injections.Case(scene, injections.Call(task, "", call, int(number), ""), error)
    outcome = subject.judge(case, place / "slot-1")
    print(outcome.error, end="")
    print(f"reached: {outcome.reached}", *outcome.findings, sep="\n")
    return 1 if outcome.findings else 0


def read_options():
    parser = argparse.ArgumentParser(usage=__doc__.rsplit("usage: ", 1)[1])
    parser.add_argument("tree")
    parser.add_argument("source")
    parser.add_argument("--sample", action="store_true", help="a few cases of each command")
    parser.add_argument("--only", action="append", help="this command only",
                        choices=[scene.name for scene in scenes.SCENES])
    parser.add_argument("--calls-only", action="store_true", help="no power cuts")
    parser.add_argument("--cuts-only", action="store_true", help="no failing calls")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 2, help="runs at a time")
    parser.add_argument("--every", type=float, default=20, help="seconds between lines of progress")
    parser.add_argument("--show", action="store_true", help="print the messages of runs with a fault")
    parser.add_argument("--case", nargs=5, metavar=("COMMAND", "TASK", "CALL", "NUMBER", "ERROR"),
                        help="repeat one case, named as in the line of its fault")
    return parser.parse_args()


def main():
    options = read_options()
    product = scenes.Product(options.tree, options.source)
    with tempfile.TemporaryDirectory(prefix="rastrel-faults-") as name:
        place = pathlib.Path(name).resolve()
        if not injections.follows_calls(product, place):
            print("this machine lets no process follow another, so no call can be made to fail")
            return SKIPPED
        if options.case:
            return one_case(options, product, place)
        session = Session(options, product, place)
        try:
            return session.run()
        finally:  # nothing may still write into the place when it is removed
            session.pool.shutdown(cancel_futures=True)


if __name__ == "__main__":
    sys.exit(main())
