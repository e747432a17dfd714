#!/usr/bin/env python3
"""Kills the server and its workers at random moments of a mixed load, and looks at what became of each job.

usage: server_kills.py RASTREL ROUNDS [SEED]

Each round adds jobs, kills the server (SIGKILL), one of its workers, or all of its processes, and starts
it again. At the end each job is done, or failed since one of its children was killed, and then nothing of it came
out; once released, it is done. Every file was delivered exactly once, under the name that it would have
without a kill. A job whose device can't take bytes back may be uncertain in place of that, and then its
program was run once at most for each page."""

import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time

PAGE = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: 2
<< /PageSize [40 30] >> setpagedevice
%%Page: 1 1
0.2 setgray 0 0 20 30 rectfill showpage
%%Page: 2 2
0.7 setgray 10 5 20 20 rectfill showpage
%%EOF
"""
DEVICES = """[Files]
kind = file
format = tiff
compression = none
pattern = {output}/{job}-{page}.tif

[Program]
kind = command
format = png
command = %s {job}-{page}

[*]
kind = file
format = png
pattern = {output}/{job}-{page}.png
"""
WAIT = 240  # seconds for the queue to come to rest


class Shop:
    def __init__(self, command, place):
        self.command = command
        self.place = pathlib.Path(place)
        self.root = self.place / "root"
        self.environment = dict(os.environ, RASTREL_HOME=str(self.root), LC_ALL="C.UTF-8")
        self.environment.pop("RASTREL_OUTPUT", None)
        self.server = None
        self.log = open(self.place / "serve.log", "ab")
        self.run("printers")
        self.ran = self.place / "ran"
        self.ran.mkdir()
        program = self.place / "take.sh"
        # A run leaves a file of its own.
        program.write_text("#!/bin/sh\ncat > /dev/null\nn=$(mktemp %s/\"$1\".XXXXXX)\n" % self.ran)
        program.chmod(0o700)
        (self.root / "devices.txt").write_text(DEVICES % program)
        self.input = self.place / "page.ps"
        self.input.write_text(PAGE)

    def run(self, *arguments):
        done = subprocess.run([self.command, *arguments], env=self.environment, capture_output=True,
                              text=True, timeout=WAIT, check=False)
        if done.returncode != 0:
            sys.exit(f"{arguments}: status {done.returncode}: {done.stderr}")
        return done.stdout

    def add(self, title, device):
        return int(self.run("jobs", "add", str(self.input), "--device", device, "--title", title,
                            "--mode", "Screen/preview"))

    def jobs(self):
        lines = self.run("jobs", "list", "--json", "--limit", "100000").splitlines()
        return [json.loads(line) for line in lines]

    def start(self):
        self.server = subprocess.Popen([self.command, "serve"], env=self.environment,
                                       stdout=self.log, stderr=self.log)

    def workers(self):
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            if not entry.name.isdigit():
                continue
            try:
                words = (entry / "cmdline").read_bytes().split(b"\0")
                environment = (entry / "environ").read_bytes()
            except OSError:
                continue
            mine = ("RASTREL_HOME=" + str(self.root)).encode() + b"\0" in environment + b"\0"
            if mine and int(entry.name) not in (os.getpid(), self.server.pid) and words[0]:
                found.append(int(entry.name))
        return found

    def kill(self, how):
        victims = []
        if how in ("server", "all"):
            victims.append(self.server.pid)
        workers = self.workers()
        if how == "all":
            victims += workers
        elif how == "worker" and workers:
            victims.append(random.choice(workers))
        for victim in victims:
            try:
                os.kill(victim, signal.SIGKILL)
            except ProcessLookupError:
                pass
        if how in ("server", "all"):
            self.server.wait()
            self.start()

    def rest(self):
        limit = time.monotonic() + WAIT
        running = {"queued", "interpreting", "ready", "delivering"}
        while any(job["state"] in running for job in self.jobs()):
            if time.monotonic() > limit:
                sys.exit(f"the queue does not come to rest: {self.jobs()}")
            if self.server.poll() is not None:
                sys.exit(f"the server ended by itself: {self.server.returncode}")
            time.sleep(0.1)

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        if self.server.wait(timeout=WAIT) != 0:
            sys.exit("the server does not stop well")


def check(shop, added, may_fail):
    faults = []
    jobs = {job["id"]: job for job in shop.jobs()}
    files = {}
    output = shop.root / "output"
    for path in sorted(output.rglob("*")) if output.exists() else []:
        files[path.name] = path.read_bytes()
    for number, (title, device) in added.items():
        job = jobs.get(number)
        if job is None:
            faults.append(f"job {number} is lost")
            continue
        if device == "Files":
            if job["state"] == "failed" and may_fail:
                continue
            if job["state"] != "done":
                faults.append(f"job {number} is {job['state']}: {job.get('message')}")
            for page in (1, 2):
                content = files.pop(f"{title}-{page}.tif", None)
                if content is None:
                    faults.append(f"job {number}: page {page} was not delivered")
                elif len(content) < 1000:
                    faults.append(f"job {number}: page {page} is cut off")
            continue
        if job["state"] not in ("done", "uncertain") and not (may_fail and job["state"] == "failed"):
            faults.append(f"job {number} is {job['state']}: {job.get('message')}")
        for page in (1, 2):
            runs = len(list(shop.ran.glob(f"{title}-{page}.*")))
            wrong = {"done": runs != 1, "failed": runs != 0}
            if runs > 1 or wrong.get(job["state"], False):
                faults.append(f"job {number}, {job['state']}: page {page} was sent {runs} times")
    if len(jobs) != len(added):
        faults.append(f"{len(jobs)} jobs of {len(added)}")
    faults += [f"delivered twice: {name}" for name in files]
    return faults


def main():
    command, rounds = sys.argv[1], int(sys.argv[2])
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
    random.seed(seed)
    with tempfile.TemporaryDirectory(prefix="rastrel-kills-", ignore_cleanup_errors=True) as place:
        shop = Shop(command, place)
        # Deaths are many here, and none is a job's fault.
        (shop.root / "server.toml").write_text("quarantine-after = 0\nworkers = 2\n")
        shop.start()
        added = {}
        try:
            for number in range(rounds):
                device = random.choice(("Files", "Files", "Program"))
                title = f"sign{number}"
                added[shop.add(title, device)] = (title, device)
                time.sleep(random.random() * 0.6)
                shop.kill(random.choice(("server", "worker", "worker", "all")))
            shop.rest()
            states = [job["state"] for job in shop.jobs()]
            faults = check(shop, added, True)
            failed = [str(job["id"]) for job in shop.jobs() if job["state"] == "failed"]
            if failed:
                shop.run("jobs", "release", *failed)
                shop.rest()
            shop.stop()
            faults += check(shop, added, False)
        finally:
            if shop.server.poll() is None:
                shop.server.kill()
                shop.server.wait()
        counts = ", ".join(f"{states.count(state)} {state}" for state in sorted(set(states)))
        print(f"{rounds} kills with seed {seed}: {counts}")
        if faults:
            print("\n".join(faults))
            print((shop.place / "serve.log").read_text(errors="replace")[-4000:])
            sys.exit(1)


if __name__ == "__main__":
    main()
