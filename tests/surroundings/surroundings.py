"""Runs tests in other surroundings than those of whoever wrote them.

usage: surroundings.py BUILD_TREE [--only NAME]... [--list] [--sample] [-j N] [-R REGEX] [-E REGEX]

The tests are those of ctest in the build tree, chosen as ctest does: -R keeps names that hold a match,
-E leaves names out. Each runs once in each of the surroundings, with the working directory, the
environment and the limit that ctest has for it. Ends with 1 if one fails. --sample runs a few of the
tests that the surroundings concern most: those of the command, of terminals and of text.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import pwd
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile

DEFAULT_LIMIT = 1500  # seconds: that of ctest itself for a test that has none
SAMPLED = r"^(cli\.|platform\.os\.(Terminal|WideFrom|Utf8From|AnsiFrom|ToNative|FromNative|Describe))"
SAMPLE_SIZE, SEED = 12, 4  # tests in each of the surroundings; the same ones on each machine
LONG_TESTS = r"hostile|memory|endless|office|another_program|unpacks_no_more|pictures|documents"


class Impossible(Exception):
    """This machine has not what the surroundings need."""


@dataclasses.dataclass
class Surroundings:
    """What is different for a test. The directory is its own, empty, and its user's."""
    description: str
    variables: dict = dataclasses.field(default_factory=dict)  # None: not set
    folder: str = "place"
    user: int = None
    prepare: object = None


def make_german(place):
    """A locale with a decimal comma, made here: few systems have one installed."""
    locales = place / "locales"
    locales.mkdir()
    made = subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", locales / "de_DE.UTF-8"],
                          capture_output=True, text=True, check=False) \
        if shutil.which("localedef") else None
    if not made or not (locales / "de_DE.UTF-8").is_dir():
        raise Impossible("localedef makes no de_DE.UTF-8: "
                         + (made.stderr.strip() if made else "it is not installed"))
    return {"LOCPATH": str(locales)}


def ordinary_user():
    return pwd.getpwnam("nobody").pw_uid if os.geteuid() == 0 else None


ALL = {
    "german": Surroundings("LC_ALL=de_DE.UTF-8", {"LC_ALL": "de_DE.UTF-8", "LANG": "de_DE.UTF-8",
                                                  "LANGUAGE": "de"}, prepare=make_german),
    "c": Surroundings("LC_ALL=C", {"LC_ALL": "C", "LANG": "C", "LANGUAGE": None}),
    "dumb": Surroundings("TERM=dumb", {"TERM": "dumb"}),
    "no-term": Surroundings("without TERM", {"TERM": None}),
    "user": Surroundings("as an ordinary user", user=ordinary_user()),
    "path": Surroundings("homes and data roots in a path with blanks and umlauts",
                         folder="Büro & Söhne"),
}


@dataclasses.dataclass
class Test:
    name: str
    command: list
    properties: dict

    @classmethod
    def of(cls, entry):
        return cls(entry["name"], entry.get("command", []),
                   {item["name"]: item["value"] for item in entry.get("properties", [])})

    @property
    def limit(self):
        return float(self.properties.get("TIMEOUT", DEFAULT_LIMIT))

    @property
    def can_run(self):
        return bool(self.command) and not self.properties.get("DISABLED", False)


def tests_of(tree, keep, leave):
    listed = subprocess.run(["ctest", "--test-dir", tree, "--show-only=json-v1"],
                            capture_output=True, text=True, check=True).stdout
    tests = [Test.of(entry) for entry in json.loads(listed)["tests"]]
    return [test for test in tests if test.can_run
            and not test.name.endswith("_NOT_BUILT") and not test.name.startswith("surroundings")
            and (not keep or re.search(keep, test.name))
            and not (leave and re.search(leave, test.name))]


def environment_of(surroundings, place, more):
    home = place / surroundings.folder
    for name in ("home", "tmp"):
        (home / name).mkdir(parents=True, exist_ok=True)
    # As ctest sets it before all tests (cmake/TestEnvironment.cmake).
    variables = {**os.environ, "RASTREL_WARM": "0", "HOME": str(home / "home"),
                 "TMPDIR": str(home / "tmp")}
    for name in [name for name in variables if name.startswith("XDG_")]:
        del variables[name]
    for name, value in {**surroundings.variables, **more}.items():
        variables.pop(name, None)
        if value is not None:
            variables[name] = value
    if surroundings.user is not None:
        for path in (place, home, home / "home", home / "tmp"):
            os.chown(path, surroundings.user, -1)
        variables.update(USER="nobody", LOGNAME="nobody")
    return variables


@dataclasses.dataclass
class Result:
    test: Test
    word: str  # passed, skipped, failed
    text: str = ""


def judge(test, status, output):
    properties = test.properties
    if status == properties.get("SKIP_RETURN_CODE"):
        return "skipped"
    skips = properties.get("SKIP_REGULAR_EXPRESSION", [])
    if any(re.search(pattern, output) for pattern in skips):
        return "skipped"
    return "failed" if (status != 0) != bool(properties.get("WILL_FAIL", False)) else "passed"


def run_one(test, variables, user):
    own = dict(entry.split("=", 1) for entry in test.properties.get("ENVIRONMENT", []))
    identity = {} if user is None else {"user": user, "group": pwd.getpwuid(user).pw_gid,
                                        "extra_groups": []}
    directory = test.properties.get("WORKING_DIRECTORY") if user is None else variables["TMPDIR"]
    with tempfile.TemporaryFile() as said:
        try:
            process = subprocess.Popen(test.command, env={**variables, **own}, cwd=directory,
                                       stdin=subprocess.DEVNULL, stdout=said, stderr=said,
                                       start_new_session=True, **identity)
        except PermissionError as refused:  # a program or a checkout in the home of somebody else
            return Result(test, "skipped", str(refused))
        try:
            status = process.wait(timeout=test.limit)
            note = ""
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            status, note = process.wait(), f"\nit took more than {test.limit:g} seconds\n"
        said.seek(0)
        text = said.read().decode(errors="replace") + note
    return Result(test, "failed" if note else judge(test, status, text), text)


def run_in(name, tests, jobs):
    surroundings = ALL[name]
    with tempfile.TemporaryDirectory(prefix="rastrel-surroundings-",
                                     ignore_cleanup_errors=True) as folder:
        place = pathlib.Path(folder)
        place.chmod(0o755)
        try:
            more = surroundings.prepare(place) if surroundings.prepare else {}
        except Impossible as reason:
            print(f"{name}: left out: {reason}", flush=True)
            return 0
        variables = environment_of(surroundings, place, more)
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            results = list(pool.map(lambda test: run_one(test, variables, surroundings.user), tests))
    for result in results:
        if result.word == "failed":
            print(f"--- {name}: {result.test.name}\n{result.text.rstrip()}", flush=True)
    count = collections.Counter(result.word for result in results)
    if results and count["skipped"] == len(results):
        print(f"{name}: nothing ran: {results[0].text.strip()}", flush=True)
    print(f"{name} ({surroundings.description}): {count['passed']} passed, "
          f"{count['skipped']} skipped, {count['failed']} failed", flush=True)
    for result in results:
        if result.word == "failed":
            print(f"  {result.test.name}", flush=True)
    return count["failed"]


def sample_of(tests, name):
    """Other tests in each of the surroundings, so that all of them together are more."""
    tests = [test for test in tests if re.search(SAMPLED, test.name)
             and not re.search(LONG_TESTS, test.name)]
    terminals = [test for test in tests if "erminal" in test.name]
    others = [test for test in tests if test not in terminals]
    chosen = random.Random(f"{SEED} {name}")
    return terminals[:4] + chosen.sample(others, min(SAMPLE_SIZE, len(others)))


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1].removeprefix("usage: "))
    parser.add_argument("tree")
    parser.add_argument("--only", action="append", choices=sorted(ALL))
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--sample", action="store_true")
    parser.add_argument("-j", dest="jobs", type=int, default=os.cpu_count())
    parser.add_argument("-R", dest="keep")
    parser.add_argument("-E", dest="leave")
    options = parser.parse_args()
    if options.list:
        for name, surroundings in ALL.items():
            print(f"{name:<10}{surroundings.description}")
        return 0
    tests = tests_of(options.tree, options.keep, options.leave)
    if not tests:
        print("no test of that name is built")
        return 1
    # A shell starts work in the background with interrupts ignored, and tests of interrupts would inherit it.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    failed = sum(run_in(name, sample_of(tests, name) if options.sample else tests, options.jobs)
                 for name in options.only or ALL)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
