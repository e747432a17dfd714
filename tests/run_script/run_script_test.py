"""Runs `./run` in a copy of the checkout, with played package and build tools.

Each played tool writes its name and arguments to a log; what is installed is a list that the test
makes.

usage: run_script_test.py ROOT
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else pathlib.Path.cwd()
REAL_TOOLS = ("bash", "env", "dirname", "basename", "nproc", "awk", "sort", "comm", "cat", "mkdir",
              "flock", "touch", "rm", "find", "xargs", "grep", "tail")

TOOLS = {
    "dpkg-query": 'while read -r name; do echo "installed $name"; done <"$PLAY/installed"',
    "id": 'echo "${PLAY_ID:-0}"',
    "sudo": 'echo "sudo" >>"$PLAY/log"; exec "$@"',
    # Knows no package before `update` if the test says so; `install` makes its packages installed.
    "apt-get": '''case "$*" in
*--print-uris*) echo "'http://mirror/a.deb' a.deb 2500000 SHA256:0"; exit 0 ;;
*-s*--no-install-recommends*) [ ! -e "$PLAY/lists-are-empty" ]; exit ;;
esac
echo "apt-get $*" >>"$PLAY/log"
case "$*" in
*update) rm -f "$PLAY/lists-are-empty"; [ ! -e "$PLAY/no-network" ] ;;
*install*) [ ! -e "$PLAY/no-network" ] && cat "$PLAY/wanted" >>"$PLAY/installed" ;;
esac''',
    "cmake": 'echo "cmake $*" >>"$PLAY/log"; while [ "$1" != -B ]; do shift; done; '
             'mkdir -p "$2"; touch "$2/build.ninja"',
    "ninja": 'echo "ninja $*" >>"$PLAY/log"; mkdir -p "$2/bin"; '
             'printf \'#!/bin/sh\\nprintf "[%%s]" "$@"; pwd\\n\' >"$2/bin/rastrel"; '
             'chmod +x "$2/bin/rastrel"',
    "python3": 'echo rastrel/rastrel.h; echo rastrel/job/a.h',
    "doxygen": 'cat >"$PLAY/doxyfile"; [ ! -e "$PLAY/faulty" ]',
    "ctest": 'echo "ctest $*" >>"$PLAY/log"; echo "100% tests passed"',
}


class RunScript(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-run-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.checkout = self.place / "a checkout"
        (self.checkout / "packaging").mkdir(parents=True)
        shutil.copy(ROOT / "run", self.checkout)
        shutil.copy(ROOT / "packaging" / "debian-packages.txt", self.checkout / "packaging")
        shutil.copy(ROOT / "CMakePresets.json", self.checkout)
        self.tools = self.place / "tools"
        self.tools.mkdir()
        for name in REAL_TOOLS:
            (self.tools / name).symlink_to(shutil.which(name))
        (self.tools / "chmod").symlink_to(shutil.which("chmod"))
        (self.tools / "sh").symlink_to(shutil.which("sh"))
        for name, body in TOOLS.items():
            (self.tools / name).write_text(f"#!/bin/sh\n{body}\n", encoding="utf-8")
            (self.tools / name).chmod(0o755)
        self.install("build", "cut", "host", "run", "serve", "test")
        (self.place / "wanted").write_text("", encoding="utf-8")

    def packages(self, *groups):
        lines = (ROOT / "packaging" / "debian-packages.txt").read_text(encoding="utf-8").splitlines()
        words = [line.split() for line in lines if line and not line.startswith("#")]
        return {word[1] for word in words if word[0] in groups}

    def install(self, *groups, without=()):
        names = sorted(self.packages(*groups) - set(without))
        (self.place / "installed").write_text("\n".join(names) + "\n", encoding="utf-8")
        (self.place / "wanted").write_text("\n".join(without) + "\n", encoding="utf-8")

    def run_script(self, *arguments, user="0", **variables):
        environment = {"PATH": str(self.tools), "PLAY": str(self.place), "PLAY_ID": user,
                       "HOME": str(self.place), **variables}
        (self.place / "elsewhere").mkdir(exist_ok=True)
        return subprocess.run([str(self.checkout / "run"), *arguments], env=environment, text=True,
                              cwd=self.place / "elsewhere", capture_output=True, check=False)

    def log(self):
        path = self.place / "log"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else []

    def test_help_needs_nothing(self):
        for verb in ([], ["help"], ["--help"]):
            ended = self.run_script(*verb)
            self.assertEqual(ended.returncode, 0)
            self.assertIn("usage: ./run VERB", ended.stdout)
        self.assertEqual(self.log(), [])

    def test_docs_reads_the_public_headers_and_the_documents(self):
        self.install("docs")
        (self.checkout / "docs").mkdir()
        (self.checkout / "docs" / "Doxyfile").write_text("QUIET = YES\n", encoding="utf-8")
        (self.checkout / "docs" / "one.md").write_text("", encoding="utf-8")
        ended = self.run_script("docs")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        settings = (self.place / "doxyfile").read_text(encoding="utf-8").splitlines()
        for line in ("QUIET = YES", f'INPUT += "{self.checkout}/rastrel/job/a.h"',
                     f'INPUT += "{self.checkout}/README.md"',
                     f'INPUT += "{self.checkout}/docs/one.md"',
                     f'OUTPUT_DIRECTORY = "{self.checkout}/build/docs"'):
            self.assertIn(line, settings)
        self.assertIn(f"{self.checkout}/build/docs/html/index.html", ended.stderr)

    def test_docs_fails_with_the_program_and_without_its_settings(self):
        self.install("docs")
        self.assertEqual(self.run_script("docs").returncode, 1)
        (self.checkout / "docs").mkdir()
        (self.checkout / "docs" / "Doxyfile").write_text("QUIET = YES\n", encoding="utf-8")
        self.assertEqual(self.run_script("docs").returncode, 0)
        (self.place / "faulty").write_text("", encoding="utf-8")
        self.assertEqual(self.run_script("docs").returncode, 1)

    def test_a_verb_that_is_none_is_wrong_use(self):
        ended = self.run_script("bogus")
        self.assertEqual(ended.returncode, 2)
        self.assertIn("there is no verb 'bogus'", ended.stderr)

    def test_with_all_packages_there_apt_get_is_not_called_and_nothing_is_said_of_it(self):
        ended = self.run_script("test")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertNotIn("package", ended.stderr)
        self.assertFalse([line for line in self.log() if line.startswith("apt-get")])

    def test_missing_packages_are_named_and_installed_and_no_others(self):
        self.install("build", "cut", "run", "serve", without=["ghostscript"])
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertIn("needed and not installed: ghostscript\n", ended.stderr)
        self.assertIn("1 packages with their dependencies, 2 MB to fetch", ended.stderr)
        calls = [line for line in self.log() if line.startswith("apt-get")]
        self.assertEqual(len(calls), 1)
        self.assertTrue(calls[0].endswith("install -y --no-install-recommends ghostscript"))
        self.assertNotIn("sudo", self.log())

    def test_printing_does_not_ask_for_what_only_tests_need(self):
        self.install("build", "cut", "run", "serve")
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertNotIn("not installed", ended.stderr)

    def test_who_is_not_root_installs_through_sudo_and_is_told_so(self):
        self.install("build", "cut", "run", "serve", without=["cmake"])
        ended = self.run_script("print", "x.ps", user="1000")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertIn("through sudo", ended.stderr)
        self.assertEqual(self.log()[0], "sudo")

    def test_without_root_and_sudo_the_packages_are_listed(self):
        self.install("build", "cut", "run", "serve", without=["cmake"])
        (self.tools / "sudo").unlink()
        ended = self.run_script("print", "x.ps", user="1000")
        self.assertEqual(ended.returncode, 1)
        self.assertIn("As root: apt-get install cmake", ended.stderr)
        self.assertEqual(self.log(), [])

    def test_empty_package_lists_are_fetched_first(self):
        self.install("build", "cut", "run", "serve", without=["cmake"])
        (self.place / "lists-are-empty").touch()
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        calls = [line.split()[-1] for line in self.log() if line.startswith("apt-get")]
        self.assertEqual(calls, ["update", "cmake"])

    def test_without_a_network_it_stops_and_says_so(self):
        self.install("build", "cut", "run", "serve", without=["cmake"])
        (self.place / "no-network").touch()
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 1)
        self.assertIn("is there a network?", ended.stderr)
        self.assertFalse([line for line in self.log() if line.startswith("ninja")])

    def test_on_another_system_the_packages_are_listed(self):
        (self.tools / "apt-get").unlink()
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 1)
        self.assertIn("no Debian system", ended.stderr)
        for name in self.packages("build", "run"):
            self.assertIn(name, ended.stderr)

    def test_arguments_pass_through_as_they_are_in_the_callers_directory(self):
        ended = self.run_script("print", "my sign.ps", "--printer", "a  b", "")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertEqual(ended.stdout,
                         f"[print][my sign.ps][--printer][a  b][]{self.place / 'elsewhere'}\n")

    def test_the_tests_summary_is_the_last_thing_printed(self):
        ended = self.run_script("test", "-R", "Some name")
        self.assertEqual(ended.stdout, "100% tests passed\n")
        self.assertTrue(self.log()[-1].endswith(" -R Some name"))

    def play(self, tool, text, status=0):
        (self.place / f"{tool}.text").write_text(text, encoding="utf-8")
        (self.tools / tool).write_text(f'#!/bin/sh\ncat "$PLAY/{tool}.text"\nexit {status}\n',
                                       encoding="utf-8")

    def test_building_and_testing_say_how_far_they_are_at_each_twentieth(self):
        self.play("ninja", "[0/2] Re-checking globbed directories...\n[1/2] Re-running CMake...\n"
                  "-- Configuring done\n" + "".join(f"[{n}/200] Building {n}.o\n" for n in range(1, 201)))
        self.play("ctest", "".join(f"        Start {n:2}: suite.case\n {n:2}/40 Test {'#' + str(n):>4}: "
                                   "suite.case ....   Passed    0.01 sec\n" for n in range(1, 41)) +
                  "\n100% tests passed, 0 tests failed out of 40\n")
        ended = self.run_script("test")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        said = [line for line in ended.stderr.splitlines() if " % " in line]
        building = [line for line in said if "building" in line]
        self.assertEqual(building[0], "run: 0 % building, 1 of 200: Building 1.o")
        self.assertEqual(building[1], "run: 5 % building, 10 of 200: Building 10.o")
        self.assertEqual(building[-1], "run: 100 % building, 200 of 200: Building 200.o")
        self.assertEqual(len(building), 21)
        testing = [line for line in said if "testing" in line]
        self.assertEqual(testing, ["run: 2 % testing, 1 of 40"] +
                         [f"run: {5 * step} % testing, {2 * step} of 40" for step in range(1, 21)])
        self.assertIn("-- Configuring done", ended.stderr)
        self.assertEqual(ended.stdout, "\n100% tests passed, 0 tests failed out of 40\n")

    def test_all_that_a_failing_build_says_is_shown(self):
        failing = "FAILED: b.o \nc++ -c b.cpp\nb.cpp:1: error: x\n[1/2] in the output of a command\n"
        self.play("ninja", f"[1/2] Building a.o\n[2/2] Building b.o\n{failing}"
                  "ninja: build stopped: subcommand failed.\n", status=1)
        ended = self.run_script("test")
        self.assertEqual(ended.returncode, 1)
        self.assertIn(failing, ended.stderr)
        self.assertIn("ninja: build stopped: subcommand failed.\n", ended.stderr)
        self.assertFalse([line for line in self.log() if line.startswith("ctest")])

    def test_failing_and_skipped_tests_are_shown_whole_and_the_status_is_theirs(self):
        passed = "1/3 Test #7: a.passes .......   Passed    0.01 sec"
        failed = ("2/3 Test #8: a.fails ........***Failed    0.01 sec\n"
                  "1/3 Test #7: in the test's output .. Passed  0 sec\nexpected 1, was 2\n\n")
        skipped = "3/3 Test #9: a.is_skipped ...***Skipped   0.00 sec\n"
        summary = "\n50% tests passed, 1 tests failed out of 3\n"
        self.play("ctest", f"    Start 7: a.passes\n{passed}\n{failed}{skipped}{summary}", status=8)
        ended = self.run_script("test")
        self.assertEqual(ended.returncode, 8)
        self.assertEqual(ended.stdout, failed + skipped + summary)
        self.assertIn("run: 66 % testing, 2 of 3, 1 failed\n", ended.stderr)
        self.assertIn("run: 100 % testing, 3 of 3, 1 failed\n", ended.stderr)

    def test_on_a_terminal_progress_is_one_line_that_is_gone_in_the_end(self):
        self.play("ninja", "[1/2] Building a.o\n[2/2] Building " + "b" * 200 + "\n")
        screen, terminal = os.openpty()
        environment = {"PATH": str(self.tools), "PLAY": str(self.place), "HOME": str(self.place)}
        ended = subprocess.run([str(self.checkout / "run"), "build"], env=environment, stderr=terminal,
                               stdout=subprocess.PIPE, check=False)
        os.close(terminal)
        shown = b""
        try:
            while piece := os.read(screen, 65536):
                shown += piece
        except OSError:  # the end of what was on the terminal
            pass
        os.close(screen)
        shown = shown.decode()
        self.assertEqual(ended.returncode, 0, shown)
        clear = "\r\033[K"
        long_line = "run: 100 % building, 2 of 2: Building " + "b" * 200
        self.assertTrue(shown.endswith(f"{clear}run: 50 % building, 1 of 2: Building a.o"
                                       f"{clear}{long_line[:79]}{clear}"), shown)

    def test_packages_come_with_a_percentage(self):
        self.install("build", "cut", "run", "serve", without=["ghostscript"])
        played = TOOLS["apt-get"].replace("*install*) ", "*install*) echo Unpacking; "
                                          "echo dlstatus:1:9.5:Fetching; echo pmstatus:gs:50.00:Preparing; ")
        (self.tools / "apt-get").write_text(f"#!/bin/sh\n{played}\n", encoding="utf-8")
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertIn("run: 9 % packages: Fetching\nrun: 50 % packages: Preparing\n", ended.stderr)
        self.assertIn("Unpacking\n", ended.stderr)

    def test_half_as_many_tests_again_run_at_once_as_there_are_processors(self):
        (self.tools / "nproc").unlink()
        (self.tools / "nproc").write_text("#!/bin/sh\necho $PLAY_PROCESSORS\n", encoding="utf-8")
        (self.tools / "nproc").chmod(0o755)
        for processors, at_once in ((1, 2), (2, 3), (3, 5), (8, 12)):
            self.run_script("test", PLAY_PROCESSORS=str(processors))
            self.assertTrue(self.log()[-1].endswith(f" -j {at_once}"), self.log()[-1])

    def test_another_build_tree_is_used_where_one_is_given(self):
        tree = self.place / "my tree"
        ended = self.run_script("print", "x.ps", RASTREL_BUILD_TREE=str(tree))
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertTrue((tree / "bin" / "rastrel").exists())
        self.assertFalse((self.checkout / "build").exists())

    def test_what_fails_to_build_does_not_print(self):
        (self.tools / "ninja").write_text("#!/bin/sh\nexit 1\n", encoding="utf-8")
        ended = self.run_script("print", "x.ps")
        self.assertEqual(ended.returncode, 1)
        self.assertIn("the build failed", ended.stderr)
        self.assertEqual(ended.stdout, "")

    def test_clean_removes_what_was_built_and_nothing_else(self):
        self.run_script("print", "x.ps")
        self.assertTrue((self.checkout / "build").exists())
        self.assertEqual(self.run_script("clean").returncode, 0)
        self.assertFalse((self.checkout / "build").exists())
        self.assertTrue((self.checkout / "run").exists())


if __name__ == "__main__":
    unittest.main()
