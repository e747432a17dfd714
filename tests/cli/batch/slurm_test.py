#!/usr/bin/env python3
"""Runs `rastrel batch --on slurm` with programs that stand for a cluster's: results, faults, signals.

usage: slurm_test.py RASTREL"""

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
PAGE = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 0 0 {width} 20
{loops} {{ 1 pop }} repeat
0.5 setgray 0 0 10 10 rectfill showpage
%%EOF
"""


class OnSlurm(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel batch %j ü ", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.results = self.place / "results"
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

    def make_pages(self, count, loops=0):
        files = []
        for number in range(count):
            file = self.place / f"page $HOME 'ä' {number}.eps"
            file.write_text(PAGE.format(width=20 + number, loops=loops))
            files.append(file.name)
        return files

    def start(self, *arguments, fault=""):
        return subprocess.Popen([COMMAND, "batch", *arguments], env=dict(self.environment, FAKE_SLURM_FAULT=fault),
                                text=True, cwd=self.place, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run_batch(self, *arguments, status=0, fault=""):
        batch = self.start(*arguments, fault=fault)
        out, error = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, status, error)
        return out, error

    def content(self, directory):
        return {path.name: path.read_bytes() for path in directory.iterdir()}

    def arrays(self):
        return [json.loads(path.read_text()) for path in sorted(self.cluster.glob("array-*"))]

    def check_same(self, files, status=0, fault=""):
        """The same as on this machine, to each byte, line and status."""
        expected = self.run_batch("convert", *files, "-o", "results", status=status)
        pictures = self.content(self.results)
        shutil.rmtree(self.results)
        self.assertEqual(self.run_batch("convert", *files, "-o", "results", "--on", "slurm", status=status, fault=fault),
                         expected)
        self.assertEqual(self.content(self.results), pictures)

    def test_results_lines_and_status_are_those_of_this_machine(self):
        files = self.make_pages(9)
        (self.place / files[2]).write_text("no PostScript\n")
        self.check_same(files, status=3)
        self.assertEqual([array["options"]["--array"] for array in self.arrays()], ["0-3", "0-0"])

    def test_a_task_that_is_killed_is_done_again(self):
        self.check_same(self.make_pages(5), fault="kill")
        self.assertEqual(len(self.arrays()), 2)

    def test_results_count_where_the_controller_forgets_its_tasks(self):
        self.check_same(self.make_pages(5), fault="forget")

    def test_a_file_whose_task_dies_each_time_has_failed(self):
        _, error = self.run_batch("convert", *self.make_pages(1), "-o", "results", "--on", "slurm", status=1,
                                  fault="kill-all")
        self.assertIn("0.eps: its work ended 3 times without a result: its task ended as FAILED, by signal 9", error)
        self.assertEqual(len(self.arrays()), 3)
        self.assertEqual(self.content(self.results), {})

    def test_wishes_go_to_the_cluster_as_they_are(self):
        wishes = {"--partition": "big ones", "--account": "-x $HOME", "--licenses": "cutter1:1,printer1:1"}
        self.run_batch("pagesize", *self.make_pages(1), "-o", "results", "--on", "slurm", "--time-limit", "1:00:00",
                       "--jobs", "3", *[f"{name}={value}" for name, value in wishes.items()])
        options = self.arrays()[0]["options"]
        self.assertEqual({name: options[name] for name in wishes}, wishes)
        self.assertEqual(options["--time"], "1:00:00")
        self.assertEqual(options["--array"], "0-0%3")

    def test_a_refusal_is_told_and_leaves_no_record(self):
        _, error = self.run_batch("pagesize", *self.make_pages(1), "-o", "results", "--on", "slurm", status=1,
                                  fault="refuse")
        self.assertIn("Invalid partition name specified", error)
        self.assertEqual(self.content(self.results), {})

    def test_a_folder_that_is_not_shared_is_named(self):
        _, error = self.run_batch("pagesize", *self.make_pages(2), "-o", "results", "--on", "slurm", status=1,
                                  fault="unshared")
        self.assertIn("does not see", error)
        self.assertIn("results/.rastrel-batch", error)

    def test_a_machine_without_the_program_is_told(self):
        _, error = self.run_batch("pagesize", *self.make_pages(2), "-o", "results", "--on", "slurm", status=5,
                                  fault="missing")
        self.assertIn("a machine of the cluster can't run", error)

    def test_without_its_programs_nothing_begins(self):
        self.environment["PATH"] = str(self.cluster)
        _, error = self.run_batch("pagesize", *self.make_pages(1), "-o", "results", "--on", "slurm", status=5)
        self.assertIn("there is no program 'sbatch' on the path", error)
        self.assertFalse(self.results.exists())

    def test_wishes_without_a_cluster_are_refused(self):
        _, error = self.run_batch("pagesize", *self.make_pages(1), "-o", "results", "--partition", "a", status=2)
        self.assertIn("--partition is for --on slurm", error)
        _, error = self.run_batch("pagesize", "a.ps", "-o", "results", "--on", "slurm", "--partition", "", status=2)
        self.assertIn("--partition is empty", error)

    def test_a_signal_ends_the_array_and_the_batch_goes_on(self):
        files = self.make_pages(5)
        batch = self.start("convert", *files, "-o", "results", "--on", "slurm", fault="wait")
        limit = time.monotonic() + WAIT
        while not self.arrays():
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        batch.send_signal(signal.SIGINT)
        _, error = batch.communicate(timeout=WAIT)
        self.assertEqual(batch.returncode, 4, error)
        self.assertIn("--resume", error)
        self.assertTrue((self.cluster / "cancelled-1").exists())
        self.run_batch("convert", *files, "-o", "results", "--on", "slurm", "--resume")
        self.assertEqual(len(self.content(self.results)), 5)

    def test_a_batch_that_was_killed_ends_its_old_array_when_it_goes_on(self):
        files = self.make_pages(5)
        batch = self.start("convert", *files, "-o", "results", "--on", "slurm", fault="wait")
        limit = time.monotonic() + WAIT
        while not self.arrays():
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        batch.kill()
        batch.communicate(timeout=WAIT)
        self.assertFalse((self.cluster / "cancelled-1").exists())
        self.run_batch("convert", *files, "-o", "results", "--on", "slurm", "--resume")
        self.assertTrue((self.cluster / "cancelled-1").exists())
        self.assertEqual(len(self.content(self.results)), 5)

    def leave_an_array(self, files):
        batch = self.start("convert", *files, "-o", "results", "--on", "slurm", fault="wait")
        limit = time.monotonic() + WAIT
        while not self.arrays():
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        batch.kill()
        batch.communicate(timeout=WAIT)
        return self.arrays()[0]["options"]["--job-name"]

    def test_a_batch_that_goes_on_here_ends_the_array_that_it_left(self):
        files = self.make_pages(5)
        self.leave_an_array(files)
        self.run_batch("convert", *files, "-o", "results", "--on", "local", "--resume")
        self.assertTrue((self.cluster / "cancelled-1").exists())
        self.assertEqual(len(self.content(self.results)), 5)

    def test_without_the_programs_that_end_an_array_the_command_that_does_is_told(self):
        files = self.make_pages(2)
        name = self.leave_an_array(files)
        path = self.environment["PATH"]
        self.environment["PATH"] = str(self.cluster)
        _, error = self.run_batch("convert", *files, "-o", "results", "--resume", status=5)
        self.assertIn(f"scancel --name={name}", error)
        self.assertTrue((self.results / f".rastrel-batch/array-{name}.json").exists())
        self.assertEqual(list(self.results.glob("*.png")), [])
        self.environment["PATH"] = path
        self.run_batch("convert", *files, "-o", "results", "--resume")
        self.assertEqual(len(self.content(self.results)), 2)


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
