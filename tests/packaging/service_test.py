#!/usr/bin/env python3
"""The units of the server: sound, shut off as far as they say, and wide enough for all that a server does.

No service manager runs in a test. The filter of system calls, by which most of the directives work, is made of the unit
here (call_filter.py), and a server with printer, page and warm interpreters runs in it. Directives that mount, such as
ProtectSystem, are judged by systemd-analyze alone.

usage: service_test.py RASTREL UNITS"""

import errno
import json
import os
import pathlib
import platform
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

import call_filter

SKIPPED = 77
WAIT = 120  # seconds, for whatever is waited for
# Exposure that systemd-analyze may find, in tenths. What is left of the service's: it has a network, a home to read from,
# Unix sockets, and the machine's root.
MOST = {"system": 15, "user": 65}
SIGN = """%!PS
<< /PageSize [72 36] >> setpagedevice
0 0 1 setrgbcolor 0 0 72 36 rectfill showpage
"""


class UnitTest(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-unit-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def unit(self, kind):
        """A unit as it is installed, but that it starts the built command."""
        text = (UNITS / ("user" if kind == "user" else "") / "rastrel-server.service").read_text(encoding="ascii")
        self.assertIn("ExecStart=/usr/bin/rastrel serve\n", text)
        path = self.place / "rastrel-server.service"
        path.write_text(text.replace("/usr/bin/rastrel", str(COMMAND)), encoding="ascii")
        return path

    def analyze(self, kind, *arguments):
        return subprocess.run(["systemd-analyze", f"--{kind}", *arguments], capture_output=True, text=True, timeout=WAIT,
                              check=False, env={**os.environ, "XDG_RUNTIME_DIR": str(self.place)})

class Units(UnitTest):
    def test_both_units_are_sound(self):
        for kind in ("system", "user"):
            done = self.analyze(kind, "--man=no", "verify", str(self.unit(kind)))
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""), kind)

    def test_a_directive_that_is_misspelled_is_noticed(self):
        unit = self.unit("system")
        unit.write_text(unit.read_text().replace("NoNewPrivileges", "NoNewPrivilege"))
        self.assertIn("NoNewPrivilege", self.analyze("system", "--man=no", "verify", str(unit)).stderr)

    def test_both_units_are_shut_off(self):
        for kind, most in MOST.items():
            done = self.analyze(kind, "security", "--offline=yes", f"--threshold={most}", str(self.unit(kind)))
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_a_unit_without_its_filter_is_not_shut_off_enough(self):
        unit = self.unit("system")
        unit.write_text(re.sub("^SystemCallFilter=.*\n", "", unit.read_text(), flags=re.MULTILINE))
        done = self.analyze("system", "security", "--offline=yes", f"--threshold={MOST['system']}", str(unit))
        self.assertNotEqual(done.returncode, 0, done.stdout)

    def test_both_units_have_the_same_filter(self):
        system, user = (self.unit(kind).read_text() for kind in ("system", "user"))
        self.assertEqual(call_filter.allowed_calls(system), call_filter.allowed_calls(user))


@unittest.skipUnless(platform.machine() == "x86_64" and call_filter.NUMBERS.exists(),
                     "the numbers of the calls are not known here")
class Filter(UnitTest):
    def run_in_filter(self, arguments, **more):
        enter = call_filter.entering(self.unit("system").read_text())
        return subprocess.Popen(arguments, preexec_fn=enter, **more)  # pylint: disable=subprocess-popen-preexec-fn

    def test_calls_outside_of_it_fail(self):
        script = """
import ctypes, mmap, os, socket, sys
library = ctypes.CDLL(None, use_errno=True)
def fails(result):
    return result == -1 and ctypes.get_errno()
library.mmap.restype = ctypes.c_long
print(fails(library.unshare(0x10000000)), fails(library.chown(b"/tmp", 0, 0)), fails(library.mount(0, 0, 0, 0, 0)),
      fails(library.mmap(0, 4096, 6, 0x22, -1, 0)), fails(library.socket(16, 3, 0)))
socket.socket(socket.AF_INET).close()
"""
        done = self.run_in_filter([sys.executable, "-c", script], stdout=subprocess.PIPE, text=True)
        output, _ = done.communicate(timeout=WAIT)
        self.assertEqual((done.returncode, output.split()),
                         (0, [str(errno.EPERM)] * 4 + [str(errno.EAFNOSUPPORT)]))

    def test_a_server_works_within(self):
        root = self.place / "root"
        environment = {**os.environ, "RASTREL_HOME": str(root), "HOME": str(self.place)}
        environment.pop("RASTREL_OUTPUT", None)

        def rastrel(*arguments):
            done = subprocess.run([COMMAND, *arguments], env=environment, capture_output=True, text=True, timeout=WAIT,
                                  check=False)
            self.assertEqual(done.returncode, 0, done.stderr)
            return done.stdout

        rastrel("printers")
        ports = []
        for _ in range(2):
            with socket.socket() as one:
                one.bind(("127.0.0.1", 0))
                ports.append(one.getsockname()[1])
        (root / "server.toml").write_text(f"[printer]\nport = {ports[0]}\n[web]\nport = {ports[1]}\n")
        (root / "server.toml").chmod(0o600)
        hot = self.place / "hot"
        hot.mkdir()
        (hot / ".rastrel-folder.toml").write_text('device = "TIFF"\nsettle = 0\npoll = 1\n')
        rastrel("folder", "add", str(hot))
        sign = self.place / "sign.ps"
        sign.write_text(SIGN)
        log = self.place / "log"
        with log.open("wb") as output:
            server = self.run_in_filter([COMMAND, "serve"], env=environment, stderr=output)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        for count in range(3):
            rastrel("jobs", "add", str(sign), "--title", f"added {count}")
        # Copied without its mode: the server may take it at once.
        shutil.copyfile(sign, hot / "dropped.ps")
        limit = time.monotonic() + WAIT
        while True:
            jobs = [json.loads(line) for line in rastrel("jobs", "list", "--json").splitlines()]
            if len(jobs) == 4 and all(job["state"] == "done" for job in jobs):
                break
            self.assertFalse([job for job in jobs if job["state"] == "failed"], jobs)
            self.assertLess(time.monotonic(), limit, (jobs, log.read_text()))
            time.sleep(0.2)
        # The walls of the interpreters were raised within: nothing of them is missing there.
        walls = [line for line in self.within("doctor", environment).splitlines() if " walls: " in line]
        self.assertIn("Landlock", walls[0])
        self.assertIn("seccomp", walls[0])
        # The second and third may have an interpreter that is kept ready.
        for _ in range(3):
            self.assertIn("72", self.within("pagesize", environment, str(sign)))
        self.assertEqual(self.answer(ports[1])[:12], b"HTTP/1.1 401", log.read_text())
        self.assertEqual(self.answer(ports[0])[:5], b"HTTP/", log.read_text())
        server.send_signal(signal.SIGTERM)
        self.assertEqual(server.wait(timeout=WAIT), 0)
        for trouble in ("not permitted", "Bad system call", "failed with status", "ended by signal"):
            self.assertNotIn(trouble, log.read_text())

    def within(self, verb, environment, *operands):
        done = self.run_in_filter([COMMAND, verb, *operands], env=environment, stdout=subprocess.PIPE, text=True)
        return done.communicate(timeout=WAIT)[0]

    def answer(self, port):
        """The first bytes of an answer to a request that names nobody."""
        limit = time.monotonic() + WAIT
        while True:
            try:
                with socket.create_connection(("127.0.0.1", port), timeout=WAIT) as line:
                    line.sendall(f"GET /api/v1/jobs HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\n\r\n".encode())
                    return line.recv(64)
            except ConnectionRefusedError:
                self.assertLess(time.monotonic(), limit, f"nobody listens at {port}")
                time.sleep(0.2)


if __name__ == "__main__":
    if shutil.which("systemd-analyze") is None:
        print("systemd-analyze is not installed")
        sys.exit(SKIPPED)
    COMMAND, UNITS = (pathlib.Path(sys.argv.pop(1)).resolve() for _ in range(2))
    unittest.main()
