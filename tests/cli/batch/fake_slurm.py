#!/usr/bin/env python3
"""Programs sbatch, squeue and scancel for tests: as the program that this file is called by.

FAKE_SLURM is a directory for the arrays, and FAKE_SLURM_FAULT what goes wrong:
refuse     sbatch says no
wait       no task ever begins
kill       the first task of all ends by SIGKILL before it does anything
kill-all   all tasks do
unshared   the tasks look for the record elsewhere
missing    the tasks' program is missing
forget     the controller forgets each array when its tasks are over"""

import json
import os
import pathlib
import signal
import subprocess
import sys

PLACE = pathlib.Path(os.environ["FAKE_SLURM"])
FAULT = os.environ.get("FAKE_SLURM_FAULT", "")


def note(array, task, state, status=0, process=0):
    file = PLACE / f"{array}.{task}"
    file.with_suffix(".new").write_text(f"{state} {status} {process}")
    file.with_suffix(".new").rename(PLACE / f"task-{array}-{task}")


def run_tasks(array, count, words):
    """What the machines do."""
    for task in range(count):
        if (PLACE / f"cancelled-{array}").exists():
            note(array, task, "CANCELLED")
            continue
        started = subprocess.Popen(words, env=dict(os.environ, SLURM_ARRAY_TASK_ID=str(task)), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                                   preexec_fn=lambda: signal.signal(signal.SIGTERM, signal.SIG_DFL))
        if FAULT == "kill-all" or (FAULT == "kill" and not (PLACE / "killed").exists()):
            (PLACE / "killed").touch()
            started.kill()
        note(array, task, "RUNNING", 0, started.pid)
        _, status = os.waitpid(started.pid, 0)
        note(array, task, "FAILED" if status else "COMPLETED", status)


def sbatch(arguments):
    if FAULT == "refuse":
        sys.exit("sbatch: error: Batch job submission failed: Invalid partition name specified")
    options = {}
    while arguments[0].startswith("--"):
        name, _, value = arguments.pop(0).partition("=")
        options[name] = value
    array = len(list(PLACE.glob("array-*"))) + 1
    count = int(options["--array"].partition("-")[2].partition("%")[0]) + 1
    begun = PLACE / f".array-{array}"
    begun.write_text(json.dumps({"options": options, "words": arguments}))
    begun.rename(PLACE / f"array-{array}")
    for task in range(count):
        note(array, task, "PENDING")
    words = ["/bin/sh", *arguments]
    if FAULT == "unshared":
        words[4] = str(PLACE / "elsewhere")
    if FAULT == "missing":
        words[2] = str(PLACE / "no-program")
    if FAULT != "wait" and os.fork() == 0:
        os.setsid()
        for stream in (1, 2):
            os.dup2(os.open("/dev/null", os.O_WRONLY), stream)
        run_tasks(array, count, words)
        os._exit(0)
    print(array)


def squeue(arguments):
    array = next(word for word in arguments if word.startswith("--jobs=")).partition("=")[2]
    tasks = {path.name.rpartition("-")[2]: path.read_text().split() for path in PLACE.glob(f"task-{array}-*")}
    if FAULT == "forget" and all(state not in ("PENDING", "RUNNING") for state, _, _ in tasks.values()):
        sys.exit("slurm_load_jobs error: Invalid job id specified")
    for task, (state, status, _) in tasks.items():
        print(f"{task:>20}{state:>20}{status:>20}")


def scancel(arguments):
    name = next(word for word in arguments if word.startswith("--name=")).partition("=")[2]
    for file in PLACE.glob("array-*"):
        if json.loads(file.read_text())["options"]["--job-name"] != name:
            continue
        array = file.name.partition("-")[2]
        (PLACE / f"cancelled-{array}").touch()
        for path in PLACE.glob(f"task-{array}-*"):
            state, _, process = path.read_text().split()
            if state == "PENDING" and FAULT == "wait":
                note(array, path.name.rpartition("-")[2], "CANCELLED")
            if state == "RUNNING":
                os.kill(int(process), signal.SIGTERM)


if __name__ == "__main__":
    {"sbatch": sbatch, "squeue": squeue, "scancel": scancel}[pathlib.Path(sys.argv[0]).name](sys.argv[1:])
