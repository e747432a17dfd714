"""The completions for bash, as bash takes them: the script is sourced, and asked as bash asks it.

usage: completion_test.py RASTREL
"""
import os
import pathlib
import pty
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

RASTREL = pathlib.Path(sys.argv.pop(1)).resolve()
LIMIT = 240  # seconds until a shell that does not answer is given up
SKIPPED = 77
# compopt works only while bash completes.
ASK = """
compopt() { printf 'compopt %s\\n' "$*"; }
source <("$1" completion bash)
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_rastrel
for reply in "${COMPREPLY[@]}"; do printf '%s\\n' "$reply"; done
"""


class Completions(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-completion-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.environment = {**os.environ, "RASTREL_HOME": str(self.place / "home"),
                            "PATH": f"{RASTREL.parent}:{os.environ['PATH']}"}

    def offers(self, *words):
        """The lines that bash gets for these words after `rastrel`, the cursor at the end of the last."""
        done = subprocess.run(["bash", "--norc", "-c", ASK, "bash", RASTREL, "rastrel", *words],
                              capture_output=True, text=True, timeout=LIMIT, check=True,
                              env=self.environment)
        self.assertEqual(done.stderr, "")
        return done.stdout.splitlines()

    def help_of(self, *words):
        return subprocess.run([RASTREL, "help", *words], capture_output=True, text=True,
                              timeout=LIMIT, check=True, env=self.environment).stdout

    def test_every_command_of_the_help_is_offered_and_every_option_of_it(self):
        commands = [line.split()[0] for line in self.help_of().split("commands:\n")[1]
                    .split("\n\n")[0].splitlines() if line.startswith("  ") and line[2] != " "]
        self.assertGreater(len(commands), 25)
        self.assertEqual(sorted(self.offers("")), sorted({*commands, "--help", "--version"}))
        for command in sorted(set(commands) - {"batch", "chart", "jobs", "rules", "spool", "ticket", "users"}):
            options = [line.split()[0] for line in self.help_of(command).split("options:\n")[1]
                       .splitlines() if line.startswith("  --")]
            self.assertEqual(self.offers(command, "--"), options, command)

    def test_a_begun_word_is_completed(self):
        self.assertEqual(self.offers("pages"), ["pagesize"])
        self.assertEqual(self.offers("pre"), ["prefix", "preview"])
        self.assertEqual(self.offers("nothing"), [])

    def test_second_words_of_commands_are_offered_and_their_options(self):
        self.assertEqual(self.offers("ticket", ""), ["show", "hold", "release", "--help"])
        self.assertEqual(self.offers("spool", "re"), ["remove", "repair"])
        self.assertEqual(self.offers("spool", "repair", "--r"), ["--remove"])

    def test_values_are_offered_in_each_way_to_write_them(self):
        boxes = ["crop", "media", "trim", "bleed"]
        self.assertEqual(self.offers("print", "--box", ""), boxes)
        self.assertEqual(self.offers("print", "a.pdf", "--box", "m"), ["media"])
        self.assertEqual(self.offers("print", "--box", "="), boxes)
        self.assertEqual(self.offers("print", "--box", "=", "b"), ["bleed"])
        self.assertEqual(self.offers("import", "--format", "cr"), ["cro", "cr2"])
        self.assertEqual(self.offers("print", "--scale", ""), ["none"])
        self.assertEqual(self.offers("print", "--copies", ""), [])
        self.assertEqual(self.offers("help", "pages"), ["pagesize"])
        self.assertEqual(self.offers("completion", ""), ["bash"])

    def test_files_and_directories_are_left_to_the_shell(self):
        files = ["compopt -o default"]
        self.assertEqual(self.offers("print", ""), files)
        self.assertEqual(self.offers("print", "--json", "si"), files)
        self.assertEqual(self.offers("print", "--", "--b"), files, "no option comes after --")
        self.assertEqual(self.offers("preview", "-o", ""), files)
        self.assertEqual(self.offers("print", "--password-file", "=", "x"), files)
        self.assertEqual(self.offers("print", "--output", ""), ["compopt -o dirnames"])
        self.assertEqual(self.offers("batch", "convert", "-o", ""), ["compopt -o dirnames"])
        self.assertEqual(self.offers("printers", ""), [])

    def test_printers_and_modes_are_those_of_the_data_root_with_their_blanks_kept(self):
        self.assertEqual(self.offers("print", "--printer", "PNG"), [r"PNG\ files"])
        self.assertEqual(self.offers("print", "--printer", "'PNG f"), ["PNG files"])
        self.assertEqual(self.offers("print", "--printer", r"PNG\ f"), [r"PNG\ files"])
        devices = self.place / "home/devices.txt"
        devices.write_text(devices.read_text() +
                           "\n[Large one]\nkind = file\nformat = tiff\npattern = {output}/{job}.tif\n")
        offered = self.offers("print", "--printer", "")
        self.assertIn(r"Large\ one", offered)
        self.assertNotIn("*", offered)
        self.assertEqual(self.offers("print", "--mode", "RGB/3"), [r"RGB/300\ dpi.ps"])
        self.assertEqual(self.offers("spool", "show", ""), [])

    def test_bash_completes_a_line_that_is_typed(self):
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(self.place)
            os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"],
                       {**self.environment, "TERM": "dumb", "PS1": "ready> ", "INPUTRC": "/dev/null"})
        try:
            self.until(terminal, b"ready> ")
            os.write(terminal, f"source <('{RASTREL}' completion bash); echo sour''ced\n".encode())
            self.until(terminal, b"sourced")
            os.write(terminal, b"echo nothing; rastrel pagesi\t--box tri\t")
            self.until(terminal, b"rastrel pagesize --box trim ")
        finally:
            os.kill(process, 9)
            os.waitpid(process, 0)
            os.close(terminal)

    def until(self, terminal, text):
        """Reads from the terminal until the text has come."""
        seen = b""
        end = time.monotonic() + LIMIT
        while text not in seen:
            ready, _, _ = select.select([terminal], [], [], max(0, end - time.monotonic()))
            self.assertTrue(ready, f"{text} never came, but {seen}")
            seen += os.read(terminal, 4096)


if __name__ == "__main__":
    if shutil.which("bash") is None:
        print("bash is not installed")
        sys.exit(SKIPPED)
    unittest.main()
