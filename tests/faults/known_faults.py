"""The table of faults that are known, known_faults.txt, whose head says how a line is made."""

import dataclasses
import fnmatch
import pathlib

import power_cuts


@dataclasses.dataclass
class KnownFault:
    scene: str
    program: str
    call: str
    detail: str
    error: str
    finding: str
    reason: str
    seen: bool = False

    def __str__(self):
        return f"{self.scene} {self.program} {self.call} {self.error} ({self.finding})"

    def is_about(self, case):
        if isinstance(case, power_cuts.Cut):
            words = (case.scene.name, "power", "cut", case.change, case.kind)
        else:
            call = case.call
            name = f"{call.task} {call.name} {call.number}" if " " in self.call else call.name
            words = (case.scene.name, call.program, name, call.detail, case.error)
        patterns = (self.scene, self.program, self.call, self.detail, self.error)
        return all(fnmatch.fnmatchcase(word, pattern) for word, pattern in zip(words, patterns))

    def has(self, finding):
        return fnmatch.fnmatchcase(finding, self.finding)


def read():
    faults = []
    lines = pathlib.Path(__file__).with_suffix(".txt").read_text(encoding="utf-8").splitlines()
    for number, line in enumerate(lines, 1):
        if not line.strip() or line.startswith("#"):
            continue
        fields = [field.strip() for field in line.split("|")]
        if len(fields) != 7 or not all(fields):
            raise SystemExit(f"known_faults.txt:{number}: not seven fields")
        faults.append(KnownFault(*fields))
    return faults


def covers(faults, case, finding):
    """Whether a finding is a known one; notes that it was seen."""
    covered = False
    for fault in faults:
        if fault.is_about(case) and fault.has(finding):
            fault.seen = covered = True
    return covered


def can_be_sampled(fault):
    """A run without end takes too long to be looked at in each test run."""
    return fault.finding != "no end"


def candidates(fault, cases, at_most=8):
    """A few of the cases that a fault is about, spread over all of them: not every one shows it."""
    fitting = [case for case in cases if fault.is_about(case)]
    step = max(1, len(fitting) // at_most)
    return fitting[step // 2::step][:at_most]
