"""The exit statuses of `rastrel convert` and `rastrel cut` for a machine that takes no file.

usage: conversion_statuses_test.py RASTREL_DOCUMENT
"""

import os
import resource
import signal
import subprocess
import unittest

from convert_test import ART, HEAD, PROGRAM, SECONDS, Case, knife

NOT_PREPARED = 7
NOT_WRITTEN = 10
COMMANDS = (("convert", "o.png"), ("cut", "o.dxf"))


def limit_files_to(size):
    """For a child: a write beyond that size fails, as on a full disk; pipes take theirs."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class Statuses(Case):
    def setUp(self):
        super().setUp()
        # Larger than all that the interpreter makes of it.
        padding = ("% " + 97 * "x" + "\n") * 5000
        self.art = self.file("art.ps", HEAD + ART + knife() + "showpage\n" + padding)
        self.knife = ("--cut-color", "spot:Knife")

    def test_a_working_copy_that_can_not_be_written(self):
        self.succeed("convert", self.art, "-o", "o.png")  # lays the data root out
        (self.folder / "o.png").unlink()
        # A copy has room, and the job header in front of it has none.
        size = self.art.stat().st_size
        for command, result in COMMANDS:
            with self.subTest(command):
                self.fail_with(NOT_PREPARED, "can't be made ready", command, self.art, *self.knife,
                               "-o", result, preexec_fn=lambda: limit_files_to(size))
                self.assertFalse((self.folder / result).exists())

    def test_a_result_that_the_disk_does_not_take(self):
        for command, result in COMMANDS:
            with self.subTest(command):
                os.symlink("/dev/full", self.folder / result)
                self.fail_with(NOT_WRITTEN, result, command, self.art, *self.knife, "-o", result)

    def test_standard_output_that_takes_no_bytes(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([PROGRAM, "convert", self.art, "-o", "-"], cwd=self.folder,
                                  stdout=full, stderr=subprocess.PIPE, timeout=SECONDS, check=False,
                                  env=self.surroundings)
        self.assertEqual(done.returncode, NOT_WRITTEN)
        self.assertIn(b"standard output could not be written", done.stderr)
        self.assert_nothing_left()


if __name__ == "__main__":
    unittest.main()
