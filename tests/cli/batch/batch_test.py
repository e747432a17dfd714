#!/usr/bin/env python3
"""Runs `rastrel batch` with a data root of its own: results, order, failures, kills.

usage: batch_test.py RASTREL"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = ""
WAIT = 120  # seconds, for whatever is waited for
# Loops so many times before the page comes, so that a kill meets it.
PAGE = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 0 0 {width} 20
{loops} {{ 1 pop }} repeat
0.5 setgray 0 0 10 10 rectfill showpage
%%EOF
"""


def state_of(process):
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()[0]
    except (OSError, IndexError):
        return ""


def children_of(process):
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            words = (entry / "stat").read_text().rsplit(")", 1)[1].split()
        except OSError:
            continue
        if words[1] == str(process):
            found.append(int(entry.name))
    return found


def below(process):
    found = []
    for child in children_of(process):
        found += [child, *below(child)]
    return found


class Batch(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-batch-", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.results = self.place / "results"
        self.environment = dict(os.environ, RASTREL_HOME=str(self.place / "root"), LC_ALL="C.UTF-8",
                                RASTREL_WARM="0")

    def make_pages(self, count, loops=0):
        files = []
        for number in range(count):
            file = self.place / f"page{number}.eps"
            file.write_text(PAGE.format(width=20 + number, loops=loops))
            files.append(str(file))
        return files

    def run_command(self, *arguments, status=0):
        done = subprocess.run([COMMAND, *arguments], env=self.environment, capture_output=True,
                              text=True, timeout=WAIT, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def start(self, *arguments):
        return subprocess.Popen([COMMAND, *arguments], env=self.environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def await_records(self, count):
        limit = time.monotonic() + WAIT
        while len(list(self.results.glob(".rastrel-batch/piece-*.json"))) < count:
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)

    def content(self, directory):
        return {path.name: path.read_bytes() for path in directory.iterdir()}

    def test_the_results_are_those_of_the_command_in_the_order_of_the_files(self):
        files = self.make_pages(7)
        expected = self.place / "expected"
        expected.mkdir()
        self.run_command("convert", *files, "-o", f"{expected}/")
        done = self.run_command("batch", "convert", *files, "-o", str(self.results), "--jobs", "3")
        self.assertEqual(self.content(self.results), self.content(expected))
        names = [pathlib.Path(line).name for line in done.stdout.splitlines()]
        self.assertEqual(names, [f"page{number}.png" for number in range(7)])
        self.assertIn("7 of 7 files are done", done.stderr)

    def test_pages_are_measured_as_pagesize_does(self):
        files = self.make_pages(5)
        expected = self.run_command("pagesize", "--json", *files).stdout
        done = self.run_command("batch", "pagesize", "--json", *files, "-o", str(self.results))
        lines = done.stdout.splitlines(keepends=True)
        self.assertEqual("".join(lines[:-1]), expected)
        self.assertEqual(json.loads(lines[-1]), {"event": "summary", "files": 5, "done": 5,
                                                 "failed": 0, "earlier": 0})
        self.assertEqual(self.content(self.results), {})

    def test_a_standard_error_that_is_no_terminal_gets_no_control_sequence(self):
        done = self.run_command("batch", "pagesize", *self.make_pages(2), "-o", str(self.results))
        self.assertEqual(done.stderr, "2 of 2 files are done\n")

    def test_many_files_have_one_line_of_progress_where_no_terminal_is(self):
        done = self.run_command("batch", "pagesize", *self.make_pages(30), "-o", str(self.results))
        self.assertEqual(done.stderr, "30 of 30 files are done\n")

    def test_a_file_that_fails_is_told_and_the_rest_goes_on(self):
        files = self.make_pages(5)
        pathlib.Path(files[2]).write_text("no PostScript\n")
        done = self.run_command("batch", "convert", *files, "-o", str(self.results), status=3)
        self.assertEqual(sorted(self.content(self.results)),
                         ["page0.png", "page1.png", "page3.png", "page4.png"])
        self.assertIn("page2.eps", done.stderr)
        self.assertIn("4 of 5 files are done, 1 failed", done.stderr)

    def test_results_that_are_there_stay_unless_they_may_be_replaced(self):
        files = self.make_pages(2)
        self.results.mkdir()
        (self.results / "page1.png").write_text("mine")
        self.run_command("batch", "convert", *files, "-o", str(self.results), status=1)
        self.assertEqual(self.content(self.results), {"page1.png": b"mine"})
        self.run_command("batch", "convert", *files, "-o", str(self.results), "--force")
        self.assertEqual(self.content(self.results)["page1.png"][:4], b"\x89PNG")

    def test_files_of_one_name_are_refused(self):
        files = self.make_pages(1)
        other = self.place / "other"
        other.mkdir()
        (other / "page0.eps").write_text(PAGE.format(width=30, loops=0))
        done = self.run_command("batch", "convert", *files, str(other / "page0.eps"), "-o",
                                str(self.results), status=2)
        self.assertIn("would both become", done.stderr)

    def test_a_killed_batch_goes_on_and_does_nothing_twice(self):
        files = self.make_pages(6, loops=3_000_000)
        arguments = ("batch", "convert", *files, "-o", str(self.results), "--jobs", "1")
        killed = self.start(*arguments)
        self.await_records(2)
        killed.kill()
        killed.communicate(timeout=WAIT)
        refused = self.run_command(*arguments, status=1)
        self.assertIn("--resume", refused.stderr)
        done_before = {path: path.stat().st_mtime_ns for path in self.results.glob("page[01].png")}
        self.assertEqual(len(done_before), 2)
        done = self.run_command(*arguments, "--resume")
        self.assertEqual(len(done.stdout.splitlines()), 6)
        self.assertEqual(sorted(self.content(self.results)), [f"page{n}.png" for n in range(6)])
        for path, changed in done_before.items():
            self.assertEqual(path.stat().st_mtime_ns, changed, path)
        self.assertRegex(done.stderr, r"6 of 6 files are done; [2-5] of an earlier run")

    def test_a_signal_ends_it_with_all_its_programs_and_it_goes_on(self):
        files = self.make_pages(4, loops=20_000_000)
        arguments = ("batch", "convert", *files, "-o", str(self.results), "--jobs", "2")
        batch = self.start(*arguments)
        limit = time.monotonic() + WAIT
        while len(below(batch.pid)) < 4:
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        programs = below(batch.pid)
        batch.send_signal(signal.SIGINT)
        _, text = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, 4, text)
        self.assertIn("--resume", text)
        while any(state_of(process) not in ("", "Z") for process in programs):
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        for file in files:
            pathlib.Path(file).write_text(PAGE.format(width=20, loops=0))
        self.run_command(*arguments, "--resume")
        self.assertEqual(len(self.content(self.results)), 4)

    def test_a_piece_that_is_killed_is_done_again(self):
        files = self.make_pages(3, loops=10_000_000)
        batch = self.start("batch", "convert", *files, "-o", str(self.results), "--jobs", "1")
        limit = time.monotonic() + WAIT
        pieces = []
        while not pieces:
            self.assertLess(time.monotonic(), limit)
            for process in below(batch.pid):
                try:
                    words = pathlib.Path(f"/proc/{process}/cmdline").read_bytes().split(b"\0")
                except OSError:
                    continue
                if b":batch-piece" in words:
                    pieces.append(process)
        os.kill(pieces[0], signal.SIGKILL)
        _, text = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, 0, text)
        self.assertEqual(len(self.content(self.results)), 3)

    def test_a_file_whose_run_dies_each_time_has_failed_and_the_rest_goes_on(self):
        files = self.make_pages(3)
        pathlib.Path(files[1]).write_text(PAGE.format(width=20, loops=2_000_000_000))
        batch = self.start("batch", "convert", *files, "-o", str(self.results), "--jobs", "1")
        limit = time.monotonic() + WAIT
        killed = set()
        while batch.poll() is None:
            self.assertLess(time.monotonic(), limit)
            for process in below(batch.pid):
                try:
                    words = pathlib.Path(f"/proc/{process}/cmdline").read_bytes().split(b"\0")
                except OSError:
                    continue
                if words[1:2] == [b"convert"] and files[1].encode() in words:
                    os.kill(process, signal.SIGKILL)
                    killed.add(process)
            time.sleep(0.01)
        _, text = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, 1, text)
        # A run may have forked before it is killed, so that there are more processes than runs.
        self.assertGreaterEqual(len(killed), 3, text)
        self.assertRegex(text, r"page1\.eps: its run was ended by signal 9, 3 times")
        self.assertEqual(sorted(self.content(self.results)), ["page0.png", "page2.png"])

    def test_standard_input_and_no_directory_are_refused(self):
        files = self.make_pages(1)
        self.assertIn("-o DIR", self.run_command("batch", "convert", *files, status=2).stderr)
        self.assertIn("standard input", self.run_command(
            "batch", "convert", "-", "-o", str(self.results), status=2).stderr)

    def test_seconds_of_a_piece_reach_from_1_to_3600(self):
        files = self.make_pages(1)
        for seconds, status in (("0", 2), ("1", 0), ("3600", 0), ("3601", 2)):
            self.run_command("batch", "pagesize", *files, "-o", str(self.results),
                             "--piece-seconds", seconds, status=status)


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
