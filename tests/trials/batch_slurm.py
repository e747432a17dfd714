#!/usr/bin/env python3
"""Does a batch on a Slurm controller of its own, which runs in one folder, and compares it with the batch on this machine.

usage: batch_slurm.py RASTREL [FILES [SECONDS]]

FILES small pages (200) are converted with --on local and --on slurm, in pieces of SECONDS (5): each byte, each line and the
status have to be the same. So are the pages of a merge, and files that are printed. Then a task is killed while it works, a batch is ended by SIGINT and goes on, and tasks
share a licence; with 200 files and more, also 24 pages of long work. The times are told. Skipped (status 77), with the reason, where
no controller can be started."""

import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
WAIT = 240  # seconds, for whatever is waited for
PAGE = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 0 0 {width} 40
{loops} {{ 1 pop }} repeat
0.5 setgray 0 0 20 30 rectfill showpage
%%EOF
"""
PLATE = """<ABB><ENGRAVINGTEMPLATE><PLATES/><PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>
<TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME>
<TEXT line="1" data="{Name}"><FONT name="DejaVuSans.ttf" size="0.3"/></TEXT></PLATE></ENGRAVINGTEMPLATE></ABB>
"""
CONFIGURATION = """ClusterName=sign
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={port}
SlurmdPort={node_port}
AuthType=auth/munge
AuthInfo=socket={place}/munge/munge.socket
SlurmUser={user}
SlurmdUser={user}
StateSaveLocation={place}/state
SlurmdSpoolDir={place}/spool
SlurmctldPidFile={place}/run/slurmctld.pid
SlurmdPidFile={place}/run/slurmd.pid
SlurmctldLogFile={place}/log/slurmctld.log
SlurmdLogFile={place}/log/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
MpiDefault=none
ReturnToService=2
KillWait=5
Licenses=cutter1:1
NodeName={host} NodeAddr=127.0.0.1 CPUs={processors} State=UNKNOWN
PartitionName=rip Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


def skip(why):
    print(f"skipped: {why}")
    sys.exit(SKIPPED)


def wait_for(condition, name, limit=WAIT):
    end = time.monotonic() + limit
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    return sys.exit(f"{name} did not come within {limit} seconds")


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class Controller:
    def __init__(self, place):
        self.place = place
        self.programs = {}
        search = os.environ["PATH"] + ":/usr/sbin"
        for name in ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "scancel", "sinfo"):
            self.programs[name] = shutil.which(name, path=search)
            if self.programs[name] is None:
                skip(f"there is no {name}: the packages slurm-wlm and munge are not installed")
        if os.geteuid() != 0:
            skip("a node of Slurm starts its tasks as root only")

    def start(self):
        for name in ("state", "spool", "run", "log", "munge"):
            (self.place / name).mkdir()
        munge = self.place / "munge"
        munge.chmod(0o711)
        (munge / "munge.key").write_bytes(os.urandom(1024))
        (munge / "munge.key").chmod(0o600)
        port, node_port = free_ports(2)
        configuration = self.place / "slurm.conf"
        configuration.write_text(CONFIGURATION.format(
            host=socket.gethostname().partition(".")[0], port=port, node_port=node_port, place=self.place,
            user="root", processors=os.cpu_count()))
        os.environ["SLURM_CONF"] = str(configuration)
        self.call("munged", "--force", f"--key-file={munge}/munge.key", f"--socket={munge}/munge.socket",
                  f"--pid-file={munge}/munged.pid", f"--log-file={munge}/munged.log", f"--seed-file={munge}/seed")
        self.call("slurmctld", "-i")
        self.call("slurmd")
        end = time.monotonic() + 60
        while "idle" not in self.answer("sinfo", "--noheader", "--format=%T"):
            if time.monotonic() > end:
                skip(f"the node does not become ready: {self.answer('sinfo', '--noheader', '--format=%T %E')}")
            time.sleep(0.2)

    def call(self, name, *arguments):
        done = subprocess.run([self.programs[name], *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, check=False, timeout=WAIT)
        if done.returncode != 0:
            skip(f"{name} ends with {done.returncode}: {done.stderr.strip()[-300:]}")

    def answer(self, name, *arguments):
        return subprocess.run([self.programs[name], *arguments], capture_output=True, text=True, check=False,
                              timeout=WAIT).stdout

    def stop(self):
        for name in ("run/slurmd.pid", "run/slurmctld.pid", "munge/munged.pid"):
            try:
                process = int((self.place / name).read_text())
                os.kill(process, signal.SIGTERM)
            except (OSError, ValueError):
                continue
            end = time.monotonic() + 30
            while pathlib.Path(f"/proc/{process}").exists() and time.monotonic() < end:
                time.sleep(0.1)


class Batches:
    def __init__(self, command, place):
        self.command, self.place = command, place
        self.faults = []
        self.environment = dict(os.environ, RASTREL_HOME=str(place / "root"), HOME=str(place), LC_ALL="C.UTF-8",
                                RASTREL_WARM="0")

    def pages(self, count, loops=0):
        names = []
        for number in range(count):
            name = f"page $HOME %j ä {loops} {number}.eps"
            (self.place / name).write_text(PAGE.format(width=20 + number % 50, loops=loops))
            names.append(name)
        return names

    def start(self, files, results, *options, work="convert"):
        return subprocess.Popen([self.command, "batch", work, *files, "-o", results, *options], cwd=self.place,
                                env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run(self, files, results, *options, work="convert"):
        """(status, lines, errors), and the seconds that it took."""
        begun = time.monotonic()
        batch = self.start(files, results, *options, work=work)
        out, error = batch.communicate(timeout=900)
        directory = results.partition("/")[0]
        return (batch.returncode, out.replace(f"{directory}/", "DIR/"), error), time.monotonic() - begun

    def content(self, results):
        return {path.name: path.read_bytes() for path in (self.place / results).iterdir()}

    def hold(self, name, is_good, why=""):
        if not is_good:
            self.faults.append(f"{name}: {why}" if why else name)

    def compare(self, count, seconds):
        files = self.pages(count)
        (self.place / files[count // 2]).write_text("no PostScript\n")
        local, local_took = self.run(files, "local")
        slurm, slurm_took = self.run(files, "slurm", "--on", "slurm", "--piece-seconds", str(seconds))
        self.hold("one file fails by its content", local[0] == 3, str(local)[-500:])
        self.hold("lines and status are the same", slurm == local, f"{str(local)[-300:]}\n{str(slurm)[-300:]}")
        self.hold("all but one have a picture", len(self.content("local")) == count - 1)
        self.hold("each byte is the same", self.content("slurm") == self.content("local"))
        print(f"{count} small pages: {local_took:.1f} s here, {slurm_took:.1f} s by the controller in pieces of {seconds} s")

    def long_pages(self, loops, count):
        files = self.pages(count, loops)
        local, local_took = self.run(files, "long-local")
        slurm, slurm_took = self.run(files, "long-slurm", "--on", "slurm")
        self.hold("long pages are the same", (slurm, self.content("long-slurm")) == (local, self.content("long-local")))
        print(f"{count} pages of {local_took / count * os.cpu_count():.1f} s of work each: {local_took:.1f} s here, "
              f"{slurm_took:.1f} s by the controller")

    def merge_and_print(self, rows):
        (self.place / "badge.xml").write_text(PLATE)
        (self.place / "names.csv").write_text("Name\n" + "".join(f"Ä {row}\n" for row in range(rows)))
        template = ["badge.xml", "--data", "names.csv", "--dpi", "300"]
        for work, files, name in (("merge", template, "/badge.png"), ("print", self.pages(12), "")):
            local, local_took = self.run(files, f"{work}-local{name}", work=work)
            slurm, slurm_took = self.run(files, f"{work}-slurm{name}", "--on", "slurm", work=work)
            self.hold(f"{work} is done", local[0] == 0, str(local)[-500:])
            self.hold(f"lines and status of {work} are the same", slurm == local, f"{str(local)[-300:]}\n{str(slurm)[-300:]}")
            content = self.content(f"{work}-local")
            self.hold(f"each byte of {work} is the same", content and self.content(f"{work}-slurm") == content)
            print(f"{work}, {len(content)} results: {local_took:.1f} s here, {slurm_took:.1f} s by the controller")

    def tasks(self):
        """{number of a task: its process}. Copies of the process, which start its children, are younger."""
        found = {}
        for entry in sorted(pathlib.Path("/proc").glob("[0-9]*"), key=lambda entry: -int(entry.name)):
            try:
                words = (entry / "cmdline").read_bytes().split(b"\0")
                environment = (entry / "environ").read_bytes().split(b"\0")
            except OSError:
                continue
            if words[:2] == [os.fsencode(self.command), b":batch-task"] and os.fsencode(self.place) in words[2]:
                number, = [entry for entry in environment if entry.startswith(b"SLURM_ARRAY_TASK_ID=")] or [b""]
                found[number] = int(entry.name)
        return found

    def killed_task(self):
        files = self.pages(4, 30_000_000)
        batch = self.start(files, "killed", "--on", "slurm")
        task = min(wait_for(self.tasks, "a task").values())
        os.kill(task, signal.SIGKILL)
        _, error = batch.communicate(timeout=900)
        self.hold("a batch with a killed task is done", batch.returncode == 0, error[-500:])
        self.hold("with all its files", len(self.content("killed")) == len(files))
        print("a killed task: its piece was done again")

    def interrupted(self, controller):
        files = self.pages(6, 30_000_001)
        batch = self.start(files, "ended", "--on", "slurm")
        wait_for(self.tasks, "a task")
        wait_for(lambda: list((self.place / "ended/.rastrel-batch").glob("piece-*.json")), "the first piece")
        begun = time.monotonic()
        batch.send_signal(signal.SIGINT)
        _, error = batch.communicate(timeout=WAIT)
        took = time.monotonic() - begun
        self.hold("SIGINT ends it as cancelled", batch.returncode == 4, error[-500:])
        self.hold("no task is left", not self.tasks())
        self.hold("the array is gone from the queue", not controller.answer("squeue", "--noheader").strip())
        kept = {path.name: path.stat().st_mtime_ns for path in (self.place / "ended").glob("*.png")}
        resumed, _ = self.run(files, "ended", "--on", "slurm", "--resume")
        self.hold("it goes on", resumed[0] == 0 and len(self.content("ended")) == len(files), str(resumed)[-500:])
        again = [name for name, changed in kept.items() if (self.place / "ended" / name).stat().st_mtime_ns != changed]
        self.hold("what was done is not done again", len(again) <= 1, str(again))
        print(f"SIGINT: the array ended within {took:.1f} s with {len(kept)} pictures, and the batch went on")

    def most_at_once(self, results, *options):
        batch = self.start(self.pages(4, 20_000_000), results, "--on", "slurm", *options)
        largest = 0
        while batch.poll() is None:
            largest = max(largest, len(self.tasks()))
            time.sleep(0.02)
        _, error = batch.communicate()
        self.hold(f"the batch {results} is done", batch.returncode == 0, error[-500:])
        return largest

    def licences(self):
        """Tasks with the one licence never run together, though there is room for them."""
        free = self.most_at_once("free")
        self.hold("tasks without a licence run together", free > 1 or os.cpu_count() < 2, f"{free} at once")
        licensed = self.most_at_once("licensed", "--licenses", "cutter1:1")
        self.hold("tasks hold the licence one after the other", licensed == 1, f"{licensed} at once")
        refused, _ = self.run(self.pages(1), "refused", "--on", "slurm", "--licenses", "none:1")
        self.hold("a licence that is not there is refused", refused[0] == 1 and "icense" in refused[2], str(refused))
        print(f"a licence: {licensed} task at a time, and {free} without")


def main():
    command = str(pathlib.Path(sys.argv[1]).resolve())
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 200
    seconds = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    with tempfile.TemporaryDirectory(prefix="rastrel-slurm-", ignore_cleanup_errors=True) as name:
        place = pathlib.Path(name)
        controller = Controller(place)
        (place / "work ü").mkdir()
        try:
            controller.start()
            batches = Batches(command, place / "work ü")
            batches.compare(count, seconds)
            batches.merge_and_print(120 if count < 200 else 3000)
            batches.killed_task()
            batches.interrupted(controller)
            batches.licences()
            if count >= 200:
                batches.long_pages(30_000_002, 24)
        finally:
            controller.stop()
    if batches.faults:
        print("\n".join(batches.faults))
        return 1
    print("batch on Slurm: all is as it should be")
    return 0


if __name__ == "__main__":
    sys.exit(main())
