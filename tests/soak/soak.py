"""Runs thousands of jobs of every kind, some of them aborted and killed, and checks that nothing is left.

The jobs are commands, several at a time on shared data roots, and at the same time a program that prints,
aborts and imports by the library in one process. At the end there must be no process, no file, no
descriptor and no thread that was not there before, and no memory that grows with the jobs. Files that are
known to remain are in leftovers.txt.

usage: soak.py [JOBS] --command RASTREL --client SOAK_CLIENT --root CHECKOUT [--seed N] [--at-once N]
               [--time-limit SECONDS] [--only NUMBER] [--keep] [--quiet]
"""

import argparse
import collections
import os
import pathlib
import queue as queues
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import inputs
import jobs
import processes
import remains

HERE = pathlib.Path(__file__).resolve().parent
ROOTS = 3
CLIENT_SHARE = 4  # one job of so many is the long-lived program's
CLIENT_PRINTERS = 2  # jobs of it that run at a time
LONG_RUN = 2000  # jobs; a leftover that so many don't show is there no more
ENDED_BY_FAULT = {-signal.SIGSEGV, -signal.SIGABRT, -signal.SIGBUS, -signal.SIGILL, -signal.SIGFPE}
Row = collections.namedtuple("Row", "done failed aborted killed faults seconds longest")


def say(text):
    print(f"soak: {text}", file=sys.stderr, flush=True)


class Run:
    """One run: its places and its counts."""

    def __init__(self, options, place):
        self.options = options
        self.place = place
        self.faults = []
        self.ended = collections.Counter()
        self.kinds = collections.defaultdict(collections.Counter)
        self.seconds = collections.defaultdict(list)
        self.samples = []
        self.client_jobs = collections.Counter()
        self.lock = threading.Lock()
        self.over = threading.Event()  # no further jobs
        self.threads = []
        self.watch = processes.Watch()
        self.remains = remains.Remains(
            remains.read_table((HERE / "leftovers.txt").read_text(encoding="utf-8")))
        self.roots = [place / f"root {number}" for number in range(ROOTS)]
        self.inputs = place / "inputs"

    # --- Places --------------------------------------------------------------------------------

    def environment(self, root, number):
        variables = {name: value for name, value in os.environ.items()
                     if not name.startswith(("RASTREL_", "XDG_", "DISPLAY", "WAYLAND", "TERM"))}
        variables.update({"RASTREL_HOME": str(root), "HOME": str(self.place / "home"),
                          "TMPDIR": str(self.place / "temporary"), processes.MARK: str(number),
                          # An interpreter that is kept ready would outlive its job, as it should.
                          "RASTREL_WARM": "0"})
        return variables

    def prepare(self):
        """Lays the data roots out, and remembers the files of each place."""
        for name in ("home", "temporary", "jobs"):
            (self.place / name).mkdir()
        inputs.make(self.inputs, self.options.root)
        for root in self.roots:
            for words in (["doctor"], ["printers"]):
                subprocess.run([self.options.command, *words], env=self.environment(root, "layout"),
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True,
                               timeout=self.options.time_limit)
            self.remains.remember("root", root)
        for name in ("home", "temporary", "inputs"):
            self.remains.remember(name, self.place / name)

    def clear_deliveries(self):
        """Removes the files that jobs were asked to make: kept pages and finished files."""
        for root in self.roots:
            listed = self.call(root, "spool", "list")
            for line in listed.splitlines():
                self.call(root, "spool", "remove", line.split("\t")[0])
            output = root / "output"
            for file in sorted(output.glob("*")) if output.is_dir() else []:
                if file.suffix in (".tif", ".png", ".pdf") and not file.name.startswith("."):
                    file.unlink()
            if output.is_dir() and not any(output.iterdir()):
                output.rmdir()

    def call(self, root, *words):
        ended = subprocess.run([self.options.command, *words], env=self.environment(root, "clearing"),
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                               errors="replace", check=False, timeout=self.options.time_limit)
        if ended.returncode != 0:
            self.faults.append(f"at the end, rastrel {' '.join(words)}: status {ended.returncode}: "
                               f"{ended.stdout.strip()}")
        return ended.stdout

    # --- Commands ------------------------------------------------------------------------------

    def run_job(self, job):
        directory = self.place / "jobs" / str(job.number)
        (directory / "out").mkdir(parents=True)
        command = [str(self.options.command), *job.plan.options]
        log = directory / "messages"
        started = time.monotonic()
        with open(log, "wb") as messages:
            process = self.watch.start(lambda: subprocess.Popen(
                command, cwd=directory, stdin=subprocess.DEVNULL, stdout=messages,
                stderr=subprocess.STDOUT, env=self.environment(self.roots[job.root], job.number)))
            status = self.wait(process, job)
        self.watch.ended(process)
        self.remains.makers[process.pid] = f"{job.number} ({job.kind})"
        fault = self.fault_of(job, status, directory / "out", log.read_text(errors="replace"))
        seconds = time.monotonic() - started
        if self.options.only is not None:
            print(log.read_text(errors="replace"), end="")
        with self.lock:
            way = jobs.outcome(job, status) if status is not None else "late"
            self.remains.makers[process.pid] += f", {way}"
            self.ended[way] += 1
            self.kinds[job.kind][way] += 1
            self.seconds[job.kind].append(seconds)
            if fault:
                self.kinds[job.kind]["faults"] += 1
                self.add_fault(job, fault, log)
        remains.remove(directory, self.options.time_limit)

    def wait(self, process, job):
        """The status; None for a job that did not end within the limit, which is then ended."""
        limit = self.options.time_limit
        try:
            if job.ending is not None:
                try:
                    return process.wait(timeout=job.delay)
                except subprocess.TimeoutExpired:
                    process.send_signal(job.ending)
            return process.wait(timeout=limit)
        except subprocess.TimeoutExpired:
            processes.end_all({process.pid} | processes.descendants(process.pid))
            process.wait()
            return None

    def fault_of(self, job, status, out, messages):
        if status is None:
            return f"has not ended after {self.options.time_limit:g} s"
        if status in ENDED_BY_FAULT:
            return f"crashed by signal {-status}"
        if status not in jobs.allowed(job):
            return f"status {status}, not one of {sorted(jobs.allowed(job))}"
        if job.plan.makes and status == jobs.CANCELLED:
            left = sorted(name for name in remains.entries(out) if f"out/{name}" not in messages)
            if left:
                return f"was cancelled, and left {' '.join(left)}, which it does not name as finished"
        return ""

    def add_fault(self, job, fault, log):
        how = f", {job.ending.name} after {job.delay:.3f} s" if job.ending else ""
        last = log.read_text(errors="replace").strip().splitlines()[-3:]
        self.faults.append(f"job {job.number} (--seed {self.options.seed} --only {job.number}{how}): "
                           f"rastrel {' '.join(job.plan.options)}: {fault}"
                           + "".join("\n      " + line[:200] for line in last))

    def run_commands(self, numbers):
        waiting = queues.SimpleQueue()
        for number in numbers:
            waiting.put(number)

        def work():
            while not self.over.is_set():
                try:
                    number = waiting.get_nowait()
                except queues.Empty:
                    return
                self.run_job(jobs.job(self.options.seed, number, f"{self.inputs}/", ROOTS))

        count = max(1, self.options.at_once - CLIENT_PRINTERS)
        workers = [threading.Thread(target=work, daemon=True) for _ in range(count)]
        for worker in workers:
            worker.start()
        return workers

    # --- The long-lived program ----------------------------------------------------------------

    def run_client(self, count):
        """Reads its reports; a fault if it says nothing for longer than a job may take."""
        work = self.place / "jobs" / "client"
        work.mkdir()
        process = self.watch.start(lambda: subprocess.Popen(
            [self.options.client, str(count), str(self.options.seed), str(self.inputs), str(work)],
            cwd=work, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, errors="replace",
            stderr=subprocess.DEVNULL, env=self.environment(self.roots[0], "client")))
        heard = [time.monotonic()]
        over = threading.Event()
        limit = 2 * self.options.time_limit

        def guard():
            while not over.wait(1):
                if time.monotonic() - heard[0] > limit:
                    self.faults.append(f"the long-lived program said nothing for {limit:g} s")
                    processes.end_all({process.pid} | processes.descendants(process.pid))
                    return

        watchman = threading.Thread(target=guard, daemon=True)
        watchman.start()
        for line in process.stdout:
            heard[0] = time.monotonic()
            self.client_line(line.rstrip("\n").split("\t"))
        status = process.wait()
        over.set()
        watchman.join()
        self.watch.ended(process)
        self.remains.makers[process.pid] = "of the long-lived program"
        with self.lock:
            if status != 0:
                self.faults.append(f"the long-lived program ended with status {status}")
            if sum(self.client_jobs.values()) != count:
                self.faults.append(f"the long-lived program ran {sum(self.client_jobs.values())} of "
                                   f"{count} jobs")
            for name in sorted(remains.entries(work)):
                self.faults.append(f"the long-lived program left {name}")

    def client_line(self, fields):
        with self.lock:
            if fields[0] == "job":
                self.client_jobs[fields[1], fields[2]] += 1
                self.ended["killed" if fields[2] == "late" else fields[2]] += 1
            elif fields[0] == "fault":
                self.faults.append(f"job {fields[1]} of the long-lived program (seed "
                                   f"{self.options.seed}): {fields[2]}")
            elif fields[0] == "held":
                self.samples.append(tuple(int(field) for field in fields[1:]))

    def stop(self):
        """Ends the jobs that still run, if the run was interrupted."""
        self.over.set()
        while any(thread.is_alive() for thread in self.threads):
            processes.end_all(processes.descendants(os.getpid()))
            time.sleep(0.1)

    # --- The whole -----------------------------------------------------------------------------

    def progress(self, total, started):
        with self.lock:
            done = sum(self.ended.values())
            say(f"{done} of {total} jobs, {self.ended['aborted']} aborted, {self.ended['killed']} "
                f"killed, {len(self.faults)} faults, {time.monotonic() - started:.0f} s")

    def run(self):
        started = time.monotonic()
        self.prepare()
        if self.options.only is not None:
            total, in_client, numbers = 1, 0, [self.options.only]
        else:
            total = self.options.jobs
            in_client = total // CLIENT_SHARE
            numbers = range(total - in_client)
        self.threads = threads = self.run_commands(numbers)
        if in_client:
            client = threading.Thread(target=self.run_client, args=(in_client,), daemon=True)
            client.start()
            threads.append(client)
        reported = started
        while any(thread.is_alive() for thread in threads):
            time.sleep(0.1)
            if not self.options.quiet and time.monotonic() - reported > 10:
                reported = time.monotonic()
                self.progress(total, started)
        self.finish(total, in_client)
        return time.monotonic() - started

    def finish(self, total, in_client):
        self.watch.finish()
        self.faults += [f"a process was left: {process}" for process in self.watch.left]
        if in_client:
            self.faults += remains.holdings_faults(self.samples)
        self.clear_deliveries()
        self.remains.compare()
        if sum(self.ended.values()) != total:
            self.faults.append(f"{sum(self.ended.values())} of {total} jobs were run")
        self.remains.judge({**self.ended, "job": total, "kept": self.kinds["print --spool"]["done"],
                            "at-once": self.options.at_once * ROOTS})
        self.faults += self.remains.faults


def table(run):
    """The summary."""
    lines = [f"{'kind':26}{'jobs':>7}{'done':>7}{'failed':>8}{'aborted':>9}{'killed':>8}{'faults':>8}"
             f"{'mean s':>8}{'longest':>9}"]
    for kind in jobs.KINDS:
        counts, seconds = run.kinds[kind], run.seconds[kind]
        if not seconds:
            continue
        lines.append(f"{kind:26}{len(seconds):7}{counts['done']:7}{counts['failed']:8}"
                     f"{counts['aborted']:9}{counts['killed']:8}{counts['faults']:8}"
                     f"{sum(seconds) / len(seconds):8.2f}{max(seconds):9.2f}")
    for (kind, way), count in sorted(run.client_jobs.items()):
        lines.append(f"in one process: {kind + ', ' + way:36}{count:7}")
    for name, sample in (("first", run.samples[:1]), ("last", run.samples[-1:])):
        for held, descriptors, threads, resident, children in sample:
            lines.append(f"held after {held} jobs ({name}): {descriptors} descriptors, {threads} threads, "
                         f"{resident >> 10} KiB, {children} children")
    for known, count in sorted(run.remains.counted.items()):
        lines.append(f"left: {count} times {known.place} {known.pattern} ({known.reason})")
    for known in run.remains.unseen() if run.options.jobs >= LONG_RUN else ():
        lines.append(f"left no more: {known.place} {known.pattern}")
    return lines


def remove(place):
    """Removes a directory in which a process that is ending may still write for a moment."""
    end = time.monotonic() + 5
    while place.exists() and time.monotonic() < end:
        shutil.rmtree(place, ignore_errors=True)
        time.sleep(0.05)


def resolved(name):
    return pathlib.Path(name).resolve()


def arguments():
    parser = argparse.ArgumentParser(prog="./run soak")
    parser.add_argument("jobs", nargs="?", type=int, default=10000)
    parser.add_argument("--command", type=resolved, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--client", type=resolved, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--root", type=resolved, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--seed", type=int, default=1, help="the same seed makes the same jobs (1)")
    parser.add_argument("--at-once", type=int, default=8, help="jobs at a time (8)")
    parser.add_argument("--time-limit", type=float, default=120,
                        help="seconds; a job that takes longer is a fault (120)")
    parser.add_argument("--only", type=int, metavar="NUMBER", help="only that job, and its messages")
    parser.add_argument("--keep", action="store_true", help="keep the data roots, and say where")
    parser.add_argument("--quiet", action="store_true", help="no progress")
    return parser.parse_args()


def main():
    options = arguments()
    processes.adopt()
    # A shell that runs this in the background has SIGINT ignored, and the jobs would inherit that.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGTERM, lambda number, frame: sys.exit(128 + number))
    place = pathlib.Path(tempfile.mkdtemp(prefix="rastrel-soak-"))
    run = Run(options, place)
    try:
        seconds = run.run()
    finally:
        run.stop()
        if options.keep:
            say(f"the data roots are in {place}")
        else:
            remove(place)
    print("\n".join(table(run)))
    for fault in run.faults:
        print(f"FAULT: {fault}")
    print(f"{sum(run.ended.values())} jobs in {seconds:.0f} s, seed {options.seed}: "
          f"{len(run.faults)} faults")
    sys.exit(1 if run.faults else 0)


if __name__ == "__main__":
    main()
