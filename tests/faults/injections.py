"""Runs of a scene in which one system call fails."""

import dataclasses
import pathlib
import re
import subprocess

import messages
import scenes
import system_errors
from wholeness import Expected, Tree

INJECTOR_REFUSED = 77  # the exit status of a test that is skipped
# A failing call of these keeps files from being removed; that they stay is no fault.
CLEARING_CALLS = ("unlink", "unlinkat", "rmdir", "getdents64")
# These directories are opened by the command for that only.
CLEARED_DIRECTORY = re.compile(r"^SLOT/(home/jobs/N|home/Queue/rip/System/c-out/RUN"
                               r"|out//?\.rastrel-[^/]*\.tmp)/?( \(flags\))?$")

# What a run says of pages that it could not keep, and the job's name.
ASKS_FOR_REPAIR = re.compile(r"`rastrel spool repair ([\w.-]+)` (?:finishes or removes|moves them)")


@dataclasses.dataclass(frozen=True)
class Call:
    """A call of a run. `task` and `number` find it again, see injector/tracer.h."""

    task: str
    program: str
    name: str
    number: int
    detail: str


@dataclasses.dataclass(frozen=True)
class Case:
    """A call that is made to fail, and how."""

    scene: scenes.Scene
    call: Call
    error: str

    def __str__(self):
        call = self.call
        return (f"{self.scene} {call.task} {call.name} {call.number} {self.error}"
                f"  [{call.program} {call.detail}]")


@dataclasses.dataclass
class Outcome:
    reached: bool
    succeeded: bool
    findings: list
    error: str = ""  # the run's standard error


class Report:
    """The injector's report of a run."""

    def __init__(self, path, slot):
        self.calls, self.died, self.left = [], [], []
        self.failed, self.limit, self.status, self.signal = False, False, None, None
        for line in pathlib.Path(path).read_text(errors="replace").splitlines():
            kind, *fields = line.split("\t")
            if kind == "call":
                self.calls.append(Call(fields[0], fields[1], fields[2], int(fields[3]),
                                       steady_detail(fields[4], slot)))
            elif kind == "failed":
                self.failed = True
            elif kind == "died":
                self.died.append((fields[1], int(fields[2])))
            elif kind == "left":
                self.left.append(fields[1])
            elif kind == "limit":
                self.limit = True
            elif kind == "exit":
                self.status = int(fields[0])
            elif kind == "signal":
                self.signal = int(fields[0])

    def findings(self, error):
        if self.limit:
            yield "no end"
            return
        for program, signal in self.died:
            if signal in messages.CRASH_SIGNALS:
                yield f"{messages.CRASH_SIGNALS[signal]}: {program}"
        for program in sorted(set(self.left)):
            yield f"still running: {program}"
        if self.signal is None:
            yield from messages.findings(self.status, error)
        elif self.signal not in messages.CRASH_SIGNALS:
            yield f"ended by signal {self.signal}"


def steady_detail(detail, slot):
    """A call's detail without the parts that differ from run to run and from machine to machine."""
    detail = detail.replace(str(slot), "SLOT")
    detail = re.sub(r"^.*/(build/[^/]+|lib/x86_64-linux-gnu)/", r"\1/", detail)
    detail = re.sub(r"(pipe|socket|anon_inode):\[?\w+\]?", r"\1:", detail)
    detail = re.sub(r"[0-9a-f]{32}", "RUN", detail)
    return re.sub(r"\d{3,}(-\d+)?", "N", detail)


class Subject:
    """A scene, made ready: its template, its undisturbed run, and the files expected of it."""

    def __init__(self, scene, product, place):
        self.scene, self.product = scene, product
        self.template = place / f"template-{scene.name}"
        # The slots' names are of one length, since a path's length may decide how it is kept.
        slot = place / "slot-0"
        scenes.make_template(scene, product, self.template)
        scenes.fill_slot(slot, self.template)
        before = Tree.read(slot)
        self.report, error = self.inject(slot, place / "calls", ["--calls"])
        wrong = list(self.report.findings(error))
        if wrong or self.report.status != 0:
            raise RuntimeError(f"{scene} fails undisturbed: {wrong} {error}")
        self.expected = Expected(before, Tree.read(slot))
        if scene.name != "reprint" and not self.expected.results:
            raise RuntimeError(f"{scene} makes nothing")

    def inject(self, slot, report, options):
        """A run under the injector: its report and standard error."""
        product = self.product
        command = [str(product.injector), "--report", str(report), "--ours", str(product.tree),
                   "--ours", str(slot), "--limit", str(scenes.RUN_LIMIT), *options, "--",
                   *product.command_line(self.scene, slot)]
        status, _, error = scenes.run(command, slot, 3 * scenes.RUN_LIMIT)
        if status != 0:
            raise SystemExit(INJECTOR_REFUSED if status == 1 else f"the injector failed: {error}")
        return Report(report, slot), error

    def cases(self):
        """Every call of the run with every error that it can have."""
        return [Case(self.scene, call, error) for call in self.report.calls
                for error in system_errors.errors_of(call.name, call.detail)]

    def judge(self, case, slot):
        """Runs one case in the slot."""
        scenes.fill_slot(slot, self.template)
        call = case.call
        report, error = self.inject(
            slot, slot.with_name(slot.name + ".report"),
            ["--fail", call.task, call.name, str(call.number),
             str(system_errors.number_of(case.error))])
        found = list(report.findings(error))
        now = Tree.read(slot)
        succeeded = report.status == 0
        if succeeded:
            found += self.expected.after_success(now)
        else:
            found += self.expected.after_error(now)
        cleared_wrongly = call.name in CLEARING_CALLS or CLEARED_DIRECTORY.search(call.detail)
        if any(finding.startswith("left over") for finding in found):
            found = self.after_repair(slot, error, found)
        if report.limit or cleared_wrongly:  # a killed process could not clear up
            found = [finding for finding in found if not finding.startswith("left over")]
        if found or not succeeded:
            found += self.second_run(slot)
        return Outcome(report.failed, succeeded, list(dict.fromkeys(found)), error)

    def after_repair(self, slot, error, found):
        """What is left to be found once the user has done what the run's message asks for: pages
        that could not be kept are not cleared away, since they may be all that there is of a job,
        but the spool's own command has to make them whole or remove them."""
        told = ASKS_FOR_REPAIR.search(error)
        if not told:
            return found
        repair = [str(self.product.command), "spool", "repair", told[1]]
        status, _, _ = scenes.run(repair, slot)
        if status != 0:
            status, _, error = scenes.run([*repair, "--remove"], slot)
        if status != 0:
            return [*found, f"no repair: {error.strip()}"]
        return list(self.expected.after_error(Tree.read(slot)))

    def second_run(self, slot):
        """An undisturbed run in the slot that a disturbed one left."""
        status, _, error = scenes.run(self.product.command_line(self.scene, slot), slot)
        if status != 0:
            last = error.strip().splitlines()[-1:] or [""]
            return [f"a second run ends with {status}: {last[0]}"]
        return list(self.expected.after_second_run(Tree.read(slot)))

    def template_is_untouched(self):
        """The programs in the slots are links to the template's; no run may have written there."""
        return all((self.template / path).read_bytes() == data
                   for path, data in self.expected.before.files.items() if path.endswith(".exe"))


def follows_calls(product, place):
    """Whether this machine lets one process follow another."""
    report = place / "follows"
    return subprocess.run([str(product.injector), "--report", str(report), "--", "/bin/true"],
                          check=False).returncode == 0 and "exit\t0" in report.read_text()
