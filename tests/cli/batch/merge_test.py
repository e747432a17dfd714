#!/usr/bin/env python3
"""Runs `rastrel batch merge`: its pages are those of `rastrel merge`, here and by the programs that stand for a cluster's.

usage: merge_test.py RASTREL"""

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
# Twenty plates of these fit on a page, so 60 rows are three.
TEMPLATE = """<?xml version="1.0"?>
<ABB><ENGRAVINGTEMPLATE><PLATES/>
<PLATE><COLOR>Gold</COLOR><WIDTH>{width}</WIDTH><HEIGHT>3</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME>
<TEXT line="1" data="{{Name}}"><FONT name="DejaVuSans-Bold.ttf" size="0.3"/></TEXT></PLATE>
</ENGRAVINGTEMPLATE></ABB>
"""


class Merge(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel merge ü ", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.cluster = self.place / "cluster"
        self.cluster.mkdir()
        tools = self.place / "tools"
        tools.mkdir()
        for name in ("sbatch", "squeue", "scancel"):
            shutil.copy(pathlib.Path(__file__).parent / "fake_slurm.py", tools / name)
            (tools / name).chmod(0o755)
        self.tools = tools
        self.environment = dict(os.environ, RASTREL_HOME=str(self.place / "root"), LC_ALL="C.UTF-8", RASTREL_WARM="0",
                                FAKE_SLURM=str(self.cluster), PATH=f"{tools}:{os.environ['PATH']}",
                                PYTHONDONTWRITEBYTECODE="1")
        (self.place / "badge.xml").write_text(TEMPLATE.format(width="4"))
        self.write_table(60)

    def write_table(self, rows, wide=None):
        lines = [f"Name {row},{90 if row == wide else 4}" for row in range(2, rows + 2)]
        (self.place / "names.csv").write_text("\n".join(["Name,Width", *lines]) + "\n")

    def start(self, *arguments, fault=""):
        return subprocess.Popen([COMMAND, *arguments], env=dict(self.environment, FAKE_SLURM_FAULT=fault), text=True,
                                cwd=self.place, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run_command(self, *arguments, status=0, fault=""):
        process = self.start(*arguments, fault=fault)
        out, error = process.communicate(timeout=WAIT)
        self.assertEqual(process.returncode, status, error)
        return out, error

    def merge(self, output, *options, status=0, batch=(), fault=""):
        command = ("batch", "merge", *batch) if batch else ("merge",)
        return self.run_command(*command, "badge.xml", "--data", "names.csv", "-o", output, *options, status=status,
                                fault=fault)

    def content(self, directory):
        return {path.name: path.read_bytes() for path in (self.place / directory).iterdir()}

    def check_same(self, name, *options, status=0, batch=("--on", "local"), fault=""):
        (self.place / "plain").mkdir()
        lines, errors = self.merge(f"plain/{name}", *options, status=status)
        batch_lines, batch_errors = self.merge(f"many/{name}", *options, status=status, batch=batch, fault=fault)
        self.assertEqual(batch_lines, lines.replace("plain/", "many/"))
        self.assertEqual(self.content("many"), self.content("plain"))
        pages = len(self.content("plain"))
        self.assertEqual(batch_errors, errors + f"{pages} of {pages} pages are done\n")
        return pages

    def test_pictures_lines_and_names_of_60_rows_are_those_of_the_command(self):
        self.assertEqual(self.check_same("badge.png"), 3)

    def test_drawings_are_those_of_the_command(self):
        self.assertEqual(self.check_same("badge.svg"), 3)

    def test_one_page_has_the_name_that_was_given(self):
        self.write_table(3)
        self.assertEqual(self.check_same("badge.png", "--dpi", "30"), 1)
        self.assertEqual(list(self.content("many")), ["badge.png"])

    def test_a_row_in_the_middle_that_is_not_placed_is_told_and_the_others_are_there(self):
        (self.place / "badge.xml").write_text(TEMPLATE.format(width="{Width}"))
        self.write_table(60, wide=31)
        self.check_same("badge.png", status=1)

    def test_a_field_without_a_column_is_told_with_its_line_before_anything_is_made(self):
        (self.place / "badge.xml").write_text(TEMPLATE.format(width="{Missing}"))
        _, plain = self.merge("badge.png", status=3)
        _, many = self.merge("many/badge.png", status=3, batch=("--on", "local"))
        self.assertEqual(many, plain)
        self.assertIn("badge.xml:3", many)
        self.assertFalse((self.place / "many").exists())

    def test_a_cluster_makes_the_same(self):
        self.check_same("badge.png", batch=("--on", "slurm"))
        self.assertTrue(list(self.cluster.glob("array-*")))

    def test_a_killed_task_is_done_again(self):
        self.check_same("badge.png", batch=("--on", "slurm"), fault="kill")
        self.assertEqual(len(list(self.cluster.glob("array-*"))), 2)

    def test_json_has_the_rows_and_the_document_and_a_summary(self):
        (self.place / "plain").mkdir()
        lines, _ = self.merge("plain/badge.png", "--json")
        many, _ = self.merge("many/badge.png", "--json", batch=("--on", "local"))
        *same, last = many.splitlines()
        self.assertEqual(same, lines.replace("plain/", "many/").splitlines())
        self.assertEqual(json.loads(last), {"event": "summary", "files": 3, "done": 3, "failed": 0, "earlier": 0})

    def test_a_killed_batch_goes_on_with_the_pages_that_it_has_not(self):
        arguments = ("batch", "merge", "badge.xml", "--data", "names.csv", "-o", "many/badge.png", "--dpi", "300", "--jobs",
                     "1")
        batch = self.start(*arguments)
        limit = time.monotonic() + WAIT
        while not list(self.place.glob("many/.rastrel-batch/piece-0.json")):
            self.assertIsNone(batch.poll(), "it ended before it was killed")
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.005)
        batch.kill()
        batch.communicate(timeout=WAIT)
        first = self.place / "many/badge-1.png"
        changed = first.stat().st_mtime_ns
        _, error = self.run_command(*arguments, "--resume")
        self.assertRegex(error, r"^3 of 3 pages are done; [12] of an earlier run\n$")
        self.assertEqual(first.stat().st_mtime_ns, changed)
        (self.place / "plain").mkdir()
        self.merge("plain/badge.png", "--dpi", "300")
        self.assertEqual(self.content("many"), self.content("plain"))

    def test_a_signal_ends_it_and_it_goes_on(self):
        arguments = ("batch", "merge", "badge.xml", "--data", "names.csv", "-o", "many/badge.png", "--dpi", "300", "--jobs",
                     "1")
        batch = self.start(*arguments)
        limit = time.monotonic() + WAIT
        while not list(self.place.glob("many/.rastrel-batch/piece-0.json")):
            self.assertIsNone(batch.poll(), "it ended before the signal")
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.005)
        batch.send_signal(signal.SIGTERM)
        out, error = batch.communicate(timeout=WAIT)
        self.assertEqual((batch.returncode, out), (4, ""), error)
        self.assertIn("--resume", error)
        _, error = self.run_command(*arguments, "--resume")
        self.assertRegex(error, r"^3 of 3 pages are done; [12] of an earlier run\n$")
        self.assertEqual(len(self.content("many")), 3)

    def test_a_page_that_is_killed_is_done_again(self):
        batch = self.start("batch", "merge", "badge.xml", "--data", "names.csv", "-o", "many/badge.png", "--dpi", "300")
        limit = time.monotonic() + WAIT
        page = None
        while page is None:
            self.assertIsNone(batch.poll(), "it ended before a page could be killed")
            self.assertLess(time.monotonic(), limit)
            for entry in pathlib.Path("/proc").glob("[0-9]*"):
                try:
                    words = (entry / "cmdline").read_bytes().split(b"\0")
                    here = os.readlink(entry / "cwd") == str(self.place)
                except OSError:
                    continue
                if here and b":merge-page" in words and words[-2:] == [b"page 2", b""]:
                    page = int(entry.name)
        os.kill(page, signal.SIGKILL)
        _, error = batch.communicate(timeout=WAIT)
        self.assertEqual((batch.returncode, error), (0, "3 of 3 pages are done\n"))
        self.assertEqual(len(self.content("many")), 3)

    def test_another_table_does_not_go_on_with_the_pages_of_the_first(self):
        arguments = ("batch", "merge", "badge.xml", "--data", "names.csv", "-o", "many/badge.png", "--on", "slurm")
        batch = self.start(*arguments, fault="wait")
        limit = time.monotonic() + WAIT
        while not list(self.cluster.glob("array-*")):
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.01)
        batch.kill()
        batch.communicate(timeout=WAIT)
        self.write_table(59)
        _, error = self.run_command(*arguments, "--resume", status=1)
        self.assertIn("has other files or options", error)

    def test_pages_that_are_there_stay_unless_they_may_be_replaced(self):
        (self.place / "many").mkdir()
        (self.place / "many/badge-2.png").write_text("mine")
        _, error = self.merge("many/badge.png", status=2, batch=("--on", "local"))
        self.assertIn("many/badge-2.png", error)
        self.assertEqual(self.content("many"), {"badge-2.png": b"mine"})
        self.merge("many/badge.png", "--force", batch=("--on", "local"))
        self.assertEqual(self.content("many")["badge-2.png"][:4], b"\x89PNG")

    def test_one_file_of_all_pages_is_refused(self):
        for name in ("badge.pdf", "badge.rdoc"):
            _, error = self.merge(name, status=2, batch=("--on", "local"))
            self.assertIn("a file of each page", error)
        _, error = self.run_command("batch", "merge", "badge.xml", "--data", "names.csv", status=2)
        self.assertIn("-o FILE.png", error)


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
