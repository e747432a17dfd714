#!/usr/bin/env python3
"""Looks at what `rastrel sheet` shows on a terminal while it works, and when it is interrupted.

usage: terminal_check.py RASTREL

Ends with 1 if it shows something else than it should."""

import os
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from workbooks import write_workbook  # noqa: E402

CLEAR = b"\r\x1b[K"
LONGEST = 60  # seconds that a run may take before it counts as hanging


class Run:
    """The command on a terminal of its own. It waits where nobody reads what it writes."""

    def __init__(self, rastrel, folder, term="xterm"):
        self.pipe = os.path.join(folder, "pipe")
        if not os.path.exists(self.pipe):
            os.mkfifo(self.pipe)
        self.shown = b""
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.execve(rastrel, [rastrel, "sheet", os.path.join(folder, "book.xlsx"), "-o",
                                self.pipe], {**os.environ, "TERM": term})

    def read(self):
        """Takes what is shown next; false at the end, or when nothing comes for too long."""
        if not select.select([self.terminal], [], [], LONGEST)[0]:
            os.kill(self.process, signal.SIGKILL)
            return False
        try:
            piece = os.read(self.terminal, 4096)
        except OSError:  # how a terminal without a program ends
            piece = b""
        self.shown += piece
        return bool(piece)

    def wait_for(self, text):
        end = time.monotonic() + LONGEST
        while text not in self.shown and time.monotonic() < end and self.read():
            pass

    def end(self):
        """Its exit status."""
        while self.read():
            pass
        os.close(self.terminal)
        return os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])


def interrupted(rastrel, folder):
    run = Run(rastrel, folder)
    run.wait_for(b"reading")
    os.write(run.terminal, b"\x03")
    status = run.end()
    line = CLEAR + b"rastrel: cancelled; what was unpacked has been removed\r\n"
    left = os.listdir(os.path.join(os.environ["RASTREL_HOME"], "jobs"))
    if status != 4 or not run.shown.endswith(line) or left:
        return f"interrupted: status {status}, shown {run.shown!r}, left behind {left}"
    return ""


def finished(rastrel, folder):
    run = Run(rastrel, folder)
    run.wait_for(b"reading")
    with open(run.pipe, "rb") as pipe:
        text = pipe.read()
    status = run.end()
    line = b"\rreading " in run.shown and run.shown.endswith(CLEAR)
    if status != 0 or not line or text != b"\xef\xbb\xbf7":
        return f"finished: status {status}, shown {run.shown!r}, text {text!r}"
    return ""


def on_a_dumb_terminal(rastrel, folder):
    """A line that is written over is no use where nothing can be written over."""
    run = Run(rastrel, folder, "dumb")
    time.sleep(1.5)  # longer than it takes until another terminal shows something
    with open(run.pipe, "rb") as pipe:
        pipe.read()
    status = run.end()
    return f"on a dumb terminal: status {status}, shown {run.shown!r}" if status or run.shown else ""


def without_terminal(rastrel, folder):
    pipe = os.path.join(folder, "pipe")
    process = subprocess.Popen([rastrel, "sheet", os.path.join(folder, "book.xlsx"), "-o", pipe],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    time.sleep(1.5)  # longer than it takes until a terminal shows something
    with open(pipe, "rb") as file:
        file.read()
    output, error = process.communicate(timeout=LONGEST)
    return f"without a terminal: {output!r} {error!r}" if output or error else ""


def main():
    rastrel = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.environ["RASTREL_HOME"] = os.path.join(folder, "home")
        write_workbook(os.path.join(folder, "book.xlsx"),
                       [("S", '<row r="1"><c r="A1"><v>7</v></c></row>')], "")
        faults = [fault for check in (interrupted, finished, on_a_dumb_terminal,
                                         without_terminal)
                  if (fault := check(rastrel, folder))]
    print("\n".join(faults) or "all is as it should be")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
