"""Rules for the files after a run, however it ended.

A Tree is a slot's files, read into memory: paths relative to the slot, with the names that
differ from run to run made equal. A finding is a fault, in one line.
"""

import dataclasses
import os
import re

# Names that hold a process number or a random one.
CHANGING = (
    (re.compile(r"/Rastrel-\d+\.log$"), "/Rastrel-N.log"),
    (re.compile(r"/c-out/[0-9a-f]{32}"), "/c-out/RUN"),
    (re.compile(r"^home/jobs/[\d-]+"), "home/jobs/JOB"),
)
# Not results and nobody's property.
PASSED_OVER = re.compile(r"^(tmp/cache(/|$)|home/\.lock$|home/Queue/rip/Rastrel-N\.log$)")
# Working files may stay after a power cut: no one takes them for a result.
WORKING = re.compile(r"^(tmp/|home/jobs/|home/Queue/rip/System/c-out/|home/.*\.new$)|(^|/)\.[^/]*$"
                     r"|(^|/)\.rastrel-[^/]*\.tmp/")
SPOOL = "home/Queue/rip/CFM/"


def steady(path):
    """The path with its changing parts made equal."""
    for pattern, name in CHANGING:
        path = pattern.sub(name, path)
    return path


@dataclasses.dataclass
class Tree:
    files: dict  # path: bytes
    folders: set

    @staticmethod
    def read(slot):
        tree = Tree({}, set())
        for folder, folders, files in os.walk(slot):
            below = os.path.relpath(folder, slot)
            prefix = "" if below == "." else below + "/"
            tree.folders.update(steady(prefix + name) for name in folders)
            for name in files:
                path = steady(prefix + name)
                if PASSED_OVER.search(path):
                    continue
                full = os.path.join(folder, name)
                if os.path.islink(full):
                    tree.files[path] = os.readlink(full).encode()
                else:
                    with open(full, "rb") as file:
                        tree.files[path] = file.read()
        tree.folders = {path for path in tree.folders if not PASSED_OVER.search(path)}
        return tree


def content(path, data):
    """A file's content as it is compared: a page's record without the job's name, which has a
    number behind it where the name was taken."""
    if path.endswith("/.info"):
        return re.sub(rb"^job: .*\n", b"", data, flags=re.M)
    if path == "home/Queue/.installed":
        return re.sub(rb"^(\d+) \d+ ", rb"\1 TIME ", data, flags=re.M)
    return data


def place(path):
    """Where a file of another name would be the same result: its directory, without the spooled
    job's name, and its extension."""
    folder, name = os.path.split(path)
    return re.sub(r"/[^/]*\.cfm/", "/*.cfm/", folder + "/"), os.path.splitext(name)[1]


class Expected:
    """The files before a run, and after a run that nothing disturbed."""

    def __init__(self, before, after):
        self.before = before
        self.after = after
        self.results = {path: content(path, data) for path, data in after.files.items()
                        if before.files.get(path) != data}

    def earlier_files(self, now):
        """Nothing that was there is lost or damaged."""
        for path, data in self.before.files.items():
            if path not in now.files:
                if path in self.after.files:
                    yield f"removed: {path}"
            elif now.files[path] != data and content(path, now.files[path]) != self.results.get(path):
                yield f"damaged: {path}"

    def new_files(self, now, after_cut):
        """A new file is a whole result, or at least not taken for one."""
        for path, data in now.files.items():
            if path in self.before.files:
                continue
            if path in self.results and content(path, data) == self.results[path]:
                continue
            is_page_record = path.endswith("/.info")
            working = WORKING.search(os.path.dirname(path) if is_page_record else path)
            if path in self.after.files and not working:
                yield f"not whole: {path} ({len(data)} of {len(self.after.files[path])} bytes)"
            elif self._is_result_of_other_name(path, data):
                continue
            elif is_page_record and not working:
                yield f"not whole: {path}"
            elif not after_cut:
                yield f"left over: {path}"
            elif not WORKING.search(path):
                yield f"not whole: {path} ({len(data)} bytes)"

    def _is_result_of_other_name(self, path, data):
        return any(place(path) == place(known) and content(path, data) == result
                   for known, result in self.results.items())

    def new_folders(self, now, after_cut):
        """Page directories in their place are complete; no other new one stays."""
        for path in now.folders - self.before.folders:
            pages = self._page_files(now, path)
            if self._is_page_place(path):
                known = self._page_files(self.after, path) or None
                if known and pages < known:
                    yield f"half a page: {path} lacks {' '.join(sorted(known - pages))}"
                elif ".info" not in pages:
                    yield f"half a page: {path} lacks .info"
            elif after_cut:
                continue
            elif path.startswith(SPOOL) and not any(name.startswith(path + "/p")
                                                    for name in now.folders):
                yield f"left over: {path} (a spooled job without pages)"
            elif path not in self.after.folders and not path.startswith(SPOOL):
                yield f"left over: {path}"

    @staticmethod
    def _page_files(tree, folder):
        return {path[len(folder) + 1:] for path in tree.files
                if path.startswith(folder + "/") and "/" not in path[len(folder) + 1:]}

    @staticmethod
    def _is_page_place(path):
        return (path.startswith(SPOOL) and re.search(r"\.cfm/p\d+$", path) is not None) or \
            (path.startswith("out/") and path.endswith(".cfm"))

    def results_are_there(self, now):
        for path in self.results:
            if path not in now.files:
                yield f"missing: {path}"
            elif now.files[path] == self.before.files.get(path):
                yield f"still the earlier one: {path}"

    def after_success(self, now):
        return [*self.earlier_files(now), *self.new_files(now, False),
                *self.new_folders(now, False), *self.results_are_there(now)]

    def after_error(self, now):
        return [*self.earlier_files(now), *self.new_files(now, False),
                *self.new_folders(now, False)]

    def after_cut(self, now):
        return [*self.earlier_files(now), *self.new_files(now, True), *self.new_folders(now, True)]

    def after_second_run(self, now):
        """After a disturbed run and an undisturbed one: the results are there, perhaps under other
        names, and the rest is as after a power cut."""
        there = {(place(path), content(path, data)) for path, data in now.files.items()}
        for path, data in self.results.items():
            if (place(path), data) not in there:
                yield f"no second run gives {path}"
        yield from self.after_cut(now)
