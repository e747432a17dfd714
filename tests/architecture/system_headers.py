"""Fails on a system header outside rastrel/platform: the rest is written in terms of it.

What is not a header of the C++ standard library and not ours is a system header, unless
system_headers.txt names it for the folder or for the one file that may see it.

usage: system_headers.py ROOT [TABLE]
"""

import pathlib
import sys

import sources

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
exception execution filesystem format forward_list fstream functional future initializer_list
iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string
string_view strstream syncstream system_error thread tuple type_traits typeindex typeinfo
unordered_map unordered_set utility valarray variant vector version
""".split())


def allowed_of(file):
    return {tuple(line.split()[:2]) for line in sources.table(file)}


def check(root, allowed):
    faults = []
    for file in sources.files(root, sources.PRODUCT):
        if file.startswith("rastrel/platform/"):
            continue
        for line, quoted, name in sources.includes(root, file):
            named = any((who, name) in allowed for who in (file.split("/")[0], file))
            if not quoted and name not in STANDARD and not named:
                faults.append(f"{file}:{line}: <{name}> outside rastrel/platform")
    return faults


def main():
    root = sys.argv[1]
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    sources.finish(check(root, allowed_of(table)), "no system header outside rastrel/platform")


if __name__ == "__main__":
    main()
