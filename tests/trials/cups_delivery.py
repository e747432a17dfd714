#!/usr/bin/env python3
"""Brings jobs to queues of a private print system, whose devices are sockets of this trial.

usage: cups_delivery.py RASTREL

A job for a queue with a listener is done, and the listener has its files byte for byte. One whose printer is not there
is given up at its time limit, canceled at the queue too, and waits as uncertain with the printer's message. A queue that
leads to a file is refused. Skipped (status 77) where there is no cupsd, or the user may not run one."""

import json
import os
import pathlib
import socket
import subprocess
import sys
import tempfile
import threading

from support.print_system import WAIT, answers, can_run, free_port, start_print_system, wait_for

PAGE = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: 1
<< /PageSize [40 30] >> setpagedevice
%%Page: 1 1
0.2 setgray 0 0 20 30 rectfill showpage
%%EOF
"""
DEVICES = """[*]
kind = file
format = png
pattern = {output}/{job}-{page}.png
"""


class Listener:
    """Keeps the bytes of each connection that had any."""

    def __init__(self):
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        self.jobs = []
        threading.Thread(target=self.run, daemon=True).start()

    def run(self):
        while True:
            one, _ = self.socket.accept()
            got = b""
            while piece := one.recv(65536):
                got += piece
            one.close()
            if got:
                self.jobs.append(got)


def main():
    command = sys.argv[1]
    if not can_run():
        print("skipped: a private print system needs cupsd, lpadmin and the superuser")
        return 77
    if not pathlib.Path("/usr/lib/cups/backend/socket").exists():
        print("skipped: the print system has no way to printers at sockets (Debian's package cups)")
        return 77
    with tempfile.TemporaryDirectory(prefix="rastrel-cups-", ignore_cleanup_errors=True) as name:
        place = pathlib.Path(name)
        place.chmod(0o755)
        port = free_port()
        listener = Listener()
        cupsd = start_print_system(place / "cups", port)
        processes = [cupsd]
        try:
            wait_for(lambda: answers(port), "the print system")
            run_jobs(command, place, port, listener, processes)
        finally:
            for process in processes:
                process.terminate()
                process.wait()
    print("queues: all is as it should be")
    return 0


def run_jobs(command, place, port, listener, processes):
    server = f"127.0.0.1:{port}"
    printer = dict(os.environ, CUPS_SERVER=server)
    queues = {"good": f"socket://127.0.0.1:{listener.port}",
              "gone": f"socket://127.0.0.1:{free_port()}", "paper": f"file://{place}/paper"}
    for queue, uri in queues.items():
        subprocess.run(["lpadmin", "-p", queue, "-E", "-v", uri], env=printer, check=True,
                       stderr=subprocess.DEVNULL)
    root = place / "root"
    environment = dict(os.environ, RASTREL_HOME=str(root), LC_ALL="C.UTF-8")

    def run(*arguments):
        return subprocess.run([command, *arguments], env=environment, capture_output=True,
                              text=True, check=True, timeout=WAIT).stdout

    run("printers")
    (root / "devices.txt").write_text(DEVICES)
    (root / "server.toml").write_text("".join(
        f'[[device]]\nname = "{queue}"\nkind = "queue"\naddress = "{queue}@{server}"\n'
        f'timeout = {4 if queue == "gone" else WAIT}\nretries = 0\npause = 0\n'
        for queue in queues))
    (root / "server.toml").chmod(0o600)
    page = place / "page.ps"
    page.write_text(PAGE)
    jobs = {queue: run("jobs", "add", str(page), "--device", queue).strip() for queue in queues}
    processes.insert(0, subprocess.Popen([command, "serve"], env=environment))

    def story(queue):
        return run("jobs", "show", jobs[queue])

    def state(queue, wanted):
        rows = [json.loads(line) for line in run("jobs", "list", "--json").splitlines()]
        return any(str(row.get("id")) == jobs[queue] and row.get("state") == wanted
                   for row in rows)

    wait_for(lambda: state("good", "done"), "the job at a queue with a listener")
    assert len(listener.jobs) == 1 and listener.jobs[0].startswith(b"\x89PNG"), listener.jobs
    wait_for(lambda: state("gone", "uncertain"), "the end of the job without a printer")
    assert "canceled" in story("gone"), story("gone")
    left = subprocess.run(["lpstat", "-o", "gone"], env=printer, capture_output=True, text=True,
                          check=False).stdout
    assert left == "", left
    wait_for(lambda: state("paper", "failed"), "the refusal of a queue that leads to a file")
    assert "leads to a file" in story("paper"), story("paper")
    print(story("good"), story("gone"), story("paper"), sep="\n")


if __name__ == "__main__":
    sys.exit(main())
