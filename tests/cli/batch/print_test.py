#!/usr/bin/env python3
"""Runs `rastrel batch print`: its files are those of `rastrel print`, here and by the programs that stand for a cluster's.

usage: print_test.py RASTREL"""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = ""
WAIT = 120  # seconds, for whatever is waited for
PAGE = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: {pages}
%%EndComments
{body}
%%EOF
"""
DEVICES = """
[Proofs]
kind = file
format = png
pattern = {output}/{job}-{page}.png

[Program]
kind = command
format = png
command = /bin/true

[Elsewhere]
kind = file
format = png
pattern = /srv/{job}-{page}.png

[Same]
kind = file
format = png
pattern = {output}/{page}.png
"""


class Print(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel print ü ", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.results = self.place / "many"
        self.cluster = self.place / "cluster"
        self.cluster.mkdir()
        tools = self.place / "tools"
        tools.mkdir()
        for name in ("sbatch", "squeue", "scancel"):
            shutil.copy(pathlib.Path(__file__).parent / "fake_slurm.py", tools / name)
            (tools / name).chmod(0o755)
        self.environment = dict(os.environ, RASTREL_HOME=str(self.place / "root"), LC_ALL="C.UTF-8", RASTREL_WARM="0",
                                FAKE_SLURM=str(self.cluster), PATH=f"{tools}:{os.environ['PATH']}",
                                PYTHONDONTWRITEBYTECODE="1")
        self.run_command("printers")
        with open(self.place / "root/devices.txt", "a", encoding="utf-8") as devices:
            devices.write(DEVICES)

    def make_files(self, count, pages=2, loops=0):
        names = []
        for number in range(count):
            body = [f"%%Page: {page} {page}\n{loops} {{ 1 pop }} repeat {number / 10} setgray 2 {page} 20 20 rectfill showpage"
                    for page in range(1, pages + 1)]
            name = f"sign {number}.ps"
            (self.place / name).write_text(PAGE.format(pages=pages, body="\n".join(body)))
            names.append(name)
        return names

    def start(self, *arguments, fault=""):
        return subprocess.Popen([COMMAND, *arguments], env=dict(self.environment, FAKE_SLURM_FAULT=fault), text=True,
                                cwd=self.place, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run_command(self, *arguments, status=0, fault=""):
        process = self.start(*arguments, fault=fault)
        out, error = process.communicate(timeout=WAIT)
        self.assertEqual(process.returncode, status, error)
        return out, error

    def content(self, directory):
        return {path.name: path.read_bytes() for path in (self.place / directory).iterdir()}

    def check_same(self, files, *options, batch=(), status=0, fault=""):
        self.run_command("print", *files, "--output", "plain", *options, status=status)
        done = self.run_command("batch", "print", *files, "-o", "many", *options, *batch, status=status, fault=fault)
        self.assertEqual(self.content("many"), self.content("plain"))
        return done

    def test_files_and_names_are_those_of_the_command(self):
        _, error = self.check_same(self.make_files(4), "--printer", "Proofs", "--mode", "RGB/300 dpi.ps")
        self.assertEqual(sorted(self.content("many")), [f"sign {n}-{page}.png" for n in range(4) for page in (1, 2)])
        self.assertEqual(error, "4 of 4 files are done\n")

    def test_copies_have_the_names_that_the_command_gives_them(self):
        self.check_same(self.make_files(2, pages=1), "--copies", "2")
        self.assertEqual(len(self.content("many")), 4)

    def test_a_file_that_fails_is_told_and_the_others_are_there(self):
        files = self.make_files(3, pages=1)
        (self.place / files[1]).write_text("no PostScript\n")
        process = self.start("batch", "print", *files, "-o", "many", "--printer", "Proofs")
        _, error = process.communicate(timeout=WAIT)
        self.assertNotEqual(process.returncode, 0)
        self.assertEqual(error.splitlines()[0], "printing: sign 1.ps")
        self.assertEqual(sorted(self.content("many")), ["sign 0-1.png", "sign 2-1.png"])

    def test_a_cluster_prints_the_same(self):
        self.check_same(self.make_files(5, pages=1), "--printer", "Proofs",
                        batch=("--on", "slurm", "--licenses", "printer1:1"), fault="kill")
        self.assertEqual(len(list(self.cluster.glob("array-*"))), 2)

    def test_lines_name_the_files_where_they_are(self):
        out, _ = self.run_command("batch", "print", *self.make_files(1), "-o", "many", "--json")
        self.assertIn(f"{self.results}/sign 0-1.tif", out)
        self.assertNotIn("staged-", out)
        self.assertEqual(json.loads(out.splitlines()[0]),
                         {"event": "job", "originator": "system", "text": "printing", "path": "sign 0.ps"})

    def test_a_run_that_was_killed_leaves_no_page_twice(self):
        files = self.make_files(1, pages=3, loops=8_000_000)
        batch = self.start("batch", "print", *files, "-o", "many", "--printer", "Proofs")
        limit = time.monotonic() + WAIT
        run = None
        while run is None:
            self.assertIsNone(batch.poll(), "it ended before its run could be killed")
            self.assertLess(time.monotonic(), limit)
            if list(self.results.glob(".rastrel-batch/staged-0-*/*.png")):
                run = self.run_of(batch.pid)
            time.sleep(0.005)
        os.kill(run, signal.SIGKILL)
        _, error = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, 0, error)
        self.assertEqual(sorted(self.content("many")), [f"sign 0-{page}.png" for page in (1, 2, 3)])

    def run_of(self, batch):
        """The process that prints: the batch's child's child."""
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                words = (entry / "cmdline").read_bytes().split(b"\0")
                here = os.readlink(entry / "cwd") == str(self.place)
            except OSError:
                continue
            if here and words[1:2] == [b"print"] and any(b"staged-0-" in word for word in words):
                return int(entry.name)
        self.fail(f"the batch {batch} has no run")

    def test_a_killed_batch_goes_on(self):
        files = self.make_files(4, pages=1, loops=3_000_000)
        arguments = ("batch", "print", *files, "-o", "many", "--printer", "Proofs", "--jobs", "1")
        batch = self.start(*arguments)
        limit = time.monotonic() + WAIT
        while not list(self.results.glob(".rastrel-batch/piece-*.json")):
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        batch.kill()
        batch.communicate(timeout=WAIT)
        _, error = self.run_command(*arguments, "--resume")
        self.assertRegex(error, r"4 of 4 files are done; [1-3] of an earlier run")
        self.assertEqual(sorted(self.content("many")), [f"sign {n}-1.png" for n in range(4)])

    def test_a_file_that_is_there_stays_unless_it_may_be_replaced(self):
        files = self.make_files(2, pages=1)
        self.results.mkdir()
        (self.results / "sign 0-1.png").write_text("mine")
        _, error = self.run_command("batch", "print", *files, "-o", "many", "--printer", "Proofs", status=1)
        self.assertIn("sign 0-1.png", error)
        self.assertEqual(self.content("many")["sign 0-1.png"], b"mine")
        self.assertIn("sign 1-1.png", self.content("many"))
        self.run_command("batch", "print", *files, "-o", "many", "--printer", "Proofs", "--force")
        self.assertEqual(self.content("many")["sign 0-1.png"][:4], b"\x89PNG")

    def test_printers_that_can_not_take_several_at_once_are_refused(self):
        files = self.make_files(1)
        for printer, why in (("Program", "gives its pages to a program"), ("Elsewhere", "has to begin with {output}"),
                             ("Same", "has no {job}"), ("Nobody", "there is no printer 'Nobody'")):
            _, error = self.run_command("batch", "print", *files, "-o", "many", "--printer", printer, status=2)
            self.assertIn(why, error)
            self.assertFalse(self.results.exists())


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
