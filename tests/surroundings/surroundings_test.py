"""Shows that surroundings.py changes what it says, and notices a test that fails or does not end."""

import os
import pathlib
import shutil
import sys
import tempfile
import unittest

import surroundings
from surroundings import ALL, Surroundings, Test

SCRIPT = "import os, sys; sys.exit(0 if eval(sys.argv[1]) else 1)"


# One that every user of the machine can reach.
PYTHON = shutil.which("python3", path="/usr/bin:/usr/local/bin:/bin") or sys.executable


def a_test(condition, **properties):
    return Test("x", [PYTHON, "-c", SCRIPT, condition],
                {"WORKING_DIRECTORY": os.getcwd(), **properties})


class Logic(unittest.TestCase):
    def failed(self, name, *tests):
        return surroundings.run_in(name, list(tests), 2)

    def test_each_of_the_surroundings_is_what_it_says(self):
        for name, condition in (
                ("german", "os.environ['LC_ALL'] == 'de_DE.UTF-8' and __import__('locale')"
                           ".setlocale(6, '') and __import__('locale').str(0.5) == '0,5'"),
                ("c", "os.environ['LC_ALL'] == 'C' and 'LANGUAGE' not in os.environ"),
                ("dumb", "os.environ['TERM'] == 'dumb'"), ("no-term", "'TERM' not in os.environ"),
                ("user", "os.geteuid() != 0"),
                ("path", "' ' in os.environ['TMPDIR'] and 'ü' in os.environ['HOME']")):
            if name == "german":
                try:
                    with tempfile.TemporaryDirectory() as folder:
                        surroundings.make_german(pathlib.Path(folder))
                except surroundings.Impossible:
                    continue
            self.assertEqual(self.failed(name, a_test(condition)), 0, name)

    def test_files_can_be_made_in_the_home_and_the_temporary_directory(self):
        writes = "all(open(os.path.join(os.environ[n], 'x'), 'w') for n in ('HOME', 'TMPDIR'))"
        for name in ALL:
            self.assertEqual(self.failed(name, a_test(writes)), 0, name)

    def test_a_test_that_fails_is_counted(self):
        self.assertEqual(self.failed("c", a_test("True"), a_test("False"), a_test("False")), 2)
        self.assertEqual(self.failed("c", a_test("False", WILL_FAIL=True)), 0)
        self.assertEqual(self.failed("c", a_test("False", SKIP_RETURN_CODE=1)), 0)

    def test_a_test_that_does_not_end_is_ended_and_counted(self):
        endless = a_test("__import__('time').sleep(600)", TIMEOUT=0.2)
        result = surroundings.run_one(endless, dict(os.environ), None)
        self.assertEqual(result.word, "failed")
        self.assertIn("it took more than 0.2 seconds", result.text)

    def test_a_tests_own_environment_counts_most(self):
        self.assertEqual(self.failed("dumb", a_test("os.environ['TERM'] == 'xterm'",
                                                    ENVIRONMENT=["TERM=xterm"])), 0)

    def test_surroundings_that_can_not_be_made_are_left_out_and_said(self):
        def refuse(_):
            raise surroundings.Impossible("no such thing")
        ALL["none"] = Surroundings("none", prepare=refuse)
        try:
            self.assertEqual(self.failed("none", a_test("False")), 0)
        finally:
            del ALL["none"]

    def test_a_sample_differs_between_surroundings_and_stays_the_same(self):
        tests = [a_test("True") for _ in range(200)]
        for number, test in enumerate(tests):
            test.name = f"cli.a.{number}"
        names = {name: [test.name for test in surroundings.sample_of(tests, name)] for name in ALL}
        self.assertEqual(names["c"], [test.name for test in surroundings.sample_of(tests, "c")])
        self.assertNotEqual(names["c"], names["dumb"])
        self.assertEqual(len(names["c"]), surroundings.SAMPLE_SIZE)


if __name__ == "__main__":
    unittest.main(verbosity=2)
