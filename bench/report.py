"""Runs the benchmark programs and writes their results as one table.

A program prints a line a result, its eight fields with a tab between:

  bench  name  ours  unit  peer-name  peer  ratio  limit

Other lines go to the terminal as they are. `limit` may be "-". The status is 1 if a program fails or a
ratio is above its limit.

usage: report.py --output FILE PROGRAM...
"""

import argparse
import os
import pathlib
import platform
import subprocess
import sys
import typing


class Result(typing.NamedTuple):
    name: str
    ours: float
    unit: str
    peer_name: str
    peer: float
    ratio: float
    limit: float | None

    def is_over(self):
        return self.limit is not None and self.ratio > self.limit


def result_of(line):
    """The result that a line tells, or None if it is a note."""
    fields = line.rstrip("\n").split("\t")
    if fields[0] != "bench":
        return None
    if len(fields) != 8:
        raise ValueError(f"{len(fields)} fields, not 8: {line!r}")
    _, name, ours, unit, peer_name, peer, ratio, limit = fields
    return Result(name, float(ours), unit, peer_name, float(peer), float(ratio),
                  None if limit == "-" else float(limit))


def run(program):
    """The program's results, and whether it ended well."""
    print(f"== {program.name}", flush=True)
    results = []
    with subprocess.Popen([str(program)], stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            print(line, end="", flush=True)
            result = result_of(line)
            if result:
                results.append(result)
    return results, process.returncode == 0


def machine():
    """What was measured on, with no name that tells whose machine it is."""
    try:
        lines = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
        model = next(line.split(":", 1)[1].strip() for line in lines
                     if line.startswith("model name"))
    except (OSError, StopIteration):
        model = platform.machine()
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{model}, {len(os.sched_getaffinity(0))} processors, {memory:.0f} GiB of memory, "
            f"{platform.system()} {platform.release().split('-')[0]}")


def cell(text):
    return str(text).replace("|", "\\|")


def table(groups):
    """The document. `groups`: (program's name, results)."""
    out = ["# Benchmarks", "",
           "Ours and the peer are measured in one run, turn by turn; only their ratio is worth comparing "
           "between machines. `./run bench` writes this page and fails if a ratio is above its limit.",
           "", f"Measured on: {machine()}.", ""]
    for name, results in groups:
        out += [f"## {name}", "", "| what | ours | peer | | ratio | limit | |",
                "|---|---:|---:|---|---:|---:|---|"]
        for one in results:
            limit = "" if one.limit is None else f"{one.limit:g}"
            verdict = "**over**" if one.is_over() else "" if one.limit is None else "kept"
            out.append(f"| {cell(one.name)} | {one.ours:.4g} {one.unit} | {one.peer:.4g} {one.unit} "
                       f"| {cell(one.peer_name)} | {one.ratio:.3f} | {limit} | {verdict} |")
        out.append("")
    return "\n".join(out)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--output", type=pathlib.Path, required=True)
    parser.add_argument("--only", default="", help="programs whose name holds this")
    parser.add_argument("program", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    groups, faults = [], []
    for program in options.program:
        if options.only not in program.name:
            continue
        results, well = run(program)
        groups.append((program.name.removesuffix("_bench").replace("_", " "), results))
        if not well:
            faults.append(f"{program.name} failed")
        if not results:
            faults.append(f"{program.name} printed no result")
        faults += [f"{one.name}: ratio {one.ratio:.3f} is above {one.limit:g}"
                   for one in results if one.is_over()]
    if not options.only:
        options.output.write_text(table(groups), encoding="utf-8")
        print(f"written: {options.output}")
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
