"""Finds the processes that a job left.

This process adopts what its descendants leave (PR_SET_CHILD_SUBREAPER), in whichever session it runs: a
child that is nobody's job any more is one that was left.
"""

import ctypes
import os
import pathlib
import signal
import threading
import time

PR_SET_CHILD_SUBREAPER = 36
MARK = "RASTREL_SOAK_JOB"  # in the environment of a job, to name the one that left something
GRACE = 30  # seconds that a guardian has to tidy up after its child


def adopt():
    """From now on orphans among the descendants are children of this process."""
    ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def children(pid):
    found = set()
    try:
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            found |= {int(word) for word in (task / "children").read_text().split()}
    except OSError:
        pass  # it ended meanwhile
    return found


def descendants(pid):
    found = set()
    for child in children(pid):
        found |= {child} | descendants(child)
    return found


def state(pid):
    """The letter of /proc's stat; "" for a process that is gone."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except (OSError, IndexError):
        return ""


def description(pid):
    """One line about a process: number, session, the job that it comes from, command line."""
    try:
        place = pathlib.Path(f"/proc/{pid}")
        words = (place / "cmdline").read_bytes().replace(b"\0", b" ").decode("utf-8", "replace")
        variables = (place / "environ").read_bytes().decode("utf-8", "replace").split("\0")
        job = [text.split("=", 1)[1] for text in variables if text.startswith(MARK + "=")]
        return f"{pid} in session {os.getsid(pid)}, of job {(job or ['?'])[0]}: {words.strip()}"
    except OSError:
        return f"{pid}, which has ended since"


class Watch:
    """Looks after orphans on a thread of its own until `finish`."""

    def __init__(self, grace=GRACE):
        self.grace = grace
        self.left = []  # descriptions of processes that stayed longer than the grace
        self._jobs = set()
        self._seen = {}
        self._given_up = set()
        self._lock = threading.Lock()
        self._look_lock = threading.Lock()  # one look at a time
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def start(self, make):
        """Makes a process by `make` and knows it as a job."""
        with self._lock:
            process = make()
            self._jobs.add(process.pid)
            return process

    def ended(self, process):
        with self._lock:
            self._jobs.discard(process.pid)

    def finish(self):
        """Waits for orphans that may still be tidying up; those that stay then were left."""
        end = time.monotonic() + self.grace
        while self.look() and time.monotonic() < end:
            time.sleep(0.1)
        self._over.set()
        self._thread.join()
        for pid in sorted(self.look()):
            self._give_up(pid)

    def look(self):
        """Reaps orphans that have ended; those that run."""
        with self._look_lock:
            return self._look()

    def _look(self):
        with self._lock:
            orphans = children(os.getpid()) - self._jobs
            for pid in sorted(orphans):
                if state(pid) == "Z":
                    os.waitpid(pid, os.WNOHANG)
            running = {pid for pid in orphans if state(pid) not in ("", "Z")}
        now = time.monotonic()
        self._seen = {pid: self._seen.get(pid, now) for pid in running}
        for pid in [pid for pid in running if now - self._seen[pid] > self.grace]:
            self._give_up(pid)
            running.discard(pid)
        return running

    def _give_up(self, pid):
        """It is a descendant of ours, so it may be ended."""
        if pid not in self._given_up:
            self._given_up.add(pid)
            self.left.append(description(pid))
        end_all({pid} | descendants(pid))

    def _run(self):
        while not self._over.wait(0.5):
            self.look()


def end_all(pids):
    for pid in pids:
        try:
            os.kill(pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
