#!/usr/bin/env python3
"""Puts the server under load: many clients, a huge file, a full disk, and senders that take for ever.

usage: server_load.py RASTREL [JOBS [GIBIBYTES]]

JOBS small jobs (10,000) come from 50 processes at once, some of them by IPP; then half as many by the HTTP interface, over
connections that stay, and a tenth by the command. None may be lost or doubled, and the server's memory may not grow with
them; it is told before and after. A file of so many GIBIBYTES (5; 0 leaves it out) is taken by the command where the settings
name no limit, and one over a limit is refused by the printer; neither takes memory. On a disk that is full a job is refused in clear
words, all that the queue has said yes to is there, and work goes on once there is room. While 50 senders bring a byte a
second, others print. The median and the 99th percentile of a submission are told of each way."""

import collections
import contextlib
import http.client
import json
import os
import pathlib
import resource
import socket
import subprocess
import sys
import tempfile
import threading
import time

from support import ipp
from support.print_system import answers, free_port
from support.shop import Shop, wait_for

DEVICES = "[Sign]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n"
PAGE = b"%!PS\n<< /PageSize [40 30] >> setpagedevice 0 0 20 30 rectfill showpage\n"
CLIENTS = 50
BY_IPP = 50  # jobs that come by IPP meanwhile
BY_HTTP = 10  # connections of the HTTP interface at once
BY_COMMAND = 4  # commands at once
GROWTH = 48 * 1024  # kilobytes that the memory of a process of the server may grow with the load
SLOW = 15  # seconds that the slow senders take at least
DISK = 160  # megabytes of the disk that is filled


class LocalConnection(http.client.HTTPConnection):
    """A connection over a Unix socket."""

    def __init__(self, path):
        super().__init__("127.0.0.1", timeout=240)
        self.path = str(path)

    def connect(self):
        self.sock = socket.socket(socket.AF_UNIX)
        self.sock.settimeout(self.timeout)
        self.sock.connect(self.path)


def figures(times):
    """Of seconds."""
    times = sorted(times)
    return (f"median {times[len(times) // 2] * 1000:.2f} ms, 99th percentile {times[len(times) * 99 // 100] * 1000:.2f} ms, "
            f"longest {times[-1] * 1000:.2f} ms")


class Load:
    def __init__(self, command, place, settings=""):
        self.port = free_port()
        self.shop = Shop(command, place, DEVICES, f"{settings}[printer]\nport = {self.port}\n[web]\nport = {free_port()}\n")
        self.socket = self.shop.root / "server/web.sock"
        self.client = pathlib.Path(command).resolve().parent.parent / "tests/submit_client"
        self.uri = f"ipp://localhost:{self.port}/ipp/print/Sign".encode()
        self.page = self.shop.place / "page.ps"
        self.page.write_bytes(PAGE)
        self.faults = []

    def send(self, name, *pieces):
        return ipp.post(self.port, ipp.request(self.uri, name=name.encode(), form=b"application/postscript"), *pieces)

    def memory(self):
        return {process: size for program in ("rastrel-server", "rastrel-printer", "rastrel-web")
                for process, size in self.shop.memory(program).items()}

    def check_memory(self, before, name):
        after = self.memory()
        print(f"{name}: the server's {len(after)} processes held {sum(before.values()) / 1024:.1f} MiB before and "
              f"{sum(after.values()) / 1024:.1f} MiB after")
        for process, size in after.items():
            if size > before.get(process, size) + GROWTH:
                self.faults.append(f"{name}: a process grew from {before[process]} to {size} KiB")

    def many_jobs(self, jobs):
        each = jobs // CLIENTS
        before = self.memory()
        begun = time.monotonic()
        clients = [subprocess.Popen([self.client, self.shop.root, self.page, f"client{number}", str(each)],
                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
                   for number in range(CLIENTS)]
        by_ipp = [self.send(f"ipp{number}", PAGE) for number in range(BY_IPP)]
        times = []
        for client in clients:
            out, error = client.communicate()
            if client.returncode != 0:
                self.faults.append(f"a client ended with {client.returncode}: {error}")
            times += [int(line) / 1_000_000 for line in out.split()]
        took = time.monotonic() - begun
        if any(by_ipp):
            self.faults.append(f"by IPP: {[hex(status) for status in by_ipp if status]}")
        wait_for(lambda: sum(job["state"] == "done" for job in self.shop.jobs().values()) == BY_IPP,
                 "the end of the jobs by IPP", 900)
        rows = self.shop.jobs()
        titles = collections.Counter(job["title"] for job in rows.values())
        expected = {f"client{number}-{job}" for number in range(CLIENTS) for job in range(each)}
        expected |= {f"ipp{number}" for number in range(BY_IPP)}
        lost, more = expected - set(titles), {title for title, count in titles.items() if count > 1}
        if lost or more or set(titles) - expected:
            self.faults.append(f"{len(lost)} jobs are lost, {len(more)} doubled, {len(set(titles) - expected)} strange")
        broken = [row["id"] for row in rows.values() if row["title"].startswith("client")
                  and self.shop.job_file(row["id"]) != PAGE]
        if broken:
            self.faults.append(f"jobs whose files are not whole: {broken[:9]}")
        self.check_memory(before, "the jobs")
        print(f"{len(times)} submissions from {CLIENTS} processes at once in {took:.1f} s: {figures(times)}")

    def check_titles(self, prefix, count):
        titles = collections.Counter(job["title"] for job in self.shop.jobs().values() if job["title"].startswith(prefix))
        expected = {f"{prefix}{number}" for number in range(count)}
        if set(titles) != expected or sum(titles.values()) != count:
            self.faults.append(f"{prefix}: {len(expected - set(titles))} of {count} jobs are lost, "
                               f"{sum(titles.values()) - len(titles)} doubled")

    def submit_all(self, prefix, count, at_once, opened):
        """Jobs PREFIX0 to COUNT - 1 from threads; `opened` makes a thread's function that submits one by its title, and
        returns what went wrong. The seconds of each."""
        times = [0.0] * count
        faults = []

        def work(first):
            submit = opened()
            for number in range(first, count, at_once):
                begun = time.monotonic()
                fault = submit(f"{prefix}{number}")
                times[number] = time.monotonic() - begun
                if fault:
                    faults.append(f"{prefix}{number}: {fault}")
                    return
        threads = [threading.Thread(target=work, args=(first,)) for first in range(at_once)]
        begun = time.monotonic()
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        took = time.monotonic() - begun
        self.faults += faults[:3]
        self.check_titles(prefix, count)
        return times, took

    def many_by_http(self, jobs):
        wait_for(self.socket.exists, "the HTTP interface")

        def opened():
            connection = LocalConnection(self.socket)

            def submit(title):
                connection.request("POST", f"/api/v1/jobs?title={title}&device=Sign&hold=true", PAGE,
                                   {"Content-Type": "application/postscript"})
                answer = connection.getresponse()
                body = answer.read()
                if answer.status == 201 and json.loads(body)["title"] == title:
                    return None
                return f"status {answer.status}: {body[:300]}"
            return submit
        before = self.memory()
        times, took = self.submit_all("http", jobs, BY_HTTP, opened)
        self.check_memory(before, "jobs by HTTP")
        print(f"{jobs} submissions by HTTP over {BY_HTTP} connections in {took:.1f} s: {figures(times)}")

    def many_by_command(self, jobs):
        def submit(title):
            done = subprocess.run([self.shop.command, "jobs", "add", str(self.page), "--device", "Sign", "--title", title,
                                   "--hold"], env=self.shop.environment, capture_output=True, text=True, check=False)
            return done.stderr if done.returncode != 0 else None
        before = self.memory()
        times, took = self.submit_all("command", jobs, BY_COMMAND, lambda: submit)
        self.check_memory(before, "jobs by the command")
        print(f"{jobs} submissions by the command, {BY_COMMAND} at a time, in {took:.1f} s: {figures(times)}")

    def huge_file(self, gibibytes):
        huge = self.shop.place / "huge.ps"
        with open(huge, "wb") as file:
            file.write(PAGE)
            file.truncate(gibibytes << 30)
        begun = time.monotonic()
        number = int(self.shop.run("jobs", "add", str(huge), "--device", "Sign", "--hold"))
        # That of the largest child so far, which this one is.
        held = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        stored, = [path for path in (self.shop.root / f"server/jobs/{number}").iterdir()]
        if stored.stat().st_size != gibibytes << 30:
            self.faults.append(f"of the huge file {stored.stat().st_size} bytes are in the queue")
        if held > 200 * 1024:
            self.faults.append(f"the command took {held} KiB for the huge file")
        print(f"{gibibytes} GiB by the command: taken in {time.monotonic() - begun:.1f} s; no command took more than {held} KiB")
        self.shop.run("jobs", "remove", str(number))
        huge.unlink()

    def too_large_by_ipp(self):
        before = self.memory()
        jobs = len(self.shop.jobs())
        block = b"%" * 1048575 + b"\n"
        status = self.send("too-large", PAGE, *[block] * 1200)
        self.check_memory(before, "a document that is too large")
        time.sleep(2)
        if len(self.shop.jobs()) != jobs:
            self.faults.append("a document that is too large became a job")
        left = sum(path.stat().st_size for path in (self.shop.root / "server/printer/spool").iterdir())
        if left > 100_000_000:
            self.faults.append(f"{left} bytes of a document that is too large are left")
        print(f"1.2 GB by IPP, where 1 GB is the limit: {status:#x}, {left} bytes are left")

    def slow_senders(self):
        ended = threading.Event()

        def sender():
            with contextlib.suppress(OSError), ipp.connect(self.port) as line:
                request = ipp.request(self.uri)
                text = ipp.head(len(request) + 1000000) + request
                for index in range(len(text)):
                    line.sendall(text[index:index + 1])
                    if ended.wait(1):
                        return
        threads = [threading.Thread(target=sender) for _ in range(50)]
        for thread in threads:
            thread.start()
        begun, sent = time.monotonic(), 0
        while time.monotonic() < begun + SLOW:
            name = f"quick{sent}"
            if self.send(name, PAGE) != 0:
                self.faults.append(f"{name} was refused while others are slow")
                break
            wait_for((self.shop.root / "output" / f"{name}-1.png").exists, f"{name}, beside slow senders", 60)
            sent += 1
        ended.set()
        for thread in threads:
            thread.join()
        print(f"{sent} jobs came out one after the other in {SLOW} s, beside 50 senders of a byte a second")


def full_disk(command, place):
    """A data root on a small disk of its own, which is filled."""
    disk = place / "disk"
    disk.mkdir()
    if os.geteuid() != 0 or subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK}m", "none", disk],
                                           capture_output=True, check=False).returncode != 0:
        print("the full disk is left out: none can be mounted here")
        return []
    faults, shop = [], None
    try:
        shop = Shop(command, disk, DEVICES)
        shop.start()
        file = place / "file.ps"
        file.write_bytes(PAGE + b"%" * 5_000_000 + b"\n")
        taken, refusal = [], ""
        for number in range(200):
            done = subprocess.run([command, "jobs", "add", str(file), "--device", "Sign", "--title", f"t{number}", "--hold"],
                                  env=shop.environment, capture_output=True, text=True, check=False)
            if done.returncode != 0:
                refusal = done.stderr.strip()
                break
            taken.append(int(done.stdout))
        if "No space left on device" not in refusal and "full" not in refusal:
            faults.append(f"the full disk is not named: {refusal!r}")
        # To the last byte.
        with contextlib.suppress(OSError), open(disk / "ballast", "wb") as ballast:
            while True:
                ballast.write(bytes(4096))
                ballast.flush()
        if shop.server.poll() is not None:
            faults.append("the server ended on a full disk")
        rows = shop.jobs()
        if sorted(rows) != sorted(taken):
            faults.append(f"of the jobs {taken} the queue has {sorted(rows)}")
        faults += [f"job {number} is not whole" for number in taken if shop.job_file(number) != file.read_bytes()]
        (disk / "ballast").unlink()
        shop.run("jobs", "remove", *map(str, taken[2:]))
        shop.run("jobs", "release", *map(str, taken[:2]))
        ended = shop.rest()
        faults += [f"job {number} after there was room: {job}" for number, job in ended.items() if job["state"] != "done"]
        print(f"a full disk: {len(taken)} jobs were taken and are whole, the next was refused: {refusal}")
        shop.stop()
    finally:
        if shop is not None:
            shop.kill()
        subprocess.run(["umount", "-l", disk], check=False)
    return faults


def without_limit(command, place, gibibytes):
    place.mkdir()
    load = Load(command, place, "")
    load.shop.start()
    try:
        load.huge_file(gibibytes)
        load.shop.stop()
    finally:
        load.shop.kill()
    return load.faults


def main():
    command = sys.argv[1]
    jobs = int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    gibibytes = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    with tempfile.TemporaryDirectory(prefix="rastrel-load-", ignore_cleanup_errors=True) as name:
        load = Load(command, pathlib.Path(name), "job-megabytes = 1000\n")
        load.shop.start()
        try:
            wait_for(lambda: answers(load.port), "the printer on the network")
            load.many_jobs(jobs)
            load.many_by_http(jobs // 2)
            load.many_by_command(jobs // 10)
            load.slow_senders()
            if gibibytes:
                load.too_large_by_ipp()
            load.shop.stop()
        finally:
            load.shop.kill()
        if gibibytes:
            load.faults += without_limit(command, pathlib.Path(name) / "unlimited", gibibytes)
        load.faults += full_disk(command, pathlib.Path(name))
        if load.faults:
            print("\n".join(load.faults), load.shop.log_end(), sep="\n")
            return 1
    print("load: all is as it should be")
    return 0


if __name__ == "__main__":
    sys.exit(main())
