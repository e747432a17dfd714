"""Shows that each header compiles by itself, leaning on nothing that its includer happens to include.

Where a source of the same name includes it before anything else, the build has shown it already; the
other headers are compiled here.

usage: headers_compile_alone.py ROOT COMPILER [FLAG...]
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

import sources


def is_first_in_its_source(root, header):
    """Whether the source of the same name begins with this header."""
    source = header[:-2] + ".cpp"
    if not (pathlib.Path(root) / source).is_file():
        return False
    included = sources.includes(root, source)
    return bool(included) and included[0][2] == header


def fault_of(root, command, header):
    """The compiler's complaint, or None."""
    run = subprocess.run([*command, "-fsyntax-only", "-x", "c++", "-I", root, "-"],
                         input=f'#include "{header}"\n',
                         capture_output=True, text=True, check=False)
    return None if run.returncode == 0 else f"{header} does not compile alone:\n{run.stderr}"


def check(root, command, headers):
    faults = [f"{header}: no #pragma once" for header in headers
              if "#pragma once" not in (pathlib.Path(root) / header).read_text(encoding="utf-8")]
    headers = [header for header in headers if not is_first_in_its_source(root, header)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda header: fault_of(root, command, header), headers)
        return faults + [fault for fault in results if fault]


def main():
    root, command = sys.argv[1], sys.argv[2:]
    headers = sources.files(root, sources.PRODUCT, (".h",))
    sources.finish(check(root, command, headers), f"{len(headers)} headers compile alone")


if __name__ == "__main__":
    main()
