#!/usr/bin/env python3
"""Gives documents that mean harm to every command that reads XML.

usage: hostile_xml_check.py RASTREL MEBIBYTES

Runs the commands on each file of the test corpus's xml-hostile. None of the files is what a command
reads, so each run has to end with status 3 and a reason that names the file, without a word on
standard output, within its memory, and before a limit that only a run without end reaches. Ends
with 1 if one does not, and with 77 (skipped) if there is no corpus."""

import glob
import os
import resource
import sys
import tempfile

MOST_SECONDS = 20  # of computing; a run takes some hundredths of one
BAD_INPUT = 3

COMMANDS = [
    ["sheet", "--faithful"], ["sheet", "--as-shown"], ["sheet", "--list"], ["sheet", "--json"],
    ["notes"], ["cars"], ["chart", "caps"],
    ["chart", "trademark", "--mark", "a", "--quality", "b"], ["chart", "symbol", "--size", "1"],
    ["chart", "font", "--node", "a"],
    ["chart", "copyright", "--style", "a", "--style-size", "1", "--font", "a", "--rows", "1",
     "--finger", "1"],
]


def corpus():
    root = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
    top = os.environ.get("RASTREL_TEST_CORPUS") or os.path.join(root, "../shared/corpus")
    return sorted(glob.glob(os.path.join(glob.escape(top), "xml-hostile", "*")))


def run(command, folder):
    """Runs it; returns its exit status, its two outputs, and MiB of memory at most."""
    names = [os.path.join(folder, name) for name in ("output", "error")]
    process = os.fork()
    if process == 0:
        for stream, name in enumerate(names, 1):
            os.dup2(os.open(name, os.O_WRONLY | os.O_CREAT | os.O_TRUNC), stream)
        resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS))
        os.execv(command[0], command)
    _, status, usage = os.wait4(process, 0)
    outputs = []
    for name in names:
        with open(name, encoding="utf-8", errors="replace") as file:
            outputs.append(file.read())
    return os.waitstatus_to_exitcode(status), *outputs, usage.ru_maxrss / 1024


def fault(path, command, most, folder):
    """What is wrong with a run; empty if nothing is."""
    status, output, error, memory = run(command, folder)
    reason = output if "--json" in command else error
    if status != BAD_INPUT:
        return f"status {status}"
    if reason.count("\n") != 1 or os.path.basename(path) not in reason:
        return f"no reason in one line that names the file: {reason!r}"
    if "--json" not in command and output:
        return f"it wrote {output[:100]!r}"
    return f"{memory:.0f} MiB" if memory > most else ""


def main():
    rastrel, most = os.path.abspath(sys.argv[1]), float(sys.argv[2])
    files = corpus()
    if not files:
        print("skipped: there is no corpus")
        return 77
    bad = 0
    with tempfile.TemporaryDirectory() as folder:
        os.environ["RASTREL_HOME"] = os.path.join(folder, "home")
        for path in files:
            for words in COMMANDS:
                words = [rastrel, *words, path]
                why = fault(path, words, most, folder)
                if why:
                    print(f"{os.path.basename(path)}: {' '.join(words[1:-1])}: {why}")
                    bad += 1
    print(f"{len(files)} files, {len(files) * len(COMMANDS)} runs, {bad} not as they should be")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
