#!/usr/bin/env python3
"""Sends what no sender should, to the printer on the network and into a hot folder.

usage: server_attacks.py RASTREL

After each attack an ordinary job has to come out, with the same processes; their memory may not have grown with the
attack; no file may be outside the places of the server; and what a listing shows has no control character. A document that
unpacks to more than a job may have ends at a limit."""

import contextlib
import gzip
import os
import pathlib
import random
import struct
import sys
import tempfile
import zlib

from support import ipp
from support.print_system import answers, free_port
from support.shop import Shop, wait_for

DEVICES = "[Sign]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n"
PAGE = b"%!PS\n<< /PageSize [40 30] >> setpagedevice 0 0 20 30 rectfill showpage\n"
LIMIT = 5_000_000  # bytes of a job
GROWTH = 96 * 1024  # kilobytes that an attack may add to the memory of a process
NAMES = {"a path upward": b"../../../etc/passwd", "a full path": b"/etc/passwd", "zero bytes": b"a\0b\0",
         "lines": b"a\nb\r\nc", "sequences": b"\x1b[2J\x1b]0;x\x07\x9b31m", "turned": "a\u202eb".encode(),
         "no UTF-8": b"\xff\xfe\xc3", "255 bytes": b"n" * 255, "256 bytes": b"n" * 256, "32767 bytes": b"n" * 32767,
         "65535 bytes": b"n" * 65535, "a device": b"|/bin/sh;$(id)`id`", "a page of HTML": b"<script>alert(1)</script>"}


def chunk(name, body):
    return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))


def png(width, height, data):
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", data) + chunk(b"IEND", b""))


def deflated_zeros(count):
    packer, block, parts = zlib.compressobj(9), bytes(1 << 20), []
    for _ in range(count >> 20):
        parts.append(packer.compress(block))
    return b"".join(parts) + packer.flush()


def raster(width, height, line, body, pages=1):
    fields = bytearray(1796)
    fields[0:9] = b"PwgRaster"
    for offset, value in ((276, 300), (280, 300), (340, 1), (352, 100), (356, 100), (372, width), (376, height), (384, 8),
                          (388, 24), (392, line), (400, 19), (420, 3), (452, pages)):
        struct.pack_into(">I", fields, offset, value & 0xFFFFFFFF)
    return b"RaS2" + bytes(fields) + body


class Trial:
    def __init__(self, command, place):
        self.port = free_port()
        self.shop = Shop(command, place, DEVICES, f"job-megabytes = {LIMIT // 1000000}\n[printer]\nport = {self.port}\n")
        self.uri = f"ipp://localhost:{self.port}/ipp/print/Sign".encode()
        self.hot = self.shop.hot_folder("hot", 'device = "Sign"\nmode = "Screen/preview"\nsettle = 0\npoll = 1\n')
        self.faults, self.count = [], 0

    def send(self, content, **fields):
        return ipp.post(self.port, ipp.request(self.uri, **fields), content)

    def printer(self):
        return self.shop.memory("rastrel-printer")

    def is_taken(self, name):
        with contextlib.suppress(OSError):
            return self.send(PAGE, name=name, form=b"application/postscript") == 0
        return False

    def job_comes_out(self):
        self.count += 1
        name = f"ordinary{self.count}"
        # A printer that ended is back after a pause.
        wait_for(lambda: self.is_taken(name.encode()), f"an answer to {name}", 120)
        file = self.shop.root / "output" / f"{name}-1.png"
        return wait_for(file.exists, f"{name}, which shows that others go on", 120)

    def attack(self, name, deed, may_end=False):
        before, programs = self.printer(), self.shop.memory("rastrel-server")
        result = deed()
        self.job_comes_out()
        after = self.printer()
        if set(after) != set(before) and not may_end:
            self.faults.append(f"{name}: the printer ended, and was started again")
        for process, size in after.items():
            if size > before.get(process, size) + GROWTH:
                self.faults.append(f"{name}: the printer's memory grew from {before[process]} to {size} KiB")
        for process, size in self.shop.memory("rastrel-server").items():
            if size > programs.get(process, size) + GROWTH:
                self.faults.append(f"{name}: the server's memory grew from {programs[process]} to {size} KiB")
        print(f"{name}: {result}", flush=True)

    def attack_names(self):
        for title, value in NAMES.items():
            for field in ("name", "user", "form"):
                self.attack(f"{title} as {field}", lambda v=value, f=field: hex(self.send(PAGE, **{f: v})))
            self.attack(f"{title} as document-name", lambda v=value: hex(
                self.send(PAGE, more=ipp.attribute("name", b"document-name", v))))
            self.attack(f"{title} as rastrel-mode", lambda v=value: hex(
                self.send(PAGE, job=ipp.attribute("keyword", b"rastrel-mode", v))))

    def attack_requests(self):
        many = b"".join(ipp.attribute("keyword", f"x-{index}".encode(), b"v" * 1000) for index in range(5000))
        self.attack("5000 attributes", lambda: hex(self.send(PAGE, job=many)))
        deep = ipp.attribute("begin", b"media-col", b"")
        deep += (ipp.attribute("member", b"", b"media-size") + ipp.attribute("begin", b"", b"")) * 20000
        # The library's reader calls itself for each, and has no limit; the server starts the printer again.
        self.attack("20000 collections in each other", lambda: hex(self.send(PAGE, job=deep)), may_end=True)
        whole = ipp.request(self.uri)
        self.attack("a request that is cut anywhere", lambda: [
            ipp.post(self.port, whole[:cut], length=len(whole)) for cut in range(1, len(whole), 17)][-1])
        dice = random.Random(5)

        def scrambled():
            changed = bytearray(whole)
            for _ in range(3):
                changed[dice.randrange(8, len(changed))] = dice.randrange(256)
            return ipp.post(self.port, bytes(changed), PAGE)
        self.attack("300 scrambled requests", lambda: len([scrambled() for _ in range(300)]))
        early = ipp.request(self.uri, name=b"early")
        self.attack("a length of exabytes", lambda: ipp.post(self.port, early, PAGE, length=1 << 60))
        if any(job["title"] == "early" for job in self.shop.jobs().values()):
            self.faults.append("a document that ended early became a job")
        self.attack("copies beyond all", lambda: hex(self.send(
            PAGE, form=b"application/postscript", job=ipp.attribute("integer", b"copies", 2147483647))))

    def attack_documents(self):
        # gigabytes of zeros, in a few megabytes
        bomb = gzip.compress(b"%!PS\n" + bytes(1 << 20)) + b"".join([gzip.compress(bytes(1 << 26))] * 48)
        for coding, data in (("gzip", bomb), ("deflate", deflated_zeros(3 << 30))):
            self.attack(f"three gigabytes by {coding}", lambda c=coding, d=data: hex(self.send(
                d, form=b"application/postscript", more=ipp.attribute("keyword", b"compression", c.encode()))))
            used = sum(path.stat().st_size for path in (self.shop.root / "server").rglob("*") if path.is_file())
            if used > 64 * LIMIT:
                self.faults.append(f"{used} bytes lie in the server's folder after a document by {coding}")
        for title, document in (
                ("a PNG of a million by a million", png(1000000, 1000000, deflated_zeros(1 << 30))),
                ("a PNG larger than all", png(0x7FFFFFFF, 0x7FFFFFFF, b"x")),
                ("a PNG with too many rows", png(10, 2, zlib.compress(bytes(1 << 24))))):
            self.attack(title, lambda d=document: hex(self.send(d, form=b"image/png")))
        for title, document in (
                ("raster of 2^31 bytes a row", raster(1 << 29, 1 << 31, 1 << 31, b"\0\x7f\0\0\0" * 1000)),
                ("raster whose rows are shorter than its pixels", raster(100, 100, 3, b"\0\x7f\0\0\0" * 1000)),
                ("raster of no width", raster(0, 0, 0, b"")),
                ("raster of a million rows in some bytes", raster(1000, 1000000, 3000, b"\xff" + b"\x7f\1\2\3" * 8 * 4000)),
                ("raster that is noise", b"RaS2" + random.Random(1).randbytes(100000))):
            self.attack(title, lambda d=document: hex(self.send(d, form=b"image/pwg-raster")))

    def attack_folder(self):
        victim = self.shop.place / "victim"
        victim.mkdir()
        (victim / "private.ps").write_bytes(PAGE)
        (victim / "private.ps").chmod(0o600)

        def drop():
            (self.hot / "link.ps").symlink_to(victim / "private.ps")
            os.link(victim / "private.ps", self.hot / "hard.ps")
            os.mkfifo(self.hot / "pipe.ps")
            (self.hot / "folder.ps").mkdir()
            (self.hot / "\x1b[2J\n.ps").write_bytes(PAGE)
            (self.hot / ("n" * 252 + ".ps")).write_bytes(PAGE)
            names = ["own"]
            if os.geteuid() == 0:
                os.mknod(self.hot / "null.ps", 0o20666, os.makedev(1, 5))
                (self.hot / "foreign.ps").write_bytes(PAGE)
                os.chown(self.hot / "foreign.ps", 65534, 65534)
                names.append("foreign")
            (self.hot / "own.ps").write_bytes(PAGE)
            wait_for((self.hot / "done/own.ps.report.json").exists, "the folder's own job")
            left = {path.name for path in self.hot.iterdir()} & {"link.ps", "hard.ps", "pipe.ps", "folder.ps", "null.ps",
                                                                 "foreign.ps"}
            if len(left) != 4 + 2 * (len(names) - 1):
                self.faults.append(f"of what is no job's file only {sorted(left)} are left")
            return "left alone: " + ", ".join(sorted(left))
        self.attack("links, pipes, devices and others' files in a hot folder", drop)

        def replace():
            aside = self.shop.place / "aside"
            for _ in range(100):
                self.hot.rename(aside)
                self.hot.symlink_to(victim)
                self.hot.unlink()
                aside.rename(self.hot)
            return "a hundred times"
        self.attack("a hot folder that becomes a link and itself again", replace)
        held = sorted(path.name for path in victim.iterdir())
        if held != ["private.ps"] or (victim / "private.ps").read_bytes() != PAGE:
            self.faults.append(f"the folder behind the link holds {held}")

    def look_at_the_rest(self):
        shown = self.shop.run("jobs", "list", "--limit", "100000").replace("\n", "").replace("\t", "")
        if any(ord(one) < 32 or 127 <= ord(one) < 160 or one in "\u202e" for one in shown):
            self.faults.append("a listing shows control characters")
        strays = [path for path in self.shop.place.rglob("*") if path.is_file()
                  and path.parts[len(self.shop.place.parts)] not in ("root", "hot", "victim", "serve.log")
                  and path.parts[len(self.shop.place.parts)][0] != "."]
        if strays:
            self.faults.append(f"strays: {strays}")
        waiting = [job for job in self.shop.rest().values() if job["state"] not in ("done", "failed", "canceled")]
        if waiting:
            self.faults.append(f"jobs that did not end: {waiting}")
        spool = [path.name for path in (self.shop.root / "server/printer/spool").iterdir()]
        print(f"{len(spool)} documents are left in the printer's spool")


def main():
    with tempfile.TemporaryDirectory(prefix="rastrel-attacks-", ignore_cleanup_errors=True) as place:
        trial = Trial(sys.argv[1], pathlib.Path(place))
        trial.shop.start()
        try:
            wait_for(lambda: answers(trial.port), "the printer on the network")
            trial.job_comes_out()
            trial.attack_names()
            trial.attack_requests()
            trial.attack_documents()
            trial.attack_folder()
            trial.look_at_the_rest()
            trial.shop.stop()
        finally:
            trial.shop.kill()
        if trial.faults:
            print("\n".join(trial.faults), trial.shop.log_end(), sep="\n")
            return 1
    print("attacks: all went on as it should")
    return 0


if __name__ == "__main__":
    sys.exit(main())
