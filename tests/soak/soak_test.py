"""The logic of `./run soak`: each check notices the fault that it is there for."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import inputs
import jobs
import processes
import remains

ROOTS = 3
PLACE = "/inputs/"


class Jobs(unittest.TestCase):
    def test_a_number_is_the_same_job_in_each_run_of_a_seed(self):
        first = [jobs.job(4, number, PLACE, ROOTS) for number in range(200)]
        self.assertEqual(first, [jobs.job(4, number, PLACE, ROOTS) for number in range(200)])
        self.assertNotEqual(first, [jobs.job(5, number, PLACE, ROOTS) for number in range(200)])

    def test_a_short_run_has_every_kind(self):
        kinds = {jobs.job(1, number, PLACE, ROOTS).kind for number in range(len(jobs.KINDS))}
        self.assertEqual(kinds, set(jobs.KINDS))

    def test_all_signals_and_all_roots_come(self):
        some = [jobs.job(1, number, PLACE, ROOTS) for number in range(500)]
        self.assertEqual({job.ending for job in some}, {None, *jobs.SIGNALS})
        self.assertEqual({job.root for job in some}, set(range(ROOTS)))

    def test_an_endless_job_always_gets_a_signal(self):
        some = [jobs.job(1, number, PLACE, ROOTS) for number in range(2000)]
        endless = [job for job in some if job.kind == "print endless"]
        self.assertTrue(endless)
        self.assertTrue(all(job.ending for job in endless))

    def test_files_that_jobs_name_are_made(self):
        with tempfile.TemporaryDirectory() as place:
            folder = pathlib.Path(place) / "inputs"
            inputs.make(folder, pathlib.Path(__file__).resolve().parents[2])
            for number in range(500):
                job = jobs.job(1, number, f"{folder}/", ROOTS)
                for word in job.plan.options:
                    if word.startswith(f"{folder}/") and "missing." not in word:
                        self.assertTrue(pathlib.Path(word).exists(), word)

    def plan(self, ending, good=frozenset({0})):
        return jobs.Job(0, "print", jobs.Plan([], good, 1, True), 0, ending, 0.1)

    def test_only_a_signal_excuses_its_status(self):
        self.assertEqual(jobs.allowed(self.plan(None)), {0})
        self.assertEqual(jobs.allowed(self.plan(signal.SIGINT)), {0, 4, -2})
        self.assertEqual(jobs.allowed(self.plan(signal.SIGKILL)), {0, -9})
        self.assertEqual(jobs.allowed(self.plan(signal.SIGTERM, frozenset())), {4, -15})

    def test_outcomes(self):
        for ending, status, wanted in ((None, 0, "done"), (None, 3, "failed"),
                                       (signal.SIGINT, 4, "aborted"), (signal.SIGTERM, -15, "aborted"),
                                       (signal.SIGKILL, -9, "killed"), (signal.SIGINT, 0, "done")):
            self.assertEqual(jobs.outcome(self.plan(ending), status), wanted)

    def test_the_offsets_of_the_small_pdf_are_right(self):
        data = inputs.pdf()
        table = int(data.rsplit(b"startxref\n", 1)[1].split()[0])
        self.assertTrue(data[table:].startswith(b"xref\n0 5\n"))
        for number, line in enumerate(data[table:].splitlines()[3:7], 1):
            self.assertTrue(data[int(line.split()[0]):].startswith(b"%d 0 obj" % number))


class Files(unittest.TestCase):
    TABLE = "# comment\n\nroot  jobs/*  1  killed+failed  working copies\n"

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        (self.place / "jobs").mkdir()
        (self.place / "settings").touch()
        self.remains = remains.Remains(remains.read_table(self.TABLE))
        self.remains.remember("root", self.place)

    def faults(self, **ended):
        self.remains.compare()
        self.remains.judge(ended)
        return self.remains.faults

    def test_nothing_left_is_no_fault(self):
        self.assertEqual(self.faults(), [])
        self.assertEqual(len(self.remains.unseen()), 1)

    def test_a_file_that_the_table_does_not_know_is_a_fault_and_names_its_job(self):
        self.remains.makers[71] = "12 (print)"
        (self.place / "trace-71").touch()
        self.assertEqual(self.faults(),
                         [f"root: {self.place}/trace-71 was left, of job 12 (print)"])

    def test_a_directory_that_was_left_shows_its_content_and_no_job_by_its_digits(self):
        self.remains.makers[2240] = "7 (print)"
        run = self.place / "9a2240b"
        (run / "p0001").mkdir(parents=True)
        self.assertEqual(self.faults(), [f"root: {run}/ was left with p0001/"])
        (run / ".owner").write_text("71 8812 0ef1\n")
        self.remains.faults.clear()
        self.assertEqual(self.faults(), [f"root: {run}/ was left with .owner, p0001/, of process 71"])
        (run / "p0001").rmdir()
        (run / ".owner").unlink()
        self.remains.faults.clear()
        self.assertEqual(self.faults(), [f"root: {run}/ was left empty"])

    def test_a_directory_that_somebody_still_writes_in_is_removed(self):
        directory = self.place / "job"
        directory.mkdir()
        writing = threading.Event()

        def write():
            for number in range(200):
                try:
                    (directory / str(number)).touch()
                except FileNotFoundError:
                    pass  # removed already
                writing.set()

        writer = threading.Thread(target=write)
        writer.start()
        writing.wait()
        remains.remove(directory, 60)
        writer.join()
        self.assertFalse(directory.exists())

    def test_a_file_that_was_there_and_is_gone_is_a_fault(self):
        (self.place / "settings").unlink()
        self.assertEqual(self.faults(), [f"root: {self.place}/settings is gone"])

    def test_known_ones_are_counted_as_one_with_what_is_in_them(self):
        for number in (1, 2):
            (self.place / "jobs" / f"{number}-1").mkdir()
            (self.place / "jobs" / f"{number}-1" / "sign.ps").touch()
        self.assertEqual(self.faults(killed=1, failed=1), [])
        self.assertEqual(list(self.remains.counted.values()), [2])
        self.assertEqual(self.remains.unseen(), [])

    def test_more_than_the_table_allows_is_a_fault(self):
        for number in (1, 2, 3):
            (self.place / "jobs" / f"{number}-1").mkdir()
        self.assertEqual(len(self.faults(killed=1, failed=1)), 1)

    def test_another_place_is_not_excused(self):
        with tempfile.TemporaryDirectory() as other:
            self.remains.remember("temporary", other)
            (pathlib.Path(other) / "jobs").mkdir()
            self.assertEqual(len(self.faults()), 1)

    def test_a_line_of_the_table_that_is_none_is_refused(self):
        for line in ("root jobs/* 1 sometimes reason", "root jobs/* 1 killed"):
            with self.assertRaises(ValueError):
                remains.read_table(line)

    def test_the_table_can_be_read(self):
        text = (pathlib.Path(__file__).parent / "leftovers.txt").read_text(encoding="utf-8")
        self.assertTrue(remains.read_table(text))


class Holdings(unittest.TestCase):
    def samples(self, count=40, resident=lambda jobs: 8 << 20, descriptors=5, threads=1, children=0):
        return [(20 * i, 5, 1, resident(20 * i), 0) for i in range(1, count)] + [
            (20 * count, descriptors, threads, resident(20 * count), children)]

    def test_what_stays_the_same_is_no_fault(self):
        self.assertEqual(remains.holdings_faults(self.samples()), [])

    def test_a_descriptor_a_thread_or_a_child_more_is_a_fault(self):
        for other in ({"descriptors": 6}, {"threads": 2}, {"children": 1}):
            self.assertEqual(len(remains.holdings_faults(self.samples(**other))), 1)

    def test_memory_that_grows_with_the_jobs_is_a_fault(self):
        grows = self.samples(count=400, resident=lambda number: (8 << 20) + 2000 * number)
        self.assertEqual(len(remains.holdings_faults(grows)), 1)

    def test_memory_that_grew_at_first_or_goes_up_and_down_is_none(self):
        first = self.samples(count=400, resident=lambda number: (8 << 20) + 4000 * min(number, 2000))
        self.assertEqual(remains.holdings_faults(first), [])
        waves = self.samples(count=400, resident=lambda number: (8 << 20) + (number % 100) * 20000)
        self.assertEqual(remains.holdings_faults(waves), [])

    def test_no_sample_is_a_fault(self):
        self.assertEqual(len(remains.holdings_faults([])), 1)

    def test_the_slope_of_a_line(self):
        self.assertAlmostEqual(remains.slope([(1, 5), (2, 7), (4, 11)]), 2)


class Processes(unittest.TestCase):
    """On orphans of its own, which this process adopts."""

    def setUp(self):
        processes.adopt()

    def leave(self, watch, seconds):
        """Starts a job that leaves a process behind in a session of its own; its end was awaited."""
        script = f"setsid sleep {seconds} & exec true"
        environment = dict(os.environ, **{processes.MARK: "77"})
        process = watch.start(lambda: subprocess.Popen(["sh", "-c", script], env=environment))
        process.wait()
        watch.ended(process)

    def test_a_process_that_stays_is_reported_with_its_job_and_ended(self):
        watch = processes.Watch(grace=0.4)
        self.leave(watch, 600)
        watch.finish()
        self.assertEqual(len(watch.left), 1)
        self.assertIn("of job 77: sleep 600", watch.left[0])
        time.sleep(0.2)
        self.assertEqual(watch.look(), set())

    def test_one_that_ends_within_the_grace_is_none(self):
        watch = processes.Watch(grace=20)
        self.leave(watch, 0.3)
        watch.finish()
        self.assertEqual(watch.left, [])

    def test_a_running_job_is_none(self):
        watch = processes.Watch(grace=0.2)
        process = watch.start(lambda: subprocess.Popen(["sleep", "1"]))
        time.sleep(0.6)
        self.assertEqual(watch.look(), set())
        self.assertEqual(watch.left, [])
        process.wait()
        watch.ended(process)
        watch.finish()
        self.assertEqual(watch.left, [])

    def test_descendants_are_found_at_any_depth(self):
        process = subprocess.Popen(["sh", "-c", "sh -c 'sleep 5; true'; true"])
        end = time.monotonic() + 5
        while len(processes.descendants(process.pid)) < 2 and time.monotonic() < end:
            time.sleep(0.02)
        found = processes.descendants(process.pid)
        self.assertEqual(len(found), 2)
        processes.end_all({process.pid} | found)
        process.wait()


class WholeRuns(unittest.TestCase):
    """Of one job by a played command, so that what is reported is known."""

    def run_one(self, kind, body):
        number = list(jobs.KINDS).index(kind)
        seed = next(seed for seed in range(100)
                    if jobs.job(seed, number, PLACE, ROOTS).ending is None)
        with tempfile.TemporaryDirectory() as place:
            command = pathlib.Path(place) / "rastrel"
            command.write_text(f"#!/bin/sh\n[ $1 = {jobs.job(seed, number, PLACE, ROOTS).plan.options[0]} ]"
                               f" || exit 0\n{body}\n", encoding="utf-8")
            command.chmod(0o755)
            here = pathlib.Path(__file__).resolve().parent
            return subprocess.run(
                [sys.executable, "-B", str(here / "soak.py"), "--command", str(command), "--client",
                 str(command), "--root", str(here.parents[1]), "--only", str(number), "--seed",
                 str(seed), "--time-limit", "2", "--quiet"],
                text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def expect(self, ended, fault):
        self.assertEqual(ended.returncode, 1, ended.stdout)
        self.assertIn(fault, ended.stdout)
        self.assertIn(": 1 faults", ended.stdout)

    def test_a_job_that_leaves_nothing_is_none(self):
        ended = self.run_one("sheet", "exit 0")
        self.assertEqual(ended.returncode, 0, ended.stdout)

    def test_a_file_that_is_left(self):
        self.expect(self.run_one("sheet", 'touch "$TMPDIR/trace"'), "trace was left")

    def test_a_file_beside_the_input(self):
        self.expect(self.run_one("prefix", 'touch "$2.trace"'), ".trace was left")

    def test_a_crash(self):
        self.expect(self.run_one("sheet", "kill -SEGV $$"), "crashed by signal 11")

    def test_a_status_that_the_job_can_not_have(self):
        self.expect(self.run_one("sheet", "exit 7"), "status 7, not one of [0]")

    def test_a_job_that_waits_for_ever(self):
        self.expect(self.run_one("sheet", "sleep 600"), "has not ended after 2 s")


if __name__ == "__main__":
    unittest.main()
