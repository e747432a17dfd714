"""A print shop of a trial's own: a data root, and the server on it."""

import json
import os
import pathlib
import signal
import subprocess
import sys
import time

WAIT = 240  # seconds, for whatever is waited for
ENDED = ("done", "failed", "canceled", "uncertain", "quarantined")


def wait_for(condition, name, limit=WAIT):
    """What the condition gives as soon as it is true; ends the trial if it never is."""
    end = time.monotonic() + limit
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.1)
    return sys.exit(f"{name} did not come within {limit} seconds")


class Shop:
    """`place` is an empty directory; `devices` the text of devices.txt, and `settings` of server.toml."""

    def __init__(self, command, place, devices, settings=""):
        self.command, self.place = command, pathlib.Path(place)
        self.root = self.place / "root"
        self.environment = dict(os.environ, RASTREL_HOME=str(self.root), LC_ALL="C.UTF-8",
                                HOME=str(self.place), RASTREL_WARM="0")
        self.environment.pop("RASTREL_OUTPUT", None)
        self.server = None
        self.log = self.place / "serve.log"
        self.run("printers")
        self.write("devices.txt", devices)
        self.write("server.toml", settings)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(0o600)

    def run(self, *arguments, status=0):
        done = subprocess.run([self.command, *arguments], env=self.environment, capture_output=True,
                              text=True, errors="replace", timeout=WAIT, check=False)
        if done.returncode != status:
            sys.exit(f"{arguments}: status {done.returncode}: {done.stderr[-2000:]}")
        return done.stdout if status == 0 else done.stderr

    def start(self):
        """Returns when the server serves: until then a signal to stop simply ends it."""
        before = self.served()
        with open(self.log, "ab") as log:
            self.server = subprocess.Popen([self.command, "serve"], env=self.environment, stdout=log,
                                           stderr=log, stdin=subprocess.DEVNULL)

        wait_for(lambda: self.served() > before or self.server.poll() is not None, "the server")

    def served(self):
        return self.log.read_text(errors="replace").count("rastrel: serving") if self.log.exists() else 0

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        if self.server.wait(timeout=WAIT) != 0:
            sys.exit("the server does not stop well: " + self.log_end())

    def kill(self):
        """For the end of a trial: whatever still runs goes with the server."""
        if self.server is not None and self.server.poll() is None:
            self.server.kill()
            self.server.wait()

    def log_end(self):
        return self.log.read_text(errors="replace")[-1500:]

    def jobs(self):
        return {job["id"]: job for job in map(json.loads, self.run(
            "jobs", "list", "--json", "--limit", "1000000").splitlines())}

    def rest(self, limit=WAIT):
        """The jobs when all have ended."""
        def ended():
            jobs = self.jobs()
            return all(job["state"] in ENDED for job in jobs.values()) and jobs
        return wait_for(ended, "rest of the queue", limit)

    def job_file(self, number):
        files = [path for path in (self.root / "server/jobs" / str(number)).iterdir()
                 if path.name.startswith("job")]
        if len(files) != 1:
            sys.exit(f"job {number} has the files {files}")
        return files[0].read_bytes()

    def hot_folder(self, name, settings):
        folder = self.place / name
        folder.mkdir()
        (folder / ".rastrel-folder.toml").write_text(settings)
        (self.root / "server").mkdir(mode=0o700, exist_ok=True)
        with open(self.root / "server/folders.toml", "a", encoding="utf-8") as file:
            file.write(f'[[folder]]\npath = "{folder}"\n')
        return folder

    def memory(self, program="rastrel-server"):
        """Kilobytes that each process of the shop with that program holds, by its number."""
        held = {}
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if not entry.name.isdigit() or program not in os.readlink(entry / "exe"):
                    continue
                words = (entry / "environ").read_bytes().split(b"\0")
                if b"RASTREL_HOME=" + str(self.root).encode() in words:
                    status = (entry / "status").read_text()
                    held[int(entry.name)] = int(status.split("VmRSS:")[1].split()[0])
            except (OSError, IndexError):
                continue
        return held
