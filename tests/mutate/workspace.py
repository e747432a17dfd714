"""The copy of the checkout in which sources are changed, and its build tree.

The copy lies in build/mutate and is laid out like the checkout, its tree included, so that the
compiler's cache serves both. The user's sources are read only.
"""

import os
import pathlib
import shutil
import subprocess

import switches

BUILD_LIMIT = 1800  # seconds for what one change makes necessary
# One change at a time compiles one source; many at once compile nearly all, which is quicker joined.
ONE_BY_ONE, AT_ONCE = "separate", "dev"


def files_of(root):
    """The files of a checkout that git would keep, as they are now; without git, all but build
    trees."""
    listed = subprocess.run(["git", "-C", str(root), "ls-files", "-z", "--cached", "--others",
                             "--exclude-standard"], capture_output=True, check=False)
    if listed.returncode == 0:
        names = [name for name in listed.stdout.decode().split("\0") if name]
    else:
        names = [path.relative_to(root).as_posix() for path in pathlib.Path(root).rglob("*")
                 if not path.relative_to(root).parts[0].startswith(("build", ".git"))]
    return sorted(name for name in set(names)
                  if (root / name).is_file() or (root / name).is_symlink())


def synchronize(root, copy):
    """Makes the copy hold what the checkout holds. What is the same stays untouched, so that it is
    not built again; a change that an interrupted run left is undone by this."""
    wanted = files_of(root)
    kept = set(wanted)
    for name in wanted:
        source, target = root / name, copy / name
        if source.is_symlink():
            if not target.is_symlink() or os.readlink(target) != os.readlink(source):
                target.parent.mkdir(parents=True, exist_ok=True)
                target.unlink(missing_ok=True)
                target.symlink_to(os.readlink(source))
            continue
        if target.is_file() and target.read_bytes() == source.read_bytes():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        target.unlink(missing_ok=True)
        shutil.copyfile(source, target)
        shutil.copymode(source, target)
    for path in sorted(copy.rglob("*"), reverse=True):
        name = path.relative_to(copy).as_posix()
        if name.startswith("build/") or name == "build" or path.is_dir() and not path.is_symlink():
            continue
        if name not in kept:
            path.unlink()


class Workspace:
    def __init__(self, root, jobs, preset=ONE_BY_ONE):
        self.root = pathlib.Path(root).resolve()
        self.copy = self.root / "build" / "mutate"
        self.preset = preset
        self.tree = self.copy / "build" / preset
        self.switched = {}  # texts with switches, by file
        self.jobs = jobs
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(self.copy), CCACHE_NOHASHDIR="1")

    def prepare(self):
        self.copy.mkdir(parents=True, exist_ok=True)
        synchronize(self.root, self.copy)
        if not (self.tree / "build.ninja").exists():
            subprocess.run(["cmake", "--preset", self.preset], cwd=self.copy, env=self.environment,
                           check=True, stdout=subprocess.DEVNULL)

    def build(self, targets, *options):
        """(True, "") or (False, the compiler's messages)."""
        command = ["ninja", "-C", str(self.tree), "-j", str(self.jobs), *options, *targets]
        try:
            ended = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, text=True,
                                   stderr=subprocess.STDOUT, check=False, timeout=BUILD_LIMIT,
                                   errors="replace")
        except subprocess.TimeoutExpired:
            return False, f"not built after {BUILD_LIMIT} s"
        return ended.returncode == 0, "" if ended.returncode == 0 else ended.stdout

    def ninja_lists(self, *tool):
        listed = subprocess.run(["ninja", "-C", str(self.tree), "-t", *tool], text=True,
                                capture_output=True, check=True, env=self.environment)
        return listed.stdout.splitlines()

    def change(self, mutant):
        path = self.copy / mutant.file
        text = path.read_text(encoding="utf-8")
        path.write_text(text[:mutant.start] + mutant.replacement + text[mutant.end:],
                        encoding="utf-8")

    def restore(self, mutant):
        """The text before the change again, with a new time, so that it is built again."""
        if mutant.file in self.switched:
            (self.copy / mutant.file).write_text(self.switched[mutant.file], encoding="utf-8")
        else:
            shutil.copyfile(self.root / mutant.file, self.copy / mutant.file)

    def put_switches(self, texts):
        """Gives the sources of these texts their switches, and takes those of all others out."""
        header = switches.write_header(self.copy)
        before, self.switched = self.switched, {
            file: switches.with_header(text, header, self.copy / file) for file, text in texts.items()}
        for file in before.keys() - self.switched.keys():
            shutil.copyfile(self.root / file, self.copy / file)
        for file, text in self.switched.items():
            if before.get(file) != text:
                (self.copy / file).write_text(text, encoding="utf-8")
