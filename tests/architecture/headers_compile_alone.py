"""Compiles each header by itself, so that none leans on what its includer happens to include.

usage: headers_compile_alone.py ROOT COMPILER [FLAG...]
"""

import concurrent.futures
import os
import subprocess
import sys

import sources


def fault_of(root, command, header):
    """The compiler's complaint, or None."""
    run = subprocess.run([*command, "-fsyntax-only", "-x", "c++", "-I", root, "-"],
                         input=f'#include "{header}"\n#include "{header}"\n',
                         capture_output=True, text=True, check=False)
    return None if run.returncode == 0 else f"{header} does not compile alone:\n{run.stderr}"


def check(root, command, headers):
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda header: fault_of(root, command, header), headers)
    return [fault for fault in results if fault]


def main():
    root, command = sys.argv[1], sys.argv[2:]
    headers = sources.files(root, sources.PRODUCT, (".h",))
    sources.finish(check(root, command, headers), f"{len(headers)} headers compile alone")


if __name__ == "__main__":
    main()
