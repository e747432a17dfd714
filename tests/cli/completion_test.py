"""The completions of each shell, as that shell takes them: the script is sourced, and asked as the shell asks it.

usage: completion_test.py RASTREL Bash|Fish|Zsh
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
SKIPPED = 77
LIMIT = 240  # seconds until a shell that does not answer is given up
GROUPS = {"batch", "chart", "folder", "jobs", "rules", "spool", "ticket", "users"}
# compopt works only while bash completes.
ASK_BASH = """
compopt() { printf 'compopt %s\\n' "$*"; }
source <("$1" completion bash)
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_rastrel
for reply in "${COMPREPLY[@]}"; do printf '%s\\n' "$reply"; done
"""
# So do these builtins of zsh; here they print. Names and descriptions are apart at a colon.
ASK_ZSH = """
compdef() { : }
compset() { PREFIX=${PREFIX#*=} }
compadd() { local one; for one in "${(@P)2}"; do [[ $one == "$PREFIX"* ]] && print -r -- $one; done }
_files() { print -r -- _files "$@" }
_describe() { local one; for one in "${(@P)@[-1]}"; do [[ $one == "$PREFIX"* ]] && print -r -- ${one%%:*}; done; true }
source <("$1" completion zsh)
shift
words=("$@") CURRENT=$# PREFIX=${@[-1]}
_rastrel
true
"""
ASK_FISH = """
rastrel completion fish | source
complete -C "$argv"
"""


class Asked(unittest.TestCase):
    SHELL = ""

    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-completion-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.here = self.place / "here"
        (self.here / "folder").mkdir(parents=True)
        for name in ("sign.ps", "Sign two.PDF", "names.csv", "rules.toml", "note.txt"):
            (self.here / name).touch()
        self.environment = {**os.environ, "HOME": str(self.place),
                            "RASTREL_HOME": str(self.place / "home"),
                            "PATH": f"{RASTREL.parent}:{os.environ['PATH']}"}

    def ask(self, *command):
        done = subprocess.run(command, capture_output=True, text=True, timeout=LIMIT, check=True,
                              env=self.environment, cwd=self.here, stdin=subprocess.DEVNULL)
        self.assertEqual(done.stderr, "")
        return done.stdout.splitlines()

    def help_of(self, *words):
        return subprocess.run([RASTREL, "help", *words], capture_output=True, text=True,
                              timeout=LIMIT, check=True, env=self.environment).stdout

    def commands(self):
        """The first word of each command that the help has."""
        return {line.split()[0] for line in self.help_of().split("commands:\n")[1]
                .split("\n\n")[0].splitlines() if line.startswith("  ") and line[2] != " "}

    def options_of(self, *command):
        return [line.split()[0] for line in self.help_of(*command).split("options:\n")[1]
                .splitlines() if line.startswith("  --")]

    def types(self, terminal, text):
        os.write(terminal, text.encode())

    def until(self, terminal, text):
        """Reads from the terminal until the text has come."""
        seen = b""
        end = time.monotonic() + LIMIT
        while text.encode() not in seen:
            ready, _, _ = select.select([terminal], [], [], max(0, end - time.monotonic()))
            self.assertTrue(ready, f"{text} never came, but {seen}")
            seen += os.read(terminal, 4096)

    def typed_in(self, arguments, variables):
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(self.here)
            os.execvpe(arguments[0], arguments, {**self.environment, "TERM": "dumb", **variables})
        self.addCleanup(os.close, terminal)
        self.addCleanup(os.waitpid, process, 0)
        self.addCleanup(os.kill, process, 9)
        return terminal


class AllShells:
    """The offers of each shell, whatever its way to say so: `offers` sorts, and has no escapes."""

    def test_every_command_of_the_help_is_offered_and_every_option_of_it(self):
        commands = self.commands()
        self.assertGreater(len(commands), 25)
        self.assertLessEqual(commands, set(self.offers("")))
        self.assertEqual(set(self.offers("", "-")) | set(self.offers("")) | {"-h"},
                         commands | {"--help", "--version", "-h"})
        for command in sorted(commands - GROUPS):
            self.assertEqual(self.offers(command, "--"), sorted(self.options_of(command)), command)

    def test_second_words_are_offered_and_their_options(self):
        self.assertEqual([word for word in self.offers("ticket", "") if word[0] != "-"],
                         ["hold", "release", "show"])
        self.assertEqual(self.offers("jobs", "li"), ["list"])
        self.assertEqual(self.offers("users", "a"), ["add"])
        self.assertEqual(self.offers("batch", "con"), ["convert"])
        self.assertEqual(self.offers("spool", "repair", "--r"), ["--remove"])
        self.assertEqual(self.offers("batch", "convert", "--"),
                         sorted(self.options_of("batch", "convert")))

    def test_a_begun_word_is_completed(self):
        self.assertEqual(self.offers("pages"), ["pagesize"])
        self.assertEqual(self.offers("pre"), ["prefix", "preview"])
        self.assertEqual(self.offers("nothing"), [])
        self.assertEqual(self.offers("help", "pages"), ["pagesize"])

    def test_fixed_values_are_offered(self):
        self.assertEqual(self.offers("print", "--box", ""), ["bleed", "crop", "media", "trim"])
        self.assertEqual(self.offers("print", "a.pdf", "--box", "m"), ["media"])
        self.assertEqual(self.offers("import", "--format", "cr"), ["cr2", "cro"])
        self.assertEqual(self.offers("users", "role", "ada", "--role", ""),
                         ["manage", "print", "see"])
        self.assertEqual(self.offers("jobs", "list", "--sort", "pr"), ["priority"])
        self.assertEqual(self.offers("print", "--copies", ""), [])
        self.assertEqual(self.offers("completion", ""), ["bash", "fish", "zsh"])

    def test_printers_and_modes_are_those_of_the_data_root(self):
        self.assertEqual(self.offers("print", "--printer", "PNG"), ["PNG files"])
        self.assertEqual(self.offers("print", "--mode", "RGB/3"), ["RGB/300 dpi.ps"])
        self.assertNotIn("*", self.offers("print", "--printer", ""))
        self.assertEqual(self.offers("spool", "show", ""), [])


class Bash(Asked, AllShells):
    SHELL = "bash"

    def replies(self, *words):
        """The lines that bash gets for these arguments of `rastrel`, the cursor at the end of the last."""
        return self.ask("bash", "--norc", "-c", ASK_BASH, "bash", RASTREL, "rastrel", *words)

    def offers(self, *words):
        return sorted(line.replace("\\", "") for line in self.replies(*words)
                      if not line.startswith("compopt "))

    def test_values_are_offered_in_each_way_to_write_them(self):
        self.assertEqual(self.replies("print", "--box", "="), ["crop", "media", "trim", "bleed"])
        self.assertEqual(self.replies("print", "--box", "=", "b"), ["bleed"])
        self.assertEqual(self.replies("print", "--scale", ""), ["none"])

    def test_files_and_directories_are_left_to_the_shell(self):
        files = ["compopt -o default"]
        self.assertEqual(self.replies("import", ""), files)
        self.assertEqual(self.replies("import", "--json", "si"), files)
        self.assertEqual(self.replies("import", "--", "--b"), files, "no option comes after --")
        self.assertEqual(self.replies("preview", "-o", ""), files)
        self.assertEqual(self.replies("convert", "-o", ""), files)
        self.assertEqual(self.replies("print", "--password-file", "=", "x"), files)
        self.assertEqual(self.replies("print", "--output", ""), ["compopt -o dirnames"])
        self.assertEqual(self.replies("batch", "convert", "-o", ""), ["compopt -o dirnames"])
        self.assertEqual(self.replies("folder", "add", ""), ["compopt -o dirnames"])
        self.assertEqual(self.replies("printers", ""), [])

    def test_files_of_the_right_types_are_offered_and_all_if_there_are_none(self):
        own = "compopt -o default -o filenames"
        self.assertEqual(sorted(self.replies("print", "")),
                         ["Sign two.PDF", own, "folder", "sign.ps"])
        self.assertEqual(sorted(self.replies("merge", "--data", "")),
                         [own, "folder", "names.csv"])
        self.assertEqual(self.replies("print", "no"), [own])

    def test_blanks_of_names_are_kept(self):
        self.assertEqual(self.replies("print", "--printer", "PNG"), [r"PNG\ files"])
        self.assertEqual(self.replies("print", "--printer", "'PNG f"), ["PNG files"])
        self.assertEqual(self.replies("print", "--printer", r"PNG\ f"), [r"PNG\ files"])
        devices = self.place / "home/devices.txt"
        devices.write_text(devices.read_text() +
                           "\n[Large one]\nkind = file\nformat = tiff\npattern = {output}/{job}.tif\n")
        self.assertIn(r"Large\ one", self.replies("print", "--printer", ""))

    def test_a_line_that_is_typed_is_completed(self):
        terminal = self.typed_in(["bash", "--norc", "--noprofile", "-i"],
                                 {"PS1": "ready> ", "INPUTRC": "/dev/null"})
        self.until(terminal, "ready> ")
        self.types(terminal, f"source <('{RASTREL}' completion bash); echo sour''ced\n")
        self.until(terminal, "sourced")
        self.types(terminal, "echo nothing; rastrel pagesi\t--box tri\tSi\t")
        self.until(terminal, r"rastrel pagesize --box trim Sign\ two.PDF ")


class Zsh(Asked, AllShells):
    SHELL = "zsh"

    def offers(self, *words):
        return sorted(line for line in self.replies(*words) if not line.startswith("_files"))

    def replies(self, *words):
        return self.ask("zsh", "-f", "-c", ASK_ZSH, "zsh", RASTREL, "rastrel", *words)

    def test_values_are_offered_after_an_equals_sign(self):
        self.assertEqual(self.offers("print", "--box=m"), ["media"])

    def test_files_and_directories_are_left_to_the_shell(self):
        self.assertEqual(self.replies("import", ""), ["_files"])
        self.assertEqual(self.replies("import", "--", "--b"), ["_files"], "no option comes after --")
        self.assertEqual(self.replies("preview", "-o", ""), ["_files"])
        self.assertEqual(self.replies("print", "--output", ""), ["_files -/"])
        self.assertEqual(self.replies("merge", "--data", ""),
                         ["_files -g *.(#i)(csv|xlsx|ods|fods)"])
        self.assertEqual(self.replies("printers", ""), [])

    def test_a_line_that_is_typed_is_completed(self):
        terminal = self.typed_in(["zsh", "-f", "-i"], {"PS1": "ready> "})
        self.until(terminal, "ready> ")
        self.types(terminal, "unsetopt zle_bracketed_paste prompt_sp; autoload -Uz compinit; "
                             f"compinit -D -u; source <('{RASTREL}' completion zsh); echo sour''ced\n")
        self.until(terminal, "sourced")
        # Each line is run, so that its arguments are seen without the terminal's own marks.
        self.types(terminal, "rastrel() { print -r -- \"run:${(j:,:)@}\" }\n")
        for line, run in (("rastrel pagesi\t--box tri\tSi\t", "pagesize,--box,trim,Sign two.PDF"),
                          ("rastrel jobs lis\t--so\tprio\t", "jobs,list,--sort,priority"),
                          ("rastrel print --mode RGB/3\tsig\t",
                           "print,--mode,RGB/300 dpi.ps,sign.ps"),
                          ("rastrel merge --data=na\t", "merge,--data=names.csv"),
                          ("rastrel print no\t", "print,note.txt")):
            self.types(terminal, line + "\n")
            self.until(terminal, "run:" + run)

    def test_the_installed_file_is_the_function_itself(self):
        folder = self.place / "functions"
        folder.mkdir()
        (folder / "_rastrel").write_text(subprocess.run(
            [RASTREL, "completion", "zsh"], capture_output=True, text=True, timeout=LIMIT,
            check=True).stdout)
        terminal = self.typed_in(["zsh", "-f", "-i"], {"PS1": "ready> "})
        self.until(terminal, "ready> ")
        self.types(terminal, f"fpath=('{folder}' $fpath); autoload -Uz compinit; compinit -D -u; "
                             "rastrel() { print -r -- \"run:${(j:,:)@}\" }; echo rea''dy\n")
        self.until(terminal, "ready")
        self.types(terminal, "rastrel users rem\t\n")
        self.until(terminal, "run:users,remove")


class Fish(Asked, AllShells):
    SHELL = "fish"

    def offers(self, *words):
        line = "rastrel " + " ".join(words)
        return sorted(reply.split("\t")[0]
                      for reply in self.ask("fish", "--no-config", "-c", ASK_FISH, line))

    def test_values_are_offered_after_an_equals_sign(self):
        self.assertEqual(self.offers("print", "--box=m"), ["--box=media"])
        self.assertEqual(self.offers("merge", "--data="), ["--data=folder/", "--data=names.csv"])

    def test_files_and_directories_are_offered(self):
        every = ["Sign two.PDF", "folder/", "names.csv", "note.txt", "rules.toml", "sign.ps"]
        self.assertEqual(self.offers("import", ""), every)
        self.assertEqual(self.offers("preview", "-o", ""), every)
        self.assertEqual(self.offers("print", ""), ["Sign two.PDF", "folder/", "sign.ps"])
        self.assertEqual(self.offers("print", "no"), ["note.txt"])
        self.assertEqual(self.offers("print", "--output", ""), ["folder/"])
        self.assertEqual(self.offers("printers", ""), [])

    def test_commands_and_options_have_their_descriptions(self):
        lines = self.ask("fish", "--no-config", "-c", ASK_FISH, "rastrel jobs hol")
        self.assertEqual(lines, ["hold\tHold jobs: they wait until they are released."])


if __name__ == "__main__":
    shell = sys.argv[1].lower()
    if shutil.which(shell) is None:
        print(f"{shell} is not installed")
        sys.exit(SKIPPED)
    unittest.main()
