"""Checks of the state after the jobs: files by a table of known ones, memory by its slope."""

import collections
import fnmatch
import os
import pathlib
import re
import shutil
import time

# A line of leftovers.txt: at most `factor` for each of the ways `per`.
Known = collections.namedtuple("Known", "place pattern factor per reason")
WAYS = {"killed", "aborted", "failed", "kept", "job", "at-once"}

SLOPE_LIMIT = 1024  # bytes a job
RISE_LIMIT = 4 << 20  # bytes; less is the allocator's own
FEWEST_SAMPLES = 10


def read_table(text):
    """The lines of the table; raises ValueError with a line that is none."""
    table = []
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        fields = line.split(None, 4)
        if len(fields) != 5 or not set(fields[3].split("+")) <= WAYS:
            raise ValueError(f"no line of the table: {line}")
        table.append(Known(fields[0], fields[1], float(fields[2]), fields[3], fields[4]))
    return table


def entries(place):
    """All paths below a directory, relative to it; directories end with a slash."""
    place = pathlib.Path(place)
    return {path.relative_to(place).as_posix() + ("/" if path.is_dir() and not path.is_symlink()
                                                  else "") for path in place.rglob("*")}


def top_entries(added):
    """Without those that lie in a directory that was added as well."""
    return {name for name in added
            if not any(other != name and other.endswith("/") and name.startswith(other)
                       for other in added)}


def remove(directory, limit):
    """Removes a job's directory. The guardian of a killed job may still be clearing away in it."""
    end = time.monotonic() + limit
    while True:
        try:
            shutil.rmtree(directory)
            return
        except OSError:
            if time.monotonic() > end:
                raise
            time.sleep(0.05)


def contents(path):
    """The names in a directory that was left, for the report."""
    if not path.is_dir():
        return ""
    names = sorted(entries(path))
    owner = path / ".owner"
    of = f", of process {owner.read_text().split()[0]}" if owner.is_file() else ""
    if of.endswith(f" {os.getpid()}"):
        of += ", this one"  # it adopts the children of killed jobs
    return f" with {', '.join(names[:12])}{of}" if names else " empty"


class Remains:
    """Compares places before and after."""

    def __init__(self, table):
        self.table = table
        self.before = {}
        self.makers = {}  # of files that bear a process number: which job that was
        self.counted = collections.Counter()
        self.faults = []

    def remember(self, place, directory):
        self.before.setdefault(place, {})[directory] = entries(directory)

    def compare(self):
        """Counts new files by lines of the table; one that no line knows is a fault."""
        for place, directories in self.before.items():
            for directory, before in directories.items():
                for name in sorted(top_entries(entries(directory) - before)):
                    self._count(place, directory, name)
                for name in sorted(before - entries(directory)):
                    self.faults.append(f"{place}: {directory}/{name} is gone")

    def _count(self, place, directory, name):
        for known in self.table:
            if known.place == place and fnmatch.fnmatchcase(name.rstrip("/"), known.pattern):
                self.counted[known] += 1
                return
        # Whole words: the name of a run's directory is 32 hexadecimal digits.
        numbers = [int(number) for number in re.findall(r"(?<![0-9a-z])\d+(?![0-9a-z])", name)]
        of = [f", of job {self.makers[number]}" for number in numbers if number in self.makers]
        self.faults.append(f"{place}: {directory}/{name} was left{''.join(of)}"
                           f"{contents(pathlib.Path(directory, name))}")

    def judge(self, ended):
        """Adds a fault for each line of which there are more than it allows. `ended`: how many jobs
        ended in each of the ways."""
        for known, count in self.counted.items():
            limit = known.factor * sum(ended.get(way, 0) for way in known.per.split("+"))
            if count > limit:
                self.faults.append(f"{count} times {known.place} {known.pattern}, more than "
                                   f"{limit:g} ({known.factor:g} for each {known.per})")

    def unseen(self):
        return [known for known in self.table if known not in self.counted]


def slope(points):
    """Least squares: how much y grows with x. `points`: at least two with different x."""
    n = len(points)
    mean_x = sum(x for x, _ in points) / n
    mean_y = sum(y for _, y in points) / n
    spread = sum((x - mean_x) ** 2 for x, _ in points)
    return sum((x - mean_x) * (y - mean_y) for x, y in points) / spread


def holdings_faults(samples):
    """`samples`: (jobs, descriptors, threads, resident bytes, children), each taken while nothing ran;
    the first half is the warm-up of the memory."""
    if not samples:
        return ["the long-lived process reported no holdings"]
    faults = []
    first, last = samples[0], samples[-1]
    for index, name in ((1, "descriptors"), (2, "threads")):
        if last[index] != first[index]:
            faults.append(f"{name}: {first[index]} at first, {last[index]} at last")
    if any(sample[4] for sample in samples):
        faults.append("children were there between two rounds")
    half = samples[len(samples) // 2:]
    if len(half) >= FEWEST_SAMPLES:
        points = [(sample[0], sample[3]) for sample in half]
        grows = slope(points)
        if grows > SLOPE_LIMIT and grows * (points[-1][0] - points[0][0]) > RISE_LIMIT:
            faults.append(f"memory: grows by {grows:.0f} bytes a job")
    return faults
